#include "platform/common/message_window.h"

#include <algorithm>
#include <vector>

namespace platform::common {

namespace {

constexpr std::uint32_t error_invalid_window_handle = 1400;  // Windows SDK, winerror.h

thread_local std::uint32_t t_last_error = 0;

}  // namespace

/// A message that nobody waits for. What lparam points at may be the message's own.
struct QueuedMessageWindows::Posted {
    std::uint32_t message;
    WParam wparam;
    LParam lparam;
    std::shared_ptr<const DeviceInterfaceBroadcast> payload;
};

/// A message whose sender waits, on its own stack, until it is answered.
struct QueuedMessageWindows::Sent {
    std::uint32_t message;
    WParam wparam;
    LParam lparam;
    LParam result = 0;
    bool answered = false;
};

struct QueuedMessageWindows::State {
    std::wstring class_name;
    WindowProcedure procedure;
    std::thread::id owner;
    Condition changed;  // a message came, was answered, or the window is gone
    std::deque<Sent*> sent;
    std::deque<Posted> posted;
    Posted current{};  // keeps its payload until the next one is taken
    bool quit = false;
    bool gone = false;
};

/// Takes a thread's windows away when the thread ends, by whatever way.
struct QueuedMessageWindows::ThreadWindows {
    QueuedMessageWindows* windows = nullptr;
    ~ThreadWindows() {
        if (windows != nullptr) {
            windows->remove_windows_of(std::this_thread::get_id());
        }
    }
};

QueuedMessageWindows::QueuedMessageWindows() = default;
QueuedMessageWindows::~QueuedMessageWindows() = default;

std::shared_ptr<QueuedMessageWindows::State> QueuedMessageWindows::find(WindowHandle window) {
    const auto found = windows_.find(window);
    return found == windows_.end() ? nullptr : found->second;
}

bool QueuedMessageWindows::RegisterClassExW(const WindowClass& window_class) {
    MutexLock lock(mutex_);
    if (!classes_.emplace(window_class.class_name, window_class.procedure).second) {
        t_last_error = error_class_already_exists;
        return false;
    }
    return true;
}

bool QueuedMessageWindows::UnregisterClassW(const wchar_t* class_name, void* /*instance*/) {
    MutexLock lock(mutex_);
    const bool in_use = std::any_of(windows_.begin(), windows_.end(), [&](const auto& window) {
        return window.second->class_name == class_name;
    });
    if (in_use || classes_.erase(class_name) == 0) {
        t_last_error = error_cannot_find_window_class;
        return false;
    }
    return true;
}

WindowHandle QueuedMessageWindows::CreateWindowExW(const WindowCreation& creation) {
    static thread_local ThreadWindows t_windows;
    auto state = std::make_shared<State>();
    WindowHandle window = nullptr;
    {
        MutexLock lock(mutex_);
        const auto window_class = classes_.find(creation.class_name);
        if (window_class == classes_.end()) {
            t_last_error = error_cannot_find_window_class;
            return nullptr;
        }
        state->class_name = window_class->first;
        state->procedure = window_class->second;
        state->owner = std::this_thread::get_id();
        window = reinterpret_cast<WindowHandle>(++last_handle_);  // a number, never a pointer
        windows_.emplace(window, state);
    }
    t_windows.windows = this;
    state->procedure(window, WM_CREATE, 0, 0);
    MutexLock lock(mutex_);
    if (state->gone) {
        t_last_error = error_invalid_window_handle;
        return nullptr;
    }
    return window;
}

bool QueuedMessageWindows::GetMessageW(WindowMessage* message, WindowHandle window) {
    std::shared_ptr<State> state;
    {
        MutexLock lock(mutex_);
        state = find(window);
    }
    if (state && take_message(*state, message, window)) {
        return true;
    }
    // The thread leaves its loop: nobody will handle what is sent to the window any more.
    remove(window);
    return false;
}

bool QueuedMessageWindows::take_message(State& state, WindowMessage* message, WindowHandle window) {
    while (true) {
        Sent* sent = nullptr;
        {
            MutexLock lock(mutex_);
            while (!state.gone && !state.quit && state.sent.empty() && state.posted.empty()) {
                state.changed.wait(mutex_);
            }
            if (state.gone || (state.quit && state.sent.empty())) {
                return false;
            }
            if (state.sent.empty()) {
                state.current = std::move(state.posted.front());
                state.posted.pop_front();
                *message = {window, state.current.message, state.current.wparam, state.current.lparam};
                return true;
            }
            sent = state.sent.front();
            state.sent.pop_front();
        }
        try {
            answer(state, *sent, state.procedure(window, sent->message, sent->wparam, sent->lparam));
        } catch (...) {
            answer(state, *sent, 0);  // the sender must not wait for ever
            throw;
        }
    }
}

void QueuedMessageWindows::answer(State& state, Sent& sent, LParam result) {
    MutexLock lock(mutex_);
    sent.result = result;
    sent.answered = true;
    state.changed.notify_all();
}

void QueuedMessageWindows::TranslateMessage(const WindowMessage& /*message*/) {}

LParam QueuedMessageWindows::DispatchMessageW(const WindowMessage& message) {
    std::shared_ptr<State> state;
    {
        MutexLock lock(mutex_);
        state = find(message.window);
    }
    return state ? state->procedure(message.window, message.message, message.wparam, message.lparam) : 0;
}

LParam QueuedMessageWindows::DefWindowProcW(WindowHandle window, std::uint32_t message, WParam /*wparam*/,
                                            LParam /*lparam*/) {
    if (message != WM_CLOSE) {
        return 0;
    }
    std::shared_ptr<State> state;
    {
        MutexLock lock(mutex_);
        state = find(window);
    }
    if (state) {
        state->procedure(window, WM_DESTROY, 0, 0);
        remove(window);
    }
    return 0;
}

void QueuedMessageWindows::PostQuitMessage(int /*exit_code*/) {
    MutexLock lock(mutex_);
    for (const auto& [handle, state] : windows_) {
        if (state->owner == std::this_thread::get_id()) {
            state->quit = true;
            state->changed.notify_all();
        }
    }
}

LParam QueuedMessageWindows::SendMessageW(WindowHandle window, std::uint32_t message, WParam wparam,
                                          LParam lparam) {
    std::shared_ptr<State> state;
    {
        MutexLock lock(mutex_);
        state = find(window);
        if (!state) {
            return 0;
        }
        if (state->owner != std::this_thread::get_id()) {
            Sent sent{message, wparam, lparam};
            state->sent.push_back(&sent);
            state->changed.notify_all();
            while (!sent.answered) {
                state->changed.wait(mutex_);
            }
            return sent.result;
        }
    }
    return state->procedure(window, message, wparam, lparam);
}

bool QueuedMessageWindows::PostMessageW(WindowHandle window, std::uint32_t message, WParam wparam,
                                        LParam lparam) {
    MutexLock lock(mutex_);
    const auto state = find(window);
    if (!state) {
        t_last_error = error_invalid_window_handle;
        return false;
    }
    state->posted.push_back({message, wparam, lparam, nullptr});
    state->changed.notify_all();
    return true;
}

NotificationHandle QueuedMessageWindows::RegisterDeviceNotificationW(WindowHandle window,
                                                                     const DeviceInterfaceBroadcast& filter,
                                                                     std::uint32_t /*flags*/) {
    if (filter.class_guid != GUID_DEVINTERFACE_HID) {
        t_last_error = error_not_supported;
        return nullptr;
    }
    MutexLock lock(mutex_);
    const auto notification =
        reinterpret_cast<NotificationHandle>(++last_handle_);  // a number, never a pointer
    notifications_.emplace(notification, window);
    return notification;
}

void QueuedMessageWindows::UnregisterDeviceNotification(NotificationHandle notification) {
    MutexLock lock(mutex_);
    notifications_.erase(notification);
}

std::uint32_t QueuedMessageWindows::GetLastError() {
    return t_last_error;
}

void QueuedMessageWindows::notify_device_change(std::uint32_t event) {
    auto broadcast = std::make_shared<DeviceInterfaceBroadcast>();
    broadcast->header.size = sizeof(*broadcast);
    broadcast->header.device_type = DBT_DEVTYP_DEVICEINTERFACE;
    broadcast->class_guid = GUID_DEVINTERFACE_HID;
    const auto lparam = reinterpret_cast<LParam>(broadcast.get());
    MutexLock lock(mutex_);
    for (const auto& [notification, window] : notifications_) {
        if (const auto state = find(window)) {
            state->posted.push_back({WM_DEVICECHANGE, event, lparam, broadcast});
            state->changed.notify_all();
        }
    }
}

void QueuedMessageWindows::remove(WindowHandle window) {
    MutexLock lock(mutex_);
    const auto state = find(window);
    if (!state) {
        return;
    }
    windows_.erase(window);
    state->gone = true;
    for (Sent* const sent : state->sent) {
        sent->answered = true;
    }
    state->sent.clear();
    state->changed.notify_all();
}

void QueuedMessageWindows::remove_windows_of(std::thread::id owner) {
    std::vector<WindowHandle> owned;
    {
        MutexLock lock(mutex_);
        for (const auto& [handle, state] : windows_) {
            if (state->owner == owner) {
                owned.push_back(handle);
            }
        }
    }
    for (const WindowHandle window : owned) {
        remove(window);
    }
}

}  // namespace platform::common
