#include "tools/softphone/actions.h"

#include <algorithm>
#include <array>
#include <string>

namespace softphone {
namespace {

struct ActionRow {
    Action action;
    std::string_view name;
    std::string_view operation;
    std::optional<CallStep> answer;
};

// One row per action, in the order of the enumeration.
constexpr std::array actions{
    ActionRow{Action::answer, "Answer", "onAnswer", CallStep::connect},
    ActionRow{Action::end_call, "EndCall", "onEndCall", CallStep::end},
    ActionRow{Action::hold_call, "HoldCall", "onHoldCall", CallStep::hold},
    ActionRow{Action::resume_call, "ResumeCall", "onResumeCall", CallStep::resume},
    ActionRow{Action::reject_call, "RejectCall", "onRejectCall", CallStep::end},
    ActionRow{Action::mute_call, "muteCall", "onMuteCall", CallStep::mute},
    ActionRow{Action::unmute_call, "unmuteCall", "onUnmuteCall", CallStep::unmute},
    ActionRow{Action::function_key, "FunctionKey", "onFunctionKey", std::nullopt},
};

}  // namespace

std::string_view to_string(Action action) {
    return actions.at(static_cast<std::size_t>(action)).name;
}

std::string_view listener_operation(Action action) {
    return actions.at(static_cast<std::size_t>(action)).operation;
}

Action find_action(std::string_view name) {
    const auto found = std::ranges::find_if(
        actions, [&](const ActionRow& row) { return same_ignoring_case(row.name, name); });
    if (found == actions.end())
        throw CommandError(quoted(name) + " is no action; there are " + join(action_names()));
    return found->action;
}

std::optional<CallStep> answer_to(Action action) {
    return actions.at(static_cast<std::size_t>(action)).answer;
}

Words action_names() {
    Words names;
    for (const auto& row : actions)
        names.emplace_back(row.name);
    return names;
}

}  // namespace softphone
