// The driver for headsets that describe their controls by standard HID usages.
#pragma once

#include "drivers/call_control_generic.h"

namespace headset_plugin {

/// Names indicators by usage and leaves their places to the headset's report descriptor. Reports the mute key
/// alone.
class stdhid_cc final : public call_control_generic {
  public:
    using call_control_generic::call_control_generic;

    /// In use lights off-hook, idle puts it out; ringing or held alone leaves it as it is. Mute is always
    /// shown as it was last. The result is the headset's output report length, -1 when there is nothing to
    /// write.
    std::int32_t set_led_event_data(std::uint32_t state, std::span<std::uint8_t> output) override;

    std::int32_t process_read(std::span<const std::uint8_t> report) override;
    std::int32_t set_mute_data(bool mute, std::span<std::uint8_t> output) override;

    /// While in use, an input report without a key asks for the indicators again: the headset may have
    /// changed them on its own.
    std::uint32_t handle_headset_reponse(std::int32_t key_code) override;
    std::int32_t toggle_led(std::uint32_t bit, std::span<std::uint8_t> output) override;

    /// Idle asks for unmuting.
    std::uint32_t query_state_follow_up(std::uint32_t state) override;
};

}  // namespace headset_plugin
