// The places of virtual operations in the tables of their classes.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace test_support {

/// A pointer to a member function (Itanium C++ ABI, 2.3). For a virtual one `pointer` is 1 plus its offset in
/// the virtual table, in bytes.
struct MemberPointer {
    std::uintptr_t pointer;
    std::ptrdiff_t adjustment;
};

/// A destructor that is declared first has the slots 0 and 1 (Itanium C++ ABI, 2.5.2).
template <typename Operation>
std::uintptr_t slot_of(Operation operation) {
    static_assert(sizeof(Operation) == sizeof(MemberPointer));
    return (std::bit_cast<MemberPointer>(operation).pointer - 1) / sizeof(void*);
}

}  // namespace test_support
