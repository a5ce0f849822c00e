// A headset on the USB: volume keys on one HID interface, telephony on the other.
#pragma once

#include <string>

#include "tests/kernel/kernel_headsets.h"
#include "tests/kernel/usb_gadget.h"
#include "virtual_headset/models/items.h"
#include "virtual_headset/models/model.h"

namespace test_support {

inline constexpr int consumer_interface = 0;
inline constexpr int telephony_interface = 1;

inline Report volume_keys_descriptor() {
    using namespace platform::virtual_headsets;
    // clang-format off
    return descriptor({
        usage_page(consumer_page),
        usage(0x01),  // Consumer Control
        collection(application),
            logical_minimum(0),
            logical_maximum(1),
            usage(volume_increment),
            report_size(1),
            report_count(1),
            input(data | variable),
            report_count(7),
            input(constant),
        end_collection(),
    });
    // clang-format on
}

inline UsbGadgetDescription usb_headset(const std::string& serial) {
    const auto& model = *platform::virtual_headsets::find_model("jabra-link-380c");
    return {.vendor_id = model.vendor_id,
            .product_id = model.product_id,
            .manufacturer = model.manufacturer,
            .product = model.product,
            .serial = serial,
            .interfaces = {volume_keys_descriptor(), model.descriptor}};
}

}  // namespace test_support
