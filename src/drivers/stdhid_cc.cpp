#include "drivers/stdhid_cc.h"

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "base/plugin_log.h"
#include "drivers/dialect.h"
#include "hid/usage_input.h"
#include "hid/usage_output.h"

namespace headset_plugin {

namespace {

// HID Usage Tables, 11 (LED page).
constexpr std::uint16_t led_usage_page = 0x08;
constexpr std::uint16_t usage_mute = 0x09;
constexpr std::uint16_t usage_off_hook = 0x17;

constexpr auto no_length = static_cast<std::uint32_t>(-1);

/// Two hexadecimal digits and a blank for each byte.
std::string byte_values(std::span<const std::uint8_t> bytes) {
    std::string text;
    text.reserve(bytes.size() * 3);
    for (const std::uint8_t byte : bytes) {
        std::array<char, 4> digits;
        std::snprintf(digits.data(), digits.size(), "%02x ", byte);
        text += digits.data();
    }
    return text;
}

/// The bytes that a building function left, none where it left the length alone.
std::string built_byte_values(std::span<const std::uint8_t> output, std::uint32_t length) {
    return length == no_length ? std::string() : byte_values(output.first(length));
}

/// True when the headset's output reports fit into the buffer that they would be built in: another headset
/// may have taken the handle's place since the buffer was made.
bool fits(const HidHandle& device, std::span<const std::uint8_t> output) {
    return output.size() >= hid_output_report_length(device.get());
}

struct Indicators {
    std::uint8_t bits = 0;
    std::vector<std::uint16_t> usages;
    std::vector<std::uint32_t> values;

    void add(std::uint16_t usage, bool lit) {
        usages.push_back(usage);
        values.push_back(lit ? 1 : 0);
    }
};

/// Ringing and hold are recorded; no usage is sent for them. Either alone names no off-hook usage: the
/// indicator stays as it is.
Indicators indicators_for(std::uint32_t state, bool muted) {
    Indicators indicators{.bits = with_bit(state_bits(state), led_mute, muted), .usages = {}, .values = {}};
    if (state == HEADSET_STATE_IDLE) {
        indicators.add(usage_off_hook, false);
    }
    if ((state & HEADSET_STATE_INUSE) != 0) {
        indicators.add(usage_off_hook, true);
    }
    indicators.add(usage_mute, muted);
    return indicators;
}

}  // namespace

std::int32_t stdhid_cc::set_led_event_data(std::uint32_t state, std::span<std::uint8_t> output) {
    static constexpr const char* function = "headset_plugin::stdhid_cc::set_led_event_data";
    const std::uint8_t old_bits = headset_leds_state_;
    const Indicators indicators = indicators_for(state, (old_bits & led_mute) != 0);
    plugin_log(
        "3rdPartyHeadsetPlugin: STDHID: %s: old headset_leds_state_=0x%x, new headset_leds_state_=0x%x\n",
        function, old_bits, indicators.bits);
    headset_leds_state_ = indicators.bits;
    const HidHandle device = hid_device();
    if (!device || !fits(device, output)) {
        return nothing_to_write;
    }
    plugin_log("3rdPartyHeadsetPlugin: STDHID: %s: call hid_gen_led_events\n", function);
    std::uint32_t length = no_length;
    const int result = gen_led_events_for_usages(
        device.get(), led_usage_page, indicators.usages.data(), indicators.values.data(),
        static_cast<std::int32_t>(indicators.usages.size()), output.data(), &length);
    if (result == 0) {
        plugin_log("3rdPartyHeadsetPlugin: STDHID: %s: write-size=%d, byte-values: %s\n", function,
                   static_cast<int>(length), built_byte_values(output, length).c_str());
    }
    return static_cast<std::int32_t>(length);
}

std::int32_t stdhid_cc::set_mute_data(bool mute, std::span<std::uint8_t> output) {
    static constexpr const char* function = "headset_plugin::stdhid_cc::set_mute_data";
    const std::uint8_t old_bits = headset_leds_state_;
    const std::uint8_t new_bits = with_bit(old_bits, led_mute, mute);
    headset_leds_state_ = new_bits;
    plugin_log(
        "3rdPartyHeadsetPlugin: STDHID: %s: MUTE: old headset_leds_state_=0x%x, new headset_leds_state_=0x%x\n",
        function, old_bits, new_bits);
    const HidHandle device = hid_device();
    if (!device || !fits(device, output)) {
        return nothing_to_write;
    }
    plugin_log("3rdPartyHeadsetPlugin: STDHID: %s: call hid_gen_led_event\n", function);
    std::uint32_t length = no_length;
    const int result = gen_led_event_for_usage(device.get(), led_usage_page, usage_mute, mute ? 1 : 0,
                                               output.data(), &length);
    if (result == 0) {
        plugin_log("3rdPartyHeadsetPlugin: STDHID: %s: size=%d, byte-values: %s\n", function,
                   static_cast<int>(length), built_byte_values(output, length).c_str());
    }
    return static_cast<std::int32_t>(length);
}

std::int32_t stdhid_cc::process_read(std::span<const std::uint8_t> report) {
    plugin_log("3rdPartyHeadsetPlugin: STDHID: %s: read-len=%d, byte-values: %s\n",
               "headset_plugin::stdhid_cc::process_read", static_cast<int>(report.size()),
               byte_values(report).c_str());
    return process_read_for_mute(hid_device().get(), report);
}

std::uint32_t stdhid_cc::handle_headset_reponse(std::int32_t key_code) {
    const std::uint8_t bits = headset_leds_state_;
    plugin_log("3rdPartyHeadsetPlugin: STDHID: %s: enter, key_code = 0x%x, headset_leds_state_ = 0x%x\n",
               "headset_plugin::stdhid_cc::handle_headset_reponse", static_cast<unsigned>(key_code), bits);
    return (bits & led_off_hook) != 0 && key_code < 0 ? follow_up_show_in_use : 0;
}

std::int32_t stdhid_cc::toggle_led(std::uint32_t bit, std::span<std::uint8_t> output) {
    if (!hid_device() || output.data() == nullptr || (headset_leds_state_ & led_off_hook) == 0 ||
        bit != follow_up_show_in_use) {
        return nothing_to_write;
    }
    plugin_log("3rdPartyHeadsetPlugin: STDHID: %s: revert to HEADSET_STATE_INUSE\n",
               "headset_plugin::stdhid_cc::toggle_led");
    return set_led_event_data(HEADSET_STATE_INUSE, output);
}

std::uint32_t stdhid_cc::query_state_follow_up(std::uint32_t state) {
    return state == HEADSET_STATE_IDLE ? follow_up_unmute : 0;
}

}  // namespace headset_plugin
