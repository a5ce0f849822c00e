#include <atomic>
#include <gtest/gtest.h>
#include <iomanip>
#include <latch>
#include <sstream>
#include <thread>

#include "tests/virtual_headset/bus.h"

namespace bus_test {
namespace {

std::string to_string(const Event& event) {
    constexpr const char* kinds[] = {"plugged", "unplugged", "output", "input", "indicator", "unexpected"};
    std::ostringstream text;
    text << kinds[static_cast<std::size_t>(event.kind)] << std::hex << std::setfill('0');
    for (const std::uint8_t byte : event.report) {
        text << ' ' << std::setw(2) << int{byte};
    }
    if (event.kind == EventKind::indicator) {
        text << ' ' << event.indicator.page << '/' << event.indicator.usage << (event.on ? " on" : " off");
    }
    text << (event.text.empty() ? "" : ": ") << event.text;
    return text.str();
}

using Told = std::vector<std::string>;

/// A watched bus; every event becomes a line.
class WatchedBus : public BusTest {
  protected:
    void SetUp() override {
        bus_.watch([this](const Event& event) { told_.push_back(to_string(event)); });
    }

    Told take_told() { return std::exchange(told_, {}); }

    Told told_;
};

TEST_F(WatchedBus, tells_of_plugging) {
    const int headset = plug(jabra);
    EXPECT_EQ(take_told(), Told{"plugged"}) << "once, however many interfaces it has";
    bus_.unplug(headset);
    bus_.replug(headset);
    EXPECT_EQ(take_told(), (Told{"unplugged", "plugged"}));
    bus_.reset();
    EXPECT_EQ(take_told(), Told{"unplugged"});
    bus_.reset();
    EXPECT_EQ(take_told(), Told());
}

TEST_F(WatchedBus, tells_of_input_reports_in_their_own_length_whoever_reads_them) {
    const int headset = plug(jabra);
    take_told();
    bus_.press(headset, hook_switch);
    bus_.set_key(headset, volume_up, true);
    bus_.send_report(headset, Bytes{0x04, 0x01, 0x00});
    EXPECT_EQ(take_told(), (Told{"input 02 01 00", "input 02 00 00", "input 01 02 00", "input 04 01 00"}));
}

TEST_F(WatchedBus, tells_of_output_reports_and_then_of_the_indicators_that_changed) {
    plug(jabra);
    const auto opened = open();
    take_told();
    write(*opened, {0x02, 0x01, 0x00, 0xFF});
    EXPECT_EQ(take_told(), (Told{"output 02 01 00", "indicator 8/17 on"}));
    write(*opened, {0x02, 0x01, 0x00});
    EXPECT_EQ(take_told(), Told{"output 02 01 00"}) << "nothing changed";
    write(*opened, {0x02, 0x00, 0x00});
    EXPECT_EQ(take_told(), (Told{"output 02 00 00", "indicator 8/17 off"}));
}

TEST_F(WatchedBus, tells_of_a_report_that_was_not_expected) {
    const int headset = plug(jabra);
    const auto opened = open();
    take_told();
    bus_.expect(headset, Bytes{0x02, 0x01, 0x00});
    write(*opened, {0x02, 0x04, 0x00});
    EXPECT_EQ(take_told(), Told{"unexpected 02 04 00: wanted report 02 01 00, found 02 04 00"});
}

TEST_F(WatchedBus, tells_of_being_unplugged_in_the_middle) {
    const int headset = plug(jabra);
    auto opened = open();
    take_told();
    bus_.misbehave(headset, Fault::unplug_in_write);
    write(*opened, {0x02, 0x01, 0x00});
    EXPECT_EQ(take_told(), Told{"unplugged"});

    bus_.replug(headset);
    bus_.misbehave(headset, Fault::unplug_in_open);
    bus_.open(path(telephony_page));
    EXPECT_EQ(take_told(), (Told{"plugged", "unplugged"}));
}

TEST_F(WatchedBus, tells_nothing_of_what_could_not_be_done) {
    const int headset = plug(jabra);
    const auto opened = open();
    take_told();
    bus_.press(headset, {telephony_page, 0x01});
    bus_.replug(headset);
    bus_.misbehave(headset, Fault::write_fails);
    write(*opened, {0x02, 0x01, 0x00});
    EXPECT_EQ(take_told(), Told());
}

TEST_F(WatchedBus, names_the_headset_and_the_time_of_an_event) {
    std::vector<Event> events;
    bus_.watch([&](const Event& event) { events.push_back(event); });
    const auto before = std::chrono::steady_clock::now();
    const int one = plug(jabra);
    const int other = plug(game_voice);
    bus_.press(one, hook_switch);
    ASSERT_EQ(events.size(), 4U);
    EXPECT_EQ(events[0].headset, one);
    EXPECT_EQ(events[1].headset, other);
    EXPECT_EQ(events[2].headset, one);
    auto earlier = before;
    for (const Event& event : events) {
        EXPECT_GE(event.time, earlier);
        earlier = event.time;
    }
    EXPECT_LE(earlier, std::chrono::steady_clock::now());
}

TEST_F(WatchedBus, tells_before_the_system_hears_of_a_change) {
    std::vector<std::size_t> changes_when_told;
    bus_.watch([&](const Event&) { changes_when_told.push_back(take_changes().size()); });
    const int headset = plug(jabra);
    bus_.unplug(headset);
    EXPECT_EQ(changes_when_told, (std::vector<std::size_t>{0, 3}));
}

TEST_F(WatchedBus, tells_a_new_watcher_in_place_of_the_former_and_nobody_without_one) {
    Told told_to_other;
    const int headset = plug(jabra);
    take_told();
    bus_.watch([&](const Event& event) { told_to_other.push_back(to_string(event)); });
    bus_.set_key(headset, hook_switch, true);
    bus_.watch({});
    bus_.set_key(headset, hook_switch, false);
    EXPECT_EQ(told_to_other, Told{"input 02 01 00"});
    EXPECT_EQ(take_told(), Told());

    bus_.watch([&](const Event& event) { told_to_other.push_back(to_string(event)); });
    EXPECT_EQ(told_to_other.size(), 1U) << "what happened unwatched is not told afterwards";
}

TEST_F(WatchedBus, lets_the_watcher_cause_events_which_are_told_after_those_that_wait) {
    const int headset = plug(jabra);
    const auto opened = open();
    take_told();
    bus_.watch([&](const Event& event) {
        told_.push_back(to_string(event));
        if (event.kind == EventKind::output) {
            // The indicator of the output report is not told of yet.
            EXPECT_EQ(bus_.indicator(headset, off_hook_led), true);
            bus_.set_key(headset, hook_switch, true);
        }
    });
    write(*opened, {0x02, 0x01, 0x00});
    EXPECT_EQ(take_told(), (Told{"output 02 01 00", "indicator 8/17 on", "input 02 01 00"}));
}

TEST_F(WatchedBus, lets_the_watcher_unplug_the_headset) {
    const int headset = plug(jabra);
    const auto opened = open();
    take_told();
    bus_.watch([&](const Event& event) {
        told_.push_back(to_string(event));
        if (event.kind == EventKind::input) {
            bus_.unplug(headset);
        }
    });
    EXPECT_EQ(bus_.set_key(headset, hook_switch, true), "");
    EXPECT_EQ(take_told(), (Told{"input 02 01 00", "unplugged"}));
    EXPECT_FALSE(opened->is_connected());
}

TEST_F(WatchedBus, tells_one_event_at_a_time_and_each_once) {
    std::atomic<int> running = 0;
    std::atomic<bool> overlapped = false;
    const int one = plug(jabra);
    const int other = plug(game_voice);
    take_told();
    bus_.watch([&](const Event& event) {
        overlapped = overlapped || running.fetch_add(1) != 0;
        told_.push_back(to_string(event));
        --running;
    });
    std::thread presser([&] {
        for (int i = 0; i < 50; ++i) {
            bus_.press(one, hook_switch);
        }
    });
    for (int i = 0; i < 50; ++i) {
        bus_.press(other, {button_page, 0x11});
    }
    presser.join();
    EXPECT_FALSE(overlapped);
    EXPECT_EQ(told_.size(), 200U);
    std::erase_if(told_, [](const std::string& line) { return line.starts_with("input 00"); });
    ASSERT_EQ(told_.size(), 100U);
    for (std::size_t i = 0; i < told_.size(); ++i) {
        EXPECT_EQ(told_[i], i % 2 == 0 ? "input 02 01 00" : "input 02 00 00");
    }
}

TEST_F(WatchedBus, has_the_former_watcher_return_before_it_is_replaced) {
    const int headset = plug(jabra);
    std::latch entered{1};
    std::latch replacing{1};
    std::atomic<bool> returned = false;
    bus_.watch([&](const Event&) {
        entered.count_down();
        replacing.wait();
        returned = true;
    });
    std::thread cause([&] { bus_.set_key(headset, hook_switch, true); });
    entered.wait();
    std::thread release([&] { replacing.count_down(); });
    bus_.watch({});
    EXPECT_TRUE(returned);
    release.join();
    cause.join();
}

}  // namespace
}  // namespace bus_test
