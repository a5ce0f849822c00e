#include "callstate/headset_cc.h"

#include <array>

#include "base/plugin_log.h"
#include "orvex/headset_plugin.h"

namespace headset_plugin {

namespace {

/// The headset bit by call state; CALL_STATE_IDLE has none.
constexpr std::array<std::uint32_t, 4> headset_bit = {0, HEADSET_STATE_ALERTING, HEADSET_STATE_INUSE,
                                                      HEADSET_STATE_HOLD};

}  // namespace

void headset_cc::resetHeadsetState() {
    headset_state_ = HEADSET_STATE_IDLE;
}

void headset_cc::addCallState(std::uint32_t /*call_number*/, std::uint32_t call_state) {
    if (call_state < headset_bit.size()) {
        headset_state_ |= headset_bit[call_state];
    }
}

std::uint32_t headset_cc::setMute(bool muted) {
    muted_ = muted;
    leds_state_ = muted ? leds_state_ | LED_MUTE : leds_state_ & ~LED_MUTE;
    return leds_state_;
}

std::int32_t headset_cc::getHeadsetLedState() {
    static constexpr const char* function = "headset_plugin::headset_cc::getHeadsetLedState";
    plugin_log("HeadsetPlugin: %s: headset_state=%d \n", function, static_cast<int>(headset_state_));
    std::uint32_t leds = 0;
    if ((headset_state_ & HEADSET_STATE_ALERTING) != 0) {
        leds |= LED_RING;
    }
    if ((headset_state_ & HEADSET_STATE_INUSE) != 0) {
        leds |= LED_OFF_HOOK;
    } else if ((headset_state_ & HEADSET_STATE_HOLD) != 0) {
        leds |= LED_HOLD;
    }
    leds |= leds_state_ & LED_MUTE;
    if (headset_state_ == HEADSET_STATE_IDLE) {
        leds = 0;
    }
    leds_state_ = leds;
    plugin_log("HeadsetPlugin: %s: leds_state=%d \n", function, static_cast<int>(leds_state_));
    return static_cast<std::int32_t>(leds_state_);
}

std::int32_t headset_cc::keyEventNotify(std::int16_t value) {
    static constexpr const char* function = "headset_plugin::headset_cc::keyEventNotify";
    plugin_log("HeadsetPlugin: %s: keyReportValue: %d\n", function, value);
    for (const std::int32_t bit : {HEADSET_KEY_MUTE, HEADSET_KEY_LOGITECH_8, HEADSET_KEY_4}) {
        if ((value & bit) != 0) {
            return bit;
        }
    }
    for (const std::int32_t key : {HEADSET_KEY_END_CALL, HEADSET_KEY_HOOK, HEADSET_KEY_32, HEADSET_KEY_16}) {
        if (value == key) {
            return key;
        }
    }
    plugin_log("HeadsetPlugin: %s: Warning[read a invalid data: %d] \n", function, value);
    return HEADSET_KEY_INVALID;
}

}  // namespace headset_plugin
