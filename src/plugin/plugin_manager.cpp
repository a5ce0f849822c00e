#include "plugin/plugin_manager.h"

#include "base/plugin_log.h"
#include "device/device.h"
#include "devicemgr/device_mgr_api.h"

namespace plugin_control {

namespace {

platform::Guarded<std::shared_ptr<PluginManager>>& g_plugin_manager() {
    static auto* const manager =
        new platform::Guarded<std::shared_ptr<PluginManager>>;  // outlives every thread
    return *manager;
}

std::atomic<bool> g_plugin_stopped{false};

}  // namespace

std::shared_ptr<PluginManager> plugin_manager() {
    return g_plugin_manager().get();
}

bool is_plugin_stopped() {
    return g_plugin_stopped;
}

std::shared_ptr<PluginManager> getOrCreatePluginManager(const std::weak_ptr<IPluginLogger>& logger) {
    if (auto manager = plugin_manager()) {
        return manager;
    }
    g_plugin_stopped = false;
    std::shared_ptr<PluginManager> manager;
    try {
        manager.reset(new PluginManager(logger));
    } catch (...) {
        stop_device_mgr();  // or the host would be left with threads that it does not know of
        throw;
    }
    g_plugin_manager().set(manager);
    return manager;
}

PluginManager::PluginManager(const std::weak_ptr<IPluginLogger>& logger) : logger_(logger) {
    plugin_log("3rdPartyHeadsetPlugin: %s:\n", "plugin_control::PluginManager::PluginManager");
    start_device_mgr(1);
    PluginManager::reservedConfig1(true);
    headset_ccm_ = std::make_unique<headset_plugin::headset_ccm>();
    headset_plugin::device::register_key_callback(&onHeadsetKeyEvent);
}

void PluginManager::stopPluginManager() {
    plugin_log("3rdPartyHeadsetPlugin: %s:\n", "plugin_control::PluginManager::stopPluginManager");
    g_plugin_stopped = true;
    try {
        stop_device_mgr();
    } catch (...) {
        g_plugin_manager().set(nullptr);  // or the next start would find a manager that has stopped
        throw;
    }
    g_plugin_manager().set(nullptr);
}

}  // namespace plugin_control

std::shared_ptr<plugin_control::IPluginLogger> getPluginLogger() {
    const auto manager = plugin_control::plugin_manager();
    return manager ? manager->logger() : nullptr;
}
