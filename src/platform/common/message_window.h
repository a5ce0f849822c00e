// Message-only windows for systems that have none: queues within the process, with the rules of the windows
// that the seam describes.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <thread>

#include "platform/message_window.h"
#include "platform/mutex.h"

namespace platform::common {

/// Lives as long as the process. Thread: any.
class QueuedMessageWindows : public MessageWindows {
  public:
    QueuedMessageWindows();
    ~QueuedMessageWindows() override;

    bool RegisterClassExW(const WindowClass& window_class) override;
    bool UnregisterClassW(const wchar_t* class_name, void* instance) override;
    WindowHandle CreateWindowExW(const WindowCreation& creation) override;
    bool GetMessageW(WindowMessage* message, WindowHandle window) override;
    void TranslateMessage(const WindowMessage& message) override;
    LParam DispatchMessageW(const WindowMessage& message) override;
    LParam DefWindowProcW(WindowHandle window, std::uint32_t message, WParam wparam, LParam lparam) override;
    void PostQuitMessage(int exit_code) override;
    LParam SendMessageW(WindowHandle window, std::uint32_t message, WParam wparam, LParam lparam) override;
    bool PostMessageW(WindowHandle window, std::uint32_t message, WParam wparam, LParam lparam) override;
    NotificationHandle RegisterDeviceNotificationW(WindowHandle window,
                                                   const DeviceInterfaceBroadcast& filter,
                                                   std::uint32_t flags) override;
    void UnregisterDeviceNotification(NotificationHandle notification) override;
    std::uint32_t GetLastError() override;

    /// Tells every window that registered for HID interfaces of an arrival or a removal. Does not wait.
    void notify_device_change(std::uint32_t event);

  private:
    struct State;
    struct Posted;
    struct Sent;
    struct ThreadWindows;

    std::shared_ptr<State> find(WindowHandle window) REQUIRES(mutex_);
    bool take_message(State& state, WindowMessage* message, WindowHandle window);
    void answer(State& state, Sent& sent, LParam result) EXCLUDES(mutex_);
    void remove(WindowHandle window) EXCLUDES(mutex_);
    void remove_windows_of(std::thread::id owner) EXCLUDES(mutex_);

    Mutex mutex_;
    std::uintptr_t last_handle_ GUARDED_BY(mutex_) = 0;
    std::map<std::wstring, WindowProcedure> classes_ GUARDED_BY(mutex_);
    std::map<WindowHandle, std::shared_ptr<State>> windows_ GUARDED_BY(mutex_);
    std::map<NotificationHandle, WindowHandle> notifications_ GUARDED_BY(mutex_);
};

}  // namespace platform::common
