// The call-control side: every event of the host's calls goes into the call list, and what follows for the
// headset to the device manager.

#include "base/headset_types.h"
#include "base/plugin_log.h"
#include "devicemgr/device_mgr_api.h"
#include "plugin/plugin_manager.h"

namespace plugin_control {

using headset_plugin::HEADSET_STATE_ALERTING;
using headset_plugin::HEADSET_STATE_INUSE;

bool PluginManager::setAudioDevice(const std::string& device_id, const std::string& device_name,
                                   const std::string& serial) {
    if (is_plugin_stopped()) {
        return false;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: device_id=%s, serial=%s\n",
               "plugin_control::PluginManager::setAudioDevice", device_id.c_str(), serial.c_str());
    return set_audio_device(device_id.c_str(), device_name.c_str(), serial.c_str());
}

bool PluginManager::reservedCallControl2(const std::string& /*first*/, const std::string& /*second*/) {
    return false;
}

bool PluginManager::reservedCallControl3(const std::string& /*first*/, const std::string& /*second*/) {
    return false;
}

void PluginManager::mute(const std::string& /*unused*/, const std::string& cid) {
    if (is_plugin_stopped()) {
        return;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: cid=%s\n", "plugin_control::PluginManager::mute", cid.c_str());
    headset_ccm_->onMuteStateUpdate(true, cid);
    headset_ccm_->arbitrateHeadsetMUTE(cid, hid_headset_set_mute);
}

void PluginManager::unmute(const std::string& /*unused*/, const std::string& cid) {
    static constexpr const char* function = "plugin_control::PluginManager::unmute";
    if (is_plugin_stopped()) {
        return;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: cid=%s\n", function, cid.c_str());
    headset_ccm_->onMuteStateUpdate(false, cid);
    plugin_log("3rdPartyHeadsetPlugin: %s: go UNMUTE arbitrator\n", function);
    headset_ccm_->arbitrateHeadsetUNMUTE(cid, hid_headset_set_mute);
}

void PluginManager::createCall(const std::string& /*unused*/, const std::string& cid, int direction) {
    if (is_plugin_stopped()) {
        return;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: cid=%s, call direction=%d\n",
               "plugin_control::PluginManager::createCall", cid.c_str(), direction);
}

void PluginManager::incomingCall(const std::string& /*unused*/, const std::string& cid, bool ringing) {
    static constexpr const char* function = "plugin_control::PluginManager::incomingCall";
    if (is_plugin_stopped()) {
        return;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: cid=%s, ringing=%s\n", function, cid.c_str(),
               true_or_false(ringing));
    headset_ccm_->onCallStateUpdate(CALL_STATE_ALERTING, cid, ringing);
    updateHeadsetLedState();
    if (ringing) {
        update_headset_state(HEADSET_STATE_ALERTING);
    } else {
        plugin_log("3rdPartyHeadsetPlugin: %s: ringing=false, don't send IDLE\n", function);
    }
}

void PluginManager::ringbackCall(const std::string& /*unused*/, const std::string& cid) {
    show_connected("plugin_control::PluginManager::ringbackCall", cid);
}

void PluginManager::connectCall(const std::string& /*unused*/, const std::string& cid) {
    show_connected("plugin_control::PluginManager::connectCall", cid);
}

void PluginManager::resumeCall(const std::string& /*unused*/, const std::string& cid) {
    show_connected("plugin_control::PluginManager::resumeCall", cid);
}

void PluginManager::show_connected(const char* function, const std::string& cid) {
    if (is_plugin_stopped()) {
        return;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: cid=%s\n", function, cid.c_str());
    headset_ccm_->onCallStateUpdate(CALL_STATE_CONNECTED, cid, false);
    updateHeadsetLedState();
    update_headset_state(HEADSET_STATE_INUSE);
}

void PluginManager::holdCall(const std::string& /*unused*/, const std::string& cid) {
    static constexpr const char* function = "plugin_control::PluginManager::holdCall";
    if (is_plugin_stopped()) {
        return;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: cid=%s\n", function, cid.c_str());
    headset_ccm_->onCallStateUpdate(CALL_STATE_HOLD, cid, false);
    updateHeadsetLedState();
    plugin_log("3rdPartyHeadsetPlugin: %s: go HOLD arbitrator\n", function);
    headset_ccm_->arbitrateHeadsetHOLD(cid, update_headset_state, hid_headset_set_mute);
}

void PluginManager::endCall(const std::string& /*unused*/, const std::string& cid) {
    static constexpr const char* function = "plugin_control::PluginManager::endCall";
    if (is_plugin_stopped()) {
        return;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: cid=%s\n", function, cid.c_str());
    headset_ccm_->onCallStateUpdate(CALL_STATE_IDLE, cid, false);
    updateHeadsetLedState();
    plugin_log("3rdPartyHeadsetPlugin: %s: go IDLE arbitrator\n", function);
    headset_ccm_->arbitrateHeadsetIDLE(cid, update_headset_state, hid_headset_set_mute);
}

void PluginManager::reservedCallControl13(const std::string& /*first*/, const std::string& /*second*/) {}

void PluginManager::callStateSync(const std::string& device_id, const std::vector<ICallInfo>& calls,
                                  int num_calls) {
    if (is_plugin_stopped()) {
        return;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: device_id:[%s], calls.size:[%d], num_calls:[%d]\n",
               "plugin_control::PluginManager::callStateSync", device_id.c_str(),
               static_cast<int>(calls.size()), num_calls);
    headset_ccm_->populateCallState(device_id, calls, static_cast<std::uint32_t>(num_calls));
    if (call_sm_initialized_) {
        show_all_calls();
    }
}

void PluginManager::setCallControlListener(const std::shared_ptr<IPluginCallControlListener>& listener) {
    call_control_listener_.set(listener);
    if (const auto attached = getCallControlListener()) {
        attached->onListenerAttached(std::string());
    }
}

std::shared_ptr<IPluginCallControlListener> PluginManager::getCallControlListener() {
    return call_control_listener_.get().lock();
}

void PluginManager::updateHeadsetLedState() {
    plugin_log("3rdPartyHeadsetPlugin: %s: headset_state=%d\n",
               "plugin_control::PluginManager::updateHeadsetLedState", headset_ccm_->getHeadsetLedState());
}

void PluginManager::initHeadset() {
    plugin_log("3rdPartyHeadsetPlugin: %s: init headset after plugged in\n",
               "plugin_control::PluginManager::initHeadset");
    call_sm_initialized_ = true;
    show_all_calls();
}

void PluginManager::show_all_calls() {
    // A host that reports calls without a pause does not keep the worker from its other tasks.
    constexpr int most_decisions = 9;
    bool shown = false;
    for (int decision = 1; !shown && decision <= most_decisions; ++decision) {
        const std::uint32_t decided_on = headset_ccm_->list_changes();
        const auto still_holds = [&] {
            shown = decision == most_decisions || headset_ccm_->list_changes() == decided_on;
            return shown;
        };
        shown = true;  // where nothing is asked there is nothing to show
        headset_ccm_->arbitrateHeadsetINIT(
            [&](std::uint32_t state) { update_headset_state_if(state, still_holds); },
            [&](int muted) { hid_headset_set_mute_if(muted, still_holds); });
    }
}

}  // namespace plugin_control
