// Jabra EVOLVE LINK MS, the call controller in the cord of a wired headset. All keys are in one input report
// and all indicators in one output report, with the same id. A vendor collection repeats the telephony
// collection.
#include "virtual_headset/models/headsets.h"
#include "virtual_headset/models/items.h"

namespace platform::virtual_headsets {
namespace {

// clang-format off
constexpr std::initializer_list<Item> items = {
    usage_page(0x0B),             // Telephony page
    usage(0x05),                  // Headset
    collection(application),
        report_id(0x02),          // keys and indicators
        usage_page(0x0B),         // Telephony page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x20),              // Hook Switch
        usage(0x97),              // Line Busy Tone
        report_size(1),
        report_count(2),
        input(data | variable | no_preferred),
        usage(0x2F),              // Phone Mute
        usage(0x21),              // Flash
        usage(0x24),              // Redial
        usage(0x50),              // Speed Dial
        report_size(1),
        report_count(4),
        input(data | variable | relative),
        usage(0x07),              // Programmable Button, but Button 7 by the page that follows
        usage_page(0x09),         // Button page
        report_size(1),
        report_count(1),
        input(data | variable),
        usage_page(0x0B),         // Telephony page
        usage(0x06),              // Telephony Key Pad
        collection(logical),
            usage_minimum(0xB0),  // Phone Key 0
            usage_maximum(0xBB),  // Phone Key Pound
            logical_minimum(0),
            logical_maximum(11),
            report_size(4),
            report_count(1),
            input(data | array),
        end_collection(),
        report_size(1),
        report_count(5),
        input(constant),          // padding
        usage_page(0x08),         // LED page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x17),              // Off-Hook
        usage(0x09),              // Mute
        usage(0x18),              // Ring
        usage(0x20),              // Hold
        usage(0x21),              // Microphone
        report_size(1),
        report_count(5),
        output(data | variable | no_preferred),
        usage_page(0x0B),         // Telephony page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x9E),              // Ringer
        report_size(1),
        report_count(1),
        output(data | variable | no_preferred),
        report_size(1),
        report_count(10),
        output(constant),         // padding
    end_collection(),
    usage_page(0xFF00),           // vendor-defined
    usage(0x05),
    collection(application),
        report_id(0x04),          // keys and indicators
        usage_page(0xFF30),       // vendor-defined, numbered as the Telephony page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x20),              // as Hook Switch
        usage(0x97),              // as Line Busy Tone
        report_size(1),
        report_count(2),
        input(data | variable | no_preferred),
        usage(0x2F),              // as Phone Mute
        usage(0x21),              // as Flash
        usage(0x24),              // as Redial
        usage(0xFFFD),
        usage(0x50),              // as Speed Dial
        report_size(1),
        report_count(5),
        input(data | variable | relative),
        usage(0x06),              // as Telephony Key Pad
        collection(logical),
            usage_minimum(0xB0),  // as Phone Key 0
            usage_maximum(0xBB),  // as Phone Key Pound
            logical_minimum(0),
            logical_maximum(12),
            report_size(4),
            report_count(1),
            input(data | array),
        end_collection(),
        report_size(1),
        report_count(5),
        input(constant),          // padding
        usage_page(0xFF40),       // vendor-defined, numbered as the LED page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x17),              // as Off-Hook
        usage(0x09),              // as Mute
        usage(0x18),              // as Ring
        usage(0x20),              // as Hold
        usage(0x21),              // as Microphone
        report_size(1),
        report_count(5),
        output(data | variable | no_preferred),
        usage_page(0xFF30),       // vendor-defined, numbered as the Telephony page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x9E),              // as Ringer
        report_size(1),
        report_count(1),
        output(data | variable | no_preferred),
        report_size(1),
        report_count(10),
        output(constant),         // padding
        report_id(0x08),
        usage_page(0xFF60),       // vendor-defined
        logical_minimum(0),
        logical_maximum(1),
        usage(0x02),
        report_size(1),
        report_count(1),
        input(data | variable | no_preferred),
        report_size(1),
        report_count(7),
        input(constant),          // padding
        usage(0x02),
        report_size(1),
        report_count(1),
        feature(data | variable | no_preferred),
        report_size(1),
        report_count(7),
        feature(constant),        // padding
        report_id(0x05),
        usage_page(0xFF00),       // vendor-defined
        usage(0x01),
        logical_minimum(0),
        logical_maximum(255),
        report_size(8),
        report_count(32),
        output(data | variable | buffered_bytes),
        usage(0x01),
        logical_minimum(0),
        logical_maximum(255),
        report_size(8),
        report_count(32),
        input(data | variable | buffered_bytes),
    end_collection(),
    usage_page(0x0C),             // Consumer page
    usage(0x01),                  // Consumer Control
    collection(application),
        report_id(0x01),          // keys
        usage_page(0x0C),         // Consumer page
        logical_minimum(0),
        logical_maximum(1),
        usage(0xEA),              // Volume Decrement
        usage(0xE9),              // Volume Increment
        report_size(1),
        report_count(2),
        input(data | variable),
        report_size(1),
        report_count(14),
        input(constant),          // padding
    end_collection(),
};
// clang-format on

}  // namespace

HeadsetModel jabra_evolve_link_ms() {
    return {
        .key = "jabra-evolve-link-ms",
        .vendor_id = 0x0B0E,
        .product_id = 0x0307,
        .manufacturer = "GN Netcom A/S",
        .product = "Jabra EVOLVE LINK MS",
        .serial = "000B41D7E26A05",
        .descriptor = descriptor(items),
    };
}

}  // namespace platform::virtual_headsets
