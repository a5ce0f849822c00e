// The report dialect of Logitech headsets of fixed reports.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>

namespace headset_plugin {

/// Output reports, three bytes: the id 0x05, all indicators, and 0.
/// Input reports: the id 0x05, and the key.
///
/// Dormant, and no driver: its operations mean what those of call_control_generic do, but nothing calls them.
class logitech_cc {
  public:
    std::int32_t set_led_event_data(std::uint32_t state, std::span<std::uint8_t> output);

    /// Ignores the answer key while mute is shown.
    std::int32_t process_read(std::span<const std::uint8_t> report);
    std::int32_t set_mute_data(bool mute, std::span<std::uint8_t> output);

  private:
    std::atomic<std::uint8_t> headset_leds_state_{0};
};

}  // namespace headset_plugin
