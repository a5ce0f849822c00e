// A host's listeners that keep what they are told.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "orvex/headset_plugin.h"
#include "tests/support/recording_logger.h"

namespace test_support {

/// Keeps every call as a line: "onAnswer(device, cid)", "onMuteCall(device, cid, true)",
/// "onListenerAttached()", "onActiveDeviceNotify(host id, 0b0e, 24c9, Jabra, Jabra Link 380c, serial)",
/// "onConfigKey(false)". Thread: any.
class RecordingListener final : public plugin_control::IPluginCallControlListener,
                                public plugin_control::IPluginConfigListener {
  public:
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
    void reservedListener11(const std::string& argument) override;
    void reservedListener12(const std::string& argument) override;
    void reservedListener13(const std::string& argument) override;
    void onFunctionKey(const std::string& device_id, const std::string& cid) override;
    void onConfigKey(bool pressed) override;

    std::vector<std::string> calls() const;
    void clear();
    /// Waits for a call (since the last clear). False when `patience` is over.
    bool wait_for(const std::string& call) const;
    bool wait_for_count(const std::string& call, std::size_t count) const;
    /// Called, outside the lock, with every call; it may throw.
    void on_call(std::function<void(const std::string&)> action);

  private:
    void record(const std::string& call);

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<std::string> calls_;
    std::function<void(const std::string&)> action_;
};

}  // namespace test_support
