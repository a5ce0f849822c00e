#include "virtual_headset/platform/virtual_platform.h"

#include <hidapi/hidapi.h>

namespace platform {

namespace virtual_platform {

VirtualPlatform::VirtualPlatform()
    : bus_(
          [this](bool arrived) {
              windows_.notify_device_change(arrived ? DBT_DEVICEARRIVAL : DBT_DEVICEREMOVECOMPLETE);
          },
          [this] { return clock_.make_sleeper(); }),
      parser_(&hidp::parser()),
      seam_windows_(&windows_) {}

const HidParser& VirtualPlatform::parser() {
    return *parser_.load();
}

void VirtualPlatform::set_parser(const HidParser* parser) {
    parser_ = parser == nullptr ? &hidp::parser() : parser;
}

void VirtualPlatform::set_windows(MessageWindows* windows) {
    seam_windows_ = windows == nullptr ? &windows_ : windows;
}

std::wstring VirtualPlatform::init() {
    return {};
}

void VirtualPlatform::exit() {}

// No hidapi is at work here: what the functions mean is what its header says.
HidapiVersion VirtualPlatform::hidapi_version() {
    return {HID_API_VERSION_MAJOR, HID_API_VERSION_MINOR, HID_API_VERSION_PATCH, HID_API_VERSION_STR};
}

std::vector<HidInterfaceInfo> VirtualPlatform::enumerate(std::uint16_t vendor_id, std::uint16_t product_id) {
    return bus_.enumerate(vendor_id, product_id);
}

HidBackend::OpenResult VirtualPlatform::open(const std::string& path) {
    return bus_.open(path);
}

void VirtualPlatform::HidD_FreePreparsedData(PHIDP_PREPARSED_DATA data) {
    hidp::PreparsedDataDeleter{}(data);
}

VirtualPlatform& virtual_platform() {
    static auto* const platform = new VirtualPlatform;  // outlives every thread
    return *platform;
}

VirtualBus& headset_bus() {
    return virtual_platform().bus();
}

}  // namespace virtual_platform

Platform& current() {
    return virtual_platform::virtual_platform();
}

}  // namespace platform
