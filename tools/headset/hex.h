// Bytes in hexadecimal, however people write them.
#pragma once

#include <string_view>

#include "tools/common/text.h"

namespace headset {

using tools::Bytes;

/// The bytes of a text: pairs of digits with or without white space, commas or colons between them, `0x`
/// before a number, which may then be of one digit, and comments from `#` to the end of the line. Throws
/// Refused.
Bytes parse_hex(std::string_view text);

}  // namespace headset
