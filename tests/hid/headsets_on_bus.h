// Headsets for the tests of the HID layer and of what stands on it: models, and small ones of a test's own.
#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <vector>

#include "virtual_headset/models/items.h"
#include "virtual_headset/models/model.h"
#include "virtual_headset/virtual_bus.h"

namespace platform::hid_test {

using Bytes = std::vector<std::uint8_t>;

inline constexpr USAGE telephony_page = 0x0B;  // HID Usage Tables, section 3
inline constexpr USAGE led_page = 0x08;
inline constexpr virtual_platform::FullUsage phone_mute{telephony_page, 0x2F};
inline constexpr virtual_platform::FullUsage hook_switch{telephony_page, 0x20};

/// The descriptor of a headset with one collection: one-bit fields from 0 to 1, until `items` say otherwise.
inline Bytes telephony(std::initializer_list<virtual_headsets::Item> items) {
    using namespace virtual_headsets;
    Bytes bytes = descriptor({usage_page(telephony_page), usage(0x05), collection(application),
                              logical_minimum(0), logical_maximum(1), report_size(1), report_count(1)});
    const Bytes body = descriptor(items);
    bytes.insert(bytes.end(), body.begin(), body.end());
    const Bytes end = descriptor({end_collection()});
    bytes.insert(bytes.end(), end.begin(), end.end());
    return bytes;
}

/// A headset of a test's own, with every string.
inline virtual_platform::HeadsetDescription described(Bytes descriptor) {
    return {.descriptor = std::move(descriptor),
            .vendor_id = 0x0B0E,
            .product_id = 0x1234,
            .manufacturer = "Maker",
            .product = "Headset",
            .serial = "SN1"};
}

inline virtual_platform::HeadsetDescription described(const virtual_headsets::HeadsetModel& model) {
    return {.descriptor = model.descriptor,
            .vendor_id = model.vendor_id,
            .product_id = model.product_id,
            .manufacturer = model.manufacturer,
            .product = model.product,
            .serial = model.serial};
}

inline int plug(virtual_platform::VirtualBus& bus, const virtual_platform::HeadsetDescription& description) {
    virtual_platform::Failure failure;
    const auto headset = bus.plug(description, failure);
    EXPECT_TRUE(headset.has_value()) << failure;
    return headset.value_or(0);
}

inline int plug_model(virtual_platform::VirtualBus& bus, const char* key) {
    return plug(bus, described(*virtual_headsets::find_model(key)));
}

/// The path of a headset's collection: of the telephony collection, or of another page.
inline std::string path_of(const virtual_platform::VirtualBus& bus, int headset,
                           USAGE usage_page = telephony_page) {
    const std::string prefix = "virtual-" + std::to_string(headset) + "#";
    for (const HidInterfaceInfo& info : bus.enumerate(0, 0)) {
        if (info.path.starts_with(prefix) && info.usage_page == usage_page) {
            return info.path;
        }
    }
    ADD_FAILURE() << "the headset has no collection of page " << usage_page;
    return {};
}

}  // namespace platform::hid_test
