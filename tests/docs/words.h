// The words of the tables for what the code has numbers for.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "base/headset_types.h"

namespace docs {

struct KeyName {
    const char* words;
    std::int32_t code;
};

/// Every key that the plug-in tells apart.
inline constexpr KeyName key_names[] = {
    {"end call", headset_plugin::HEADSET_KEY_END_CALL}, {"mute", headset_plugin::HEADSET_KEY_MUTE},
    {"hook", headset_plugin::HEADSET_KEY_HOOK},         {"key 4", headset_plugin::HEADSET_KEY_4},
    {"key 8", headset_plugin::HEADSET_KEY_LOGITECH_8},  {"function", headset_plugin::HEADSET_KEY_16},
    {"configuration", headset_plugin::HEADSET_KEY_32},
};

/// "mute"; "no key" for a code that is none.
std::string key_words(std::int32_t code);

/// "IDLE", "INUSE + HOLD"
std::string state_words(std::uint32_t state);

/// The bytes in hexadecimal, as code; `nothing` for none.
std::string report_words(std::span<const std::uint8_t> report);

}  // namespace docs
