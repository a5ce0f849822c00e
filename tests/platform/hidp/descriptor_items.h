// Descriptors for tests, written item by item.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <vector>

#include "platform/hidp/items.h"

namespace hidp_test {

struct ItemText {
    platform::hidp::Tag tag;
    std::int64_t value = 0;
    unsigned size = 0;  ///< bytes of data; 0 for as few as hold the value
};

// Data bits of main items (HID 1.11, 6.2.2.5).
inline constexpr std::int64_t data_array = 0x00;
inline constexpr std::int64_t constant = platform::hidp::item_constant;
inline constexpr std::int64_t data_variable = platform::hidp::item_variable;
inline constexpr std::int64_t constant_variable = data_variable | constant;
inline constexpr std::int64_t relative = platform::hidp::item_relative;
inline constexpr std::int64_t null_state = platform::hidp::item_null_state;

// Collection types (HID 1.11, 6.2.2.6).
inline constexpr std::int64_t physical = 0x00;
inline constexpr std::int64_t application = 0x01;
inline constexpr std::int64_t logical = 0x02;

template <typename Integer>
bool holds(std::int64_t value) {
    return value >= std::numeric_limits<Integer>::min() && value <= std::numeric_limits<Integer>::max();
}

inline unsigned bytes_for(const ItemText& item) {
    using platform::hidp::Tag;
    switch (item.tag) {
        case Tag::push:
        case Tag::pop:
        case Tag::end_collection:
            return 0;
        case Tag::logical_minimum:
        case Tag::logical_maximum:
        case Tag::physical_minimum:
        case Tag::physical_maximum:
        case Tag::unit_exponent:
            return holds<std::int8_t>(item.value) ? 1 : holds<std::int16_t>(item.value) ? 2 : 4;
        default:
            return holds<std::uint8_t>(item.value) ? 1 : holds<std::uint16_t>(item.value) ? 2 : 4;
    }
}

inline std::vector<std::uint8_t> descriptor(std::initializer_list<ItemText> items) {
    std::vector<std::uint8_t> bytes;
    for (const ItemText& item : items) {
        const unsigned size = item.size != 0 ? item.size : bytes_for(item);
        const unsigned size_code = size == 4 ? 3 : size;  // HID 1.11, 6.2.2.2
        bytes.push_back(static_cast<std::uint8_t>(static_cast<unsigned>(item.tag) | size_code));
        for (unsigned i = 0; i < size; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(item.value >> (8 * i)));
        }
    }
    return bytes;
}

}  // namespace hidp_test
