// Keys on their way from the headset's input report to the host's listeners.

#include <iterator>
#include <optional>
#include <ostream>
#include <stdexcept>

#include "base/headset_types.h"
#include "callstate/call_action.h"
#include "plugin/plugin_manager.h"
#include "tests/plugin/plugin_host.h"
#include "tests/plugin/recording_driver.h"

namespace {

using namespace headset_plugin;
using namespace plugin_control;
using namespace test_support;

/// A headset whose input reports carry any key code is active.
class KeyDispatch : public PluginHost {
  protected:
    void SetUp() override {
        PluginHost::SetUp();
        install_recording_driver();
        start_with_listeners();
        headset_ = plug_active();
        listener_->clear();
    }

    /// Sends a key code in an input report and waits until the read thread is through with it.
    void press(std::int32_t key) {
        const std::string done = line("headset_plugin::device::process_read", "exit");
        const std::size_t before = logger_->count(done);
        send(key);
        EXPECT_TRUE(logger_->wait_for_count(done, before + 1));
    }

    void send(std::int32_t key) {
        constexpr std::uint8_t key_report_id = 2;
        const Report report{key_report_id, static_cast<std::uint8_t>(key), 0};
        EXPECT_EQ(orvex_virtual_send_report(headset_, report.data(), report.size()), 0)
            << orvex_virtual_error();
    }

    /// What handling keys logged.
    Lines key_lines() const { return logger_->lines_with("PluginManager::handleKeyEvent"); }

    int headset_ = 0;
};

std::string code_line(int key) {
    return manager_line("handleKeyEvent", "keycode = " + std::to_string(key));
}

std::string action_line(const std::string& word) {
    return manager_line("handleKeyEvent", "key = " + word);
}

TEST_F(KeyDispatch, a_hook_key_answers_the_ringing_call) {
    control_->incomingCall("", "41", true);
    press(HEADSET_KEY_HOOK);
    EXPECT_EQ(listener_->calls(), Lines{"onAnswer(" + host_id(headset_) + ", 41)"});
    EXPECT_EQ(key_lines(), (Lines{code_line(2), action_line("Answer")}));
}

TEST_F(KeyDispatch, the_lines_of_a_key_come_in_order) {
    control_->incomingCall("", "41", true);
    logger_->clear();
    press(HEADSET_KEY_HOOK);
    EXPECT_TRUE(in_order(logger_->lines(),
                         {code_line(2), line("get_active_device_id", "enter:"),
                          "HeadsetPlugin: headset_plugin::headset_cc::keyEventNotify: keyReportValue: 2\n",
                          action_line("Answer")}));
}

TEST_F(KeyDispatch, a_released_hook_ends_the_connected_call) {
    control_->connectCall("", "41");
    press(HEADSET_KEY_END_CALL);
    EXPECT_EQ(listener_->calls(), Lines{"onEndCall(" + host_id(headset_) + ", 41)"});
    EXPECT_EQ(key_lines(), (Lines{code_line(0), action_line("EndCall")}));
}

TEST_F(KeyDispatch, a_mute_key_mutes_and_a_second_one_unmutes) {
    control_->connectCall("", "41");
    press(HEADSET_KEY_MUTE);
    press(HEADSET_KEY_MUTE);
    EXPECT_EQ(listener_->calls(), (Lines{"onMuteCall(" + host_id(headset_) + ", 41, true)",
                                         "onUnmuteCall(" + host_id(headset_) + ", 41, false)"}));
    EXPECT_EQ(key_lines(),
              (Lines{code_line(1), action_line("muteCall"), code_line(1), action_line("unmuteCall")}));
}

TEST_F(KeyDispatch, the_fourth_key_answers_a_ringing_call_and_otherwise_asks_for_hold_of_no_call) {
    control_->incomingCall("", "41", true);
    press(HEADSET_KEY_4);
    control_->connectCall("", "41");
    press(HEADSET_KEY_4);
    EXPECT_EQ(listener_->calls(),
              (Lines{"onAnswer(" + host_id(headset_) + ", 41)", "onHoldCall(" + host_id(headset_) + ", )"}));
    EXPECT_EQ(key_lines().back(), action_line("HoldCall"));
}

TEST_F(KeyDispatch, the_eighth_key_rejects_a_ringing_call) {
    control_->incomingCall("", "41", true);
    press(HEADSET_KEY_LOGITECH_8);
    EXPECT_EQ(listener_->calls(), Lines{"onRejectCall(" + host_id(headset_) + ", 41)"});
    EXPECT_EQ(key_lines(), (Lines{code_line(8), action_line("RejectCall")}));
}

TEST_F(KeyDispatch, the_function_key_reaches_the_call_listener_with_no_call) {
    control_->connectCall("", "41");
    press(HEADSET_KEY_16);
    EXPECT_EQ(listener_->calls(), Lines{"onFunctionKey(" + host_id(headset_) + ", )"});
    EXPECT_EQ(key_lines(), Lines{code_line(16)});
}

TEST_F(KeyDispatch, the_function_key_concerns_the_call_listener_alone) {
    const auto call_listener = std::make_shared<RecordingListener>();
    control_->setCallControlListener(call_listener);
    call_listener->clear();
    press(HEADSET_KEY_16);
    EXPECT_EQ(call_listener->calls().size(), 1U);
    EXPECT_EQ(listener_->calls(), Lines());
}

TEST_F(KeyDispatch, the_configuration_key_reaches_the_configuration_listener_alone) {
    const auto config_listener = std::make_shared<RecordingListener>();
    config_->setConfigListener(config_listener);
    press(HEADSET_KEY_32);
    EXPECT_EQ(config_listener->calls(), Lines{"onConfigKey(false)"});
    EXPECT_EQ(listener_->calls(), Lines());
    EXPECT_EQ(key_lines(), Lines{code_line(32)});
}

TEST_F(KeyDispatch, a_key_that_means_nothing_now_is_logged_and_asks_for_nothing) {
    for (const std::int32_t key : {HEADSET_KEY_HOOK, HEADSET_KEY_MUTE, HEADSET_KEY_LOGITECH_8, 0x12}) {
        listener_->clear();
        logger_->clear();
        press(key);
        EXPECT_EQ(key_lines(), Lines{code_line(key)});
        EXPECT_EQ(listener_->calls(), Lines());
    }
}

TEST_F(KeyDispatch, no_key_changes_what_the_headset_shows_or_which_calls_there_are) {
    const auto driver = install_recording_driver();
    unplug(headset_);
    headset_ = plug_active("jabra-evolve-link-ms");
    control_->connectCall("", "41");
    driver->take_shown();
    onHeadsetKeyEvent(HEADSET_KEY_END_CALL, "");
    onHeadsetKeyEvent(HEADSET_KEY_MUTE, "");
    EXPECT_EQ(driver->take_shown(), Lines());
    onHeadsetKeyEvent(HEADSET_KEY_END_CALL, "");
    EXPECT_EQ(listener_->calls().back(), "onEndCall(" + host_id(headset_) + ", 41)");
}

TEST_F(KeyDispatch, without_a_call_listener_every_action_is_logged_and_dropped) {
    control_->setCallControlListener(nullptr);
    control_->incomingCall("", "41", true);
    press(HEADSET_KEY_HOOK);
    press(HEADSET_KEY_LOGITECH_8);
    EXPECT_EQ(key_lines(),
              (Lines{code_line(2), action_line("Answer"), code_line(8), action_line("RejectCall")}));
    logger_->clear();
    control_->connectCall("", "41");
    for (const std::int32_t key :
         {HEADSET_KEY_MUTE, HEADSET_KEY_MUTE, HEADSET_KEY_END_CALL, HEADSET_KEY_4, HEADSET_KEY_16}) {
        press(key);
    }
    EXPECT_EQ(key_lines(), (Lines{code_line(1), action_line("muteCall"), code_line(1),
                                  action_line("unmuteCall"), code_line(0), action_line("EndCall"),
                                  code_line(4), action_line("HoldCall"), code_line(16)}));
    EXPECT_EQ(listener_->calls(), Lines());
}

TEST_F(KeyDispatch, without_a_configuration_listener_the_configuration_key_is_dropped) {
    config_->setConfigListener(nullptr);
    press(HEADSET_KEY_32);
    EXPECT_EQ(key_lines(), Lines{code_line(32)});
    EXPECT_EQ(listener_->calls(), Lines());
}

TEST_F(KeyDispatch, a_listener_that_went_away_gets_nothing_more) {
    control_->connectCall("", "41");
    listener_ = std::make_shared<RecordingListener>();
    press(HEADSET_KEY_MUTE);
    press(HEADSET_KEY_16);
    press(HEADSET_KEY_32);
    EXPECT_EQ(key_lines(), (Lines{code_line(1), action_line("muteCall"), code_line(16), code_line(32)}));
}

TEST_F(KeyDispatch, without_an_active_headset_the_request_goes_out_with_no_device) {
    control_->connectCall("", "41");
    EXPECT_FALSE(control_->setAudioDevice("none", "", ""));
    onHeadsetKeyEvent(HEADSET_KEY_END_CALL, serial(headset_));
    EXPECT_EQ(listener_->calls(), Lines{"onEndCall(, 41)"});
    onHeadsetKeyEvent(HEADSET_KEY_16, serial(headset_));
    EXPECT_EQ(listener_->calls().back(), "onFunctionKey(, )");
}

TEST_F(KeyDispatch, the_serial_of_the_headset_does_not_matter) {
    control_->connectCall("", "41");
    plugin_manager()->handleKeyEvent(HEADSET_KEY_END_CALL, "no such headset");
    EXPECT_EQ(listener_->calls(), Lines{"onEndCall(" + host_id(headset_) + ", 41)"});
}

TEST_F(KeyDispatch, a_key_code_is_logged_with_its_sign) {
    onHeadsetKeyEvent(0xFFFE, "");
    EXPECT_EQ(key_lines(), Lines{code_line(-2)});
    EXPECT_EQ(listener_->calls(), Lines()) << "-2 is no key";
}

TEST_F(KeyDispatch, keys_are_dropped_without_a_line_once_the_plugin_is_stopped) {
    control_->connectCall("", "41");
    stopPluginControl();
    onHeadsetKeyEvent(HEADSET_KEY_END_CALL, "");
    start();
    EXPECT_EQ(key_lines(), Lines());
    EXPECT_EQ(listener_->calls(), Lines());
}

TEST_F(KeyDispatch, keys_do_not_look_at_the_stop_flag) {
    control_->connectCall("", "41");
    logger_->on_line([&](const std::string& logged) {
        if (logged == line("stop_device_mgr", "completed")) {
            onHeadsetKeyEvent(HEADSET_KEY_END_CALL, "");
        }
    });
    stopPluginControl();
    EXPECT_EQ(listener_->calls(), Lines{"onEndCall(, 41)"});
}

TEST_F(KeyDispatch, a_key_of_another_headset_than_the_active_one_goes_nowhere) {
    const int other = plug("jabra-evolve-link-ms");
    activate(other);
    listener_->clear();
    control_->connectCall("", "41");
    send(HEADSET_KEY_MUTE);
    EXPECT_TRUE(logger_->wait_for(
        line("headset_plugin::device::handle_readback", "ignore none active headset button action")));
    EXPECT_EQ(key_lines(), Lines());
    EXPECT_EQ(listener_->calls(), Lines());
}

TEST_F(KeyDispatch, a_listener_may_report_the_change_from_inside_the_request) {
    control_->incomingCall("", "41", true);
    listener_->on_call([&](const std::string& call) {
        if (call.starts_with("onAnswer")) {
            control_->connectCall("", "41");
        }
    });
    press(HEADSET_KEY_HOOK);
    EXPECT_TRUE(in_order(logger_->lines(),
                         {action_line("Answer"), manager_line("connectCall", "cid=41"),
                          line("headset_plugin::device::headset_set_state", "3rd call state =2 ")}));
}

TEST_F(KeyDispatch, a_listener_that_throws_gets_its_headset_closed) {
    control_->connectCall("", "41");
    listener_->on_call([](const std::string& call) {
        if (call.starts_with("onEndCall")) {
            throw std::runtime_error("the host failed");
        }
    });
    logger_->clear();
    send(HEADSET_KEY_END_CALL);
    const std::string removed = "onDeviceRemovedNotify(" + host_id(headset_) +
                                ", 0b0e, 24c9, Jabra, Jabra Link 380c, " + serial(headset_) + ")";
    EXPECT_TRUE(listener_->wait_for(removed));
    EXPECT_TRUE(
        in_order(logger_->lines(),
                 {action_line("EndCall"),
                  line("headset_plugin::device::read_thread", "unexpected device read exception "),
                  line("headset_plugin::device::read_thread", "Exit device_thread_ "),
                  line("headset_plugin::onDeviceRemoved", "device: serial [" + serial(headset_) + "]")}));
    EXPECT_EQ(listener_->calls(), (Lines{"onEndCall(" + host_id(headset_) + ", 41)", removed}));
}

// ---- another thread of the host meanwhile

/// An operation of a listener, and the key that leads to it; without one, a headset that becomes ready does.
struct HeldUpCallback {
    const char* operation;
    std::optional<std::int32_t> key;
};

std::ostream& operator<<(std::ostream& out, const HeldUpCallback& row) {
    return out << row.operation;
}

class DuringCallback : public KeyDispatch, public ::testing::WithParamInterface<HeldUpCallback> {};

INSTANTIATE_TEST_SUITE_P(Operations, DuringCallback,
                         ::testing::Values(HeldUpCallback{"onAnswer", HEADSET_KEY_HOOK},
                                           HeldUpCallback{"onMuteCall", HEADSET_KEY_MUTE},
                                           HeldUpCallback{"onRejectCall", HEADSET_KEY_LOGITECH_8},
                                           HeldUpCallback{"onFunctionKey", HEADSET_KEY_16},
                                           HeldUpCallback{"onConfigKey", HEADSET_KEY_32},
                                           HeldUpCallback{"onActiveDeviceNotify", std::nullopt}),
                         [](const auto& row) { return std::string(row.param.operation); });

TEST_P(DuringCallback, another_thread_may_change_the_device_and_the_calls) {
    control_->connectCall("", "42");
    control_->incomingCall("", "41", true);
    std::future<void> other_thread;  // joined when no callback waits for it any more
    std::promise<std::future_status> other_thread_done;
    listener_->on_call([&](const std::string& call) {
        if (call.starts_with(GetParam().operation)) {
            other_thread = std::async(std::launch::async, [&] {
                control_->setAudioDevice("none", "", "");
                control_->callStateSync("", {}, 0);
            });
            other_thread_done.set_value(other_thread.wait_for(patience));
        }
    });
    if (GetParam().key) {
        send(*GetParam().key);
    } else {
        activate(headset_);
    }
    std::future<std::future_status> done = other_thread_done.get_future();
    ASSERT_EQ(done.wait_for(2 * patience), std::future_status::ready) << "the operation was not called";
    EXPECT_EQ(done.get(), std::future_status::ready);
}

// ---- actions and operations

/// The listener's operation for each action, by the action's number; none for a key that means nothing, for
/// what the host has no operation for, and for a number that is no action.
constexpr const char* operations[] = {"",
                                      "onAnswer",
                                      "onEndCall",
                                      "onHoldCall",
                                      "onResumeCall",
                                      "onRejectCall",
                                      "onMuteCall",
                                      "onUnmuteCall",
                                      "",
                                      "",
                                      "",
                                      "",
                                      ""};

TEST(SendAction, reaches_its_own_operation_with_device_call_and_mute_flag_or_none) {
    for (std::size_t number = 0; number < std::size(operations); ++number) {
        const std::string operation = operations[number];
        const auto action = static_cast<CallAction>(number);
        const bool is_mute = action == CallAction::mute_call || action == CallAction::unmute_call;
        for (const bool muted : {false, true}) {
            RecordingListener listener;
            int asked = 0;
            send_action(listener, action, "device", "41", [&] {
                ++asked;
                return muted;
            });
            const std::string flag = !is_mute ? "" : muted ? ", true" : ", false";
            EXPECT_EQ(listener.calls(),
                      operation.empty() ? Lines() : Lines{operation + "(device, 41" + flag + ")"})
                << number;
            EXPECT_EQ(asked, is_mute ? 1 : 0) << number;
        }
    }
}

}  // namespace
