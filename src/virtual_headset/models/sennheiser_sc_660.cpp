// Sennheiser SC 660 ANC USB, a wired headset. The telephony collection has no ringer; a vendor collection
// repeats its keys and indicators and adds one.
#include "virtual_headset/models/headsets.h"
#include "virtual_headset/models/items.h"

namespace platform::virtual_headsets {
namespace {

// clang-format off
constexpr std::initializer_list<Item> items = {
    usage_page(0x0C),        // Consumer page
    usage(0x01),             // Consumer Control
    collection(application),
        report_id(0x19),     // keys
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        usage(0xE9),         // Volume Increment
        usage(0xEA),         // Volume Decrement
        usage(0xCD),         // Play/Pause
        usage(0xB0),         // Play
        usage(0xB1),         // Pause
        report_count(5),
        input(data | variable),
        report_count(3),
        input(constant),     // padding
        report_id(0x1A),
        usage_page(0x0C),    // Consumer page
        usage(0x00),         // unassigned
        report_count(16),
        input(data | variable),
        report_id(0x04),
        usage(0x00),         // unassigned
        report_size(8),
        report_count(36),
        output(data | variable),
        report_id(0x05),
        usage(0x00),         // unassigned
        report_count(32),
        input(data | variable),
        report_id(0x06),
        usage(0x00),         // unassigned
        report_count(36),
        output(data | variable),
        report_id(0x07),
        usage(0x00),         // unassigned
        report_count(32),
        input(data | variable),
    end_collection(),
    usage_page(0x0B),        // Telephony page
    usage(0x05),             // Headset
    collection(application),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_id(0x08),     // keys
        usage(0x2F),         // Phone Mute
        report_count(1),
        input(data | variable | relative),
        usage(0x20),         // Hook Switch
        report_count(1),
        input(data | variable | no_preferred),
        usage(0x24),         // Redial
        usage(0x21),         // Flash
        usage(0x26),         // Drop
        report_count(3),
        input(data | variable | relative),
        usage(0x07),         // Programmable Button, but Button 7 by the page that follows
        usage_page(0x09),    // Button page
        usage(0x01),         // Button 1
        report_size(1),
        report_count(1),
        input(data | variable),
        report_count(2),
        input(constant),     // padding
        usage_page(0x08),    // LED page
        report_id(0x09),     // indicators
        usage(0x09),         // Mute
        usage(0x17),         // Off-Hook
        usage(0x18),         // Ring
        usage(0x21),         // Microphone
        usage(0x2A),         // On-Line
        usage(0x20),         // Hold
        report_count(6),
        output(data | variable | no_preferred),
        report_count(2),
        output(constant),    // padding
    end_collection(),
    usage_page(0xFFFF),      // vendor-defined
    usage(0x01),
    collection(application),
        report_id(0x01),
        usage(0x01),
        logical_minimum(0),
        logical_maximum(255),
        report_size(8),
        report_count(106),
        input(data | variable),
        usage(0x02),
        logical_minimum(0),
        logical_maximum(255),
        report_size(8),
        report_count(106),
        output(data | variable),
        report_id(0x02),     // keys and indicators
        usage_page(0xFF13),  // vendor-defined, numbered as the Telephony page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x20),         // as Hook Switch
        report_size(1),
        report_count(1),
        input(data | variable | no_preferred),
        usage(0x21),         // as Flash
        usage(0x24),         // as Redial
        usage(0x2F),         // as Phone Mute
        usage(0x26),         // as Drop
        report_size(1),
        report_count(4),
        input(data | variable | relative),
        usage(0x07),         // Programmable Button, but Button 7 by the page that follows
        usage_page(0x09),    // Button page
        usage(0x01),         // Button 1
        report_size(1),
        report_count(1),
        input(data | array | null_state),
        usage_page(0xFF13),  // vendor-defined, numbered as the Telephony page
        report_size(1),
        report_count(2),
        input(constant),     // padding
        usage(0x9E),         // as Ringer
        report_size(1),
        report_count(1),
        output(data | variable | no_preferred),
        usage_page(0xFF95),  // vendor-defined, numbered as the LED page
        usage(0x17),         // as Off-Hook
        usage(0x21),         // as Microphone
        usage(0x18),         // as Ring
        usage(0x09),         // as Mute
        usage(0x2A),         // as On-Line
        usage(0x20),         // as Hold
        usage(0x03),
        report_size(1),
        report_count(7),
        output(data | variable | no_preferred),
    end_collection(),
};
// clang-format on

}  // namespace

HeadsetModel sennheiser_sc_660() {
    return {
        .key = "sennheiser-sc-660",
        .vendor_id = 0x1395,
        .product_id = 0x0082,
        .manufacturer = "Sennheiser Communications",
        .product = "Sennheiser SC 660 ANC USB",
        .serial = "A002660118905214",
        .descriptor = descriptor(items),
    };
}

}  // namespace platform::virtual_headsets
