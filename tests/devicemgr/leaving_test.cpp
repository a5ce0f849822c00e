// A headset that has gone stays listed until the host has been told. Nobody may choose or open it meanwhile.
#include <atomic>

#include "device/device_events.h"
#include "tests/devicemgr/manager_fixture.h"

using namespace manager_test;
using test_support::eventually;
using test_support::glue_calls;
using test_support::wait_for_glue_call;

namespace {

const std::string read_loop =
    "3rdPartyHeadsetPlugin: headset_plugin::device::read_thread: Enter while(true) loop \n";

class Leaving : public RunningManagerTest {
  protected:
    void SetUp() override {
        RunningManagerTest::SetUp();
        start();
        number_ = plug_and_wait(headset("SN-1"));
        ASSERT_TRUE(logger_->wait_for(read_loop));
    }
    /// Pulls the headset out and waits until the host is being told, which takes until `told_` is opened.
    void pull_out() {
        test_support::on_glue_call([this](const std::string& call) {
            if (call.starts_with("onDeviceRemoved")) {
                told_.pass();
            }
        });
        unplug_and_wait(number_);
        ASSERT_TRUE(told_.wait_for_arrival());
        clear_log();
    }
    /// Plugs the headset in again and waits for the passes of its two interfaces.
    void replug() {
        ASSERT_EQ(bus().replug(number_), "");
        wait_for_arrivals(2);
    }
    /// Lets the host go on, and waits until the headset has left the list.
    void finish_removal() {
        told_.open();
        ASSERT_TRUE(logger_->wait_for(left_line(0)));
    }
    static bool request() { return set_audio_device("host-SN-1", "", ""); }
    /// What the passes since the headset was pulled out have opened, and started to read.
    void expect_opened_once() {
        EXPECT_EQ(logger_->lines_with("create device").size(), 1U);
        EXPECT_EQ(logger_->lines_with("set_device_handles: enter").size(), 1U);
        EXPECT_TRUE(logger_->wait_for(read_loop));
        EXPECT_EQ(logger_->count(read_loop), 1U);
        EXPECT_EQ(logger_->lines_with("now connected headset count: 2"), Lines{});
    }

    int number_ = 0;
    Gate told_;
};

TEST_F(Leaving, a_request_does_not_choose_it_and_a_later_one_does) {
    ASSERT_TRUE(request());
    ASSERT_TRUE(wait_for_glue_call(ready_call));
    pull_out();
    EXPECT_FALSE(request());
    EXPECT_EQ(get_active_device_id(), nullptr);
    EXPECT_EQ(logger_->lines_with("search at setAudioDevice").size(), 1U);
    finish_removal();
    test_support::clear_glue_calls();
    ASSERT_EQ(bus().replug(number_), "");
    wait_for_arrivals(2);
    EXPECT_TRUE(request());
    EXPECT_TRUE(wait_for_glue_call(ready_call));
    hid_headset_set_mute(1);
    EXPECT_EQ(bus().indicator(number_, mute_indicator), true);
}

TEST_F(Leaving, a_request_out_of_the_notice_itself_does_not_choose_it) {
    std::atomic<int> answer = -1;
    test_support::on_glue_call([&](const std::string&) { answer = request() ? 1 : 0; });
    unplug_and_wait(number_);
    ASSERT_TRUE(logger_->wait_for(left_line(0)));
    EXPECT_EQ(answer, 0);
}

TEST_F(Leaving, the_retry_thread_does_not_choose_it_and_finds_it_when_it_is_back) {
    platform().virtual_clock().stop();
    pull_out();
    EXPECT_FALSE(request());  // the first one ever, which the retry thread takes over
    const std::string not_yet =
        manager_line("setFirstAudioDevice",
                     "not yet matched: active_device_id_cache_:[host-SN-1], active_device_name_:[], "
                     "active_device_serial_:[].");
    ASSERT_TRUE(platform().virtual_clock().wait_for_sleepers(1, test_support::patience));
    platform().virtual_clock().advance(plugin_control::match_interval);
    ASSERT_TRUE(logger_->wait_for(not_yet));
    replug();
    finish_removal();
    wait_for_arrivals(3);
    ASSERT_TRUE(platform().virtual_clock().wait_for_sleepers(1, test_support::patience));
    platform().virtual_clock().advance(plugin_control::match_interval);
    ASSERT_TRUE(logger_->wait_for(
        manager_line("setFirstAudioDevice", "just matched, go post headsetReady and inventory.")));
    platform().virtual_clock().go();
    EXPECT_TRUE(wait_for_glue_call(ready_call));
    EXPECT_STREQ(get_active_device_id(), "host-SN-1");
}

TEST_F(Leaving, a_headset_that_is_back_is_opened_once_after_its_removal) {
    ASSERT_TRUE(request());
    ASSERT_TRUE(wait_for_glue_call(ready_call));
    test_support::clear_glue_calls();
    pull_out();
    replug();
    EXPECT_EQ(logger_->lines_with("set_device_handles"), Lines{});
    EXPECT_EQ(logger_->count(already_open_line()), 4U);  // of two passes, for two interfaces each
    EXPECT_FALSE(request());
    finish_removal();
    wait_for_arrivals(3);  // one pass more than interfaces that arrived
    expect_opened_once();
    EXPECT_EQ(logger_->lines_with("New HID device is plugged in").size(), 3U);
    EXPECT_TRUE(request());
    EXPECT_TRUE(wait_for_glue_call(ready_call));
}

TEST_F(Leaving, a_headset_that_is_back_after_its_removal_gets_no_additional_pass) {
    pull_out();
    finish_removal();
    replug();
    expect_opened_once();
    EXPECT_EQ(logger_->lines_with("New HID device is plugged in").size(), 2U);
}

TEST_F(Leaving, a_headset_that_is_back_before_its_read_thread_has_noticed_is_opened_once) {
    ASSERT_TRUE(request());
    Gate reading;
    hold_up_at(read_thread_exit, reading);
    ASSERT_EQ(bus().unplug(number_), "");
    ASSERT_TRUE(held_up(reading));
    clear_log();
    replug();
    EXPECT_FALSE(request());
    EXPECT_EQ(logger_->lines_with("set_device_handles"), Lines{});
    reading.open();
    ASSERT_TRUE(logger_->wait_for(left_line(0)));
    wait_for_arrivals(3);
    expect_opened_once();
    EXPECT_TRUE(request());
}

TEST_F(Leaving, a_headset_whose_read_thread_has_ended_is_not_chosen_though_it_is_plugged_in) {
    Gate reading;
    hold_up_at(read_thread_exit, reading);
    ASSERT_EQ(bus().misbehave(number_, Fault::read_fails), "");
    ASSERT_TRUE(held_up(reading));
    EXPECT_FALSE(request());
    reading.open();
    EXPECT_TRUE(logger_->wait_for(left_line(0)));
}

TEST_F(Leaving, a_headset_that_is_pulled_out_is_not_chosen_while_a_listener_keeps_its_read_thread) {
    static Gate* pressed = nullptr;
    Gate gate;
    pressed = &gate;
    device::register_key_callback([](std::uint16_t, const std::string&) { pressed->pass(); });
    ASSERT_TRUE(request());
    ASSERT_EQ(bus().press(number_, {telephony, 0x2F}), "");
    ASSERT_TRUE(gate.wait_for_arrival());
    unplug_and_wait(number_);
    EXPECT_FALSE(request());
    gate.open();
    EXPECT_TRUE(logger_->wait_for(left_line(0)));
    device::register_key_callback(nullptr);
}

TEST_F(Leaving, a_stop_while_the_host_is_told_leaves_the_headset_to_the_next_start) {
    ASSERT_TRUE(request());
    pull_out();
    replug();
    stop_device_mgr();
    EXPECT_FALSE(request());
    start();
    finish_removal();
    EXPECT_TRUE(eventually([] { return request(); }));
    expect_opened_once();
}

TEST_F(Leaving, a_headset_that_is_open_when_its_removal_comes_is_let_go_and_found_again) {
    clear_log();
    remove_headset_with_serial("SN-1");  // as a former object under this serial may ask for it
    ASSERT_TRUE(logger_->wait_for(shutting_down));
    wait_for_arrivals(1);
    expect_opened_once();
    EXPECT_TRUE(request());
}

}  // namespace
