#include "devicemgr/message_thread.h"

#include <atomic>
#include <exception>

#include "base/plugin_log.h"
#include "devicemgr/device_mgr_api.h"
#include "platform/mutex.h"
#include "platform/platform.h"
#include "platform/thread.h"

// The handle that the linker gives every module of its own (Itanium C++ ABI, section 3.3.6.3).
extern "C" __attribute__((visibility("hidden"))) void* __dso_handle;  // NOLINT(bugprone-reserved-identifier)

using platform::MutexLock;

namespace plugin_control {

void* const g_module_instance = &__dso_handle;

namespace {

std::atomic<platform::WindowHandle> g_message_window{nullptr};
std::atomic<platform::NotificationHandle> g_device_notification{nullptr};

/// Counts the message threads that have been started but have not come to their window yet, so that a stop
/// that comes right after the start does not miss it.
class WindowStarts {
  public:
    void begin() {
        MutexLock lock(mutex_);
        ++pending_;
    }
    void end() {
        MutexLock lock(mutex_);
        --pending_;
        settled_.notify_all();
    }
    void wait() {
        MutexLock lock(mutex_);
        while (pending_ > 0) {
            settled_.wait(mutex_);
        }
    }
    /// Keeps threads from starting while `action` runs; does nothing when one is on its way to its window.
    template <typename Action>
    void run_unless_pending(const Action& action) {
        MutexLock lock(mutex_);
        if (pending_ == 0) {
            action();
        }
    }

  private:
    platform::Mutex mutex_;
    platform::Condition settled_;
    int pending_ GUARDED_BY(mutex_) = 0;
};

WindowStarts& window_starts() {
    static auto* const starts = new WindowStarts;  // outlives every thread
    return *starts;
}

/// True on a message thread from its start until its window is there or cannot be had.
thread_local bool t_window_pending = false;

void window_settled() {
    if (t_window_pending) {
        t_window_pending = false;
        window_starts().end();
    }
}

platform::DeviceInterfaceBroadcast hid_interface_filter() {
    platform::DeviceInterfaceBroadcast filter{};
    filter.header.size = sizeof(filter);
    filter.header.device_type = platform::DBT_DEVTYP_DEVICEINTERFACE;
    filter.class_guid = platform::GUID_DEVINTERFACE_HID;
    return filter;
}

/// A pass that fails must not take the host's process along: the host's own hook may have thrown.
void run_pass() {
    try {
        EnumerationOrvexHidDevice();
    } catch (const std::exception& error) {
        plugin_log("HeadsetPlugin: %s: exception caught: %s \n", "WndMessageHandler", error.what());
    } catch (...) {
        plugin_log("HeadsetPlugin: %s: exception caught: %s \n", "WndMessageHandler", "unknown");
    }
}

void on_create(platform::WindowHandle window) {
    g_message_window = window;
    window_settled();
    g_device_notification = platform::current().windows().RegisterDeviceNotificationW(
        window, hid_interface_filter(), platform::DEVICE_NOTIFY_WINDOW_HANDLE);
    plugin_log("HeadsetPlugin: %s: Do enumeration when this plugin is loaded \n", "WndMessageHandler");
    run_pass();
}

void on_destroy() {
    if (const auto notification = g_device_notification.exchange(nullptr)) {
        platform::current().windows().UnregisterDeviceNotification(notification);
    }
    platform::current().windows().PostQuitMessage(0);
}

void on_device_change(platform::WParam event, const platform::DeviceBroadcastHeader& header) {
    static constexpr const char* function = "WndMessageHandler";
    if (header.device_type != platform::DBT_DEVTYP_DEVICEINTERFACE) {
        return;
    }
    if (event == platform::DBT_DEVICEARRIVAL) {
        plugin_log("HeadsetPlugin: %s: New HID device is plugged in, enumerate for headset \n", function);
        run_pass();
    } else if (event == platform::DBT_DEVICEREMOVECOMPLETE) {
        plugin_log("HeadsetPlugin: %s: HID device is plugged out \n", function);
        run_pass();
    } else {
        plugin_log("HeadsetPlugin: %s: unsupported dbch_devicetype \n", function);
    }
}

/// Registers the class and creates the window; null when either fails.
platform::WindowHandle create_message_window() {
    constexpr std::uint32_t window_class_size = 80;  // sizeof(WNDCLASSEXW) on 64-bit Windows
    auto& windows = platform::current().windows();
    if (!windows.RegisterClassExW(
            {window_class_size, WndMessageHandler, g_module_instance, message_window_class})) {
        plugin_log("HeadsetPlugin: RegisterClassEx failed with error code %d \n",
                   static_cast<int>(windows.GetLastError()));
        return nullptr;
    }
    const auto window = windows.CreateWindowExW({.extended_style = 0,
                                                 .class_name = message_window_class,
                                                 .window_name = message_window_name,
                                                 .style = platform::WS_MINIMIZE,
                                                 .x = 0,
                                                 .y = 0,
                                                 .width = platform::CW_USEDEFAULT,
                                                 .height = 0,
                                                 .instance = g_module_instance});
    if (window == nullptr) {
        plugin_log("HeadsetPlugin: Create message window failed with error code %d \n",
                   static_cast<int>(windows.GetLastError()));
    }
    return window;
}

void run_message_thread() {
    t_window_pending = true;
    try {
        MessageThread(const_cast<wchar_t*>(L"Message Thread"));
    } catch (...) {
        // Only a logger that throws leads here; there is nobody left to tell.
        window_settled();
    }
}

}  // namespace

void start_message_thread() {
    window_starts().begin();
    try {
        platform::start_detached_thread("orvex-message", run_message_thread);
    } catch (...) {
        window_starts().end();
        throw;
    }
}

platform::WindowHandle settled_message_window() {
    if (!t_window_pending) {
        window_starts().wait();
    }
    return g_message_window;
}

void end_message_thread(platform::WindowHandle window) {
    auto& windows = platform::current().windows();
    if (window != nullptr) {
        windows.SendMessageW(window, platform::WM_DESTROY, 0, 0);
        windows.SendMessageW(window, platform::WM_CLOSE, 0, 0);
        // Another thread may have stopped the plug-in as well, and started it again since: that window stays.
        g_message_window.compare_exchange_strong(window, nullptr);
    }
    window_starts().run_unless_pending(
        [&] { windows.UnregisterClassW(message_window_class, g_module_instance); });
}

bool request_enumeration() {
    static const platform::DeviceInterfaceBroadcast arrival = hid_interface_filter();
    const auto window = g_message_window.load();
    return window != nullptr && platform::current().windows().PostMessageW(
                                    window, platform::WM_DEVICECHANGE, platform::DBT_DEVICEARRIVAL,
                                    reinterpret_cast<platform::LParam>(&arrival));
}

platform::WindowHandle message_window() {
    return g_message_window;
}

}  // namespace plugin_control

std::uint32_t MessageThread(void* /*parameter*/) {
    static constexpr const char* function = "MessageThread";
    auto& windows = platform::current().windows();
    const auto window = plugin_control::create_message_window();
    plugin_control::window_settled();
    if (window == nullptr) {
        return 0;
    }
    plugin_log("HeadsetPlugin: %s: Message Thread is running \n", function);
    platform::WindowMessage message{};
    while (windows.GetMessageW(&message, window)) {
        windows.TranslateMessage(message);
        windows.DispatchMessageW(message);
    }
    plugin_log("HeadsetPlugin: %s: Message Thread is closed \n", function);
    return 0;
}

platform::LParam WndMessageHandler(platform::WindowHandle window, std::uint32_t message,
                                   platform::WParam wparam, platform::LParam lparam) try {
    switch (message) {
        case platform::WM_CREATE:
            plugin_control::on_create(window);
            return 0;
        case platform::WM_DESTROY:
            plugin_control::on_destroy();
            return 0;
        case platform::WM_DEVICECHANGE:
            plugin_control::on_device_change(
                wparam, *reinterpret_cast<const platform::DeviceBroadcastHeader*>(lparam));
            return 0;
        default:
            return platform::current().windows().DefWindowProcW(window, message, wparam, lparam);
    }
} catch (...) {
    return 0;  // only a logger that throws leads here; the system's frames below must not be unwound
}
