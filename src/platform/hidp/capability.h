// One capability: the control or run of controls that one usage, or one range of usages, names in a report.
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/hid_types.h"
#include "platform/hidp/items.h"

namespace platform::hidp {

inline constexpr ULONG no_selector = 0;  // an array's field that names no usage

struct Capability {
    // What every search and every field access looks at stands together, and first.
    USAGE usage_page = 0;
    USAGE usage_min = 0;
    USAGE usage_max = 0;
    UCHAR report_id = 0;
    bool is_button = false;
    USHORT link_collection = 0;
    USHORT bit_field = 0;  ///< the main item's data bits
    USHORT bit_size = 0;   ///< of one field
    USHORT report_count = 0;
    ULONG bit_position = 0;     ///< in the report, the id byte included
    ULONG lowest_selector = 0;  ///< the selector of usage_min, in an array

    bool is_range = false;
    bool is_string_range = false;
    bool is_designator_range = false;
    bool is_alias = false;            ///< names the same control as the capability after it
    bool has_more_for_array = false;  ///< the capability after it belongs to the same array
    USHORT string_min = 0;
    USHORT string_max = 0;
    USHORT designator_min = 0;
    USHORT designator_max = 0;
    USHORT data_index_min = 0;
    USHORT data_index_max = 0;
    LONG logical_min = 0;
    LONG logical_max = 0;
    LONG physical_min = 0;
    LONG physical_max = 0;
    ULONG units = 0;
    LONG units_exp = 0;  ///< the item's byte, signed, not the exponent that its low nibble codes

    bool is_array() const { return (bit_field & item_variable) == 0; }
    bool is_padding() const { return (bit_field & item_constant) != 0; }
    bool is_absolute() const { return (bit_field & item_relative) == 0; }
    bool has_null() const { return (bit_field & item_null_state) != 0; }
    ULONG usage_count() const { return usage_max - usage_min + 1U; }

    /// True when the report has a place for the usage: one that is too large for an array's field has none,
    /// nor has one whose selector stands for no usage.
    bool holds(USAGE usage) const {
        if (usage < usage_min || usage > usage_max) {
            return false;
        }
        return !is_array() || (selector(usage) != no_selector && fits_field(selector(usage)));
    }
    bool fits_field(ULONG value) const { return field_bits() == 32 || value >> field_bits() == 0; }

    // An array's field names a usage by a number, its selector.
    ULONG selector(USAGE usage) const { return lowest_selector + (usage - ULONG{usage_min}); }
    bool is_selected_by(ULONG selector) const {
        return selector >= lowest_selector && selector - lowest_selector < usage_count();
    }
    USAGE selected_usage(ULONG selector) const {
        return static_cast<USAGE>(usage_min + (selector - lowest_selector));
    }

    /// True for the value of one usage that has several fields.
    bool is_value_array() const { return !is_button && !is_range && report_count > 1; }

    /// The place of one field in the report.
    ULONG field_position(ULONG index) const { return bit_position + index * bit_size; }
    /// How much of a field a ULONG holds; of a longer one it is the lowest bits.
    ULONG field_bits() const { return std::min<ULONG>(bit_size, 32); }
};

}  // namespace platform::hidp
