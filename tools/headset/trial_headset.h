// A virtual headset made from a descriptor, in the hands of the plug-in's own functions.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "devicemgr/admission.h"
#include "drivers/driver_factory.h"
#include "hid/hid_access.h"
#include "tools/headset/descriptor_file.h"
#include "tools/headset/usage_names.h"
#include "virtual_headset/virtual_bus.h"

namespace headset {

/// Plugged into a bus of its own: what else the process has to do with devices is the system's.
class TrialHeadset {
  public:
    /// Throws Refused, with the parser's reason.
    explicit TrialHeadset(const Descriptor& descriptor);

    /// A top-level collection, as the plug-in finds it when it looks through the devices.
    struct Interface {
        std::string path;
        Usage usage;
        std::optional<plugin_control::Refusal> refusal{};  ///< empty where it is accepted
        bool is_telephony = false;
    };
    std::vector<Interface> interfaces() const;

    /// Opens an interface; false, with the reason in open_error(), where the plug-in cannot.
    bool open(const Interface& interface);
    const std::string& open_error() const { return open_error_; }

    /// Whether the plug-in has a driver for the headset's vendor.
    bool has_driver() const { return driver_ != nullptr; }

    // With an interface open.

    /// The report that sets an indicator; nothing where the plug-in builds none. It is written to the
    /// headset.
    std::optional<Bytes> set_indicator(Usage indicator, bool on);
    /// The report that shows a connected call; nothing where the plug-in builds none. It is written to the
    /// headset.
    std::optional<Bytes> show_call();
    /// The same for a muted microphone.
    std::optional<Bytes> show_mute();
    /// The same for a call that rings.
    std::optional<Bytes> show_ringing();
    /// Whether the headset has an indicator that is lit.
    bool is_lit(Usage indicator) const;
    /// Whether the plug-in reads an input report as the mute key.
    bool reads_as_mute(const Bytes& report) const;
    /// Whether the headset's driver makes a key of an input report; false without a driver.
    bool reads_as_key(const Bytes& report) const;

  private:
    std::optional<Bytes> show_state(std::uint32_t state);
    std::optional<Bytes> write(Bytes report, bool is_built);

    platform::virtual_platform::VirtualBus bus_;
    int number_;
    headset_plugin::Driver driver_;
    headset_plugin::HidHandle handle_;
    std::string open_error_;
};

}  // namespace headset
