#include "tools/softphone/grammar.h"

#include <gtest/gtest.h>

namespace softphone {
namespace {

bool accepts(const char* description, const Words& words) {
    return Grammar(description).accepts(words);
}

TEST(Grammar, counts_what_must_and_what_may_be_there) {
    EXPECT_TRUE(accepts("", {}));
    EXPECT_FALSE(accepts("", {"x"}));
    EXPECT_FALSE(accepts("CID [DIRECTION]", {}));
    EXPECT_TRUE(accepts("CID [DIRECTION]", {"1"}));
    EXPECT_TRUE(accepts("CID [DIRECTION]", {"1", "2"}));
    EXPECT_FALSE(accepts("CID [DIRECTION]", {"1", "2", "3"}));
}

TEST(Grammar, brackets_nest) {
    EXPECT_TRUE(accepts("ID [NAME [SERIAL]]", {"i"}));
    EXPECT_TRUE(accepts("ID [NAME [SERIAL]]", {"i", "n", "s"}));
    EXPECT_FALSE(accepts("ID [NAME [SERIAL]]", {"i", "n", "s", "x"}));
}

TEST(Grammar, dots_take_any_number) {
    EXPECT_FALSE(accepts("TEXT...", {}));
    EXPECT_TRUE(accepts("TEXT...", {"a", "b", "c"}));
}

TEST(Grammar, small_letters_stand_for_themselves) {
    EXPECT_TRUE(accepts("on|off", {"off"}));
    EXPECT_FALSE(accepts("on|off", {"of"}));
    EXPECT_FALSE(accepts("CID [silent]", {"1", "quiet"}));
}

TEST(Grammar, a_word_that_may_be_missing_in_front_does_not_shift_the_others) {
    EXPECT_TRUE(accepts("[HEADSET] KEY up|down", {"mute", "up"}));
    EXPECT_FALSE(accepts("[HEADSET] KEY up|down", {"jabra", "mute"}));
    EXPECT_TRUE(accepts("[HEADSET] KEY up|down", {"jabra", "mute", "down"}));
    EXPECT_FALSE(accepts("[HEADSET] KEY up|down", {"jabra", "mute", "left"}));
}

TEST(Grammar, alternatives_are_those_that_can_follow) {
    const Grammar key("[HEADSET] KEY up|down");
    EXPECT_EQ(key.alternatives(0), (Words{"HEADSET", "KEY"}));
    EXPECT_EQ(key.alternatives(1), (Words{"KEY", "up", "down"}));
    EXPECT_EQ(key.alternatives(2), (Words{"up", "down"}));
    EXPECT_EQ(key.alternatives(3), Words{});
    EXPECT_EQ(Grammar("TEXT...").alternatives(5), Words{"TEXT"});
}

}  // namespace
}  // namespace softphone
