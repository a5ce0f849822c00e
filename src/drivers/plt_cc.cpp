#include "drivers/plt_cc.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "base/plugin_log.h"
#include "drivers/dialect.h"

namespace headset_plugin {

namespace {

constexpr std::int32_t report_size = 2;

/// The bit of headset_leds_state_ with which idle asks for no follow-up. Nothing sets it.
constexpr std::uint8_t led_without_follow_up = 0x02;

struct ReportIds {
    std::uint8_t ring;
    std::uint8_t off_hook;
    std::uint8_t mute;
};

constexpr ReportIds plain_ids = {0x01, 0x04, 0x03};
constexpr ReportIds blackwire_ids = {0x18, 0x17, 0x09};

/// The id of the report for a state without any known flag.
constexpr std::uint8_t unknown_state_id = 0x01;

struct FamilyRow {
    std::uint32_t family;
    ReportIds ids;
};

constexpr FamilyRow family_rows[] = {
    {0x0200, plain_ids},
    {0xAC00, blackwire_ids},
    {0xAB00, blackwire_ids},
};

ReportIds ids_of(std::uint32_t product_id) {
    const auto* const row =
        std::find_if(std::begin(family_rows), std::end(family_rows),
                     [&](const FamilyRow& known) { return known.family == product_family(product_id); });
    return row != std::end(family_rows) ? row->ids : plain_ids;
}

}  // namespace

std::int32_t plt_cc::set_led_event_data(std::uint32_t state, std::span<std::uint8_t> output) {
    static constexpr const char* function = "headset_plugin::plt_cc::set_led_event_data";
    if ((state & HEADSET_STATE_HOLD) != 0) {
        return nothing_to_write;
    }
    std::uint8_t id = unknown_state_id;
    if ((state & HEADSET_STATE_ALERTING) != 0) {
        id = ring_report_id();
    }
    if ((state & HEADSET_STATE_INUSE) != 0 || state == HEADSET_STATE_IDLE) {
        id = off_hook_report_id();
    }
    const std::uint8_t value = (state & (HEADSET_STATE_ALERTING | HEADSET_STATE_INUSE)) != 0 ? 1 : 0;
    headset_leds_state_ = value;
    plugin_log("3rdPartyHeadsetPlugin: %s: state =0x%x\n", function, value);
    const std::int32_t length = put_report(output, {id, value});
    plugin_log("3rdPartyHeadsetPlugin: %s: exit\n", function);
    return length;
}

std::int32_t plt_cc::set_mute_data(bool mute, std::span<std::uint8_t> output) {
    if (output.size() < shortest_mute_buffer) {
        return nothing_to_write;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: mute_state =0x%x\n", "headset_plugin::plt_cc::set_mute_data",
               headset_leds_state_.load());
    return put_report(output, {mute_report_id(), static_cast<std::uint8_t>(mute ? 1 : 0)});
}

std::int32_t plt_cc::process_read(std::span<const std::uint8_t> report) {
    static constexpr const char* function = "headset_plugin::plt_cc::process_read";
    log_first_bytes("3rdPartyHeadsetPlugin: %s: 0x%x 0x%x 0x%x 0x%x, 0x%x 0x%x 0x%x 0x%x\n", function,
                    report);
    if (report.size() < shortest_key_report || !accepts_report_id(report[report_id_at])) {
        return HEADSET_KEY_INVALID;
    }
    const std::array<KeyRow, 4> rows = {{
        {0x00, HEADSET_KEY_END_CALL},
        {0x01, HEADSET_KEY_HOOK},
        {0x02, HEADSET_KEY_HOOK},
        {mute_key_value(), HEADSET_KEY_MUTE},
    }};
    const std::int32_t key = find_key(rows, report[key_at]);
    if (key == HEADSET_KEY_INVALID) {
        plugin_log("3rdPartyHeadsetPlugin: %s: unsupported key value [0x%x]\n", function, report[key_at]);
    }
    return key;
}

std::uint32_t plt_cc::handle_headset_reponse(std::int32_t key_code) {
    return key_code == HEADSET_KEY_HOOK ? follow_up_toggle : 0;
}

std::int32_t plt_cc::toggle_led(std::uint32_t bit, std::span<std::uint8_t> output) {
    plugin_log("3rdPartyHeadsetPlugin: %s: enter, state = %d\n", "headset_plugin::plt_cc::toggle_led",
               static_cast<int>(bit));
    if (bit != follow_up_toggle) {
        return 0;
    }
    if (std::ssize(output) < report_size) {
        return nothing_to_write;
    }
    output[report_id_at] = ring_report_id();
    return report_size;
}

std::uint32_t plt_cc::query_state_follow_up(std::uint32_t state) {
    const bool quiet = (headset_leds_state_ & led_without_follow_up) != 0;
    return state == HEADSET_STATE_IDLE && !quiet ? follow_up_toggle : 0;
}

std::uint8_t plt_cc::ring_report_id() const {
    return ids_of(product_id_).ring;
}

std::uint8_t plt_cc::off_hook_report_id() const {
    return ids_of(product_id_).off_hook;
}

bool plt_cc::accepts_report_id(std::uint8_t id) const {
    return id == 0x01 || id == 0x02;
}

std::uint8_t plt_cc::mute_report_id() const {
    return ids_of(product_id_).mute;
}

std::uint8_t plt_cc::mute_key_value() const {
    return 0x03;
}

std::uint8_t plt_blackwire_cc::ring_report_id() const {
    return blackwire_ids.ring;
}

std::uint8_t plt_blackwire_cc::off_hook_report_id() const {
    return blackwire_ids.off_hook;
}

bool plt_blackwire_cc::accepts_report_id(std::uint8_t id) const {
    return id == 0x08;
}

std::uint8_t plt_blackwire_cc::mute_report_id() const {
    return blackwire_ids.mute;
}

bool plt_blackwire_7225_cc::accepts_report_id(std::uint8_t id) const {
    return id == 0x0B;
}

std::uint8_t plt_blackwire_7225_cc::mute_key_value() const {
    return 0x05;
}

}  // namespace headset_plugin
