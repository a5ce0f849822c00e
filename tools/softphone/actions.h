// What the user can ask for at a headset, and what the client does then.
#pragma once

#include <optional>
#include <string_view>

#include "tools/softphone/text.h"

namespace softphone {

/// What a client reports of a call to the plug-in with nothing but its identifier.
enum class CallStep { ringback, connect, hold, resume, end, mute, unmute };

/// The requests of IPluginCallControlListener.
enum class Action {
    answer,
    end_call,
    hold_call,
    resume_call,
    reject_call,
    mute_call,
    unmute_call,
    function_key
};

/// The word of the plug-in's log for it, "Answer".
std::string_view to_string(Action action);

/// The operation of IPluginCallControlListener that asks for it, "onAnswer".
std::string_view listener_operation(Action action);

/// The action with this name, in any case; throws CommandError.
Action find_action(std::string_view name);

/// How the client carries the request out; nothing for a key that means nothing to it.
std::optional<CallStep> answer_to(Action action);

Words action_names();

}  // namespace softphone
