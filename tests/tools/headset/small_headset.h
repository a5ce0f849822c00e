// Descriptors for the tests of the headset tool.
#pragma once

#include <string>

#include "tools/headset/collections.h"
#include "tools/headset/hex.h"
#include "virtual_headset/models/items.h"
#include "virtual_headset/models/model.h"

namespace headset {

/// The project's own model of this name.
inline Bytes model_descriptor(const char* key) {
    return platform::virtual_headsets::find_model(key)->descriptor;
}

/// A headset with a key and a volume in report 1, two indicators in report 2 of two bytes, a third one in
/// report 3 of three, and a feature.
inline Bytes small_headset() {
    using namespace platform::virtual_headsets;
    constexpr std::uint16_t led_page = 0x08;
    constexpr std::uint16_t telephony_page = 0x0B;
    return descriptor({
        usage_page(telephony_page),
        usage(0x05),
        collection(application),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(1),  //
        report_id(1),
        usage(0x2F),
        input(variable | relative),
        report_count(7),
        input(constant),  //
        usage(0xE0),
        logical_minimum(-10),
        logical_maximum(10),
        report_size(8),
        report_count(1),
        input(variable | null_state),  //
        report_id(2),
        usage_page(led_page),
        usage(0x17),
        usage(0x09),
        logical_minimum(0),
        logical_maximum(1),
        report_size(1),
        report_count(2),
        output(variable),
        report_count(6),
        output(constant),  //
        report_id(3),
        usage(0x18),
        report_count(1),
        output(variable),
        report_count(15),
        output(constant),  //
        report_id(4),
        usage(0x4B),
        report_size(8),
        report_count(1),
        logical_maximum(255),
        feature(variable),
        end_collection(),
    });
}

/// The same key in a headset without report ids, one byte long.
inline Bytes headset_without_ids() {
    using namespace platform::virtual_headsets;
    return descriptor({usage_page(0x0B), usage(0x05), collection(application), logical_minimum(0),
                       logical_maximum(1), report_size(1), report_count(1), usage(0x2F), input(variable),
                       report_count(7), input(constant), end_collection()});
}

}  // namespace headset
