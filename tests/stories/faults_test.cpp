// Headsets that misbehave, and callbacks that take long.

#include <atomic>
#include <future>
#include <mutex>

#include "hid/hid_access.h"
#include "tests/stories/headset_rows.h"

namespace {

using namespace plugin_control;
using namespace test_support;

class Faults : public StoryHost {
  protected:
    static void misbehave(int headset, orvex_virtual_fault fault) {
        EXPECT_EQ(orvex_virtual_misbehave(headset, fault), 0) << orvex_virtual_error();
    }

    /// Plugs a headset that misbehaves from the start: before the plug-in looks at it.
    int plug_misbehaving(orvex_virtual_fault fault) {
        stopPluginControl();
        const int headset = orvex_virtual_plug("jabra-link-380c", nullptr);
        misbehave(headset, fault);
        start_with_listeners();
        return headset;
    }

    /// Has the plug-in look for headsets again, a new one among them.
    void run_pass() { unplug(plug("sennheiser-sc-660")); }

    void run_pass_and_activate(int headset) {
        run_pass();
        activate(headset);
        control_->connectCall("", "1");
        EXPECT_EQ(orvex_virtual_indicator(headset, 0x08, 0x17), 1) << "off-hook";
        control_->endCall("", "1");
    }

    /// Runs something that waits for the headset in a thread of its own, until it waits.
    template <typename Action>
    std::future<void> start_waiting(const Action& action) {
        auto running = std::async(std::launch::async, action);
        EXPECT_TRUE(virtual_clock().wait_for_sleepers(1, patience));
        EXPECT_EQ(running.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
        return running;
    }

    /// Moves the time on until what runs has ended.
    static void advance_until_ended(const std::future<void>& running) {
        EXPECT_TRUE(eventually([&] {
            virtual_clock().advance(headset_plugin::hid_write_timeout);
            return running.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        }));
    }

    const std::string failed_open = line("plugin_control::device_mgr::enumerate_hid_device",
                                         "failed open 3rd device telephony page, remove it and skip . ");
};

TEST_F(Faults, a_call_that_changes_while_a_headset_becomes_ready_is_shown_as_it_is_then) {
    const int headset = plug();
    std::promise<void> decided;
    std::promise<void> go_on;
    std::once_flag once;
    // The worker has decided that nothing is muted, and has not sent it yet.
    logger_->on_line([&](const std::string& logged) {
        if (logged ==
            "HeadsetPlugin: headset_plugin::headset_ccm::arbitrateHeadsetINIT: send muted=false\n") {
            std::call_once(once, [&] {
                decided.set_value();
                go_on.get_future().wait_for(patience);
            });
        }
    });
    const auto active = std::async(std::launch::async, [&] { activate(headset); });
    ASSERT_EQ(decided.get_future().wait_for(patience), std::future_status::ready);
    control_->connectCall("", "1");
    control_->mute("", "1");
    go_on.set_value();
    active.wait();
    drain_worker();
    EXPECT_EQ(orvex_virtual_indicator(headset, 0x08, 0x17), 1) << "off-hook";
    EXPECT_EQ(orvex_virtual_indicator(headset, 0x08, 0x09), 1) << "mute";
}

TEST_F(Faults, a_call_that_changes_right_after_a_headset_became_ready_is_shown_once) {
    const int headset = plug();
    std::promise<void> shown;
    std::promise<void> changed;
    std::once_flag shown_once;
    std::once_flag changed_once;
    std::atomic<bool> decided{false};
    // The worker has shown the last that there is to show, and has not returned yet; the host has put its
    // call onto the list and shows it next.
    logger_->on_line([&](const std::string& logged) {
        if (logged ==
            "HeadsetPlugin: headset_plugin::headset_ccm::arbitrateHeadsetINIT: send muted=false\n") {
            decided = true;
        } else if (decided && logged == line("headset_plugin::device::set_mute_state", "exit")) {
            std::call_once(shown_once, [&] {
                shown.set_value();
                changed.get_future().wait_for(patience);
            });
        } else if (logged == line("update_headset_state", "enter") && decided) {
            std::call_once(changed_once, [&] { changed.set_value(); });
        }
    });
    const auto active = std::async(std::launch::async, [&] { activate(headset); });
    ASSERT_EQ(shown.get_future().wait_for(patience), std::future_status::ready);
    take_shown(headset);
    control_->connectCall("", "1");
    active.wait();
    drain_worker();
    EXPECT_EQ(take_shown(headset), Lines{"02 01 00"});
}

TEST_F(Faults, a_host_that_changes_its_calls_without_a_pause_does_not_hold_up_the_worker) {
    const int headset = plug();
    const std::string decided =
        "HeadsetPlugin: headset_plugin::headset_ccm::arbitrateHeadsetINIT: send muted=false\n";
    logger_->on_line([&](const std::string& logged) {
        if (logged == decided) {
            std::async(std::launch::async, [&] { control_->unmute("", "unknown"); }).wait();
        }
    });
    activate(headset);
    constexpr std::size_t most_decisions = 9;
    EXPECT_EQ(logger_->count(decided), most_decisions);
    Lines last_is_shown(most_decisions, decided);
    last_is_shown.push_back(line("headset_plugin::device::set_mute_state", "exit"));
    EXPECT_TRUE(in_order(logger_->lines(), last_is_shown));
}

TEST_F(Faults, a_write_that_hangs_holds_up_its_caller_until_its_time_is_over) {
    const int headset = plug_active();
    take_shown(headset);
    misbehave(headset, ORVEX_VIRTUAL_FAULT_WRITE_HANGS);
    const auto call = start_waiting([this] { control_->connectCall("", "1"); });
    virtual_clock().advance(headset_plugin::hid_write_timeout - std::chrono::milliseconds(1));
    EXPECT_EQ(call.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    virtual_clock().advance(std::chrono::milliseconds(1));
    EXPECT_EQ(call.wait_for(patience), std::future_status::ready);
    EXPECT_EQ(take_shown(headset), Lines());

    misbehave(headset, ORVEX_VIRTUAL_FAULT_NONE);
    control_->mute("", "1");
    EXPECT_EQ(take_shown(headset), Lines{"02 05 00"}) << "the headset is in step again";
}

TEST_F(Faults, a_write_that_hangs_ends_when_its_headset_is_unplugged) {
    const int headset = plug_active();
    misbehave(headset, ORVEX_VIRTUAL_FAULT_WRITE_HANGS);
    const auto call = start_waiting([this] { control_->connectCall("", "1"); });
    EXPECT_EQ(orvex_virtual_unplug(headset), 0);
    EXPECT_EQ(call.wait_for(patience), std::future_status::ready);
    EXPECT_TRUE(listener_->wait_for(notification("onDeviceRemovedNotify", headset, "Jabra")));
}

TEST_F(Faults, other_headsets_work_on_while_one_hangs) {
    const int hanging = plug_active();
    const int other = plug("sennheiser-sc-660");
    misbehave(hanging, ORVEX_VIRTUAL_FAULT_WRITE_HANGS);
    const auto call = start_waiting([this] { control_->connectCall("", "1"); });
    take_shown(other);
    unplug(other);
    replug(other);
    EXPECT_EQ(take_shown(other), (Lines{"09 00", "09 00"})) << "the plug-in does not see the other headset";
    advance_until_ended(call);
    misbehave(hanging, ORVEX_VIRTUAL_FAULT_NONE);
}

TEST_F(Faults, stop_in_the_middle_of_a_write_that_hangs_ends_in_time) {
    const int headset = plug_active();
    misbehave(headset, ORVEX_VIRTUAL_FAULT_WRITE_HANGS);
    const auto call = start_waiting([this] { control_->connectCall("", "1"); });
    const auto stop = std::async(std::launch::async, [] { stopPluginControl(); });
    advance_until_ended(stop);
    EXPECT_EQ(call.wait_for(patience), std::future_status::ready);
    EXPECT_TRUE(wait_for_plugin_threads_to_end());

    misbehave(headset, ORVEX_VIRTUAL_FAULT_NONE);
    start_with_listeners();
    activate(headset);
    take_shown(headset);
    control_->connectCall("", "1");
    EXPECT_EQ(take_shown(headset), Lines{"02 01 00"});
}

TEST_F(Faults, writes_that_fail_are_forgotten_and_the_next_state_counts) {
    const int headset = plug_active();
    take_shown(headset);
    misbehave(headset, ORVEX_VIRTUAL_FAULT_WRITE_FAILS);
    control_->connectCall("", "1");
    control_->mute("", "1");
    EXPECT_EQ(take_shown(headset), Lines());
    misbehave(headset, ORVEX_VIRTUAL_FAULT_NONE);
    control_->connectCall("", "1");
    EXPECT_EQ(take_shown(headset), Lines{"02 05 00"});
}

TEST_F(Faults, a_headset_that_is_unplugged_in_a_write_is_gone_for_the_host) {
    const int headset = plug_active();
    misbehave(headset, ORVEX_VIRTUAL_FAULT_UNPLUG_IN_WRITE);
    control_->connectCall("", "1");
    EXPECT_TRUE(listener_->wait_for(notification("onDeviceRemovedNotify", headset, "Jabra")));
    drain_worker();
    control_->mute("", "1");
    replug(headset);
    take_shown(headset);
    activate(headset);
    EXPECT_EQ(take_shown(headset), (Lines{"02 01 00", "02 05 00"}));
}

TEST_F(Faults, a_headset_that_refuses_to_be_opened_is_not_listed_until_it_lets_itself) {
    const int headset = plug_misbehaving(ORVEX_VIRTUAL_FAULT_OPEN_REFUSED);
    run_pass();
    EXPECT_GT(logger_->count(failed_open), 0U);
    misbehave(headset, ORVEX_VIRTUAL_FAULT_NONE);
    run_pass_and_activate(headset);
}

TEST_F(Faults, a_headset_that_is_unplugged_while_it_is_opened_works_when_it_is_back) {
    const int headset = plug_misbehaving(ORVEX_VIRTUAL_FAULT_UNPLUG_IN_OPEN);
    run_pass();
    EXPECT_EQ(orvex_virtual_output_count(headset), 0);
    EXPECT_EQ(orvex_virtual_replug(headset), 0);
    drain_passes();
    activate(headset);
    EXPECT_EQ(outputs(headset).size(), 5U) << "two at opening, three when it is ready";
}

struct ReadFault {
    orvex_virtual_fault fault;
    const char* length;
};

TEST_F(Faults, a_headset_whose_reading_fails_is_gone_for_the_host_until_the_next_look) {
    for (const ReadFault& read : {ReadFault{ORVEX_VIRTUAL_FAULT_READ_FAILS, "-1"},
                                  ReadFault{ORVEX_VIRTUAL_FAULT_READ_ONE_BYTE, "1"}}) {
        const int headset = plug_active();
        listener_->clear();
        misbehave(headset, read.fault);
        EXPECT_TRUE(listener_->wait_for(notification("onDeviceRemovedNotify", headset, "Jabra")));
        EXPECT_EQ(logger_->count(line("headset_plugin::device::read_thread",
                                      std::string("read error, length ") + read.length)),
                  1U);
        drain_worker();
        run_pass_and_activate(headset);
        unplug(headset);
    }
}

TEST_F(Faults, a_headset_that_a_late_look_opens_anew_while_the_plugin_stops_is_let_go) {
    plug_active();
    const std::string reads = line("headset_plugin::device::read_thread", "Enter while(true) loop ");
    std::promise<void> opened_anew;
    logger_->on_line([&, opened = opened_anew.get_future().share()](const std::string& logged) {
        if (logged == line("plugin_control::device_mgr::stop_tracking_thread", "done ")) {
            EXPECT_GT(orvex_virtual_plug("logitech-g535", nullptr), 0);
            EXPECT_TRUE(logger_->wait_for_count(reads, 2));
            opened_anew.set_value();
            EXPECT_TRUE(eventually([] { return count_threads("orvex-read") <= 1; }));
        } else if (logged.find("read_thread: read error") != std::string::npos) {
            opened.wait();  // the thread that read before is slow to end
        }
    });
    stopPluginControl();
    EXPECT_TRUE(wait_for_plugin_threads_to_end());
    logger_->on_line({});
}

TEST_F(Faults, a_headset_that_is_back_while_the_host_hears_that_it_went_is_opened_once_it_has_left) {
    const int headset = plug_active();
    const int before = orvex_virtual_output_count(headset);
    listener_->on_call([&](const std::string& call) {
        if (call.starts_with("onDeviceRemovedNotify")) {
            EXPECT_EQ(orvex_virtual_replug(headset), 0);
            drain_passes();
            EXPECT_EQ(orvex_virtual_output_count(headset), before);
            EXPECT_FALSE(choose(headset));
        }
    });
    unplug(headset);
    EXPECT_EQ(orvex_virtual_output_count(headset), before + 2);
    activate(headset);
}

TEST_F(Faults, stop_does_not_wait_for_a_callback_that_runs_on_another_thread) {
    const int headset = plug_active();
    control_->connectCall("", "1");
    std::promise<void> inside;
    std::promise<void> release;
    listener_->on_call([&, released = release.get_future().share()](const std::string& call) {
        if (call.starts_with("onMuteCall")) {
            inside.set_value();
            released.wait();
        }
    });
    EXPECT_EQ(orvex_virtual_press(headset, 0x0B, phone_mute_key), 0);
    ASSERT_EQ(inside.get_future().wait_for(patience), std::future_status::ready);
    stopPluginControl();
    start_with_listeners();
    listener_->on_call({});
    release.set_value();
    activate(headset);
    EXPECT_TRUE(listener_->wait_for_count(notification("onActiveDeviceNotify", headset, "Jabra"), 2));
}

}  // namespace
