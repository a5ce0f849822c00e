// The HID interfaces of the system, as the plug-in sees them.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tools/headset/caps_json.h"
#include "tools/headset/interfaces.h"

namespace headset {

/// One interface: a top-level collection of a node.
struct ListedInterface {
    platform::HidInterfaceInfo info{};
    /// By direction, in bytes with the id, 0 where there are no reports; absent where the report descriptor
    /// is refused.
    std::optional<std::array<std::size_t, 3>> report_lengths{};
    std::optional<plugin_control::Refusal> refusal{};  ///< empty where the plug-in accepts it
};

struct ListedNode {
    std::string path{};
    std::vector<ListedInterface> interfaces{};
    int open_error = 0;  ///< the errno with which this user's open fails, 0 where it does not
};

/// Throws std::runtime_error without hidapi.
std::vector<ListedNode> list(System& system);

std::string to_text(const std::vector<ListedNode>& nodes);

/// One object per interface.
std::vector<Json> to_json(const std::vector<ListedNode>& nodes);

}  // namespace headset
