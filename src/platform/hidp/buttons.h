// The buttons of one capability in a report. Inline, since a call takes longer than most of them.
#pragma once

#include <algorithm>
#include <bit>
#include <span>

#include "platform/hidp/bits.h"
#include "platform/hidp/capability.h"

namespace platform::hidp {

inline ULONG get_field(std::span<const UCHAR> report, const Capability& capability, ULONG index) {
    return read_bits(report, capability.field_position(index), capability.field_bits());
}

inline void set_field(std::span<UCHAR> report, const Capability& capability, ULONG index, ULONG value) {
    write_bits(report, capability.field_position(index), capability.field_bits(), value);
}

/// Some of a capability's fields.
struct FieldRange {
    ULONG begin;
    ULONG end;

    bool is_empty() const { return begin == end; }
};

/// The first field in the range with this value; empty when there is none.
inline FieldRange find_field(std::span<const UCHAR> report, const Capability& capability, FieldRange range,
                             ULONG value) {
    while (range.begin < range.end && get_field(report, capability, range.begin) != value) {
        ++range.begin;
    }
    return range;
}

/// The bits that belong to a variable usage: one each, and what is left over to the last.
inline FieldRange bits_of(const Capability& capability, USAGE usage) {
    const ULONG begin = usage - ULONG{capability.usage_min};
    return {begin, usage == capability.usage_max ? capability.report_count : begin + 1};
}

/// The array's field that names the usage.
inline FieldRange slot_of(std::span<const UCHAR> report, const Capability& capability, ULONG selector) {
    return find_field(report, capability, {0, capability.report_count}, selector);
}

/// Takes the usage's field out of the array; those behind it move up, so that the fields in use stay
/// together.
inline void remove_from_array(std::span<UCHAR> report, const Capability& capability, FieldRange field) {
    for (ULONG next = field.begin + 1; next < field.end; ++next) {
        set_field(report, capability, next - 1, get_field(report, capability, next));
    }
    set_field(report, capability, field.end - 1, no_selector);
}

inline bool is_set(std::span<const UCHAR> report, const Capability& capability, USAGE usage) {
    if (capability.is_array()) {
        return !slot_of(report, capability, capability.selector(usage)).is_empty();
    }
    return !find_field(report, capability, bits_of(capability, usage), 1).is_empty();
}

/// HIDP_STATUS_BUFFER_TOO_SMALL where all fields of an array are taken.
inline NTSTATUS set_button(std::span<UCHAR> report, const Capability& capability, USAGE usage) {
    if (!capability.is_array()) {
        set_bit(report, capability.bit_position + bits_of(capability, usage).begin);
        return HIDP_STATUS_SUCCESS;
    }
    const FieldRange free = slot_of(report, capability, no_selector);
    if (free.is_empty()) {
        return HIDP_STATUS_BUFFER_TOO_SMALL;
    }
    set_field(report, capability, free.begin, capability.selector(usage));
    return HIDP_STATUS_SUCCESS;
}

/// HIDP_STATUS_BUTTON_NOT_PRESSED where it is not set.
inline NTSTATUS unset_button(std::span<UCHAR> report, const Capability& capability, USAGE usage) {
    if (!is_set(report, capability, usage)) {
        return HIDP_STATUS_BUTTON_NOT_PRESSED;
    }
    if (capability.is_array()) {
        remove_from_array(report, capability, slot_of(report, capability, capability.selector(usage)));
        return HIDP_STATUS_SUCCESS;
    }
    const FieldRange bits = bits_of(capability, usage);
    for (ULONG index = bits.begin; index < bits.end; ++index) {
        set_field(report, capability, index, 0);
    }
    return HIDP_STATUS_SUCCESS;
}

template <typename Visit>
void for_each_selected(std::span<const UCHAR> report, const Capability& capability, Visit visit) {
    for (ULONG index = 0; index < capability.report_count; ++index) {
        const ULONG selector = get_field(report, capability, index);
        if (selector != no_selector && capability.is_selected_by(selector)) {
            visit(capability.selected_usage(selector));
        }
    }
}

/// A variable usage has a bit; those left over belong to the last one, which is visited once.
template <typename Visit>
void for_each_set_bit(std::span<const UCHAR> report, const Capability& capability, Visit visit) {
    constexpr ULONG word_bits = 32;
    const ULONG last = capability.usage_count() - 1;
    for (ULONG begin = 0; begin < capability.report_count; begin += word_bits) {
        ULONG set_bits = read_bits(report, capability.bit_position + begin,
                                   std::min(word_bits, capability.report_count - begin));
        for (; set_bits != 0; set_bits &= set_bits - 1) {
            const ULONG index = begin + static_cast<ULONG>(std::countr_zero(set_bits));
            visit(static_cast<USAGE>(capability.usage_min + std::min(index, last)));
            if (index >= last) {
                return;
            }
        }
    }
}

/// Calls `visit` with every usage that is set.
template <typename Visit>
void for_each_pressed(std::span<const UCHAR> report, const Capability& capability, Visit visit) {
    if (capability.is_array()) {
        for_each_selected(report, capability, visit);
    } else if (capability.report_count > 1) {
        for_each_set_bit(report, capability, visit);
    } else if (read_bit(report, capability.bit_position)) {
        visit(capability.usage_min);
    }
}

}  // namespace platform::hidp
