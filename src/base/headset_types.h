// What the layers say to each other about calls and keys.
#pragma once

#include <cstdint>

namespace headset_plugin {

// The headset state: a bit set of what the calls, taken together, have the headset show. INUSE with HOLD is a
// consultation: one connected and one held call.
inline constexpr std::uint32_t HEADSET_STATE_IDLE = 0;
inline constexpr std::uint32_t HEADSET_STATE_ALERTING = 0x1;  ///< a call rings
inline constexpr std::uint32_t HEADSET_STATE_INUSE = 0x2;     ///< a call is connected
inline constexpr std::uint32_t HEADSET_STATE_HOLD = 0x4;      ///< a call is held

// The key codes that drivers produce and that are mapped to call actions.
inline constexpr std::int32_t HEADSET_KEY_INVALID = -1;      ///< no key
inline constexpr std::int32_t HEADSET_KEY_END_CALL = 0;      ///< hook released
inline constexpr std::int32_t HEADSET_KEY_MUTE = 0x1;        ///< mute button
inline constexpr std::int32_t HEADSET_KEY_HOOK = 0x2;        ///< hook taken
inline constexpr std::int32_t HEADSET_KEY_4 = 0x4;           ///< answers a ringing call, else asks for hold
inline constexpr std::int32_t HEADSET_KEY_LOGITECH_8 = 0x8;  ///< rejects a ringing call
inline constexpr std::int32_t HEADSET_KEY_16 = 0x10;         ///< function key
inline constexpr std::int32_t HEADSET_KEY_32 = 0x20;         ///< configuration key

}  // namespace headset_plugin
