// The command line of the program.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "platform/hid_types.h"

namespace headset {

enum class Command { caps, decode, encode, explain, list, doctor, monitor, udev_rules };

struct Options {
    Command command = Command::caps;
    std::string descriptor{};              ///< a file, hexadecimal text or `-`
    std::string device{};                  ///< a path or serial number; empty for the first headset
    std::vector<std::string> arguments{};  ///< the reports of decode, the usages of encode and monitor
    platform::HIDP_REPORT_TYPE direction = platform::HidP_Input;
    bool json = false;
};

/// The options; or the exit status of a program that has said all there is to say: its help, its version, or
/// what is wrong with its command line.
std::variant<Options, int> parse_options(int argc, const char* const* argv);

}  // namespace headset
