// The host's side of the plug-in: starts it, stops it, and calls it.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tools/softphone/actions.h"
#include "tools/softphone/listeners.h"
#include "tools/softphone/plugin_library.h"

namespace softphone {

/// The audio device that the user chose, as the desktop describes it.
struct AudioDevice {
    std::string id;
    std::string name;
    std::string serial;
};

/// Used by the main thread alone. Every call is posted as an event before it is made, so that what it causes
/// is shown after it. While the plug-in is stopped no call is made: people telephone without it, too.
class Host {
  public:
    Host(const PluginLibrary& library, std::shared_ptr<EventQueue> events);
    /// Stops the plug-in: it must not call back into a host that is gone.
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// Starts the plug-in and registers the listeners; nothing when it is running. Throws CommandError when
    /// the plug-in refuses.
    void start();
    void stop();
    bool running() const { return control_ != nullptr; }

    void set_audio_device(const AudioDevice& device);
    void create_call(const std::string& cid, int direction);
    void incoming_call(const std::string& cid, bool ringing);
    void report(CallStep step, const std::string& cid);
    void sync(const std::string& device_id, const std::vector<plugin_control::ICallInfo>& calls);
    void set_do_not_disturb(int value);

  private:
    /// Posts the call; false when it cannot be made, because the plug-in is stopped.
    bool announce(const char* function, std::vector<Argument> arguments);

    const PluginLibrary& library_;
    std::shared_ptr<EventQueue> events_;
    // The plug-in keeps weak references: whoever wants to hear of something keeps the listener.
    std::shared_ptr<plugin_control::IPluginLogger> logger_;
    std::shared_ptr<plugin_control::IPluginCallControlListener> call_listener_;
    std::shared_ptr<plugin_control::IPluginConfigListener> config_listener_;
    // The plug-in owns both; they are valid until it is stopped.
    plugin_control::IPluginCallControlCallback* control_ = nullptr;
    plugin_control::IPluginConfigCallback* config_ = nullptr;
};

}  // namespace softphone
