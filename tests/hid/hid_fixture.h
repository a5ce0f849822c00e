// What the tests of the HID layer have in common: the platform, the log, and a headset that is opened.
#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "hid/hid_access.h"
#include "hid/hid_device.h"
#include "tests/hid/headsets_on_bus.h"
#include "tests/hid/scripted_platform.h"
#include "tests/support/layer_log.h"

namespace platform::hid_test {

using headset_plugin::HidHandle;
using Lines = std::vector<std::string>;

/// A line of the HID layer's log.
inline std::string line(const std::string& function, const std::string& text) {
    return "HID_WIN: " + function + ": " + text + "\n";
}

/// Lines of one function.
inline Lines lines(const std::string& function, const Lines& texts) {
    Lines all;
    for (const std::string& text : texts) {
        all.push_back(line(function, text));
    }
    return all;
}

inline Lines operator+(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

inline std::vector<headset_plugin::HidDataEntry> input_entries(hid_device& device) {
    MutexLock lock(device.input_mutex);
    return device.input_data;
}

inline std::vector<headset_plugin::HidDataEntry> output_entries(hid_device& device) {
    MutexLock lock(device.output_mutex);
    return device.output_data;
}

class HidFixture : public testing::Test {
  protected:
    void SetUp() override {
        headset_plugin::hid_set_error(nullptr, L"");
        platform_.reset();
    }

    void TearDown() override {
        EXPECT_EQ(platform_.asked.interfaces_open, 0) << "interfaces left open";
        EXPECT_EQ(platform_.asked.preparsed_data_held, 0) << "preparsed data not given back";
        EXPECT_TRUE(log_->odd_levels().empty());
        platform_.reset();
    }

    virtual_platform::VirtualBus& bus() { return platform_.bus(); }

    /// Plugs and opens a headset with this descriptor; the log then begins.
    HidHandle open(const Bytes& descriptor) { return open_plugged(plug(bus(), described(descriptor))); }
    HidHandle open_model(const char* key) { return open_plugged(plug_model(bus(), key)); }

    HidHandle open_plugged(int headset) {
        headset_ = headset;
        HidHandle handle = headset_plugin::hid_open_handle(path_of(bus(), headset).c_str());
        EXPECT_NE(handle, nullptr) << "not opened";
        log_->clear();
        return handle;
    }

    /// Puts the scripted parser in the real one's place.
    ScriptedParser& script_parser() {
        platform_.set_parser(&parser_);
        return parser_;
    }

    ScriptedPlatform& platform_ = scripted_platform();
    const std::shared_ptr<test_support::RecordingLogger> log_ = test_support::install_layer_logger();
    ScriptedParser parser_;
    int headset_ = 0;  ///< the one that was opened last
};

}  // namespace platform::hid_test
