#include "drivers/logitech_cc.h"

#include <gtest/gtest.h>
#include <type_traits>

#include "tests/drivers/fixed_reports.h"

namespace headset_plugin::driver_test::logitech {
namespace {

static_assert(!std::is_polymorphic_v<logitech_cc>, "no driver that a device could be given");

std::string line(const std::string& function, const std::string& text) {
    return "3rdPartyHeadsetPlugin: Logitech: headset_plugin::logitech_cc::" + function + ": " + text + "\n";
}

std::string changed(unsigned old_bits, unsigned new_bits) {
    return "old headset_leds_state_=" + hex(old_bits) + ", new headset_leds_state_=" + hex(new_bits);
}

class Logitech : public DriverFixture {
  protected:
    Built show(std::uint32_t state, std::size_t size = device_buffer_size) {
        log_->clear();
        return built([&](auto output) { return driver_.set_led_event_data(state, output); }, size);
    }
    Built show_mute(bool mute, std::size_t size = device_buffer_size) {
        log_->clear();
        return built([&](auto output) { return driver_.set_mute_data(mute, output); }, size);
    }
    std::int32_t read(const Bytes& report) {
        log_->clear();
        return driver_.process_read(report);
    }

    logitech_cc driver_;
};
class LogitechMute : public Logitech {};
class LogitechRead : public Logitech {};

/// The bits for the states 0 to 7.
constexpr std::uint8_t state_rows[] = {0x00, 0x04, 0x01, 0x05, 0x08, 0x0C, 0x01, 0x05};

// ---- headset states

TEST_F(Logitech, shows_every_state_after_every_other_and_keeps_mute) {
    for (const bool mute : {false, true}) {
        show_mute(mute);
        const unsigned muted = mute ? 0x02 : 0x00;
        for (std::uint32_t before = 0; before < std::size(state_rows); ++before) {
            for (const std::uint32_t state : headset_states) {
                show(before);
                const unsigned old_bits = state_rows[before] + muted;
                const unsigned new_bits = state_rows[state % 8] + muted;
                EXPECT_EQ(show(state), report({0x05, static_cast<std::uint8_t>(new_bits), 0x00}))
                    << hex(state);
                EXPECT_EQ(log_->lines(),
                          (Lines{line("set_led_event_data", "[Enter], headsetState=" + hex(state)),
                                 line("set_led_event_data", changed(old_bits, new_bits)),
                                 line("set_led_event_data", "[Exit]")}));
            }
        }
    }
}

TEST_F(Logitech, writes_between_its_last_two_lines) {
    Bytes output(3, unwritten);
    std::vector<Bytes> at_lines;
    log_->on_line([&](const std::string&) { at_lines.push_back(output); });
    driver_.set_led_event_data(HEADSET_STATE_INUSE, output);
    driver_.set_mute_data(true, output);
    log_->on_line({});
    const Bytes untouched(3, unwritten);
    const Bytes in_use = {0x05, 0x01, 0x00};
    const Bytes muted = {0x05, 0x03, 0x00};
    EXPECT_EQ(at_lines, (std::vector<Bytes>{untouched, untouched, in_use, in_use, in_use, muted}));
}

TEST_F(Logitech, records_a_state_whose_report_does_not_fit) {
    for (std::size_t size = 0; size <= memory_size; ++size) {
        show(HEADSET_STATE_IDLE);
        EXPECT_EQ(show(HEADSET_STATE_INUSE, size), size < 3 ? nothing() : report({0x05, 0x01, 0x00})) << size;
        EXPECT_EQ(log_->lines(),
                  (Lines{line("set_led_event_data", "[Enter], headsetState=0x2"),
                         line("set_led_event_data", changed(0, 1)), line("set_led_event_data", "[Exit]")}));
        EXPECT_EQ(show_mute(false), report({0x05, 0x01, 0x00})) << size;
    }
}

// ---- mute

TEST_F(LogitechMute, is_shown_beside_every_state) {
    for (std::uint32_t state = 0; state < std::size(state_rows); ++state) {
        show(state);
        unsigned old_bits = state_rows[state];
        for (const bool mute : {true, true, false, false}) {
            const unsigned new_bits = state_rows[state] + (mute ? 0x02U : 0x00U);
            EXPECT_EQ(show_mute(mute), report({0x05, static_cast<std::uint8_t>(new_bits), 0x00})) << state;
            EXPECT_EQ(log_->lines(),
                      (Lines{line("set_mute_data", mute ? "[Enter], mute = true" : "[Enter], mute = false"),
                             line("set_mute_data", "MUTE: " + changed(old_bits, new_bits)),
                             line("set_mute_data", "[Exit]")}));
            old_bits = new_bits;
        }
    }
}

TEST_F(LogitechMute, needs_a_buffer_of_three_bytes_and_says_no_more_without) {
    EXPECT_EQ(driver_.set_mute_data(true, {}), -1);
    for (std::size_t size = 0; size < 3; ++size) {
        EXPECT_EQ(show_mute(true, size), nothing()) << size;
        EXPECT_EQ(log_->lines(), Lines{line("set_mute_data", "[Enter], mute = true")});
    }
    EXPECT_EQ(show(HEADSET_STATE_IDLE), report({0x05, 0x00, 0x00}));
    for (std::size_t size = 3; size <= memory_size; ++size) {
        EXPECT_EQ(show_mute(true, size), report({0x05, 0x02, 0x00})) << size;
    }
}

// ---- input reports

TEST_F(LogitechRead, finds_every_key_and_logs_every_other) {
    const KeyMap keys = {{0x00, HEADSET_KEY_END_CALL},
                         {0x01, HEADSET_KEY_HOOK},
                         {0x0B, HEADSET_KEY_MUTE},
                         {0x80, HEADSET_KEY_LOGITECH_8}};
    for (const bool mute : {false, true}) {
        for (std::uint32_t state = 0; state < std::size(state_rows); ++state) {
            show_mute(mute);
            show(state);
            for (unsigned value = 0; value <= 0xFF; ++value) {
                const bool ignored = mute && value == 0x01;
                const std::int32_t key = ignored ? HEADSET_KEY_INVALID : key_in(keys, value);
                EXPECT_EQ(read(input(0x05, value)), key) << hex(value);
                Lines wanted = {line("process_read", first_bytes(input(0x05, value)))};
                if (ignored) {
                    wanted.push_back(line("process_read",
                                          "headset_leds_state_ is CONNECTED so ignore LOGITECH_KEY_ANSWER"));
                } else if (key == HEADSET_KEY_INVALID) {
                    wanted.push_back(line("process_read", "unsupported KEY " + hex(value)));
                }
                EXPECT_EQ(log_->lines(), wanted);
            }
        }
    }
}

TEST_F(LogitechRead, takes_the_answer_key_again_after_unmuting) {
    show_mute(true);
    EXPECT_EQ(read({0x05, 0x01}), HEADSET_KEY_INVALID);
    show_mute(false);
    EXPECT_EQ(read({0x05, 0x01}), HEADSET_KEY_HOOK);
}

TEST_F(LogitechRead, logs_every_other_report_id) {
    for (unsigned id = 0; id <= 0xFF; ++id) {
        if (id == 0x05) {
            continue;
        }
        for (const bool mute : {false, true}) {  // with which the answer key would be ignored
            show_mute(mute);
            for (const unsigned value : {0x00U, 0x01U, 0x0BU, 0x77U, 0x80U}) {
                EXPECT_EQ(read(input(id, value)), HEADSET_KEY_INVALID) << hex(id);
                EXPECT_EQ(log_->lines(), (Lines{line("process_read", first_bytes(input(id, value))),
                                                line("process_read", "unsupported read_buf[0] " + hex(id))}));
            }
        }
    }
}

TEST_F(LogitechRead, logs_eight_bytes_of_a_report_of_any_length) {
    const Bytes longest = {0x05, 0x01, 0x03, 0x10, 0xAB, 0xFF, 0x07, 0x80, 0x99};
    const Lines wanted[] = {
        {line("process_read", "0x0 0x0 0x0 0x0, 0x0 0x0 0x0 0x0"),
         line("process_read", "unsupported read_buf[0] 0x0")},
        {line("process_read", "0x5 0x0 0x0 0x0, 0x0 0x0 0x0 0x0")},
        {line("process_read", "0x5 0x1 0x0 0x0, 0x0 0x0 0x0 0x0")},
        {line("process_read", "0x5 0x1 0x3 0x0, 0x0 0x0 0x0 0x0")},
        {line("process_read", "0x5 0x1 0x3 0x10, 0x0 0x0 0x0 0x0")},
        {line("process_read", "0x5 0x1 0x3 0x10, 0xab 0x0 0x0 0x0")},
        {line("process_read", "0x5 0x1 0x3 0x10, 0xab 0xff 0x0 0x0")},
        {line("process_read", "0x5 0x1 0x3 0x10, 0xab 0xff 0x7 0x0")},
        {line("process_read", "0x5 0x1 0x3 0x10, 0xab 0xff 0x7 0x80")},
        {line("process_read", "0x5 0x1 0x3 0x10, 0xab 0xff 0x7 0x80")},
    };
    for (std::size_t length = 0; length <= longest.size(); ++length) {
        EXPECT_EQ(read(shortened(longest, length)), length < 2 ? HEADSET_KEY_INVALID : HEADSET_KEY_HOOK)
            << length;
        EXPECT_EQ(log_->lines(), wanted[length]);
    }
}

TEST_F(LogitechRead, finds_no_key_in_a_report_that_ends_before_it) {
    for (unsigned id = 0; id <= 0xFF; ++id) {
        const Bytes report = {static_cast<std::uint8_t>(id)};
        EXPECT_EQ(read(report), HEADSET_KEY_INVALID);
        Lines wanted = {line("process_read", first_bytes(report))};
        if (id != 0x05) {
            wanted.push_back(line("process_read", "unsupported read_buf[0] " + hex(id)));
        }
        EXPECT_EQ(log_->lines(), wanted);
    }
}

}  // namespace
}  // namespace headset_plugin::driver_test::logitech
