// Yealink WH66, a wireless headset with a base. A vendor collection nests logical ones, the last of them
// without a usage; another has reports of 1024 bytes, id included.
#include "virtual_headset/models/headsets.h"
#include "virtual_headset/models/items.h"

namespace platform::virtual_headsets {
namespace {

// clang-format off
constexpr std::initializer_list<Item> items = {
    usage_page(0x0B),                      // Telephony page
    usage(0x05),                           // Headset
    collection(application),
        report_id(0x02),                   // keys and indicators
        usage_page(0x0B),                  // Telephony page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x20),                       // Hook Switch
        usage(0x97),                       // Line Busy Tone
        report_size(1),
        report_count(2),
        input(data | variable | no_preferred),
        usage(0x2F),                       // Phone Mute
        usage(0x21),                       // Flash
        usage(0x24),                       // Redial
        usage(0x50),                       // Speed Dial
        report_size(1),
        report_count(4),
        input(data | variable | relative),
        usage(0x07),                       // Programmable Button, but Button 7 by the page that follows
        usage_page(0x09),                  // Button page
        report_size(1),
        report_count(1),
        input(data | variable),
        usage_page(0x0B),                  // Telephony page
        usage(0x06),                       // Telephony Key Pad
        collection(logical),
            usage_minimum(0xB0),           // Phone Key 0
            usage_maximum(0xBB),           // Phone Key Pound
            logical_minimum(0),
            logical_maximum(11),
            report_size(4),
            report_count(1),
            input(data | array),
        end_collection(),
        report_size(1),
        report_count(5),
        input(constant),                   // padding
        usage_page(0x08),                  // LED page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x17),                       // Off-Hook
        usage(0x09),                       // Mute
        usage(0x18),                       // Ring
        usage(0x20),                       // Hold
        usage(0x21),                       // Microphone
        report_size(1),
        report_count(5),
        output(data | variable | no_preferred),
        usage_page(0x0B),                  // Telephony page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x9E),                       // Ringer
        report_size(1),
        report_count(1),
        output(data | variable | no_preferred),
        report_size(1),
        report_count(10),
        output(constant),                  // padding
    end_collection(),
    usage_page(0x0C),                      // Consumer page
    usage(0x01),                           // Consumer Control
    collection(application),
        report_id(0x01),                   // keys
        usage_page(0x0C),                  // Consumer page
        logical_minimum(0),
        logical_maximum(1),
        usage(0xE9),                       // Volume Increment
        usage(0xEA),                       // Volume Decrement
        report_size(1),
        report_count(2),
        input(data | variable),
        report_size(1),
        report_count(6),
        input(constant | variable),        // padding
        usage(0x00),                       // unassigned
        report_size(8),
        report_count(6),
        input(data | variable),
    end_collection(),
    usage_page(0xFF30),                    // vendor-defined, numbered as the Telephony page
    usage(0x05),                           // as Headset
    collection(application),
        report_id(0x04),                   // keys and indicators
        usage_page(0xFF30),                // vendor-defined, numbered as the Telephony page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x20),                       // as Hook Switch
        usage(0x97),                       // as Line Busy Tone
        report_size(1),
        report_count(2),
        input(data | variable | no_preferred),
        usage(0x2F),                       // as Phone Mute
        usage(0x21),                       // as Flash
        usage(0x24),                       // as Redial
        usage(0x50),                       // as Speed Dial
        usage(0xFFFD),
        report_size(1),
        report_count(5),
        input(data | variable | relative),
        usage_page(0xFF30),                // vendor-defined, numbered as the Telephony page
        usage(0x06),                       // as Telephony Key Pad
        collection(logical),
            usage_minimum(0xB0),           // as Phone Key 0
            usage_maximum(0xBB),           // as Phone Key Pound
            logical_minimum(0),
            logical_maximum(11),
            report_size(4),
            report_count(1),
            input(data | array),
        end_collection(),
        usage(0x2A),                       // as Line
        usage(0xFFFA),
        report_size(1),
        report_count(2),
        input(data | variable | no_preferred),
        report_size(1),
        report_count(3),
        input(constant),                   // padding
        usage_page(0xFF40),                // vendor-defined, numbered as the LED page
        logical_minimum(0),
        logical_maximum(1),
        usage(0x17),                       // as Off-Hook
        usage(0x09),                       // as Mute
        usage(0x18),                       // as Ring
        usage(0x20),                       // as Hold
        usage(0x21),                       // as Microphone
        report_size(1),
        report_count(5),
        output(data | variable),
        report_size(1),
        report_count(3),
        output(constant | variable),       // padding
    end_collection(),
    usage_page(0xFF99),                    // vendor-defined
    usage(0x01),
    collection(application),
        usage(0xFF00),
        collection(logical),
            report_id(0x11),
            logical_minimum(0),
            logical_maximum(65535),
            report_count(1),
            report_size(16),
            usage(0xFF01),
            feature(constant | variable),
            logical_maximum(255),
            report_count(2),
            report_size(8),
            usage(0xFF02),
            feature(constant | variable),
        end_collection(),
        usage(0x20),
        collection(logical),
            report_id(0x12),
            usage(0x35),
            usage(0x36),
            logical_minimum(0),
            logical_maximum(255),
            report_count(2),
            report_size(8),
            feature(constant | variable),
            usage_minimum(0x81),
            usage_maximum(0x8A),
            logical_maximum(1),
            report_count(10),
            report_size(1),
            feature(constant | variable),
            report_count(1),
            report_size(6),
            feature(constant | variable),  // padding
        end_collection(),
        usage(0x24),
        collection(logical),
            report_id(0x13),
            usage(0x26),
            usage(0x25),
            usage(0xFF10),
            logical_minimum(0),
            logical_maximum(1),
            report_count(3),
            report_size(1),
            output(data | variable),
            usage(0xFF11),
            logical_maximum(15),
            report_count(1),
            report_size(4),
            output(data | variable),
            report_size(1),
            output(constant | variable),   // padding
        end_collection(),
        usage(0x48),
        collection(logical),
            report_id(0x14),
            usage_minimum(0x81),
            usage_maximum(0x8A),
            logical_minimum(1),
            logical_maximum(10),
            report_count(1),
            report_size(4),
            output(data | array),
            report_count(1),
            report_size(4),
            output(constant | variable),   // padding
            report_count(1),
            report_size(7),
            output(constant | variable),   // padding
            usage(0xFF22),
            logical_maximum(1),
            report_count(1),
            report_size(1),
            output(data | variable),
        end_collection(),
        usage(0x2B),
        collection(logical),
            report_id(0x15),
            report_count(1),
            report_size(7),
            output(constant | variable),   // padding
            usage(0xFF24),
            logical_minimum(0),
            logical_maximum(1),
            report_count(1),
            report_size(1),
            output(data | variable),
            usage(0xFF2C),
            logical_maximum(65535),
            report_count(8),
            report_size(16),
            output(data | variable),
        end_collection(),
        usage(0xFF17),
        collection(logical),
            report_id(0x16),
            usage(0xFF18),
            logical_minimum(0),
            logical_maximum(15),
            report_count(1),
            report_size(4),
            output(data | variable),
            report_size(4),
            output(constant | variable),   // padding
            usage(0xFF1A),
            usage(0xFF1B),
            usage(0xFF1F),
            usage(0xFF20),
            logical_maximum(1),
            report_count(4),
            report_size(1),
            output(data | variable),
            report_count(1),
            report_size(2),
            logical_minimum(-1),
            logical_maximum(1),
            usage(0xFF1C),
            output(data | variable | relative | no_preferred),
            report_size(2),
            output(constant | variable),   // padding
        end_collection(),
        collection(logical),
            report_id(0x17),
            logical_minimum(0),
            logical_maximum(65535),
            report_count(1),
            report_size(16),
            usage(0x64),
            feature(data | variable),
            logical_maximum(255),
            report_count(2),
            report_size(8),
            usage(0x65),
            feature(data | variable),
        end_collection(),
    end_collection(),
    usage_page(0xFF00),                    // vendor-defined
    usage(0x00),
    collection(application),
        report_id(0xC8),
        logical_minimum(0),
        logical_maximum(-1),               // 255 was meant, which is no signed byte
        usage_minimum(0x00),
        usage_maximum(0xFF),
        report_size(8),
        report_count(1023),
        output(data | variable),
        usage_minimum(0x00),
        usage_maximum(0xFF),
        report_count(1023),
        input(data | variable),
    end_collection(),
    usage_page(0xFF99),                    // vendor-defined
    usage(0x01),
    collection(application),
        usage(0x03),
        report_id(0x9A),
        logical_minimum(0),
        logical_maximum(255),
        report_size(8),
        report_count(63),
        feature(data | variable | buffered_bytes),
        usage(0x04),
        report_id(0x9B),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(1),
        input(data | variable),
        report_size(1),
        report_count(15),
        input(constant),                   // padding
    end_collection(),
};
// clang-format on

}  // namespace

HeadsetModel yealink_wh66() {
    return {
        .key = "yealink-wh66",
        .vendor_id = 0x6993,
        .product_id = 0xB02B,
        .manufacturer = "Yealink",
        .product = "Yealink WH66",
        .serial = "803110G081000217",
        .descriptor = descriptor(items),
    };
}

}  // namespace platform::virtual_headsets
