#include "drivers/dialect.h"

#include <algorithm>
#include <array>

#include "base/plugin_log.h"

namespace headset_plugin {

std::uint8_t state_bits(std::uint32_t state, std::uint8_t ringing, std::uint8_t off_hook) {
    std::uint8_t bits = 0;
    if ((state & HEADSET_STATE_ALERTING) != 0) {
        bits |= ringing;
    }
    if ((state & HEADSET_STATE_HOLD) != 0) {
        bits |= led_hold;
    }
    if ((state & HEADSET_STATE_INUSE) != 0) {
        bits |= off_hook;
        bits = with_bit(bits, led_hold, false);
    }
    return bits;
}

std::int32_t put_report(std::span<std::uint8_t> output, std::initializer_list<std::uint8_t> report) {
    if (output.size() < report.size()) {
        return nothing_to_write;
    }
    std::copy(report.begin(), report.end(), output.begin());
    return static_cast<std::int32_t>(report.size());
}

std::int32_t find_key(std::span<const KeyRow> rows, std::uint8_t value) {
    const auto row =
        std::find_if(rows.begin(), rows.end(), [&](const KeyRow& known) { return known.value == value; });
    return row != rows.end() ? row->key : HEADSET_KEY_INVALID;
}

void log_first_bytes(const char* format, const char* function, std::span<const std::uint8_t> report) {
    std::array<std::uint8_t, 8> bytes{};
    std::copy_n(report.begin(), std::min(report.size(), bytes.size()), bytes.begin());
    plugin_log(format, function, bytes[0], bytes[1], bytes[2], bytes[3], bytes[4], bytes[5], bytes[6],
               bytes[7]);
}

}  // namespace headset_plugin
