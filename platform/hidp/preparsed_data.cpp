#include "platform/hidp/preparsed_data.h"

namespace platform::hidp {

NTSTATUS check_data(PHIDP_PREPARSED_DATA data) {
    const bool is_own = data != nullptr && data->magic == preparsed_data_magic;
    return is_own ? HIDP_STATUS_SUCCESS : HIDP_STATUS_INVALID_PREPARSED_DATA;
}

NTSTATUS check_direction(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE type) {
    if (const NTSTATUS status = check_data(data); status != HIDP_STATUS_SUCCESS) {
        return status;
    }
    return type < report_type_count ? HIDP_STATUS_SUCCESS : HIDP_STATUS_INVALID_REPORT_TYPE;
}

NTSTATUS check_report(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE type, ULONG report_length) {
    if (const NTSTATUS status = check_direction(data, type); status != HIDP_STATUS_SUCCESS) {
        return status;
    }
    const ULONG expected = data->directions[type].report_byte_length;
    if (report_length != expected) {
        return HIDP_STATUS_INVALID_REPORT_LENGTH;
    }
    return expected == 0 ? HIDP_STATUS_REPORT_DOES_NOT_EXIST : HIDP_STATUS_SUCCESS;
}

bool CapabilityFilter::matches(const Capability& capability) const {
    if (capability.is_button != is_button || capability.usage_page != page) {
        return false;
    }
    const USHORT wanted = link_collection == link_collection_root ? USHORT{0} : link_collection;
    return link_collection == 0 || capability.link_collection == wanted;
}

FoundCapability find_capability(const Direction& direction, const CapabilityFilter& filter, USAGE usage,
                                UCHAR report_id) {
    NTSTATUS status = HIDP_STATUS_USAGE_NOT_FOUND;
    for (const Capability& capability : direction.capabilities) {
        if (!filter.matches(capability) || !capability.holds(usage)) {
            continue;
        }
        if (fits_report(capability, report_id)) {
            return {HIDP_STATUS_SUCCESS, &capability};
        }
        status = HIDP_STATUS_INCOMPATIBLE_REPORT_ID;
    }
    return {status, nullptr};
}

}  // namespace platform::hidp
