#include "drivers/logitech_cc.h"

#include "base/plugin_log.h"
#include "drivers/dialect.h"

namespace headset_plugin {

namespace {

constexpr std::uint8_t report_id = 0x05;

constexpr std::uint8_t LOGITECH_KEY_ANSWER = 0x01;

constexpr KeyRow keys[] = {
    {0x00, HEADSET_KEY_END_CALL},
    {LOGITECH_KEY_ANSWER, HEADSET_KEY_HOOK},
    {0x0B, HEADSET_KEY_MUTE},
    {0x80, HEADSET_KEY_LOGITECH_8},
};

std::int32_t put_indicators(std::span<std::uint8_t> output, std::uint8_t bits) {
    return put_report(output, {report_id, bits, 0x00});
}

}  // namespace

std::int32_t logitech_cc::set_led_event_data(std::uint32_t state, std::span<std::uint8_t> output) {
    static constexpr const char* function = "headset_plugin::logitech_cc::set_led_event_data";
    plugin_log("3rdPartyHeadsetPlugin: Logitech: %s: [Enter], headsetState=0x%x\n", function, state);
    const std::uint8_t old_bits = headset_leds_state_;
    const std::uint8_t new_bits = with_bit(state_bits(state), led_mute, (old_bits & led_mute) != 0);
    plugin_log(
        "3rdPartyHeadsetPlugin: Logitech: %s: old headset_leds_state_=0x%x, new headset_leds_state_=0x%x\n",
        function, old_bits, new_bits);
    headset_leds_state_ = new_bits;
    const std::int32_t length = put_indicators(output, new_bits);
    plugin_log("3rdPartyHeadsetPlugin: Logitech: %s: [Exit]\n", function);
    return length;
}

std::int32_t logitech_cc::set_mute_data(bool mute, std::span<std::uint8_t> output) {
    static constexpr const char* function = "headset_plugin::logitech_cc::set_mute_data";
    plugin_log("3rdPartyHeadsetPlugin: Logitech: %s: [Enter], mute = %s\n", function, true_or_false(mute));
    if (output.size() < shortest_mute_buffer) {
        return nothing_to_write;
    }
    const std::uint8_t old_bits = headset_leds_state_;
    const std::uint8_t new_bits = with_bit(old_bits, led_mute, mute);
    headset_leds_state_ = new_bits;
    plugin_log(
        "3rdPartyHeadsetPlugin: Logitech: %s: MUTE: old headset_leds_state_=0x%x, new headset_leds_state_=0x%x\n",
        function, old_bits, new_bits);
    const std::int32_t length = put_indicators(output, new_bits);
    plugin_log("3rdPartyHeadsetPlugin: Logitech: %s: [Exit]\n", function);
    return length;
}

std::int32_t logitech_cc::process_read(std::span<const std::uint8_t> report) {
    static constexpr const char* function = "headset_plugin::logitech_cc::process_read";
    log_first_bytes("3rdPartyHeadsetPlugin: Logitech: %s: 0x%x 0x%x 0x%x 0x%x, 0x%x 0x%x 0x%x 0x%x\n",
                    function, report);
    const std::uint8_t id = report.empty() ? 0 : report[report_id_at];
    if (id != report_id) {
        plugin_log("3rdPartyHeadsetPlugin: Logitech: %s: unsupported read_buf[0] 0x%x\n", function, id);
        return HEADSET_KEY_INVALID;
    }
    if (report.size() < shortest_key_report) {
        return HEADSET_KEY_INVALID;
    }
    const std::uint8_t value = report[key_at];
    if (value == LOGITECH_KEY_ANSWER && (headset_leds_state_ & led_mute) != 0) {
        plugin_log(
            "3rdPartyHeadsetPlugin: Logitech: %s: headset_leds_state_ is CONNECTED so ignore LOGITECH_KEY_ANSWER\n",
            function);
        return HEADSET_KEY_INVALID;
    }
    const std::int32_t key = find_key(keys, value);
    if (key == HEADSET_KEY_INVALID) {
        plugin_log("3rdPartyHeadsetPlugin: Logitech: %s: unsupported KEY 0x%x\n", function, value);
    }
    return key;
}

}  // namespace headset_plugin
