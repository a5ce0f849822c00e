// Buttons in a report: HidP_MaxUsageListLength, HidP_SetUsages, HidP_UnsetUsages, HidP_GetUsages.
#include <algorithm>
#include <bit>
#include <span>

#include "platform/hidp/bits.h"
#include "platform/hidp/hidp.h"
#include "platform/hidp/preparsed_data.h"

namespace platform::hidp {
namespace {

constexpr ULONG no_selector = 0;  // an array's field that names no usage

ULONG get_field(std::span<const UCHAR> report, const Capability& capability, ULONG index) {
    return read_bits(report, capability.field_position(index), capability.field_bits());
}

void set_field(std::span<UCHAR> report, const Capability& capability, ULONG index, ULONG value) {
    write_bits(report, capability.field_position(index), capability.field_bits(), value);
}

/// Some of a capability's fields.
struct FieldRange {
    ULONG begin;
    ULONG end;

    bool is_empty() const { return begin == end; }
};

/// The first field in the range with this value; empty when there is none.
FieldRange find_field(std::span<const UCHAR> report, const Capability& capability, FieldRange range,
                      ULONG value) {
    while (range.begin < range.end && get_field(report, capability, range.begin) != value) {
        ++range.begin;
    }
    return range;
}

/// The bits that belong to a variable usage: one each, and what is left over to the last.
FieldRange bits_of(const Capability& capability, USAGE usage) {
    const ULONG begin = usage - ULONG{capability.usage_min};
    return {begin, usage == capability.usage_max ? capability.report_count : begin + 1};
}

/// The array's field that names the usage.
FieldRange slot_of(std::span<const UCHAR> report, const Capability& capability, ULONG selector) {
    return find_field(report, capability, {0, capability.report_count}, selector);
}

bool is_set(std::span<const UCHAR> report, const Capability& capability, USAGE usage) {
    if (capability.is_array()) {
        return !slot_of(report, capability, capability.selector(usage)).is_empty();
    }
    return !find_field(report, capability, bits_of(capability, usage), 1).is_empty();
}

NTSTATUS set(std::span<UCHAR> report, const Capability& capability, USAGE usage) {
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

/// Takes the usage's field out of the array; those behind it move up, so that the fields in use stay
/// together.
void remove_from_array(std::span<UCHAR> report, const Capability& capability, FieldRange field) {
    for (ULONG next = field.begin + 1; next < field.end; ++next) {
        set_field(report, capability, next - 1, get_field(report, capability, next));
    }
    set_field(report, capability, field.end - 1, no_selector);
}

NTSTATUS unset(std::span<UCHAR> report, const Capability& capability, USAGE usage) {
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

/// The list that HidP_GetUsages fills; it counts on when it is full.
class FoundUsages {
  public:
    explicit FoundUsages(std::span<USAGE> room) : room_(room) {}

    void add(USAGE usage) {
        if (count_ < room_.size()) {
            room_[count_] = usage;
        }
        ++count_;
    }
    ULONG count() const { return count_; }
    bool overflows() const { return count_ > room_.size(); }

  private:
    std::span<USAGE> room_;
    ULONG count_ = 0;
};

void list_array(std::span<const UCHAR> report, const Capability& capability, FoundUsages& found) {
    for (ULONG index = 0; index < capability.report_count; ++index) {
        const ULONG selector = get_field(report, capability, index);
        if (selector != no_selector && capability.is_selected_by(selector)) {
            found.add(capability.selected_usage(selector));
        }
    }
}

/// A variable usage has a bit; those left over belong to the last one, which is listed once.
void list_bits(std::span<const UCHAR> report, const Capability& capability, FoundUsages& found) {
    constexpr ULONG word_bits = 32;
    const ULONG last = capability.usage_count() - 1;
    for (ULONG begin = 0; begin < capability.report_count; begin += word_bits) {
        ULONG set_bits = read_bits(report, capability.bit_position + begin,
                                   std::min(word_bits, capability.report_count - begin));
        for (; set_bits != 0; set_bits &= set_bits - 1) {
            const ULONG index = begin + static_cast<ULONG>(std::countr_zero(set_bits));
            found.add(static_cast<USAGE>(capability.usage_min + std::min(index, last)));
            if (index >= last) {
                return;
            }
        }
    }
}

void list(std::span<const UCHAR> report, const Capability& capability, FoundUsages& found) {
    if (capability.is_array()) {
        list_array(report, capability, found);
    } else if (capability.report_count > 1) {
        list_bits(report, capability, found);
    } else if (read_bit(report, capability.bit_position)) {
        found.add(capability.usage_min);
    }
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
        return set(bytes, capability, usage);
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
        return unset(bytes, capability, usage);
    };
    return change_usages(data, type, {true, page, link_collection}, usages, length, bytes, check, change);
}

NTSTATUS Parser::HidP_GetUsages(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE* usages,
                                ULONG* length, PHIDP_PREPARSED_DATA data, const UCHAR* report,
                                ULONG report_length) const {
    if (const NTSTATUS status = check_report(data, type, report_length); status != HIDP_STATUS_SUCCESS) {
        return status;
    }
    const CapabilityFilter filter{true, page, link_collection};
    const std::span<const UCHAR> bytes{report, report_length};
    const UCHAR report_id = bytes[0];
    FoundUsages found({usages, *length});
    NTSTATUS status = HIDP_STATUS_USAGE_NOT_FOUND;
    for (const Capability& capability : data->directions[type].capabilities) {
        if (!filter.matches(capability)) {
            continue;
        }
        if (!fits_report(capability, report_id)) {
            status = status == HIDP_STATUS_SUCCESS ? status : HIDP_STATUS_INCOMPATIBLE_REPORT_ID;
            continue;
        }
        status = HIDP_STATUS_SUCCESS;
        list(bytes, capability, found);
    }
    *length = found.count();
    return found.overflows() ? HIDP_STATUS_BUFFER_TOO_SMALL : status;
}

}  // namespace platform::hidp
