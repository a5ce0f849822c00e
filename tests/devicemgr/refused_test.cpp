// Headsets that may not be opened: they are listed by their Consumer interface and chosen like others. A
// request has them tried again, and they show the calls as soon as they are open.
#include <algorithm>
#include <atomic>
#include <thread>

#include "device/device_events.h"
#include "tests/devicemgr/manager_fixture.h"

using namespace manager_test;
using test_support::eventually;
using test_support::glue_calls;
using test_support::wait_for_glue_call;

namespace {

const std::string opened_call = "onActiveDeviceOpened()";

class Refused : public RunningManagerTest {
  protected:
    void SetUp() override {
        RunningManagerTest::SetUp();
        number_ = plug(headset("SN-1"));
        ASSERT_EQ(bus().misbehave(number_, Fault::open_refused), "");
        start();
        clear_log();
    }
    void permit() { ASSERT_EQ(bus().misbehave(number_, Fault::none), ""); }
    static bool request(const char* id = "host-SN-1") { return set_audio_device(id, "", ""); }
    /// What udev says when permissions have changed, and what any other device causes; waits for the pass.
    void change() {
        const std::size_t before = logger_->lines_with("New HID device is plugged in").size();
        platform().virtual_windows().notify_device_change(platform::DBT_DEVICEARRIVAL);
        wait_for_arrivals(before + 1);
    }
    std::size_t passes() const { return logger_->lines_with("complete hid_enumerate()").size(); }
    std::size_t openings() const { return logger_->lines_with("set_device_handles: enter").size(); }
    bool shows_mute() {
        hid_headset_set_mute(1);
        return bus().indicator(number_, mute_indicator) == true;
    }
    static std::size_t opened_calls() {
        const auto calls = glue_calls();
        return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), opened_call));
    }

    int number_ = 0;
};

// ---- a request tries it again

TEST_F(Refused, a_request_has_a_pass_open_the_headset_first) {
    permit();
    EXPECT_TRUE(request());
    EXPECT_EQ(passes(), 1U);
    EXPECT_EQ(openings(), 1U);
    EXPECT_TRUE(wait_for_glue_call(ready_call));
    EXPECT_TRUE(shows_mute());
    EXPECT_EQ(opened_calls(), 0U) << "the ready notice shows the calls";
}

TEST_F(Refused, a_request_for_a_headset_that_stays_refused_chooses_it_all_the_same) {
    EXPECT_TRUE(request());
    EXPECT_EQ(passes(), 1U);
    EXPECT_STREQ(get_active_device_id(), "host-SN-1");
    EXPECT_TRUE(wait_for_glue_call(ready_call));
    EXPECT_FALSE(shows_mute());
}

TEST_F(Refused, choosing_it_again_after_permission_was_granted_opens_and_shows_it) {
    EXPECT_TRUE(request());
    permit();
    EXPECT_TRUE(request());
    EXPECT_TRUE(shows_mute());
}

TEST_F(Refused, a_request_for_a_headset_that_is_open_runs_no_pass) {
    permit();
    EXPECT_TRUE(request());
    clear_log();
    EXPECT_TRUE(request());
    settle();
    EXPECT_EQ(passes(), 0U);
}

TEST_F(Refused, the_retry_thread_has_it_opened_as_well) {
    stop_device_mgr();
    plugin_control::set_device_availability_hook([](int, int) { return false; });
    start();
    platform().virtual_clock().stop();
    EXPECT_FALSE(request());
    plugin_control::set_device_availability_hook({});
    change();
    permit();
    clear_log();
    ASSERT_TRUE(platform().virtual_clock().wait_for_sleepers(1, test_support::patience));
    platform().virtual_clock().advance(plugin_control::match_interval);
    ASSERT_TRUE(logger_->wait_for(
        manager_line("setFirstAudioDevice", "just matched, go post headsetReady and inventory.")));
    EXPECT_EQ(openings(), 1U);
    EXPECT_TRUE(shows_mute());
}

// ---- wherever the request comes from

TEST_F(Refused, a_request_out_of_the_hook_does_not_wait_for_its_own_pass) {
    std::atomic<int> answer = -1;
    plugin_control::set_device_availability_hook([&](int, int) {
        if (answer == -1) {
            answer = request() ? 1 : 0;
            permit();
        }
        return true;
    });
    change();
    EXPECT_EQ(answer, 1);
    plugin_control::set_device_availability_hook({});
    EXPECT_TRUE(wait_for_glue_call(opened_call));
    EXPECT_TRUE(shows_mute());
}

TEST_F(Refused, a_request_out_of_a_notice_on_the_worker_has_it_opened) {
    std::atomic<int> answer = -1;
    test_support::on_glue_call([&](const std::string& call) {
        if (call == ready_call && answer == -1) {
            permit();
            answer = request() ? 1 : 0;
        }
    });
    EXPECT_TRUE(request());
    EXPECT_TRUE(eventually([&] { return answer == 1; }));
    EXPECT_TRUE(shows_mute());
}

TEST_F(Refused, a_hook_that_waits_for_the_requester_delays_the_request_and_does_not_hang_it) {
    Gate lock_of_the_host;
    plugin_control::set_device_availability_hook([&](int, int) {
        lock_of_the_host.pass();
        return true;
    });
    permit();
    EXPECT_TRUE(request());
    EXPECT_EQ(get_active_device_id(), nullptr);
    lock_of_the_host.open();
    EXPECT_TRUE(wait_for_glue_call(ready_call));
    EXPECT_STREQ(get_active_device_id(), "host-SN-1");
    EXPECT_TRUE(shows_mute());
}

TEST_F(Refused, a_later_request_wins_over_one_that_was_delayed) {
    plug(headset("SN-2", "Other"));
    wait_for_arrivals(2);
    Gate lock_of_the_host;
    plugin_control::set_device_availability_hook([&](int, int) {
        lock_of_the_host.pass();
        return true;
    });
    EXPECT_TRUE(request());
    clear_log();
    std::thread later([] { EXPECT_TRUE(request("host-SN-2")); });
    EXPECT_TRUE(logger_->wait_for(
        manager_line("setAudioDevice", "enter: device_id:[host-SN-2], device_name:[], serial:[].")));
    lock_of_the_host.open();
    later.join();
    const auto is_over = std::make_shared<std::atomic<bool>>(false);
    post_device_mgr_task({"after the delayed request", [is_over] { *is_over = true; }});
    EXPECT_TRUE(eventually([&] { return is_over->load(); }));
    EXPECT_STREQ(get_active_device_id(), "host-SN-2");
}

TEST_F(Refused, a_stop_ends_a_request_that_waits) {
    platform().virtual_clock().stop();  // the wait has no end of its own
    Gate passing;
    hold_up_at(window_line("WndMessageHandler", "New HID device is plugged in, enumerate for headset "),
               passing);
    std::thread requesting([] { request(); });
    ASSERT_TRUE(held_up(passing));
    std::thread stopping(stop_device_mgr);
    requesting.join();
    passing.open();
    stopping.join();
}

// ---- access is granted

TEST_F(Refused, the_active_headset_is_opened_and_shown_the_calls_when_access_is_granted) {
    EXPECT_TRUE(request());
    EXPECT_TRUE(wait_for_glue_call(ready_call));
    permit();
    change();
    EXPECT_EQ(openings(), 1U);
    EXPECT_TRUE(wait_for_glue_call(opened_call));
    EXPECT_TRUE(shows_mute());
    change();
    EXPECT_EQ(opened_calls(), 1U);
}

TEST_F(Refused, passes_in_between_do_not_keep_it_from_being_shown_the_calls) {
    EXPECT_TRUE(request());
    change();
    change();
    EXPECT_EQ(get_active_device_id(), nullptr);
    permit();
    change();
    EXPECT_STREQ(get_active_device_id(), "host-SN-1");
    EXPECT_TRUE(wait_for_glue_call(opened_call));
    EXPECT_TRUE(shows_mute());
}

TEST_F(Refused, a_headset_that_is_not_chosen_any_more_is_opened_and_stays_inactive) {
    EXPECT_TRUE(request());
    change();
    EXPECT_FALSE(request("another"));
    permit();
    change();
    EXPECT_EQ(openings(), 1U);
    EXPECT_EQ(get_active_device_id(), nullptr);
    settle();
    EXPECT_EQ(opened_calls(), 0U);
}

}  // namespace
