// The call-control side: what each of the host's call events logs, records and shows.

#include <functional>
#include <stdexcept>
#include <thread>

#include "devicemgr/device_mgr_api.h"
#include "plugin/plugin_manager.h"
#include "tests/plugin/plugin_host.h"
#include "tests/plugin/recording_driver.h"

namespace {

using namespace plugin_control;
using namespace test_support;

/// A headset is active and shows what it is told; the log is empty when a test begins.
class CallControl : public PluginHost {
  protected:
    void SetUp() override {
        PluginHost::SetUp();
        driver_ = install_recording_driver();
        start_with_listeners();
        headset_ = plug_active();
        begin();
    }

    /// Forgets what happened so far.
    void begin() {
        driver_->take_shown();
        logger_->clear();
        listener_->clear();
    }

    /// What the call-control side itself logged.
    Lines manager_lines() const { return logger_->lines_with(": plugin_control::PluginManager::"); }

    std::shared_ptr<RecordingDriver> driver_;
    int headset_ = 0;
};

const std::string sent_state = line("update_headset_state", "enter");

std::string led_line(int leds) {
    return manager_line("updateHeadsetLedState", "headset_state=" + std::to_string(leds));
}

std::string update_line(int state, const std::string& cid) {
    return "HeadsetPlugin: headset_plugin::headset_ccm::onCallStateUpdate: state = " + std::to_string(state) +
           ", cid = " + cid + " \n";
}

std::string arbitration_line(const std::string& operation, const std::string& message) {
    return "HeadsetPlugin: headset_plugin::headset_ccm::arbitrateHeadset" + operation + ": " + message + "\n";
}

TEST_F(CallControl, a_created_call_is_logged_and_nothing_else) {
    control_->createCall("any", "12", 2);
    EXPECT_EQ(logger_->lines(), Lines{manager_line("createCall", "cid=12, call direction=2")});
    control_->createCall("any", "", -1);
    EXPECT_EQ(logger_->count(manager_line("createCall", "cid=, call direction=-1")), 1U);
    control_->mute("", "12");
    EXPECT_EQ(driver_->take_shown(), Lines()) << "the created call counts";
}

TEST_F(CallControl, an_event_lets_out_what_the_logger_throws) {
    logger_->on_line([](const std::string&) { throw std::runtime_error("the log is full"); });
    EXPECT_THROW(control_->createCall("", "12", 2), std::runtime_error);
}

TEST_F(CallControl, a_ringing_call_shows_alerting) {
    control_->incomingCall("any", "1", true);
    EXPECT_EQ(manager_lines(), (Lines{manager_line("incomingCall", "cid=1, ringing=true"), led_line(4)}));
    EXPECT_TRUE(in_order(logger_->lines(), {manager_line("incomingCall", "cid=1, ringing=true"),
                                            update_line(1, "1"), led_line(4), sent_state}));
    EXPECT_EQ(driver_->take_shown(), Lines{"state 1"});
}

TEST_F(CallControl, a_call_that_comes_in_silently_sends_nothing) {
    control_->incomingCall("", "1", true);
    begin();
    control_->incomingCall("", "1", false);
    EXPECT_EQ(manager_lines(), (Lines{manager_line("incomingCall", "cid=1, ringing=false"), led_line(4),
                                      manager_line("incomingCall", "ringing=false, don't send IDLE")}))
        << "the call was recorded as alerting";
    EXPECT_EQ(logger_->count(sent_state), 0U);
    EXPECT_EQ(driver_->take_shown(), Lines());
}

TEST_F(CallControl, an_unknown_call_that_comes_in_silently_is_not_recorded) {
    control_->incomingCall("", "1", false);
    EXPECT_EQ(manager_lines().back(), manager_line("incomingCall", "ringing=false, don't send IDLE"));
    control_->mute("", "1");
    EXPECT_EQ(logger_->count(arbitration_line("MUTE", "none calls, don't send mute")), 1U);
    EXPECT_EQ(driver_->take_shown(), Lines());
}

struct ConnectingOperation {
    const char* name;
    void (IPluginCallControlCallback::*operation)(const std::string&, const std::string&);
};

constexpr ConnectingOperation connecting_operations[] = {
    {"ringbackCall", &IPluginCallControlCallback::ringbackCall},
    {"connectCall", &IPluginCallControlCallback::connectCall},
    {"resumeCall", &IPluginCallControlCallback::resumeCall},
};

TEST_F(CallControl, a_call_never_seen_before_shows_in_use_by_ringback_connect_or_resume) {
    for (const ConnectingOperation& connecting : connecting_operations) {
        begin();
        (control_.get()->*connecting.operation)("any", connecting.name);
        EXPECT_EQ(manager_lines(),
                  (Lines{manager_line(connecting.name, std::string("cid=") + connecting.name), led_line(2)}));
        EXPECT_TRUE(in_order(logger_->lines(), {update_line(2, connecting.name), led_line(2), sent_state}));
        EXPECT_EQ(logger_->lines_with("arbitrateHeadset"), Lines());
        EXPECT_EQ(driver_->take_shown(), Lines{"state 2"});
    }
}

TEST_F(CallControl, a_call_that_connects_shows_in_use_even_while_another_rings) {
    control_->incomingCall("", "1", true);
    begin();
    control_->connectCall("", "2");
    EXPECT_EQ(driver_->take_shown(), Lines{"state 2"});
}

TEST_F(CallControl, a_held_call_goes_to_the_arbitration) {
    control_->connectCall("", "1");
    begin();
    control_->holdCall("any", "1");
    EXPECT_EQ(manager_lines(), (Lines{manager_line("holdCall", "cid=1"), led_line(32),
                                      manager_line("holdCall", "go HOLD arbitrator")}));
    EXPECT_TRUE(in_order(logger_->lines(), {update_line(3, "1"), led_line(32),
                                            manager_line("holdCall", "go HOLD arbitrator"), sent_state}));
    EXPECT_EQ(driver_->take_shown(), Lines{"state 4"});
}

TEST_F(CallControl, a_held_call_beside_a_connected_one_shows_a_consultation) {
    control_->connectCall("", "1");
    control_->connectCall("", "2");
    begin();
    control_->holdCall("", "1");
    EXPECT_EQ(driver_->take_shown(), Lines{"state 6"});
}

TEST_F(CallControl, the_last_call_that_ends_shows_idle_and_unmuted) {
    control_->connectCall("", "1");
    begin();
    control_->endCall("any", "1");
    EXPECT_EQ(manager_lines(), (Lines{manager_line("endCall", "cid=1"), led_line(0),
                                      manager_line("endCall", "go IDLE arbitrator")}));
    EXPECT_TRUE(in_order(logger_->lines(),
                         {update_line(0, "1"), led_line(0), manager_line("endCall", "go IDLE arbitrator"),
                          arbitration_line("IDLE", "none calls, send IDLE"), sent_state,
                          arbitration_line("IDLE", "send muted=false"), line("hid_headset_set_mute", "enter"),
                          line("hid_headset_set_mute", "send muted=false")}));
    EXPECT_EQ(driver_->take_shown(), (Lines{"state 0", "unmuted"}));
}

TEST_F(CallControl, a_call_that_ends_beside_a_muted_one_shows_that_one) {
    control_->connectCall("", "1");
    control_->mute("", "1");
    control_->incomingCall("", "2", true);
    begin();
    control_->endCall("", "2");
    EXPECT_EQ(driver_->take_shown(), (Lines{"state 2", "muted"}));
}

TEST_F(CallControl, mute_logs_one_line_before_its_arbitration) {
    control_->connectCall("", "1");
    begin();
    control_->mute("any", "1");
    EXPECT_EQ(manager_lines(), Lines{manager_line("mute", "cid=1")});
    EXPECT_TRUE(in_order(logger_->lines(), {manager_line("mute", "cid=1"),
                                            arbitration_line("MUTE", "call CONNECTED, send mute"),
                                            line("hid_headset_set_mute", "send muted=true")}));
    EXPECT_EQ(driver_->take_shown(), Lines{"muted"});
}

TEST_F(CallControl, unmute_logs_two_lines_before_its_arbitration) {
    control_->connectCall("", "1");
    begin();
    control_->unmute("any", "1");
    EXPECT_EQ(manager_lines(),
              (Lines{manager_line("unmute", "cid=1"), manager_line("unmute", "go UNMUTE arbitrator")}));
    EXPECT_TRUE(in_order(logger_->lines(), {manager_line("unmute", "go UNMUTE arbitrator"),
                                            arbitration_line("UNMUTE", "call CONNECTED, send unmute"),
                                            line("hid_headset_set_mute", "send muted=false")}));
    EXPECT_EQ(driver_->take_shown(), Lines{"unmuted"});
}

TEST_F(CallControl, mute_of_an_unknown_call_shows_nothing) {
    control_->mute("", "1");
    control_->unmute("", "1");
    EXPECT_TRUE(in_order(
        logger_->lines(),
        {manager_line("mute", "cid=1"),
         "HeadsetPlugin: headset_plugin::headset_ccm::onMuteStateUpdate: phantom mute from client \n",
         arbitration_line("MUTE", "none calls, don't send mute"), manager_line("unmute", "cid=1"),
         "HeadsetPlugin: headset_plugin::headset_ccm::onMuteStateUpdate: phantom mute from client \n",
         manager_line("unmute", "go UNMUTE arbitrator"),
         arbitration_line("UNMUTE", "none calls, don't send unmute")}));
    EXPECT_EQ(driver_->take_shown(), Lines());
}

TEST_F(CallControl, mute_of_a_held_call_is_recorded_and_shows_once_it_is_up_and_shown_anew) {
    control_->holdCall("", "1");
    begin();
    control_->mute("", "1");
    EXPECT_EQ(driver_->take_shown(), Lines());
    control_->resumeCall("", "1");
    EXPECT_EQ(driver_->take_shown(), Lines{"state 2"}) << "a resumed call sends its state alone";
    control_->endCall("", "unknown");
    EXPECT_EQ(driver_->take_shown(), (Lines{"state 2", "muted"}));
}

TEST_F(CallControl, the_line_labelled_headset_state_carries_the_led_state) {
    control_->connectCall("", "1");
    control_->mute("", "1");
    begin();
    control_->connectCall("", "1");
    EXPECT_EQ(logger_->count(led_line(10)), 1U) << "off-hook 2 and mute 8";
}

TEST_F(CallControl, a_cid_of_any_length_is_taken) {
    const std::string long_cid(5000, '9');
    control_->connectCall("", long_cid);
    control_->mute("", long_cid);
    EXPECT_EQ(driver_->take_shown(), (Lines{"state 2", "muted"}));
    EXPECT_EQ(manager_lines(), Lines{led_line(2)}) << "a line that does not fit is not delivered";
}

// ---- the audio device

TEST_F(CallControl, the_audio_device_is_logged_without_its_name) {
    EXPECT_TRUE(control_->setAudioDevice(host_id(headset_), "some name", "some serial"));
    EXPECT_EQ(manager_lines(), Lines{manager_line("setAudioDevice", "device_id=" + host_id(headset_) +
                                                                        ", serial=some serial")});
    EXPECT_TRUE(in_order(logger_->lines(), {manager_line("setAudioDevice", "device_id=" + host_id(headset_) +
                                                                               ", serial=some serial"),
                                            line("set_audio_device", "enter: serial[some serial]")}));
}

TEST_F(CallControl, the_audio_device_reaches_the_matching_by_id_name_and_serial) {
    EXPECT_FALSE(control_->setAudioDevice("x", "y", "z"));
    EXPECT_TRUE(control_->setAudioDevice("x", "Headset (Jabra Link 380c)", "z"));
    EXPECT_TRUE(control_->setAudioDevice("x", "y", "SN " + serial(headset_)));
    EXPECT_FALSE(control_->setAudioDevice("", "", serial(headset_))) << "without an id nothing is chosen";
}

// ---- sync

std::vector<ICallInfo> one_call(std::uint32_t state, bool mute) {
    return {{.cid = "1", .state = state, .direction = 0, .mute = mute}};
}

TEST_F(CallControl, a_sync_after_a_headset_was_ready_shows_the_calls) {
    control_->callStateSync("device", one_call(CALL_STATE_CONNECTED, true), 9);
    EXPECT_EQ(manager_lines(),
              Lines{manager_line("callStateSync", "device_id:[device], calls.size:[1], num_calls:[9]")});
    EXPECT_TRUE(in_order(
        logger_->lines(),
        {manager_line("callStateSync", "device_id:[device], calls.size:[1], num_calls:[9]"),
         "HeadsetPlugin: headset_plugin::headset_ccm::populateCallState: device_id:[device], calls.size:[1], num_calls:[9]\n",
         arbitration_line("INIT", "there's a talking call, send INUSE"), sent_state,
         arbitration_line("INIT", "send muted=true")}));
    EXPECT_EQ(driver_->take_shown(), (Lines{"state 2", "muted"}));
}

TEST_F(CallControl, a_sync_replaces_all_calls) {
    control_->connectCall("", "gone");
    begin();
    control_->callStateSync("", one_call(CALL_STATE_HOLD, false), 1);
    EXPECT_EQ(driver_->take_shown(), Lines{"state 4"});
    control_->callStateSync("", {}, 0);
    EXPECT_EQ(driver_->take_shown(), (Lines{"state 0", "unmuted"}));
}

class CallControlBeforeAnyHeadset : public PluginHost {};

TEST_F(CallControlBeforeAnyHeadset, a_sync_records_the_calls_and_sends_nothing) {
    const auto driver = install_recording_driver();
    start();
    control_->callStateSync("", one_call(CALL_STATE_ALERTING, false), 1);
    EXPECT_EQ(logger_->lines_with("arbitrateHeadset"), Lines());
    EXPECT_EQ(logger_->count(sent_state), 0U);

    // Chosen, but not ready yet: still no arbitration.
    const int headset = plug();
    EXPECT_TRUE(choose(headset));
    driver->take_shown();
    control_->callStateSync("", one_call(CALL_STATE_ALERTING, false), 1);
    EXPECT_EQ(driver->take_shown(), Lines());

    let_ready();
    EXPECT_EQ(driver->take_shown(), Lines{"state 1"});
    control_->callStateSync("", one_call(CALL_STATE_CONNECTED, false), 1);
    EXPECT_EQ(driver->take_shown(), (Lines{"state 2", "unmuted"}));
}

TEST_F(CallControlBeforeAnyHeadset, events_without_an_active_headset_are_recorded_for_later) {
    const auto driver = install_recording_driver();
    start();
    control_->connectCall("", "1");
    control_->mute("", "1");
    EXPECT_EQ(
        logger_->count(line("plugin_control::device_mgr::set_headset_mute_state", "no active orvex headset")),
        1U);
    EXPECT_EQ(driver->take_shown(), Lines());
    const int headset = plug();
    driver->take_shown();
    activate(headset);
    EXPECT_EQ(driver->take_shown(), (Lines{"state 2", "muted"}));
}

TEST_F(CallControlBeforeAnyHeadset, events_without_a_device_manager_are_logged_as_not_ready) {
    start();
    stop_device_mgr();
    logger_->clear();
    control_->connectCall("", "1");
    control_->mute("", "1");
    EXPECT_FALSE(control_->setAudioDevice("x", "", ""));
    EXPECT_TRUE(in_order(logger_->lines(), {line("update_headset_state", "device_mgr not ready"),
                                            line("hid_headset_set_mute", "device_mgr not ready"),
                                            line("set_audio_device", "device_mgr not ready")}));
}

// ---- the listener

TEST_F(CallControl, a_new_listener_is_told_at_once_with_an_empty_text) {
    control_->setCallControlListener(listener_);
    EXPECT_EQ(listener_->calls(), Lines{"onListenerAttached()"});
    EXPECT_EQ(control_->getCallControlListener(), listener_);
    EXPECT_EQ(logger_->lines(), Lines()) << "registering is not logged";
}

TEST_F(CallControl, a_listener_takes_the_place_of_the_one_before) {
    const auto second = std::make_shared<RecordingListener>();
    control_->setCallControlListener(second);
    EXPECT_EQ(control_->getCallControlListener(), second);
    EXPECT_EQ(listener_->calls(), Lines());
    unplug(headset_);
    EXPECT_EQ(second->calls().size(), 2U) << "attached, and the removed headset";
    EXPECT_EQ(listener_->calls(), Lines());
}

TEST_F(CallControl, a_listener_that_the_host_drops_is_gone) {
    const std::weak_ptr<RecordingListener> watched = listener_;
    listener_ = std::make_shared<RecordingListener>();
    EXPECT_TRUE(watched.expired()) << "the plug-in owns the host's listener";
    EXPECT_EQ(control_->getCallControlListener(), nullptr);
}

TEST_F(CallControl, an_empty_listener_unregisters) {
    control_->setCallControlListener(nullptr);
    EXPECT_EQ(control_->getCallControlListener(), nullptr);
    EXPECT_EQ(listener_->calls(), Lines());
}

// ---- the stop flag

struct Operation {
    const char* name;
    std::function<void(IPluginCallControlCallback&)> call;
};

/// The operations that a stopped plug-in refuses.
const std::vector<Operation> refused_operations = {
    {"setAudioDevice",
     [](auto& control) { EXPECT_FALSE(control.setAudioDevice("usb-50C2ED83A1F4", "", "")); }},
    {"mute", [](auto& control) { control.mute("", "1"); }},
    {"unmute", [](auto& control) { control.unmute("", "1"); }},
    {"createCall", [](auto& control) { control.createCall("", "1", 0); }},
    {"incomingCall", [](auto& control) { control.incomingCall("", "1", true); }},
    {"ringbackCall", [](auto& control) { control.ringbackCall("", "1"); }},
    {"connectCall", [](auto& control) { control.connectCall("", "1"); }},
    {"holdCall", [](auto& control) { control.holdCall("", "1"); }},
    {"resumeCall", [](auto& control) { control.resumeCall("", "1"); }},
    {"endCall", [](auto& control) { control.endCall("", "1"); }},
    {"callStateSync",
     [](auto& control) { control.callStateSync("", one_call(CALL_STATE_CONNECTED, false), 1); }},
};

TEST_F(CallControl, every_refused_operation_works_while_the_plugin_runs) {
    for (const Operation& operation : refused_operations) {
        begin();
        if (std::string(operation.name) == "setAudioDevice") {
            control_->setAudioDevice("none", "", "");
        } else {
            operation.call(*control_);
        }
        EXPECT_NE(logger_->lines_with(std::string("PluginManager::") + operation.name), Lines())
            << operation.name;
    }
}

TEST_F(CallControl, a_stopped_plugin_refuses_events_without_a_line_while_it_still_has_its_logger) {
    for (const Operation& operation : refused_operations) {
        bool ran = false;
        Lines manager_lines_inside;
        logger_->on_line([&](const std::string& logged) {
            if (logged == line("stop_device_mgr", "completed")) {
                logger_->clear();
                operation.call(*control_);
                manager_lines_inside = manager_lines();
                ran = true;
            }
        });
        stopPluginControl();
        logger_->on_line({});
        EXPECT_TRUE(ran) << operation.name;
        EXPECT_EQ(manager_lines_inside, Lines()) << operation.name;
        start();
    }
}

TEST_F(CallControl, events_for_a_stopped_plugin_leave_no_trace_in_its_call_list) {
    const auto old_control = control_;
    stopPluginControl();
    for (const Operation& operation : refused_operations) {
        operation.call(*old_control);
    }
    start();
    logger_->clear();
    old_control->mute("", "1");
    EXPECT_EQ(
        logger_->count(
            "HeadsetPlugin: headset_plugin::headset_ccm::onMuteStateUpdate: phantom mute from client \n"),
        1U);
}

TEST_F(CallControl, listener_operations_work_on_a_stopped_plugin) {
    stopPluginControl();
    const auto second = std::make_shared<RecordingListener>();
    control_->setCallControlListener(second);
    EXPECT_EQ(control_->getCallControlListener(), second);
    EXPECT_EQ(second->calls(), Lines{"onListenerAttached()"});
}

TEST_F(CallControl, reserved_operations_answer_the_same_before_and_after_stop) {
    for (const bool stopped : {false, true}) {
        if (stopped) {
            stopPluginControl();
        }
        EXPECT_FALSE(control_->reservedCallControl2("a", "b"));
        EXPECT_FALSE(control_->reservedCallControl3("a", "b"));
        control_->reservedCallControl13("a", "b");
        EXPECT_EQ(logger_->lines_with("reserved"), Lines());
        EXPECT_EQ(driver_->take_shown(), stopped ? Lines{"state 0"} : Lines()) << "idle, by the stop";
    }
}

// ---- threads

TEST_F(CallControl, several_host_threads_may_call_at_once) {
    std::vector<std::thread> hosts;
    for (int i = 0; i < 4; ++i) {
        hosts.emplace_back([this, cid = std::to_string(i)] {
            for (int round = 0; round < 20; ++round) {
                control_->incomingCall("", cid, true);
                control_->connectCall("", cid);
                control_->mute("", cid);
                control_->holdCall("", cid);
                control_->endCall("", cid);
            }
        });
    }
    for (std::thread& host : hosts) {
        host.join();
    }
    driver_->take_shown();
    control_->endCall("", "unknown");
    EXPECT_EQ(driver_->take_shown(), (Lines{"state 0", "unmuted"})) << "a call is left";
}

}  // namespace
