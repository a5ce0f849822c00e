// The configuration side. Most of its operations are fixed answers that the interface asks for.

#include "base/plugin_log.h"
#include "devicemgr/admission.h"
#include "devicemgr/device_mgr_api.h"
#include "plugin/plugin_manager.h"

namespace plugin_control {

bool PluginManager::getHeadsetModel(const std::string& device_id, std::string& model, int /*unused*/) {
    if (!is_active_device(device_id)) {
        return false;
    }
    model = get_headset_model(device_id);
    plugin_log("3rdPartyHeadsetPlugin: %s: model %s\n", "plugin_control::PluginManager::getHeadsetModel",
               model.c_str());
    return !model.empty();
}

bool PluginManager::is_active_device(const std::string& device_id) {
    const char* const active_id = get_active_device_id();
    if (active_id == nullptr) {
        return false;
    }
    // The host's id is a longer text that holds the plug-in's.
    if (device_id.find(active_id) != std::string::npos) {
        return true;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: device_id=%s, active device\n",
               "plugin_control::PluginManager::is_active_device", device_id.c_str());
    return false;
}

void PluginManager::setDoNotDisturb(const std::string& /*unused*/, int value) {
    plugin_log("3rdPartyHeadsetPlugin: %s: ENTER, value %d\n",
               "plugin_control::PluginManager::setDoNotDisturb", value);
}

void PluginManager::registerDeviceAvailabilityHook(const std::function<bool(int, int)>& hook) {
    plugin_log("3rdPartyHeadsetPlugin: %s: ENTER\n",
               "plugin_control::PluginManager::registerDeviceAvailabilityHook");
    set_device_availability_hook(hook);
}

void PluginManager::setConfigListener(const std::shared_ptr<IPluginConfigListener>& listener) {
    config_listener_.set(listener);
}

std::shared_ptr<IPluginConfigListener> PluginManager::getConfigListener() {
    return config_listener_.get().lock();
}

void PluginManager::reservedConfig1(bool /*value*/) {}

bool PluginManager::reservedConfig2() {
    return false;
}

int PluginManager::reservedConfig3(const std::string& /*first*/, int /*second*/) {
    return 0;
}

bool PluginManager::reservedConfig4() {
    return false;
}

int PluginManager::reservedConfig6(const std::string& /*first*/, const std::string& /*second*/) {
    return 0;
}

bool PluginManager::reservedConfig7() {
    return false;
}

bool PluginManager::reservedConfig9(const std::string& /*argument*/) {
    return false;
}

bool PluginManager::reservedConfig10(const std::string& /*argument*/) {
    return false;
}

int PluginManager::reservedConfig11(const std::string& /*first*/, const std::string& /*second*/) {
    return 0;
}

void PluginManager::reservedConfig12(const std::string& /*argument*/) {}

void PluginManager::reservedConfig16(bool /*value*/) {}

void PluginManager::reservedConfig17() {}

}  // namespace plugin_control
