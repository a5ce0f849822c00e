// What the message thread asks of the seam to window messages.
#include <atomic>
#include <functional>
#include <thread>

#include "tests/devicemgr/manager_fixture.h"

using namespace manager_test;
using plugin_control::g_module_instance;
using plugin_control::message_window;

namespace {

using platform::DeviceInterfaceBroadcast;
using platform::LParam;
using platform::MessageWindows;
using platform::NotificationHandle;
using platform::WindowClass;
using platform::WindowCreation;
using platform::WindowHandle;
using platform::WindowMessage;
using platform::WParam;

const std::wstring class_name = L"OrvexHIDPlugin_Message_Window_Class";

/// What the windows were asked for.
struct Asked {
    struct Registration {
        WindowHandle window;
        DeviceInterfaceBroadcast filter;
        std::uint32_t flags;
        NotificationHandle given;
    };
    struct Message {
        WindowHandle window;
        std::uint32_t message;
        WParam wparam;
        LParam lparam;
        bool operator==(const Message&) const = default;
    };
    struct FreedClass {
        std::wstring name;
        void* instance;
        std::size_t sent_before;  ///< messages
    };

    std::vector<WindowClass> classes{};
    std::vector<WindowCreation> creations{};
    std::vector<Registration> registrations{};
    std::vector<NotificationHandle> unregistrations{};
    std::vector<Message> sent{};
    std::vector<Message> left_alone{};  ///< to the default procedure
    std::vector<int> exit_codes{};
    std::vector<FreedClass> freed_classes{};
};

/// The platform's windows, which keep what they are asked for, and fail where a test wants them to.
class RecordingWindows final : public MessageWindows {
  public:
    explicit RecordingWindows(MessageWindows& real) : real_(real) {}

    // Set while nothing runs.
    bool refuse_windows = false;
    bool refuse_notifications = false;
    std::uint32_t last_error = 0;  ///< of a refusal
    LParam default_result = 0;
    std::function<void(std::uint32_t message)> before_send{};

    Asked asked() const {
        std::lock_guard lock(mutex_);
        return asked_;
    }

    bool RegisterClassExW(const WindowClass& window_class) override {
        record([&](Asked& asked) { asked.classes.push_back(window_class); });
        return real_.RegisterClassExW(window_class);
    }
    bool UnregisterClassW(const wchar_t* name, void* instance) override {
        record([&](Asked& asked) { asked.freed_classes.push_back({name, instance, asked.sent.size()}); });
        return real_.UnregisterClassW(name, instance);
    }
    WindowHandle CreateWindowExW(const WindowCreation& creation) override {
        record([&](Asked& asked) { asked.creations.push_back(creation); });
        return refuse_windows ? nullptr : real_.CreateWindowExW(creation);
    }
    bool GetMessageW(WindowMessage* message, WindowHandle window) override {
        return real_.GetMessageW(message, window);
    }
    void TranslateMessage(const WindowMessage& message) override { real_.TranslateMessage(message); }
    LParam DispatchMessageW(const WindowMessage& message) override { return real_.DispatchMessageW(message); }
    LParam DefWindowProcW(WindowHandle window, std::uint32_t message, WParam wparam, LParam lparam) override {
        record([&](Asked& asked) { asked.left_alone.push_back({window, message, wparam, lparam}); });
        return real_.DefWindowProcW(window, message, wparam, lparam) + default_result;
    }
    void PostQuitMessage(int exit_code) override {
        record([&](Asked& asked) { asked.exit_codes.push_back(exit_code); });
        real_.PostQuitMessage(exit_code);
    }
    LParam SendMessageW(WindowHandle window, std::uint32_t message, WParam wparam, LParam lparam) override {
        record([&](Asked& asked) { asked.sent.push_back({window, message, wparam, lparam}); });
        if (before_send) {
            before_send(message);
        }
        return real_.SendMessageW(window, message, wparam, lparam);
    }
    bool PostMessageW(WindowHandle window, std::uint32_t message, WParam wparam, LParam lparam) override {
        return real_.PostMessageW(window, message, wparam, lparam);
    }
    NotificationHandle RegisterDeviceNotificationW(WindowHandle window,
                                                   const DeviceInterfaceBroadcast& filter,
                                                   std::uint32_t flags) override {
        const auto given =
            refuse_notifications ? nullptr : real_.RegisterDeviceNotificationW(window, filter, flags);
        record([&](Asked& asked) { asked.registrations.push_back({window, filter, flags, given}); });
        return given;
    }
    void UnregisterDeviceNotification(NotificationHandle notification) override {
        record([&](Asked& asked) { asked.unregistrations.push_back(notification); });
        real_.UnregisterDeviceNotification(notification);
    }
    std::uint32_t GetLastError() override { return last_error != 0 ? last_error : real_.GetLastError(); }

  private:
    template <typename Note>
    void record(const Note& note) {
        std::lock_guard lock(mutex_);
        note(asked_);
    }

    MessageWindows& real_;
    mutable std::mutex mutex_;
    Asked asked_;
};

class MessageThreadWindows : public RunningManagerTest {
  protected:
    void SetUp() override {
        RunningManagerTest::SetUp();
        platform().set_windows(&windows_);
    }
    void TearDown() override {
        RunningManagerTest::TearDown();
        platform().set_windows(nullptr);
    }

    RecordingWindows windows_{platform().virtual_windows()};
};

TEST_F(MessageThreadWindows, the_window_class_belongs_to_the_module) {
    start();
    const auto classes = windows_.asked().classes;
    ASSERT_EQ(classes.size(), 1U);
    EXPECT_EQ(classes[0].size, 80U);
    EXPECT_EQ(classes[0].procedure, &WndMessageHandler);
    EXPECT_EQ(classes[0].class_name, class_name);
    EXPECT_EQ(classes[0].instance, g_module_instance);
    EXPECT_NE(classes[0].instance, nullptr);
}

TEST_F(MessageThreadWindows, the_window_is_made_once_and_minimized) {
    start();
    const auto creations = windows_.asked().creations;
    ASSERT_EQ(creations.size(), 1U);
    EXPECT_EQ(creations[0].extended_style, 0U);
    EXPECT_EQ(creations[0].class_name, class_name);
    EXPECT_EQ(creations[0].window_name, std::wstring(L"OrvexHIDPlugin_message_window"));
    EXPECT_EQ(creations[0].style, 0x20000000U);
    EXPECT_EQ(creations[0].x, 0);
    EXPECT_EQ(creations[0].y, 0);
    EXPECT_EQ(creations[0].width, platform::CW_USEDEFAULT);
    EXPECT_EQ(creations[0].height, 0);
    EXPECT_EQ(creations[0].instance, g_module_instance);
}

TEST_F(MessageThreadWindows, notifications_are_asked_for_hid_interfaces_and_sent_to_the_window) {
    start();
    const auto registrations = windows_.asked().registrations;
    ASSERT_EQ(registrations.size(), 1U);
    EXPECT_EQ(registrations[0].window, message_window());
    EXPECT_EQ(registrations[0].flags, 0U);
    const DeviceInterfaceBroadcast& filter = registrations[0].filter;
    EXPECT_EQ(filter.header.size, 32U);
    EXPECT_EQ(filter.header.device_type, 5U);
    EXPECT_EQ(filter.header.reserved, 0U);
    EXPECT_TRUE(filter.class_guid == platform::GUID_DEVINTERFACE_HID);
    EXPECT_EQ(filter.name[0], u'\0');
}

TEST_F(MessageThreadWindows, a_stop_destroys_and_closes_the_window_and_frees_its_class) {
    start();
    const WindowHandle window = message_window();
    stop_device_mgr();
    ASSERT_TRUE(wait_for_message_threads());
    const Asked asked = windows_.asked();
    constexpr std::uint32_t destroy = 0x0002, close = 0x0010;  // winuser.h (Windows SDK)
    EXPECT_TRUE(asked.sent == (std::vector<Asked::Message>{{window, destroy, 0, 0}, {window, close, 0, 0}}));
    EXPECT_EQ(asked.unregistrations, std::vector{asked.registrations.at(0).given});
    ASSERT_FALSE(asked.exit_codes.empty());
    EXPECT_EQ(asked.exit_codes, std::vector<int>(asked.exit_codes.size(), 0));
    ASSERT_EQ(asked.freed_classes.size(), 1U);
    EXPECT_EQ(asked.freed_classes[0].name, class_name);
    EXPECT_EQ(asked.freed_classes[0].instance, g_module_instance);
    EXPECT_EQ(asked.freed_classes[0].sent_before, 2U);
}

TEST_F(MessageThreadWindows, notifications_are_ended_once_however_often_the_window_is_destroyed) {
    start();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(WndMessageHandler(message_window(), platform::WM_DESTROY, 0, 0), 0);
    }
    const Asked asked = windows_.asked();
    EXPECT_EQ(asked.unregistrations, std::vector{asked.registrations.at(0).given});
    EXPECT_EQ(asked.exit_codes, (std::vector{0, 0}));
}

TEST_F(MessageThreadWindows, a_stop_that_is_held_up_at_its_window_leaves_a_later_start_its_own) {
    start();
    Gate gate;
    std::atomic<bool> is_first = true;
    windows_.before_send = [&](std::uint32_t message) {
        if (message == platform::WM_CLOSE && is_first.exchange(false)) {
            gate.pass();
        }
    };
    std::thread late(stop_device_mgr);
    EXPECT_TRUE(gate.wait_for_arrival());
    stop_device_mgr();
    EXPECT_TRUE(wait_for_message_threads());
    start();
    gate.open();
    late.join();
    windows_.before_send = {};
    plug_and_wait(headset("SN-1"));
    EXPECT_TRUE(set_audio_device("host-SN-1", "", ""));
    stop_device_mgr();
    ASSERT_TRUE(wait_for_message_threads());
    start();
    EXPECT_TRUE(set_audio_device("host-SN-1", "", ""));
}

TEST_F(MessageThreadWindows, a_message_that_is_not_known_gets_the_default_procedures_answer) {
    constexpr std::uint32_t any_message = 0x0400;  // WM_USER, winuser.h (Windows SDK)
    windows_.default_result = 42;
    start();
    const WindowHandle window = message_window();
    EXPECT_EQ(WndMessageHandler(window, any_message, 7, 8), 42);
    EXPECT_TRUE(windows_.asked().left_alone == std::vector<Asked::Message>({{window, any_message, 7, 8}}));
}

TEST_F(MessageThreadWindows, without_notifications_the_first_pass_runs_all_the_same) {
    windows_.refuse_notifications = true;
    plug(headset("SN-1"));
    start();
    EXPECT_TRUE(set_audio_device("host-SN-1", "", ""));
    stop_device_mgr();
    ASSERT_TRUE(wait_for_message_threads());
    EXPECT_EQ(windows_.asked().unregistrations, std::vector<NotificationHandle>());
}

TEST_F(MessageThreadWindows, a_window_that_cannot_be_made_leaves_the_plug_in_without_a_pass) {
    windows_.refuse_windows = true;
    windows_.last_error = 1158;  // any
    plug(headset("SN-1"));
    start_device_mgr(0);
    ASSERT_TRUE(logger_->wait_for("HeadsetPlugin: Create message window failed with error code 1158 \n"));
    EXPECT_EQ(logger_->lines_with("RegisterClassEx failed"), Lines{});
    EXPECT_EQ(logger_->lines_with("MessageThread"), Lines{});
    EXPECT_EQ(logger_->lines_with("enumerate_hid_device"), Lines{});
    EXPECT_EQ(message_window(), nullptr);
    EXPECT_FALSE(set_audio_device("host-SN-1", "", ""));
}

}  // namespace
