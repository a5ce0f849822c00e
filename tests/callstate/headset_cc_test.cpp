#include "callstate/headset_cc.h"

#include <gtest/gtest.h>
#include <limits>

#include "orvex/headset_plugin.h"
#include "tests/callstate/calls.h"

namespace callstate_test {
namespace {

using headset_plugin::headset_cc;
using headset_plugin::HEADSET_KEY_INVALID;
using headset_plugin::LED_MUTE;

TEST(HeadsetCc, starts_idle_dark_and_unmuted) {
    headset_cc cc;
    EXPECT_EQ(cc.headset_state(), 0U);
    EXPECT_FALSE(cc.isMuted());
    EXPECT_EQ(cc.getHeadsetLedState(), 0);
}

TEST(HeadsetCc, has_the_constants_that_layers_share) {
    using namespace headset_plugin;
    EXPECT_EQ(
        (std::vector{HEADSET_STATE_IDLE, HEADSET_STATE_ALERTING, HEADSET_STATE_INUSE, HEADSET_STATE_HOLD}),
        (std::vector<std::uint32_t>{0, 0x1, 0x2, 0x4}));
    EXPECT_EQ((std::vector{LED_OFF_HOOK, LED_RING, LED_MUTE, LED_HOLD}),
              (std::vector<std::uint32_t>{0x02, 0x04, 0x08, 0x20}));
    EXPECT_EQ((std::vector{HEADSET_KEY_INVALID, HEADSET_KEY_END_CALL, HEADSET_KEY_MUTE, HEADSET_KEY_HOOK,
                           HEADSET_KEY_4, HEADSET_KEY_LOGITECH_8, HEADSET_KEY_16, HEADSET_KEY_32}),
              (std::vector<std::int32_t>{-1, 0, 0x1, 0x2, 0x4, 0x8, 0x10, 0x20}));
    EXPECT_EQ((std::vector<std::uint32_t>{CALL_STATE_IDLE, CALL_STATE_ALERTING, CALL_STATE_CONNECTED,
                                          CALL_STATE_HOLD}),
              (std::vector<std::uint32_t>{0, 1, 2, 3}));
}

struct CallStateBit {
    std::uint32_t call_state;
    std::uint32_t bit;
};

constexpr CallStateBit call_state_bits[] = {
    {CALL_STATE_IDLE, 0},
    {CALL_STATE_ALERTING, 0x1},
    {CALL_STATE_CONNECTED, 0x2},
    {CALL_STATE_HOLD, 0x4},
    {4, 0},
    {5, 0},
    {0x80000000, 0},
    {0xFFFFFFFF, 0},
};

TEST(HeadsetCc, adds_the_bit_of_a_call_state_and_none_for_idle_or_unknown_ones) {
    for (const auto& [call_state, bit] : call_state_bits) {
        headset_cc cc;
        cc.addCallState(1, call_state);
        EXPECT_EQ(cc.headset_state(), bit) << "call state " << call_state;
    }
}

TEST(HeadsetCc, collects_bits_until_it_is_reset) {
    headset_cc cc;
    std::uint32_t all = 0;
    for (const auto& [call_state, bit] : call_state_bits) {
        cc.addCallState(1, call_state);
        all |= bit;
        EXPECT_EQ(cc.headset_state(), all) << "after call state " << call_state;
    }
    cc.resetHeadsetState();
    EXPECT_EQ(cc.headset_state(), 0U);
}

/// A headset_cc in this headset state.
headset_cc in_headset_state(std::uint32_t state) {
    headset_cc cc;
    for (const auto& [call_state, bit] : call_state_bits) {
        if ((state & bit) != 0) {
            cc.addCallState(1, call_state);
        }
    }
    return cc;
}

struct LedRow {
    std::uint32_t headset_state;
    std::int32_t leds;
    std::int32_t leds_when_muted;
};

constexpr LedRow led_rows[] = {
    {0x0, 0x00, 0x00}, {0x1, 0x04, 0x0C}, {0x2, 0x02, 0x0A}, {0x3, 0x06, 0x0E},
    {0x4, 0x20, 0x28}, {0x5, 0x24, 0x2C}, {0x6, 0x02, 0x0A}, {0x7, 0x06, 0x0E},
};

TEST(HeadsetCc, lights_the_leds_of_a_headset_state_in_use_before_held) {
    for (const LedRow& row : led_rows) {
        EXPECT_EQ(in_headset_state(row.headset_state).getHeadsetLedState(), row.leds)
            << "headset state " << row.headset_state;
    }
}

TEST(HeadsetCc, keeps_the_mute_led_in_every_headset_state_but_idle) {
    for (const LedRow& row : led_rows) {
        headset_cc cc = in_headset_state(row.headset_state);
        cc.setMute(true);
        EXPECT_EQ(cc.getHeadsetLedState(), row.leds_when_muted) << "headset state " << row.headset_state;
    }
}

TEST(HeadsetCc, changes_only_the_mute_led_when_muted_and_unmuted) {
    headset_cc cc = in_headset_state(0x5);
    cc.getHeadsetLedState();
    EXPECT_EQ(cc.setMute(true), 0x2CU);
    EXPECT_TRUE(cc.isMuted());
    EXPECT_EQ(cc.setMute(true), 0x2CU);
    EXPECT_EQ(cc.setMute(false), 0x24U);
    EXPECT_FALSE(cc.isMuted());
    EXPECT_EQ(cc.headset_state(), 0x5U);
}

TEST(HeadsetCc, keeps_the_mute_led_that_was_set_in_idle_until_a_state_shows_it) {
    headset_cc cc;
    EXPECT_EQ(cc.setMute(true), LED_MUTE);
    cc.addCallState(1, CALL_STATE_CONNECTED);
    EXPECT_EQ(cc.getHeadsetLedState(), 0x0A);
}

TEST(HeadsetCc, puts_the_mute_led_out_in_idle_and_stays_muted) {
    headset_cc cc;
    cc.setMute(true);
    EXPECT_EQ(cc.getHeadsetLedState(), 0);
    EXPECT_TRUE(cc.isMuted());

    cc.addCallState(1, CALL_STATE_CONNECTED);
    EXPECT_EQ(cc.getHeadsetLedState(), 0x02) << "the bit went out for good, although the flag stays";
}

TEST(HeadsetCc, logs_headset_state_and_leds) {
    const auto logger = test_support::install_layer_logger();
    headset_cc cc = in_headset_state(0x4);
    cc.getHeadsetLedState();
    EXPECT_EQ(logger->lines(), (Lines{cc_line("getHeadsetLedState", "headset_state=4 "),
                                      cc_line("getHeadsetLedState", "leds_state=32 ")}));
}

struct KeyOfValue {
    int value;
    std::int32_t key;
};

constexpr KeyOfValue keys_of_values[] = {
    {0x00, 0x00},
    // Mute, 8 and 4 in this order, whatever else is set.
    {0x01, 0x01},
    {0x03, 0x01},
    {0x05, 0x01},
    {0x09, 0x01},
    {0x0F, 0x01},
    {0x11, 0x01},
    {0x21, 0x01},
    {-1, 0x01},
    {std::numeric_limits<std::int16_t>::max(), 0x01},
    {0x08, 0x08},
    {0x0A, 0x08},
    {0x0C, 0x08},
    {0x18, 0x08},
    {-2, 0x08},
    {0x04, 0x04},
    {0x06, 0x04},
    {0x14, 0x04},
    {0x24, 0x04},
    {0x104, 0x04},
    // Hook, 16 and 32 only alone.
    {0x02, 0x02},
    {0x10, 0x10},
    {0x20, 0x20},
    {0x12, HEADSET_KEY_INVALID},
    {0x22, HEADSET_KEY_INVALID},
    {0x30, HEADSET_KEY_INVALID},
    {0x32, HEADSET_KEY_INVALID},
    // Neither.
    {0x40, HEADSET_KEY_INVALID},
    {0x80, HEADSET_KEY_INVALID},
    {0x100, HEADSET_KEY_INVALID},
    {0x102, HEADSET_KEY_INVALID},
    {std::numeric_limits<std::int16_t>::min(), HEADSET_KEY_INVALID},
};

TEST(HeadsetCc, reduces_a_key_report_value_to_a_key) {
    for (const auto& [value, key] : keys_of_values) {
        EXPECT_EQ(headset_cc::keyEventNotify(static_cast<std::int16_t>(value)), key) << "value " << value;
    }
}

TEST(HeadsetCc, logs_every_key_report_value_and_warns_of_invalid_ones) {
    const auto logger = test_support::install_layer_logger();
    for (const auto& [value, key] : keys_of_values) {
        Lines wanted = {cc_line("keyEventNotify", "keyReportValue: " + std::to_string(value))};
        if (key == HEADSET_KEY_INVALID) {
            wanted.push_back(
                cc_line("keyEventNotify", "Warning[read a invalid data: " + std::to_string(value) + "] "));
        }
        headset_cc::keyEventNotify(static_cast<std::int16_t>(value));
        EXPECT_EQ(logger->lines(), wanted);
        logger->clear();
    }
}

}  // namespace
}  // namespace callstate_test
