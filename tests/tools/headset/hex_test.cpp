#include "tools/headset/hex.h"

#include <gtest/gtest.h>

#include "tools/common/usage.h"
#include "tools/headset/errors.h"

namespace headset::hex_test {
namespace {

std::string refusal(std::string_view text) {
    try {
        parse_hex(text);
    } catch (const Refused& error) {
        return error.what();
    }
    return "accepted";
}

TEST(Hex, digits_in_every_dress) {
    const Bytes expected{0x05, 0x0B, 0xA1, 0x01};
    for (const char* text : {"050BA101", "05 0b a1 01", "0x05, 0x0B, 0xA1, 0x01", "05:0B:A1:01",
                             "\t05 0B\r\nA1\r\n\r\n01\n", "0x050BA101", "0x5 0xB 0XA1 0x1",
                             "05 # Usage Page\n0B # Telephony\nA1 01 # C0\n", "050B#\nA101#C0"})
        EXPECT_EQ(parse_hex(text), expected) << text;
}

TEST(Hex, nothing_is_no_bytes) {
    for (const char* text : {"", " \r\n", "# only a comment"})
        EXPECT_EQ(parse_hex(text), Bytes{}) << text;
}

TEST(Hex, says_which_word_is_wrong) {
    EXPECT_EQ(refusal("05 0G"), "\"0G\" is not hexadecimal");
    EXPECT_EQ(refusal("05 0x"), "\"0x\" is not hexadecimal");
    EXPECT_EQ(refusal("05 -1"), "\"-1\" is not hexadecimal");
    EXPECT_EQ(refusal("05 0"), "\"0\" has an odd number of hexadecimal digits");
    EXPECT_EQ(refusal("0x050"), "\"0x050\" has an odd number of hexadecimal digits");
}

TEST(Hex, a_long_word_is_shown_in_part) {
    EXPECT_EQ(refusal(std::string(1000, 'z')), '"' + std::string(40, 'z') + "\"... is not hexadecimal");
}

TEST(ParseUsage, page_and_usage_with_and_without_0x) {
    for (const char* text : {"0B:2F", "b:2f", "0x0B:0x2F", "0X0b:2F"})
        EXPECT_EQ(tools::parse_usage(text), (tools::Usage{0x0B, 0x2F})) << text;
    EXPECT_EQ(tools::parse_usage("FF00:FFFF"), (tools::Usage{0xFF00, 0xFFFF}));
}

TEST(ParseUsage, anything_else_is_none) {
    for (const char* text : {"", ":", "0B", "0B:", ":2F", "0B:2F:1", "0B:2G", "0B:10000", "0B: 2F", "0B:0x"})
        EXPECT_EQ(tools::parse_usage(text), std::nullopt) << text;
}

}  // namespace
}  // namespace headset::hex_test
