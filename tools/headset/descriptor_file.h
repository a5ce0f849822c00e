// Report descriptors as they come: from a file, from the command line, from standard input.
#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <string_view>

#include "tools/headset/hex.h"

namespace headset {

struct DeviceIds {
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
};

struct Descriptor {
    Bytes bytes{};
    std::string name{};  ///< the device's; empty where it is not told
    std::optional<DeviceIds> ids{};
    bool has_serial = true;  ///< the device states a serial number, without which it is ignored
};

/// A descriptor in one of these forms, which is told by the content: a recording of hid-recorder (lines `N:`,
/// `I:` and `R:`), the output of usbhid-dump (a header line with `:DESCRIPTOR`), hexadecimal text, or the
/// bytes themselves. Of several devices or interfaces it is the first. A recording and a dump may be longer
/// than `most_text`: their reports follow the descriptor. Throws Refused.
Descriptor read_descriptor(std::string_view content);

/// Whether an argument is `-` or names a file.
bool names_file(const std::string& argument);

/// The descriptor that an argument names: `-` for what `input` holds, a file, else hexadecimal text. Reads
/// little more than `most_text` of them. Throws UsageError for an argument that is none of them, or a file
/// that cannot be read, and Refused, with the file's name.
Descriptor load_descriptor(const std::string& argument, std::istream& input);

}  // namespace headset
