// Values in a report: HidP_GetUsageValue, HidP_SetUsageValue, HidP_GetScaledUsageValue,
// HidP_SetScaledUsageValue, HidP_GetUsageValueArray, HidP_SetUsageValueArray, HidP_InitializeReportForID.
#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/hidp/bits.h"
#include "platform/hidp/hidp.h"
#include "platform/hidp/preparsed_data.h"

namespace platform::hidp {
namespace {

constexpr ULONG bits_per_byte = 8;

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
    bool operator==(const Extent&) const = default;
};

struct Extents {
    Extent logical;
    Extent physical;

    bool are_sound() const { return !logical.is_empty() && !physical.is_empty(); }
};

/// HID 1.11, 6.2.2.7: while both physical limits are 0, they are the logical ones.
Extents extents_of(const Capability& capability) {
    const Extent logical{capability.logical_min, capability.logical_max};
    const bool is_defined = capability.physical_min != 0 || capability.physical_max != 0;
    return {logical, is_defined ? Extent{capability.physical_min, capability.physical_max} : logical};
}

NTSTATUS scale(const Capability& capability, std::int64_t value, LONG& scaled) {
    const Extents extents = extents_of(capability);
    const auto& [logical, physical] = extents;
    if (!extents.are_sound()) {
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

/// The same backwards, in the 32 bits of the Windows parser: where the product overflows, the logical value
/// is wrong there and here. Between equal ranges there is no product.
NTSTATUS unscale(const Capability& capability, LONG scaled, LONG& value) {
    const Extents extents = extents_of(capability);
    const auto& [logical, physical] = extents;
    if (!extents.are_sound()) {
        return HIDP_STATUS_BAD_LOG_PHY_VALUES;
    }
    if (!physical.contains(scaled)) {
        return HIDP_STATUS_VALUE_OUT_OF_RANGE;
    }
    if (physical == logical) {
        value = scaled;
        return HIDP_STATUS_SUCCESS;
    }
    const auto product =
        static_cast<LONG>(static_cast<std::uint64_t>(scaled - physical.min) * (logical.width() + 1));
    // 64 bits: the physical values may be all that a LONG has.
    const std::int64_t steps = product / static_cast<std::int64_t>(physical.width() + 1);
    value = static_cast<LONG>(logical.min + steps);
    return HIDP_STATUS_SUCCESS;
}

/// The fields of one usage, as a run of bits.
struct ArrayField {
    NTSTATUS status = HIDP_STATUS_SUCCESS;
    UCHAR report_id = 0;
    ULONG begin = 0;
    ULONG end = 0;  ///< equal to `begin` unless status is HIDP_STATUS_SUCCESS
};

ArrayField find_array(const ValueField& first, USHORT value_byte_length) {
    if (first.capability == nullptr) {
        return {first.status};
    }
    const Capability& capability = *first.capability;
    if (!capability.is_value_array()) {
        return {HIDP_STATUS_NOT_VALUE_ARRAY};
    }
    const ULONG bits = ULONG{capability.bit_size} * capability.report_count;
    if (bits > ULONG{value_byte_length} * bits_per_byte) {
        return {HIDP_STATUS_BUFFER_TOO_SMALL};
    }
    return {HIDP_STATUS_SUCCESS, capability.report_id, first.position, first.position + bits};
}

/// Calls `move` for every byte's worth of the array: its place in the report and in the caller's bytes,
/// and its number of bits.
template <typename Move>
void for_each_byte(const ArrayField& array, Move move) {
    for (ULONG at = array.begin; at < array.end; at += bits_per_byte) {
        move(at, at - array.begin, std::min(bits_per_byte, array.end - at));
    }
}

/// A value outside the logical limits that the field has room for, if there is one.
std::optional<ULONG> null_value(const Capability& capability) {
    const Extent logical{capability.logical_min, capability.logical_max};
    const ULONG size = capability.field_bits();
    const ULONG all_bits = size == 0 ? 0 : 0xFFFFFFFF >> (32 - size);
    const auto behind_maximum = static_cast<ULONG>(logical.max + 1) & all_bits;
    for (const ULONG raw : {ULONG{0}, all_bits, behind_maximum}) {
        if (!logical.contains(logical_value(capability, raw))) {
            return raw;
        }
    }
    return std::nullopt;
}

void write_null(std::span<UCHAR> report, const Capability& capability, ULONG value) {
    for (ULONG field = 0; field < capability.report_count; ++field) {
        write_bits(report, capability.field_position(field), capability.field_bits(), value);
    }
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

NTSTATUS Parser::HidP_SetScaledUsageValue(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection,
                                          USAGE usage, LONG value, PHIDP_PREPARSED_DATA data, UCHAR* report,
                                          ULONG report_length) const {
    const std::span<UCHAR> bytes{report, report_length};
    const ValueField field = find_value(data, type, page, link_collection, usage, bytes);
    if (field.capability == nullptr) {
        return field.status;
    }
    LONG logical = 0;
    const NTSTATUS status = unscale(*field.capability, value, logical);
    if (status == HIDP_STATUS_SUCCESS) {
        bytes[0] = field.capability->report_id;
        write_bits(bytes, field.position, field.capability->field_bits(), static_cast<ULONG>(logical));
    }
    return status;
}

NTSTATUS Parser::HidP_SetUsageValueArray(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection,
                                         USAGE usage, const UCHAR* value, USHORT value_byte_length,
                                         PHIDP_PREPARSED_DATA data, UCHAR* report,
                                         ULONG report_length) const {
    const std::span<UCHAR> bytes{report, report_length};
    const std::span<const UCHAR> values{value, value_byte_length};
    const ArrayField array =
        find_array(find_value(data, type, page, link_collection, usage, bytes), value_byte_length);
    if (array.status == HIDP_STATUS_SUCCESS) {
        bytes[0] = array.report_id;
        for_each_byte(array, [&](ULONG in_report, ULONG in_values, ULONG bits) {
            write_bits(bytes, in_report, bits, read_bits(values, in_values, bits));
        });
    }
    return array.status;
}

NTSTATUS Parser::HidP_GetUsageValueArray(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection,
                                         USAGE usage, UCHAR* value, USHORT value_byte_length,
                                         PHIDP_PREPARSED_DATA data, const UCHAR* report,
                                         ULONG report_length) const {
    const std::span<const UCHAR> bytes{report, report_length};
    const std::span<UCHAR> values{value, value_byte_length};
    const ArrayField array =
        find_array(find_value(data, type, page, link_collection, usage, bytes), value_byte_length);
    for_each_byte(array, [&](ULONG in_report, ULONG in_values, ULONG bits) {
        write_bits(values, in_values, bits_per_byte, read_bits(bytes, in_report, bits));
    });
    return array.status;
}

NTSTATUS Parser::HidP_InitializeReportForID(HIDP_REPORT_TYPE type, UCHAR report_id, PHIDP_PREPARSED_DATA data,
                                            UCHAR* report, ULONG report_length) const {
    if (const NTSTATUS status = check_report(data, type, report_length); status != HIDP_STATUS_SUCCESS) {
        return status;
    }
    const auto& capabilities = data->directions[type].capabilities;
    const auto is_in_report = [&](const Capability& capability) { return capability.report_id == report_id; };
    if (std::none_of(capabilities.begin(), capabilities.end(), is_in_report)) {
        return HIDP_STATUS_REPORT_DOES_NOT_EXIST;
    }
    const std::span<UCHAR> bytes{report, report_length};
    std::fill(bytes.begin(), bytes.end(), UCHAR{0});
    bytes[0] = report_id;
    for (const Capability& capability : capabilities) {
        if (is_in_report(capability) && !capability.is_button && capability.has_null()) {
            write_null(bytes, capability, null_value(capability).value_or(0));
        }
    }
    return HIDP_STATUS_SUCCESS;
}

}  // namespace platform::hidp
