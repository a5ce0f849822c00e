// A usage of the HID Usage Tables, as people type it.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tools {

struct Usage {
    std::uint16_t page = 0;
    std::uint16_t id = 0;
    auto operator<=>(const Usage&) const = default;
};

/// PAGE:USAGE in hexadecimal, with or without 0x: "0B:2F"; nothing when the text is anything else.
std::optional<Usage> parse_usage(std::string_view text);

}  // namespace tools
