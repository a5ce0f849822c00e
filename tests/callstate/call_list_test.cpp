#include <gtest/gtest.h>

#include "tests/callstate/calls.h"

namespace callstate_test {
namespace {

std::string populate_line(const std::string& text) {
    return ccm_line("populateCallState", text);
}

TEST_F(CallListTest, starts_empty_and_idle) {
    for (const std::uint32_t state :
         {CALL_STATE_IDLE, CALL_STATE_ALERTING, CALL_STATE_CONNECTED, CALL_STATE_HOLD}) {
        EXPECT_EQ(first_in_state(state), "") << "state " << state;
    }
    EXPECT_EQ(ccm_.getHeadsetLedState(), 0);
    EXPECT_EQ(count_and_clear(), 0U);
}

TEST_F(CallListTest, logs_the_calls_of_a_resync) {
    ccm_.populateCallState("usb-1", {{"7", CALL_STATE_CONNECTED, -3, true}, {"8", 9, 1, false}}, 2);
    EXPECT_EQ(logger_->lines(), (Lines{populate_line("device_id:[usb-1], calls.size:[2], num_calls:[2]"),
                                       populate_line("cid:[7], state:[2], direction:[-3], mute:[true]"),
                                       populate_line("cid:[8], state:[9], direction:[1], mute:[false]")}));
}

TEST_F(CallListTest, replaces_the_calls_by_those_of_a_resync) {
    have({talking("1"), muted(held("2"))});
    ccm_.populateCallState("usb-1", {ringing("3")}, 1);
    EXPECT_EQ(logger_->lines(), (Lines{populate_line("device_id:[usb-1], calls.size:[1], num_calls:[1]"),
                                       populate_line("call_list_ with size [2] cleared"),
                                       populate_line("cid:[3], state:[1], direction:[0], mute:[false]")}));
    EXPECT_EQ(first_in_state(CALL_STATE_CONNECTED), "");
    EXPECT_EQ(first_in_state(CALL_STATE_ALERTING), "3");
    EXPECT_FALSE(ccm_.isCallMuted("2"));
    EXPECT_EQ(count_and_clear(), 1U);
}

TEST_F(CallListTest, is_emptied_by_a_resync_without_calls_which_logs_so) {
    have({talking("1"), talking("2"), held("3")});
    ccm_.populateCallState("", {}, 0);
    EXPECT_EQ(logger_->lines(), (Lines{populate_line("device_id:[], calls.size:[0], num_calls:[0]"),
                                       populate_line("call_list_ with size [3] cleared")}));
    EXPECT_EQ(count_and_clear(), 0U);
}

TEST_F(CallListTest, logs_no_clearing_when_it_was_empty_already) {
    ccm_.populateCallState("", {}, 0);
    EXPECT_EQ(logger_->lines(), Lines{populate_line("device_id:[], calls.size:[0], num_calls:[0]")});
}

TEST_F(CallListTest, takes_the_entries_of_a_resync_whatever_number_comes_with_them) {
    for (const std::uint32_t number : {0U, 1U, 100U, 0xFFFFFFFFU}) {
        ccm_.populateCallState("", {talking("1"), held("2")}, number);
        EXPECT_EQ(logger_->count(populate_line("device_id:[], calls.size:[2], num_calls:[" +
                                               std::to_string(static_cast<int>(number)) + "]")),
                  1U);
        EXPECT_EQ(count_and_clear(), 2U);
    }
}

TEST_F(CallListTest, leaves_headset_state_and_leds_alone_in_a_resync) {
    ccm_.onCallStateUpdate(CALL_STATE_HOLD, "1", false);
    ccm_.onMuteStateUpdate(true, "1");
    ccm_.populateCallState("", {talking("2")}, 1);
    EXPECT_EQ(ccm_.getHeadsetLedState(), 0x28);
}

TEST_F(CallListTest, keeps_a_copy_of_the_hosts_entries) {
    std::vector<ICallInfo> calls = {talking("1")};
    have(calls);
    calls[0] = held("9");
    EXPECT_EQ(first_in_state(CALL_STATE_CONNECTED), "1");
    EXPECT_EQ(first_in_state(CALL_STATE_HOLD), "");
}

TEST_F(CallListTest, finds_the_first_call_in_a_state) {
    have({silent("1"), held("2"), held("3"), talking("4"), ringing("5"), ringing("6")});
    EXPECT_EQ(first_in_state(CALL_STATE_IDLE), "1");
    EXPECT_EQ(first_in_state(CALL_STATE_HOLD), "2");
    EXPECT_EQ(first_in_state(CALL_STATE_CONNECTED), "4");
    EXPECT_EQ(first_in_state(CALL_STATE_ALERTING), "5");
}

TEST_F(CallListTest, hands_back_the_callers_text_when_it_looks_for_a_state) {
    have({held("2")});
    std::string cid = "before";
    EXPECT_EQ(&ccm_.getCidByState(cid, CALL_STATE_HOLD), &cid);
    EXPECT_EQ(cid, "2");
    ccm_.getCidByState(cid, CALL_STATE_CONNECTED);
    EXPECT_EQ(cid, "");
}

TEST_F(CallListTest, knows_no_call_as_muted_that_is_not_in_it) {
    have({muted(talking("1"))});
    EXPECT_FALSE(ccm_.isCallMuted("2"));
    EXPECT_FALSE(ccm_.isCallMuted(""));
}

TEST_F(CallListTest, compares_ids_exactly_and_never_as_numbers) {
    have({muted(talking("42")), muted(talking("Ab"))});
    EXPECT_TRUE(ccm_.isCallMuted("42"));
    EXPECT_TRUE(ccm_.isCallMuted("Ab"));
    for (const char* const cid : {"042", "42 ", " 42", "+42", "4", "421", "ab", "AB"}) {
        EXPECT_FALSE(ccm_.isCallMuted(cid)) << cid;
    }
}

TEST_F(CallListTest, takes_ids_that_are_no_numbers_and_ids_of_any_length) {
    const std::string digits(400, '9');
    for (const std::string& cid : {std::string(), std::string("call-7"), digits, std::string("-1")}) {
        ccm_.onCallStateUpdate(CALL_STATE_CONNECTED, cid, false);
        ccm_.onMuteStateUpdate(true, cid);
        EXPECT_EQ(headset_state(), 2) << cid;
        EXPECT_TRUE(ccm_.isCallMuted(cid)) << cid;
    }
    EXPECT_EQ(count_and_clear(), 4U);
}

TEST_F(CallListTest, finds_the_first_of_two_calls_with_one_id) {
    have({muted(held("1")), talking("1")});
    EXPECT_TRUE(ccm_.isCallMuted("1"));

    ccm_.onMuteStateUpdate(false, "1");
    EXPECT_FALSE(ccm_.isCallMuted("1"));

    ccm_.onCallStateUpdate(CALL_STATE_ALERTING, "1", true);
    EXPECT_EQ(first_in_state(CALL_STATE_ALERTING), "1");
    EXPECT_EQ(first_in_state(CALL_STATE_CONNECTED), "1") << "the second is as it was";
    EXPECT_EQ(first_in_state(CALL_STATE_HOLD), "");
}

TEST_F(CallListTest, arbitrates_the_mute_of_the_first_of_two_calls_with_one_id) {
    have({held("1"), talking("1")});
    ccm_.arbitrateHeadsetMUTE("1", mute_channel_);
    EXPECT_EQ(logger_->lines(), Lines{ccm_line("arbitrateHeadsetMUTE", "call state=3, don't send mute")});
}

TEST_F(CallListTest, works_the_headset_state_out_from_all_calls_when_refreshed) {
    have({ringing("1"), talking("2"), held("3"), silent("4")});
    ccm_.refreshHeadsetState();
    EXPECT_EQ(headset_state(), 7);

    have({held("3"), silent("4")});
    ccm_.refreshHeadsetState();
    EXPECT_EQ(headset_state(), 4);

    have({});
    ccm_.refreshHeadsetState();
    EXPECT_EQ(headset_state(), 0);
}

TEST_F(CallListTest, takes_the_mute_state_of_the_last_call_when_refreshed) {
    have({muted(talking("1")), held("2")});
    ccm_.refreshHeadsetState();
    EXPECT_EQ(ccm_.getHeadsetLedState(), 0x02);

    have({talking("1"), muted(held("2"))});
    ccm_.refreshHeadsetState();
    EXPECT_EQ(ccm_.getHeadsetLedState(), 0x0A);
}

TEST_F(CallListTest, shows_no_led_in_idle_even_when_muted) {
    have({talking("1")});
    EXPECT_EQ(ccm_.onMuteStateUpdate(true, "1"), 0x08U);
    EXPECT_EQ(ccm_.getHeadsetLedState(), 0);
}

TEST_F(CallListTest, logs_headset_state_and_leds) {
    ccm_.onCallStateUpdate(CALL_STATE_ALERTING, "1", true);
    logger_->clear();
    EXPECT_EQ(ccm_.getHeadsetLedState(), 4);
    EXPECT_EQ(logger_->lines(), (Lines{cc_line("getHeadsetLedState", "headset_state=1 "),
                                       cc_line("getHeadsetLedState", "leds_state=4 ")}));
}

}  // namespace
}  // namespace callstate_test
