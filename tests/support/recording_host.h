// A host's listeners that keep what they are told.
#pragma once

#include <string>
#include <vector>

#include "orvex/headset_plugin.h"
#include "tests/support/recording.h"

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

    std::vector<std::string> calls() const { return calls_.texts(); }
    void clear() { calls_.clear(); }
    /// Waits for a call (since the last clear). False when `patience` is over.
    bool wait_for(const std::string& call) const { return calls_.wait_for(call); }
    bool wait_for_count(const std::string& call, std::size_t count) const {
        return calls_.wait_for_count(call, count);
    }
    /// Called, outside any lock, with every call; it may throw.
    void on_call(Recording::Action action) { calls_.on_text(std::move(action)); }

  private:
    Recording calls_;
};

}  // namespace test_support
