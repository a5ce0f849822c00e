#include "tools/headset/usage_names.h"

#include <gtest/gtest.h>

namespace headset {
namespace {

TEST(UsageNames, the_ones_of_the_tables) {
    const std::pair<Usage, const char*> rows[] = {
        {{0x01, 0x06}, "Keyboard"},         {{0x08, 0x09}, "Mute"},
        {{0x08, 0x17}, "Off-Hook"},         {{0x08, 0x2A}, "On-Line"},
        {{0x09, 0x07}, "Button 7"},         {{0x0B, 0x05}, "Headset"},
        {{0x0B, 0x20}, "Hook Switch"},      {{0x0B, 0x2F}, "Phone Mute"},
        {{0x0B, 0x9E}, "Ringer"},           {{0x0B, 0xB5}, "Phone Key 5"},
        {{0x0C, 0x01}, "Consumer Control"}, {{0x0C, 0xE9}, "Volume Increment"},
    };
    for (const auto& [usage, name] : rows)
        EXPECT_EQ(usage_name(usage), name);
}

TEST(UsageNames, others_have_none) {
    for (const Usage usage : {Usage{0x09, 0x00}, Usage{0x0B, 0x0F}, Usage{0xFF00, 0x01}, Usage{0x0B, 0xFFFF}})
        EXPECT_EQ(usage_name(usage), "") << usage_number(usage);
}

TEST(UsageNames, numbers_have_at_least_two_digits) {
    EXPECT_EQ(usage_number({0x0B, 0x2F}), "0B:2F");
    EXPECT_EQ(usage_number({0xFF00, 0x1}), "FF00:01");
}

TEST(UsageNames, labels) {
    EXPECT_EQ(usage_label({0x0B, 0x2F}), "Phone Mute (0B:2F)");
    EXPECT_EQ(usage_label({0xFF00, 0x1}), "FF00:01");
    EXPECT_EQ(range_label({0x0B, 0xB0}, 0xBB), "Phone Key 0 to Phone Key Pound (0B:B0-BB)");
    EXPECT_EQ(range_label({0x0C, 0x00}, 0x3FF), "0C:00-3FF");
}

}  // namespace
}  // namespace headset
