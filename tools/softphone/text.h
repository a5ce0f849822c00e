// The words of a command line and the numbers in them.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tools/common/text.h"

namespace softphone {

using tools::Bytes;
using tools::printable;
using tools::quoted;
using tools::same_ignoring_case;
using tools::to_hex;
using tools::to_hex16;
using tools::trimmed;
using Words = std::vector<std::string>;

/// A command that cannot be understood or carried out. The text is a sentence for the user, without place.
class CommandError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The words of a line: white space separates them, double quotes hold one together, and a `#` at the start
/// of a word begins a comment. Throws CommandError when a quote is not closed.
Words split_words(std::string_view line);

/// The words with one space between them.
std::string join(std::span<const std::string> words);

/// The whole text as a number; throws CommandError, which names `what`, when it is none.
int parse_integer(std::string_view text, std::string_view what);
std::chrono::milliseconds parse_milliseconds(std::string_view text);

/// Bytes as "02:01:00" or "020100"; throws CommandError when the text is anything else or empty.
Bytes parse_bytes(std::string_view text);

}  // namespace softphone
