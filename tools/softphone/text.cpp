#include "tools/softphone/text.h"

#include <algorithm>

namespace softphone {
namespace {

using tools::white_space;

template <class Number>
Number parse_whole(std::string_view text, int base, std::string_view what) {
    const auto number = tools::parse_number<Number>(text, base);
    if (!number)
        throw CommandError(quoted(text) + " is not " + std::string(what));
    return *number;
}

}  // namespace

Words split_words(std::string_view line) {
    Words words;
    while (true) {
        const auto start = line.find_first_not_of(white_space);
        if (start == std::string_view::npos || line[start] == '#')
            return words;
        line.remove_prefix(start);
        const bool in_quotes = line.front() == '"';
        if (in_quotes)
            line.remove_prefix(1);
        const auto end = in_quotes ? line.find('"') : line.find_first_of(white_space);
        if (in_quotes && end == std::string_view::npos)
            throw CommandError("a quote is not closed");
        words.emplace_back(line.substr(0, end));
        if (end == std::string_view::npos)
            return words;
        line.remove_prefix(end + 1);
    }
}

std::string join(std::span<const std::string> words) {
    return tools::join(words, std::identity{}, " ");
}

int parse_integer(std::string_view text, std::string_view what) {
    return parse_whole<int>(text, 10, what);
}

std::chrono::milliseconds parse_milliseconds(std::string_view text) {
    return std::chrono::milliseconds(parse_whole<std::uint32_t>(text, 10, "a number of milliseconds"));
}

Bytes parse_bytes(std::string_view text) {
    constexpr std::string_view what = "a row of bytes such as 02:01:00";
    std::string digits(text);
    std::erase(digits, ':');
    if (digits.empty() || digits.size() % 2 != 0)
        throw CommandError(quoted(text) + " is not " + std::string(what));
    Bytes bytes;
    for (std::string_view rest = digits; !rest.empty(); rest.remove_prefix(2))
        bytes.push_back(parse_whole<std::uint8_t>(rest.substr(0, 2), 16, what));
    return bytes;
}

}  // namespace softphone
