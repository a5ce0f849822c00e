// The device manager as the rest of the plug-in reaches it.
#include "device/device_events.h"
#include "tests/devicemgr/manager_fixture.h"
#include "tests/plugin/plugin_threads.h"

using namespace manager_test;
using test_support::in_order;

namespace {

class DeviceManagerApi : public RunningManagerTest {
  protected:
    /// Started, with one headset that is the active one.
    void start_with_active_headset() {
        plug(headset("SN-1"));
        start();
        EXPECT_TRUE(set_audio_device("host-SN-1", "", ""));
        clear_log();
    }
};

// ---- before the start

TEST_F(DeviceManagerApi, without_a_manager_every_function_says_so_and_answers_with_nothing) {
    const auto not_ready = [](const std::string& function, const std::string& enter) {
        return Lines{api_line(function, enter), api_line(function, "device_mgr not ready")};
    };
    const auto expect = [&](const Lines& lines) {
        EXPECT_EQ(logger_->lines(), lines);
        logger_->clear();
    };
    EXPECT_FALSE(set_audio_device("id", "name", "SN-1"));
    expect(not_ready("set_audio_device", "enter: serial[SN-1]"));
    EXPECT_EQ(get_active_device_id(), nullptr);
    expect(not_ready("get_active_device_id", "enter:"));
    EXPECT_EQ(get_headset_model("id"), "");
    expect(not_ready("get_headset_model", "enter"));
    update_headset_state(2);
    expect(not_ready("update_headset_state", "enter"));
    hid_headset_set_mute(1);
    expect(not_ready("hid_headset_set_mute", "enter"));
    remove_headset_with_serial("SN-1");
    expect(not_ready("remove_headset_with_serial", "enter"));
    post_device_mgr_task({"never run", [] { ADD_FAILURE() << "the task was run"; }});
    expect({});
    set_audio_device(nullptr, nullptr, nullptr);
    expect(not_ready("set_audio_device", "enter: serial[]"));
}

TEST_F(DeviceManagerApi, a_stop_before_any_start_does_no_harm) {
    stop_device_mgr();
    EXPECT_EQ(logger_->lines(),
              (Lines{api_line("stop_device_mgr", "enter"), api_line("stop_device_mgr", "completed"),
                     api_line("stop_device_mgr", "try to end message thread ")}));
    start();
}

// ---- start and stop

TEST_F(DeviceManagerApi, a_start_creates_the_manager_and_starts_its_message_thread) {
    start();
    EXPECT_TRUE(in_order(
        logger_->lines(),
        {"3rdPartyHeadsetPlugin: start_device_mgr:\n", "3rdPartyHeadsetPlugin: start_device_mgr:creating\n",
         manager_line("device_mgr_start", "start orvex headset plugin. "),
         manager_line("device_mgr_start", "hid_tracking_func is working.")}));
}

TEST_F(DeviceManagerApi, a_second_start_keeps_the_manager_and_starts_another_message_thread) {
    start();
    start_device_mgr(7);
    ASSERT_TRUE(logger_->wait_for("HeadsetPlugin: RegisterClassEx failed with error code 1410 \n"));
    EXPECT_EQ(logger_->count("3rdPartyHeadsetPlugin: start_device_mgr:\n"), 2U);
    EXPECT_EQ(logger_->count("3rdPartyHeadsetPlugin: start_device_mgr:creating\n"), 1U);
    EXPECT_EQ(logger_->count(manager_line("device_mgr_start", "hid_tracking_func is working.")), 2U);
    plug_and_wait(headset("SN-1"));
    EXPECT_TRUE(set_audio_device("host-SN-1", "", ""));
}

TEST_F(DeviceManagerApi, a_stop_puts_the_headset_to_rest_then_stops_it_then_ends_the_message_thread) {
    start_with_active_headset();
    update_headset_state(2);
    stop_device_mgr();
    ASSERT_TRUE(wait_for_message_threads());
    EXPECT_TRUE(in_order(
        logger_->lines(),
        {api_line("stop_device_mgr", "enter"), manager_line("device_mgr_stop", "enter "),
         manager_line("deselect_device", "enter"), state_line(0),
         manager_line("stop_tracking_thread", "try to stop enumerate_hid_device and first_tracking_thread_ "),
         "3rdPartyHeadsetPlugin: headset_plugin::device::stop_device_thread: Enter\n",
         manager_line("stop_tracking_thread", "done "), manager_line("device_mgr_stop", "completed "),
         api_line("stop_device_mgr", "completed"),
         api_line("stop_device_mgr", "try to end message thread ")}));
    const std::string closed = window_line("MessageThread", "Message Thread is closed ");
    EXPECT_EQ(logger_->count(closed), 1U);
    EXPECT_TRUE(in_order(logger_->lines(), {api_line("stop_device_mgr", "completed"), closed}));
    EXPECT_EQ(get_active_device_id(), nullptr);
}

TEST_F(DeviceManagerApi, a_second_stop_logs_its_own_lines_and_changes_nothing) {
    start();
    stop_device_mgr();
    ASSERT_TRUE(wait_for_message_threads());
    clear_log();
    stop_device_mgr();
    EXPECT_EQ(logger_->lines(),
              (Lines{api_line("stop_device_mgr", "enter"), api_line("stop_device_mgr", "completed"),
                     api_line("stop_device_mgr", "try to end message thread ")}));
}

TEST_F(DeviceManagerApi, a_start_after_a_stop_begins_anew) {
    start_with_active_headset();
    stop_device_mgr();
    ASSERT_TRUE(wait_for_message_threads());
    clear_log();
    start();
    EXPECT_EQ(logger_->count("3rdPartyHeadsetPlugin: start_device_mgr:creating\n"), 1U);
    EXPECT_EQ(get_active_device_id(), nullptr);
    EXPECT_TRUE(set_audio_device("host-SN-1", "", ""));
}

TEST_F(DeviceManagerApi, the_shutdown_hook_does_nothing) {
    std::make_shared<device_mgr>()->exit_hid_mgr();
    EXPECT_EQ(logger_->lines(), manager_lines("exit_hid_mgr", {"enter. ", "done. "}));
}

// ---- what is forwarded

TEST_F(DeviceManagerApi, an_audio_device_is_matched_and_its_headset_reported_ready) {
    platform().virtual_clock().stop();
    plug(headset("SN-1", "Jabra Evolve"));
    start();
    clear_log();
    EXPECT_TRUE(set_audio_device("host-SN-1", "name", "SN-X"));
    EXPECT_EQ(logger_->count(api_line("set_audio_device", "enter: serial[SN-X]")), 1U);
    ASSERT_TRUE(platform().virtual_clock().wait_for_sleepers(1, test_support::patience));
    EXPECT_EQ(test_support::glue_calls(), Lines{});
    platform().virtual_clock().advance(headset_plugin::inventory_delay);
    EXPECT_TRUE(test_support::wait_for_glue_call(
        "on_headset_ready(host-SN-1, 2830, 9417, Jabra, Jabra Evolve, SN-1)"));
    EXPECT_FALSE(set_audio_device("other", "", ""));
}

TEST_F(DeviceManagerApi, a_headset_that_arrives_after_the_request_is_matched_and_reported_ready) {
    platform().virtual_clock().stop();
    start();
    EXPECT_FALSE(set_audio_device("host-SN-1", "", "sn"));
    ASSERT_TRUE(platform().virtual_clock().wait_for_sleepers(1, test_support::patience));
    plug_and_wait(headset("SN-1"));
    platform().virtual_clock().advance(plugin_control::match_interval);
    ASSERT_TRUE(logger_->wait_for(
        manager_line("setFirstAudioDevice", "just matched, go post headsetReady and inventory.")));
    ASSERT_TRUE(platform().virtual_clock().wait_for_sleepers(1, test_support::patience));
    platform().virtual_clock().advance(headset_plugin::inventory_delay);
    EXPECT_TRUE(test_support::wait_for_glue_call(
        "on_headset_ready(host-SN-1, 2830, 9417, Jabra, Test Headset, SN-1)"));
    EXPECT_STREQ(get_active_device_id(), "host-SN-1");
}

TEST_F(DeviceManagerApi, the_active_id_is_forwarded) {
    start_with_active_headset();
    EXPECT_STREQ(get_active_device_id(), "host-SN-1");
    EXPECT_EQ(
        logger_->lines_with("get_active_device_id"),
        (Lines{api_line("get_active_device_id", "enter:"), manager_line("get_active_device_id", "enter")}));
}

TEST_F(DeviceManagerApi, the_model_of_a_third_party_headset_is_empty) {
    start_with_active_headset();
    EXPECT_EQ(get_headset_model("host-SN-1"), "");
    EXPECT_EQ(logger_->lines_with("get_headset_model"),
              (Lines{api_line("get_headset_model", "enter"), manager_line("get_headset_model", "enter"),
                     manager_line("get_headset_model", "no device for deviceId")}));
}

TEST_F(DeviceManagerApi, a_state_is_forwarded_to_the_active_headset) {
    start_with_active_headset();
    update_headset_state(6);
    EXPECT_EQ(logger_->count(api_line("update_headset_state", "enter")), 1U);
    EXPECT_EQ(logger_->count(state_line(6)), 1U);
}

TEST_F(DeviceManagerApi, one_and_more_is_muted_and_anything_else_is_not) {
    struct Row {
        int muted;
        const char* sent;
    };
    start();
    for (const Row& row : {Row{0, "false"}, Row{1, "true"}, Row{2, "true"}, Row{0x7FFFFFFF, "true"},
                           Row{-1, "false"}, Row{-0x7FFFFFFF - 1, "false"}}) {
        clear_log();
        hid_headset_set_mute(row.muted);
        EXPECT_EQ(logger_->lines(),
                  (Lines{api_line("hid_headset_set_mute", "enter"),
                         api_line("hid_headset_set_mute", "send muted=" + std::string(row.sent)),
                         manager_line("set_headset_mute_state", "enter mute=" + std::string(row.sent)),
                         manager_line("set_headset_mute_state", "no active orvex headset")}))
            << row.muted;
    }
}

TEST_F(DeviceManagerApi, mute_lights_the_indicator_of_the_active_headset) {
    const int number = plug(headset("SN-1"));
    start();
    ASSERT_TRUE(set_audio_device("host-SN-1", "", ""));
    hid_headset_set_mute(2);
    EXPECT_EQ(bus().indicator(number, mute_indicator), true);
    hid_headset_set_mute(-1);
    EXPECT_EQ(bus().indicator(number, mute_indicator), false);
}

TEST_F(DeviceManagerApi, a_removal_by_serial_is_forwarded) {
    start();
    clear_log();
    remove_headset_with_serial("SN-9");
    ASSERT_TRUE(logger_->wait_for(
        manager_line("remove_device_with_serial::<lambda_1>::operator ()", "did not find device to remove")));
    EXPECT_EQ(logger_->lines_with("remove_headset_with_serial"),
              Lines{api_line("remove_headset_with_serial", "enter")});
}

TEST_F(DeviceManagerApi, tasks_run_on_the_worker_one_after_the_other) {
    start();
    clear_log();
    Gate last;
    std::vector<int> order;  // the worker's, until the last task is through
    for (int i = 0; i < 3; ++i) {
        post_device_mgr_task({"task", [&order, i] { order.push_back(i); }});
    }
    last.open();
    post_device_mgr_task({"last task", [&] { last.pass(); }});
    ASSERT_TRUE(last.wait_for_arrival());
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(logger_->lines(), Lines{});
}

TEST_F(DeviceManagerApi, a_stop_lets_go_of_the_manager_before_it_is_completed) {
    start();
    bool is_gone = false;
    logger_->on_line([&](const std::string& logged) {
        if (logged == api_line("stop_device_mgr", "completed")) {
            is_gone =
                test_support::eventually([] { return test_support::count_threads("orvex-worker") == 0; });
        }
    });
    stop_device_mgr();
    logger_->on_line({});
    EXPECT_TRUE(is_gone) << "the manager joins its worker when it goes";
}

TEST_F(DeviceManagerApi, a_task_that_waits_when_the_manager_stops_is_dropped) {
    start();
    auto gate = std::make_shared<Gate>();
    auto waiting = std::make_shared<int>(0);
    const std::weak_ptr<int> watched = waiting;
    post_device_mgr_task({"held up", [gate] { gate->pass(); }});
    post_device_mgr_task({"never run", [kept = std::move(waiting)] { ADD_FAILURE() << "the task was run"; }});
    ASSERT_TRUE(gate->wait_for_arrival());
    stop_device_mgr();
    gate->open();
    EXPECT_TRUE(test_support::eventually([&] { return watched.expired(); }));
}

}  // namespace
