// Names of usages, as the HID Usage Tables have them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/common/usage.h"

namespace headset {

using tools::Usage;

/// "0B:2F"
std::string usage_number(Usage usage);

/// "Phone Mute"; empty where it has none here.
std::string usage_name(Usage usage);

/// "Phone Mute (0B:2F)", or the number alone.
std::string usage_label(Usage usage);

/// The same for usages from `first` to `last`: "Phone Key 0 to Phone Key Pound (0B:B0-BB)".
std::string range_label(Usage first, std::uint16_t last);

/// The usages that have this name, or this label, in upper or lower case. Usages of several pages may share
/// one.
std::vector<Usage> usages_named(std::string_view text);

}  // namespace headset
