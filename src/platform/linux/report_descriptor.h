// Report descriptors (HID 1.11, 6.2.2) as the kernel hands them out.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace platform::linux_platform {

/// The report descriptor of an open hidraw node (kernel, Documentation/hid/hidraw.rst: HIDIOCGRDESC); empty
/// for what is no such node, with errno set.
std::vector<std::uint8_t> descriptor_of(int hidraw);

/// The report descriptor of a node by its name, "/dev/hidraw3", which everybody may read, unlike the node
/// (kernel, Documentation/ABI/testing/sysfs-driver-hid: report_descriptor); empty where there is none.
std::vector<std::uint8_t> descriptor_of(const std::string& node);

}  // namespace platform::linux_platform
