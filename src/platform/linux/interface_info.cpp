#include "platform/linux/interface_info.h"

namespace platform::linux_platform {

namespace {

std::optional<std::wstring> stated(const wchar_t* text) {
    return text == nullptr ? std::nullopt : std::optional<std::wstring>(text);
}

/// hidapi gives an empty serial number for none; two headsets without one are not the same headset.
std::optional<std::wstring> stated_serial(const wchar_t* text) {
    return text == nullptr || *text == L'\0' ? std::nullopt : stated(text);
}

}  // namespace

HidInterfaceInfo interface_info(const hid_device_info& entry) {
    return {.path = entry.path,
            .hid_interface = entry.path,
            .vendor_id = entry.vendor_id,
            .product_id = entry.product_id,
            .serial_number = stated_serial(entry.serial_number),
            .release_number = entry.release_number,
            .manufacturer_string = stated(entry.manufacturer_string),
            .product_string = stated(entry.product_string),
            .usage_page = entry.usage_page,
            .usage = entry.usage,
            .interface_number = entry.interface_number,
            .bus_type = entry.bus_type};
}

}  // namespace platform::linux_platform
