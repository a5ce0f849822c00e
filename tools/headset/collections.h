// The top-level collections of a descriptor, and what the parser says about them, as values.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/hidp/hidp.h"
#include "platform/hidp/preparsed_data.h"
#include "tools/headset/usage_names.h"

namespace headset {

using platform::HIDP_BUTTON_CAPS;
using platform::HIDP_CAPS;
using platform::HIDP_LINK_COLLECTION_NODE;
using platform::HIDP_REPORT_TYPE;
using platform::HIDP_VALUE_CAPS;
using platform::PHIDP_PREPARSED_DATA;
using platform::hidp::Capability;

using Collections = std::vector<platform::hidp::PreparsedData>;

inline constexpr HIDP_REPORT_TYPE directions[] = {platform::HidP_Input, platform::HidP_Output,
                                                  platform::HidP_Feature};

/// "Input"
const char* to_string(HIDP_REPORT_TYPE direction);

/// Throws Refused with the parser's reason.
Collections parse_collections(std::span<const std::uint8_t> descriptor);

HIDP_CAPS get_caps(PHIDP_PREPARSED_DATA data);
std::vector<HIDP_BUTTON_CAPS> get_button_caps(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE direction);
std::vector<HIDP_VALUE_CAPS> get_value_caps(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE direction);
std::vector<HIDP_LINK_COLLECTION_NODE> get_link_collections(PHIDP_PREPARSED_DATA data);

/// What the collection is.
Usage collection_usage(PHIDP_PREPARSED_DATA data);

/// The capabilities with their places in the report, buttons and values as they stand.
std::span<const Capability> capabilities(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE direction);

/// The length of the collection's longest report, in which the parser wants every one.
std::size_t longest_report(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE direction);

/// The first usage that a capability covers; it ends with `usage_max`.
inline Usage first_usage(const Capability& capability) {
    return {capability.usage_page, capability.usage_min};
}

inline bool covers(const Capability& capability, Usage usage) {
    return capability.usage_page == usage.page && capability.usage_min <= usage.id &&
           usage.id <= capability.usage_max;
}

}  // namespace headset
