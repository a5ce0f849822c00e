// The descriptors that cost most: as long as allowed, and of nothing but the items that ask for something.
#pragma once

#include <cstdint>
#include <ostream>
#include <vector>

namespace hidp_test {

struct Costly {
    const char* name;
    std::vector<std::uint8_t> descriptor;
};

inline void PrintTo(const Costly& costly, std::ostream* out) {
    *out << costly.name;
}

std::vector<Costly> costly_descriptors();

}  // namespace hidp_test
