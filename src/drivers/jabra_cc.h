// The driver for Jabra headsets of fixed reports.
#pragma once

#include "drivers/call_control_generic.h"

namespace headset_plugin {

/// Output reports, three bytes: the id 0x02, all indicators, and whether they are an update.
/// Input reports: the id 0x02, and the key.
///
/// Dormant: nothing makes this driver.
class jabra_cc : public call_control_generic {
  public:
    using call_control_generic::call_control_generic;

    /// Forgets whether mute was shown.
    std::int32_t set_led_event_data(std::uint32_t state, std::span<std::uint8_t> output) override;
    std::int32_t process_read(std::span<const std::uint8_t> report) override;
    std::int32_t set_mute_data(bool mute, std::span<std::uint8_t> output) override;

    /// A hook key is followed by the indicators; on some products by off-hook alone as well, as an update
    /// while it rings.
    std::uint32_t handle_headset_reponse(std::int32_t key_code) override;
    std::int32_t toggle_led(std::uint32_t bit, std::span<std::uint8_t> output) override;
    std::uint32_t query_state_follow_up(std::uint32_t state) override;

  protected:
    enum class Indicator : std::uint8_t { none, ring, off_hook };

    /// The indicator's bit on this product; all bits for what is no indicator.
    std::uint8_t indicator_bit(Indicator indicator) const;
};

}  // namespace headset_plugin
