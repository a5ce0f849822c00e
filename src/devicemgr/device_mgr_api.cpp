#include "devicemgr/device_mgr_api.h"

#include <atomic>
#include <memory>

#include "base/plugin_log.h"
#include "device/device_events.h"
#include "devicemgr/device_mgr.h"
#include "devicemgr/message_thread.h"
#include "platform/mutex.h"

namespace {

using plugin_control::device_mgr;

platform::Guarded<std::shared_ptr<device_mgr>>& g_device_mgr() {
    static auto* const manager = new platform::Guarded<std::shared_ptr<device_mgr>>;  // outlives every thread
    return *manager;
}

/// Whether a start came last, or a stop. Nothing here asks; it is for somebody who looks in with a debugger.
std::atomic<bool> g_device_mgr_started{false};

/// The manager; logs its absence.
std::shared_ptr<device_mgr> ready_manager(const char* function) {
    auto manager = g_device_mgr().get();
    if (!manager) {
        plugin_log("3rdPartyHeadsetPlugin: %s: device_mgr not ready\n", function);
    }
    return manager;
}

/// The same, after the line that most functions begin with.
std::shared_ptr<device_mgr> enter(const char* function) {
    plugin_log("3rdPartyHeadsetPlugin: %s: enter\n", function);
    return ready_manager(function);
}

/// The window of this manager's message thread, or the one that is left over when the manager is gone; null
/// when another thread has started the next manager meanwhile.
platform::WindowHandle window_of(const std::shared_ptr<device_mgr>& manager) {
    const auto window = plugin_control::settled_message_window();
    return g_device_mgr().get() == manager ? window : nullptr;
}

}  // namespace

void start_device_mgr(std::uint32_t /*unused*/) {
    static constexpr const char* function = "start_device_mgr";
    g_device_mgr_started = true;
    plugin_log("3rdPartyHeadsetPlugin: %s:\n", function);
    auto manager = g_device_mgr().get();
    if (!manager) {
        plugin_log("3rdPartyHeadsetPlugin: %s:creating\n", function);
        manager = std::make_shared<device_mgr>();
        g_device_mgr().set(manager);
    }
    manager->device_mgr_start();
}

void stop_device_mgr() {
    static constexpr const char* function = "stop_device_mgr";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter\n", function);
    auto manager = g_device_mgr().get();
    const auto window = window_of(manager);
    if (manager) {
        manager->device_mgr_stop();
    }
    g_device_mgr().replace(manager, nullptr);
    manager.reset();  // gone, unless somebody else still works with it, before the stop is called completed
    plugin_log("3rdPartyHeadsetPlugin: %s: completed\n", function);
    plugin_control::end_message_thread(window);
    plugin_log("3rdPartyHeadsetPlugin: %s: try to end message thread \n", function);
    g_device_mgr_started = false;
}

bool set_audio_device(const char* device_id, const char* device_name, const char* serial) {
    static constexpr const char* function = "set_audio_device";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter: serial[%s]\n", function, serial == nullptr ? "" : serial);
    const auto manager = ready_manager(function);
    return manager && manager->setAudioDevice(device_id, device_name, serial);
}

const char* get_active_device_id() {
    static constexpr const char* function = "get_active_device_id";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter:\n", function);
    const auto manager = ready_manager(function);
    return manager ? manager->get_active_device_id() : nullptr;
}

std::string get_headset_model(const std::string& device_id) {
    const auto manager = enter("get_headset_model");
    return manager ? manager->get_headset_model(device_id) : std::string();
}

void update_headset_state(std::uint32_t headset_state) {
    update_headset_state_if(headset_state, {});
}

void update_headset_state_if(std::uint32_t headset_state, const std::function<bool()>& still_holds) {
    if (const auto manager = enter("update_headset_state")) {
        manager->set_active_headset_state(headset_state, still_holds);
    }
}

void hid_headset_set_mute(int muted) {
    hid_headset_set_mute_if(muted, {});
}

void hid_headset_set_mute_if(int muted, const std::function<bool()>& still_holds) {
    static constexpr const char* function = "hid_headset_set_mute";
    const auto manager = enter(function);
    if (!manager) {
        return;
    }
    const bool mute = muted >= 1;
    plugin_log("3rdPartyHeadsetPlugin: %s: send muted=%s\n", function, true_or_false(mute));
    manager->set_headset_mute_state(mute, still_holds);
}

void remove_headset_with_serial(const std::string& serial) {
    if (const auto manager = enter("remove_headset_with_serial")) {
        manager->remove_device_with_serial(serial);
    }
}

void post_device_mgr_task(headset_plugin::WorkerTask task) {
    if (const auto manager = g_device_mgr().get()) {
        manager->post_task(std::move(task));
    }
}

void EnumerationOrvexHidDevice() {
    if (const auto manager = enter("EnumerationOrvexHidDevice")) {
        manager->enumerate_hid_device();
    }
}
