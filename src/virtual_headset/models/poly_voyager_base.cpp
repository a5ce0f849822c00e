// Poly Voyager Base CD, the base of a wireless headset. Each indicator has an output report of its own.
// Global items stand only where they change, so that one report count serves several reports.
#include "virtual_headset/models/headsets.h"
#include "virtual_headset/models/items.h"

namespace platform::virtual_headsets {
namespace {

// clang-format off
constexpr std::initializer_list<Item> items = {
    usage_page(0x0C),       // Consumer page
    usage(0x01),            // Consumer Control
    collection(application),
        report_id(0x1F),    // keys
        usage(0xE2),        // Mute
        usage(0xE9),        // Volume Increment
        usage(0xEA),        // Volume Decrement
        usage(0xB0),        // Play
        usage(0xB1),        // Pause
        usage(0xB3),        // Fast Forward
        usage(0xB4),        // Rewind
        usage(0xB5),        // Scan Next Track
        usage(0xB6),        // Scan Previous Track
        usage(0xB7),        // Stop
        usage(0xCD),        // Play/Pause
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(11),
        input(data | variable),
        report_size(5),
        report_count(1),
        input(constant),    // padding
    end_collection(),
    usage_page(0x0B),       // Telephony page
    usage(0x05),            // Headset
    collection(application),
        report_id(0x01),    // keys
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(1),
        usage(0x20),        // Hook Switch
        input(data | variable | no_preferred),
        usage(0x2F),        // Phone Mute
        input(data | variable | relative),
        usage(0x21),        // Flash
        input(data | variable),
        usage(0x24),        // Redial
        input(data | variable | relative),
        usage(0x07),        // Programmable Button, but Button 7 by the page that follows
        usage_page(0x09),   // Button page
        usage(0x01),        // Button 1
        input(data | variable | relative),
        report_size(3),
        input(constant),    // padding
        report_id(0x01),    // indicator
        usage_page(0x08),   // LED page
        usage(0x18),        // Ring
        report_size(1),
        output(data | variable | no_preferred),
        report_size(7),
        output(constant),   // padding
        report_id(0x02),    // indicator
        usage(0x1E),        // Speaker
        report_size(1),
        output(data | variable | no_preferred),
        report_size(7),
        output(constant),   // padding
        report_id(0x03),    // indicator
        usage(0x09),        // Mute
        report_size(1),
        output(data | variable | no_preferred),
        report_size(7),
        output(constant),   // padding
        report_id(0x04),    // indicator
        usage(0x17),        // Off-Hook
        report_size(1),
        output(data | variable | no_preferred),
        report_size(7),
        output(constant),   // padding
        report_id(0x05),    // indicator
        usage(0x20),        // Hold
        report_size(1),
        output(data | variable | no_preferred),
        report_size(7),
        output(constant),   // padding
    end_collection(),
    usage_page(0xFFA2),     // vendor-defined
    usage(0x03),
    collection(application),
        report_id(0x06),
        usage(0x8F),
        logical_minimum(0),
        logical_maximum(255),
        report_size(8),
        report_count(1),
        feature(constant | variable | no_preferred | volatile_value),
        usage(0x8F),
        logical_minimum(-2),
        logical_maximum(1),
        report_size(2),
        output(data | variable | relative | null_state),
        report_size(6),
        output(constant),   // padding
        usage(0x8F),
        logical_minimum(0),
        report_size(1),
        input(data | variable | relative | wrap | no_preferred),
        report_size(7),
        input(constant),    // padding
        report_id(0x08),
        usage(0x98),
        usage(0x97),
        report_size(1),
        report_count(2),
        output(data | variable | relative),
        report_size(6),
        report_count(1),
        output(constant),   // padding
        report_id(0x07),
        usage(0xBE),
        logical_maximum(255),
        report_size(8),
        report_count(63),
        output(data | variable | no_preferred),
        usage(0xBE),
        input(data | variable | no_preferred),
        report_id(0x09),
        usage(0xD2),
        logical_minimum(1),
        report_size(2),
        logical_maximum(2),
        report_count(1),
        output(data | variable | no_preferred | null_state),
        report_size(6),
        output(constant),   // padding
        usage(0x17),
        usage(0x09),
        usage(0x18),
        usage(0x1E),
        usage(0x20),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(5),
        feature(constant | variable | no_preferred | volatile_value),
        usage(0x3F),
        report_count(1),
        feature(constant | variable | no_preferred),
        report_size(2),
        feature(constant),  // padding
        usage(0x8A),
        report_size(1),
        input(data | variable | relative | wrap | no_preferred),
        report_size(7),
        input(constant),    // padding
        report_id(0x0A),
        usage(0xD3),
        report_size(1),
        output(data | variable | no_preferred | null_state),
        report_size(7),
        output(constant),   // padding
        usage(0x8C),
        logical_minimum(-32768),
        logical_maximum(32767),
        report_size(16),
        input(data | variable | no_preferred),
        report_id(0x0B),
        usage(0xE2),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        input(data | variable | relative | wrap | no_preferred),
        report_size(7),
        input(constant),    // padding
        usage(0xE2),
        logical_minimum(-2),
        report_size(2),
        feature(constant | variable | no_preferred | volatile_value),
        report_size(6),
        feature(constant),  // padding
        report_id(0x0C),
        usage(0x7D),
        logical_minimum(0),
        logical_maximum(65535),
        report_size(16),
        feature(constant | variable | no_preferred),
        report_id(0x0D),
        usage(0xB5),
        logical_minimum(1),
        logical_maximum(2),
        report_size(2),
        output(data | variable | no_preferred | null_state),
        logical_minimum(0),
        report_size(6),
        output(constant),   // padding
        usage(0xB5),
        logical_maximum(3),
        report_size(2),
        feature(constant | variable | no_preferred | volatile_value),
        report_size(6),
        feature(constant),  // padding
        report_id(0x0E),
        usage(0xD9),
        logical_maximum(1),
        report_size(1),
        output(data | variable | relative),
        report_size(7),
        output(constant),   // padding
        usage(0x9C),
        report_size(1),
        input(data | variable | relative | wrap | no_preferred),
        report_size(7),
        input(constant),    // padding
        report_id(0x0F),
        usage(0xDD),
        report_size(1),
        output(data | variable | relative),
        report_size(7),
        output(constant),   // padding
        report_id(0x11),
        usage(0xCE),
        logical_maximum(255),
        report_size(8),
        feature(constant | variable | no_preferred),
        report_id(0x12),
        usage(0xCF),
        logical_maximum(1),
        report_size(1),
        feature(constant | variable | no_preferred | volatile_value),
        report_size(7),
        feature(constant),  // padding
        report_id(0x13),
        usage(0x9E),
        report_size(1),
        output(data | variable | no_preferred),
        report_size(7),
        output(constant),   // padding
        report_id(0x14),
        usage(0xDC),
        report_size(1),
        output(data | variable | no_preferred),
        report_size(7),
        output(constant),   // padding
        report_id(0x15),
        report_size(1),
        usage(0xB7),
        usage(0xB5),
        usage(0xB3),
        usage(0xDD),
        usage(0xB9),
        usage(0xBA),
        usage(0xBD),
        usage(0xDE),
        usage(0xBF),
        report_count(9),
        input(data | variable | relative),
        usage(0xBB),
        usage(0xBC),
        usage(0xB1),
        usage(0xB2),
        report_count(4),
        input(data | variable),
        usage(0x60),
        usage(0x61),
        usage(0x6F),
        report_count(3),
        input(data | variable | relative),
        report_id(0x16),
        usage(0x2F),
        logical_maximum(255),
        report_size(8),
        report_count(63),
        output(data | variable),
        usage(0x2F),
        input(data | variable),
        report_id(0x1D),
        usage(0x22),
        logical_minimum(1),
        logical_maximum(2),
        report_count(1),
        report_size(2),
        output(data | variable | no_preferred | null_state),
        report_size(6),
        output(constant),   // padding
        usage(0x22),
        logical_minimum(0),
        logical_maximum(3),
        report_size(2),
        feature(constant | variable | no_preferred | volatile_value),
        report_size(6),
        feature(constant),  // padding
        usage(0x22),
        logical_maximum(1),
        report_size(1),
        input(data | variable | relative | wrap | no_preferred),
        report_size(7),
        input(constant),    // padding
        report_id(0x1E),
        usage(0xA5),
        logical_maximum(5),
        report_size(3),
        feature(constant | variable | no_preferred | volatile_value),
        report_size(5),
        feature(constant),  // padding
        usage(0xA0),
        logical_maximum(1),
        report_size(1),
        input(data | variable | relative | wrap | no_preferred),
        report_size(7),
        input(constant),    // padding
        report_id(0x28),
        usage(0x24),
        logical_minimum(1),
        logical_maximum(2),
        report_size(2),
        output(data | variable | no_preferred | null_state),
        report_size(6),
        output(constant),   // padding
        usage(0x24),
        logical_minimum(0),
        logical_maximum(3),
        report_size(2),
        feature(constant | variable | no_preferred | volatile_value),
        report_size(6),
        feature(constant),  // padding
        usage(0x24),
        logical_maximum(1),
        report_size(1),
        input(data | variable | relative | wrap | no_preferred),
        report_size(7),
        input(constant),    // padding
        report_id(0x29),
        usage(0x54),
        logical_minimum(1),
        logical_maximum(2),
        report_size(2),
        output(data | variable | no_preferred | null_state),
        report_size(6),
        output(constant),   // padding
        usage(0x54),
        logical_minimum(0),
        logical_maximum(3),
        report_size(2),
        feature(constant | variable | no_preferred | volatile_value),
        report_size(6),
        feature(constant),  // padding
        usage(0x54),
        logical_maximum(1),
        report_size(1),
        input(data | variable | relative | wrap | no_preferred),
        report_size(7),
        input(constant),    // padding
        report_id(0x2A),
        usage(0x52),
        logical_minimum(1),
        logical_maximum(2),
        report_size(2),
        output(data | variable | no_preferred | null_state),
        report_size(6),
        output(constant),   // padding
        usage(0x52),
        logical_minimum(0),
        logical_maximum(3),
        report_size(2),
        feature(constant | variable | no_preferred | volatile_value),
        report_size(6),
        feature(constant),  // padding
        usage(0x52),
        logical_maximum(1),
        report_size(1),
        input(data | variable | relative | wrap | no_preferred),
        report_size(7),
        input(constant),    // padding
        report_id(0x2B),
        usage(0xC3),
        report_size(1),
        input(data | variable | relative | wrap | no_preferred),
        report_size(7),
        input(constant),    // padding
        usage(0xC3),
        logical_minimum(1),
        logical_maximum(2),
        report_size(2),
        output(data | variable | no_preferred | null_state),
        report_size(6),
        output(constant),   // padding
        usage(0xC3),
        logical_minimum(0),
        logical_maximum(3),
        report_size(2),
        feature(constant | variable | no_preferred | volatile_value),
        report_size(6),
        feature(constant),  // padding
        report_id(0x2C),
        usage(0xD1),
        logical_maximum(1),
        report_size(1),
        input(data | variable | no_preferred),
        report_size(7),
        input(constant),    // padding
    end_collection(),
    usage_page(0xFFA0),     // vendor-defined
    usage(0x03),
    collection(application),
        report_id(0x18),
        usage(0xA1),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(1),
        output(data | variable | no_preferred),
        report_size(7),
        output(constant),   // padding
        usage(0xA1),
        report_size(1),
        input(data | variable | no_preferred),
        usage(0xB7),
        usage(0xB5),
        usage(0xB3),
        usage(0xB1),
        usage(0xB2),
        report_size(1),
        report_count(5),
        input(data | variable | relative),
        report_size(2),
        report_count(1),
        input(constant),    // padding
        usage(0xA1),
        usage(0xB5),
        report_size(1),
        report_count(2),
        feature(data | variable | no_preferred | volatile_value),
        report_size(6),
        report_count(1),
        feature(constant),  // padding
        report_id(0x19),
        usage(0x9E),
        report_size(1),
        output(data | variable | no_preferred),
        report_size(7),
        output(constant),   // padding
        report_id(0x1A),
        usage(0x8D),
        report_size(1),
        output(data | variable | no_preferred),
        report_size(7),
        output(constant),   // padding
        report_id(0x1B),
        usage(0x8F),
        report_size(1),
        output(data | variable | no_preferred),
        report_size(7),
        output(constant),   // padding
        report_id(0x1C),
        usage(0xDC),
        report_size(1),
        output(data | variable | no_preferred),
        report_size(7),
        output(constant),   // padding
    end_collection(),
};
// clang-format on

}  // namespace

HeadsetModel poly_voyager_base() {
    return {
        .key = "poly-voyager-base",
        .vendor_id = 0x047F,
        .product_id = 0x02EC,
        .manufacturer = "Poly",
        .product = "Poly Voyager Base CD",
        .serial = "E7F3905C6D184BA2",
        .descriptor = descriptor(items),
    };
}

}  // namespace platform::virtual_headsets
