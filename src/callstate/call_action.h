// What a key press asks the host to do.
#pragma once

#include <cstdint>

namespace headset_plugin {

enum class CallAction : std::uint32_t {
    ignore = 0,
    answer = 1,
    end_call = 2,
    hold_call = 3,
    resume_call = 4,
    reject_call = 5,
    mute_call = 6,
    unmute_call = 7,
    new_call = 8,
    redial = 9,
    dial = 10,
    join_call = 11,
};

// What a key that is no call action can be.
inline constexpr std::uint32_t no_secondary_event = 0;
inline constexpr std::uint32_t configuration_key = 1;
inline constexpr std::uint32_t function_key = 2;

/// The action's word in the log; "Ignore" for a value that is none.
const char* to_string(CallAction action);

}  // namespace headset_plugin
