// The product library with a headset on the USB, which has what a uhid device lacks.

#include <chrono>
#include <hidapi/hidapi.h>

#include "tests/kernel/plugin_on_kernel.h"
#include "tests/kernel/usb_headset.h"

namespace {

using namespace test_support;

class PluginOnUsb : public PluginOnKernel {
  protected:
    /// Waits until the plug-in has looked through the devices as often as it does when it starts and a
    /// headset with two nodes comes.
    void wait_until_enumerated() const {
        EXPECT_TRUE(logger_->wait_for_count(
            "3rdPartyHeadsetPlugin: plugin_control::device_mgr::enumerate_hid_device: complete hid_enumerate() \n",
            3));
    }

    Reports receive(UsbGadget& headset, int count) {
        Reports reports;
        for (int i = 0; i < count; ++i) {
            reports.push_back(headset.receive(telephony_interface));
        }
        return reports;
    }
};

TEST_F(PluginOnUsb, finds_the_telephony_among_several_interfaces) {
    start();
    UsbGadget headset(usb_headset("USB2"));
    wait_until_listed("USB2");
    wait_until_open();
    activate("USB2");
    EXPECT_EQ(receive(headset, reports_until_ready), Reports(5, at_rest));
    control_->connectCall("", "1");
    EXPECT_EQ(headset.receive(telephony_interface), in_use);
    headset.send(telephony_interface, {0x02, 0x08, 0x00});
    EXPECT_TRUE(listener_->wait_for("onMuteCall(usb-USB2-00, 1, true)"));
}

TEST_F(PluginOnUsb, is_told_that_a_headset_is_unplugged_and_back) {
    start();
    UsbGadget headset(usb_headset("USB3"));
    wait_until_listed("USB3");
    wait_until_open();
    wait_until_enumerated();
    activate("USB3");
    EXPECT_EQ(receive(headset, reports_until_ready), Reports(5, at_rest));
    headset.unplug();
    EXPECT_TRUE(listener_->wait_for(notification("onDeviceRemovedNotify", "USB3")));
    headset.plug();
    wait_until_listed("USB3", 2);
    wait_until_open(2);
    activate("USB3");
    EXPECT_EQ(receive(headset, reports_until_ready), Reports(5, at_rest));
}

TEST_F(PluginOnUsb, gives_up_a_write_that_the_headset_does_not_take_after_a_second) {
    const UsbGadget headset(usb_headset("USB4"));
    const auto enumerate = library_.find<decltype(hid_enumerate)>("hid_enumerate");
    const auto free_enumeration = library_.find<decltype(hid_free_enumeration)>("hid_free_enumeration");
    std::string path;
    EXPECT_TRUE(eventually([&] {
        hid_device_info* const list = enumerate(0x0B0E, 0x24C9);
        for (const hid_device_info* info = list; info != nullptr; info = info->next) {
            path = info->usage_page == telephony_page ? info->path : path;
        }
        free_enumeration(list);
        return !path.empty();
    }));
    hid_device* const device = library_.find<decltype(hid_open_path)>("hid_open_path")(path.c_str());
    ASSERT_NE(device, nullptr);

    int written = 0;
    std::chrono::steady_clock::duration taken{};
    constexpr int more_than_are_taken = 20;
    for (int i = 0; written >= 0 && i < more_than_are_taken; ++i) {
        const auto start = std::chrono::steady_clock::now();
        written = library_.find<decltype(hid_write)>("hid_write")(device, in_use.data(), in_use.size());
        taken = std::chrono::steady_clock::now() - start;
    }
    EXPECT_EQ(written, -1);
    EXPECT_GE(taken, std::chrono::milliseconds(1000));
    EXPECT_LT(taken, std::chrono::milliseconds(3000)) << "the kernel itself waits for 5 s";
    EXPECT_STREQ(library_.find<decltype(hid_error)>("hid_error")(device),
                 L"WriteFile/WaitForSingleObject Timeout");
    library_.find<decltype(hid_close)>("hid_close")(device);
}

}  // namespace
