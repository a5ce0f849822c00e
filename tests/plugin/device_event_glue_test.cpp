// Headsets that become ready or go away, on their way to the host and to the calls.

#include <csignal>
#include <stdexcept>

#include "base/headset_types.h"
#include "device/device_events.h"
#include "devicemgr/device_mgr_events.h"
#include "plugin/plugin_manager.h"
#include "tests/plugin/plugin_host.h"
#include "tests/plugin/recording_driver.h"

namespace {

using namespace plugin_control;
using namespace test_support;

class DeviceEvents : public PluginHost {
  protected:
    void SetUp() override {
        PluginHost::SetUp();
        driver_ = install_recording_driver();
        start();
    }

    /// Has a headset become ready, without a headset.
    static void report_ready() { on_headset_ready("host id", 1, 0xABCD, "vendor", "name", "serial"); }
    static void report_removed() {
        headset_plugin::onDeviceRemoved("host id", 1, 0xABCD, "vendor", "name", "serial");
    }

    std::shared_ptr<RecordingDriver> driver_;
};

const std::string ready = "plugin_control::on_headset_ready";
const std::string removed_function = "headset_plugin::onDeviceRemoved";
const std::string init_line = manager_line("initHeadset", "init headset after plugged in");

TEST_F(DeviceEvents, a_ready_headset_is_told_to_the_listener_before_it_is_brought_into_step) {
    control_->setCallControlListener(listener_);
    listener_->clear();
    logger_->clear();
    Lines lines_inside;
    listener_->on_call([&](const std::string&) { lines_inside = logger_->lines_with("on_headset_ready"); });
    report_ready();
    EXPECT_EQ(listener_->calls(), Lines{"onActiveDeviceNotify(host id, 0001, abcd, vendor, name, serial)"});
    EXPECT_EQ(lines_inside, (Lines{bare_line(ready), line(ready, "onActiveDeviceNotify")}));
    EXPECT_TRUE(in_order(
        logger_->lines(),
        {bare_line(ready), line(ready, "onActiveDeviceNotify"), line(ready, "initHeadset"), init_line,
         "HeadsetPlugin: headset_plugin::headset_ccm::arbitrateHeadsetINIT: no alerting or inuse or hold, send IDLE\n"}));
}

TEST_F(DeviceEvents, a_ready_headset_without_a_listener_is_brought_into_step_all_the_same) {
    logger_->clear();
    report_ready();
    EXPECT_EQ(logger_->lines_with("on_headset_ready"), (Lines{bare_line(ready), line(ready, "initHeadset")}));
    EXPECT_EQ(logger_->count(init_line), 1U);
}

TEST_F(DeviceEvents, without_a_manager_nothing_is_told) {
    control_->setCallControlListener(listener_);
    listener_->clear();
    stopPluginControl();
    report_ready();
    report_removed();
    headset_plugin::updateHeadsetState();
    headset_plugin::onActiveDeviceOpened();
    EXPECT_EQ(listener_->calls(), Lines());
    start();
    EXPECT_EQ(logger_->lines_with("initHeadset"), Lines());
}

struct CallsAndState {
    const char* name;
    std::vector<ICallInfo> calls;
    Lines shown;
};

const std::vector<CallsAndState> calls_and_states = {
    {"none", {}, {"state 0", "unmuted"}},
    {"ringing", {{"1", CALL_STATE_ALERTING, 0, false}}, {"state 1"}},
    {"ringing, muted", {{"1", CALL_STATE_ALERTING, 0, true}}, {"state 1"}},
    {"connected", {{"1", CALL_STATE_CONNECTED, 0, false}}, {"state 2", "unmuted"}},
    {"muted", {{"1", CALL_STATE_CONNECTED, 0, true}}, {"state 2", "muted"}},
    {"held", {{"1", CALL_STATE_HOLD, 0, true}}, {"state 4"}},
    {"consultation",
     {{"1", CALL_STATE_HOLD, 0, false}, {"2", CALL_STATE_CONNECTED, 0, true}},
     {"state 6", "muted"}},
    {"ringing beside a consultation",
     {{"1", CALL_STATE_HOLD, 0, false},
      {"2", CALL_STATE_CONNECTED, 0, true},
      {"3", CALL_STATE_ALERTING, 0, false}},
     {"state 1"}},
    {"silent", {{"1", CALL_STATE_IDLE, 0, false}}, {"state 0", "unmuted"}},
};

TEST_F(DeviceEvents, a_headset_that_becomes_ready_shows_the_calls_that_there_are) {
    const int headset = plug_active();
    for (const CallsAndState& row : calls_and_states) {
        EXPECT_FALSE(control_->setAudioDevice("none", "", ""));
        control_->callStateSync("", row.calls, 0);
        EXPECT_TRUE(choose(headset));
        driver_->take_shown();
        let_ready();
        EXPECT_EQ(driver_->take_shown(), row.shown) << row.name;
    }
}

TEST_F(DeviceEvents, a_headset_that_becomes_ready_while_a_call_rings_shows_it_even_without_a_listener) {
    const int headset = plug();
    control_->incomingCall("", "1", true);
    EXPECT_TRUE(choose(headset));
    driver_->take_shown();
    let_ready();
    EXPECT_EQ(driver_->take_shown(), Lines{"state 1"});
}

TEST_F(DeviceEvents, the_active_headset_shows_the_calls_that_there_are_when_it_is_opened_at_last) {
    plug_active();
    for (const CallsAndState& row : calls_and_states) {
        control_->callStateSync("", row.calls, 0);
        driver_->take_shown();
        listener_->clear();
        logger_->clear();
        headset_plugin::onActiveDeviceOpened();
        EXPECT_EQ(driver_->take_shown(), row.shown) << row.name;
        EXPECT_EQ(listener_->calls(), Lines()) << "no second notice";
        EXPECT_TRUE(
            in_order(logger_->lines(), {bare_line("headset_plugin::onActiveDeviceOpened"), init_line}));
    }
}

TEST_F(DeviceEvents, the_first_ready_headset_has_every_later_sync_shown_even_once_it_is_gone) {
    const std::vector<ICallInfo> ringing = {{"1", CALL_STATE_ALERTING, 0, false}};
    const std::string arbitration =
        "HeadsetPlugin: headset_plugin::headset_ccm::arbitrateHeadsetINIT: there's an alerting call, send ALERTING\n";
    control_->callStateSync("", ringing, 1);
    EXPECT_EQ(logger_->count(arbitration), 0U);
    const int headset = plug_active();
    EXPECT_EQ(logger_->count(arbitration), 1U);
    unplug(headset);
    control_->callStateSync("", ringing, 1);
    EXPECT_EQ(logger_->count(arbitration), 2U);
}

TEST_F(DeviceEvents, a_new_manager_has_to_wait_for_its_own_ready_headset) {
    plug_active();
    stopPluginControl();
    start();
    logger_->clear();
    control_->callStateSync("", {}, 0);
    EXPECT_EQ(logger_->lines_with("arbitrateHeadsetINIT"), Lines());
}

TEST_F(DeviceEvents, the_host_learns_what_is_known_of_the_headset) {
    control_->setCallControlListener(listener_);
    const int headset = plug("sennheiser-sc-660");
    activate(headset);
    unplug(headset);
    std::string description = "(";
    description.append(host_id(headset))
        .append(", 1395, 0082, Sennheiser, Sennheiser SC 660 ANC USB, ")
        .append(serial(headset))
        .append(")");
    EXPECT_EQ(listener_->calls(), (Lines{"onListenerAttached()", "onActiveDeviceNotify" + description,
                                         "onDeviceRemovedNotify" + description}));
}

TEST_F(DeviceEvents, a_headset_that_was_never_active_goes_away_without_a_host_device) {
    control_->setCallControlListener(listener_);
    const int headset = plug("anker-powerconf");
    unplug(headset);
    EXPECT_EQ(listener_->calls().back(),
              "onDeviceRemovedNotify(, 291a, 3301, Unknown, Anker PowerConf, " + serial(headset) + ")");
}

TEST_F(DeviceEvents, a_removed_headset_without_a_listener_gives_one_line_and_changes_nothing) {
    control_->connectCall("", "1");
    logger_->clear();
    report_removed();
    EXPECT_EQ(logger_->lines_with("emoved"), Lines{line(removed_function, "device: serial [serial]")});
    EXPECT_EQ(driver_->take_shown(), Lines());
    control_->mute("", "1");
    EXPECT_EQ(
        logger_->count(
            "HeadsetPlugin: headset_plugin::headset_ccm::arbitrateHeadsetMUTE: call CONNECTED, send mute\n"),
        1U)
        << "the call is lost";
}

TEST_F(DeviceEvents, a_removed_headset_is_told_to_the_listener_as_it_was_described) {
    control_->setCallControlListener(listener_);
    listener_->clear();
    std::size_t logged_before = 0;
    listener_->on_call([&](const std::string&) {
        logged_before = logger_->count(line(removed_function, "device: serial [serial]"));
    });
    report_removed();
    EXPECT_EQ(listener_->calls(), Lines{"onDeviceRemovedNotify(host id, 0001, abcd, vendor, name, serial)"});
    EXPECT_EQ(logged_before, 1U);
}

TEST_F(DeviceEvents, an_asked_for_state_is_logged_and_never_sent) {
    plug_active();
    control_->connectCall("", "1");
    driver_->take_shown();
    logger_->clear();
    headset_plugin::updateHeadsetState();
    EXPECT_TRUE(in_order(logger_->lines(), {bare_line("headset_plugin::updateHeadsetState"),
                                            manager_line("updateHeadsetLedState", "headset_state=2")}));
    EXPECT_EQ(driver_->take_shown(), Lines());
}

TEST_F(DeviceEvents, only_an_asked_for_state_looks_at_the_stop_flag) {
    control_->setCallControlListener(listener_);
    listener_->clear();
    Lines lines;
    logger_->on_line([&](const std::string& logged) {
        if (logged == line("stop_device_mgr", "completed")) {
            logger_->clear();
            headset_plugin::updateHeadsetState();
            lines = logger_->lines();
            report_ready();
            report_removed();
        }
    });
    stopPluginControl();
    logger_->on_line({});
    EXPECT_EQ(lines, Lines{bare_line("headset_plugin::updateHeadsetState")});
    EXPECT_EQ(listener_->calls().size(), 2U);
}

TEST_F(DeviceEvents,
       a_listener_that_throws_when_told_of_a_headset_does_not_keep_it_from_being_brought_into_step) {
    control_->setCallControlListener(listener_);
    listener_->on_call([](const std::string&) { throw std::runtime_error("the host failed"); });
    const int headset = plug();
    control_->connectCall("", "1");
    EXPECT_TRUE(choose(headset));
    driver_->take_shown();
    let_ready();
    EXPECT_EQ(driver_->take_shown(), (Lines{"state 2", "unmuted"}));
    EXPECT_EQ(logger_->count(line(ready, "exception caught: the host failed ")), 1U);
    unplug(headset);
    EXPECT_EQ(logger_->count(line(removed_function, "exception caught: the host failed ")), 1U);
    EXPECT_FALSE(choose(headset)) << "the headset is still listed";
}

TEST_F(DeviceEvents, a_listener_may_throw_anything) {
    control_->setCallControlListener(listener_);
    listener_->on_call([](const std::string&) { throw 42; });
    report_ready();
    report_removed();
    EXPECT_EQ(logger_->count(line(ready, "exception caught: unknown ")), 1U);
    EXPECT_EQ(logger_->count(line(removed_function, "exception caught: unknown ")), 1U);
    EXPECT_EQ(logger_->count(init_line), 1U);
}

TEST_F(DeviceEvents, a_manager_that_a_listener_replaces_brings_no_headset_into_step) {
    control_->setCallControlListener(listener_);
    const int headset = plug();
    Lines shown_inside;
    listener_->on_call([&](const std::string&) {
        stopPluginControl();
        start();
        EXPECT_TRUE(choose(headset));
        driver_->take_shown();
        control_->connectCall("", "1");
        shown_inside = driver_->take_shown();
        logger_->clear();
    });
    report_ready();
    EXPECT_EQ(shown_inside, Lines{"state 2"});
    EXPECT_EQ(logger_->lines_with("initHeadset"), Lines());
    EXPECT_EQ(driver_->take_shown(), Lines()) << "the old manager has no calls to show";
    let_ready();
    EXPECT_EQ(driver_->take_shown(), (Lines{"state 2", "unmuted"}));
}

struct Event {
    const char* listener_operation;
    void (*happen)();
};

/// What is told to a listener, on its way through the manager.
const Event events[] = {
    {"onActiveDeviceNotify", [] { on_headset_ready("host id", 1, 2, "vendor", "name", "serial"); }},
    {"onDeviceRemovedNotify",
     [] { headset_plugin::onDeviceRemoved("host id", 1, 2, "vendor", "name", "serial"); }},
    {"onEndCall", [] { onHeadsetKeyEvent(headset_plugin::HEADSET_KEY_END_CALL, "serial"); }},
};

TEST_F(DeviceEvents, an_event_keeps_its_manager_until_the_listener_that_stops_the_plugin_returns) {
    for (const Event& event : events) {
        start_with_listeners();
        control_->connectCall("", "1");
        control_.reset();
        config_.reset();
        const std::weak_ptr<PluginManager> watched = plugin_manager();
        bool alive_inside = false;
        listener_->on_call([&](const std::string& call) {
            if (call.starts_with(event.listener_operation)) {
                stopPluginControl();
                EXPECT_TRUE(wait_for_plugin_threads_to_end())
                    << "one may still have a share for its last line";
                alive_inside = !watched.expired();
            }
        });
        event.happen();
        EXPECT_TRUE(alive_inside) << event.listener_operation;
        EXPECT_TRUE(watched.expired()) << event.listener_operation;
    }
}

TEST_F(DeviceEvents, a_headset_that_is_stopped_before_it_is_ready_is_never_reported) {
    control_->setCallControlListener(listener_);
    const int headset = plug();
    EXPECT_TRUE(choose(headset));
    EXPECT_TRUE(virtual_clock().wait_for_sleepers(1, patience));
    stopPluginControl();
    virtual_clock().advance(headset_plugin::inventory_delay);
    EXPECT_EQ(listener_->calls(), Lines{"onListenerAttached()"});
}

class DeviceEventsDeathTest : public DeviceEvents {
  protected:
    void SetUp() override {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        DeviceEvents::SetUp();
    }

    /// The logger throws at the first line of a headset that became ready.
    void throw_on_the_worker() {
        const int headset = plug();
        logger_->on_line([](const std::string& logged) {
            if (logged == bare_line(ready)) {
                throw std::runtime_error("the log is full");
            }
        });
        activate(headset);
    }
};

TEST_F(DeviceEventsDeathTest, a_logger_that_throws_on_the_worker_ends_the_process) {
    EXPECT_EXIT(throw_on_the_worker(), ::testing::KilledBySignal(SIGABRT), "the log is full");
}

}  // namespace
