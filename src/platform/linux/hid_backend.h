// HID devices through hidapi and hidraw.
#pragma once

#include <atomic>

#include "platform/hid_backend.h"
#include "platform/linux/hidapi.h"
#include "platform/mutex.h"

namespace platform::linux_platform {

class LinuxHidBackend final : public HidBackend {
  public:
    std::wstring init() override;
    void exit() override;
    HidapiVersion hidapi_version() override;
    std::vector<HidInterfaceInfo> enumerate(std::uint16_t vendor_id, std::uint16_t product_id) override;
    OpenResult open(const std::string& path) override;
    void HidD_FreePreparsedData(PHIDP_PREPARSED_DATA data) override;

  private:
    Mutex load_mutex_;
    std::atomic<const Hidapi*> hidapi_{nullptr};  ///< never taken back: open devices use it
    Mutex hidapi_mutex_;  ///< hidapi keeps one error text for all its functions without a device
};

}  // namespace platform::linux_platform
