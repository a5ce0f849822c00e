// What the last call event means for a headset, and what a key report value means as a key.
#pragma once

#include <cstdint>

#include "base/headset_types.h"

namespace headset_plugin {

// The LED state: a bit set of indicators, for the log. Drivers light theirs by the headset state.
inline constexpr std::uint32_t LED_OFF_HOOK = 0x02;
inline constexpr std::uint32_t LED_RING = 0x04;
inline constexpr std::uint32_t LED_MUTE = 0x08;
inline constexpr std::uint32_t LED_HOLD = 0x20;

/// Keeps the headset state of the last call event, and the LED state that follows from it. Takes no lock: its
/// headset_ccm guards it.
class headset_cc {
  public:
    void resetHeadsetState();

    /// Adds the bit for a call state. The call number is not used.
    void addCallState(std::uint32_t call_number, std::uint32_t call_state);

    /// Stores `muted` and sets or clears LED_MUTE; returns the LED state.
    std::uint32_t setMute(bool muted);
    bool isMuted() const { return muted_; }

    /// Computes the LED state and logs it. In use wins over held. The mute bit stays, unless nothing is
    /// shown.
    std::int32_t getHeadsetLedState();

    /// The key code for a key report value. The bits 0x1, 0x8 and 0x4 count whatever else is set, the other
    /// keys only alone.
    static std::int32_t keyEventNotify(std::int16_t value);

    std::uint32_t headset_state() const { return headset_state_; }

  private:
    std::uint32_t headset_state_ = HEADSET_STATE_IDLE;
    std::uint32_t leds_state_ = 0;
    bool muted_ = false;
};

}  // namespace headset_plugin
