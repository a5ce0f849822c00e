// Headset keys on their way to the host.

#include "base/plugin_log.h"
#include "devicemgr/device_mgr_api.h"
#include "plugin/plugin_manager.h"

namespace plugin_control {

using headset_plugin::CallAction;

void onHeadsetKeyEvent(std::uint16_t keycode, const std::string& device_serial) {
    if (const auto manager = plugin_manager()) {
        manager->handleKeyEvent(static_cast<std::int16_t>(keycode), device_serial);
    }
}

void PluginManager::handleKeyEvent(std::int16_t keycode, const std::string& /*device_serial*/) {
    static constexpr const char* function = "plugin_control::PluginManager::handleKeyEvent";
    plugin_log("3rdPartyHeadsetPlugin: %s: keycode = %d\n", function, keycode);
    const char* const active_id = get_active_device_id();
    const std::string device_id = active_id == nullptr ? "" : active_id;
    std::string cid;
    // The call list is made with the manager, which nobody sees before it is whole: no key comes this far
    // without.
    if (!headset_ccm_) {
        plugin_log("3rdPartyHeadsetPlugin: %s: call SM is not initialized = %d\n", function, keycode);
        return;
    }
    const CallAction action = headset_ccm_->mapKeyToCallAction(cid, keycode);
    if (action == CallAction::ignore) {
        dispatch_secondary(headset_ccm_->mapKeyToSecondaryEvent(cid, keycode), device_id, cid);
        return;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: key = %s\n", function, headset_plugin::to_string(action));
    dispatch(action, device_id, cid);
}

void PluginManager::dispatch(CallAction action, const std::string& device_id, const std::string& cid) {
    if (const auto listener = getCallControlListener()) {
        send_action(*listener, action, device_id, cid, [&] { return headset_ccm_->isCallMuted(cid); });
    }
}

void send_action(IPluginCallControlListener& listener, CallAction action, const std::string& device_id,
                 const std::string& cid, const std::function<bool()>& is_muted) {
    switch (action) {
        case CallAction::answer:
            listener.onAnswer(device_id, cid);
            break;
        case CallAction::end_call:
            listener.onEndCall(device_id, cid);
            break;
        case CallAction::hold_call:
            listener.onHoldCall(device_id, cid);
            break;
        case CallAction::resume_call:
            listener.onResumeCall(device_id, cid);
            break;
        case CallAction::reject_call:
            listener.onRejectCall(device_id, cid);
            break;
        case CallAction::mute_call:
            listener.onMuteCall(device_id, cid, is_muted());
            break;
        case CallAction::unmute_call:
            listener.onUnmuteCall(device_id, cid, is_muted());
            break;
        default:
            break;  // the host has no operation for the others
    }
}

void PluginManager::dispatch_secondary(std::uint32_t event, const std::string& device_id,
                                       const std::string& cid) {
    if (event == headset_plugin::configuration_key) {
        if (const auto listener = getConfigListener()) {
            listener->onConfigKey(false);
        }
    } else if (event == headset_plugin::function_key) {
        if (const auto listener = getCallControlListener()) {
            listener->onFunctionKey(device_id, cid);
        }
    }
}

}  // namespace plugin_control
