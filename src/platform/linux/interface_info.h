// What hidapi says of a device, in the terms of the seam.
#pragma once

#include <hidapi/hidapi.h>

#include "platform/hid_backend.h"

namespace platform::linux_platform {

/// One entry of hidapi as one of the seam. hidapi's path is that of the node, which is the HID interface.
/// \param entry  has a path
HidInterfaceInfo interface_info(const hid_device_info& entry);

}  // namespace platform::linux_platform
