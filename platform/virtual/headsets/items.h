// Words for writing a report descriptor item by item (HID 1.11, 6.2.2), so that a headset's model reads like the
// descriptor's own listing. Each function gives the bytes of one short item, data in as few bytes as hold it.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace platform::virtual_headsets {

using Item = std::vector<std::uint8_t>;

/// The bytes of a descriptor from its items.
std::vector<std::uint8_t> descriptor(std::initializer_list<Item> items);

}  // namespace platform::virtual_headsets
