// EPOS IMPACT D, a wireless headset with a dongle. The ringer, a telephony usage, comes before the indicators
// in their report. The telephony collection has volume keys too, and an application collection nested in it,
// without a usage.
#include "virtual_headset/models/headsets.h"
#include "virtual_headset/models/items.h"

namespace platform::virtual_headsets {
namespace {

// clang-format off
constexpr std::initializer_list<Item> items = {
    usage_page(0x0B),                      // Telephony page
    usage(0x05),                           // Headset
    collection(application),
        report_id(0x02),                   // keys
        report_size(1),
        logical_minimum(0),
        logical_maximum(1),
        usage_page(0x0C),                  // Consumer page
        usage(0xEA),                       // Volume Decrement
        usage(0xE9),                       // Volume Increment
        report_count(2),
        input(data | variable),
        usage_page(0x0B),                  // Telephony page
        usage(0x20),                       // Hook Switch
        report_count(1),
        input(data | variable | no_preferred),
        usage_page(0x0B),                  // Telephony page
        usage(0x21),                       // Flash
        usage(0x24),                       // Redial
        usage(0x2F),                       // Phone Mute
        usage(0x26),                       // Drop
        report_count(4),
        input(data | variable | relative),
        usage(0x07),                       // Programmable Button, but Button 7 by the page that follows
        usage_page(0x09),                  // Button page
        usage(0x01),                       // Button 1
        report_size(1),
        report_count(1),
        input(data | array | null_state),
        report_id(0x03),                   // indicators
        report_size(1),
        usage_page(0x0B),                  // Telephony page
        usage(0x9E),                       // Ringer
        report_count(1),
        output(data | variable | no_preferred),
        usage_page(0x08),                  // LED page
        usage(0x17),                       // Off-Hook
        usage(0x21),                       // Microphone
        usage(0x18),                       // Ring
        usage(0x09),                       // Mute
        usage(0x2A),                       // On-Line
        usage(0x20),                       // Hold
        report_count(6),
        output(data | variable | no_preferred),
        report_count(1),
        output(constant),                  // padding
        collection(application),
            usage_page(0xFF40),            // vendor-defined
            report_id(0x40),
            logical_minimum(0),
            logical_maximum(65535),
            report_size(16),
            report_count(4),
            usage(0xFF40),
            feature(data | variable),
            report_id(0x41),
            logical_minimum(0),
            logical_maximum(1),
            report_size(1),
            report_count(1),
            usage(0xFF41),
            feature(data | variable),
            report_count(7),
            feature(constant | variable),  // padding
            report_id(0x42),
            logical_minimum(0),
            logical_maximum(255),
            report_size(8),
            report_count(4),
            usage(0xFF42),
            feature(data | variable),
            report_id(0x43),
            logical_minimum(0),
            logical_maximum(15),
            report_size(4),
            report_count(1),
            usage(0xFF43),
            feature(data | variable),
            report_count(1),
            feature(constant | variable),  // padding
            report_id(0x44),
            logical_minimum(0),
            logical_maximum(15),
            report_size(4),
            report_count(1),
            usage(0xFF44),
            feature(data | variable),
            report_count(1),
            feature(constant | variable),  // padding
            report_id(0x50),
            logical_minimum(0),
            logical_maximum(1),
            report_size(1),
            report_count(1),
            usage(0xFF50),
            feature(data | variable),
            report_count(7),
            feature(constant | variable),  // padding
            report_id(0x51),
            logical_minimum(0),
            logical_maximum(1),
            report_size(1),
            report_count(1),
            usage(0xFF51),
            feature(data | variable),
            report_count(7),
            feature(constant | variable),  // padding
            report_id(0x52),
            logical_minimum(0),
            logical_maximum(65535),
            report_size(16),
            report_count(1),
            usage(0xFF52),
            feature(data | variable),
            report_id(0x53),
            logical_minimum(0),
            logical_maximum(65535),
            report_size(16),
            report_count(1),
            usage(0xFF53),
            feature(data | variable),
            report_id(0x54),
            logical_minimum(0),
            logical_maximum(65535),
            report_size(16),
            report_count(1),
            usage(0xFF54),
            feature(data | variable),
            report_id(0x55),
            logical_minimum(0),
            logical_maximum(65535),
            report_size(16),
            report_count(1),
            usage(0xFF55),
            feature(data | variable),
        end_collection(),
    end_collection(),
    usage_page(0x0C),                      // Consumer page
    usage(0x01),                           // Consumer Control
    collection(application),
        report_id(0x01),                   // keys
        report_size(1),
        logical_minimum(0),
        logical_maximum(1),
        usage_page(0x0C),                  // Consumer page
        usage(0xEA),                       // Volume Decrement
        usage(0xE9),                       // Volume Increment
        report_count(2),
        input(data | variable | relative),
        report_count(6),
        input(constant),                   // padding
    end_collection(),
    usage_page(0xFF58),                    // vendor-defined
    usage(0x01),
    collection(application),
        report_id(0x58),
        usage(0x01),
        logical_minimum(0),
        logical_maximum(255),
        report_count(63),
        report_size(8),
        input(data | variable),
        report_id(0x58),
        usage(0x01),
        logical_minimum(0),
        logical_maximum(255),
        report_count(63),
        report_size(8),
        output(data | variable),
    end_collection(),
    usage_page(0xFFFF),                    // vendor-defined
    usage(0x01),
    collection(application),
        report_id(0x04),                   // keys
        usage_page(0xFF13),                // vendor-defined, numbered as the Telephony page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x20),                       // as Hook Switch
        report_size(1),
        report_count(1),
        input(data | variable | no_preferred),
        usage(0x21),                       // as Flash
        usage(0x24),                       // as Redial
        usage(0x2F),                       // as Phone Mute
        usage(0x26),                       // as Drop
        report_size(1),
        report_count(4),
        input(data | variable | relative),
        usage(0x07),                       // Programmable Button, but Button 7 by the page that follows
        usage_page(0x09),                  // Button page
        usage(0x01),                       // Button 1
        report_size(1),
        report_count(1),
        input(data | array | null_state),
        usage_page(0xFF13),                // vendor-defined, numbered as the Telephony page
        report_size(1),
        report_count(2),
        input(constant),                   // padding
        report_id(0x05),                   // indicators
        usage(0x9E),                       // as Ringer
        report_size(1),
        report_count(1),
        output(data | variable | no_preferred),
        usage_page(0xFF95),                // vendor-defined, numbered as the LED page
        usage(0x17),                       // as Off-Hook
        usage(0x21),                       // as Microphone
        usage(0x18),                       // as Ring
        usage(0x09),                       // as Mute
        usage(0x2A),                       // as On-Line
        usage(0x20),                       // as Hold
        usage(0x03),
        report_size(1),
        report_count(7),
        output(data | variable | no_preferred),
    end_collection(),
};
// clang-format on

}  // namespace

HeadsetModel epos_impact_d() {
    return {
        .key = "epos-impact-d",
        .vendor_id = 0x1395,
        .product_id = 0x00A9,
        .manufacturer = "EPOS",
        .product = "EPOS IMPACT D",
        .serial = "A003150221407733",
        .descriptor = descriptor(items),
    };
}

}  // namespace platform::virtual_headsets
