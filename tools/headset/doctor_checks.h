// What the doctor checks: each row of the two tables is something that can be wrong, with its remedy.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "tools/headset/doctor.h"
#include "tools/headset/explain.h"
#include "tools/headset/interfaces.h"

namespace headset {

/// What is looked at on the machine.
struct Machine {
    std::string hidapi_error;
    std::string udev_error;
    bool has_udev_daemon = false;
    bool is_root = false;
    bool has_headset = false;
};

/// What is looked at of a headset.
struct Headset {
    Node node{};
    NodeState state{};
    Explanation explanation{};         ///< of a device like it that states a serial number
    std::string descriptor_error{};    ///< empty where the report descriptor is not refused
    std::optional<RulesFile> rules{};  ///< those that fit it
    bool has_udev_daemon = false;

    const platform::HidInterfaceInfo& info() const { return node.interfaces.front(); }
    std::string label() const { return device_name(info()) + " (" + node.path + ")"; }
};

/// Something that can be wrong with a subject.
template <class Subject>
struct Check {
    Severity severity;
    const char* name;
    std::string (*problem)(const Subject&);  ///< empty where all is well
    std::string (*remedy)(const Subject&);
};

std::span<const Check<Machine>> machine_checks();
std::span<const Check<Headset>> headset_checks();

/// The file of udev rules that lets people open a device, if it is there.
std::optional<RulesFile> find_rules(System& system, std::int32_t vendor_id, bool has_sound);

}  // namespace headset
