// What the tests of the drivers with fixed reports have in common.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <utility>

#include "base/headset_types.h"
#include "tests/drivers/driver_fixture.h"

namespace headset_plugin::driver_test {

/// What a building operation returned, and all of the memory that its buffer is the front of.
using Built = std::pair<std::int32_t, Bytes>;

inline constexpr std::uint8_t unwritten = 0xEE;
inline constexpr std::size_t memory_size = 8;
inline constexpr std::size_t device_buffer_size = 4;

/// Calls `build` with a buffer of `size` bytes.
template <typename Build>
Built built(const Build& build, std::size_t size = device_buffer_size) {
    Bytes memory(memory_size, unwritten);
    const std::int32_t length = build(std::span(memory).first(size));
    return {length, memory};
}

/// A report of these bytes, and not a byte beyond it.
inline Built report(Bytes bytes) {
    const auto length = static_cast<std::int32_t>(bytes.size());
    bytes.resize(memory_size, unwritten);
    return {length, bytes};
}

/// Nothing to write, and nothing written.
inline Built nothing(std::int32_t length = -1) {
    return {length, Bytes(memory_size, unwritten)};
}

/// The bytes of an input report as the drivers log them.
inline std::string first_bytes(Bytes bytes) {
    bytes.resize(8);
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        text += (i == 0 ? "" : i == 4 ? ", " : " ") + hex(bytes[i]);
    }
    return text;
}

/// How a driver logs a follow-up mask.
inline std::string toggle_text(std::uint32_t mask) {
    return "enter, state = " + std::to_string(static_cast<std::int32_t>(mask));
}

/// Every key value of a model that is no HEADSET_KEY_INVALID.
using KeyMap = std::map<unsigned, std::int32_t>;

inline std::int32_t key_in(const KeyMap& keys, unsigned value) {
    const auto found = keys.find(value);
    return found != keys.end() ? found->second : HEADSET_KEY_INVALID;
}

inline Bytes input(unsigned id, unsigned key) {
    return {static_cast<std::uint8_t>(id), static_cast<std::uint8_t>(key)};
}

/// A report of `length` bytes, the first of `bytes`, in memory of exactly that size.
inline Bytes shortened(const Bytes& bytes, std::size_t length) {
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)};
}

/// A driver whose record of its indicators is in the test's hands.
template <typename T>
class WithRecord final : public T {
  public:
    using T::headset_leds_state_;
    using T::T;
};

}  // namespace headset_plugin::driver_test
