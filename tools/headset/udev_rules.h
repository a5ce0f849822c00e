// The udev rules that let people open their headsets.
#pragma once

#include <cstdint>
#include <string>

namespace headset {

/// The name of the file. Before 73-seat-late.rules, which acts on the tag uaccess.
inline constexpr const char* rules_file_name = "70-orvex-headset.rules";

/// The rule for a vendor, without an end of line.
std::string udev_rule(std::int32_t vendor_id);

/// The file, with a rule for each vendor that the plug-in has a name for.
std::string udev_rules();

}  // namespace headset
