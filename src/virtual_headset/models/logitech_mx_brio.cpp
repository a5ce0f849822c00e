// Logitech MX Brio, a camera with a microphone. Its telephony collection comes last of six and lights Mute
// and, where On-Line of the LED page would be expected, Line of the Telephony page. The product id is not
// confirmed.
#include "virtual_headset/models/headsets.h"
#include "virtual_headset/models/items.h"

namespace platform::virtual_headsets {
namespace {

// clang-format off
constexpr std::initializer_list<Item> items = {
    usage_page(0xFF00),       // vendor-defined
    usage(0x01),
    collection(application),
        report_id(0x40),
        logical_minimum(0),
        logical_maximum(1),
        usage(0x02),
        report_size(1),
        report_count(1),
        input(data | variable | relative),
        usage(0x03),
        report_size(1),
        report_count(1),
        input(data | variable | relative),
        report_count(6),
        input(constant),      // padding
        report_id(0x41),
        logical_minimum(0),
        logical_maximum(255),
        usage(0x01),
        report_count(2),
        report_size(8),
        output(data | variable),
        report_id(0x42),
        usage(0x01),
        input(data | variable),
        report_id(0x43),
        usage(0x01),
        input(data | variable),
        report_id(0x44),
        usage(0x01),
        report_count(4),
        output(data | variable),
        report_id(0x45),
        usage(0x01),
        input(data | variable),
        report_id(0x46),
        report_count(2),
        usage(0x01),
        input(data | variable),
        report_id(0x47),
        usage(0x01),
        input(data | variable),
    end_collection(),
    usage_page(0xFF01),       // vendor-defined
    usage(0x01),
    collection(application),
        report_id(0x0A),
        logical_minimum(0),
        logical_maximum(255),
        usage(0x01),
        report_count(31),
        report_size(8),
        input(data | variable),
    end_collection(),
    usage_page(0xFF02),       // vendor-defined
    usage(0x01),
    collection(application),
        usage_page(0x09),     // Button page
        usage_minimum(0x01),  // Button 1
        usage_maximum(0x01),  // Button 1
        logical_minimum(0),
        logical_maximum(127),
        report_id(0x01),      // keys
        report_count(1),
        report_size(8),
        input(data | variable),
    end_collection(),
    usage_page(0xFFA1),       // vendor-defined
    usage(0x03),
    collection(application),
        report_id(0x55),
        logical_minimum(0),
        logical_maximum(255),
        usage(0x03),
        report_count(6),
        report_size(8),
        input(data | variable),
    end_collection(),
    usage_page(0xFF99),       // vendor-defined
    usage(0x03),
    collection(application),
        report_id(0x9A),
        usage(0x03),
        logical_minimum(0),
        logical_maximum(255),
        report_count(31),
        report_size(8),
        usage(0x03),
        feature(data | variable | buffered_bytes),
    end_collection(),
    usage_page(0x0B),         // Telephony page
    usage(0x05),              // Headset
    collection(application),
        report_id(0x08),      // keys
        logical_minimum(0),
        logical_maximum(1),
        usage(0x2F),          // Phone Mute
        report_size(1),
        report_count(1),
        input(data | variable | relative),
        usage(0x20),          // Hook Switch
        report_size(1),
        report_count(1),
        input(data | variable | no_preferred),
        report_count(6),
        input(constant),      // padding
        usage_page(0x08),     // LED page
        report_id(0x05),      // indicators
        usage(0x09),          // Mute
        report_size(1),
        report_count(1),
        output(data | variable | no_preferred),
        usage_page(0x0B),     // Telephony page
        usage(0x2A),          // Line
        report_size(1),
        report_count(1),
        output(data | variable | no_preferred),
        report_count(6),
        output(constant),     // padding
    end_collection(),
};
// clang-format on

}  // namespace

HeadsetModel logitech_mx_brio() {
    return {
        .key = "logitech-mx-brio",
        .vendor_id = 0x046D,
        .product_id = 0x0944,
        .manufacturer = "Logitech",
        .product = "Logitech MX Brio",
        .serial = "2347LZ50G0C8",
        .descriptor = descriptor(items),
    };
}

}  // namespace platform::virtual_headsets
