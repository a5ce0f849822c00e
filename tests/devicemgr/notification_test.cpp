// The message thread: its window, and what arrivals and removals cause.
#include <stdexcept>

#include "device/device_events.h"
#include "tests/devicemgr/manager_fixture.h"

using namespace manager_test;
using plugin_control::message_window;
using test_support::in_order;

namespace {

const std::string running = window_line("MessageThread", "Message Thread is running ");
const std::string closed = window_line("MessageThread", "Message Thread is closed ");
const std::string plugged_in =
    window_line("WndMessageHandler", "New HID device is plugged in, enumerate for headset ");
const std::string plugged_out = window_line("WndMessageHandler", "HID device is plugged out ");
const std::string unsupported = window_line("WndMessageHandler", "unsupported dbch_devicetype ");
const std::string pass_entered = api_line("EnumerationOrvexHidDevice", "enter");

class Notifications : public RunningManagerTest {
  protected:
    /// Has the message thread handle a device change, and waits until it has.
    static void change(platform::WParam event, std::uint32_t device_type) {
        platform::DeviceInterfaceBroadcast broadcast{};
        broadcast.header = {sizeof(broadcast), device_type, 0};
        EXPECT_EQ(platform().windows().SendMessageW(message_window(), platform::WM_DEVICECHANGE, event,
                                                    reinterpret_cast<platform::LParam>(&broadcast)),
                  0);
    }
    std::size_t passes() const { return logger_->lines_with("complete hid_enumerate()").size(); }
};

TEST_F(Notifications, the_first_pass_runs_while_the_window_is_created) {
    plug(headset("SN-1"));
    start();
    EXPECT_TRUE(in_order(logger_->lines(), Lines{loaded_line(), pass_entered} + pass_start_lines() +
                                               creation_lines("SN-1", "Test Headset", 1) + Lines{running}));
    EXPECT_EQ(passes(), 1U);
    EXPECT_NE(message_window(), nullptr);
}

TEST_F(Notifications, an_arrival_runs_a_pass_for_each_interface) {
    start();
    clear_log();
    plug_and_wait(headset("SN-1"));
    EXPECT_EQ(logger_->count(plugged_in), 2U);
    EXPECT_EQ(passes(), 2U);
    EXPECT_TRUE(in_order(logger_->lines(), Lines{plugged_in, pass_entered} + pass_start_lines() +
                                               creation_lines("SN-1", "Test Headset", 1) + Lines{plugged_in} +
                                               pass_start_lines()));
    EXPECT_TRUE(set_audio_device("host-SN-1", "", ""));
}

TEST_F(Notifications, a_mouse_runs_a_whole_pass_that_tells_of_admission_only) {
    start();
    clear_log();
    plug_and_wait(headset("SN-1", "Mouse", {generic_desktop}));
    EXPECT_EQ(
        logger_->lines(),
        (Lines{plugged_in, pass_entered}) + pass_start_lines() +
            manager_lines("enumerate_hid_device",
                          {"ignore non-accessary device vendor_id: 0x0b0e, product_id: "
                           "0x24c9, page: 0x01. "}) +
            Lines{"3rdPartyHeadsetPlugin: plugin_control::device_mgr::enumerate_hid_device, not found any "
                  "headsets \n"});
}

TEST_F(Notifications, a_removal_runs_a_pass_and_the_headset_leaves_by_its_own_close) {
    start();
    const int number = plug_and_wait(headset("SN-1"));
    clear_log();
    unplug_and_wait(number);
    ASSERT_TRUE(test_support::wait_for_glue_call("onDeviceRemoved(, 2830, 9417, Jabra, Test Headset, SN-1)"));
    ASSERT_TRUE(logger_->wait_for(manager_line("remove_device", "now connected orvex headset count: 0. ")));
    EXPECT_EQ(logger_->count(plugged_out), 2U);
    EXPECT_EQ(passes(), 2U);
    EXPECT_TRUE(in_order(
        logger_->lines(),
        {api_line("remove_headset_with_serial", "enter"), manager_line("remove_device_with_serial", "enter"),
         manager_line("remove_device_with_serial::<lambda_1>::operator ()", "remove orvex device"),
         manager_line("device_removed", "for device: sn [SN-1}: "), manager_line("remove_device", "enter")}));
}

TEST_F(Notifications, a_pass_after_an_unplug_leaves_the_list_to_the_close_of_the_headset) {
    Gate gate;
    hold_up_at(read_thread_exit, gate);
    start();
    const int number = plug_and_wait(headset("SN-1"));
    ASSERT_TRUE(set_audio_device("host-SN-1", "", ""));
    unplug_and_wait(number);
    ASSERT_TRUE(held_up(gate));
    EXPECT_EQ(logger_->lines_with("remove_device"), Lines{});
    EXPECT_STREQ(get_active_device_id(), "host-SN-1");
    gate.open();
    EXPECT_TRUE(logger_->wait_for(manager_line("remove_device", "device to be removed is active")));
}

TEST_F(Notifications, another_event_is_unsupported_and_runs_no_pass) {
    start();
    clear_log();
    for (const platform::WParam event : {0x8001U, 0x8003U, 0x0007U, 0x0000U}) {
        change(event, platform::DBT_DEVTYP_DEVICEINTERFACE);
    }
    EXPECT_EQ(logger_->lines(), Lines(4, unsupported));
}

TEST_F(Notifications, arrival_and_removal_run_a_pass_each) {
    start();
    clear_log();
    change(platform::DBT_DEVICEARRIVAL, platform::DBT_DEVTYP_DEVICEINTERFACE);
    change(platform::DBT_DEVICEREMOVECOMPLETE, platform::DBT_DEVTYP_DEVICEINTERFACE);
    EXPECT_EQ(passes(), 2U);
    EXPECT_TRUE(in_order(logger_->lines(), {plugged_in, pass_entered, plugged_out, pass_entered}));
}

TEST_F(Notifications, devices_of_another_type_are_ignored) {
    start();
    clear_log();
    for (const std::uint32_t device_type : {0U, 2U, 3U, 6U}) {
        for (const platform::WParam event : {0x8000U, 0x8004U, 0x8001U}) {
            change(event, device_type);
        }
    }
    EXPECT_EQ(logger_->lines(), Lines{});
}

TEST_F(Notifications, other_messages_get_the_default_handling) {
    start();
    clear_log();
    constexpr std::uint32_t any_message = 0x0400;  // WM_USER, winuser.h (Windows SDK)
    EXPECT_EQ(platform().windows().SendMessageW(message_window(), any_message, 1, 1), 0);
    EXPECT_EQ(logger_->lines(), Lines{});
    EXPECT_EQ(WndMessageHandler(nullptr, platform::WM_CLOSE, 0, 0), 0);
}

TEST_F(Notifications, without_a_manager_a_pass_is_not_ready) {
    EnumerationOrvexHidDevice();
    EXPECT_EQ(logger_->lines(),
              (Lines{pass_entered, api_line("EnumerationOrvexHidDevice", "device_mgr not ready")}));
}

TEST_F(Notifications, a_stop_ends_the_notifications_and_the_thread) {
    start();
    stop_device_mgr();
    ASSERT_TRUE(logger_->wait_for(closed));
    EXPECT_EQ(message_window(), nullptr);
    clear_log();
    plug(headset("SN-1"));
    EXPECT_EQ(logger_->lines(), Lines{});
}

TEST_F(Notifications, a_class_that_is_taken_leaves_the_plug_in_without_a_window_and_a_pass) {
    ASSERT_TRUE(platform().windows().RegisterClassExW(
        {80, WndMessageHandler, nullptr, plugin_control::message_window_class}));
    plug(headset("SN-1"));
    start_device_mgr(0);
    ASSERT_TRUE(logger_->wait_for("HeadsetPlugin: RegisterClassEx failed with error code 1410 \n"));
    EXPECT_EQ(message_window(), nullptr);
    plug(headset("SN-2"));
    EXPECT_EQ(passes(), 0U);
    EXPECT_EQ(logger_->lines_with("MessageThread"), Lines{});
    stop_device_mgr();  // which frees the class
    start();
    EXPECT_EQ(passes(), 1U);
}

TEST_F(Notifications, the_message_thread_is_its_procedure) {
    start();
    EXPECT_EQ(MessageThread(nullptr), 0U);  // the class is taken
    EXPECT_EQ(logger_->count("HeadsetPlugin: RegisterClassEx failed with error code 1410 \n"), 1U);
    stop_device_mgr();
    EXPECT_TRUE(logger_->wait_for(closed));
}

TEST_F(Notifications, a_headset_that_is_plugged_during_the_first_pass_is_found_by_a_later_one) {
    Gate gate;
    hold_up_at(manager_line("enumerate_hid_device", "complete hid_enumerate() "), gate);
    start_device_mgr(0);
    ASSERT_TRUE(held_up(gate));
    plug(headset("SN-1"));
    gate.open();
    wait_for_arrivals(2);
    EXPECT_TRUE(set_audio_device("host-SN-1", "", ""));
}

TEST_F(Notifications, a_logger_that_throws_in_a_message_does_not_end_the_thread) {
    start();
    logger_->on_line([](const std::string& line) {
        if (line == plugged_in) {
            throw std::runtime_error("the host's logger failed");
        }
    });
    plug_and_wait(headset("SN-1", "Test Headset", {telephony}));
    logger_->on_line({});
    EXPECT_EQ(passes(), 1U);
    plug(headset("SN-2", "Test Headset", {telephony}));
    wait_for_arrivals(2);
    EXPECT_TRUE(set_audio_device("host-SN-2", "", ""));
}

// ---- the host's hook within a pass

TEST_F(Notifications, a_hook_that_throws_ends_the_pass_and_not_the_thread) {
    plugin_control::set_device_availability_hook(
        [](int, int) -> bool { throw std::runtime_error("the hook is broken"); });
    plug(headset("SN-1"));
    start();
    const std::string caught = window_line("WndMessageHandler", "exception caught: the hook is broken ");
    EXPECT_TRUE(in_order(logger_->lines(), {loaded_line(), pass_entered, caught, running}));
    plugin_control::set_device_availability_hook([](int, int) -> bool { throw 42; });
    change(platform::DBT_DEVICEARRIVAL, platform::DBT_DEVTYP_DEVICEINTERFACE);
    EXPECT_EQ(logger_->count(window_line("WndMessageHandler", "exception caught: unknown ")), 1U);
    plugin_control::set_device_availability_hook({});
    change(platform::DBT_DEVICEARRIVAL, platform::DBT_DEVTYP_DEVICEINTERFACE);
    EXPECT_TRUE(set_audio_device("host-SN-1", "", ""));
}

TEST_F(Notifications, a_hook_may_use_the_plug_in) {
    plugin_control::set_device_availability_hook([](int, int) {
        hid_headset_set_mute(1);
        return get_active_device_id() == nullptr && !set_audio_device("", "", "");
    });
    plug(headset("SN-1"));
    start();
    EXPECT_TRUE(set_audio_device("host-SN-1", "", ""));
}

// ---- plugged again at once

TEST_F(Notifications, a_headset_that_is_replugged_at_once_works_again_every_time) {
    platform().virtual_clock().stop();
    start();
    const int number = plug_and_wait(headset("SN-1"));
    ASSERT_TRUE(set_audio_device("host-SN-1", "", ""));  // or the retry thread would answer for the request
    for (int round = 0; round < 30; ++round) {
        ASSERT_EQ(bus().unplug(number), "");
        ASSERT_EQ(bus().replug(number), "");
        ASSERT_TRUE(test_support::eventually([&] {
            settle();  // lets the message thread on, which shares a lock with the request
            // Removals wait behind the reports of readiness, which take their time.
            platform().virtual_clock().advance(headset_plugin::inventory_delay);
            set_audio_device("host-SN-1", "", "");
            hid_headset_set_mute(1);
            return bus().indicator(number, mute_indicator) == true;
        })) << round;
    }
}

TEST_F(Notifications, a_read_that_fails_does_not_bring_the_headset_back_by_itself) {
    start();
    const int number = plug_and_wait(headset("SN-1"));
    clear_log();
    ASSERT_EQ(bus().misbehave(number, Fault::read_fails), "");
    ASSERT_TRUE(logger_->wait_for(manager_line("remove_device", "now connected orvex headset count: 0. ")));
    settle();
    EXPECT_EQ(passes(), 0U);
    change(platform::DBT_DEVICEARRIVAL, platform::DBT_DEVTYP_DEVICEINTERFACE);
    EXPECT_EQ(logger_->lines_with("create device").size(), 1U);
}

}  // namespace
