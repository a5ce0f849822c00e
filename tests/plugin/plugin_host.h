// A host in the same program as the plug-in, with virtual headsets to plug: what tests of the whole plug-in
// start from.
#pragma once

#include <array>
#include <cstdio>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "device/device.h"
#include "device/device_events.h"
#include "devicemgr/admission.h"
#include "devicemgr/message_thread.h"
#include "drivers/driver_factory.h"
#include "orvex/headset_plugin.h"
#include "orvex/virtual_headset.h"
#include "tests/plugin/plugin_threads.h"
#include "tests/support/recording_host.h"
#include "tests/support/recording_logger.h"
#include "virtual_headset/platform/virtual_platform.h"

namespace test_support {

using Lines = std::vector<std::string>;
using Report = std::vector<std::uint8_t>;

/// "3rdPartyHeadsetPlugin: <function>: <message>\n"
inline std::string line(const std::string& function, const std::string& message) {
    return "3rdPartyHeadsetPlugin: " + function + ": " + message + "\n";
}

/// The line that only says where the plug-in is.
inline std::string bare_line(const std::string& function) {
    return "3rdPartyHeadsetPlugin: " + function + ":\n";
}

/// A line of an operation of the two host interfaces.
inline std::string manager_line(const std::string& operation, const std::string& message) {
    return line("plugin_control::PluginManager::" + operation, message);
}

inline platform::virtual_platform::VirtualClock& virtual_clock() {
    return platform::virtual_platform::virtual_platform().virtual_clock();
}

/// Waits until the plug-in's worker has done all that it was given so far.
inline void drain_worker() {
    const auto done = std::make_shared<std::promise<void>>();
    post_device_mgr_task({"drain_worker", [done] { done->set_value(); }});
    EXPECT_EQ(done->get_future().wait_for(patience), std::future_status::ready) << "the worker is stuck";
}

/// Every output report that reached the headset, in order.
inline std::vector<Report> outputs(int headset) {
    std::vector<Report> reports;
    std::array<std::uint8_t, 128> buffer;
    for (int i = 0, length = 0;
         (length = orvex_virtual_output(headset, i, buffer.data(), buffer.size(), nullptr)) >= 0; ++i) {
        reports.emplace_back(buffer.begin(), buffer.begin() + length);
    }
    return reports;
}

/// A host: its logger, its listeners, the plug-in, which each test starts when it wants. Time stands still,
/// so that a headset becomes ready when the test says so.
class PluginHost : public ::testing::Test {
  protected:
    void SetUp() override { virtual_clock().stop(); }

    void TearDown() override {
        listener_->on_call({});
        logger_->on_line({});
        virtual_clock().go();
        plugin_control::stopPluginControl();
        EXPECT_TRUE(wait_for_plugin_threads_to_end());
        orvex_virtual_watch(nullptr, nullptr);
        orvex_virtual_reset();
        headset_plugin::set_driver_factory({});
        plugin_control::set_device_availability_hook({});
        platform::virtual_platform::virtual_platform().set_parser(nullptr);
        EXPECT_EQ(logger_->odd_levels(), std::vector<int>());
    }

    /// Starts the plug-in and waits for its first look at the headsets.
    void start() {
        control_ = plugin_control::createPluginControl(logger_);
        config_ = plugin_control::createPluginConfig(logger_);
        EXPECT_TRUE(eventually([] { return plugin_control::message_window() != nullptr; }));
        drain_passes();
    }

    /// Waits until every arrival and removal so far has been looked at.
    void drain_passes() {
        static const platform::DeviceBroadcastHeader broadcast{sizeof(broadcast),
                                                               platform::DBT_DEVTYP_DEVICEINTERFACE, 0};
        constexpr platform::WParam no_such_event = 0;
        const std::string done = "HeadsetPlugin: WndMessageHandler: unsupported dbch_devicetype \n";
        const std::size_t before = logger_->count(done);
        platform::current().windows().PostMessageW(plugin_control::message_window(),
                                                   platform::WM_DEVICECHANGE, no_such_event,
                                                   reinterpret_cast<platform::LParam>(&broadcast));
        EXPECT_TRUE(logger_->wait_for_count(done, before + 1));
    }

    /// Waits for the first line of each read thread that was started: it comes in its own time, which may
    /// otherwise be after a test has forgotten what was logged. Not every headset that is listed is read.
    void let_read_threads_begin() {
        const std::size_t started = logger_->count(
            line("headset_plugin::device::hid_device_open", "new a thread to read headset device "));
        EXPECT_TRUE(logger_->wait_for_count(
            line("headset_plugin::device::read_thread", "Enter while(true) loop "), started));
    }

    void start_with_listeners() {
        start();
        control_->setCallControlListener(listener_);
        config_->setConfigListener(listener_);
    }

    /// Plugs a headset into the running plug-in and waits until it is listed or, if it was known before,
    /// looked at.
    int plug(const std::string& model = "jabra-link-380c", const char* serial = nullptr) {
        const int headset = orvex_virtual_plug(model.c_str(), serial);
        EXPECT_GT(headset, 0) << orvex_virtual_error();
        drain_passes();
        EXPECT_GT(logger_->count(created_line(headset)), 0U) << "the headset is not listed";
        let_read_threads_begin();
        return headset;
    }

    void replug(int headset) {
        const std::string created = created_line(headset);
        const std::size_t before = logger_->count(created);
        EXPECT_EQ(orvex_virtual_replug(headset), 0) << orvex_virtual_error();
        drain_passes();
        EXPECT_EQ(logger_->count(created), before + 1) << "the headset is not listed again";
        let_read_threads_begin();
    }

    /// Unplugs a headset and waits until it is off the list.
    void unplug(int headset) {
        const std::string removed =
            line("headset_plugin::onDeviceRemoved", "device: serial [" + serial(headset) + "]");
        const std::size_t before = logger_->count(removed);
        EXPECT_EQ(orvex_virtual_unplug(headset), 0) << orvex_virtual_error();
        EXPECT_TRUE(logger_->wait_for_count(removed, before + 1));
        drain_worker();
        drain_passes();
    }

    /// The host's id of a headset's audio device: a longer text than the headset's serial.
    static std::string host_id(int headset) { return "usb-" + serial(headset) + "-00"; }
    static std::string serial(int headset) { return orvex_virtual_serial(headset); }

    /// Chooses a headset as the host does, without waiting for it to become ready.
    bool choose(int headset) { return control_->setAudioDevice(host_id(headset), "", ""); }

    /// Chooses a headset and lets it become ready.
    void activate(int headset) {
        EXPECT_TRUE(choose(headset));
        let_ready();
    }

    /// Lets a headset that was chosen become ready.
    void let_ready() {
        EXPECT_TRUE(virtual_clock().wait_for_sleepers(1, patience));
        virtual_clock().advance(headset_plugin::inventory_delay);
        drain_worker();
    }

    int plug_active(const std::string& model = "jabra-link-380c") {
        const int headset = plug(model);
        activate(headset);
        return headset;
    }

    static std::string created_line(int headset) {
        const auto headset_description =
            platform::virtual_platform::virtual_platform().bus().description(headset);
        std::array<char, 256> text{};
        std::snprintf(text.data(), text.size(),
                      "create device, vendor_id:[0x%04x], product_id:[0x%04x], sn = %s, product_name = %s",
                      static_cast<unsigned>(headset_description->vendor_id),
                      static_cast<unsigned>(headset_description->product_id),
                      headset_description->serial.value_or("").c_str(),
                      headset_description->product.value_or("unknown").c_str());
        return line("plugin_control::device_mgr::enumerate_hid_device", text.data());
    }

    std::shared_ptr<RecordingLogger> logger_ = std::make_shared<RecordingLogger>();
    std::shared_ptr<RecordingListener> listener_ = std::make_shared<RecordingListener>();
    std::shared_ptr<plugin_control::IPluginCallControlCallback> control_;
    std::shared_ptr<plugin_control::IPluginConfigCallback> config_;
};

}  // namespace test_support
