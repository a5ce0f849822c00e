// Logitech G535, a gaming headset. It has no telephony collection, so it is not admitted as a headset for
// calls. The vendor collection has its logical minimum from the collection before, since global items outlast
// a collection (HID 1.11, 6.2.2.7).
#include "virtual_headset/models/headsets.h"
#include "virtual_headset/models/items.h"

namespace platform::virtual_headsets {
namespace {

// clang-format off
constexpr std::initializer_list<Item> items = {
    usage_page(0x0C),                // Consumer page
    usage(0x01),                     // Consumer Control
    collection(application),
        report_id(0x01),             // keys
        usage(0xE9),                 // Volume Increment
        usage(0xEA),                 // Volume Decrement
        report_size(1),
        report_count(2),
        logical_minimum(0),
        logical_maximum(1),
        input(data | variable),
        report_size(6),
        report_count(1),
        input(constant | variable),  // padding
        report_size(24),
        input(constant | variable),  // padding
    end_collection(),
    usage_page(0xFF43),              // vendor-defined
    usage(0x202),
    collection(application),
        report_id(0x11),
        report_count(19),
        report_size(8),
        logical_maximum(255),
        usage(0x02),
        input(data | array),
        usage(0x02),
        output(data | array),
    end_collection(),
};
// clang-format on

}  // namespace

HeadsetModel logitech_g535() {
    return {
        .key = "logitech-g535",
        .vendor_id = 0x046D,
        .product_id = 0x0AC4,
        .manufacturer = "Logitech",
        .product = "Logitech G535",
        .serial = "2131MH02WQR9",
        .descriptor = descriptor(items),
    };
}

}  // namespace platform::virtual_headsets
