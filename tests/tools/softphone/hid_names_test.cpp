#include "tools/softphone/hid_names.h"

#include <gtest/gtest.h>
#include <set>

#include "tools/softphone/text.h"

namespace softphone {
namespace {

TEST(HidNames, names_and_usages_are_unique) {
    for (const auto names : {indicator_names(), key_names()}) {
        std::set<std::string> seen_names;
        std::set<Usage> seen_usages;
        for (const auto& [name, usage] : names) {
            EXPECT_TRUE(seen_names.insert(name).second) << name;
            EXPECT_TRUE(seen_usages.insert(usage).second) << name;
        }
    }
}

TEST(HidNames, the_ones_of_the_tables) {
    EXPECT_EQ(find_usage(key_names(), "mute"), (Usage{0x0B, 0x2F}));
    EXPECT_EQ(find_usage(key_names(), "hook"), (Usage{0x0B, 0x20}));
    EXPECT_EQ(find_usage(indicator_names(), "mute"), (Usage{0x08, 0x09}));
    EXPECT_EQ(find_usage(indicator_names(), "off-hook"), (Usage{0x08, 0x17}));
}

TEST(HidNames, a_usage_without_a_name_is_written_in_hexadecimal) {
    EXPECT_EQ(find_usage(key_names(), "0c:b5"), (Usage{0x0C, 0xB5}));
    EXPECT_EQ(usage_name(key_names(), {0x0C, 0xB5}), "000C:00B5");
    EXPECT_EQ(usage_name(key_names(), {0x0B, 0x2F}), "mute");
}

TEST(HidNames, other_words_are_refused) {
    for (const char* text : {"moot", "0B", ":2F", "0B:", "0B:2F:1"})
        EXPECT_THROW(find_usage(key_names(), text), CommandError) << text;
}

}  // namespace
}  // namespace softphone
