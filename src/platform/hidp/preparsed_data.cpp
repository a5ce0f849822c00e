#include "platform/hidp/preparsed_data.h"

namespace platform::hidp {

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
