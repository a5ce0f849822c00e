// The plug-in as the host sees it: one object that implements both host-facing interfaces.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "callstate/headset_ccm.h"
#include "orvex/headset_plugin.h"
#include "platform/mutex.h"

namespace plugin_control {

class PluginManager;

/// The one manager, empty before the first factory call and after stop. Free functions reach it through here;
/// a copy keeps it alive while it is used. Thread: any.
std::shared_ptr<PluginManager> plugin_manager();

/// The manager, created and started if there is none; `logger` counts only then.
std::shared_ptr<PluginManager> getOrCreatePluginManager(const std::weak_ptr<IPluginLogger>& logger);

/// True from stop until the next manager is created.
bool is_plugin_stopped();

/// Takes a key from the headset layer to the manager; drops it when there is none. [read thread]
void onHeadsetKeyEvent(std::uint16_t keycode, const std::string& device_serial);

/// Asks the host for an action; nothing for those that it has no operation for. `is_muted` is asked for the
/// two mute actions, when they are sent.
void send_action(IPluginCallControlListener& listener, headset_plugin::CallAction action,
                 const std::string& device_id, const std::string& cid, const std::function<bool()>& is_muted);

class PluginManager final : public IPluginCallControlCallback, public IPluginConfigCallback {
  public:
    /// Starts the device manager and registers for keys. Lines logged meanwhile are lost: the log is reached
    /// through plugin_manager(), which this object is not in yet.
    explicit PluginManager(const std::weak_ptr<IPluginLogger>& logger);
    ~PluginManager() override = default;
    PluginManager(const PluginManager&) = delete;
    PluginManager& operator=(const PluginManager&) = delete;

    /// Stops the plug-in. Thread: any.
    static void stopPluginManager();

    // IPluginCallControlCallback
    bool setAudioDevice(const std::string& device_id, const std::string& device_name,
                        const std::string& serial) override;
    bool reservedCallControl2(const std::string& first, const std::string& second) override;
    bool reservedCallControl3(const std::string& first, const std::string& second) override;
    void mute(const std::string& unused, const std::string& cid) override;
    void unmute(const std::string& unused, const std::string& cid) override;
    void createCall(const std::string& unused, const std::string& cid, int direction) override;
    void incomingCall(const std::string& unused, const std::string& cid, bool ringing) override;
    void ringbackCall(const std::string& unused, const std::string& cid) override;
    void connectCall(const std::string& unused, const std::string& cid) override;
    void holdCall(const std::string& unused, const std::string& cid) override;
    void resumeCall(const std::string& unused, const std::string& cid) override;
    void endCall(const std::string& unused, const std::string& cid) override;
    void reservedCallControl13(const std::string& first, const std::string& second) override;
    void callStateSync(const std::string& device_id, const std::vector<ICallInfo>& calls,
                       int num_calls) override;
    void setCallControlListener(const std::shared_ptr<IPluginCallControlListener>& listener) override;
    std::shared_ptr<IPluginCallControlListener> getCallControlListener() override;

    // IPluginConfigCallback
    void reservedConfig1(bool value) override;
    bool reservedConfig2() override;
    int reservedConfig3(const std::string& first, int second) override;
    bool reservedConfig4() override;
    bool getHeadsetModel(const std::string& device_id, std::string& model, int unused) override;
    int reservedConfig6(const std::string& first, const std::string& second) override;
    bool reservedConfig7() override;
    void setDoNotDisturb(const std::string& unused, int value) override;
    bool reservedConfig9(const std::string& argument) override;
    bool reservedConfig10(const std::string& argument) override;
    int reservedConfig11(const std::string& first, const std::string& second) override;
    void reservedConfig12(const std::string& argument) override;
    void registerDeviceAvailabilityHook(const std::function<bool(int, int)>& hook) override;
    void setConfigListener(const std::shared_ptr<IPluginConfigListener>& listener) override;
    std::shared_ptr<IPluginConfigListener> getConfigListener() override;
    void reservedConfig16(bool value) override;
    void reservedConfig17() override;

    /// Turns a key into a request and hands it to the host's listener. The serial is not used. [read thread]
    void handleKeyEvent(std::int16_t keycode, const std::string& device_serial);

    /// Brings a headset that became ready, or was opened, to the state of the calls. [worker thread]
    void initHeadset();

    /// Logs the LED state. Sends nothing, whatever its name says.
    void updateHeadsetLedState();

    /// The host's logger, empty once the host has let go of it.
    std::shared_ptr<IPluginLogger> logger() const { return logger_.lock(); }

  private:
    /// Shows all calls on the active headset. What was decided before the host changed the calls is not
    /// shown, but decided anew: it would replace what the change has shown.
    void show_all_calls();
    /// A call that is up, by whatever way: recorded as connected and shown as in use.
    void show_connected(const char* function, const std::string& cid);
    bool is_active_device(const std::string& device_id);
    void dispatch(headset_plugin::CallAction action, const std::string& device_id, const std::string& cid);
    void dispatch_secondary(std::uint32_t event, const std::string& device_id, const std::string& cid);

    platform::Guarded<std::weak_ptr<IPluginCallControlListener>> call_control_listener_;
    platform::Guarded<std::weak_ptr<IPluginConfigListener>> config_listener_;
    const std::weak_ptr<IPluginLogger> logger_;
    std::unique_ptr<headset_plugin::headset_ccm> headset_ccm_;
    std::atomic<bool> call_sm_initialized_{false};
};

}  // namespace plugin_control
