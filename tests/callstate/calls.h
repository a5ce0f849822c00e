// What the tests of the call list share: calls to fill it with, and a log in which also stands what was sent.
#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "callstate/headset_ccm.h"
#include "tests/support/layer_log.h"

namespace callstate_test {

using headset_plugin::headset_ccm;
using plugin_control::CALL_STATE_ALERTING;
using plugin_control::CALL_STATE_CONNECTED;
using plugin_control::CALL_STATE_HOLD;
using plugin_control::CALL_STATE_IDLE;
using plugin_control::ICallInfo;

using Lines = std::vector<std::string>;

// A call in each state.
ICallInfo silent(const std::string& cid);
ICallInfo ringing(const std::string& cid);
ICallInfo talking(const std::string& cid);
ICallInfo held(const std::string& cid);
ICallInfo muted(ICallInfo call);

/// The log line of a headset_ccm operation: its text with prefix, name and newline around it.
std::string ccm_line(const std::string& operation, const std::string& text);
/// The same for headset_cc.
std::string cc_line(const std::string& operation, const std::string& text);

/// A call list and the log.
class CallListTest : public testing::Test {
  protected:
    void TearDown() override;

    /// Fills the call list and forgets what was logged.
    void have(const std::vector<ICallInfo>& calls);

    /// The number of calls in the list, which is empty afterwards.
    std::size_t count_and_clear();

    /// The id of the first call in a state; empty without one.
    std::string first_in_state(std::uint32_t state);

    /// The headset state, as the log names it.
    int headset_state();

    std::shared_ptr<test_support::RecordingLogger> logger_ = test_support::install_layer_logger();
    headset_ccm ccm_;

    // Channels that write what they are given into the log, where its place shows.
    const headset_ccm::Channel state_channel_ = [this](int state) {
        logger_->log("state " + std::to_string(state), 2);
    };
    const headset_ccm::Channel mute_channel_ = [this](int muted) {
        logger_->log("mute " + std::to_string(muted), 2);
    };
};

}  // namespace callstate_test
