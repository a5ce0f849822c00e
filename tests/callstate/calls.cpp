#include "tests/callstate/calls.h"

#include <cstdio>

namespace callstate_test {

ICallInfo silent(const std::string& cid) {
    return {cid, CALL_STATE_IDLE, 0, false};
}

ICallInfo ringing(const std::string& cid) {
    return {cid, CALL_STATE_ALERTING, 0, false};
}

ICallInfo talking(const std::string& cid) {
    return {cid, CALL_STATE_CONNECTED, 0, false};
}

ICallInfo held(const std::string& cid) {
    return {cid, CALL_STATE_HOLD, 0, false};
}

ICallInfo muted(ICallInfo call) {
    call.mute = true;
    return call;
}

std::string ccm_line(const std::string& operation, const std::string& text) {
    return "HeadsetPlugin: headset_plugin::headset_ccm::" + operation + ": " + text + "\n";
}

std::string cc_line(const std::string& operation, const std::string& text) {
    return "HeadsetPlugin: headset_plugin::headset_cc::" + operation + ": " + text + "\n";
}

void CallListTest::TearDown() {
    EXPECT_EQ(logger_->odd_levels(), std::vector<int>());
}

void CallListTest::have(const std::vector<ICallInfo>& calls) {
    ccm_.populateCallState("", calls, 0);
    logger_->clear();
}

std::size_t CallListTest::count_and_clear() {
    logger_->clear();
    ccm_.populateCallState("", {}, 0);
    std::size_t count = 0;
    for (const std::string& line : logger_->lines_with("cleared")) {
        const std::string pattern = ccm_line("populateCallState", "call_list_ with size [%zu] cleared");
        std::sscanf(line.c_str(), pattern.c_str(), &count);
    }
    return count;
}

std::string CallListTest::first_in_state(std::uint32_t state) {
    std::string cid = "not set";
    return ccm_.getCidByState(cid, state);
}

int CallListTest::headset_state() {
    logger_->clear();
    ccm_.getHeadsetLedState();
    int state = -1;
    const std::string pattern = cc_line("getHeadsetLedState", "headset_state=%d ");
    std::sscanf(logger_->lines().front().c_str(), pattern.c_str(), &state);
    return state;
}

}  // namespace callstate_test
