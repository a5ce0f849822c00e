// Virtual headsets: what the commands plug, press and spoil, and the watcher that reports what the headsets
// see.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "tools/softphone/event_queue.h"
#include "tools/softphone/plugin_library.h"

namespace softphone {

/// The virtual headsets of a library. A library without any is accepted, and every operation then throws
/// CommandError; so does an operation that fails.
class VirtualHeadsets {
  public:
    VirtualHeadsets(const std::optional<VirtualApi>& api, EventQueue& events);
    /// Unplugs every headset.
    ~VirtualHeadsets();
    VirtualHeadsets(const VirtualHeadsets&) = delete;
    VirtualHeadsets& operator=(const VirtualHeadsets&) = delete;

    bool available() const { return api_.has_value(); }

    /// Plugs a headset of a model and returns its number. Without a serial number it has the model's own.
    int plug(const std::string& model, const std::optional<std::string>& serial);
    void unplug(int headset);
    void replug(int headset);
    void press(int headset, Usage key);
    void set_key(int headset, Usage key, bool down);
    void send_report(int headset, std::span<const std::uint8_t> report);
    void misbehave(int headset, const std::string& fault);

    /// What can be plugged.
    std::vector<ModelListed> models() const;
    /// What misbehave() knows.
    static Words faults();

  private:
    const VirtualApi& api() const;
    void check(int result) const;
    static void watch(const orvex_virtual_event* event, void* self);
    std::vector<Indicator> indicators(int headset) const;

    const std::optional<VirtualApi>& api_;
    EventQueue& events_;
};

}  // namespace softphone
