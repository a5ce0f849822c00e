// What is written to a headset, when, and in which length.
#include <thread>

#include "tests/device/device_fixture.h"
#include "tests/support/upward_calls.h"

using namespace device_test;
using namespace headset_plugin;  // the states
using test_support::eventually;

namespace {

class DeviceOutput : public DeviceTest {
  protected:
    /// The three operations that have the driver build a report.
    struct Writer {
        const char* function;
        const char* enter;
        void (*write)(device&);
        Built ScriptedDriver::*answer;
    };
    static const std::vector<Writer>& writers() {
        static const std::vector<Writer> all = {
            {"set_led_event", "enter", [](device& shown) { shown.set_led_event(); }, &ScriptedDriver::led},
            {"set_mute_state", "enter.", [](device& shown) { shown.set_mute_state(true); },
             &ScriptedDriver::mute},
            {"toggle_led_status", "enter", [](device& shown) { shown.toggle_led_status(0x40); },
             &ScriptedDriver::toggle},
        };
        return all;
    }
};

// An output report of the test's headset is 4 bytes long, its id included; the HID layer fills shorter writes
// up.

TEST_F(DeviceOutput, without_a_driver_every_output_is_unsupported) {
    const auto made = make_real_device(0x1234);
    logger_->clear();
    made->headset_set_state(HEADSET_STATE_INUSE);
    made->set_mute_state(true);
    made->toggle_led_status(1);
    made->start_headset();
    EXPECT_EQ(logger_->lines(), device_lines("headset_set_state", {"3rd call state =2 "}) +
                                    device_lines("set_led_event", {"enter", "unsupported"}) +
                                    device_lines("set_mute_state", {"enter.", "unsupported"}) +
                                    device_lines("toggle_led_status", {"enter", "unsupported"}) +
                                    device_lines("start_headset", {"enter", "unsupported"}));
    EXPECT_EQ(made->headset_state(), HEADSET_STATE_INUSE);
}

TEST_F(DeviceOutput, each_operation_logs_its_entry_and_its_exit) {
    const auto made = make_device();
    for (const Writer& writer : writers()) {
        logger_->clear();
        writer.write(*made);
        EXPECT_EQ(logger_->lines(), device_lines(writer.function, {writer.enter, "exit"}));
    }
}

TEST_F(DeviceOutput, a_driver_that_built_nothing_has_nothing_written) {
    const auto made = make_open_device();
    for (const Writer& writer : writers()) {
        for (const std::int32_t length : {0, -1, -1000}) {
            driver_.get()->*writer.answer = {{0x02, 0x01}, length};
            writer.write(*made);
            EXPECT_EQ(outputs(), Lines{}) << writer.function << length;
        }
    }
    made->stop_device_thread();
}

TEST_F(DeviceOutput, the_driver_builds_in_four_clear_bytes) {
    const auto made = make_open_device();
    for (const Writer& writer : writers()) {
        driver_.get()->*writer.answer = {{0xFF, 0xFF, 0xFF, 0xFF}, 0};
        writer.write(*made);
        writer.write(*made);
        EXPECT_EQ(driver_->last_buffer_size(), 4U) << writer.function;
        EXPECT_TRUE(driver_->is_last_buffer_clear()) << writer.function;
    }
    made->stop_device_thread();
}

TEST_F(DeviceOutput, a_mute_report_goes_out_as_four_bytes_and_the_others_in_the_drivers_length) {
    // The output report is one byte and its id, so that the HID layer does not fill any write up.
    const auto made = make_open_device(telephony_descriptor(1));
    struct Row {
        const char* function;
        std::int32_t length;
        const char* output;
    };
    const std::vector<Row> rows = {
        {"set_led_event", 2, "02 03 (2)"},     {"set_led_event", 3, "02 03 (3)"},
        {"set_mute_state", 1, "02 03 (4)"},    {"set_mute_state", 2, "02 03 (4)"},
        {"set_mute_state", 4, "02 03 (4)"},    {"toggle_led_status", 2, "02 03 (2)"},
        {"toggle_led_status", 4, "02 03 (4)"},
    };
    Lines expected;
    for (const Row& row : rows) {
        for (const Writer& writer : writers()) {
            if (writer.function == std::string(row.function)) {
                driver_.get()->*writer.answer = {{0x02, 0x03, 0x00, 0x00}, row.length};
                writer.write(*made);
            }
        }
        expected.emplace_back(row.output);
        EXPECT_EQ(outputs(), expected) << row.function << row.length;
    }
    made->stop_device_thread();
}

TEST_F(DeviceOutput, a_long_output_report_gets_a_buffer_of_its_length) {
    const auto made = make_open_device(telephony_descriptor(16));
    for (const Writer& writer : writers()) {
        driver_.get()->*writer.answer = {Bytes(17, 0x02), 17};
        writer.write(*made);
        EXPECT_EQ(driver_->last_buffer_size(), 17U) << writer.function;
    }
    driver_->mute.length = 2;
    made->set_mute_state(true);
    const std::string whole = "02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 02 (17)";
    EXPECT_EQ(outputs(), Lines(4, whole));
    made->stop_device_thread();
}

TEST_F(DeviceOutput, a_driver_that_claims_more_than_the_buffer_holds_does_not_overrun_it) {
    const auto made = make_open_device();
    driver_->led = {{0x02, 0x01, 0x00, 0x00}, 1000};
    made->set_led_event();
    EXPECT_EQ(outputs(), Lines{"02 01 00 00 (4)"});
    made->stop_device_thread();
}

TEST_F(DeviceOutput, a_closed_headset_is_not_written_to) {
    const auto made = make_device();
    for (const Writer& writer : writers()) {
        logger_->clear();
        driver_.get()->*writer.answer = {{0x02, 0x01}, 2};
        writer.write(*made);
        EXPECT_EQ(driver_->last_buffer_size(), 4U);
        EXPECT_EQ(logger_->lines(), device_lines(writer.function, {writer.enter, "exit"}));
    }
}

TEST_F(DeviceOutput, a_handle_closed_while_the_driver_builds_is_not_written_to) {
    for (const Writer& writer : writers()) {
        const auto made = make_open_device();
        driver_.get()->*writer.answer = {{0x02, 0x01}, 2};
        driver_->while_building = [&] { made->stop_device_thread(); };
        writer.write(*made);
        EXPECT_EQ(outputs(), Lines{}) << writer.function;
        EXPECT_FALSE(made->is_open());
        EXPECT_EQ(logger_->count(device_line(writer.function, "exit")), 1U);
        bus().reset();
    }
}

// ---- states

TEST_F(DeviceOutput, a_state_is_stored_logged_and_shown) {
    const auto made = make_open_device();
    driver_->led = {{0x02, 0x01}, 2};
    made->headset_set_state(HEADSET_STATE_INUSE);
    EXPECT_EQ(made->headset_state(), HEADSET_STATE_INUSE);
    EXPECT_EQ(log_beside_read_thread(), device_lines("headset_set_state", {"3rd call state =2 "}) +
                                            device_lines("set_led_event", {"enter", "exit"}));
    EXPECT_EQ(driver_->calls(), (Lines{"query_state_follow_up(2)", "set_led_event_data(2)"}));
    EXPECT_EQ(outputs(), Lines{"02 01 00 00 (4)"});
    made->stop_device_thread();
}

TEST_F(DeviceOutput, only_the_low_byte_of_a_state_is_stored_but_all_of_it_is_logged) {
    const auto made = make_device();
    made->headset_set_state(0x102);
    EXPECT_EQ(made->headset_state(), 0x02);
    EXPECT_EQ(logger_->lines().front(), device_line("headset_set_state", "3rd call state =258 "));
    EXPECT_EQ(driver_->calls(), (Lines{"query_state_follow_up(2)", "set_led_event_data(2)"}));
}

TEST_F(DeviceOutput, what_the_driver_asks_for_before_a_state_is_done_first_and_only_one_of_two) {
    const auto made = make_device();
    struct Row {
        std::uint32_t follow_up;
        Lines done;
    };
    for (const Row& row : {Row{0x0, {}}, Row{0x1, {"toggle_led(1)"}}, Row{0x4, {"set_mute_data(false)"}},
                           Row{0x5, {"toggle_led(1)"}}, Row{0x2, {}}, Row{0xFFFFFFFA, {}}}) {
        driver_->clear_calls();
        driver_->state_follow_up = row.follow_up;
        made->set_led_event();
        EXPECT_EQ(driver_->calls(),
                  (Lines{"query_state_follow_up(0)"} + row.done + Lines{"set_led_event_data(0)"}))
            << row.follow_up;
    }
    driver_->state_follow_up = 0x5;
    logger_->clear();
    made->set_led_event();
    EXPECT_EQ(logger_->lines(), device_lines("set_led_event", {"enter"}) +
                                    device_lines("toggle_led_status", {"enter", "exit"}) +
                                    device_lines("set_led_event", {"exit"}));
}

TEST_F(DeviceOutput, the_mute_state_is_handed_to_the_driver) {
    const auto made = make_device();
    made->set_mute_state(true);
    made->set_mute_state(false);
    EXPECT_EQ(driver_->calls(), (Lines{"set_mute_data(true)", "set_mute_data(false)"}));
}

// ---- the first output

TEST_F(DeviceOutput, a_plantronics_headset_is_started_with_its_idle_report_alone) {
    const auto made = make_open_device(telephony_descriptor(1), plantronics);
    EXPECT_EQ(outputs(), Lines{"16 02 00 (3)"});
    EXPECT_EQ(driver_->calls(), Lines{});
    made->start_headset();
    EXPECT_EQ(log_beside_read_thread(),
              device_lines("start_headset", {"enter"}) + device_lines("set_idle", {"enter"}));
    EXPECT_EQ(outputs(), (Lines{"16 02 00 (3)", "16 02 00 (3)"}));
    EXPECT_EQ(driver_->calls(), Lines{});
    made->stop_device_thread();
}

TEST_F(DeviceOutput, a_closed_plantronics_headset_gets_no_idle_report) {
    plug();
    const auto made = make_device(plantronics);
    made->start_headset();
    EXPECT_EQ(logger_->lines_with("headset_plugin::device::"),
              device_lines("start_headset", {"enter"}) + device_lines("set_idle", {"enter"}));
    EXPECT_EQ(outputs(), Lines{});
}

TEST_F(DeviceOutput, other_headsets_have_no_idle_report) {
    const auto made = make_open_device();
    made->set_idle();
    EXPECT_EQ(log_beside_read_thread(), device_lines("set_idle", {"enter"}));
    EXPECT_EQ(outputs(), Lines{});
    made->stop_device_thread();
}

TEST_F(DeviceOutput, other_headsets_are_started_with_the_state_that_they_hold) {
    const auto made = make_device();
    made->headset_set_state(HEADSET_STATE_HOLD);
    driver_->clear_calls();
    logger_->clear();
    made->start_headset();
    EXPECT_EQ(driver_->calls(), (Lines{"query_state_follow_up(4)", "set_led_event_data(4)"}));
    EXPECT_EQ(logger_->lines(),
              device_lines("start_headset", {"enter"}) + device_lines("set_led_event", {"enter", "exit"}));
}

// ---- headsets that misbehave, and several threads at once

TEST_F(DeviceOutput, a_write_that_fails_is_passed_over) {
    const auto made = make_open_device();
    ASSERT_EQ(bus().misbehave(headset_, Fault::write_fails), "");
    driver_->led = {{0x02, 0x01}, 2};
    made->set_led_event();
    ASSERT_EQ(bus().misbehave(headset_, Fault::none), "");
    made->set_led_event();
    EXPECT_EQ(outputs(), Lines{"02 01 00 00 (4)"});
    EXPECT_TRUE(made->is_open());
    made->stop_device_thread();
}

TEST_F(DeviceOutput, a_headset_unplugged_by_a_write_closes_itself) {
    const auto made = make_open_device();
    ASSERT_EQ(bus().misbehave(headset_, Fault::unplug_in_write), "");
    driver_->led = {{0x02, 0x01}, 2};
    made->set_led_event();
    EXPECT_TRUE(test_support::wait_for_upward_call("remove_headset_with_serial(SN-1)"));
    EXPECT_EQ(outputs(), Lines{});
    EXPECT_FALSE(made->is_open());
}

TEST_F(DeviceOutput, an_unplug_releases_a_write_that_hangs) {
    const auto made = make_open_device();
    platform().virtual_clock().stop();
    ASSERT_EQ(bus().misbehave(headset_, Fault::write_hangs), "");
    driver_->led = {{0x02, 0x01}, 2};
    std::thread writer([&] { made->set_led_event(); });
    EXPECT_TRUE(platform().virtual_clock().wait_for_sleepers(1, test_support::patience));
    EXPECT_EQ(bus().unplug(headset_), "");
    writer.join();
    EXPECT_TRUE(test_support::wait_for_upward_call("remove_headset_with_serial(SN-1)"));
}

TEST_F(DeviceOutput, a_stop_waits_for_a_write_that_hangs_to_be_given_up) {
    const auto made = make_open_device();
    platform().virtual_clock().stop();
    ASSERT_EQ(bus().misbehave(headset_, Fault::write_hangs), "");
    driver_->led = {{0x02, 0x01}, 2};
    std::thread writer([&] { made->set_led_event(); });
    EXPECT_TRUE(platform().virtual_clock().wait_for_sleepers(1, test_support::patience));
    std::thread stopper([&] { made->stop_device_thread(); });
    EXPECT_TRUE(logger_->wait_for(device_line("stop_device_thread", "Enter")));
    EXPECT_TRUE(made->is_open());
    platform().virtual_clock().advance(hid_write_timeout);
    writer.join();
    stopper.join();
    EXPECT_FALSE(made->is_open());
}

TEST_F(DeviceOutput, an_idle_report_does_not_wait_for_a_write_that_hangs) {
    const auto made = make_open_device(telephony_descriptor(1), plantronics);
    platform().virtual_clock().stop();
    ASSERT_EQ(bus().misbehave(headset_, Fault::write_hangs), "");
    driver_->led = {{0x02, 0x01}, 2};
    std::thread writer([&] { made->set_led_event(); });
    EXPECT_TRUE(platform().virtual_clock().wait_for_sleepers(1, test_support::patience));
    std::thread idling([&] { made->set_idle(); });
    EXPECT_TRUE(platform().virtual_clock().wait_for_sleepers(2, test_support::patience));
    platform().virtual_clock().go();
    writer.join();
    idling.join();
    made->stop_device_thread();
}

TEST_F(DeviceOutput, states_mutes_keys_and_a_stop_may_come_at_once) {
    const auto made = make_open_device();
    driver_->key = HEADSET_KEY_MUTE;
    driver_->report_follow_up = 0x7F;
    driver_->led = driver_->mute = driver_->toggle = {{0x02, 0x01}, 2};
    constexpr int rounds = 50;
    std::thread states([&] {
        for (std::uint32_t i = 0; i < rounds; ++i) {
            made->headset_set_state(i % 3);
        }
    });
    std::thread mutes([&] {
        for (int i = 0; i < rounds; ++i) {
            made->set_mute_state(i % 2 == 0);
        }
    });
    for (int i = 0; i < rounds; ++i) {
        EXPECT_EQ(bus().send_report(headset_, mute_report), "");
    }
    EXPECT_TRUE(wait_for_key("1 SN-1"));
    made->stop_device_thread();
    states.join();
    mutes.join();
    EXPECT_TRUE(eventually([&] { return is_closed(); }));
}

}  // namespace
