#include "platform/text.h"

#include <array>
#include <cstdint>

namespace platform {

namespace {

constexpr char32_t replacement_character = 0xFFFD;
constexpr char32_t last_character = 0x10FFFF;

constexpr bool is_high_surrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool is_low_surrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// Takes the next character from UTF-16 or UTF-32.
char32_t take_wide(std::wstring_view& text) {
    const auto unit = static_cast<char32_t>(text.front());
    text.remove_prefix(1);
    if (is_high_surrogate(unit) && !text.empty() && is_low_surrogate(static_cast<char32_t>(text.front()))) {
        const auto low = static_cast<char32_t>(text.front());
        text.remove_prefix(1);
        return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
    }
    const bool is_character = unit <= last_character && !is_high_surrogate(unit) && !is_low_surrogate(unit);
    return is_character ? unit : replacement_character;
}

/// The bytes of one character (RFC 3629, section 3).
std::string encode(char32_t character) {
    const auto byte = [](char32_t bits) { return static_cast<char>(static_cast<unsigned char>(bits)); };
    const auto tail = [&](int shift) { return byte(0x80 | ((character >> shift) & 0x3F)); };
    if (character < 0x80) {
        return {byte(character)};
    }
    if (character < 0x800) {
        return {byte(0xC0 | (character >> 6)), tail(0)};
    }
    if (character < 0x10000) {
        return {byte(0xE0 | (character >> 12)), tail(6), tail(0)};
    }
    return {byte(0xF0 | (character >> 18)), tail(12), tail(6), tail(0)};
}

/// What a first byte of UTF-8 announces.
struct Sequence {
    unsigned char mask, value;  ///< bits that tell, and how
    std::size_t length;
    char32_t smallest;  ///< a smaller character is encoded longer than it needs
};
constexpr std::array<Sequence, 4> sequences = {
    Sequence{0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};

/// Takes the next character from UTF-8; a byte that starts none gives U+FFFD.
char32_t take_utf8(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text.front());
    for (const Sequence& sequence : sequences) {
        if ((first & sequence.mask) != sequence.value || text.size() < sequence.length) {
            continue;
        }
        char32_t character = first & static_cast<unsigned char>(~sequence.mask);
        bool whole = true;
        for (std::size_t i = 1; i < sequence.length; ++i) {
            const auto next = static_cast<unsigned char>(text[i]);
            whole = whole && (next & 0xC0) == 0x80;
            character = (character << 6) | (next & 0x3F);
        }
        if (whole && character >= sequence.smallest && character <= last_character &&
            !is_high_surrogate(character) && !is_low_surrogate(character)) {
            text.remove_prefix(sequence.length);
            return character;
        }
    }
    text.remove_prefix(1);
    return replacement_character;
}

void append_wide(std::wstring& text, char32_t character) {
    if (sizeof(wchar_t) == sizeof(char16_t) && character >= 0x10000) {
        text.push_back(static_cast<wchar_t>(0xD800 + ((character - 0x10000) >> 10)));
        text.push_back(static_cast<wchar_t>(0xDC00 + ((character - 0x10000) & 0x3FF)));
        return;
    }
    text.push_back(static_cast<wchar_t>(character));
}

}  // namespace

std::string to_utf8(std::wstring_view text, std::size_t max_bytes) {
    std::string result;
    while (!text.empty() && text.front() != L'\0') {
        const std::string bytes = encode(take_wide(text));
        if (bytes.size() > max_bytes - result.size()) {
            break;
        }
        result += bytes;
    }
    return result;
}

std::wstring to_wide(std::string_view text) {
    std::wstring result;
    while (!text.empty()) {
        append_wide(result, take_utf8(text));
    }
    return result;
}

}  // namespace platform
