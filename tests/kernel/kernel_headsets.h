// Virtual headsets that are devices of the kernel.
#pragma once

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "orvex/virtual_headset.h"
#include "tests/support/recording_logger.h"
#include "virtual_headset/models/items.h"

namespace test_support {

using Report = std::vector<std::uint8_t>;
using Reports = std::vector<Report>;

// Usages of the HID Usage Tables.
inline constexpr std::uint16_t led_page = 0x08;
inline constexpr std::uint16_t mute_led = 0x09;
inline constexpr std::uint16_t off_hook_led = 0x17;
inline constexpr std::uint16_t ring_led = 0x18;
inline constexpr std::uint16_t telephony_page = 0x0B;
inline constexpr std::uint16_t hook_switch = 0x20;
inline constexpr std::uint16_t phone_mute = 0x2F;
inline constexpr std::uint16_t consumer_page = 0x0C;
inline constexpr std::uint16_t volume_increment = 0xE9;

inline int plug_headset(const char* model = "jabra-link-380c", const char* serial = nullptr) {
    const int headset = orvex_virtual_plug(model, serial);
    EXPECT_GT(headset, 0) << orvex_virtual_error();
    return headset;
}

/// A headset with two keys and two indicators, without report ids.
inline Report plain_descriptor(std::uint16_t first_led = off_hook_led, std::uint16_t second_led = mute_led) {
    using namespace platform::virtual_headsets;
    // clang-format off
    return descriptor({
        usage_page(telephony_page),
        usage(0x05),  // Headset
        collection(application),
            logical_minimum(0),
            logical_maximum(1),
            report_size(1),
            usage(hook_switch),
            usage(phone_mute),
            report_count(2),
            input(data | variable),
            report_count(6),
            input(constant),
            usage_page(led_page),
            usage(first_led),
            usage(second_led),
            report_count(2),
            output(data | variable),
            report_count(6),
            output(constant),
        end_collection(),
    });
    // clang-format on
}

/// What a headset says of itself, beside its report descriptor.
struct Identity {
    std::uint16_t vendor_id = 0x0B0E;
    std::uint16_t product_id = 0x0001;
    const char* product = "Plain";
    const char* serial = "PLAIN1";
};

inline int plug_device(const Report& descriptor, const Identity& identity = {}) {
    const orvex_virtual_device device{descriptor.data(),   descriptor.size(), identity.vendor_id,
                                      identity.product_id, nullptr,           identity.product,
                                      identity.serial};
    const int headset = orvex_virtual_plug_device(&device);
    EXPECT_GT(headset, 0) << orvex_virtual_error();
    return headset;
}

/// A serial number as hidapi gives it; those of the models are ASCII.
inline std::wstring wide_serial(int headset) {
    const std::string serial = orvex_virtual_serial(headset);
    return {serial.begin(), serial.end()};
}

/// Every output report that reached the headset, in order.
inline Reports outputs(int headset) {
    Reports reports;
    std::array<std::uint8_t, 128> buffer{};
    for (int i = 0, length = 0;
         (length = orvex_virtual_output(headset, i, buffer.data(), buffer.size(), nullptr)) >= 0; ++i) {
        reports.emplace_back(buffer.begin(), buffer.begin() + length);
    }
    return reports;
}

inline void unplug_headset(int headset) {
    EXPECT_EQ(orvex_virtual_unplug(headset), 0) << orvex_virtual_error();
}

/// Unplugs everything in the end.
class KernelHeadsets : public ::testing::Test {
  protected:
    ~KernelHeadsets() override { orvex_virtual_reset(); }
};

}  // namespace test_support
