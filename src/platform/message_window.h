// The seam to window messages and device notifications. The plug-in learns of arriving and leaving HID
// interfaces through a message-only window, as Windows has it; elsewhere platform/common/ supplies such
// windows.
#pragma once

#include <cstdint>
#include <string>

namespace platform {

class Window;
using WindowHandle = Window*;
class DeviceNotification;
using NotificationHandle = DeviceNotification*;
using WParam = std::uintptr_t;
using LParam = std::intptr_t;
using WindowProcedure = LParam (*)(WindowHandle window, std::uint32_t message, WParam wparam, LParam lparam);

// Window messages and device events, with the values of winuser.h and dbt.h (Windows SDK). Guarded like the
// status codes of hid_types.h.
#ifndef WM_CREATE
inline constexpr std::uint32_t WM_CREATE = 0x0001;
inline constexpr std::uint32_t WM_DESTROY = 0x0002;
inline constexpr std::uint32_t WM_CLOSE = 0x0010;
inline constexpr std::uint32_t WM_DEVICECHANGE = 0x0219;
inline constexpr std::uint32_t WS_MINIMIZE = 0x20000000;
inline constexpr int CW_USEDEFAULT = static_cast<int>(0x80000000U);
#endif
#ifndef DBT_DEVICEARRIVAL
inline constexpr std::uint32_t DBT_DEVICEARRIVAL = 0x8000;
inline constexpr std::uint32_t DBT_DEVICEREMOVECOMPLETE = 0x8004;
inline constexpr std::uint32_t DBT_DEVTYP_DEVICEINTERFACE = 5;
#endif
#ifndef DEVICE_NOTIFY_WINDOW_HANDLE
inline constexpr std::uint32_t DEVICE_NOTIFY_WINDOW_HANDLE = 0;
#endif

// System error codes that the window operations give (Windows SDK, winerror.h).
inline constexpr std::uint32_t error_not_supported = 50;
inline constexpr std::uint32_t error_class_already_exists = 1410;
inline constexpr std::uint32_t error_cannot_find_window_class = 1407;

struct Guid {
    std::uint32_t data1;
    std::uint16_t data2;
    std::uint16_t data3;
    std::uint8_t data4[8];
    bool operator==(const Guid&) const = default;
};

/// The device-interface class of HID devices, {4D1E55B2-F16F-11CF-88CB-001111000030} (Windows SDK,
/// hidclass.h).
inline constexpr Guid GUID_DEVINTERFACE_HID = {
    0x4D1E55B2, 0xF16F, 0x11CF, {0x88, 0xCB, 0x00, 0x11, 0x11, 0x00, 0x00, 0x30}};

/// The start of every device broadcast; WM_DEVICECHANGE passes its address in lParam.
struct DeviceBroadcastHeader {
    std::uint32_t size;
    std::uint32_t device_type;
    std::uint32_t reserved;
};

/// DEV_BROADCAST_DEVICEINTERFACE_W: a device interface, or the filter for notifications about a class of
/// them.
struct DeviceInterfaceBroadcast {
    DeviceBroadcastHeader header;
    Guid class_guid;
    char16_t name[1];
};
static_assert(sizeof(DeviceInterfaceBroadcast) == 32);

struct WindowClass {
    std::uint32_t size;  ///< of the system's structure
    WindowProcedure procedure;
    void* instance;
    const wchar_t* class_name;
};

struct WindowCreation {
    std::uint32_t extended_style;
    const wchar_t* class_name;
    const wchar_t* window_name;
    std::uint32_t style;
    int x, y, width, height;
    void* instance;
};

/// A message taken from a thread's queue.
struct WindowMessage {
    WindowHandle window;
    std::uint32_t message;
    WParam wparam;
    LParam lparam;
};

/// Message-only windows and device notifications, with the meaning of the Windows functions of the same
/// names.
///
/// A window belongs to the thread that made it and its procedure runs on that thread alone.
class MessageWindows {
  public:
    virtual ~MessageWindows() = default;

    /// False with an error code when the class exists already.
    virtual bool RegisterClassExW(const WindowClass& window_class) = 0;

    /// False while a window of the class exists, and where there is no such class.
    virtual bool UnregisterClassW(const wchar_t* class_name, void* instance) = 0;

    /// Makes a message-only window (parent HWND_MESSAGE) and runs its procedure with WM_CREATE before it
    /// returns. Null with an error code on failure.
    virtual WindowHandle CreateWindowExW(const WindowCreation& creation) = 0;

    /// Waits for the next message of `window`. Messages that were sent are handled inside, without being
    /// returned. False once the quit message was posted. [the window's thread]
    virtual bool GetMessageW(WindowMessage* message, WindowHandle window) = 0;
    virtual void TranslateMessage(const WindowMessage& message) = 0;
    virtual LParam DispatchMessageW(const WindowMessage& message) = 0;

    /// What every message gets that the procedure leaves alone: WM_CLOSE destroys the window.
    virtual LParam DefWindowProcW(WindowHandle window, std::uint32_t message, WParam wparam,
                                  LParam lparam) = 0;

    /// Ends the calling thread's message loop.
    virtual void PostQuitMessage(int exit_code) = 0;

    /// Has the window's thread handle a message and waits for it; on that very thread, calls the procedure.
    /// Returns 0 at once when the window is gone or its thread has left its loop.
    virtual LParam SendMessageW(WindowHandle window, std::uint32_t message, WParam wparam, LParam lparam) = 0;

    /// Queues a message and returns. False when the window is gone. What `lparam` points at must outlive the
    /// message.
    virtual bool PostMessageW(WindowHandle window, std::uint32_t message, WParam wparam, LParam lparam) = 0;

    /// Has WM_DEVICECHANGE sent to the window for every interface of the filter's class that arrives or
    /// leaves.
    virtual NotificationHandle RegisterDeviceNotificationW(WindowHandle window,
                                                           const DeviceInterfaceBroadcast& filter,
                                                           std::uint32_t flags) = 0;
    virtual void UnregisterDeviceNotification(NotificationHandle notification) = 0;

    /// The calling thread's last error of these operations.
    virtual std::uint32_t GetLastError() = 0;
};

}  // namespace platform
