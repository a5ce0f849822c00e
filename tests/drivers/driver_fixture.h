// What the tests of the drivers have in common.
#pragma once

#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "drivers/driver_factory.h"
#include "platform/virtual/virtual_platform.h"
#include "tests/hid/headsets_on_bus.h"
#include "tests/hid/scripted_parser.h"
#include "tests/support/layer_log.h"

namespace headset_plugin::driver_test {

using platform::hid_test::Bytes;
using Lines = std::vector<std::string>;

/// A number as the drivers' log lines print it.
inline std::string hex(unsigned number) {
    std::array<char, 16> digits;
    std::snprintf(digits.data(), digits.size(), "0x%x", number);
    return digits.data();
}

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
