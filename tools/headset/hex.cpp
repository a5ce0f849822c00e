#include "tools/headset/hex.h"

#include "tools/headset/errors.h"

namespace headset {
namespace {

using tools::quoted;

constexpr std::string_view separators = " \t\r\n\f\v,:";

/// A word as an error shows it: it may be a whole file.
std::string shown(std::string_view word) {
    constexpr std::size_t most = 40;
    return word.size() <= most ? quoted(word) : quoted(word.substr(0, most)) + "...";
}

void add_word(Bytes& bytes, std::string_view word) {
    auto digits = word;
    const bool has_prefix = digits.starts_with("0x") || digits.starts_with("0X");
    if (has_prefix)
        digits.remove_prefix(2);
    if (digits.empty() || digits.find_first_not_of("0123456789abcdefABCDEF") != digits.npos)
        throw Refused(shown(word) + " is not hexadecimal");
    if (digits.size() % 2 != 0 && !(has_prefix && digits.size() == 1))
        throw Refused(shown(word) + " has an odd number of hexadecimal digits");
    for (; !digits.empty(); digits.remove_prefix(std::min<std::size_t>(2, digits.size())))
        bytes.push_back(*tools::parse_number<std::uint8_t>(digits.substr(0, 2), 16));
}

}  // namespace

void check_text_size(std::string_view text) {
    if (text.size() > most_text)
        throw Refused("it is too long: a report descriptor has at most " +
                      std::to_string(platform::hidp::max_descriptor_size) + " bytes");
}

Bytes parse_hex(std::string_view text) {
    Bytes bytes;
    while (!text.empty()) {
        if (text.front() == '#') {
            text.remove_prefix(std::min(text.find('\n'), text.size()));
            continue;
        }
        if (separators.find(text.front()) != separators.npos) {
            text.remove_prefix(1);
            continue;
        }
        const auto word = text.substr(0, text.find_first_of(" \t\r\n\f\v,:#"));
        add_word(bytes, word);
        text.remove_prefix(word.size());
    }
    return bytes;
}

}  // namespace headset
