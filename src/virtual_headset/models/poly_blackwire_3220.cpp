// Plantronics Blackwire 3220, a wired headset. Each indicator has an output report of its own, whose id is
// the number of its usage. The vendor collection begins with the logical limits of the telephony collection,
// since global items outlast a collection (HID 1.11, 6.2.2.7).
#include "virtual_headset/models/headsets.h"
#include "virtual_headset/models/items.h"

namespace platform::virtual_headsets {
namespace {

// clang-format off
constexpr std::initializer_list<Item> items = {
    usage_page(0x0C),       // Consumer page
    usage(0x01),            // Consumer Control
    collection(application),
        report_id(0x01),    // keys
        logical_minimum(0),
        logical_maximum(1),
        usage(0xE9),        // Volume Increment
        usage(0xEA),        // Volume Decrement
        report_size(1),
        report_count(2),
        input(data | variable | relative),
        report_count(6),
        input(constant),    // padding
        report_id(0x02),
        usage_page(0x0C),   // Consumer page
        usage(0x00),        // unassigned
        report_count(16),
        input(data | variable),
        report_id(0x04),
        usage(0x00),        // unassigned
        report_size(8),
        report_count(36),
        output(data | variable),
        report_id(0x05),
        usage(0x00),        // unassigned
        report_count(32),
        input(data | variable),
        report_id(0x06),
        usage(0x00),        // unassigned
        report_count(36),
        output(data | variable),
        report_id(0x07),
        usage(0x00),        // unassigned
        report_count(32),
        input(data | variable),
    end_collection(),
    usage_page(0x0B),       // Telephony page
    usage(0x05),            // Headset
    collection(application),
        report_id(0x08),    // keys
        logical_minimum(0),
        logical_maximum(1),
        usage(0x2F),        // Phone Mute
        report_size(1),
        report_count(1),
        input(data | variable | relative),
        usage(0x20),        // Hook Switch
        usage(0x21),        // Flash
        report_size(1),
        report_count(2),
        input(data | variable | no_preferred),
        report_count(5),
        input(constant),    // padding
        usage_page(0x08),   // LED page
        report_id(0x09),    // indicator
        usage(0x09),        // Mute
        report_count(1),
        output(data | variable | no_preferred),
        report_count(7),
        output(constant),   // padding
        report_id(0x17),    // indicator
        usage(0x17),        // Off-Hook
        report_count(1),
        output(data | variable | no_preferred),
        report_count(7),
        output(constant),   // padding
        report_id(0x18),    // indicator
        usage(0x18),        // Ring
        report_count(1),
        output(data | variable | no_preferred),
        report_count(7),
        output(constant),   // padding
        report_id(0x1E),    // indicator
        usage(0x1E),        // Speaker
        report_count(1),
        output(data | variable | no_preferred),
        report_count(7),
        output(constant),   // padding
        report_id(0x20),    // indicator
        usage(0x20),        // Hold
        report_count(1),
        output(data | variable | no_preferred),
        report_count(7),
        output(constant),   // padding
        report_id(0x2A),    // indicator
        usage(0x2A),        // On-Line
        report_count(1),
        output(data | variable | no_preferred),
        report_count(7),
        output(constant),   // padding
    end_collection(),
    usage_page(0xFFA0),     // vendor-defined
    usage(0x03),
    collection(application),
        report_id(0x03),
        usage(0x30),
        report_size(8),
        report_count(32),
        output(data | variable),
        report_id(0x03),
        usage(0x30),
        report_size(8),
        report_count(32),
        input(data | variable),
        report_id(0x14),
        usage(0xB1),
        usage(0xB2),
        usage(0xB5),
        usage(0xB7),
        usage(0xB3),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(5),
        input(data | variable | relative),
        report_count(3),
        input(constant),    // padding
        report_id(0x15),
        usage(0x8C),
        logical_minimum(0),
        logical_maximum(65535),
        report_size(16),
        report_count(1),
        input(data | variable | no_preferred),
        report_id(0x19),
        usage(0x8D),
        usage(0x8F),
        usage(0x9E),
        usage(0xDC),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(4),
        output(data | variable | no_preferred),
        usage(0xD2),
        usage(0xD9),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(2),
        output(data | variable | relative),
        report_count(2),
        output(constant),   // padding
        report_id(0x1A),
        usage(0xB5),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(1),
        output(data | variable | no_preferred),
        report_count(7),
        output(constant),   // padding
        report_id(0x1B),
        usage(0xCF),
        usage(0xB5),
        report_size(1),
        report_count(2),
        feature(data | variable | no_preferred),
        usage(0xDE),
        report_size(1),
        report_count(1),
        feature(constant | variable | no_preferred),
        usage(0xD8),
        report_count(1),
        feature(data | variable | no_preferred),
        report_count(4),
        feature(constant),  // padding
        usage(0x09),
        usage(0x17),
        usage(0x18),
        usage(0x1E),
        usage(0x20),
        usage(0x2A),
        report_size(1),
        report_count(6),
        feature(data | variable | no_preferred),
        report_count(2),
        feature(constant),  // padding
        report_id(0x1F),
        usage(0x9C),
        report_size(1),
        report_count(1),
        input(data | variable | relative),
        report_count(7),
        input(constant),    // padding
    end_collection(),
};
// clang-format on

}  // namespace

HeadsetModel poly_blackwire_3220() {
    return {
        .key = "poly-blackwire-3220",
        .vendor_id = 0x047F,
        .product_id = 0xC056,
        .manufacturer = "Plantronics",
        .product = "Plantronics Blackwire 3220 Series",
        .serial = "8DA64F29B3C1E740",
        .descriptor = descriptor(items),
    };
}

}  // namespace platform::virtual_headsets
