#include "callstate/headset_ccm.h"

#include <algorithm>
#include <cstdlib>

#include "base/plugin_log.h"

namespace headset_plugin {

using platform::MutexLock;
using plugin_control::CALL_STATE_ALERTING;
using plugin_control::CALL_STATE_CONNECTED;
using plugin_control::CALL_STATE_HOLD;
using plugin_control::CALL_STATE_IDLE;

namespace {

constexpr std::uint32_t update_ignored = 0xFFFFFFFF;

/// The host sends decimal digits; nothing is decided by the number, so that anything else may count as 0. Not
/// atoi, which leaves a number too long for it undefined.
std::uint32_t call_number(const std::string& cid) {
    return static_cast<std::uint32_t>(std::strtol(cid.c_str(), nullptr, 10));
}

}  // namespace

headset_ccm::headset_ccm() : headset_cc_(std::make_unique<headset_cc>()) {}

headset_ccm::CallRecord headset_ccm::findCallById(const std::string& cid) const {
    const auto found = std::find_if(call_list_.begin(), call_list_.end(),
                                    [&](const CallRecord& call) { return call->cid == cid; });
    return found == call_list_.end() ? nullptr : *found;
}

headset_ccm::CallRecord headset_ccm::findCallByState(std::uint32_t state) const {
    const auto found = std::find_if(call_list_.begin(), call_list_.end(),
                                    [&](const CallRecord& call) { return call->state == state; });
    return found == call_list_.end() ? nullptr : *found;
}

void headset_ccm::populateCallState(const std::string& device_id, const std::vector<ICallInfo>& calls,
                                    std::uint32_t num_calls) {
    static constexpr const char* function = "headset_plugin::headset_ccm::populateCallState";
    plugin_log("HeadsetPlugin: %s: device_id:[%s], calls.size:[%d], num_calls:[%d]\n", function,
               device_id.c_str(), static_cast<int>(calls.size()), static_cast<int>(num_calls));
    MutexLock lock(mutex_);
    ++list_changes_;
    if (!call_list_.empty()) {
        plugin_log("HeadsetPlugin: %s: call_list_ with size [%d] cleared\n", function,
                   static_cast<int>(call_list_.size()));
        call_list_.clear();
    }
    for (const ICallInfo& call : calls) {
        plugin_log("HeadsetPlugin: %s: cid:[%s], state:[%d], direction:[%d], mute:[%s]\n", function,
                   call.cid.c_str(), static_cast<int>(call.state), call.direction, true_or_false(call.mute));
        call_list_.push_back(std::make_shared<ICallInfo>(call));
    }
}

void headset_ccm::onCallStateUpdate(std::uint32_t state, const std::string& cid, bool ringing) {
    static constexpr const char* function = "headset_plugin::headset_ccm::onCallStateUpdate";
    plugin_log("HeadsetPlugin: %s: state = %d, cid = %s \n", function, static_cast<int>(state), cid.c_str());
    MutexLock lock(mutex_);
    ++list_changes_;
    headset_cc_->resetHeadsetState();
    const bool ringing_off = state == CALL_STATE_ALERTING && !ringing;
    if (const CallRecord call = findCallById(cid)) {
        plugin_log("HeadsetPlugin: %s: found\n", function);
        call->state = state;
        // Before the record goes silent: the headset state keeps the ALERTING bit of this event.
        headset_cc_->addCallState(call_number(cid), state);
        if (ringing_off) {
            call->state = CALL_STATE_IDLE;
        } else if (state == CALL_STATE_IDLE) {
            call_list_.erase(std::find(call_list_.begin(), call_list_.end(), call));
        }
        return;
    }
    if (state == CALL_STATE_IDLE) {
        return;
    }
    if (ringing_off) {
        plugin_log("HeadsetPlugin: %s: don't create for ALERTING off\n", function);
        return;
    }
    call_list_.push_back(std::make_shared<ICallInfo>(ICallInfo{cid, state, 0, false}));
    headset_cc_->addCallState(call_number(cid), state);
}

std::uint32_t headset_ccm::onMuteStateUpdate(bool muted, const std::string& cid) {
    static constexpr const char* function = "headset_plugin::headset_ccm::onMuteStateUpdate";
    MutexLock lock(mutex_);
    ++list_changes_;
    const CallRecord call = findCallById(cid);
    if (!call) {
        if (call_list_.empty()) {
            plugin_log("HeadsetPlugin: %s: phantom mute from client \n", function);
        } else {
            plugin_log("HeadsetPlugin: %s: mute on non-connected call, ignore. cid = %s\n", function,
                       cid.c_str());
        }
        return update_ignored;
    }
    call->mute = muted;
    return headset_cc_->setMute(muted);
}

headset_ccm::Decision headset_ccm::decide(const char* function, const Decision& without_calls) const {
    if (findCallByState(CALL_STATE_ALERTING)) {
        plugin_log("HeadsetPlugin: %s: there's an alerting call, send ALERTING\n", function);
        return {.state = HEADSET_STATE_ALERTING};
    }
    const CallRecord held = findCallByState(CALL_STATE_HOLD);
    if (const CallRecord talking = findCallByState(CALL_STATE_CONNECTED)) {
        plugin_log("HeadsetPlugin: %s: there's a talking call, send INUSE\n", function);
        Decision decision{.state = HEADSET_STATE_INUSE, .muted = talking->mute, .send_mute = true};
        if (held) {
            plugin_log("HeadsetPlugin: %s: actually a consultation call, send + HOLD\n", function);
            decision.state |= HEADSET_STATE_HOLD;
        }
        return decision;
    }
    if (held) {
        plugin_log("HeadsetPlugin: %s: there's only held call, send HOLD\n", function);
        return {.state = HEADSET_STATE_HOLD};
    }
    return without_calls;
}

headset_ccm::Decision headset_ccm::decide_after_end(const char* function, const std::string& cid) const {
    constexpr Decision idle_and_unmuted{.state = HEADSET_STATE_IDLE, .muted = false, .send_mute = true};
    const bool found = findCallById(cid) != nullptr;
    if (found && call_list_.size() == 1) {
        plugin_log("HeadsetPlugin: %s: only 1 IDLE call, send IDLE\n", function);
        return idle_and_unmuted;
    }
    if (!found && call_list_.empty()) {
        plugin_log("HeadsetPlugin: %s: none calls, send IDLE\n", function);
        return idle_and_unmuted;
    }
    return decide(function, {.state = HEADSET_STATE_IDLE});
}

void headset_ccm::send(const char* function, const Decision& decision, const Channel& send_state,
                       const Channel& send_mute) {
    send_state(static_cast<int>(decision.state));
    if (!decision.send_mute) {
        plugin_log("HeadsetPlugin: %s: not send mute\n", function);
        return;
    }
    plugin_log("HeadsetPlugin: %s: send muted=%s\n", function, true_or_false(decision.muted));
    send_mute(decision.muted ? 1 : 0);
}

void headset_ccm::arbitrateHeadsetINIT(const Channel& send_state, const Channel& send_mute) {
    static constexpr const char* function = "headset_plugin::headset_ccm::arbitrateHeadsetINIT";
    Decision decision;
    {
        MutexLock lock(mutex_);
        decision = decide(function, {.state = HEADSET_STATE_IDLE, .muted = false, .send_mute = true});
        if (decision.state == HEADSET_STATE_IDLE) {
            plugin_log("HeadsetPlugin: %s: no alerting or inuse or hold, send IDLE\n", function);
        }
    }
    send(function, decision, send_state, send_mute);
}

void headset_ccm::arbitrateHeadsetIDLE(const std::string& cid, const Channel& send_state,
                                       const Channel& send_mute) {
    static constexpr const char* function = "headset_plugin::headset_ccm::arbitrateHeadsetIDLE";
    Decision decision;
    {
        MutexLock lock(mutex_);
        decision = decide_after_end(function, cid);
    }
    send(function, decision, send_state, send_mute);
}

void headset_ccm::arbitrateHeadsetHOLD(const std::string& /*cid*/, const Channel& send_state,
                                       const Channel& /*send_mute*/) {
    static constexpr const char* function = "headset_plugin::headset_ccm::arbitrateHeadsetHOLD";
    std::uint32_t state = HEADSET_STATE_HOLD;
    {
        MutexLock lock(mutex_);
        if (findCallByState(CALL_STATE_CONNECTED)) {
            plugin_log("HeadsetPlugin: %s: there's a talking call, send + INUSE\n", function);
            state |= HEADSET_STATE_INUSE;
        }
    }
    send_state(static_cast<int>(state));
}

void headset_ccm::arbitrateHeadsetMUTE(const std::string& cid, const Channel& send_mute) {
    static constexpr MuteLines lines = {
        "headset_plugin::headset_ccm::arbitrateHeadsetMUTE",
        "HeadsetPlugin: %s: none calls, don't send mute\n",
        "HeadsetPlugin: %s: call state=%d, don't send mute\n",
        "HeadsetPlugin: %s: call CONNECTED, send mute\n",
    };
    if (shows_mute(lines, cid)) {
        send_mute(1);
    }
}

void headset_ccm::arbitrateHeadsetUNMUTE(const std::string& cid, const Channel& send_mute) {
    static constexpr MuteLines lines = {
        "headset_plugin::headset_ccm::arbitrateHeadsetUNMUTE",
        "HeadsetPlugin: %s: none calls, don't send unmute\n",
        "HeadsetPlugin: %s: call state=%d, don't send unmute\n",
        "HeadsetPlugin: %s: call CONNECTED, send unmute\n",
    };
    if (shows_mute(lines, cid)) {
        send_mute(0);
    }
}

bool headset_ccm::shows_mute(const MuteLines& lines, const std::string& cid) {
    MutexLock lock(mutex_);
    const CallRecord call = findCallById(cid);
    if (!call) {
        plugin_log(lines.no_call, lines.function);
        return false;
    }
    if (call->state != CALL_STATE_CONNECTED) {
        plugin_log(lines.not_connected, lines.function, static_cast<int>(call->state));
        return false;
    }
    plugin_log(lines.connected, lines.function);
    return true;
}

CallAction headset_ccm::mapKeyToCallAction(std::string& cid_out, std::int16_t value) {
    struct Row {
        std::int32_t key;
        std::uint32_t searched_state;
        CallAction found;
        CallAction not_found;
    };
    // The mute key's action is the one for a call that is not muted.
    static constexpr Row rows[] = {
        {HEADSET_KEY_END_CALL, CALL_STATE_CONNECTED, CallAction::end_call, CallAction::ignore},
        {HEADSET_KEY_MUTE, CALL_STATE_CONNECTED, CallAction::mute_call, CallAction::ignore},
        {HEADSET_KEY_HOOK, CALL_STATE_ALERTING, CallAction::answer, CallAction::ignore},
        {HEADSET_KEY_4, CALL_STATE_ALERTING, CallAction::answer, CallAction::hold_call},
        {HEADSET_KEY_LOGITECH_8, CALL_STATE_ALERTING, CallAction::reject_call, CallAction::ignore},
    };
    MutexLock lock(mutex_);
    const std::int32_t key = headset_cc::keyEventNotify(value);
    const auto row =
        std::find_if(std::begin(rows), std::end(rows), [&](const Row& r) { return r.key == key; });
    if (row == std::end(rows)) {
        return CallAction::ignore;
    }
    const CallRecord call = findCallByState(row->searched_state);
    if (!call) {
        return row->not_found;
    }
    cid_out = call->cid;
    if (row->found != CallAction::mute_call) {
        return row->found;
    }
    call->mute = !call->mute;
    return call->mute ? CallAction::mute_call : CallAction::unmute_call;
}

std::uint32_t headset_ccm::mapKeyToSecondaryEvent(std::string& /*cid_out*/, std::int16_t value) {
    switch (value) {
        case HEADSET_KEY_16:
            return function_key;
        case HEADSET_KEY_32:
            return configuration_key;
        default:
            return no_secondary_event;
    }
}

std::int32_t headset_ccm::getHeadsetLedState() {
    MutexLock lock(mutex_);
    return headset_cc_->getHeadsetLedState();
}

bool headset_ccm::isCallMuted(const std::string& cid) {
    MutexLock lock(mutex_);
    const CallRecord call = findCallById(cid);
    return call && call->mute;
}

std::string& headset_ccm::getCidByState(std::string& cid_out, std::uint32_t state) {
    MutexLock lock(mutex_);
    const CallRecord call = findCallByState(state);
    cid_out = call ? call->cid : std::string();
    return cid_out;
}

void headset_ccm::refreshHeadsetState() {
    MutexLock lock(mutex_);
    headset_cc_->resetHeadsetState();
    for (const CallRecord& call : call_list_) {
        headset_cc_->addCallState(call_number(call->cid), call->state);
        headset_cc_->setMute(call->mute);
    }
}

}  // namespace headset_plugin
