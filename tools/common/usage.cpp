#include "tools/common/usage.h"

#include "tools/common/text.h"

namespace tools {
namespace {

std::optional<std::uint16_t> parse_hex16(std::string_view text) {
    if (text.starts_with("0x") || text.starts_with("0X"))
        text.remove_prefix(2);
    return parse_number<std::uint16_t>(text, 16);
}

}  // namespace

std::optional<Usage> parse_usage(std::string_view text) {
    const auto colon = text.find(':');
    if (colon == text.npos)
        return std::nullopt;
    const auto page = parse_hex16(text.substr(0, colon));
    const auto id = parse_hex16(text.substr(colon + 1));
    return page && id ? std::optional(Usage{*page, *id}) : std::nullopt;
}

}  // namespace tools
