#include <gtest/gtest.h>

#include "tests/callstate/calls.h"

namespace callstate_test {
namespace {

constexpr std::uint32_t ignored = 0xFFFFFFFF;

std::string update_line(const std::string& text) {
    return ccm_line("onCallStateUpdate", text);
}

std::string mute_line(const std::string& text) {
    return ccm_line("onMuteStateUpdate", text);
}

/// Call events, as the plug-in boundary passes them on.
class CallUpdates : public CallListTest {
  protected:
    void ring(const std::string& cid) { ccm_.onCallStateUpdate(CALL_STATE_ALERTING, cid, true); }
    void ring_silently(const std::string& cid) { ccm_.onCallStateUpdate(CALL_STATE_ALERTING, cid, false); }
    void connect(const std::string& cid) { ccm_.onCallStateUpdate(CALL_STATE_CONNECTED, cid, false); }
    void hold(const std::string& cid) { ccm_.onCallStateUpdate(CALL_STATE_HOLD, cid, false); }
    void end(const std::string& cid) { ccm_.onCallStateUpdate(CALL_STATE_IDLE, cid, false); }
};

TEST_F(CallUpdates, log_the_state_and_the_id_and_find_a_known_call) {
    connect("41");
    hold("41");
    EXPECT_EQ(logger_->lines(), (Lines{update_line("state = 2, cid = 41 "),
                                       update_line("state = 3, cid = 41 "), update_line("found")}));
}

TEST_F(CallUpdates, make_a_record_for_a_call_that_is_not_known_yet) {
    ring("1");
    connect("2");
    hold("3");
    EXPECT_EQ(first_in_state(CALL_STATE_ALERTING), "1");
    EXPECT_EQ(first_in_state(CALL_STATE_CONNECTED), "2");
    EXPECT_EQ(first_in_state(CALL_STATE_HOLD), "3");
    EXPECT_EQ(count_and_clear(), 3U);
}

TEST_F(CallUpdates, make_a_held_and_unmuted_record_when_an_unknown_call_is_held) {
    hold("9");
    EXPECT_EQ(headset_state(), 4);
    EXPECT_EQ(first_in_state(CALL_STATE_HOLD), "9");
    EXPECT_FALSE(ccm_.isCallMuted("9"));
    EXPECT_EQ(count_and_clear(), 1U);
}

TEST_F(CallUpdates, append_new_calls_behind_the_others) {
    connect("2");
    connect("1");
    EXPECT_EQ(first_in_state(CALL_STATE_CONNECTED), "2");
    end("2");
    EXPECT_EQ(first_in_state(CALL_STATE_CONNECTED), "1");
}

TEST_F(CallUpdates, change_a_known_call_in_place) {
    connect("1");
    ccm_.onMuteStateUpdate(true, "1");
    connect("1");
    EXPECT_TRUE(ccm_.isCallMuted("1")) << "the mute flag is the call's own";
    EXPECT_EQ(count_and_clear(), 1U);
}

TEST_F(CallUpdates, keep_a_changed_calls_place_in_the_list) {
    connect("1");
    connect("2");
    hold("1");
    connect("1");
    EXPECT_EQ(first_in_state(CALL_STATE_CONNECTED), "1");
}

TEST_F(CallUpdates, leave_the_bit_of_the_last_event_alone_in_the_headset_state) {
    ring("1");
    EXPECT_EQ(headset_state(), 1);
    connect("2");
    EXPECT_EQ(headset_state(), 2);
    hold("3");
    EXPECT_EQ(headset_state(), 4);
    end("3");
    EXPECT_EQ(headset_state(), 0);
}

TEST_F(CallUpdates, ignore_an_unknown_call_that_does_not_ring) {
    connect("2");
    logger_->clear();
    ring_silently("1");
    EXPECT_EQ(logger_->lines(),
              (Lines{update_line("state = 1, cid = 1 "), update_line("don't create for ALERTING off")}));
    EXPECT_EQ(headset_state(), 0);
    EXPECT_EQ(first_in_state(CALL_STATE_IDLE), "");
    EXPECT_EQ(count_and_clear(), 1U);
}

TEST_F(CallUpdates, keep_a_call_that_stops_ringing_as_an_idle_one) {
    ring("1");
    logger_->clear();
    ring_silently("1");
    EXPECT_EQ(logger_->lines(), (Lines{update_line("state = 1, cid = 1 "), update_line("found")}));
    EXPECT_EQ(headset_state(), 1) << "the bit of the event, although the call is silent now";
    EXPECT_EQ(first_in_state(CALL_STATE_ALERTING), "");
    EXPECT_EQ(first_in_state(CALL_STATE_IDLE), "1");
    EXPECT_EQ(count_and_clear(), 1U);
}

TEST_F(CallUpdates, let_a_silent_call_ring_again) {
    ring("1");
    ring_silently("1");
    ring("1");
    EXPECT_EQ(first_in_state(CALL_STATE_ALERTING), "1");
    EXPECT_EQ(count_and_clear(), 1U);
}

TEST_F(CallUpdates, heed_the_ringing_flag_in_the_alerting_state_only) {
    ccm_.onCallStateUpdate(CALL_STATE_CONNECTED, "1", true);
    ccm_.onCallStateUpdate(CALL_STATE_HOLD, "2", true);
    EXPECT_EQ(first_in_state(CALL_STATE_CONNECTED), "1");
    EXPECT_EQ(first_in_state(CALL_STATE_HOLD), "2");
    ccm_.onCallStateUpdate(CALL_STATE_IDLE, "1", true);
    EXPECT_EQ(count_and_clear(), 1U);
}

TEST_F(CallUpdates, remove_a_call_that_ends_and_keep_the_order_of_the_others) {
    have({held("1"), held("2"), held("3")});
    end("1");
    EXPECT_EQ(logger_->lines(), (Lines{update_line("state = 0, cid = 1 "), update_line("found")}));
    EXPECT_EQ(first_in_state(CALL_STATE_HOLD), "2");
    EXPECT_EQ(count_and_clear(), 2U);
}

TEST_F(CallUpdates, leave_the_list_alone_when_an_unknown_call_ends) {
    connect("1");
    logger_->clear();
    end("2");
    EXPECT_EQ(logger_->lines(), Lines{update_line("state = 0, cid = 2 ")});
    EXPECT_EQ(headset_state(), 0);
    EXPECT_EQ(first_in_state(CALL_STATE_CONNECTED), "1");
    EXPECT_EQ(count_and_clear(), 1U);
}

TEST_F(CallUpdates, remove_one_call_at_a_time_where_two_have_one_id) {
    have({held("1"), talking("1")});
    end("1");
    EXPECT_EQ(first_in_state(CALL_STATE_HOLD), "");
    EXPECT_EQ(first_in_state(CALL_STATE_CONNECTED), "1");
    end("1");
    EXPECT_EQ(count_and_clear(), 0U);
}

TEST_F(CallUpdates, keep_a_call_in_a_state_without_meaning_which_shows_nothing) {
    ccm_.onCallStateUpdate(7, "1", false);
    EXPECT_EQ(logger_->lines(), Lines{update_line("state = 7, cid = 1 ")});
    EXPECT_EQ(headset_state(), 0);
    EXPECT_EQ(first_in_state(7), "1");
}

TEST_F(CallUpdates, set_the_mute_flag_of_a_call_in_any_state) {
    for (const ICallInfo& call : {silent("1"), ringing("1"), talking("1"), held("1")}) {
        have({call});
        EXPECT_EQ(ccm_.onMuteStateUpdate(true, "1"), 0x08U) << "state " << call.state;
        EXPECT_TRUE(ccm_.isCallMuted("1")) << "state " << call.state;
        EXPECT_EQ(ccm_.onMuteStateUpdate(false, "1"), 0U) << "state " << call.state;
        EXPECT_FALSE(ccm_.isCallMuted("1")) << "state " << call.state;
        EXPECT_EQ(logger_->lines(), Lines()) << "state " << call.state;
    }
}

TEST_F(CallUpdates, return_all_leds_of_a_muted_call_not_the_mute_led_alone) {
    connect("1");
    ccm_.getHeadsetLedState();
    EXPECT_EQ(ccm_.onMuteStateUpdate(true, "1"), 0x0AU);
    EXPECT_EQ(ccm_.onMuteStateUpdate(false, "1"), 0x02U);
}

TEST_F(CallUpdates, ignore_a_mute_for_an_unknown_call_beside_others) {
    have({talking("1")});
    for (const bool mute : {true, false}) {
        EXPECT_EQ(ccm_.onMuteStateUpdate(mute, "2"), ignored);
    }
    const std::string line = mute_line("mute on non-connected call, ignore. cid = 2");
    EXPECT_EQ(logger_->lines(), (Lines{line, line}));
    EXPECT_FALSE(ccm_.isCallMuted("1"));
    connect("1");
    EXPECT_EQ(ccm_.getHeadsetLedState(), 0x02) << "no mute led either";
}

TEST_F(CallUpdates, ignore_a_mute_without_any_call) {
    for (const bool mute : {true, false}) {
        EXPECT_EQ(ccm_.onMuteStateUpdate(mute, "2"), ignored);
    }
    const std::string line = mute_line("phantom mute from client ");
    EXPECT_EQ(logger_->lines(), (Lines{line, line}));
}

TEST_F(CallUpdates, have_a_log_line_that_does_not_fit_go_missing_and_nothing_else) {
    const std::string endless(2000, '1');
    connect(endless);
    EXPECT_EQ(logger_->lines(), Lines());
    EXPECT_EQ(first_in_state(CALL_STATE_CONNECTED), endless);
}

}  // namespace
}  // namespace callstate_test
