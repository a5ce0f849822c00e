// Microsoft SideWinder Game Voice, the control box of a headset for games. It has a telephony collection
// without any telephony usage, and no report ids.
#include "virtual_headset/models/headsets.h"
#include "virtual_headset/models/items.h"

namespace platform::virtual_headsets {
namespace {

// clang-format off
constexpr std::initializer_list<Item> items = {
    usage_page(0x0B),             // Telephony page
    usage(0x05),                  // Headset
    collection(application),
        usage_page(0x09),         // Button page
        usage_minimum(0x11),      // Button 17
        usage_maximum(0x18),      // Button 24
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(8),
        input(data | variable | no_preferred),
        usage_page(0x08),         // LED page
        usage(0x3A),              // Usage Selected Indicator
        collection(logical),
            usage_page(0x09),     // Button page
            usage_minimum(0x11),  // Button 17
            usage_maximum(0x17),  // Button 23
            logical_minimum(0),
            logical_maximum(1),
            report_size(1),
            report_count(7),
            feature(data | variable | no_preferred | volatile_value),
        end_collection(),
        usage_page(0xFFFF),       // vendor-defined
        usage(0x01),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(1),
        feature(data | variable | no_preferred),
    end_collection(),
};
// clang-format on

}  // namespace

HeadsetModel microsoft_game_voice() {
    return {
        .key = "microsoft-game-voice",
        .vendor_id = 0x045E,
        .product_id = 0x003B,
        .manufacturer = "Microsoft",
        .product = "Microsoft SideWinder Game Voice",
        .serial = "59481-GV-20014",
        .descriptor = descriptor(items),
    };
}

}  // namespace platform::virtual_headsets
