// What the tests of the drivers have in common.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "drivers/driver_factory.h"
#include "tests/hid/headsets_on_bus.h"
#include "tests/hid/scripted_parser.h"
#include "tests/support/layer_log.h"
#include "virtual_headset/platform/virtual_platform.h"

namespace headset_plugin::driver_test {

using platform::hid_test::Bytes;
using Lines = std::vector<std::string>;

/// A number as the drivers' log lines print it.
inline std::string hex(unsigned number) {
    std::array<char, 16> digits;
    std::snprintf(digits.data(), digits.size(), "0x%x", number);
    return digits.data();
}

/// All numbers up to `low`, and each of `high` with each number below `beside` in its low bits.
inline std::vector<std::uint32_t> combined(std::uint32_t low, std::initializer_list<std::uint32_t> high,
                                           std::uint32_t beside) {
    std::vector<std::uint32_t> all;
    for (std::uint32_t bits = 0; bits <= low; ++bits) {
        all.push_back(bits);
    }
    for (const std::uint32_t above : high) {
        for (std::uint32_t bits = 0; bits < beside; ++bits) {
            all.push_back(above | bits);
        }
    }
    return all;
}

/// Alerting, in use, held, and flags that mean nothing.
inline const std::vector<std::uint32_t> headset_states = combined(0xFF, {0x100, 0x80000000, 0xFFFFFF00}, 8);

/// Single follow-up bits, those that no driver asks for among them, and bits that are not single.
inline const std::vector<std::uint32_t> follow_up_masks =
    combined(0xFF, {0x100, 0x10000, 0x80000000, 0xFFFFFF00}, 0x80);

/// The key codes that have a name, all about them, and those at the ends.
inline const std::vector<std::int32_t> key_codes = [] {
    std::vector<std::int32_t> codes = {INT32_MIN, INT32_MIN + 2, -3, -2, -1, 0x102, 0x10002, INT32_MAX};
    for (std::int32_t code = 0; code <= 0x42; ++code) {
        codes.push_back(code);
    }
    return codes;
}();

/// Low bytes of product ids: at both ends, those of products with a name of their own in some driver, those
/// beside them, and those that are families elsewhere.
inline constexpr std::uint32_t low_bytes[] = {0x00, 0x40, 0x41, 0x42, 0x45, 0x46, 0x47,
                                              0x5C, 0x5D, 0x5E, 0x5F, 0xAB, 0xAC, 0xFF};

/// Every family with these low bytes.
inline const std::vector<std::uint32_t> product_ids = [] {
    std::vector<std::uint32_t> ids;
    for (std::uint32_t high_byte = 0; high_byte <= 0xFF; ++high_byte) {
        for (const std::uint32_t low_byte : low_bytes) {
            ids.push_back(high_byte * 0x100 + low_byte);
        }
    }
    return ids;
}();

class DriverFixture : public testing::Test {
  protected:
    void TearDown() override {
        EXPECT_TRUE(log_->odd_levels().empty());
        set_driver_factory({});
        platform_.set_parser(nullptr);
        platform_.bus().reset();
    }

    HidHandle open_plugged(int headset, platform::USAGE usage_page = platform::hid_test::telephony_page) {
        const std::string path = platform::hid_test::path_of(platform_.bus(), headset, usage_page);
        HidHandle handle = hid_open_handle(path.c_str());
        EXPECT_NE(handle, nullptr) << path;
        return handle;
    }
    HidHandle open_model(const char* key) {
        return open_plugged(platform::hid_test::plug_model(platform_.bus(), key));
    }

    platform::virtual_platform::VirtualPlatform& platform_ = platform::virtual_platform::virtual_platform();
    const std::shared_ptr<test_support::RecordingLogger> log_ = test_support::install_layer_logger();
};

}  // namespace headset_plugin::driver_test
