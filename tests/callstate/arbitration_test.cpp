#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <thread>

#include "tests/callstate/calls.h"

namespace callstate_test {
namespace {

enum class Operation { INIT, IDLE, HOLD, MUTE, UNMUTE };

std::string name_of(Operation operation) {
    constexpr const char* names[] = {"INIT", "IDLE", "HOLD", "MUTE", "UNMUTE"};
    return names[static_cast<std::size_t>(operation)];
}

/// Runs an arbitration that concerns the call "1".
void arbitrate(headset_ccm& ccm, Operation operation, const headset_ccm::Channel& state,
               const headset_ccm::Channel& mute) {
    switch (operation) {
        case Operation::INIT:
            return ccm.arbitrateHeadsetINIT(state, mute);
        case Operation::IDLE:
            return ccm.arbitrateHeadsetIDLE("1", state, mute);
        case Operation::HOLD:
            return ccm.arbitrateHeadsetHOLD("1", state, mute);
        case Operation::MUTE:
            return ccm.arbitrateHeadsetMUTE("1", mute);
        case Operation::UNMUTE:
            return ccm.arbitrateHeadsetUNMUTE("1", mute);
    }
}

/// A call list, and what is logged and sent for it, in order. Log lines stand without prefix and newline.
struct Row {
    const char* name;
    Operation operation;
    std::vector<ICallInfo> calls;
    Lines log;
};

std::ostream& operator<<(std::ostream& out, const Row& row) {
    return out << row.name;
}

const std::string alerting = "there's an alerting call, send ALERTING";
const std::string in_use = "there's a talking call, send INUSE";
const std::string consultation = "actually a consultation call, send + HOLD";
const std::string only_held = "there's only held call, send HOLD";
const std::string init_idle = "no alerting or inuse or hold, send IDLE";
const std::string one_idle = "only 1 IDLE call, send IDLE";
const std::string no_calls = "none calls, send IDLE";
const std::string plus_in_use = "there's a talking call, send + INUSE";
const std::string no_mute = "not send mute";
const std::string send_muted = "send muted=true";
const std::string send_unmuted = "send muted=false";

// The call "1" is the one that an operation is about; it may be gone already.
const Row rows[] = {
    {"ringing_call_at_init", Operation::INIT, {ringing("2")}, {alerting, "state 1", no_mute}},
    {"ringing_call_before_all_others_at_init",
     Operation::INIT,
     {muted(talking("2")), held("3"), muted(ringing("4"))},
     {alerting, "state 1", no_mute}},
    {"talking_call_at_init", Operation::INIT, {talking("2")}, {in_use, "state 2", send_unmuted, "mute 0"}},
    {"muted_talking_call_at_init",
     Operation::INIT,
     {muted(talking("2"))},
     {in_use, "state 2", send_muted, "mute 1"}},
    {"mute_of_the_first_talking_call_at_init",
     Operation::INIT,
     {talking("2"), muted(talking("3"))},
     {in_use, "state 2", send_unmuted, "mute 0"}},
    {"consultation_at_init",
     Operation::INIT,
     {held("2"), muted(talking("3"))},
     {in_use, consultation, "state 6", send_muted, "mute 1"}},
    {"mute_of_the_talking_call_and_not_the_held_one_at_init",
     Operation::INIT,
     {muted(held("2")), talking("3")},
     {in_use, consultation, "state 6", send_unmuted, "mute 0"}},
    {"held_call_at_init", Operation::INIT, {muted(held("2"))}, {only_held, "state 4", no_mute}},
    {"no_calls_at_init", Operation::INIT, {}, {init_idle, "state 0", send_unmuted, "mute 0"}},
    {"silent_calls_at_init",
     Operation::INIT,
     {muted(silent("2")), silent("3")},
     {init_idle, "state 0", send_unmuted, "mute 0"}},

    {"last_call_ended", Operation::IDLE, {}, {no_calls, "state 0", send_unmuted, "mute 0"}},
    {"ended_call_that_survived_alone",
     Operation::IDLE,
     {muted(talking("1"))},
     {one_idle, "state 0", send_unmuted, "mute 0"}},
    {"ended_call_that_survived_among_silent_ones",
     Operation::IDLE,
     {silent("2"), muted(silent("1")), silent("3")},
     {"state 0", no_mute}},
    {"ended_call_that_survived_beside_a_talking_one",
     Operation::IDLE,
     {held("1"), muted(talking("2"))},
     {in_use, consultation, "state 6", send_muted, "mute 1"}},
    {"call_ended_while_one_rings", Operation::IDLE, {ringing("2")}, {alerting, "state 1", no_mute}},
    {"call_ended_while_one_rings_and_one_talks",
     Operation::IDLE,
     {muted(talking("2")), ringing("3")},
     {alerting, "state 1", no_mute}},
    {"held_call_of_a_consultation_ended",
     Operation::IDLE,
     {muted(talking("2"))},
     {in_use, "state 2", send_muted, "mute 1"}},
    {"call_ended_beside_an_unmuted_talking_one",
     Operation::IDLE,
     {talking("2")},
     {in_use, "state 2", send_unmuted, "mute 0"}},
    {"call_ended_beside_a_consultation",
     Operation::IDLE,
     {talking("2"), held("3")},
     {in_use, consultation, "state 6", send_unmuted, "mute 0"}},
    {"talking_call_of_a_consultation_ended", Operation::IDLE, {held("2")}, {only_held, "state 4", no_mute}},
    {"call_ended_beside_two_silent_ones", Operation::IDLE, {silent("2"), silent("3")}, {"state 0", no_mute}},
    {"call_ended_beside_one_silent_one", Operation::IDLE, {silent("2")}, {"state 0", no_mute}},

    {"call_held_while_another_talks",
     Operation::HOLD,
     {held("1"), muted(talking("2"))},
     {plus_in_use, "state 6"}},
    {"call_held_with_nothing_else", Operation::HOLD, {held("1")}, {"state 4"}},
    {"call_held_while_one_rings", Operation::HOLD, {held("1"), ringing("2")}, {"state 4"}},
    {"unknown_call_held", Operation::HOLD, {}, {"state 4"}},
    {"call_held_that_still_talks", Operation::HOLD, {talking("1")}, {plus_in_use, "state 6"}},

    {"talking_call_muted", Operation::MUTE, {talking("1")}, {"call CONNECTED, send mute", "mute 1"}},
    {"talking_call_muted_whatever_its_flag_and_other_calls",
     Operation::MUTE,
     {ringing("2"), muted(talking("1"))},
     {"call CONNECTED, send mute", "mute 1"}},
    {"held_call_muted", Operation::MUTE, {held("1"), talking("2")}, {"call state=3, don't send mute"}},
    {"ringing_call_muted", Operation::MUTE, {ringing("1")}, {"call state=1, don't send mute"}},
    {"silent_call_muted", Operation::MUTE, {silent("1")}, {"call state=0, don't send mute"}},
    {"unknown_call_muted_beside_others", Operation::MUTE, {talking("2")}, {"none calls, don't send mute"}},
    {"unknown_call_muted", Operation::MUTE, {}, {"none calls, don't send mute"}},

    {"talking_call_unmuted",
     Operation::UNMUTE,
     {muted(talking("1"))},
     {"call CONNECTED, send unmute", "mute 0"}},
    {"held_call_unmuted", Operation::UNMUTE, {held("1")}, {"call state=3, don't send unmute"}},
    {"ringing_call_unmuted", Operation::UNMUTE, {ringing("1")}, {"call state=1, don't send unmute"}},
    {"silent_call_unmuted", Operation::UNMUTE, {silent("1")}, {"call state=0, don't send unmute"}},
    {"unknown_call_unmuted_beside_others",
     Operation::UNMUTE,
     {talking("2")},
     {"none calls, don't send unmute"}},
    {"unknown_call_unmuted", Operation::UNMUTE, {}, {"none calls, don't send unmute"}},
};

bool is_sent(const std::string& line) {
    return line.starts_with("state ") || line.starts_with("mute ");
}

class Arbitration : public CallListTest, public testing::WithParamInterface<Row> {};

TEST_P(Arbitration, logs_and_sends_in_order) {
    const Row& row = GetParam();
    Lines wanted;
    for (const std::string& line : row.log) {
        wanted.push_back(is_sent(line) ? line : ccm_line("arbitrateHeadset" + name_of(row.operation), line));
    }
    have(row.calls);
    arbitrate(ccm_, row.operation, state_channel_, mute_channel_);
    EXPECT_EQ(logger_->lines(), wanted);
}

INSTANTIATE_TEST_SUITE_P(Decision, Arbitration, testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });

/// What a call list is for, and that it is left alone.
TEST_F(CallListTest, is_not_changed_by_any_arbitration) {
    ccm_.onCallStateUpdate(CALL_STATE_CONNECTED, "1", false);
    ccm_.onMuteStateUpdate(true, "1");
    ccm_.onCallStateUpdate(CALL_STATE_HOLD, "2", false);
    for (const Operation operation :
         {Operation::INIT, Operation::IDLE, Operation::HOLD, Operation::MUTE, Operation::UNMUTE}) {
        arbitrate(ccm_, operation, state_channel_, mute_channel_);
        EXPECT_EQ(ccm_.getHeadsetLedState(), 0x28) << name_of(operation);
        EXPECT_TRUE(ccm_.isCallMuted("1")) << name_of(operation);
        EXPECT_EQ(first_in_state(CALL_STATE_CONNECTED), "1") << name_of(operation);
        EXPECT_EQ(first_in_state(CALL_STATE_HOLD), "2") << name_of(operation);
    }
    EXPECT_EQ(count_and_clear(), 2U);
}

TEST_F(CallListTest, takes_the_ended_call_for_the_last_one_where_a_duplicate_survived_it) {
    have({talking("1"), held("1")});
    ccm_.onCallStateUpdate(CALL_STATE_IDLE, "1", false);
    logger_->clear();
    ccm_.arbitrateHeadsetIDLE("1", state_channel_, mute_channel_);
    EXPECT_EQ(logger_->lines(),
              (Lines{ccm_line("arbitrateHeadsetIDLE", "only 1 IDLE call, send IDLE"), "state 0",
                     ccm_line("arbitrateHeadsetIDLE", "send muted=false"), "mute 0"}));
}

TEST_F(CallListTest, is_free_for_other_threads_while_an_arbitration_sends) {
    for (const Operation operation :
         {Operation::INIT, Operation::IDLE, Operation::HOLD, Operation::MUTE, Operation::UNMUTE}) {
        have({talking("1"), talking("2")});
        std::vector<std::future<bool>> questions;
        const headset_ccm::Channel ask = [&](int) {
            auto& question =
                questions.emplace_back(std::async(std::launch::async, [&] { return ccm_.isCallMuted("1"); }));
            EXPECT_EQ(question.wait_for(test_support::patience), std::future_status::ready)
                << name_of(operation);
        };
        arbitrate(ccm_, operation, ask, ask);
        EXPECT_FALSE(questions.empty()) << name_of(operation);
    }
}

TEST_F(CallListTest, lets_a_channel_call_back) {
    have({talking("1")});
    const headset_ccm::Channel end_it = [&](int) { ccm_.onCallStateUpdate(CALL_STATE_IDLE, "1", false); };
    ccm_.arbitrateHeadsetINIT(end_it, mute_channel_);
    EXPECT_EQ(logger_->lines().back(), "mute 0") << "the decision was made before";
    EXPECT_EQ(count_and_clear(), 0U);
}

TEST_F(CallListTest, throws_at_a_missing_channel) {
    const headset_ccm::Channel missing;
    have({talking("1")});
    for (const Operation operation : {Operation::INIT, Operation::IDLE, Operation::HOLD}) {
        EXPECT_THROW(arbitrate(ccm_, operation, missing, mute_channel_), std::bad_function_call)
            << name_of(operation);
    }
    for (const Operation operation : {Operation::INIT, Operation::IDLE, Operation::MUTE, Operation::UNMUTE}) {
        EXPECT_THROW(arbitrate(ccm_, operation, state_channel_, missing), std::bad_function_call)
            << name_of(operation);
    }
    EXPECT_NO_THROW(arbitrate(ccm_, Operation::HOLD, state_channel_, missing)) << "it never sends a mute";
}

/// Runs `body` on several threads, with a number for each.
void run_on_threads(int count, const std::function<void(int)>& body) {
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number) {
        threads.emplace_back(body, number);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(CallListTest, keeps_the_calls_of_several_host_threads_apart) {
    const headset_ccm::Channel deaf = [](int) {};
    run_on_threads(4, [&](int number) {
        const std::string cid = std::to_string(number);
        for (int round = 0; round < 50; ++round) {
            ccm_.onCallStateUpdate(CALL_STATE_ALERTING, cid, true);
            ccm_.onCallStateUpdate(CALL_STATE_CONNECTED, cid, false);
            ccm_.onMuteStateUpdate(true, cid);
            EXPECT_TRUE(ccm_.isCallMuted(cid));
            ccm_.arbitrateHeadsetMUTE(cid, deaf);
            ccm_.onCallStateUpdate(CALL_STATE_HOLD, cid, false);
            ccm_.arbitrateHeadsetHOLD(cid, deaf, deaf);
            ccm_.getHeadsetLedState();
            ccm_.onCallStateUpdate(CALL_STATE_IDLE, cid, false);
            ccm_.arbitrateHeadsetIDLE(cid, deaf, deaf);
            EXPECT_FALSE(ccm_.isCallMuted(cid));
        }
    });
    EXPECT_EQ(count_and_clear(), 0U);
}

TEST_F(CallListTest, loses_no_mute_press_of_several_read_threads) {
    have({talking("1")});
    std::atomic<int> muted_more_often = 0;
    run_on_threads(4, [&](int) {
        for (int press = 0; press < 50; ++press) {
            std::string cid;
            const bool mute = ccm_.mapKeyToCallAction(cid, 0x1) == headset_plugin::CallAction::mute_call;
            muted_more_often += mute ? 1 : -1;
        }
    });
    EXPECT_EQ(muted_more_often, 0);
    EXPECT_FALSE(ccm_.isCallMuted("1"));
}

}  // namespace
}  // namespace callstate_test
