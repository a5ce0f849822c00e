// HID interfaces as the plug-in sees them: by the node that carries them, and what it makes of each.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "devicemgr/admission.h"
#include "tools/headset/descriptor_file.h"
#include "tools/headset/system.h"

namespace headset {

/// A hidraw node with its top-level collections, in their order.
struct Node {
    std::string path{};
    std::vector<platform::HidInterfaceInfo> interfaces{};  ///< at least one
};

/// Every node of the system. Throws std::runtime_error without hidapi.
std::vector<Node> list_nodes(System& system);

/// Whether a path names a node, alone or with a collection. Needs no hidapi.
bool names_node(System& system, const std::string& path);

/// The node of a path, alone or with a collection, with the interfaces that the path names. Throws Refused.
Node find_node(System& system, const std::string& path);

/// The nodes of a headset by the path of a node, alone or with a collection, or by its serial number; by
/// neither, the first node that has a collection of the Telephony page. Throws Refused.
std::vector<Node> find_headset(System& system, const std::string& path_or_serial);

/// The node of the device with this serial number; of several, the first with a collection of the Telephony
/// page. Nothing where no device has it, or hidapi is missing.
std::optional<Node> find_serial(System& system, const std::string& serial);

bool has_telephony(const Node& node);

/// The rule that keeps an interface out; empty when it is accepted.
std::optional<plugin_control::Refusal> find_refusal(const platform::HidInterfaceInfo& info);

/// A text that a device states, as it can be shown.
std::string printable(std::wstring_view text);

/// The device's name, "unnamed device" where it states none.
std::string device_name(const platform::HidInterfaceInfo& info);
/// "0B0E:24C9"
std::string device_ids(const platform::HidInterfaceInfo& info);

/// The report descriptor of a node, with what the device says of itself.
Descriptor describe(System& system, const Node& node);

}  // namespace headset
