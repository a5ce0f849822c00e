// Dell SP325, a speakerphone. The telephony collection comes last of five; its keys and its indicators have
// the same report id.
#include "virtual_headset/models/headsets.h"
#include "virtual_headset/models/items.h"

namespace platform::virtual_headsets {
namespace {

// clang-format off
constexpr std::initializer_list<Item> items = {
    usage_page(0x0C),      // Consumer page
    usage(0x01),           // Consumer Control
    collection(application),
        report_id(0x0C),   // keys
        logical_minimum(0),
        logical_maximum(1),
        usage(0xE9),       // Volume Increment
        usage(0xEA),       // Volume Decrement
        usage(0xE2),       // Mute
        usage(0xCD),       // Play/Pause
        usage(0xB5),       // Scan Next Track
        usage(0xB6),       // Scan Previous Track
        usage(0xB0),       // Play
        usage(0xB1),       // Pause
        report_size(1),
        report_count(8),
        input(data | variable),
    end_collection(),
    usage_page(0xFF13),    // vendor-defined
    usage(0x01),
    collection(application),
        logical_minimum(0),
        logical_maximum(255),
        report_id(0x06),
        usage(0x00),
        report_size(8),
        report_count(61),
        output(data | variable),
        report_id(0x07),
        usage(0x00),
        report_size(8),
        report_count(61),
        input(data | variable),
    end_collection(),
    usage_page(0xFF14),    // vendor-defined
    usage(0x01),
    collection(application),
        logical_minimum(0),
        logical_maximum(255),
        report_id(0x10),
        usage(0x00),
        report_size(8),
        report_count(5),
        input(data | variable),
    end_collection(),
    usage_page(0xFF99),    // vendor-defined
    usage(0x01),
    collection(application),
        report_id(0x9A),
        logical_minimum(0),
        logical_maximum(255),
        report_count(63),
        report_size(8),
        usage(0x03),
        feature(data | variable),
        report_id(0x9B),
        logical_minimum(0),
        logical_maximum(1),
        report_count(1),
        report_size(1),
        usage(0x04),
        input(data | variable | relative),
        report_size(1),
        report_count(7),
        input(constant),   // padding
    end_collection(),
    usage_page(0x0B),      // Telephony page
    usage(0x05),           // Headset
    collection(application),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_id(0x05),   // keys
        usage(0x20),       // Hook Switch
        report_count(1),
        input(data | variable | no_preferred),
        usage(0x2F),       // Phone Mute
        report_count(1),
        input(data | variable | relative),
        usage(0x24),       // Redial
        usage(0x21),       // Flash
        usage(0x97),       // Line Busy Tone
        usage(0x2A),       // Line
        usage(0x50),       // Speed Dial
        report_count(5),
        input(data | variable | relative),
        usage(0x07),       // Programmable Button, but Button 7 by the page that follows
        usage_page(0x09),  // Button page
        usage(0x01),       // Button 1
        report_size(1),
        report_count(1),
        input(data | variable),
        usage_page(0x08),  // LED page
        report_id(0x05),   // indicators
        usage(0x17),       // Off-Hook
        usage(0x09),       // Mute
        usage(0x18),       // Ring
        usage(0x20),       // Hold
        usage(0x21),       // Microphone
        usage(0x2A),       // On-Line
        report_count(6),
        output(data | variable | no_preferred),
        report_count(2),
        output(constant),  // padding
    end_collection(),
};
// clang-format on

}  // namespace

HeadsetModel dell_sp325() {
    return {
        .key = "dell-sp325",
        .vendor_id = 0x413C,
        .product_id = 0x8223,
        .manufacturer = "Dell",
        .product = "Dell SP325",
        .serial = "CN0PW7K173902B",
        .descriptor = descriptor(items),
    };
}

}  // namespace platform::virtual_headsets
