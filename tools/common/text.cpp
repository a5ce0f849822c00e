#include "tools/common/text.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <numeric>
#include <utility>

#include "platform/text.h"

namespace tools {
namespace {

struct Characters {
    wchar_t first, last;
};

// C0, delete and C1 (ISO/IEC 6429); line and paragraph separators, and the characters that change the
// direction of writing (Unicode 15, sections 23.2 and 23.3).
constexpr Characters steering[] = {
    {0x00, 0x1F}, {0x7F, 0x9F}, {0x061C, 0x061C}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069},
};

bool steers(wchar_t character) {
    return std::ranges::any_of(
        steering, [=](Characters range) { return range.first <= character && character <= range.last; });
}

/// The number of letters to insert, remove or replace (the Levenshtein distance).
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string_view trimmed(std::string_view line) {
    const auto start = line.find_first_not_of(white_space);
    return start == line.npos ? "" : line.substr(start, line.find_last_not_of(white_space) - start + 1);
}

std::string to_hex(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const auto byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X", byte);
        text.append(text.empty() ? "" : " ").append(digits);
    }
    return text;
}

std::string to_hex16(unsigned number) {
    char digits[12];
    std::snprintf(digits, sizeof digits, "%04X", number);
    return digits;
}

std::string quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

bool same_ignoring_case(std::string_view a, std::string_view b) {
    return std::ranges::equal(
        a, b, [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

std::string printable(std::string_view text) {
    auto wide = platform::to_wide(text);
    std::ranges::replace_if(wide, steers, L'?');
    return platform::to_utf8(wide);
}

std::string printable_json(std::string_view json) {
    // Mostly ASCII, and JSON escapes the control characters of C0 itself.
    if (std::ranges::all_of(json, [](char c) { return 0 <= c && c < 0x7F; }))
        return std::string(json);
    std::string text;
    for (const wchar_t character : platform::to_wide(json)) {
        if (!steers(character)) {
            text += platform::to_utf8({&character, 1});
            continue;
        }
        char escaped[12];
        std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(character));
        text += escaped;
    }
    return text;
}

std::optional<std::string> nearest(std::string_view word, std::span<const std::string> names) {
    constexpr std::size_t most_letters = 2;
    const auto difference = [&](const std::string& name) {
        return !word.empty() && name.starts_with(word) ? 0 : distance(word, name);
    };
    const auto found = std::ranges::min_element(names, {}, difference);
    return found == names.end() || difference(*found) > most_letters ? std::nullopt : std::optional(*found);
}

}  // namespace tools
