#include "tools/common/text.h"

#include <gtest/gtest.h>

#include "tools/common/json.h"

namespace tools {
namespace {

TEST(Printable, leaves_text_alone) {
    for (const char* text : {"", "Jabra Link 380c", "\xC3\x84 \xE8\x80\xB3 \xF0\x9F\x8E\xA7"})
        EXPECT_EQ(printable(text), text);
}

TEST(Printable, nothing_steers_a_terminal) {
    EXPECT_EQ(printable("\x1B[2J\a\b\t\r\n\x7F"), "?[2J??????");
    EXPECT_EQ(printable("\xC2\x9B"
                        "31m"),
              "?31m")
        << "C1: CSI";
    EXPECT_EQ(printable("a\xE2\x80\xAE"
                        "b\xE2\x81\xA6\xE2\x80\xA8"),
              "a?b??")
        << "direction, line separator";
    EXPECT_EQ(printable(std::string_view("a\0b", 3)), "a?b");
}

TEST(Printable, what_is_no_utf8_is_replaced) {
    EXPECT_EQ(printable("a\xFF\xC3"), "a\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(printable("\xC0\x9B"), "\xEF\xBF\xBD\xEF\xBF\xBD") << "longer than it needs";
}

TEST(JsonText, is_valid_and_steers_no_terminal) {
    const Json json{{"name", "\x1B[2J \xC2\x9B \x7F \xE2\x80\xAE \xC3\xA4"}};
    const auto text = to_text(json);
    EXPECT_EQ(text, "{\"name\":\"\\u001b[2J \\u009b \\u007f \\u202e \xC3\xA4\"}");
    EXPECT_EQ(Json::parse(text), json) << "the value stays the same";
    EXPECT_EQ(to_text(Json{{"name", "\xFF"}}), "{\"name\":\"\xEF\xBF\xBD\"}");
}

TEST(Nearest, is_what_was_probably_meant) {
    const std::vector<std::string> names{"doctor", "list", "explain", "monitor", "udev-rules", "caps"};
    EXPECT_EQ(nearest("docter", names), "doctor");
    EXPECT_EQ(nearest("lsit", names), "list");
    EXPECT_EQ(nearest("cap", names), "caps");
    EXPECT_EQ(nearest("udev", names), "udev-rules") << "a beginning";
    EXPECT_EQ(nearest("headphones", names), std::nullopt);
    EXPECT_EQ(nearest("", names), std::nullopt);
    EXPECT_EQ(nearest("x", {}), std::nullopt);
}

TEST(SameIgnoringCase, of_letters) {
    EXPECT_TRUE(same_ignoring_case("Off-Hook", "off-hook"));
    EXPECT_FALSE(same_ignoring_case("Off-Hook", "off-hoo"));
}

}  // namespace
}  // namespace tools
