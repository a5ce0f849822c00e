#include "tools/softphone/text.h"

#include <gtest/gtest.h>

namespace softphone {
namespace {

TEST(SplitWords, white_space_of_any_length_separates) {
    EXPECT_EQ(split_words("  plug \t jabra  as x\r"), (Words{"plug", "jabra", "as", "x"}));
}

TEST(SplitWords, quotes_hold_a_word_together) {
    EXPECT_EQ(split_words("device id \"Jabra Link\" \"\""), (Words{"device", "id", "Jabra Link", ""}));
}

TEST(SplitWords, a_comment_ends_the_line) {
    EXPECT_EQ(split_words("hold 1 # the first"), (Words{"hold", "1"}));
    EXPECT_EQ(split_words("# nothing"), Words{});
}

TEST(SplitWords, a_hash_inside_a_word_is_part_of_it) {
    EXPECT_EQ(split_words("connect 1#2 \"# 3\""), (Words{"connect", "1#2", "# 3"}));
}

TEST(SplitWords, an_open_quote_is_refused) {
    EXPECT_THROW(split_words("say \"hello"), CommandError);
}

TEST(Trimmed, white_space_inside_stays) {
    EXPECT_EQ(trimmed(" \t a  b\r\n"), "a  b");
    EXPECT_EQ(trimmed(" \r"), "");
}

TEST(ParseInteger, takes_signs_and_nothing_else) {
    EXPECT_EQ(parse_integer("-3", "a number"), -3);
    EXPECT_THROW(parse_integer("3x", "a number"), CommandError);
    EXPECT_THROW(parse_integer("", "a number"), CommandError);
    EXPECT_THROW(parse_integer("99999999999", "a number"), CommandError);
}

TEST(ParseMilliseconds, negative_is_refused) {
    EXPECT_EQ(parse_milliseconds("250"), std::chrono::milliseconds(250));
    EXPECT_THROW(parse_milliseconds("-1"), CommandError);
}

TEST(ParseBytes, with_and_without_colons) {
    EXPECT_EQ(parse_bytes("02:01:fF"), (Bytes{2, 1, 255}));
    EXPECT_EQ(parse_bytes("0201"), (Bytes{2, 1}));
}

TEST(ParseBytes, anything_else_is_refused) {
    for (const char* text : {"", ":", "2", "021", "0x02", "02 01", "gg"})
        EXPECT_THROW(parse_bytes(text), CommandError) << text;
}

TEST(ToHex, bytes_have_two_digits_and_ids_four) {
    EXPECT_EQ(to_hex(Bytes{0, 10, 255}), "00 0A FF");
    EXPECT_EQ(to_hex({}), "");
    EXPECT_EQ(to_hex16(0xB0E), "0B0E");
}

}  // namespace
}  // namespace softphone
