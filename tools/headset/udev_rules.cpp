#include "tools/headset/udev_rules.h"

#include <string_view>

#include "device/vendor_names.h"
#include "tools/common/text.h"

namespace headset {
namespace {

constexpr const char* sound_heading =
    "# USB headsets: whoever sits at the machine may open their hidraw nodes.\n"
    "# Made by \"headset udev-rules\".\n"
    "\n"
    "# Devices that have an audio control interface as well (class 01, subclass 01), whoever made them.\n"
    "#\n"
    "# udev keeps the list of interfaces with the USB device. IMPORT{parent} does not reach it: the direct parent of\n"
    "# the node is the HID device. Within a line, matches come before imports: hence two lines.\n";

constexpr const char* makers_heading =
    "\n"
    "# Devices without an audio interface, of vendors that make headsets and no keyboards.\n"
    "#\n"
    "# KERNELS is the kernel's name of the HID device: bus, vendor, product. Unlike ATTRS{idVendor} it also fits the\n"
    "# devices that the kernel emulates for other programs (uhid), which have no USB interfaces.\n";

/// Vendors whose headsets get a driver, as assigned by the USB-IF. Logitech is not one of these: it makes
/// keyboards, and its headsets have an audio interface.
constexpr std::int32_t headset_makers[] = {0x047F, 0x1377, 0x1395, 0x0B0E};

}  // namespace

std::string sound_card_rules() {
    return "SUBSYSTEM==\"hidraw\", SUBSYSTEMS==\"usb\", ENV{ID_USB_INTERFACES}==\"\", "
           "IMPORT{builtin}=\"usb_id\"\n"
           "SUBSYSTEM==\"hidraw\", ENV{ID_USB_INTERFACES}==\"*:0101*\", TAG+=\"uaccess\"";
}

std::string udev_rule(std::int32_t vendor_id) {
    constexpr unsigned bus_usb = 0x03;  // kernel, include/uapi/linux/input.h: BUS_USB
    return "SUBSYSTEM==\"hidraw\", KERNELS==\"" + tools::to_hex16(bus_usb) + ":" +
           tools::to_hex16(static_cast<unsigned>(vendor_id)) + ":*\", TAG+=\"uaccess\"";
}

bool has_rule_for(const std::string& rules, std::int32_t vendor_id, bool has_sound) {
    const auto has = [lines = '\n' + rules](const std::string& rule) {
        return lines.find('\n' + rule) != std::string::npos;
    };
    return has(udev_rule(vendor_id)) || (has_sound && has(sound_card_rules()));
}

std::string udev_rules() {
    std::string text = sound_heading + sound_card_rules() + '\n' + makers_heading;
    std::string_view last_name;
    for (const auto vendor_id : headset_makers) {
        const char* const name = headset_plugin::vendor_name(vendor_id);
        if (name != last_name)
            text += std::string("\n# ") + name + '\n';
        last_name = name;
        text += udev_rule(vendor_id) + '\n';
    }
    return text;
}

}  // namespace headset
