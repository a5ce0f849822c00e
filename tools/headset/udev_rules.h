// The udev rules that let people open their headsets.
#pragma once

#include <cstdint>
#include <string>

namespace headset {

/// The name of the file. After 50-udev-default.rules, and before 73-seat-late.rules, which acts on the tag
/// uaccess.
inline constexpr const char* rules_file_name = "70-orvex-headset.rules";

/// The rules for devices of all vendors that are sound cards as well: two lines, the last one without its
/// end.
std::string sound_card_rules();

/// The rule for every HID device of a vendor, without an end of line.
std::string udev_rule(std::int32_t vendor_id);

/// Whether rules let people open a device: by the rule for its vendor, or, where it is a sound card as well,
/// by those for sound cards. Rules in a comment do not count.
bool has_rule_for(const std::string& rules, std::int32_t vendor_id, bool has_sound);

/// The file: the rules for sound cards, and one for each vendor that makes headsets and no keyboards.
std::string udev_rules();

}  // namespace headset
