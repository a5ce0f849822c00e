// Controls by their data indices: HidP_MaxDataListLength, HidP_GetData, HidP_SetData.
#include <algorithm>
#include <span>

#include "platform/hidp/bits.h"
#include "platform/hidp/buttons.h"
#include "platform/hidp/found_list.h"
#include "platform/hidp/hidp.h"
#include "platform/hidp/preparsed_data.h"

namespace platform::hidp {
namespace {

// Usages and data indices of a capability count up side by side.
USHORT index_of(const Capability& capability, USAGE usage) {
    return static_cast<USHORT>(capability.data_index_min + (usage - capability.usage_min));
}
USAGE usage_of(const Capability& capability, USHORT index) {
    return static_cast<USAGE>(capability.usage_min + (index - capability.data_index_min));
}

/// An alias shares its indices with the capability that it is an alias of, which alone stands for them.
bool has_index(const Capability& capability, USHORT index) {
    return !capability.is_alias && capability.data_index_min <= index && index <= capability.data_index_max;
}

FoundCapability find_index(const Direction& direction, USHORT index, UCHAR report_id) {
    if (index >= direction.data_indices) {
        return {HIDP_STATUS_DATA_INDEX_OUT_OF_RANGE, nullptr};
    }
    const auto& all = direction.capabilities;
    const auto found = std::find_if(
        all.begin(), all.end(), [&](const Capability& capability) { return has_index(capability, index); });
    if (found == all.end() || !found->holds(usage_of(*found, index))) {
        return {HIDP_STATUS_DATA_INDEX_NOT_FOUND, nullptr};
    }
    if (!fits_report(*found, report_id)) {
        return {HIDP_STATUS_INCOMPATIBLE_REPORT_ID, nullptr};
    }
    return {HIDP_STATUS_SUCCESS, &*found};
}

/// The place of the usage's value.
ULONG value_position(const Capability& capability, USAGE usage) {
    return capability.field_position(usage - ULONG{capability.usage_min});
}

void list_buttons(std::span<const UCHAR> report, const Capability& capability, FoundList<HIDP_DATA>& found) {
    for_each_pressed(report, capability, [&](USAGE usage) {
        found.add({index_of(capability, usage), 0, {1}});
    });
}

void list_values(std::span<const UCHAR> report, const Capability& capability, FoundList<HIDP_DATA>& found) {
    if (capability.is_value_array() || capability.bit_size == 0) {
        return;
    }
    for (ULONG at = capability.usage_min; at <= capability.usage_max; ++at) {
        const auto usage = static_cast<USAGE>(at);
        const ULONG value = read_bits(report, value_position(capability, usage), capability.field_bits());
        found.add({index_of(capability, usage), 0, {value}});
    }
}

NTSTATUS set_control(std::span<UCHAR> report, const Capability& capability, const HIDP_DATA& control) {
    // Buttons as well: where a usage has several fields, the Windows parser asks for nothing else.
    if (!capability.is_range && capability.report_count > 1) {
        return HIDP_STATUS_IS_VALUE_ARRAY;
    }
    const USAGE usage = usage_of(capability, control.DataIndex);
    if (capability.is_button) {
        return control.On != 0 ? set_button(report, capability, usage)
                               : unset_button(report, capability, usage);
    }
    write_bits(report, value_position(capability, usage), capability.field_bits(), control.RawValue);
    return HIDP_STATUS_SUCCESS;
}

}  // namespace

ULONG Parser::HidP_MaxDataListLength(HIDP_REPORT_TYPE type, PHIDP_PREPARSED_DATA data) const {
    if (check_direction(data, type) != HIDP_STATUS_SUCCESS) {
        return 0;
    }
    ULONG length = 0;
    for (const Capability& capability : data->directions[type].capabilities) {
        length += capability.is_button ? capability.report_count : capability.usage_count();
    }
    return length;
}

NTSTATUS Parser::HidP_GetData(HIDP_REPORT_TYPE type, HIDP_DATA* list, ULONG* length,
                              PHIDP_PREPARSED_DATA data, const UCHAR* report, ULONG report_length) const {
    if (const NTSTATUS status = check_report(data, type, report_length); status != HIDP_STATUS_SUCCESS) {
        return status;
    }
    const std::span<const UCHAR> bytes{report, report_length};
    FoundList<HIDP_DATA> found({list, *length});
    for (const Capability& capability : data->directions[type].capabilities) {
        if (capability.is_alias || !fits_report(capability, bytes[0])) {
            continue;
        }
        capability.is_button ? list_buttons(bytes, capability, found) : list_values(bytes, capability, found);
    }
    *length = found.count();
    return found.overflows() ? HIDP_STATUS_BUFFER_TOO_SMALL : HIDP_STATUS_SUCCESS;
}

NTSTATUS Parser::HidP_SetData(HIDP_REPORT_TYPE type, const HIDP_DATA* list, ULONG* length,
                              PHIDP_PREPARSED_DATA data, UCHAR* report, ULONG report_length) const {
    if (const NTSTATUS status = check_report(data, type, report_length); status != HIDP_STATUS_SUCCESS) {
        return status;
    }
    if (*length == 0) {
        return HIDP_STATUS_REPORT_DOES_NOT_EXIST;
    }
    const std::span<UCHAR> bytes{report, report_length};
    const std::span<const HIDP_DATA> controls{list, *length};
    for (std::size_t i = 0; i < controls.size(); ++i) {
        auto [status, capability] = find_index(data->directions[type], controls[i].DataIndex, bytes[0]);
        if (status == HIDP_STATUS_SUCCESS) {
            status = set_control(bytes, *capability, controls[i]);
        }
        if (status != HIDP_STATUS_SUCCESS) {
            *length = static_cast<ULONG>(i);
            return status;
        }
        bytes[0] = capability->report_id;
    }
    return HIDP_STATUS_SUCCESS;
}

}  // namespace platform::hidp
