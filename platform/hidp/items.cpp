#include "platform/hidp/items.h"

namespace platform::hidp {
namespace {

constexpr std::uint8_t size_bits = 0x03;          // HID 1.11, 6.2.2.2: bSize
constexpr std::uint8_t long_item_prefix = 0xFE;   // 6.2.2.3
constexpr std::size_t long_item_header_size = 2;  // bDataSize and bLongItemTag

std::size_t data_size(std::uint8_t prefix) {
    constexpr std::size_t sizes[] = {0, 1, 2, 4};
    return sizes[prefix & size_bits];
}

std::uint32_t little_endian(std::span<const std::uint8_t> bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = bytes.size(); i > 0; --i) {
        value = value << 8 | bytes[i - 1];
    }
    return value;
}

}  // namespace

std::int32_t Item::as_signed() const {
    switch (size) {
        case 1:
            return static_cast<std::int8_t>(data);
        case 2:
            return static_cast<std::int16_t>(data);
        default:
            return static_cast<std::int32_t>(data);
    }
}

bool ItemReader::next(Item& item) {
    while (position_ < descriptor_.size()) {
        place_ = {position_, descriptor_[position_]};
        ++position_;
        if (place_.prefix == long_item_prefix) {
            skip_long_item();
            continue;
        }
        const auto bytes = take(data_size(place_.prefix));
        item.tag = static_cast<Tag>(place_.prefix & ~size_bits);
        item.size = static_cast<std::uint8_t>(bytes.size());
        item.data = little_endian(bytes);
        return true;
    }
    return false;
}

std::span<const std::uint8_t> ItemReader::take(std::size_t size) {
    const auto left = descriptor_.subspan(position_);
    if (left.size() < size) {
        throw Malformed{"the item needs " + std::to_string(size) + " bytes, " + std::to_string(left.size()) +
                        " are left"};
    }
    position_ += size;
    return left.first(size);
}

void ItemReader::skip_long_item() {
    const auto header = take(long_item_header_size);
    take(header[0]);
}

}  // namespace platform::hidp
