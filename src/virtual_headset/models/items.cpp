#include "virtual_headset/models/items.h"

namespace platform::virtual_headsets {
namespace {

/// The prefix byte: four bytes of data have the size code 3, any other number stands for itself
/// (HID 1.11, 6.2.2.2).
std::uint8_t prefix(const Item& item) {
    const unsigned size_code = item.size == 4 ? 3 : item.size;
    return static_cast<std::uint8_t>(static_cast<unsigned>(item.tag) | size_code);
}

}  // namespace

std::vector<std::uint8_t> descriptor(std::initializer_list<Item> items) {
    std::vector<std::uint8_t> bytes;
    for (const Item& item : items) {
        bytes.push_back(prefix(item));
        // Least significant byte first (HID 1.11, 5.8).
        for (unsigned byte = 0; byte < item.size; ++byte) {
            bytes.push_back(static_cast<std::uint8_t>(item.data >> (8 * byte)));
        }
    }
    return bytes;
}

}  // namespace platform::virtual_headsets
