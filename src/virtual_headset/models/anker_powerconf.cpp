// Anker PowerConf, a speakerphone. The hook switch and the mute key are flagged constant, as if they were
// padding; where others have Redial it has Voice Mail. The device ignores an output report that is shorter
// than declared.
#include "virtual_headset/models/headsets.h"
#include "virtual_headset/models/items.h"

namespace platform::virtual_headsets {
namespace {

// clang-format off
constexpr std::initializer_list<Item> items = {
    usage_page(0x0C),             // Consumer page
    usage(0x01),                  // Consumer Control
    collection(application),
        report_id(0x01),          // keys
        logical_minimum(0),
        logical_maximum(1),
        usage(0xE9),              // Volume Increment
        usage(0xEA),              // Volume Decrement
        usage(0xE2),              // Mute
        usage(0xCD),              // Play/Pause
        usage(0xB5),              // Scan Next Track
        usage(0xB6),              // Scan Previous Track
        usage(0xB3),              // Fast Forward
        usage(0xB7),              // Stop
        report_size(1),
        report_count(8),
        input(data | variable | null_state),
    end_collection(),
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
        input(constant | variable | no_preferred),
        usage(0x2F),              // Phone Mute
        usage(0x21),              // Flash
        usage(0x70),              // Voice Mail
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
    usage(0x01),
    collection(application),
        report_id(0x03),
        usage(0x01),
        logical_minimum(0),
        logical_maximum(255),
        report_count(63),
        report_size(8),
        input(data | variable),
        usage(0x01),
        logical_minimum(0),
        logical_maximum(255),
        report_count(63),
        report_size(8),
        output(data | variable),
    end_collection(),
};
// clang-format on

}  // namespace

HeadsetModel anker_powerconf() {
    return {
        .key = "anker-powerconf",
        .vendor_id = 0x291A,
        .product_id = 0x3301,
        .manufacturer = "Anker",
        .product = "Anker PowerConf",
        .serial = "A3301T9E04B6D12",
        .descriptor = descriptor(items),
    };
}

}  // namespace platform::virtual_headsets
