// The vendors whose headsets are known by name.
#pragma once

#include <cstdint>
#include <span>

namespace headset_plugin {

/// The USB vendor id of the maker's own headsets, which the host drives itself. Set when the project is
/// configured.
inline constexpr std::int32_t ORVEX_VENDOR_ID = ORVEX_CONFIGURED_VENDOR_ID;

struct VendorName {
    std::int32_t vendor_id;
    const char* name;
};

/// Every vendor that has a name; one with several ids stands there with each of them.
std::span<const VendorName> vendor_names();

/// The display name of a USB vendor, "Unknown" for one that is not in the table. Thread: any.
const char* vendor_name(std::int32_t vendor_id);

}  // namespace headset_plugin
