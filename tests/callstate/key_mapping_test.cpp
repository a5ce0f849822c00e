#include <gtest/gtest.h>

#include "callstate/call_action.h"
#include "tests/callstate/calls.h"

namespace callstate_test {

namespace {

using headset_plugin::CallAction;
using headset_plugin::to_string;

const std::string untouched = "as before";

struct KeyRow {
    const char* name;
    int value;
    std::vector<ICallInfo> calls;
    CallAction action;
    std::string cid = untouched;
};

std::ostream& operator<<(std::ostream& out, const KeyRow& row) {
    return out << row.name;
}

class KeyMapping : public CallListTest, public testing::WithParamInterface<KeyRow> {};

TEST_P(KeyMapping, asks_for) {
    const KeyRow& row = GetParam();
    have(row.calls);
    std::string cid = untouched;
    EXPECT_EQ(ccm_.mapKeyToCallAction(cid, static_cast<std::int16_t>(row.value)), row.action);
    EXPECT_EQ(cid, row.cid);
    EXPECT_EQ(count_and_clear(), row.calls.size());
}

INSTANTIATE_TEST_SUITE_P(
    Key, KeyMapping,
    testing::Values(
        KeyRow{"the_end_of_the_connected_call_beside_a_held_one",
               0,
               {held("1"), talking("2")},
               CallAction::end_call,
               "2"},
        KeyRow{"the_end_of_the_connected_call_behind_a_ringing_one",
               0,
               {ringing("1"), talking("2")},
               CallAction::end_call,
               "2"},
        KeyRow{"the_end_of_the_first_connected_call",
               0,
               {talking("1"), talking("2")},
               CallAction::end_call,
               "1"},
        KeyRow{"nothing_at_hook_release_with_only_a_held_call", 0, {held("1")}, CallAction::ignore},
        KeyRow{"nothing_at_hook_release_while_a_call_rings", 0, {ringing("1")}, CallAction::ignore},
        KeyRow{"nothing_at_hook_release_without_calls", 0, {}, CallAction::ignore},
        KeyRow{"a_mute_of_the_connected_call", 0x1, {held("1"), talking("2")}, CallAction::mute_call, "2"},
        KeyRow{"an_unmute_of_the_connected_call",
               0x1,
               {held("1"), muted(talking("2"))},
               CallAction::unmute_call,
               "2"},
        KeyRow{"a_mute_of_the_first_connected_call",
               0x1,
               {talking("1"), muted(talking("2"))},
               CallAction::mute_call,
               "1"},
        KeyRow{"a_mute_whatever_other_bits_are_set",
               0x3,
               {ringing("1"), talking("2")},
               CallAction::mute_call,
               "2"},
        KeyRow{"no_mute_without_calls", 0x1, {}, CallAction::ignore},
        KeyRow{"no_mute_of_held_ringing_or_silent_calls",
               0x1,
               {held("1"), ringing("2"), silent("3")},
               CallAction::ignore},
        KeyRow{"the_answer_of_the_call_that_rang_first",
               0x2,
               {ringing("5"), ringing("1")},
               CallAction::answer,
               "5"},
        KeyRow{"the_answer_of_a_ringing_call_beside_a_connected_one",
               0x2,
               {talking("1"), ringing("2")},
               CallAction::answer,
               "2"},
        KeyRow{"nothing_at_hook_with_no_call_ringing",
               0x2,
               {talking("1"), held("2"), silent("3")},
               CallAction::ignore},
        KeyRow{"the_answer_of_a_ringing_call_with_key_4",
               0x4,
               {talking("1"), ringing("2")},
               CallAction::answer,
               "2"},
        KeyRow{"hold_of_no_call_in_particular_with_key_4", 0x4, {talking("1")}, CallAction::hold_call},
        KeyRow{"hold_with_key_4_even_without_calls", 0x4, {}, CallAction::hold_call},
        KeyRow{"the_rejection_of_a_ringing_call",
               0x8,
               {talking("1"), ringing("2"), ringing("3")},
               CallAction::reject_call,
               "2"},
        KeyRow{"the_rejection_before_key_4", 0xC, {ringing("2")}, CallAction::reject_call, "2"},
        KeyRow{"nothing_at_key_8_with_no_call_ringing", 0x8, {talking("1"), held("2")}, CallAction::ignore},
        KeyRow{"nothing_at_key_16", 0x10, {talking("1"), ringing("2"), held("3")}, CallAction::ignore},
        KeyRow{"nothing_at_key_32", 0x20, {talking("1"), ringing("2"), held("3")}, CallAction::ignore},
        KeyRow{"nothing_at_an_invalid_value",
               0x12,
               {talking("1"), ringing("2"), held("3")},
               CallAction::ignore}),
    [](const auto& row) { return row.param.name; });

TEST_F(CallListTest, mutes_and_unmutes_with_two_presses_and_ends_as_it_began) {
    have({talking("1")});
    std::string cid;
    EXPECT_EQ(ccm_.mapKeyToCallAction(cid, 0x1), CallAction::mute_call);
    EXPECT_TRUE(ccm_.isCallMuted("1"));
    EXPECT_EQ(ccm_.mapKeyToCallAction(cid, 0x1), CallAction::unmute_call);
    EXPECT_FALSE(ccm_.isCallMuted("1"));
}

TEST_F(CallListTest, lets_the_host_overrule_the_flag_that_a_mute_press_flipped) {
    have({talking("1")});
    std::string cid;
    ccm_.mapKeyToCallAction(cid, 0x1);
    ccm_.onMuteStateUpdate(false, "1");
    EXPECT_EQ(ccm_.mapKeyToCallAction(cid, 0x1), CallAction::mute_call);
}

TEST_F(CallListTest, flips_the_flag_of_the_pressed_call_alone_and_no_led) {
    have({held("1"), talking("2"), talking("3")});
    std::string cid;
    ccm_.mapKeyToCallAction(cid, 0x1);
    EXPECT_FALSE(ccm_.isCallMuted("1"));
    EXPECT_TRUE(ccm_.isCallMuted("2"));
    EXPECT_FALSE(ccm_.isCallMuted("3"));
    ccm_.onCallStateUpdate(CALL_STATE_CONNECTED, "2", false);  // shows the call, and leaves mute as it is
    EXPECT_EQ(ccm_.getHeadsetLedState(), 0x02);
}

TEST_F(CallListTest, leaves_every_mute_flag_alone_when_a_mute_press_finds_no_connected_call) {
    have({muted(held("1")), ringing("2")});
    std::string cid;
    ccm_.mapKeyToCallAction(cid, 0x1);
    EXPECT_TRUE(ccm_.isCallMuted("1"));
    EXPECT_FALSE(ccm_.isCallMuted("2"));
}

TEST_F(CallListTest, logs_a_key_press) {
    std::string cid;
    ccm_.mapKeyToCallAction(cid, 0x2);
    EXPECT_EQ(logger_->lines(), Lines{cc_line("keyEventNotify", "keyReportValue: 2")});
}

TEST_F(CallListTest, warns_of_an_invalid_key_press_that_has_no_secondary_meaning_either) {
    std::string cid;
    EXPECT_EQ(ccm_.mapKeyToCallAction(cid, 0x12), CallAction::ignore);
    EXPECT_EQ(logger_->lines(), (Lines{cc_line("keyEventNotify", "keyReportValue: 18"),
                                       cc_line("keyEventNotify", "Warning[read a invalid data: 18] ")}));
    EXPECT_EQ(ccm_.mapKeyToSecondaryEvent(cid, 0x12), 0U);
}

struct SecondaryRow {
    int value;
    std::uint32_t event;
};

constexpr SecondaryRow secondary_rows[] = {
    {0x10, 2}, {0x20, 1}, {0x00, 0}, {0x01, 0}, {0x02, 0},  {0x04, 0},  {0x08, 0},
    {0x11, 0}, {0x30, 0}, {0x21, 0}, {-1, 0},   {0x110, 0}, {0x120, 0},
};

TEST_F(CallListTest, gives_keys_16_and_32_a_secondary_meaning_and_only_alone) {
    have({talking("1"), ringing("2")});
    for (const auto& [value, event] : secondary_rows) {
        std::string cid = untouched;
        EXPECT_EQ(ccm_.mapKeyToSecondaryEvent(cid, static_cast<std::int16_t>(value)), event)
            << "value " << value;
        EXPECT_EQ(cid, untouched) << "value " << value;
    }
    EXPECT_EQ(logger_->lines(), Lines());
}

TEST(CallAction, has_its_number_and_its_word_in_the_log) {
    const char* const words[] = {"Ignore",   "Answer",     "EndCall", "HoldCall", "ResumeCall", "RejectCall",
                                 "muteCall", "unmuteCall", "NewCall", "Redial",   "Dial",       "JoinCall"};
    std::uint32_t number = 0;
    for (const CallAction action :
         {CallAction::ignore, CallAction::answer, CallAction::end_call, CallAction::hold_call,
          CallAction::resume_call, CallAction::reject_call, CallAction::mute_call, CallAction::unmute_call,
          CallAction::new_call, CallAction::redial, CallAction::dial, CallAction::join_call}) {
        EXPECT_EQ(static_cast<std::uint32_t>(action), number);
        EXPECT_STREQ(to_string(action), words[number]);
        ++number;
    }
    EXPECT_EQ(number, std::size(words));
}

TEST(CallAction, is_ignored_in_the_log_when_it_is_none) {
    EXPECT_STREQ(to_string(CallAction{12}), "Ignore");
    EXPECT_STREQ(to_string(CallAction{0xFFFFFFFF}), "Ignore");
}

}  // namespace
}  // namespace callstate_test
