#include "tools/headset/udev_rules.h"

#include <string_view>

#include "device/vendor_names.h"
#include "tools/common/text.h"

namespace headset {
namespace {

constexpr const char* heading =
    "# USB headsets that the headset plug-in knows: whoever sits at the machine may open their hidraw nodes.\n"
    "# Made by \"headset udev-rules\".\n"
    "#\n"
    "# KERNELS is the kernel's name of the HID device: bus, vendor, product. Unlike ATTRS{idVendor} it also fits the\n"
    "# devices that the kernel emulates for other programs (uhid).\n"
    "#\n"
    "# The rules fit every HID device of a vendor, keyboards and mice as well. Leave out the vendors that you have no\n"
    "# headset of.\n";

}  // namespace

std::string udev_rule(std::int32_t vendor_id) {
    constexpr unsigned bus_usb = 0x03;  // kernel, include/uapi/linux/input.h: BUS_USB
    return "SUBSYSTEM==\"hidraw\", KERNELS==\"" + tools::to_hex16(bus_usb) + ":" +
           tools::to_hex16(static_cast<unsigned>(vendor_id)) + ":*\", TAG+=\"uaccess\"";
}

std::string udev_rules() {
    std::string text = heading;
    std::string_view last_name;
    for (const auto& vendor : headset_plugin::vendor_names()) {
        if (vendor.name != last_name)
            text += std::string("\n# ") + vendor.name + '\n';
        last_name = vendor.name;
        text += udev_rule(vendor.vendor_id) + '\n';
    }
    return text;
}

}  // namespace headset
