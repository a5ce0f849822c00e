// Values in a report: HidP_GetUsageValue, HidP_SetUsageValue, HidP_GetScaledUsageValue.
#include <cstdint>
#include <span>

#include "platform/hidp/bits.h"
#include "platform/hidp/hidp.h"
#include "platform/hidp/preparsed_data.h"

namespace platform::hidp {
namespace {

/// Where one usage's value stands. Where a run of fields belongs to one usage, it is the first of them.
struct ValueField {
    NTSTATUS status = HIDP_STATUS_SUCCESS;
    const Capability* capability = nullptr;  ///< null unless status is HIDP_STATUS_SUCCESS
    ULONG position = 0;
};

ValueField find_value(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection,
                      USAGE usage, std::span<const UCHAR> report) {
    const auto length = static_cast<ULONG>(report.size());
    if (const NTSTATUS status = check_report(data, type, length); status != HIDP_STATUS_SUCCESS) {
        return {status};
    }
    const CapabilityFilter filter{false, page, link_collection};
    const auto [status, capability] = find_capability(data->directions[type], filter, usage, report[0]);
    if (capability == nullptr) {
        return {status};
    }
    return {status, capability, capability->field_position(usage - ULONG{capability->usage_min})};
}

/// The sign of a field is that of its logical minimum (HID 1.11, 5.8).
std::int64_t logical_value(const Capability& capability, ULONG raw) {
    const ULONG size = capability.field_bits();
    const bool is_negative = capability.logical_min < 0 && size > 0 && (raw >> (size - 1) & 1) != 0;
    return is_negative ? std::int64_t{raw} - (std::int64_t{1} << size) : std::int64_t{raw};
}

struct Extent {
    std::int64_t min;
    std::int64_t max;

    bool is_empty() const { return min >= max; }
    bool contains(std::int64_t value) const { return min <= value && value <= max; }
    std::uint64_t width() const { return static_cast<std::uint64_t>(max - min); }
};

/// HID 1.11, 6.2.2.7: while both physical limits are 0, they are the logical ones.
Extent physical_extent(const Capability& capability, const Extent& logical) {
    const bool is_defined = capability.physical_min != 0 || capability.physical_max != 0;
    return is_defined ? Extent{capability.physical_min, capability.physical_max} : logical;
}

NTSTATUS scale(const Capability& capability, std::int64_t value, LONG& scaled) {
    const Extent logical{capability.logical_min, capability.logical_max};
    const Extent physical = physical_extent(capability, logical);
    if (logical.is_empty() || physical.is_empty()) {
        return HIDP_STATUS_BAD_LOG_PHY_VALUES;
    }
    if (!logical.contains(value)) {
        return capability.has_null() ? HIDP_STATUS_NULL : HIDP_STATUS_VALUE_OUT_OF_RANGE;
    }
    // Unsigned: the product of two full 32-bit extents fits 64 bits, but not 63.
    const std::uint64_t steps =
        static_cast<std::uint64_t>(value - logical.min) * physical.width() / logical.width();
    scaled = static_cast<LONG>(physical.min + static_cast<std::int64_t>(steps));
    return HIDP_STATUS_SUCCESS;
}

}  // namespace

NTSTATUS Parser::HidP_SetUsageValue(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE usage,
                                    ULONG value, PHIDP_PREPARSED_DATA data, UCHAR* report,
                                    ULONG report_length) const {
    const std::span<UCHAR> bytes{report, report_length};
    const ValueField field = find_value(data, type, page, link_collection, usage, bytes);
    if (field.capability != nullptr) {
        bytes[0] = field.capability->report_id;
        write_bits(bytes, field.position, field.capability->field_bits(), value);
    }
    return field.status;
}

NTSTATUS Parser::HidP_GetUsageValue(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE usage,
                                    ULONG* value, PHIDP_PREPARSED_DATA data, const UCHAR* report,
                                    ULONG report_length) const {
    const std::span<const UCHAR> bytes{report, report_length};
    const ValueField field = find_value(data, type, page, link_collection, usage, bytes);
    if (field.capability != nullptr) {
        *value = read_bits(bytes, field.position, field.capability->field_bits());
    }
    return field.status;
}

NTSTATUS Parser::HidP_GetScaledUsageValue(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection,
                                          USAGE usage, LONG* value, PHIDP_PREPARSED_DATA data,
                                          const UCHAR* report, ULONG report_length) const {
    const std::span<const UCHAR> bytes{report, report_length};
    const ValueField field = find_value(data, type, page, link_collection, usage, bytes);
    if (field.capability == nullptr) {
        return field.status;
    }
    const ULONG raw = read_bits(bytes, field.position, field.capability->field_bits());
    *value = 0;
    return scale(*field.capability, logical_value(*field.capability, raw), *value);
}

}  // namespace platform::hidp
