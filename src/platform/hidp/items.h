// The items of a report descriptor (HID 1.11, 6.2.2), and the reader that cuts a descriptor into them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace platform::hidp {

/// An item's type and tag: its prefix byte without the two bits of the data size (HID 1.11, 6.2.2.2).
enum class Tag : std::uint8_t {
    // Main items (6.2.2.4).
    input = 0x80,
    output = 0x90,
    collection = 0xA0,
    feature = 0xB0,
    end_collection = 0xC0,
    // Global items (6.2.2.7).
    usage_page = 0x04,
    logical_minimum = 0x14,
    logical_maximum = 0x24,
    physical_minimum = 0x34,
    physical_maximum = 0x44,
    unit_exponent = 0x54,
    unit = 0x64,
    report_size = 0x74,
    report_id = 0x84,
    report_count = 0x94,
    push = 0xA4,
    pop = 0xB4,
    // Local items (6.2.2.8).
    usage = 0x08,
    usage_minimum = 0x18,
    usage_maximum = 0x28,
    designator_index = 0x38,
    designator_minimum = 0x48,
    designator_maximum = 0x58,
    string_index = 0x78,
    string_minimum = 0x88,
    string_maximum = 0x98,
    delimiter = 0xA8,
};

/// The type in a tag's lowest bits (HID 1.11, 6.2.2.2).
enum class ItemType : std::uint8_t { main = 0x00, global = 0x04, local = 0x08, reserved = 0x0C };

inline ItemType type_of(Tag tag) {
    constexpr std::uint8_t type_bits = 0x0C;
    return static_cast<ItemType>(static_cast<std::uint8_t>(tag) & type_bits);
}

/// The data bits of Input, Output and Feature items (HID 1.11, 6.2.2.5).
inline constexpr std::uint32_t item_constant = 1U << 0;
inline constexpr std::uint32_t item_variable = 1U << 1;
inline constexpr std::uint32_t item_relative = 1U << 2;
inline constexpr std::uint32_t item_null_state = 1U << 6;

struct Item {
    Tag tag{};
    std::uint8_t size = 0;   ///< of the data, in bytes: 0, 1, 2 or 4
    std::uint32_t data = 0;  ///< zero-extended

    std::int32_t as_signed() const;
};

/// Where an item stands.
struct Place {
    std::size_t offset = 0;  ///< of its prefix byte
    std::uint8_t prefix = 0;
};

/// Thrown inside the parser. Without a place of its own it is about the item that is being read.
struct Malformed {
    std::string text;
    std::optional<Place> place = std::nullopt;
};

class ItemReader {
  public:
    explicit ItemReader(std::span<const std::uint8_t> descriptor) : descriptor_(descriptor) {}

    /// Reads the next short item; false at the end. Long items are passed over, since none is defined
    /// (6.2.2.3). Throws Malformed for an item that the descriptor's end cuts short.
    bool next(Item& item) {
        while (position_ < descriptor_.size()) {
            begin_ = position_++;
            const std::uint8_t prefix = descriptor_[begin_];
            if (prefix != long_item_prefix) {
                item = short_item(prefix);
                return true;
            }
            skip_long_item();
        }
        return false;
    }

    /// Of the item that next() read last.
    Place place() const { return position_ == 0 ? Place{} : Place{begin_, descriptor_[begin_]}; }

  private:
    static constexpr std::uint8_t long_item_prefix = 0xFE;  // 6.2.2.3
    static constexpr std::uint8_t size_bits = 0x03;         // 6.2.2.2: bSize
    static constexpr std::uint8_t data_sizes[] = {0, 1, 2, 4};

    Item short_item(std::uint8_t prefix) {
        const std::uint8_t size = data_sizes[prefix & size_bits];
        std::uint32_t data = 0;
        std::uint32_t shift = 0;
        for (const std::uint8_t byte : take(size)) {
            data |= std::uint32_t{byte} << shift;
            shift += 8;
        }
        return {static_cast<Tag>(prefix & ~size_bits), size, data};
    }

    std::span<const std::uint8_t> take(std::size_t size) {
        const auto left = descriptor_.subspan(position_);
        if (left.size() < size) {
            refuse_cut(size);
        }
        position_ += size;
        return left.first(size);
    }

    [[noreturn]] void refuse_cut(std::size_t size) const;
    void skip_long_item();

    std::span<const std::uint8_t> descriptor_;
    std::size_t begin_ = 0;     ///< of the last item
    std::size_t position_ = 0;  ///< behind it
};

}  // namespace platform::hidp
