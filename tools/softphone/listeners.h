// What a host implements for the plug-in: the logger and the two listeners.
//
// The plug-in calls them on threads of its own: the thread that reads the headset, the worker, the one that
// watches devices. Whoever works there holds up the headset; whoever waits there, for a lock of the host's or
// for its user interface, may wait for ever, because the host may be inside a call to the plug-in at that
// moment. So nothing here does more than post an event; the main loop acts on it.
#pragma once

#include <memory>
#include <string>

#include "orvex/headset_plugin.h"
#include "tools/softphone/event_queue.h"

namespace softphone {

/// [any thread]
class Logger final : public plugin_control::IPluginLogger {
  public:
    explicit Logger(std::shared_ptr<EventQueue> events) : events_(std::move(events)) {}
    void log(const std::string& message, int level) override;

  private:
    // Shared, because a callback that is running while the host stops outlives what the host destroys.
    std::shared_ptr<EventQueue> events_;
};

/// The requests come on the read thread, the notices on the worker.
class CallControlListener final : public plugin_control::CallControlListener {
  public:
    explicit CallControlListener(std::shared_ptr<EventQueue> events) : events_(std::move(events)) {}

    void onAnswer(const std::string& device_id, const std::string& cid) override;
    void onEndCall(const std::string& device_id, const std::string& cid) override;
    void onHoldCall(const std::string& device_id, const std::string& cid) override;
    void onResumeCall(const std::string& device_id, const std::string& cid) override;
    void onRejectCall(const std::string& device_id, const std::string& cid) override;
    void onMuteCall(const std::string& device_id, const std::string& cid, bool muted) override;
    void onUnmuteCall(const std::string& device_id, const std::string& cid, bool muted) override;
    void onListenerAttached(const std::string& text) override;
    void onActiveDeviceNotify(const std::string& host_device_id, int vendor_id, int product_id,
                              const std::string& vendor_name, const std::string& device_name,
                              const std::string& serial) override;
    void onDeviceRemovedNotify(const std::string& host_device_id, int vendor_id, int product_id,
                               const std::string& vendor_name, const std::string& device_name,
                               const std::string& serial) override;
    void onFunctionKey(const std::string& device_id, const std::string& cid) override;

  private:
    std::shared_ptr<EventQueue> events_;
};

/// [read thread]
class ConfigListener final : public plugin_control::IPluginConfigListener {
  public:
    explicit ConfigListener(std::shared_ptr<EventQueue> events) : events_(std::move(events)) {}
    void onConfigKey(bool pressed) override;

  private:
    std::shared_ptr<EventQueue> events_;
};

}  // namespace softphone
