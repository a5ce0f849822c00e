// Words for the usages that matter in a call: the indicators of a headset and its keys.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "tools/common/usage.h"

namespace softphone {

using tools::Usage;

struct NamedUsage {
    const char* name;
    Usage usage;
};

/// The indicators that a headset may have: the LED page's, and the ringer of the telephony page.
std::span<const NamedUsage> indicator_names();

/// The keys that a headset may have, of the telephony page and the consumer page.
std::span<const NamedUsage> key_names();

/// The usage of this name, or written as PAGE:USAGE in hexadecimal; throws CommandError when it is neither.
Usage find_usage(std::span<const NamedUsage> names, std::string_view text);

/// The name of a usage, PAGE:USAGE if it has none here.
std::string usage_name(std::span<const NamedUsage> names, Usage usage);

}  // namespace softphone
