// The thread that watches HID interfaces come and go: it owns a message-only window, which is told of each,
// and runs an enumeration pass every time.
#pragma once

#include <cstdint>

#include "platform/message_window.h"

namespace plugin_control {

inline constexpr const wchar_t* message_window_class = L"OrvexHIDPlugin_Message_Window_Class";
inline constexpr const wchar_t* message_window_name = L"OrvexHIDPlugin_message_window";

/// Starts a message thread and returns. When one is running already the new one finds the window class taken
/// and ends.
void start_message_thread();

/// The window, once a thread that is just creating it has done so; on that thread itself, at once.
platform::WindowHandle settled_message_window();

/// Has the window's thread destroy it, null for none, and frees the window class unless another window has
/// it.
void end_message_thread(platform::WindowHandle window);

/// Has another pass run soon. False when there is no message thread that would run it. Does not wait.
bool request_enumeration();

/// The message-only window, null when there is none.
platform::WindowHandle message_window();

/// The module's own instance, for the window class.
extern void* const g_module_instance;

}  // namespace plugin_control

/// The thread: creates the window and handles its messages until it is destroyed. The parameter is not used;
/// returns 0.
std::uint32_t MessageThread(void* parameter);

/// The window procedure.
platform::LParam WndMessageHandler(platform::WindowHandle window, std::uint32_t message,
                                   platform::WParam wparam, platform::LParam lparam);
