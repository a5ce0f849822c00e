// Jabra Link 380c, an adapter that comes with wireless headsets. All keys are in one input report and all
// indicators in one output report, with the same id. The keys are flagged constant, as if they were padding.
// A vendor collection repeats the telephony collection.
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
        usage(0x2A),              // Line
        report_size(1),
        report_count(3),
        input(constant | variable | no_preferred),
        usage(0x2F),              // Phone Mute
        usage(0x21),              // Flash
        usage(0x24),              // Redial
        usage(0x50),              // Speed Dial
        report_size(1),
        report_count(4),
        input(constant | variable | relative),
        usage(0x06),              // Telephony Key Pad
        collection(logical),
            usage_minimum(0xB0),  // Phone Key 0
            usage_maximum(0xBB),  // Phone Key Pound
            logical_minimum(0),
            logical_maximum(12),
            report_size(4),
            report_count(1),
            input(data | array | null_state),
        end_collection(),
        usage(0x07),              // Programmable Button, but Button 7 by the page that follows
        logical_minimum(0),
        logical_maximum(1),
        usage_page(0x09),         // Button page
        report_size(1),
        report_count(1),
        input(data | variable),
        report_size(1),
        report_count(4),
        input(constant),          // padding
        usage_page(0x08),         // LED page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x17),              // Off-Hook
        usage(0x1E),              // Speaker
        usage(0x09),              // Mute
        usage(0x18),              // Ring
        usage(0x20),              // Hold
        usage(0x21),              // Microphone
        usage(0x2A),              // On-Line
        report_size(1),
        report_count(7),
        output(data | variable | no_preferred),
        usage_page(0x0B),         // Telephony page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x9E),              // Ringer
        report_size(1),
        report_count(1),
        output(data | variable | no_preferred),
        report_size(1),
        report_count(8),
        output(constant),         // padding
    end_collection(),
    usage_page(0xFF00),           // vendor-defined
    usage(0x01),
    collection(application),
        report_id(0x05),
        usage(0x01),
        logical_minimum(0),
        logical_maximum(255),
        report_size(8),
        report_count(62),
        output(data | variable | buffered_bytes),
        usage(0x01),
        logical_minimum(0),
        logical_maximum(255),
        report_size(8),
        report_count(62),
        input(data | variable | buffered_bytes),
        report_id(0x04),          // keys and indicators
        usage_page(0xFF30),       // vendor-defined, numbered as the Telephony page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x20),              // as Hook Switch
        usage(0xFFFB),
        usage(0x97),              // as Line Busy Tone
        usage(0x2A),              // as Line
        report_size(1),
        report_count(4),
        input(constant | variable | no_preferred),
        usage(0x2F),              // as Phone Mute
        usage(0x21),              // as Flash
        usage(0x24),              // as Redial
        usage(0xFFFD),
        usage(0x50),              // as Speed Dial
        report_size(1),
        report_count(5),
        input(constant | variable | relative),
        usage(0x06),              // as Telephony Key Pad
        collection(logical),
            usage_minimum(0xB0),  // as Phone Key 0
            usage_maximum(0xBB),  // as Phone Key Pound
            logical_minimum(0),
            logical_maximum(12),
            report_size(4),
            report_count(1),
            input(data | array | null_state),
        end_collection(),
        usage(0xFFFC),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(1),
        input(constant | variable | no_preferred),
        report_size(1),
        report_count(2),
        input(constant),          // padding
        usage_page(0xFF40),       // vendor-defined, numbered as the LED page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x17),              // as Off-Hook
        usage(0xFFFB),
        usage(0x09),              // as Mute
        usage(0x18),              // as Ring
        usage(0x20),              // as Hold
        usage(0x21),              // as Microphone
        usage(0x2A),              // as On-Line
        report_size(1),
        report_count(7),
        output(data | variable | no_preferred),
        usage_page(0xFF30),       // vendor-defined, numbered as the Telephony page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x9E),              // as Ringer
        report_size(1),
        report_count(1),
        output(data | variable | no_preferred),
        report_size(1),
        report_count(8),
        output(constant),         // padding
        usage(0xFFFF),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(1),
        feature(data | variable | no_preferred),
        report_size(1),
        report_count(7),
        feature(constant),        // padding
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
        usage(0xE2),              // Mute
        usage(0xCD),              // Play/Pause
        usage(0xB7),              // Stop
        usage(0xB5),              // Scan Next Track
        usage(0xB6),              // Scan Previous Track
        usage(0xB3),              // Fast Forward
        usage(0xB4),              // Rewind
        report_size(1),
        report_count(9),
        input(data | variable),
        report_size(1),
        report_count(7),
        input(constant),          // padding
    end_collection(),
};
// clang-format on

}  // namespace

HeadsetModel jabra_link_380c() {
    return {
        .key = "jabra-link-380c",
        .vendor_id = 0x0B0E,
        .product_id = 0x24C9,
        .manufacturer = "GN Audio A/S",
        .product = "Jabra Link 380c",
        .serial = "50C2ED83A1F4",
        .descriptor = descriptor(items),
    };
}

}  // namespace platform::virtual_headsets
