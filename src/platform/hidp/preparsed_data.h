// What the parser keeps of one top-level collection.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/hid_types.h"
#include "platform/hidp/capability.h"

namespace platform::hidp {

/// "orvxhidp": tells this parser's data from everything else that a host might hand in.
inline constexpr std::uint64_t preparsed_data_magic = 0x7064696878767270;

inline constexpr std::size_t report_type_count = 3;

/// The reports of one type.
struct Direction {
    std::vector<Capability> capabilities;
    USHORT button_count = 0;           ///< of the capabilities; the others are values
    USHORT declared_capabilities = 0;  ///< with those that no field was left for
    ULONG data_indices = 0;
    ULONG usage_list_length = 0;    ///< buttons that one report can list at once
    USHORT report_byte_length = 0;  ///< of the longest report, id byte included; 0 without a report
};

struct Report {
    HIDP_REPORT_TYPE type = HidP_Input;
    UCHAR id = 0;
    ULONG bits = 0;  ///< without the id byte

    /// With the id byte; 0 for a report that carries nothing.
    USHORT byte_length() const { return bits == 0 ? USHORT{0} : static_cast<USHORT>(1 + (bits + 7) / 8); }
};

/// The order of reports in the preparsed data.
inline bool precedes(const Report& left, const Report& right) {
    return std::pair(left.type, left.id) < std::pair(right.type, right.id);
}

}  // namespace platform::hidp

namespace platform {

struct HIDP_PREPARSED_DATA {
    std::uint64_t magic = hidp::preparsed_data_magic;
    bool has_report_ids = false;
    std::array<hidp::Direction, hidp::report_type_count> directions;
    std::vector<hidp::Report> reports;  ///< sorted by type and id
    std::vector<HIDP_LINK_COLLECTION_NODE> link_collections;
};

}  // namespace platform

namespace platform::hidp {

// What every call begins with, and what it asks every capability, is inline: the calls alone would take
// longer than the work.

/// HIDP_STATUS_SUCCESS, or HIDP_STATUS_INVALID_PREPARSED_DATA for what this parser did not make.
inline NTSTATUS check_data(PHIDP_PREPARSED_DATA data) {
    const bool is_own = data != nullptr && data->magic == preparsed_data_magic;
    return is_own ? HIDP_STATUS_SUCCESS : HIDP_STATUS_INVALID_PREPARSED_DATA;
}

/// HIDP_STATUS_SUCCESS, or why `data` has no such direction.
inline NTSTATUS check_direction(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE type) {
    if (const NTSTATUS status = check_data(data); status != HIDP_STATUS_SUCCESS) {
        return status;
    }
    return type < report_type_count ? HIDP_STATUS_SUCCESS : HIDP_STATUS_INVALID_REPORT_TYPE;
}

/// The same, and whether a report of that type is `report_length` bytes long.
inline NTSTATUS check_report(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE type, ULONG report_length) {
    if (const NTSTATUS status = check_direction(data, type); status != HIDP_STATUS_SUCCESS) {
        return status;
    }
    const ULONG expected = data->directions[type].report_byte_length;
    if (report_length != expected) {
        return HIDP_STATUS_INVALID_REPORT_LENGTH;
    }
    return expected == 0 ? HIDP_STATUS_REPORT_DOES_NOT_EXIST : HIDP_STATUS_SUCCESS;
}

/// Names the top-level collection itself, where 0 means any (HIDP_LINK_COLLECTION_ROOT of the Windows driver
/// kit).
inline constexpr USHORT link_collection_root = 0xFFFF;

/// What a HidP_ function's caller asks for: capabilities of one kind, page and link collection.
struct CapabilityFilter {
    bool is_button;
    USAGE page;
    USHORT link_collection;  ///< 0 for any, or link_collection_root

    bool matches(const Capability& capability) const {
        if (capability.is_button != is_button || capability.usage_page != page) {
            return false;
        }
        const USHORT wanted = link_collection == link_collection_root ? USHORT{0} : link_collection;
        return link_collection == 0 || capability.link_collection == wanted;
    }
};

/// A report whose id byte is 0 may still become any report.
inline bool fits_report(const Capability& capability, UCHAR report_id) {
    return report_id == 0 || report_id == capability.report_id;
}

struct FoundCapability {
    NTSTATUS status;  ///< HIDP_STATUS_USAGE_NOT_FOUND, or _INCOMPATIBLE_REPORT_ID where only others have it
    const Capability* capability;  ///< null unless status is HIDP_STATUS_SUCCESS
};

/// The capability that holds the usage in the report with this id.
FoundCapability find_capability(const Direction& direction, const CapabilityFilter& filter, USAGE usage,
                                UCHAR report_id);

}  // namespace platform::hidp
