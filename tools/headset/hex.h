// Bytes in hexadecimal, however people write them.
#pragma once

#include <cstddef>
#include <string_view>

#include "platform/hidp/limits.h"
#include "tools/common/text.h"

namespace headset {

using tools::Bytes;

/// How much is read of a text that holds a descriptor: 64 characters for each byte of the longest descriptor
/// that the parser takes, which leaves room for comments.
inline constexpr std::size_t most_text = 64 * platform::hidp::max_descriptor_size;

/// Throws Refused for a text that is longer.
void check_text_size(std::string_view text);

/// The bytes of a text: pairs of digits with or without white space, commas or colons between them, `0x`
/// before a number, which may then be of one digit, and comments from `#` to the end of the line. Throws
/// Refused.
Bytes parse_hex(std::string_view text);

}  // namespace headset
