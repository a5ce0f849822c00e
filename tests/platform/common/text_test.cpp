#include "platform/text.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace {

using platform::to_utf8;
using platform::to_wide;

constexpr char32_t first_surrogate = 0xD800;
constexpr char32_t last_surrogate = 0xDFFF;
constexpr char32_t last_character = 0x10FFFF;

std::wstring wide(std::initializer_list<char32_t> units) {
    std::wstring text;
    for (const char32_t unit : units) {
        text.push_back(static_cast<wchar_t>(unit));
    }
    return text;
}

struct Character {
    char32_t value;
    const char* utf8;
};

// First and last of every length, and a few of the kind that product names have.
constexpr Character characters[] = {
    {U'\x01', "\x01"},
    {U'A', "A"},
    {0x7F, "\x7F"},
    {0x80, "\xC2\x80"},
    {0xE9, "\xC3\xA9"},
    {0x7FF, "\xDF\xBF"},
    {0x800, "\xE0\xA0\x80"},
    {0x20AC, "\xE2\x82\xAC"},
    {0xD7FF, "\xED\x9F\xBF"},
    {0xE000, "\xEE\x80\x80"},
    {0xFFFD, "\xEF\xBF\xBD"},
    {0xFFFF, "\xEF\xBF\xBF"},
    {0x10000, "\xF0\x90\x80\x80"},
    {0x1F3A7, "\xF0\x9F\x8E\xA7"},
    {0x10FFFF, "\xF4\x8F\xBF\xBF"},
};

TEST(Text, converts_characters_of_every_length_both_ways) {
    for (const auto& [value, utf8] : characters) {
        EXPECT_EQ(to_utf8(wide({value})), utf8) << "character " << std::hex << static_cast<unsigned>(value);
        EXPECT_EQ(to_wide(utf8), wide({value})) << "character " << std::hex << static_cast<unsigned>(value);
    }
}

TEST(Text, brings_every_character_back) {
    std::wstring all;
    for (char32_t character = 1; character <= last_character; ++character) {
        if (character < first_surrogate || character > last_surrogate) {
            all.push_back(static_cast<wchar_t>(character));
        }
    }
    EXPECT_TRUE(to_wide(to_utf8(all)) == all);
}

TEST(Text, converts_empty_text) {
    EXPECT_EQ(to_utf8(L""), "");
    EXPECT_EQ(to_wide(""), L"");
}

TEST(Text, reads_a_surrogate_pair_as_one_character) {
    EXPECT_EQ(to_utf8(wide({U'a', 0xD83C, 0xDFA7, U'b'})),
              "a\xF0\x9F\x8E\xA7"
              "b");
    EXPECT_EQ(to_utf8(wide({0xD800, 0xDC00})), "\xF0\x90\x80\x80");
    EXPECT_EQ(to_utf8(wide({0xDBFF, 0xDFFF})), "\xF4\x8F\xBF\xBF");
}

const std::string replaced_utf8 = "\xEF\xBF\xBD";

TEST(Text, replaces_wide_units_that_are_no_character) {
    EXPECT_EQ(to_utf8(wide({0xD83C})), replaced_utf8) << "nothing follows the high surrogate";
    EXPECT_EQ(to_utf8(wide({0xD83C, U'a'})), replaced_utf8 + "a");
    EXPECT_EQ(to_utf8(wide({0xDFA7, U'a'})), replaced_utf8 + "a");
    EXPECT_EQ(to_utf8(wide({0xDFA7, 0xD83C})), replaced_utf8 + replaced_utf8) << "the wrong way round";
    EXPECT_EQ(to_utf8(wide({0xD83C, 0xD83C, 0xDFA7})), replaced_utf8 + "\xF0\x9F\x8E\xA7");
    EXPECT_EQ(to_utf8(wide({0x110000})), replaced_utf8);
    EXPECT_EQ(to_utf8(std::wstring(1, std::numeric_limits<wchar_t>::min())), replaced_utf8);
}

TEST(Text, ends_wide_text_at_its_terminator) {
    EXPECT_EQ(to_utf8(std::wstring_view(L"ab\0cd", 5)), "ab");
}

struct Cut {
    std::size_t max_bytes;
    const char* text;
};

TEST(Text, is_cut_on_a_whole_character) {
    const std::wstring text = wide({U'a', 0xE9, 0x20AC, 0x1F3A7, U'b'});
    const Cut cuts[] = {
        {0, ""},
        {1, "a"},
        {2, "a"},
        {3, "a\xC3\xA9"},
        {5, "a\xC3\xA9"},
        {6, "a\xC3\xA9\xE2\x82\xAC"},
        {9, "a\xC3\xA9\xE2\x82\xAC"},
        {10, "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xA7"},
        {11,
         "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xA7"
         "b"},
        {12,
         "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xA7"
         "b"},
    };
    for (const auto& [max_bytes, wanted] : cuts) {
        EXPECT_EQ(to_utf8(text, max_bytes), wanted) << max_bytes << " bytes";
    }
}

TEST(Text, is_not_continued_behind_a_character_that_did_not_fit) {
    EXPECT_EQ(to_utf8(wide({0x20AC, U'a'}), 2), "");
}

struct Malformed {
    const char* what;
    std::string_view utf8;
    std::wstring text;
};

TEST(Text, replaces_bytes_that_are_no_utf8) {
    constexpr char32_t replaced = 0xFFFD;
    const Malformed rows[] = {
        {"continuation alone",
         "a\x80"
         "b",
         wide({U'a', replaced, U'b'})},
        {"nothing after the first of two", "\xC3", wide({replaced})},
        {"no continuation after the first of two", "\xC3(", wide({replaced, U'('})},
        {"two of three", "\xE2\x82", wide({replaced, replaced})},
        {"two of three, then text",
         "\xE2\x82"
         "ab",
         wide({replaced, replaced, U'a', U'b'})},
        {"three of four", "\xF0\x9F\x8E", wide({replaced, replaced, replaced})},
        {"two bytes for what needs one", "\xC1\xBF", wide({replaced, replaced})},
        {"three bytes for what needs two", "\xE0\x9F\xBF", wide({replaced, replaced, replaced})},
        {"four bytes for what needs three", "\xF0\x8F\xBF\xBF",
         wide({replaced, replaced, replaced, replaced})},
        {"a high surrogate", "\xED\xA0\x80", wide({replaced, replaced, replaced})},
        {"a low surrogate", "\xED\xBF\xBF", wide({replaced, replaced, replaced})},
        {"behind the last character", "\xF4\x90\x80\x80", wide({replaced, replaced, replaced, replaced})},
        {"five bytes", "\xF8\x88\x80\x80\x80", wide({replaced, replaced, replaced, replaced, replaced})},
        {"bytes that never occur", "\xFE\xFF", wide({replaced, replaced})},
    };
    for (const auto& [what, utf8, text] : rows) {
        EXPECT_EQ(to_wide(utf8), text) << what;
    }
}

TEST(Text, keeps_a_terminator_within_utf8) {
    EXPECT_EQ(to_wide(std::string_view("a\0b", 3)), wide({U'a', 0, U'b'}));
}

}  // namespace
