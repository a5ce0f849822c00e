#include "tools/common/text.h"

#include <cstdio>

namespace tools {

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

}  // namespace tools
