// What a collection holds: HidP_GetCaps, HidP_GetButtonCaps, HidP_GetValueCaps, HidP_GetSpecificButtonCaps,
// HidP_GetSpecificValueCaps, HidP_GetLinkCollectionNodes.
#include <algorithm>
#include <utility>

#include "platform/hidp/hidp.h"
#include "platform/hidp/preparsed_data.h"

namespace platform::hidp {
namespace {

/// HIDP_CAPS has 16 bits for the number of indices, an array of all 65,536 usages of a page has one more.
USHORT data_index_count(const Direction& direction) {
    return static_cast<USHORT>(std::min<ULONG>(direction.data_indices, 0xFFFF));
}

USHORT value_count(const Direction& direction) {
    return static_cast<USHORT>(direction.capabilities.size() - direction.button_count);
}

/// Fills what both kinds of capability have. The structure for a single usage holds, field by field, a range
/// of one.
template <typename Caps>
void fill_common(Caps& caps, const Capability& capability, const HIDP_LINK_COLLECTION_NODE& link) {
    caps.UsagePage = capability.usage_page;
    caps.ReportID = capability.report_id;
    caps.IsAlias = capability.is_alias;
    caps.BitField = capability.bit_field;
    caps.LinkCollection = capability.link_collection;
    caps.LinkUsage = link.LinkUsage;
    caps.LinkUsagePage = link.LinkUsagePage;
    caps.IsRange = capability.is_range;
    caps.IsStringRange = capability.is_string_range;
    caps.IsDesignatorRange = capability.is_designator_range;
    caps.IsAbsolute = capability.is_absolute();
    caps.ReportCount = capability.report_count;
    caps.Range = {capability.usage_min,      capability.usage_max,      capability.string_min,
                  capability.string_max,     capability.designator_min, capability.designator_max,
                  capability.data_index_min, capability.data_index_max};
}

void fill(HIDP_BUTTON_CAPS& caps, const Capability& capability, const HIDP_LINK_COLLECTION_NODE& link) {
    caps = {};
    fill_common(caps, capability, link);
}

void fill(HIDP_VALUE_CAPS& caps, const Capability& capability, const HIDP_LINK_COLLECTION_NODE& link) {
    caps = {};
    fill_common(caps, capability, link);
    caps.HasNull = capability.has_null();
    caps.BitSize = capability.bit_size;
    caps.UnitsExp = static_cast<ULONG>(capability.units_exp);
    caps.Units = capability.units;
    caps.LogicalMin = capability.logical_min;
    caps.LogicalMax = capability.logical_max;
    caps.PhysicalMin = capability.physical_min;
    caps.PhysicalMax = capability.physical_max;
}

/// Which capabilities a caller wants to see; 0 stands for any page, link collection or usage.
struct Wanted {
    bool is_button;
    USAGE page = 0;
    USHORT link_collection = 0;
    USAGE usage = 0;

    bool includes(const Capability& capability) const {
        const USAGE wanted_page = page == 0 ? capability.usage_page : page;
        const bool has_usage = usage == 0 || (capability.usage_min <= usage && usage <= capability.usage_max);
        return has_usage && CapabilityFilter{is_button, wanted_page, link_collection}.matches(capability);
    }
};

template <typename Caps>
NTSTATUS list_caps(HIDP_REPORT_TYPE type, const Wanted& wanted, Caps* caps, USHORT* length,
                   PHIDP_PREPARSED_DATA data) {
    if (const NTSTATUS status = check_direction(data, type); status != HIDP_STATUS_SUCCESS) {
        return status;
    }
    const USHORT room = *length;
    USHORT found = 0;
    for (const Capability& capability : data->directions[type].capabilities) {
        if (!wanted.includes(capability)) {
            continue;
        }
        if (found < room) {
            fill(caps[found], capability, data->link_collections[capability.link_collection]);
        }
        ++found;
    }
    *length = found;
    if (found == 0) {
        return HIDP_STATUS_USAGE_NOT_FOUND;
    }
    return found > room ? HIDP_STATUS_BUFFER_TOO_SMALL : HIDP_STATUS_SUCCESS;
}

}  // namespace

NTSTATUS Parser::HidP_GetCaps(PHIDP_PREPARSED_DATA data, HIDP_CAPS* caps) const {
    if (const NTSTATUS status = check_data(data); status != HIDP_STATUS_SUCCESS) {
        return status;
    }
    const auto& [input, output, feature] = data->directions;
    const HIDP_LINK_COLLECTION_NODE& top = data->link_collections.front();
    *caps = {};
    caps->Usage = top.LinkUsage;
    caps->UsagePage = top.LinkUsagePage;
    caps->InputReportByteLength = input.report_byte_length;
    caps->OutputReportByteLength = output.report_byte_length;
    caps->FeatureReportByteLength = feature.report_byte_length;
    caps->NumberLinkCollectionNodes = static_cast<USHORT>(data->link_collections.size());
    caps->NumberInputButtonCaps = input.button_count;
    caps->NumberInputValueCaps = value_count(input);
    caps->NumberInputDataIndices = data_index_count(input);
    caps->NumberOutputButtonCaps = output.button_count;
    caps->NumberOutputValueCaps = value_count(output);
    caps->NumberOutputDataIndices = data_index_count(output);
    caps->NumberFeatureButtonCaps = feature.button_count;
    caps->NumberFeatureValueCaps = value_count(feature);
    caps->NumberFeatureDataIndices = data_index_count(feature);
    return HIDP_STATUS_SUCCESS;
}

NTSTATUS Parser::HidP_GetButtonCaps(HIDP_REPORT_TYPE type, HIDP_BUTTON_CAPS* caps, USHORT* length,
                                    PHIDP_PREPARSED_DATA data) const {
    return list_caps(type, {true}, caps, length, data);
}

NTSTATUS Parser::HidP_GetValueCaps(HIDP_REPORT_TYPE type, HIDP_VALUE_CAPS* caps, USHORT* length,
                                   PHIDP_PREPARSED_DATA data) const {
    return list_caps(type, {false}, caps, length, data);
}

NTSTATUS Parser::HidP_GetSpecificButtonCaps(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection,
                                            USAGE usage, HIDP_BUTTON_CAPS* caps, USHORT* length,
                                            PHIDP_PREPARSED_DATA data) const {
    return list_caps(type, {true, page, link_collection, usage}, caps, length, data);
}

NTSTATUS Parser::HidP_GetSpecificValueCaps(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection,
                                           USAGE usage, HIDP_VALUE_CAPS* caps, USHORT* length,
                                           PHIDP_PREPARSED_DATA data) const {
    return list_caps(type, {false, page, link_collection, usage}, caps, length, data);
}

NTSTATUS Parser::HidP_GetLinkCollectionNodes(HIDP_LINK_COLLECTION_NODE* nodes, ULONG* length,
                                             PHIDP_PREPARSED_DATA data) const {
    if (const NTSTATUS status = check_data(data); status != HIDP_STATUS_SUCCESS) {
        return status;
    }
    const ULONG room = std::exchange(*length, static_cast<ULONG>(data->link_collections.size()));
    if (room < *length) {
        return HIDP_STATUS_BUFFER_TOO_SMALL;
    }
    std::copy(data->link_collections.begin(), data->link_collections.end(), nodes);
    return HIDP_STATUS_SUCCESS;
}

}  // namespace platform::hidp
