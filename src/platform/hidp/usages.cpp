// Buttons in a report: HidP_MaxUsageListLength, HidP_SetUsages, HidP_UnsetUsages, HidP_GetUsages,
// HidP_GetUsagesEx.
#include <algorithm>
#include <span>

#include "platform/hidp/buttons.h"
#include "platform/hidp/found_list.h"
#include "platform/hidp/hidp.h"
#include "platform/hidp/preparsed_data.h"

namespace platform::hidp {
namespace {

/// A caller's list of usages and the report that it is for.
struct UsageList {
    const Direction& direction;
    CapabilityFilter filter;
    std::span<const USAGE> usages;
    ULONG* processed;  ///< set on failure
};

/// Calls `visit` for every usage in the list but 0. The first usage decides which report a list is for while
/// `report_id` is 0.
template <typename Visit>
NTSTATUS for_each_usage(const UsageList& list, UCHAR& report_id, Visit visit) {
    for (std::size_t i = 0; i < list.usages.size(); ++i) {
        const USAGE usage = list.usages[i];
        if (usage == 0) {
            continue;
        }
        auto [status, capability] = find_capability(list.direction, list.filter, usage, report_id);
        if (status == HIDP_STATUS_SUCCESS) {
            status = visit(*capability, usage);
        }
        if (status != HIDP_STATUS_SUCCESS) {
            *list.processed = static_cast<ULONG>(i);
            return status;
        }
        report_id = capability->report_id;
    }
    return HIDP_STATUS_SUCCESS;
}

/// What HidP_SetUsages and HidP_UnsetUsages have in common: `check` sees every usage before `change` touches
/// the first.
template <typename Check, typename Change>
NTSTATUS change_usages(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE type, const CapabilityFilter& filter,
                       const USAGE* usages, ULONG* length, std::span<UCHAR> report, Check check,
                       Change change) {
    const auto report_length = static_cast<ULONG>(report.size());
    if (const NTSTATUS status = check_report(data, type, report_length); status != HIDP_STATUS_SUCCESS) {
        return status;
    }
    const UsageList list{data->directions[type], filter, {usages, *length}, length};
    UCHAR report_id = report[0];
    const bool can_fail_midway = list.usages.size() > 1;
    if (can_fail_midway) {
        if (const NTSTATUS status = for_each_usage(list, report_id, check); status != HIDP_STATUS_SUCCESS) {
            return status;
        }
    }
    const NTSTATUS status = for_each_usage(list, report_id, change);
    report[0] = report_id;
    return status;
}

/// What HidP_GetUsages and HidP_GetUsagesEx have in common: `is_wanted` chooses the capabilities, `entry`
/// makes what the list holds.
template <typename Entry, typename IsWanted, typename MakeEntry>
NTSTATUS list_usages(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE type, Entry* usages, ULONG* length,
                     std::span<const UCHAR> report, IsWanted is_wanted, MakeEntry entry) {
    const auto report_length = static_cast<ULONG>(report.size());
    if (const NTSTATUS status = check_report(data, type, report_length); status != HIDP_STATUS_SUCCESS) {
        return status;
    }
    const UCHAR report_id = report[0];
    FoundList<Entry> found({usages, *length});
    NTSTATUS status = HIDP_STATUS_USAGE_NOT_FOUND;
    for (const Capability& capability : data->directions[type].capabilities) {
        if (!is_wanted(capability)) {
            continue;
        }
        if (!fits_report(capability, report_id)) {
            status = status == HIDP_STATUS_SUCCESS ? status : HIDP_STATUS_INCOMPATIBLE_REPORT_ID;
            continue;
        }
        status = HIDP_STATUS_SUCCESS;
        for_each_pressed(report, capability, [&](USAGE usage) { found.add(entry(capability, usage)); });
    }
    *length = found.count();
    return found.overflows() ? HIDP_STATUS_BUFFER_TOO_SMALL : status;
}

}  // namespace

ULONG Parser::HidP_MaxUsageListLength(HIDP_REPORT_TYPE type, USAGE page, PHIDP_PREPARSED_DATA data) const {
    if (check_direction(data, type) != HIDP_STATUS_SUCCESS) {
        return 0;
    }
    ULONG length = 0;
    for (const Capability& capability : data->directions[type].capabilities) {
        if (capability.is_button && (page == 0 || capability.usage_page == page)) {
            length += capability.report_count;
        }
    }
    return length;
}

NTSTATUS Parser::HidP_SetUsages(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE* usages,
                                ULONG* length, PHIDP_PREPARSED_DATA data, UCHAR* report,
                                ULONG report_length) const {
    // That an array has fields free is not checked: one that fills up keeps what went in, as on Windows.
    const auto has_place = [](const Capability&, USAGE) { return HIDP_STATUS_SUCCESS; };
    const std::span<UCHAR> bytes{report, report_length};
    const auto change = [&](const Capability& capability, USAGE usage) {
        return set_button(bytes, capability, usage);
    };
    return change_usages(data, type, {true, page, link_collection}, usages, length, bytes, has_place, change);
}

NTSTATUS Parser::HidP_UnsetUsages(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE* usages,
                                  ULONG* length, PHIDP_PREPARSED_DATA data, UCHAR* report,
                                  ULONG report_length) const {
    const std::span<UCHAR> bytes{report, report_length};
    const auto check = [&](const Capability& capability, USAGE usage) {
        return is_set(bytes, capability, usage) ? HIDP_STATUS_SUCCESS : HIDP_STATUS_BUTTON_NOT_PRESSED;
    };
    const auto change = [&](const Capability& capability, USAGE usage) {
        return unset_button(bytes, capability, usage);
    };
    return change_usages(data, type, {true, page, link_collection}, usages, length, bytes, check, change);
}

NTSTATUS Parser::HidP_GetUsages(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE* usages,
                                ULONG* length, PHIDP_PREPARSED_DATA data, const UCHAR* report,
                                ULONG report_length) const {
    const auto is_wanted = [filter = CapabilityFilter{true, page, link_collection}](
                               const Capability& capability) { return filter.matches(capability); };
    const auto entry = [](const Capability&, USAGE usage) { return usage; };
    return list_usages(data, type, usages, length, {report, report_length}, is_wanted, entry);
}

NTSTATUS Parser::HidP_GetUsagesEx(HIDP_REPORT_TYPE type, USHORT link_collection, USAGE_AND_PAGE* usages,
                                  ULONG* length, PHIDP_PREPARSED_DATA data, const UCHAR* report,
                                  ULONG report_length) const {
    const auto is_wanted = [&](const Capability& capability) {
        return CapabilityFilter{true, capability.usage_page, link_collection}.matches(capability);
    };
    const auto entry = [](const Capability& capability, USAGE usage) {
        return USAGE_AND_PAGE{usage, capability.usage_page};
    };
    return list_usages(data, type, usages, length, {report, report_length}, is_wanted, entry);
}

}  // namespace platform::hidp
