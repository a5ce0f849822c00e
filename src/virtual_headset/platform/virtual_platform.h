// The platform whose headsets live in the process.
#pragma once

#include "platform/common/message_window.h"
#include "platform/platform.h"
#include "virtual_headset/platform/virtual_clock.h"
#include "virtual_headset/virtual_bus.h"

namespace platform::virtual_platform {

class VirtualPlatform final : public Platform, private HidBackend {
  public:
    VirtualPlatform();

    HidBackend& hid() override { return *this; }
    const HidParser& parser() override;
    MessageWindows& windows() override { return *seam_windows_.load(); }
    Clock& clock() override { return clock_; }

    VirtualBus& bus() { return bus_; }
    VirtualClock& virtual_clock() { return clock_; }
    common::QueuedMessageWindows& virtual_windows() { return windows_; }

    /// Puts another parser in the place of platform/hidp; null brings that back. For a test that wants one to
    /// fail.
    void set_parser(const HidParser* parser);

    /// Puts other windows in the place of virtual_windows(); null brings those back. For a test that wants to
    /// see what is asked of them, or one to fail.
    void set_windows(MessageWindows* windows);

  private:
    std::wstring init() override;
    void exit() override;
    HidapiVersion hidapi_version() override;
    std::vector<HidInterfaceInfo> enumerate(std::uint16_t vendor_id, std::uint16_t product_id) override;
    OpenResult open(const std::string& path) override;
    void HidD_FreePreparsedData(PHIDP_PREPARSED_DATA data) override;

    common::QueuedMessageWindows windows_;
    VirtualClock clock_;
    VirtualBus bus_;
    std::atomic<const HidParser*> parser_;
    std::atomic<MessageWindows*> seam_windows_;
};

/// current(), by its own type.
VirtualPlatform& virtual_platform();

}  // namespace platform::virtual_platform
