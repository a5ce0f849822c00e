// Words for writing a report descriptor item by item (HID 1.11, 6.2.2), so that a headset's model reads like
// the descriptor's own listing. Each function gives one short item, data in as few bytes as hold it: at least
// one, so that a zero is written out, and signed where the item is.
//
// In a model the items are indented by collection, which clang-format would undo: it is switched off around
// them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

namespace platform::virtual_headsets {

/// Tag and type of a short item: its prefix byte without the two bits that tell the size (HID 1.11, 6.2.2.2).
enum class ItemTag : std::uint8_t {
    // Main items, 6.2.2.4
    Input = 0x80,
    Output = 0x90,
    Collection = 0xA0,
    Feature = 0xB0,
    EndCollection = 0xC0,
    // Global items, 6.2.2.7
    UsagePage = 0x04,
    LogicalMinimum = 0x14,
    LogicalMaximum = 0x24,
    ReportSize = 0x74,
    ReportId = 0x84,
    ReportCount = 0x94,
    // Local items, 6.2.2.8
    Usage = 0x08,
    UsageMinimum = 0x18,
    UsageMaximum = 0x28,
};

struct Item {
    ItemTag tag;
    unsigned size;       ///< bytes of data: 0, 1, 2 or 4
    std::uint32_t data;  ///< two's complement where the item is signed
};

/// What an input, output or feature item says about its fields (HID 1.11, 6.2.2.5). What is not said has its
/// default, whose bit is 0: absolute, no wrap, linear, preferred state, no null position, non-volatile, bit
/// field.
enum MainFlags : std::uint16_t {
    data = 0x000,
    constant = 0x001,
    array = 0x000,
    variable = 0x002,
    relative = 0x004,
    wrap = 0x008,
    nonlinear = 0x010,
    no_preferred = 0x020,
    null_state = 0x040,
    volatile_value = 0x080,
    buffered_bytes = 0x100,
};

constexpr MainFlags operator|(MainFlags one, MainFlags other) {
    return static_cast<MainFlags>(static_cast<unsigned>(one) | static_cast<unsigned>(other));
}

/// What a collection groups (HID 1.11, 6.2.2.6).
enum CollectionKind : std::uint8_t {
    physical = 0x00,
    application = 0x01,
    logical = 0x02,
};

/// An item whose data takes one byte if OneByte holds it, two if TwoBytes holds it, else four.
template <typename OneByte, typename TwoBytes, typename Number>
constexpr Item short_item(ItemTag tag, Number value) {
    const unsigned size = std::in_range<OneByte>(value) ? 1 : std::in_range<TwoBytes>(value) ? 2 : 4;
    return {tag, size, static_cast<std::uint32_t>(value)};
}

constexpr Item unsigned_item(ItemTag tag, std::uint32_t value) {
    return short_item<std::uint8_t, std::uint16_t>(tag, value);
}

constexpr Item signed_item(ItemTag tag, std::int32_t value) {
    return short_item<std::int8_t, std::int16_t>(tag, value);
}

constexpr Item input(MainFlags flags) {
    return unsigned_item(ItemTag::Input, flags);
}
constexpr Item output(MainFlags flags) {
    return unsigned_item(ItemTag::Output, flags);
}
constexpr Item feature(MainFlags flags) {
    return unsigned_item(ItemTag::Feature, flags);
}
constexpr Item collection(CollectionKind kind) {
    return unsigned_item(ItemTag::Collection, kind);
}
constexpr Item end_collection() {
    return {ItemTag::EndCollection, 0, 0};
}

constexpr Item usage_page(std::uint16_t page) {
    return unsigned_item(ItemTag::UsagePage, page);
}
constexpr Item logical_minimum(std::int32_t value) {
    return signed_item(ItemTag::LogicalMinimum, value);
}
constexpr Item logical_maximum(std::int32_t value) {
    return signed_item(ItemTag::LogicalMaximum, value);
}
constexpr Item report_size(std::uint32_t bits) {
    return unsigned_item(ItemTag::ReportSize, bits);
}
constexpr Item report_id(std::uint8_t id) {
    return unsigned_item(ItemTag::ReportId, id);
}
constexpr Item report_count(std::uint32_t fields) {
    return unsigned_item(ItemTag::ReportCount, fields);
}

constexpr Item usage(std::uint32_t value) {
    return unsigned_item(ItemTag::Usage, value);
}
constexpr Item usage_minimum(std::uint32_t value) {
    return unsigned_item(ItemTag::UsageMinimum, value);
}
constexpr Item usage_maximum(std::uint32_t value) {
    return unsigned_item(ItemTag::UsageMaximum, value);
}

/// The same item with its data in `size` bytes, for a device that spends more than needed.
template <unsigned size>
constexpr Item wide(Item item) {
    static_assert(size == 2 || size == 4, "a size of HID 1.11, 6.2.2.2, with room to spare");
    item.size = std::max(item.size, size);
    return item;
}

/// The bytes of a descriptor from its items.
std::vector<std::uint8_t> descriptor(std::initializer_list<Item> items);

}  // namespace platform::virtual_headsets
