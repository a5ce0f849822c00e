#include "drivers/jabra_cc.h"

#include <algorithm>
#include <iterator>

#include "base/plugin_log.h"
#include "drivers/dialect.h"

namespace headset_plugin {

namespace {

constexpr std::uint8_t telephony_report_id = 0x02;
constexpr std::uint8_t ignored_report_id = 0x04;

// Byte 2 of an output report.
constexpr std::uint8_t update = 0x01;
constexpr std::uint8_t no_update = 0x00;

// The follow-ups that show off-hook alone.
constexpr std::uint32_t follow_up_off_hook_update = 0x10;
constexpr std::uint32_t follow_up_off_hook = 0x20;
constexpr std::uint8_t off_hook_alone = 0x01;

constexpr KeyRow keys_of_00[] = {
    {0x00, HEADSET_KEY_END_CALL},
    {0x20, HEADSET_KEY_HOOK},
    {0x30, HEADSET_KEY_MUTE},
};
constexpr KeyRow keys_of_245[] = {
    {0x06, HEADSET_KEY_END_CALL},
    {0x01, HEADSET_KEY_HOOK},
    {0x05, HEADSET_KEY_HOOK},
    {0x0F, HEADSET_KEY_MUTE},
};
constexpr KeyRow keys_of_a3[] = {
    {0x0A, HEADSET_KEY_END_CALL},
    {0x01, HEADSET_KEY_HOOK},
    {0x1B, HEADSET_KEY_MUTE},
};
constexpr KeyRow keys_of_others[] = {
    {0x02, HEADSET_KEY_END_CALL},
    {0x01, HEADSET_KEY_HOOK},
    {0x07, HEADSET_KEY_MUTE},
};

/// The products whose id is `product`, as far as `mask` goes.
struct Model {
    std::uint32_t mask;
    std::uint32_t product;
    std::span<const KeyRow> keys;
    std::uint8_t ring = led_ringing;
    std::uint8_t off_hook = led_off_hook;
    std::uint8_t mute = led_mute;
    bool toggle_lights_off_hook = false;
    bool hook_needs_off_hook = false;  ///< a hook key asks for off-hook alone as well
    bool in_use_asks_for_toggle = false;
};

constexpr std::uint32_t whole_id = 0xFFFFFFFF;
constexpr std::uint32_t any_id = 0;

/// The first row that fits counts.
constexpr Model models[] = {
    {.mask = whole_id, .product = 0x0041, .keys = keys_of_00, .off_hook = 0x02, .mute = 0x01},
    {.mask = product_family_mask, .product = 0x0000, .keys = keys_of_00, .mute = 0x01},
    {.mask = whole_id,
     .product = 0x245D,
     .keys = keys_of_245,
     .toggle_lights_off_hook = true,
     .hook_needs_off_hook = true},
    {.mask = whole_id,
     .product = 0x245E,
     .keys = keys_of_245,
     .toggle_lights_off_hook = true,
     .hook_needs_off_hook = true},
    {.mask = whole_id,
     .product = 0xA346,
     .keys = keys_of_a3,
     .ring = 0x08,
     .mute = 0x04,
     .toggle_lights_off_hook = true,
     .in_use_asks_for_toggle = true},
    {.mask = product_family_mask,
     .product = 0xA300,
     .keys = keys_of_a3,
     .mute = 0x04,
     .in_use_asks_for_toggle = true},
    {.mask = any_id, .product = 0, .keys = keys_of_others},
};

const Model& model_of(std::uint32_t product_id) {
    return *std::find_if(std::begin(models), std::end(models),
                         [&](const Model& model) { return (product_id & model.mask) == model.product; });
}

}  // namespace

std::int32_t jabra_cc::set_led_event_data(std::uint32_t state, std::span<std::uint8_t> output) {
    const std::uint8_t bits =
        state_bits(state, indicator_bit(Indicator::ring), indicator_bit(Indicator::off_hook));
    headset_leds_state_ = bits;
    plugin_log("HeadsetPlugin: %s: state =0x%x\n", "headset_plugin::jabra_cc::set_led_event_data", bits);
    return put_report(output, {telephony_report_id, bits, update});
}

std::int32_t jabra_cc::set_mute_data(bool mute, std::span<std::uint8_t> output) {
    if (output.size() < shortest_mute_buffer) {
        return nothing_to_write;
    }
    const std::uint8_t bits = with_bit(headset_leds_state_, model_of(product_id_).mute, mute);
    headset_leds_state_ = bits;
    plugin_log("HeadsetPlugin: %s: state =0x%x\n", "headset_plugin::jabra_cc::set_mute_data", bits);
    return put_report(output, {telephony_report_id, bits, update});
}

std::int32_t jabra_cc::process_read(std::span<const std::uint8_t> report) {
    static constexpr const char* function = "headset_plugin::jabra_cc::process_read";
    log_first_bytes("HeadsetPlugin: %s: 0x%x 0x%x 0x%x 0x%x, 0x%x 0x%x 0x%x 0x%x\n", function, report);
    if (report.size() < shortest_key_report || report[report_id_at] == ignored_report_id) {
        return HEADSET_KEY_INVALID;
    }
    if (report[report_id_at] != telephony_report_id) {
        plugin_log("HeadsetPlugin: %s: unsupported report id\n", function);
        return HEADSET_KEY_INVALID;
    }
    const std::int32_t key = find_key(model_of(product_id_).keys, report[key_at]);
    if (key == HEADSET_KEY_INVALID) {
        plugin_log("HeadsetPlugin: %s: unsupported usage\n", function);
    }
    return key;
}

std::uint32_t jabra_cc::handle_headset_reponse(std::int32_t key_code) {
    if (key_code != HEADSET_KEY_HOOK) {
        return 0;
    }
    if (!model_of(product_id_).hook_needs_off_hook) {
        return follow_up_toggle;
    }
    const bool ringing = (headset_leds_state_ & led_ringing) != 0;
    return follow_up_toggle | (ringing ? follow_up_off_hook_update : follow_up_off_hook);
}

std::int32_t jabra_cc::toggle_led(std::uint32_t bit, std::span<std::uint8_t> output) {
    plugin_log("HeadsetPlugin: %s: enter, state = %d\n", "headset_plugin::jabra_cc::toggle_led",
               static_cast<int>(bit));
    const std::uint8_t lit =
        indicator_bit(model_of(product_id_).toggle_lights_off_hook ? Indicator::off_hook : Indicator::none);
    switch (bit) {
        case follow_up_toggle:
            return put_report(output,
                              {telephony_report_id, with_bit(headset_leds_state_, lit, true), no_update});
        case follow_up_off_hook_update:
            return put_report(output, {telephony_report_id, off_hook_alone, update});
        case follow_up_off_hook:
            return put_report(output, {telephony_report_id, off_hook_alone, no_update});
        default:
            return 0;
    }
}

std::uint32_t jabra_cc::query_state_follow_up(std::uint32_t state) {
    // Ringing has the same bit on 0xA346.
    const bool held = (headset_leds_state_ & led_hold) != 0;
    return model_of(product_id_).in_use_asks_for_toggle && held && state == HEADSET_STATE_INUSE
               ? follow_up_toggle
               : 0;
}

std::uint8_t jabra_cc::indicator_bit(Indicator indicator) const {
    switch (indicator) {
        case Indicator::none:
            return 0x00;
        case Indicator::ring:
            return model_of(product_id_).ring;
        case Indicator::off_hook:
            return model_of(product_id_).off_hook;
    }
    return 0xFF;
}

}  // namespace headset_plugin
