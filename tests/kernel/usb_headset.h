// A headset on the USB: volume keys on one HID interface, telephony on the other.
#pragma once

#include <string>

#include "platform/virtual/headsets/items.h"
#include "platform/virtual/headsets/model.h"
#include "tests/kernel/kernel_headsets.h"
#include "tests/kernel/usb_gadget.h"

namespace test_support {

inline constexpr int consumer_interface = 0;
inline constexpr int telephony_interface = 1;

inline UsbGadgetDescription usb_headset(const std::string& serial) {
    namespace headsets = platform::virtual_headsets;
    // clang-format off
    const auto volume_keys = headsets::descriptor({
        headsets::usage_page(consumer_page),
        headsets::usage(0x01),  // Consumer Control
        headsets::collection(headsets::application),
            headsets::logical_minimum(0),
            headsets::logical_maximum(1),
            headsets::usage(volume_increment),
            headsets::report_size(1),
            headsets::report_count(1),
            headsets::input(headsets::data | headsets::variable),
            headsets::report_count(7),
            headsets::input(headsets::constant),
        headsets::end_collection(),
    });
    // clang-format on
    const headsets::HeadsetModel& model = *headsets::find_model("jabra-link-380c");
    return {.vendor_id = model.vendor_id,
            .product_id = model.product_id,
            .manufacturer = model.manufacturer,
            .product = model.product,
            .serial = serial,
            .interfaces = {volume_keys, model.descriptor}};
}

}  // namespace test_support
