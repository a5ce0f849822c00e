#include "tools/softphone/call_list.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace softphone {
namespace {

struct PhaseRow {
    CallPhase phase;
    std::string_view name;
    plugin_control::CallState state;  ///< as the plug-in knows it
};

// One row per phase, in the order of the enumeration.
constexpr std::array phases{
    PhaseRow{CallPhase::created, "created", plugin_control::CALL_STATE_IDLE},
    PhaseRow{CallPhase::ringing, "ringing", plugin_control::CALL_STATE_ALERTING},
    PhaseRow{CallPhase::silent, "silent", plugin_control::CALL_STATE_ALERTING},
    PhaseRow{CallPhase::ringback, "ringback", plugin_control::CALL_STATE_CONNECTED},
    PhaseRow{CallPhase::connected, "connected", plugin_control::CALL_STATE_CONNECTED},
    PhaseRow{CallPhase::held, "held", plugin_control::CALL_STATE_HOLD},
    PhaseRow{CallPhase::ended, "ended", plugin_control::CALL_STATE_IDLE},
};

const PhaseRow& row(CallPhase phase) {
    return phases.at(static_cast<std::size_t>(phase));
}

}  // namespace

std::string_view to_string(CallPhase phase) {
    return row(phase).name;
}

std::string to_string(const Call& call) {
    return call.cid + " " + std::string(to_string(call.phase)) + (call.muted ? ", muted" : "");
}

Call CallList::update(const std::string& cid, const std::function<void(Call&)>& change) {
    auto position = std::ranges::find(calls_, cid, &Call::cid);
    if (position == calls_.end())
        position = calls_.insert(position, Call{.cid = cid});
    change(*position);
    Call changed = *position;
    if (changed.phase == CallPhase::ended)
        calls_.erase(position);
    return changed;
}

const Call* CallList::find(std::string_view cid) const {
    const auto position = std::ranges::find(calls_, cid, &Call::cid);
    return position == calls_.end() ? nullptr : &*position;
}

const Call* CallList::first(CallPhase phase) const {
    const auto position = std::ranges::find(calls_, phase, &Call::phase);
    return position == calls_.end() ? nullptr : &*position;
}

std::vector<plugin_control::ICallInfo> CallList::to_call_infos() const {
    std::vector<plugin_control::ICallInfo> infos;
    std::ranges::transform(calls_, std::back_inserter(infos), [](const Call& call) {
        return plugin_control::ICallInfo{call.cid, row(call.phase).state, call.direction, call.muted};
    });
    return infos;
}

}  // namespace softphone
