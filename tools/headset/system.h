// What the commands ask of the machine that they run on.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "platform/hid_backend.h"
#include "tools/common/text.h"

namespace headset {

using Time = std::chrono::system_clock::time_point;

struct Process {
    std::string name;
    int id = 0;
};

/// An LED of a headset that the kernel offers to the desktop.
struct SystemLed {
    std::string name{};     ///< in /sys/class/leds
    std::string trigger{};  ///< what in the kernel switches it; "none" for nothing
};

/// What the system knows of a hidraw node beyond its enumeration.
struct NodeState {
    int open_error = 0;               ///< the errno with which this user's open fails, 0 where it does not
    std::optional<Time> rules_ran{};  ///< when udev last applied its rules to it
    bool has_sound = false;           ///< the same USB device is a sound card, too
    std::vector<std::string> mute_inputs{};  ///< input devices by which the desktop sees a mute key
    std::vector<SystemLed> mute_leds{};
    std::vector<Process> holders{};  ///< other processes that have it open, as far as this user may see
};

/// A file of udev rules.
struct RulesFile {
    std::string path{};
    std::string content{};
    Time installed{};  ///< when it came to its place, or was written last
};

class System {
  public:
    virtual ~System() = default;

    /// Gets hidapi ready; why it cannot be had, empty on success.
    virtual std::string hidapi_error() = 0;
    /// Why libudev cannot be had, empty where it can.
    virtual std::string udev_error() = 0;
    virtual bool udev_daemon_runs() = 0;
    virtual bool runs_as_root() = 0;

    /// The file of this name that udev uses, of those in its folders.
    virtual std::optional<RulesFile> rules_file(const std::string& name) = 0;

    /// The interfaces as the plug-in sees them, one per top-level collection, those of a node in a row. Only
    /// with hidapi ready.
    virtual std::vector<platform::HidInterfaceInfo> interfaces() = 0;

    /// The report descriptor of a node, empty for what is none. Needs neither hidapi nor permission.
    virtual tools::Bytes report_descriptor(const std::string& node) = 0;

    virtual NodeState node_state(const std::string& node) = 0;

    /// Opens a path of the interfaces. Only with hidapi ready.
    virtual platform::HidBackend::OpenResult open(const std::string& path) = 0;
};

}  // namespace headset
