// Start and stop at awkward moments.
#include <thread>

#include "device/device_events.h"
#include "tests/devicemgr/manager_fixture.h"

using namespace manager_test;
using test_support::on_glue_call;

namespace {

const std::string ended = api_line("stop_device_mgr", "try to end message thread ");

class DeviceManagerLifetime : public RunningManagerTest {
  protected:
    static void stop_in_hook() {
        plugin_control::set_device_availability_hook([](int, int) {
            stop_device_mgr();
            return true;
        });
    }
};

TEST_F(DeviceManagerLifetime, three_hundred_starts_and_stops_in_a_row_get_their_window_each) {
    plug(headset("SN-1"));
    for (int round = 0; round < 300; ++round) {
        start_device_mgr(0);
        stop_device_mgr();
        ASSERT_TRUE(wait_for_message_threads());
        ASSERT_EQ(logger_->count(loaded_line()), 1U) << round;
        ASSERT_EQ(logger_->lines_with("failed with error code"), Lines{});
        clear_log();
    }
}

TEST_F(DeviceManagerLifetime, a_stop_frees_the_window_class_before_it_returns) {
    for (int round = 0; round < 50; ++round) {
        start_device_mgr(0);
        stop_device_mgr();
    }
    ASSERT_TRUE(wait_for_message_threads());
    EXPECT_EQ(logger_->count(loaded_line()), 50U);
    EXPECT_EQ(logger_->lines_with("failed with error code"), Lines{});
}

TEST_F(DeviceManagerLifetime, every_start_lists_the_headset_that_is_plugged) {
    plug(headset("SN-1"));
    for (int round = 0; round < 300; ++round) {
        start();
        ASSERT_TRUE(set_audio_device("host-SN-1", "", "")) << round;
        stop_device_mgr();
        ASSERT_TRUE(wait_for_message_threads());
        clear_log();
    }
}

TEST_F(DeviceManagerLifetime,
       a_stop_inside_the_hook_of_the_first_pass_ends_the_window_that_is_being_created) {
    plug(headset("SN-1"));
    stop_in_hook();
    start_device_mgr(0);
    ASSERT_TRUE(logger_->wait_for("HeadsetPlugin: Create message window failed with error code 1400 \n"));
    EXPECT_EQ(logger_->count(ended), 1U);
    EXPECT_EQ(plugin_control::message_window(), nullptr);
    plugin_control::set_device_availability_hook({});
    start();
    EXPECT_TRUE(set_audio_device("host-SN-1", "", ""));
}

TEST_F(DeviceManagerLifetime, a_stop_inside_the_hook_of_a_later_pass_ends_the_message_thread) {
    start();
    stop_in_hook();
    plug(headset("SN-1"));
    ASSERT_TRUE(logger_->wait_for(window_line("MessageThread", "Message Thread is closed ")));
    EXPECT_EQ(logger_->count(ended), 1U);
    EXPECT_FALSE(set_audio_device("host-SN-1", "", ""));
}

TEST_F(DeviceManagerLifetime, a_stop_inside_the_hook_while_the_retry_thread_runs_ends_both) {
    start();
    EXPECT_FALSE(set_audio_device("nothing", "", ""));
    stop_in_hook();
    plug(headset("SN-1"));
    EXPECT_TRUE(logger_->wait_for(manager_line("setFirstAudioDevice", "already matched, return.")));
    EXPECT_TRUE(wait_for_message_threads());
}

TEST_F(DeviceManagerLifetime, a_stop_while_a_removal_is_told_does_not_wait_for_itself) {
    start();
    const int number = plug_and_wait(headset("SN-1"));
    on_glue_call([](const std::string&) { stop_device_mgr(); });
    ASSERT_EQ(bus().unplug(number), "");
    ASSERT_TRUE(logger_->wait_for(manager_line("remove_device", "now connected orvex headset count: 0. ")));
    EXPECT_TRUE(wait_for_message_threads());
    EXPECT_EQ(logger_->count(ended), 1U);
    EXPECT_EQ(test_support::glue_calls().size(), 1U);
}

TEST_F(DeviceManagerLifetime, a_stop_while_a_headset_is_reported_ready_does_not_wait_for_itself) {
    plug(headset("SN-1"));
    start();
    on_glue_call([](const std::string&) { stop_device_mgr(); });
    ASSERT_TRUE(set_audio_device("host-SN-1", "", ""));
    ASSERT_TRUE(logger_->wait_for(ended));
    EXPECT_TRUE(wait_for_message_threads());
}

TEST_F(DeviceManagerLifetime, a_stop_on_the_worker_while_a_pass_is_about_to_begin_ends) {
    start();
    clear_log();
    Gate passing;
    hold_up_at(manager_line("enumerate_hid_device", "lock device_mgr_mutex_ first "), passing);
    plug(headset("SN-1", "Test Headset", {telephony}));
    ASSERT_TRUE(held_up(passing));
    // The pass holds the manager; the stop on the worker waits for the message thread to leave it.
    post_device_mgr_task({"stop", stop_device_mgr});
    ASSERT_TRUE(logger_->wait_for(api_line("stop_device_mgr", "completed")));
    passing.open();
    ASSERT_TRUE(logger_->wait_for(ended));
    EXPECT_TRUE(wait_for_message_threads());
}

TEST_F(DeviceManagerLifetime, a_stop_inside_a_key_ends_the_read_thread_that_it_runs_on) {
    device::register_key_callback([](std::uint16_t, const std::string&) { stop_device_mgr(); });
    const int number = plug(headset("SN-1"));
    start();
    ASSERT_TRUE(set_audio_device("host-SN-1", "", ""));
    const auto& mute_key = platform::virtual_platform::FullUsage{telephony, 0x2F};
    ASSERT_EQ(bus().press(number, mute_key), "");
    ASSERT_TRUE(logger_->wait_for(ended));
    EXPECT_TRUE(logger_->wait_for(shutting_down));
    EXPECT_TRUE(wait_for_message_threads());
    device::register_key_callback(nullptr);
}

TEST_F(DeviceManagerLifetime, several_threads_may_stop_at_once) {
    plug(headset("SN-1"));
    for (int round = 0; round < 20; ++round) {
        start();
        std::thread other(stop_device_mgr);
        stop_device_mgr();
        other.join();
        ASSERT_TRUE(wait_for_message_threads());
        ASSERT_EQ(logger_->count(ended), 2U);
        clear_log();
    }
}

TEST_F(DeviceManagerLifetime, a_second_stop_that_comes_late_leaves_a_later_start_its_window) {
    start();
    Gate gate;
    hold_up_at(api_line("stop_device_mgr", "completed"), gate);
    std::thread late(stop_device_mgr);
    EXPECT_TRUE(held_up(gate));
    stop_device_mgr();
    start();
    gate.open();
    late.join();
    plug_and_wait(headset("SN-1"));
    EXPECT_TRUE(set_audio_device("host-SN-1", "", ""));
    stop_device_mgr();
    start();
    EXPECT_TRUE(set_audio_device("host-SN-1", "", ""));
}

TEST_F(DeviceManagerLifetime, requests_keys_and_unplugs_may_meet_a_stop) {
    const int number = plug(headset("SN-1"));
    start();
    ASSERT_TRUE(set_audio_device("host-SN-1", "", ""));
    std::thread requests([] {
        for (int i = 0; i < 20; ++i) {
            set_audio_device("host-SN-1", "", "");
            update_headset_state(static_cast<std::uint32_t>(i % 3));
            hid_headset_set_mute(i % 2);
            get_active_device_id();
        }
    });
    std::thread plugging([&] {
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(bus().unplug(number), "");
            EXPECT_EQ(bus().replug(number), "");
        }
    });
    stop_device_mgr();
    requests.join();
    plugging.join();
    EXPECT_TRUE(wait_for_message_threads());
}

}  // namespace
