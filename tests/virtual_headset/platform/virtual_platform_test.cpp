#include "virtual_headset/platform/virtual_platform.h"

#include <gtest/gtest.h>
#include <thread>

#include "tests/virtual_headset/bus.h"

namespace bus_test {
namespace {

using platform::virtual_platform::virtual_platform;

class VirtualPlatformTest : public testing::Test {
  protected:
    void TearDown() override {
        virtual_platform().bus().reset();
        virtual_platform().virtual_clock().go();
        virtual_platform().set_parser(nullptr);
        virtual_platform().set_windows(nullptr);
    }
};

TEST_F(VirtualPlatformTest, is_the_platform_of_this_program) {
    EXPECT_EQ(&platform::current(), &virtual_platform());
    EXPECT_EQ(&platform::current().clock(), &virtual_platform().virtual_clock());
    EXPECT_EQ(&platform::current().windows(), &virtual_platform().virtual_windows());
}

TEST_F(VirtualPlatformTest, has_the_headsets_of_its_bus) {
    platform::HidBackend& hid = platform::current().hid();
    EXPECT_EQ(hid.init(), L"");
    Failure failure;
    ASSERT_TRUE(virtual_platform().bus().plug(describe(jabra), failure)) << failure;
    const auto interfaces = hid.enumerate(0x0B0E, 0x24C9);
    ASSERT_EQ(interfaces.size(), 3U);
    EXPECT_EQ(hid.enumerate(0x0B0E, 1).size(), 0U);
    const auto opened = hid.open(interfaces[0].path);
    ASSERT_NE(opened.interface, nullptr);
    hid.HidD_FreePreparsedData(opened.interface->HidD_GetPreparsedData());
    hid.exit();
    EXPECT_EQ(hid.init(), L"") << "any number of times";
}

TEST_F(VirtualPlatformTest, hangs_writes_on_its_own_clock) {
    auto& bus = virtual_platform().bus();
    Failure failure;
    const auto headset = bus.plug(describe(jabra), failure);
    ASSERT_TRUE(headset) << failure;
    const auto opened = bus.open(bus.enumerate(0, 0)[0].path).interface;
    bus.misbehave(*headset, Fault::write_hangs);
    virtual_platform().virtual_clock().stop();
    std::thread time([] {
        EXPECT_TRUE(virtual_platform().virtual_clock().wait_for_sleepers(1, std::chrono::seconds(20)));
        virtual_platform().virtual_clock().advance(std::chrono::seconds(1));
    });
    EXPECT_EQ(write(*opened, {0x02, 0x01, 0x00}).status, IoResult::Status::timed_out);
    time.join();
}

std::vector<platform::WParam> g_device_changes;

platform::LParam note_device_changes(platform::WindowHandle window, std::uint32_t message,
                                     platform::WParam wparam, platform::LParam lparam) {
    if (message == platform::WM_DEVICECHANGE) {
        g_device_changes.push_back(wparam);
    }
    return platform::current().windows().DefWindowProcW(window, message, wparam, lparam);
}

TEST_F(VirtualPlatformTest, tells_windows_of_headsets_that_come_and_go) {
    g_device_changes.clear();
    std::thread window_thread([] {
        platform::MessageWindows& windows = platform::current().windows();
        windows.RegisterClassExW({0, note_device_changes, nullptr, L"HeadsetWatch"});
        const auto window = windows.CreateWindowExW({0, L"HeadsetWatch", L"", 0, 0, 0, 0, 0, nullptr});
        platform::DeviceInterfaceBroadcast filter{};
        filter.class_guid = platform::GUID_DEVINTERFACE_HID;
        const auto notification = windows.RegisterDeviceNotificationW(window, filter, 0);

        Failure failure;
        const auto headset = virtual_platform().bus().plug(describe(game_voice), failure);
        virtual_platform().bus().unplug(headset.value_or(no_headset));
        platform::WindowMessage message{};
        for (int i = 0; i < 2; ++i) {
            ASSERT_TRUE(windows.GetMessageW(&message, window));
            windows.DispatchMessageW(message);
        }
        windows.UnregisterDeviceNotification(notification);
        windows.DefWindowProcW(window, platform::WM_CLOSE, 0, 0);
        EXPECT_TRUE(windows.UnregisterClassW(L"HeadsetWatch", nullptr));
    });
    window_thread.join();
    EXPECT_EQ(g_device_changes, (std::vector<platform::WParam>{platform::DBT_DEVICEARRIVAL,
                                                               platform::DBT_DEVICEREMOVECOMPLETE}));
}

TEST_F(VirtualPlatformTest, takes_another_parser_and_its_own_again) {
    EXPECT_EQ(&virtual_platform().parser(), &platform::hidp::parser());
    const platform::hidp::Parser other;
    virtual_platform().set_parser(&other);
    EXPECT_EQ(&platform::current().parser(), &other);
    virtual_platform().set_parser(nullptr);
    EXPECT_EQ(&platform::current().parser(), &platform::hidp::parser());
}

TEST_F(VirtualPlatformTest, takes_other_windows_and_its_own_again) {
    platform::common::QueuedMessageWindows other;
    virtual_platform().set_windows(&other);
    EXPECT_EQ(&platform::current().windows(), &other);
    virtual_platform().set_windows(nullptr);
    EXPECT_EQ(&platform::current().windows(), &virtual_platform().virtual_windows());
}

}  // namespace
}  // namespace bus_test
