// Words and numbers as people type and read them.
#pragma once

#include <charconv>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tools {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::string_view white_space = " \t\r\n";

/// The line without the white space around it.
std::string_view trimmed(std::string_view line);

/// The whole text as a number of this base; nothing when it is none, or does not fit.
template <class Number>
std::optional<Number> parse_number(std::string_view text, int base) {
    Number number{};
    const auto* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc{} && stop == end ? std::optional(number) : std::nullopt;
}

/// "02 01 00"
std::string to_hex(std::span<const std::uint8_t> bytes);
/// "0B0E"
std::string to_hex16(unsigned number);

/// The text in double quotes.
std::string quoted(std::string_view text);

/// "one, two": the texts of the items, with a separator between them.
template <class Items, class ToText>
std::string join(const Items& items, ToText to_text, std::string_view separator = ", ") {
    std::string text;
    bool first = true;
    for (const auto& item : items) {
        text.append(first ? "" : separator).append(std::invoke(to_text, item));
        first = false;
    }
    return text;
}

/// Equal but for the case of ASCII letters.
bool same_ignoring_case(std::string_view a, std::string_view b);

/// A text from outside, such as a device's name, as one line that a terminal can show: control characters and
/// those that change the direction of writing become `?`, and what is not UTF-8 becomes U+FFFD.
std::string printable(std::string_view text);

/// JSON in which every character that printable() replaces is written as \uXXXX. The value stays the same.
/// \param json  JSON without white space between its tokens
std::string printable_json(std::string_view json);

/// The name that is most like a word that was mistyped: one that begins with the word, or that differs from
/// it by two letters at most. Nothing where no name is like it.
std::optional<std::string> nearest(std::string_view word, std::span<const std::string> names);

}  // namespace tools
