#include "drivers/stdhid_cc.h"

#include <algorithm>
#include <array>
#include <future>
#include <gtest/gtest.h>

#include "base/headset_types.h"
#include "tests/drivers/driver_fixture.h"

namespace headset_plugin::driver_test::stdhid {
namespace {

using namespace platform::virtual_headsets;
using platform::hid_test::described;
using platform::hid_test::led_page;
using platform::hid_test::plug;
using platform::hid_test::telephony;

constexpr std::uint32_t revert_bit = 0x40;
constexpr std::uint32_t all_states = 8;  // alerting, in use and held, each or not

std::string line(const std::string& function, const std::string& text) {
    return "3rdPartyHeadsetPlugin: STDHID: headset_plugin::stdhid_cc::" + function + ": " + text + "\n";
}

std::string changed(unsigned old_bits, unsigned new_bits) {
    return "old headset_leds_state_=" + hex(old_bits) + ", new headset_leds_state_=" + hex(new_bits);
}

class StdHid : public DriverFixture {
  protected:
    using Output = std::array<std::uint8_t, 4>;
    static constexpr std::uint8_t unwritten = 0xEE;

    void lend(HidHandle handle) {
        handle_ = std::move(handle);
        driver_.set_hid_device(handle_);
        log_->clear();
    }

    /// What is to be written: the bytes, or none for -1, which leaves the buffer alone.
    template <typename Build>
    static Bytes built(const Build& build) {
        Output output;
        output.fill(unwritten);
        const std::int32_t length = build(output);
        if (length <= 0) {
            EXPECT_EQ(length, -1);
            EXPECT_EQ(std::count(output.begin(), output.end(), unwritten), std::ssize(output));
            return {};
        }
        return {output.begin(), output.begin() + length};
    }
    Bytes show(std::uint32_t state) {
        return built([&](Output& output) { return driver_.set_led_event_data(state, output); });
    }
    Bytes show_mute(bool mute) {
        return built([&](Output& output) { return driver_.set_mute_data(mute, output); });
    }
    Bytes toggle(std::uint32_t bit) {
        return built([&](Output& output) { return driver_.toggle_led(bit, output); });
    }

    /// The driver's record of its indicators, as it logs it.
    std::string leds_state() {
        log_->clear();
        driver_.handle_headset_reponse(HEADSET_KEY_MUTE);
        const std::string text = log_->lines().at(0);
        return text.substr(text.rfind(' ') + 1, text.size() - text.rfind(' ') - 2);
    }

    HidHandle handle_;
    stdhid_cc driver_{0x24C9};
};
class StdHidModels : public StdHid {};
class StdHidRead : public StdHid {};
class StdHidFollowUp : public StdHid {};

// ---- the record of the indicators

struct StateRow {
    std::uint32_t state;
    unsigned bits;
};

constexpr StateRow state_rows[] = {
    {HEADSET_STATE_IDLE, 0x00},
    {HEADSET_STATE_ALERTING, 0x04},
    {HEADSET_STATE_INUSE, 0x01},
    {HEADSET_STATE_ALERTING | HEADSET_STATE_INUSE, 0x05},
    {HEADSET_STATE_HOLD, 0x08},
    {HEADSET_STATE_ALERTING | HEADSET_STATE_HOLD, 0x0C},
    {HEADSET_STATE_INUSE | HEADSET_STATE_HOLD, 0x01},  // in use wins over hold
    {HEADSET_STATE_ALERTING | HEADSET_STATE_INUSE | HEADSET_STATE_HOLD, 0x05},
};
static_assert(std::size(state_rows) == all_states);

TEST_F(StdHid, records_every_state_and_keeps_mute) {
    for (const unsigned mute : {0x00U, 0x02U}) {
        for (const std::uint32_t state : headset_states) {
            const StateRow& row = state_rows[state % all_states];
            driver_.set_mute_data(mute != 0, {});
            driver_.set_led_event_data(HEADSET_STATE_IDLE, {});
            log_->clear();
            EXPECT_EQ(driver_.set_led_event_data(state, {}), -1);
            EXPECT_EQ(log_->lines(), Lines{line("set_led_event_data", changed(mute, row.bits + mute))})
                << hex(state);
        }
    }
}

TEST_F(StdHid, records_mute_beside_every_state) {
    for (const StateRow& row : state_rows) {
        driver_.set_led_event_data(row.state, {});
        log_->clear();
        driver_.set_mute_data(true, {});
        driver_.set_mute_data(true, {});
        driver_.set_mute_data(false, {});
        const unsigned muted = row.bits | 0x02;
        EXPECT_EQ(log_->lines(), (Lines{line("set_mute_data", "MUTE: " + changed(row.bits, muted)),
                                        line("set_mute_data", "MUTE: " + changed(muted, muted)),
                                        line("set_mute_data", "MUTE: " + changed(muted, row.bits))}));
    }
}

TEST_F(StdHid, without_handle_has_nothing_to_write_but_keeps_its_record) {
    EXPECT_EQ(show(HEADSET_STATE_INUSE), Bytes{});
    EXPECT_EQ(show_mute(true), Bytes{});
    EXPECT_EQ(log_->lines(), (Lines{line("set_led_event_data", changed(0, 1)),
                                    line("set_mute_data", "MUTE: " + changed(1, 3))}));
    EXPECT_EQ(leds_state(), "0x3");
}

TEST_F(StdHid, has_nothing_to_write_after_the_headset_was_closed) {
    lend(open_model("jabra-link-380c"));
    handle_.reset();
    EXPECT_EQ(show(HEADSET_STATE_INUSE), Bytes{});
    EXPECT_EQ(show_mute(true), Bytes{});
    EXPECT_EQ(toggle(revert_bit), Bytes{});
    EXPECT_EQ(leds_state(), "0x3");
}

// ---- reports

/// The reports of one model with the driver's usages: bytes for idle, for ringing or held alone, for in use.
struct ModelRow {
    const char* model;
    std::array<Bytes, 3> unmuted;
    std::array<Bytes, 3> muted;
    Bytes mute_on;
    Bytes mute_off;
};

const ModelRow model_rows[] = {
    {"jabra-link-380c",
     {{{0x02, 0x00, 0x00}, {0x02, 0x00, 0x00}, {0x02, 0x01, 0x00}}},
     {{{0x02, 0x04, 0x00}, {0x02, 0x04, 0x00}, {0x02, 0x05, 0x00}}},
     {0x02, 0x04, 0x00},
     {0x02, 0x00, 0x00}},
    {"jabra-evolve-link-ms",
     {{{0x02, 0x00, 0x00}, {0x02, 0x00, 0x00}, {0x02, 0x01, 0x00}}},
     {{{0x02, 0x02, 0x00}, {0x02, 0x02, 0x00}, {0x02, 0x03, 0x00}}},
     {0x02, 0x02, 0x00},
     {0x02, 0x00, 0x00}},
    {"epos-impact-d",
     {{{0x03, 0x00}, {0x03, 0x00}, {0x03, 0x02}}},
     {{{0x03, 0x10}, {0x03, 0x10}, {0x03, 0x12}}},
     {0x03, 0x10},
     {0x03, 0x00}},
    {"sennheiser-sc-660",
     {{{0x09, 0x00}, {0x09, 0x00}, {0x09, 0x02}}},
     {{{0x09, 0x01}, {0x09, 0x01}, {0x09, 0x03}}},
     {0x09, 0x01},
     {0x09, 0x00}},
    // A report for each indicator: that of the first usage is sent.
    {"poly-blackwire-3220",
     {{{0x17, 0x00}, {0x09, 0x00}, {0x17, 0x01}}},
     {{{0x17, 0x00}, {0x09, 0x01}, {0x17, 0x01}}},
     {0x09, 0x01},
     {0x09, 0x00}},
    {"poly-voyager-base",
     {{{0x04, 0x00}, {0x03, 0x00}, {0x04, 0x01}}},
     {{{0x04, 0x00}, {0x03, 0x01}, {0x04, 0x01}}},
     {0x03, 0x01},
     {0x03, 0x00}},
    // No off-hook indicator: what names it builds no report.
    {"logitech-mx-brio", {{{}, {0x05, 0x00}, {}}}, {{{}, {0x05, 0x01}, {}}}, {0x05, 0x01}, {0x05, 0x00}},
};

/// The column of a state in a row's reports.
std::size_t column(std::uint32_t state) {
    if (state == HEADSET_STATE_IDLE) {
        return 0;
    }
    return (state & HEADSET_STATE_INUSE) != 0 ? 2 : 1;
}

TEST_F(StdHidModels, show_every_state_in_their_own_reports) {
    for (const ModelRow& row : model_rows) {
        for (const bool mute : {false, true}) {
            for (std::uint32_t state = 0; state < all_states; ++state) {
                SCOPED_TRACE(std::string(row.model) + ", state " + std::to_string(state) +
                             (mute ? ", muted" : ""));
                lend(open_model(row.model));
                EXPECT_EQ(show_mute(mute), mute ? row.mute_on : row.mute_off);
                EXPECT_EQ(show(state), (mute ? row.muted : row.unmuted)[column(state)]);
            }
        }
    }
}

TEST_F(StdHidModels, show_with_every_state_what_was_recorded_without_a_handle) {
    for (const ModelRow& row : model_rows) {
        for (std::uint32_t state = 0; state < all_states; ++state) {
            const HidHandle handle = open_model(row.model);
            // Unmuted last: the indicator that is lit by then has to be put out.
            for (const bool mute : {true, false}) {
                SCOPED_TRACE(std::string(row.model) + ", state " + std::to_string(state) +
                             (mute ? ", muted" : ""));
                lend(nullptr);
                EXPECT_EQ(show_mute(mute), Bytes{});
                lend(handle);
                EXPECT_EQ(show(state), (mute ? row.muted : row.unmuted)[column(state)]);
            }
        }
    }
}

TEST_F(StdHidModels, take_flags_that_mean_nothing_for_no_state_but_not_for_idle) {
    for (const ModelRow& row : model_rows) {
        lend(open_model(row.model));
        for (const std::uint32_t state : headset_states) {
            // Off-hook, where a state does not name it, stays as idle left it.
            show(HEADSET_STATE_IDLE);
            EXPECT_EQ(show(state), row.unmuted[column(state)]) << row.model << ", " << hex(state);
        }
    }
}

TEST_F(StdHidModels, are_all_those_of_the_vendors_that_have_the_driver) {
    for (const HeadsetModel* model : models()) {
        const auto* const row =
            std::find_if(std::begin(model_rows), std::end(model_rows),
                         [&](const ModelRow& known) { return std::string_view(known.model) == model->key; });
        const bool has_telephony = std::string_view(model->key) != "logitech-g535";
        const bool has_driver =
            create_driver(model->vendor_id, model->product_id) != nullptr && has_telephony;
        EXPECT_EQ(row != std::end(model_rows), has_driver) << model->key;
    }
}

TEST_F(StdHidModels, without_indicators_have_nothing_to_write) {
    constexpr platform::USAGE consumer_page = 0x0C;
    const int headset = platform::hid_test::plug_model(platform_.bus(), "logitech-g535");
    lend(open_plugged(headset, consumer_page));
    for (std::uint32_t state = 0; state < all_states; ++state) {
        EXPECT_EQ(show(state), Bytes{}) << state;
    }
    EXPECT_EQ(show_mute(true), Bytes{});
}

TEST_F(StdHidModels, end_with_the_same_indicators_whatever_came_before) {
    lend(open_model("jabra-link-380c"));
    show(HEADSET_STATE_INUSE);
    // Ringing or held alone leaves off-hook as it was last sent.
    EXPECT_EQ(show(HEADSET_STATE_INUSE | HEADSET_STATE_HOLD), (Bytes{0x02, 0x01, 0x00}));
    EXPECT_EQ(show(HEADSET_STATE_HOLD), (Bytes{0x02, 0x01, 0x00}));
    EXPECT_EQ(show(HEADSET_STATE_ALERTING), (Bytes{0x02, 0x01, 0x00}));
    EXPECT_EQ(show(HEADSET_STATE_IDLE), (Bytes{0x02, 0x00, 0x00}));
}

TEST_F(StdHid, rings_beside_a_call_in_use_with_off_hook_and_mute) {
    lend(open_model("jabra-link-380c"));
    show_mute(true);
    EXPECT_EQ(show(HEADSET_STATE_ALERTING | HEADSET_STATE_INUSE), (Bytes{0x02, 0x05, 0x00}));
    EXPECT_EQ(leds_state(), "0x7");
}

TEST_F(StdHid, sends_only_mute_for_a_state_without_a_known_flag) {
    lend(open_model("poly-blackwire-3220"));
    EXPECT_EQ(show(0x8), (Bytes{0x09, 0x00}));
    EXPECT_EQ(leds_state(), "0x0");
}

TEST_F(StdHid, logs_a_state_from_request_to_bytes) {
    lend(open_model("jabra-link-380c"));
    show(HEADSET_STATE_INUSE);
    Lines own = log_->lines_with("STDHID");
    EXPECT_EQ(own, (Lines{line("set_led_event_data", changed(0, 1)),
                          line("set_led_event_data", "call hid_gen_led_events"),
                          line("set_led_event_data", "write-size=3, byte-values: 02 01 00 ")}));
    EXPECT_TRUE(
        test_support::in_order(log_->lines(), {own[1], "HID_WIN: hid_gen_led_events: [Enter]\n", own[2]}));
}

TEST_F(StdHid, logs_mute_from_request_to_bytes) {
    lend(open_model("jabra-link-380c"));
    show_mute(true);
    Lines own = log_->lines_with("STDHID");
    EXPECT_EQ(own, (Lines{line("set_mute_data", "MUTE: " + changed(0, 2)),
                          line("set_mute_data", "call hid_gen_led_event"),
                          line("set_mute_data", "size=3, byte-values: 02 04 00 ")}));
    EXPECT_TRUE(
        test_support::in_order(log_->lines(), {own[1], "HID_WIN: hid_gen_led_event: [Enter]\n", own[2]}));
}

TEST_F(StdHid, logs_no_bytes_where_the_headset_lacks_an_indicator) {
    lend(open_model("logitech-mx-brio"));
    EXPECT_EQ(show(HEADSET_STATE_INUSE), Bytes{});
    EXPECT_EQ(log_->lines().back(), line("set_led_event_data", "write-size=-1, byte-values: "));
}

TEST_F(StdHid, has_nothing_to_write_or_log_when_the_report_cannot_be_built) {
    lend(open_model("jabra-link-380c"));
    platform::hid_test::ScriptedParser parser;
    parser.failing = {.function = "HidP_SetUsages"};
    platform_.set_parser(&parser);
    EXPECT_EQ(show(HEADSET_STATE_INUSE), Bytes{});
    EXPECT_EQ(show_mute(true), Bytes{});
    EXPECT_TRUE(log_->lines_with("byte-values").empty());
    EXPECT_EQ(leds_state(), "0x3");
}

TEST_F(StdHid, never_writes_past_a_buffer_that_is_shorter_than_the_report) {
    const auto long_report = telephony({report_id(5), usage_page(led_page), usage(0x17), output(variable),
                                        usage(0x09), output(variable), report_count(38), output(constant)});
    lend(open_plugged(plug(platform_.bus(), described(long_report))));
    EXPECT_EQ(show(HEADSET_STATE_INUSE), Bytes{});
    EXPECT_EQ(show_mute(true), Bytes{});
    EXPECT_EQ(leds_state(), "0x3");

    std::array<std::uint8_t, 6> output{};
    EXPECT_EQ(driver_.set_led_event_data(HEADSET_STATE_INUSE, output), 6);
    EXPECT_EQ(output, (std::array<std::uint8_t, 6>{0x05, 0x03, 0, 0, 0, 0}));
    EXPECT_EQ(driver_.set_mute_data(false, output), 6);
    EXPECT_EQ(output, (std::array<std::uint8_t, 6>{0x05, 0x01, 0, 0, 0, 0}));
}

TEST_F(StdHid, builds_reports_in_buffers_of_their_length_and_above) {
    lend(open_model("jabra-link-380c"));
    const auto built_in = [](std::size_t size, const auto& build) {
        Bytes output(size, unwritten);
        const std::int32_t length = build(output);
        return std::pair(length, output);
    };
    for (std::size_t size = 0; size <= 8; ++size) {
        SCOPED_TRACE(size);
        const bool fits = size >= 3;  // the length of its reports
        const auto wanted = [&](Bytes report) {
            report.resize(size, unwritten);
            return fits ? std::pair(3, report) : std::pair(-1, Bytes(size, unwritten));
        };
        driver_.set_led_event_data(HEADSET_STATE_IDLE, {});
        driver_.set_mute_data(false, {});
        log_->clear();
        EXPECT_EQ(
            built_in(size, [&](auto& out) { return driver_.set_led_event_data(HEADSET_STATE_INUSE, out); }),
            wanted({0x02, 0x01, 0x00}));
        EXPECT_EQ(built_in(size, [&](auto& out) { return driver_.set_mute_data(true, out); }),
                  wanted({0x02, 0x05, 0x00}));
        EXPECT_EQ(built_in(size, [&](auto& out) { return driver_.toggle_led(revert_bit, out); }),
                  wanted({0x02, 0x05, 0x00}));
        EXPECT_EQ(log_->lines_with("byte-values").size(), fits ? 3U : 0U);
        EXPECT_EQ(leds_state(), "0x3");
    }
}

TEST_F(StdHid, has_nothing_to_write_without_a_buffer_where_the_headset_has_no_output_report) {
    lend(open_plugged(plug(platform_.bus(), described(telephony({usage(0x2F), input(variable)})))));
    EXPECT_EQ(driver_.set_led_event_data(HEADSET_STATE_INUSE, {}), -1);
    EXPECT_EQ(driver_.set_mute_data(true, {}), -1);
    EXPECT_EQ(show(HEADSET_STATE_INUSE), Bytes{});
    EXPECT_EQ(show_mute(true), Bytes{});
    EXPECT_EQ(leds_state(), "0x3");
}

TEST_F(StdHid, is_the_same_on_all_products) {
    const HidHandle handle = open_model("jabra-link-380c");
    for (const std::uint32_t product_id : product_ids) {
        stdhid_cc driver(product_id);
        driver.set_hid_device(handle);
        log_->clear();
        Output output{};
        EXPECT_EQ(driver.set_led_event_data(HEADSET_STATE_INUSE, output), 3) << hex(product_id);
        EXPECT_EQ(output, (Output{0x02, 0x01, 0x00})) << hex(product_id);
        EXPECT_EQ(driver.process_read(Bytes{0x02, 0x08, 0x00}), HEADSET_KEY_MUTE) << hex(product_id);
        EXPECT_EQ(driver.handle_headset_reponse(HEADSET_KEY_INVALID), revert_bit) << hex(product_id);
    }
}

// ---- input reports

TEST_F(StdHidRead, finds_the_mute_key_and_no_hook_key) {
    lend(open_model("jabra-link-380c"));
    EXPECT_EQ(driver_.process_read(Bytes{0x02, 0x08, 0x00}), HEADSET_KEY_MUTE);
    EXPECT_EQ(log_->lines().front(), line("process_read", "read-len=3, byte-values: 02 08 00 "));
    EXPECT_EQ(driver_.process_read(Bytes{0x02, 0x01, 0x00}), HEADSET_KEY_INVALID);
    EXPECT_EQ(driver_.process_read(Bytes{0x02, 0x00, 0x00}), HEADSET_KEY_INVALID);
}

TEST_F(StdHidRead, finds_mute_in_one_bit_of_all_bytes) {
    lend(open_model("jabra-link-380c"));
    for (unsigned value = 0; value <= 0xFF; ++value) {
        const auto byte = static_cast<std::uint8_t>(value);
        EXPECT_EQ(driver_.process_read(Bytes{0x02, byte, 0x00}),
                  value % 0x10 >= 0x08 ? HEADSET_KEY_MUTE : HEADSET_KEY_INVALID)
            << hex(value);
        EXPECT_EQ(driver_.process_read(Bytes{0x02, 0x00, byte}), HEADSET_KEY_INVALID) << hex(value);
        log_->clear();
    }
}

TEST_F(StdHidRead, keeps_what_reports_of_other_ids_leave_as_it_was) {
    lend(open_model("jabra-link-380c"));
    for (const std::uint8_t held : Bytes{0x00, 0x08}) {
        const std::int32_t key = held != 0 ? HEADSET_KEY_MUTE : HEADSET_KEY_INVALID;
        EXPECT_EQ(driver_.process_read(Bytes{0x02, held, 0x00}), key);
        for (unsigned id = 0; id <= 0xFF; ++id) {
            if (id == 0x02) {
                continue;
            }
            for (const std::uint8_t value : Bytes{0x00, 0x08, 0xFF}) {
                EXPECT_EQ(driver_.process_read(Bytes{static_cast<std::uint8_t>(id), value, value}), key)
                    << hex(id) << ", " << hex(value);
            }
            log_->clear();
        }
    }
}

TEST_F(StdHidRead, takes_missing_bytes_for_zeros_and_logs_those_that_came) {
    lend(open_model("jabra-link-380c"));
    EXPECT_EQ(driver_.process_read(Bytes{0x02, 0x08}), HEADSET_KEY_MUTE);
    EXPECT_EQ(log_->lines().front(), line("process_read", "read-len=2, byte-values: 02 08 "));
    log_->clear();
    EXPECT_EQ(driver_.process_read(Bytes{0x02}), HEADSET_KEY_INVALID);
    EXPECT_EQ(log_->lines().front(), line("process_read", "read-len=1, byte-values: 02 "));
}

TEST_F(StdHidRead, logs_every_byte_of_a_long_report) {
    Bytes report(100, 0xAB);
    EXPECT_EQ(driver_.process_read(report), HEADSET_KEY_INVALID);
    std::string bytes;
    for (std::size_t i = 0; i < report.size(); ++i) {
        bytes += "ab ";
    }
    EXPECT_EQ(log_->lines(), Lines{line("process_read", "read-len=100, byte-values: " + bytes)});
}

TEST_F(StdHidRead, finds_nothing_in_an_empty_report) {
    lend(open_model("jabra-link-380c"));
    EXPECT_EQ(driver_.process_read({}), HEADSET_KEY_INVALID);
    EXPECT_EQ(log_->lines(), Lines{line("process_read", "read-len=0, byte-values: ")});
}

TEST_F(StdHidRead, finds_nothing_without_a_handle) {
    EXPECT_EQ(driver_.process_read(Bytes{0x02, 0x08, 0x00}), HEADSET_KEY_INVALID);
    EXPECT_EQ(log_->lines(), Lines{line("process_read", "read-len=3, byte-values: 02 08 00 ")});
}

// ---- follow-ups

TEST_F(StdHidFollowUp, to_a_report_without_a_key_is_asked_for_while_in_use) {
    for (const bool mute : {false, true}) {
        driver_.set_mute_data(mute, {});
        for (const std::uint32_t state : headset_states) {
            driver_.set_led_event_data(state, {});
            const bool in_use = state_rows[state % all_states].bits % 2 == 1;
            for (const std::int32_t key : key_codes) {
                EXPECT_EQ(driver_.handle_headset_reponse(key), in_use && key < 0 ? revert_bit : 0U)
                    << hex(state) << ", " << key;
            }
            log_->clear();
        }
    }
}

TEST_F(StdHidFollowUp, is_logged_with_key_and_indicators) {
    driver_.set_led_event_data(HEADSET_STATE_INUSE, {});
    log_->clear();
    driver_.handle_headset_reponse(HEADSET_KEY_INVALID);
    driver_.handle_headset_reponse(HEADSET_KEY_HOOK);
    EXPECT_EQ(
        log_->lines(),
        (Lines{line("handle_headset_reponse", "enter, key_code = 0xffffffff, headset_leds_state_ = 0x1"),
               line("handle_headset_reponse", "enter, key_code = 0x2, headset_leds_state_ = 0x1")}));
}

TEST_F(StdHidFollowUp, to_an_unknown_report_sends_off_hook_and_mute_again) {
    lend(open_model("jabra-link-380c"));
    show_mute(true);
    show(HEADSET_STATE_INUSE);
    const std::int32_t key = driver_.process_read(Bytes{0x77, 0xFF, 0xFF});
    EXPECT_EQ(key, HEADSET_KEY_INVALID);
    ASSERT_EQ(driver_.handle_headset_reponse(key), revert_bit);
    log_->clear();
    EXPECT_EQ(toggle(revert_bit), (Bytes{0x02, 0x05, 0x00}));
    EXPECT_EQ(log_->lines().front(), line("toggle_led", "revert to HEADSET_STATE_INUSE"));
    EXPECT_EQ(log_->lines().back(), line("set_led_event_data", "write-size=3, byte-values: 02 05 00 "));
}

TEST_F(StdHidFollowUp, forgets_a_ringing_call_beside_the_one_in_use) {
    lend(open_model("jabra-link-380c"));
    show(HEADSET_STATE_ALERTING | HEADSET_STATE_INUSE);
    toggle(revert_bit);
    EXPECT_EQ(leds_state(), "0x1");
}

TEST_F(StdHidFollowUp, needs_its_own_bit_alone) {
    lend(open_model("jabra-link-380c"));
    show(HEADSET_STATE_INUSE);
    log_->clear();
    for (const std::uint32_t mask : follow_up_masks) {
        if (mask != revert_bit) {
            EXPECT_EQ(toggle(mask), Bytes{}) << hex(mask);
        }
    }
    EXPECT_TRUE(log_->lines().empty());
    EXPECT_EQ(toggle(revert_bit), (Bytes{0x02, 0x01, 0x00}));
}

TEST_F(StdHidFollowUp, needs_the_in_use_indicator) {
    lend(open_model("jabra-link-380c"));
    for (const std::uint32_t state : {HEADSET_STATE_IDLE, HEADSET_STATE_ALERTING, HEADSET_STATE_HOLD}) {
        show(state);
        EXPECT_EQ(toggle(revert_bit), Bytes{}) << state;
    }
    EXPECT_TRUE(log_->lines_with("revert").empty());
}

TEST_F(StdHidFollowUp, needs_a_handle_and_a_buffer) {
    show(HEADSET_STATE_INUSE);
    EXPECT_EQ(toggle(revert_bit), Bytes{});
    lend(open_model("jabra-link-380c"));
    EXPECT_EQ(driver_.toggle_led(revert_bit, {}), -1);
    EXPECT_TRUE(log_->lines().empty());
}

TEST_F(StdHidFollowUp, to_a_state_is_unmuting_when_idle_and_nothing_else) {
    for (const bool mute : {false, true}) {
        driver_.set_mute_data(mute, {});
        for (const StateRow& shown : state_rows) {
            driver_.set_led_event_data(shown.state, {});
            log_->clear();
            for (const std::uint32_t state : headset_states) {
                EXPECT_EQ(driver_.query_state_follow_up(state), state == 0 ? 4U : 0U) << hex(state);
            }
            EXPECT_TRUE(log_->lines().empty());
        }
    }
}

// ---- threads

TEST_F(StdHid, may_read_keys_on_one_thread_while_another_shows_states) {
    lend(open_model("jabra-link-380c"));
    constexpr int rounds = 50;
    auto reading = std::async(std::launch::async, [&] {
        int mutes = 0;
        for (int i = 0; i < rounds; ++i) {
            const std::int32_t key = driver_.process_read(Bytes{0x02, 0x08, 0x00});
            driver_.handle_headset_reponse(key);
            mutes += key;
        }
        return mutes;
    });
    for (int i = 0; i < rounds; ++i) {
        EXPECT_EQ(show(HEADSET_STATE_INUSE).size(), 3U);
        EXPECT_EQ(show_mute(i % 2 == 0).size(), 3U);
    }
    EXPECT_EQ(reading.get(), rounds);
}

}  // namespace
}  // namespace headset_plugin::driver_test::stdhid
