#include "platform/hidp/items.h"

namespace platform::hidp {

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

void ItemReader::refuse_cut(std::size_t size) const {
    throw Malformed{"the item needs " + std::to_string(size) + " bytes, " +
                    std::to_string(descriptor_.size() - position_) + " are left"};
}

void ItemReader::skip_long_item() {
    constexpr std::size_t header_size = 2;  // bDataSize and bLongItemTag
    const auto header = take(header_size);
    take(header[0]);
}

}  // namespace platform::hidp
