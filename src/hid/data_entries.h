// Makes the data entries of a freshly opened device from its capabilities.
#pragma once

#include <stdexcept>
#include <string>

#include "hid/hid_device.h"

namespace headset_plugin {

/// Why opening failed; the text becomes the device's last error.
class OpenError : public std::runtime_error {
  public:
    explicit OpenError(std::wstring text) : std::runtime_error("open failed"), text_(std::move(text)) {}
    const std::wstring& text() const { return text_; }

  private:
    std::wstring text_;
};

/// Fetches the capabilities of both directions and makes one entry per button capability, in order, followed
/// by one per usage of every value capability, and the output report buffer. `device` is not shared yet.
/// Throws OpenError.
void query_device_info(hid_device& device);

}  // namespace headset_plugin
