// From an input report to a key: which headset counts, what its driver makes of it, and which keys pass.
#include <optional>

#include "tests/device/device_fixture.h"
#include "tests/support/upward_calls.h"
#include "virtual_headset/models/items.h"

using namespace device_test;
using namespace headset_plugin;  // the states and key codes

namespace {

constexpr std::uint32_t key_report_type = 8;

std::string keycode_line(int key) {
    return device_line("handle_key_report", "enter, keycode = " + std::to_string(key));
}

std::string value_line(int key, int last) {
    return device_line("handle_key_report", "keyReportValue: " + std::to_string(key) +
                                                ", LAST_HOOK_KEY: " + std::to_string(last) + " ");
}

std::string new_key_line(int key) {
    return device_line("handle_key_report", "new LAST_HOOK_KEY: " + std::to_string(key) + " ");
}

const std::string drop_repeat = device_line("handle_key_report", "Drop invalid HOOK/END_CALL. ");
const std::string drop_hook = device_line("handle_key_report", "Drop invalid HOOK. ");
const std::string drop_end_call = device_line("handle_key_report", "Drop invalid END_CALL. ");

class DeviceKeys : public DeviceTest {
  protected:
    /// A headset object in a state, with a last hook key; the log and the keys begin afterwards.
    std::shared_ptr<device> make_device_in(std::uint32_t state, std::optional<int> last = std::nullopt) {
        auto made = make_device();
        if (last) {
            made->headset_set_state(*last == HEADSET_KEY_HOOK ? HEADSET_STATE_ALERTING : HEADSET_STATE_INUSE);
            made->handle_key_report(key_report_type, static_cast<std::uint32_t>(*last));
        }
        // Idle forgets the last key: so a state that shows nothing, but is not 0, is used instead.
        constexpr std::uint32_t no_known_state = 0x80;
        made->headset_set_state(state == HEADSET_STATE_IDLE && last ? no_known_state : state);
        EXPECT_EQ(made->last_hook_key(), last.value_or(-1));
        clear_keys();
        logger_->clear();
        return made;
    }
};

TEST_F(DeviceKeys, every_key_in_every_state_passes_or_is_dropped_as_the_table_says) {
    struct Row {
        int key;
        int last;  ///< the last hook key before, -1 for none
        bool in_use;
        bool passes;
        std::string dropped_as;
        int last_after;
    };
    const std::vector<Row> rows = {
        {HEADSET_KEY_END_CALL, -1, true, true, "", 0},
        {HEADSET_KEY_END_CALL, 2, true, true, "", 0},
        {HEADSET_KEY_END_CALL, 0, true, false, drop_repeat, 0},
        {HEADSET_KEY_END_CALL, -1, false, false, drop_end_call, -1},
        {HEADSET_KEY_END_CALL, 2, false, false, drop_end_call, 2},
        {HEADSET_KEY_END_CALL, 0, false, false, drop_repeat, 0},
        {HEADSET_KEY_HOOK, -1, true, false, drop_hook, -1},
        {HEADSET_KEY_HOOK, 0, true, false, drop_hook, 0},
        {HEADSET_KEY_HOOK, 2, true, false, drop_repeat, 2},
        {HEADSET_KEY_HOOK, -1, false, true, "", 2},
        {HEADSET_KEY_HOOK, 0, false, true, "", 2},
        {HEADSET_KEY_HOOK, 2, false, false, drop_repeat, 2},
        {HEADSET_KEY_MUTE, -1, true, true, "", -1},
        {HEADSET_KEY_MUTE, 2, false, true, "", 2},
        {HEADSET_KEY_4, 0, true, true, "", 0},
        {HEADSET_KEY_4, -1, false, true, "", -1},
        {HEADSET_KEY_LOGITECH_8, 2, true, true, "", 2},
        {HEADSET_KEY_LOGITECH_8, -1, false, true, "", -1},
        {HEADSET_KEY_16, 0, false, true, "", 0},
        {HEADSET_KEY_32, -1, true, true, "", -1},
    };
    const std::vector<std::uint32_t> in_use = {HEADSET_STATE_INUSE, HEADSET_STATE_INUSE | HEADSET_STATE_HOLD,
                                               HEADSET_STATE_INUSE | HEADSET_STATE_ALERTING};
    const std::vector<std::uint32_t> not_in_use = {HEADSET_STATE_IDLE, HEADSET_STATE_ALERTING,
                                                   HEADSET_STATE_HOLD};
    for (const Row& row : rows) {
        for (const std::uint32_t state : row.in_use ? in_use : not_in_use) {
            SCOPED_TRACE("key " + std::to_string(row.key) + ", last " + std::to_string(row.last) +
                         ", state " + std::to_string(state));
            const auto made =
                make_device_in(state, row.last == -1 ? std::nullopt : std::optional<int>(row.last));
            made->handle_key_report(key_report_type, static_cast<std::uint32_t>(row.key));
            EXPECT_EQ(keys(), row.passes ? Lines{std::to_string(row.key) + " "} : Lines{});
            EXPECT_EQ(made->last_hook_key(), row.last_after);
            Lines expected = {keycode_line(row.key)};
            if (row.key == HEADSET_KEY_HOOK || row.key == HEADSET_KEY_END_CALL) {
                expected.push_back(value_line(row.key, row.last));
                if (row.dropped_as != drop_repeat) {
                    expected.push_back(new_key_line(row.key));
                }
            }
            if (!row.dropped_as.empty()) {
                expected.push_back(row.dropped_as);
            }
            EXPECT_EQ(logger_->lines(), expected);
        }
    }
}

TEST_F(DeviceKeys, a_hook_key_that_is_repeated_while_a_call_rings_is_dropped) {
    const auto made = make_device_in(HEADSET_STATE_ALERTING);
    made->handle_key_report(key_report_type, HEADSET_KEY_HOOK);
    made->handle_key_report(key_report_type, HEADSET_KEY_HOOK);
    EXPECT_EQ(keys(), Lines{"2 "});
    EXPECT_EQ(logger_->lines(), (Lines{keycode_line(2), value_line(2, -1), new_key_line(2), keycode_line(2),
                                       value_line(2, 2), drop_repeat}));
}

TEST_F(DeviceKeys, a_hook_key_in_a_call_is_dropped_and_leaves_the_last_one) {
    const auto made = make_device_in(HEADSET_STATE_INUSE, HEADSET_KEY_END_CALL);
    made->handle_key_report(key_report_type, HEADSET_KEY_HOOK);
    EXPECT_EQ(keys(), Lines{});
    EXPECT_EQ(made->last_hook_key(), HEADSET_KEY_END_CALL);
}

TEST_F(DeviceKeys, a_dropped_hook_key_is_no_change) {
    const auto made = make_device_in(HEADSET_STATE_INUSE);
    made->handle_key_report(key_report_type, HEADSET_KEY_HOOK);
    made->headset_set_state(HEADSET_STATE_ALERTING);
    made->handle_key_report(key_report_type, HEADSET_KEY_HOOK);
    EXPECT_EQ(keys(), Lines{"2 "});
}

TEST_F(DeviceKeys, mute_repeated_is_never_dropped) {
    const auto made = make_device_in(HEADSET_STATE_INUSE);
    for (int i = 0; i < 3; ++i) {
        made->handle_key_report(key_report_type, HEADSET_KEY_MUTE);
    }
    EXPECT_EQ(keys(), (Lines{"1 ", "1 ", "1 "}));
}

TEST_F(DeviceKeys, only_the_low_16_bits_of_a_key_are_passed) {
    const auto made = make_device_in(HEADSET_STATE_IDLE);
    made->handle_key_report(key_report_type, 0x12345);
    EXPECT_EQ(keys(), Lines{std::to_string(0x2345) + " "});
}

TEST_F(DeviceKeys, a_report_of_another_type_carries_no_key) {
    const auto made = make_device_in(HEADSET_STATE_ALERTING);
    for (const std::uint32_t type : {0U, 7U, 9U, 0x108U}) {
        made->handle_key_report(type, HEADSET_KEY_HOOK);
    }
    EXPECT_EQ(keys(), Lines{});
    EXPECT_EQ(logger_->lines(), Lines(4, keycode_line(2)));
    EXPECT_EQ(made->last_hook_key(), -1);
}

TEST_F(DeviceKeys, without_a_callback_a_key_goes_nowhere) {
    const auto made = make_device_in(HEADSET_STATE_ALERTING);
    device::register_key_callback(nullptr);
    made->handle_key_report(key_report_type, HEADSET_KEY_HOOK);
    EXPECT_EQ(logger_->lines(), Lines{keycode_line(2)});
    EXPECT_EQ(made->last_hook_key(), -1);
}

TEST_F(DeviceKeys, a_later_callback_takes_the_place_of_the_earlier) {
    static int received = 0;
    received = 0;
    device::register_key_callback([](std::uint16_t key, const std::string&) { received = key; });
    make_device_in(HEADSET_STATE_IDLE)->handle_key_report(key_report_type, HEADSET_KEY_MUTE);
    EXPECT_EQ(received, HEADSET_KEY_MUTE);
    EXPECT_EQ(keys(), Lines{});
}

// ---- which state forgets the last hook key

TEST_F(DeviceKeys, only_the_idle_state_forgets_the_last_hook_key) {
    struct Row {
        std::uint32_t state;
        int last;
    };
    for (const Row& row :
         {Row{HEADSET_STATE_IDLE, -1}, Row{HEADSET_STATE_ALERTING, 2}, Row{HEADSET_STATE_INUSE, 2},
          Row{HEADSET_STATE_HOLD, 2}, Row{0x6, 2}, Row{0x100, -1}, Row{0x180, 2}}) {
        const auto made = make_device_in(HEADSET_STATE_ALERTING, HEADSET_KEY_HOOK);
        made->headset_set_state(row.state);
        EXPECT_EQ(made->last_hook_key(), row.last) << row.state;
    }
}

TEST_F(DeviceKeys, after_the_calls_ended_the_same_hook_key_passes_again) {
    const auto made = make_device_in(HEADSET_STATE_ALERTING, HEADSET_KEY_HOOK);
    made->headset_set_state(HEADSET_STATE_IDLE);
    made->headset_set_state(HEADSET_STATE_ALERTING);
    made->handle_key_report(key_report_type, HEADSET_KEY_HOOK);
    EXPECT_EQ(keys(), Lines{"2 "});
}

TEST_F(DeviceKeys, a_dropped_key_does_not_bring_back_what_the_idle_state_forgot_meanwhile) {
    const auto made = make_device_in(HEADSET_STATE_ALERTING, HEADSET_KEY_HOOK);
    logger_->on_line([&](const std::string& line) {
        if (line == drop_end_call) {
            made->headset_set_state(HEADSET_STATE_IDLE);
        }
    });
    made->handle_key_report(key_report_type, HEADSET_KEY_END_CALL);
    EXPECT_EQ(logger_->count(drop_end_call), 1U);
    EXPECT_EQ(made->last_hook_key(), -1);
}

// ---- from the report to the key

TEST_F(DeviceKeys, a_headset_that_is_not_the_active_one_is_ignored) {
    const auto made = make_device();
    made->handle_readback(hook_report);
    EXPECT_EQ(logger_->lines(),
              device_lines("handle_readback", {"ignore none active headset button action"}));
    EXPECT_EQ(driver_->calls(), Lines{});
    made->set_selected(true);
    made->handle_readback(hook_report);
    EXPECT_EQ(driver_->calls().size(), 2U);
    made->set_selected(false);
    made->handle_readback(hook_report);
    EXPECT_EQ(driver_->calls().size(), 2U);
}

TEST_F(DeviceKeys, a_headset_without_a_driver_drops_every_report) {
    const auto made = make_real_device(0x1234);
    made->set_selected(true);
    logger_->clear();
    made->handle_readback(hook_report);
    EXPECT_EQ(logger_->lines(), device_lines("process_read", {"enter", "unsupported"}));
    EXPECT_EQ(keys(), Lines{});
}

TEST_F(DeviceKeys, a_report_with_a_key_goes_to_the_driver_the_callback_and_the_driver_again) {
    const auto made = make_open_device();
    driver_->key = HEADSET_KEY_MUTE;
    driver_->report_follow_up = follow_up_show_in_use;
    Lines calls_before_key;
    on_key([&] { calls_before_key = driver_->calls(); });
    send({0x02, 0x02});
    EXPECT_EQ(keys(), Lines{"1 SN-1"});
    EXPECT_EQ(calls_before_key, Lines{"process_read(02 02)"});
    EXPECT_EQ(driver_->calls(),
              (Lines{"process_read(02 02)", "handle_headset_reponse(1)", "toggle_led(64)"}));
    EXPECT_EQ(log_beside_read_thread(), device_lines("process_read", {"enter"}) + Lines{keycode_line(1)} +
                                            device_lines("toggle_led_status", {"enter", "exit"}) +
                                            device_lines("process_read", {"exit"}));
    made->stop_device_thread();
}

TEST_F(DeviceKeys, an_empty_report_reaches_the_driver_too) {
    const auto made = make_device();
    made->process_read({});
    EXPECT_EQ(driver_->calls(), (Lines{"process_read()", "handle_headset_reponse(-1)"}));
}

/// One input report of 64 bytes and no id: mute is the first bit, a number fills the last byte.
Bytes descriptor_without_report_ids() {
    using namespace platform::virtual_headsets;
    // clang-format off
    return descriptor({
        usage_page(0x0B),        // Telephony page
        usage(0x05),             // Headset
        collection(application),
            logical_minimum(0),
            logical_maximum(1),
            usage(0x2F),         // Phone Mute
            report_size(1),
            report_count(1),
            input(data | variable),
            report_count(62 * 8 + 7),
            input(constant),     // padding
            usage(0x31),         // a number
            logical_maximum(255),
            report_size(8),
            report_count(1),
            input(data | variable),
        end_collection(),
    });
    // clang-format on
}

constexpr std::size_t unnumbered_report_size = 65;  ///< with the id 0 before it

TEST_F(DeviceKeys, a_report_of_64_bytes_without_an_id_arrives_whole) {
    const auto made = make_open_device(descriptor_without_report_ids());
    Bytes report(unnumbered_report_size, 0x00);
    report.back() = 0xAB;
    send(report);
    std::string shown;
    for (std::size_t i = 0; i < report.size() - 1; ++i) {
        shown += "00 ";
    }
    EXPECT_EQ(driver_->calls(), (Lines{"process_read(" + shown + "ab)", "handle_headset_reponse(-1)"}));
    made->stop_device_thread();
}

TEST_F(DeviceKeys, a_report_of_64_bytes_without_an_id_gives_the_key_that_it_holds) {
    plug(descriptor_without_report_ids());
    const auto made = make_real_device(jabra);
    made->set_device_handles(open_handle(), nullptr);
    made->set_selected(true);
    Bytes report(unnumbered_report_size, 0x00);
    send(report);
    EXPECT_EQ(keys(), Lines{});
    report[1] = 0x01;
    send(report);
    EXPECT_EQ(keys(), Lines{"1 SN-1"});
    report[1] = 0x00;
    send(report);
    EXPECT_EQ(keys(), Lines{"1 SN-1"});
    made->stop_device_thread();
}

TEST_F(DeviceKeys, a_report_without_a_key_still_toggles_indicators) {
    const auto made = make_device();
    for (const int no_key : {-1, -2}) {
        driver_->clear_calls();
        driver_->key = no_key;
        driver_->report_follow_up = 0x40;
        made->process_read(hook_report);
        EXPECT_EQ(driver_->calls(),
                  (Lines{"process_read(02 01)", "handle_headset_reponse(" + std::to_string(no_key) + ")",
                         "toggle_led(64)"}));
    }
    EXPECT_EQ(keys(), Lines{});
    EXPECT_EQ(logger_->lines_with("handle_key_report"), Lines{});
}

TEST_F(DeviceKeys, a_dropped_key_still_toggles_indicators) {
    const auto made = make_device_in(HEADSET_STATE_INUSE);
    driver_->clear_calls();
    driver_->key = HEADSET_KEY_HOOK;
    driver_->report_follow_up = 0x1;
    made->process_read(hook_report);
    EXPECT_EQ(driver_->calls(), (Lines{"process_read(02 01)", "handle_headset_reponse(2)", "toggle_led(1)"}));
    EXPECT_EQ(keys(), Lines{});
}

TEST_F(DeviceKeys, follow_up_bits_are_served_in_their_own_order) {
    const auto made = make_device();
    struct Row {
        std::uint32_t bits;
        Lines toggles;
    };
    const std::vector<Row> rows = {
        {0x0, {}},
        {0x7F,
         {"toggle_led(1)", "toggle_led(2)", "toggle_led(4)", "toggle_led(8)", "toggle_led(32)",
          "toggle_led(16)", "toggle_led(64)"}},
        {0x30, {"toggle_led(32)", "toggle_led(16)"}},
        {0x50, {"toggle_led(16)", "toggle_led(64)"}},
        {0xFFFFFF80, {}},
    };
    for (const Row& row : rows) {
        driver_->clear_calls();
        driver_->report_follow_up = row.bits;
        made->process_read(hook_report);
        EXPECT_EQ(driver_->calls(),
                  (Lines{"process_read(02 01)", "handle_headset_reponse(-1)"} + row.toggles))
            << row.bits;
    }
}

TEST_F(DeviceKeys, every_toggle_writes_a_report_of_its_own) {
    const auto made = make_open_device();
    driver_->report_follow_up = 0x30;
    driver_->toggle = {{0x02, 0x01}, 2};
    send(hook_report);
    EXPECT_EQ(outputs(), (Lines{"02 01 00 00 (4)", "02 01 00 00 (4)"}));
    made->stop_device_thread();
}

TEST_F(DeviceKeys, the_serial_is_reported_once_the_headset_was_opened) {
    const auto made = make_device();
    made->handle_key_report(key_report_type, HEADSET_KEY_MUTE);
    EXPECT_EQ(keys(), Lines{"1 "});
    made->get_device_info();
    made->handle_key_report(key_report_type, HEADSET_KEY_MUTE);
    EXPECT_EQ(keys(), (Lines{"1 ", "1 SN-1"}));
}

}  // namespace
