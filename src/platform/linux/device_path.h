// Where a HID device is found: a hidraw node carries all top-level collections of an interface, so a path
// names both.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace platform::linux_platform {

/// "/dev/hidraw3:2" is the second top-level collection of that node; a node alone leaves the collection open.
struct DevicePath {
    std::string node;
    std::optional<std::size_t> collection{};  ///< counted from 0

    std::string to_string() const;
    /// Any text is a path: what is no number behind the last colon belongs to the node.
    static DevicePath parse(const std::string& text);
};

}  // namespace platform::linux_platform
