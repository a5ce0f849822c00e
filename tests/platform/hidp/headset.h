// Small headsets for tests.
#pragma once

#include <initializer_list>

#include "tests/platform/hidp/collection.h"
#include "tests/platform/hidp/descriptor_items.h"

namespace hidp_test {

// HID Usage Tables: pages, and usages of the Telephony page.
inline constexpr platform::USAGE telephony = 0x0B;
inline constexpr platform::USAGE led_page = 0x08;
inline constexpr platform::USAGE button_page = 0x09;
inline constexpr platform::USAGE headset = 0x05;
inline constexpr platform::USAGE hook_switch = 0x20;
inline constexpr platform::USAGE flash = 0x21;
inline constexpr platform::USAGE redial = 0x24;
inline constexpr platform::USAGE phone_mute = 0x2F;
// Usages of the LED page.
inline constexpr platform::USAGE led_mute = 0x09;
inline constexpr platform::USAGE led_off_hook = 0x17;
inline constexpr platform::USAGE led_ring = 0x18;
// The Generic Desktop page, and usages of it.
inline constexpr platform::USAGE generic_desktop = 0x01;
inline constexpr platform::USAGE x = 0x30;
inline constexpr platform::USAGE y = 0x31;

/// The items inside a headset's top-level collection.
inline Bytes headset_descriptor(std::initializer_list<ItemText> items) {
    using enum platform::hidp::Tag;
    Bytes bytes = descriptor({{usage_page, telephony}, {usage, headset}, {collection, application}});
    for (const Bytes& part : {descriptor(items), descriptor({{end_collection}})}) {
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}

inline Collection headset_with(std::initializer_list<ItemText> items) {
    return Collection(headset_descriptor(items));
}

}  // namespace hidp_test
