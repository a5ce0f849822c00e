// What headsets report, on its way to the manager and the host.

#include <exception>

#include "base/plugin_log.h"
#include "device/device_events.h"
#include "devicemgr/device_mgr_events.h"
#include "plugin/plugin_manager.h"

namespace {

/// Tells the host's listener. On the worker an exception would end the process, and the headset must be
/// brought into step, or forgotten, whatever the host makes of the news.
template <typename Tell>
void tell_listener(const char* function, const Tell& tell) {
    try {
        tell();
    } catch (const std::exception& error) {
        plugin_log("3rdPartyHeadsetPlugin: %s: exception caught: %s \n", function, error.what());
    } catch (...) {
        plugin_log("3rdPartyHeadsetPlugin: %s: exception caught: %s \n", function, "unknown");
    }
}

}  // namespace

void plugin_control::on_headset_ready(const std::string& host_device_id, int vendor_id, int product_id,
                                      const std::string& vendor_name, const std::string& device_name,
                                      const std::string& serial) {
    static constexpr const char* function = "plugin_control::on_headset_ready";
    plugin_log("3rdPartyHeadsetPlugin: %s:\n", function);
    const auto manager = plugin_manager();
    if (!manager) {
        return;
    }
    if (const auto listener = manager->getCallControlListener()) {
        plugin_log("3rdPartyHeadsetPlugin: %s: onActiveDeviceNotify\n", function);
        tell_listener(function, [&] {
            listener->onActiveDeviceNotify(host_device_id, vendor_id, product_id, vendor_name, device_name,
                                           serial);
        });
    }
    if (plugin_manager() != manager) {
        return;  // stopped meanwhile: the calls of this manager are not those of the plug-in's next start
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: initHeadset\n", function);
    manager->initHeadset();
}

void headset_plugin::onDeviceRemoved(const std::string& host_device_id, int vendor_id, int product_id,
                                     const std::string& vendor_name, const std::string& device_name,
                                     const std::string& serial) {
    static constexpr const char* function = "headset_plugin::onDeviceRemoved";
    plugin_log("3rdPartyHeadsetPlugin: %s: device: serial [%s]\n", function, serial.c_str());
    const auto manager = plugin_control::plugin_manager();
    if (!manager) {
        return;
    }
    if (const auto listener = manager->getCallControlListener()) {
        tell_listener(function, [&] {
            listener->onDeviceRemovedNotify(host_device_id, vendor_id, product_id, vendor_name, device_name,
                                            serial);
        });
    }
}

void headset_plugin::onActiveDeviceOpened() {
    plugin_log("3rdPartyHeadsetPlugin: %s:\n", "headset_plugin::onActiveDeviceOpened");
    if (const auto manager = plugin_control::plugin_manager()) {
        manager->initHeadset();
    }
}

void headset_plugin::updateHeadsetState() {
    plugin_log("3rdPartyHeadsetPlugin: %s:\n", "headset_plugin::updateHeadsetState");
    const auto manager = plugin_control::plugin_manager();
    if (manager && !plugin_control::is_plugin_stopped()) {
        manager->updateHeadsetLedState();
    }
}
