#include <atomic>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <latch>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include "platform/common/message_window.h"
#include "tests/support/recording_logger.h"

namespace {

using namespace platform;
using platform::common::QueuedMessageWindows;
using test_support::eventually;
using test_support::patience;

constexpr const wchar_t* class_name = L"TestWindowClass";

// Messages of the tests' own, from WM_APP on (Windows SDK, winuser.h).
constexpr std::uint32_t wm_leave = 0x8000;
constexpr std::uint32_t wm_question = 0x8001;
constexpr std::uint32_t wm_news = 0x8002;

// The error codes of winerror.h.
constexpr std::uint32_t invalid_window_handle = 1400;

struct Handled {
    std::uint32_t message;
    WParam wparam;
    LParam lparam;
    std::thread::id thread;
};

class MessageWindowsTest : public testing::Test {
  protected:
    using Action = std::function<LParam(WindowHandle, WParam, LParam)>;

    void SetUp() override {
        s_current = this;
        on(wm_leave, [this](WindowHandle, WParam, LParam) {
            windows_.PostQuitMessage(0);
            return 0;
        });
        ASSERT_TRUE(register_class());
    }
    void TearDown() override { join_loops(); }

    /// Waits for the threads of start_loop.
    void join_loops() {
        for (std::thread& thread : threads_) {
            thread.join();
        }
        threads_.clear();
    }

    bool register_class() { return windows_.RegisterClassExW({0, procedure, nullptr, class_name}); }
    bool unregister_class() { return windows_.UnregisterClassW(class_name, nullptr); }

    WindowHandle create() {
        return windows_.CreateWindowExW({0, class_name, L"window", 0, 0, 0, 0, 0, nullptr});
    }

    /// Has the window procedure do something; what it has no action for goes to DefWindowProcW.
    void on(std::uint32_t message, Action action) {
        std::lock_guard lock(mutex_);
        actions_[message] = std::move(action);
    }

    std::vector<Handled> handled() {
        std::lock_guard lock(mutex_);
        return handled_;
    }
    std::vector<std::uint32_t> handled_messages() {
        std::vector<std::uint32_t> messages;
        for (const Handled& entry : handled()) {
            messages.push_back(entry.message);
        }
        return messages;
    }

    /// Runs a thread that makes a window, does `before_loop`, runs the message loop and then `after_loop`;
    /// returns the window. wm_leave ends the loop.
    WindowHandle start_loop(std::function<void(WindowHandle)> before_loop = {},
                            std::function<void(WindowHandle)> after_loop = {}) {
        std::promise<WindowHandle> made;
        auto window = made.get_future();
        threads_.emplace_back([this, &made, before_loop, after_loop] {
            const WindowHandle mine = create();
            made.set_value(mine);
            if (before_loop) {
                before_loop(mine);
            }
            run_loop(mine);
            if (after_loop) {
                after_loop(mine);
            }
        });
        return window.get();
    }

    /// Takes and dispatches messages until there are no more; an exception ends the loop, too.
    void run_loop(WindowHandle window) {
        try {
            WindowMessage message{};
            while (windows_.GetMessageW(&message, window)) {
                windows_.TranslateMessage(message);
                windows_.DispatchMessageW(message);
            }
        } catch (const std::runtime_error&) {
            ++loops_broken_;
        }
    }

    /// Runs `body` on a thread that ends before this returns.
    void on_thread(const std::function<void()>& body) { std::thread(body).join(); }

    void leave(WindowHandle window) { windows_.PostMessageW(window, wm_leave, 0, 0); }

    QueuedMessageWindows windows_;
    std::atomic<int> loops_broken_ = 0;
    std::latch gate_{1};  ///< for one thing that a thread waits for in a test

  private:
    static LParam procedure(WindowHandle window, std::uint32_t message, WParam wparam, LParam lparam) {
        return s_current->handle(window, message, wparam, lparam);
    }

    LParam handle(WindowHandle window, std::uint32_t message, WParam wparam, LParam lparam) {
        Action action;
        {
            std::lock_guard lock(mutex_);
            handled_.push_back({message, wparam, lparam, std::this_thread::get_id()});
            action = actions_[message];
        }
        return action ? action(window, wparam, lparam)
                      : windows_.DefWindowProcW(window, message, wparam, lparam);
    }

    static inline MessageWindowsTest* s_current = nullptr;

    std::mutex mutex_;
    std::map<std::uint32_t, Action> actions_;
    std::vector<Handled> handled_;
    std::vector<std::thread> threads_;
};

TEST_F(MessageWindowsTest, refuses_a_class_that_exists) {
    EXPECT_FALSE(register_class());
    EXPECT_EQ(windows_.GetLastError(), error_class_already_exists);
}

TEST_F(MessageWindowsTest, frees_a_class_for_another_registration) {
    EXPECT_TRUE(unregister_class());
    EXPECT_FALSE(unregister_class());
    EXPECT_EQ(windows_.GetLastError(), error_cannot_find_window_class);
    EXPECT_TRUE(register_class());
}

TEST_F(MessageWindowsTest, keeps_a_class_while_a_window_of_it_exists) {
    const WindowHandle window = start_loop();
    EXPECT_FALSE(unregister_class());
    windows_.SendMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_TRUE(unregister_class());
}

TEST_F(MessageWindowsTest, makes_no_window_without_its_class) {
    ASSERT_TRUE(unregister_class());
    EXPECT_EQ(create(), nullptr);
    EXPECT_EQ(windows_.GetLastError(), error_cannot_find_window_class);
}

TEST_F(MessageWindowsTest, runs_the_procedure_with_the_creation_before_the_window_is_returned) {
    on_thread([this] {
        ASSERT_NE(create(), nullptr);
        ASSERT_EQ(handled_messages(), std::vector{WM_CREATE});
        EXPECT_EQ(handled()[0].thread, std::this_thread::get_id());
    });
}

TEST_F(MessageWindowsTest, makes_windows_that_differ) {
    on_thread([this] { EXPECT_NE(create(), create()); });
}

TEST_F(MessageWindowsTest, makes_no_window_that_was_destroyed_in_its_creation) {
    on(WM_CREATE, [this](WindowHandle window, WParam, LParam) {
        return windows_.DefWindowProcW(window, WM_CLOSE, 0, 0);
    });
    on_thread([this] {
        EXPECT_EQ(create(), nullptr);
        EXPECT_EQ(windows_.GetLastError(), invalid_window_handle);
    });
    EXPECT_EQ(handled_messages(), (std::vector{WM_CREATE, WM_DESTROY}));
    EXPECT_TRUE(unregister_class());
}

TEST_F(MessageWindowsTest, has_a_sent_message_handled_on_the_windows_thread_and_returns_the_answer) {
    on(wm_question,
       [](WindowHandle, WParam wparam, LParam lparam) { return static_cast<LParam>(wparam) * 100 + lparam; });
    const WindowHandle window = start_loop();
    EXPECT_EQ(windows_.SendMessageW(window, wm_question, 4, 2), 402);
    const Handled question = handled().back();
    EXPECT_EQ(question.message, wm_question);
    EXPECT_EQ(question.wparam, 4U);
    EXPECT_EQ(question.lparam, 2);
    EXPECT_EQ(question.thread, handled().front().thread) << "the thread that made the window";
    EXPECT_NE(question.thread, std::this_thread::get_id());
    leave(window);
}

TEST_F(MessageWindowsTest, calls_the_procedure_for_a_message_sent_on_the_windows_own_thread) {
    on(wm_question, [](WindowHandle, WParam, LParam) { return 7; });
    on_thread([this] {
        const WindowHandle window = create();
        EXPECT_EQ(windows_.SendMessageW(window, wm_question, 0, 0), 7) << "although no loop runs";
    });
}

TEST_F(MessageWindowsTest, lets_the_procedure_send_to_its_own_window) {
    on(wm_news, [](WindowHandle, WParam, LParam) { return 3; });
    on(wm_question, [this](WindowHandle window, WParam, LParam) {
        return windows_.SendMessageW(window, wm_news, 0, 0) + 1;
    });
    const WindowHandle window = start_loop();
    EXPECT_EQ(windows_.SendMessageW(window, wm_question, 0, 0), 4);
    leave(window);
}

TEST_F(MessageWindowsTest, answers_each_of_many_senders) {
    on(wm_question, [](WindowHandle, WParam wparam, LParam) { return static_cast<LParam>(wparam) + 1; });
    const WindowHandle window = start_loop();
    std::vector<std::thread> senders;
    for (WParam number = 0; number < 4; ++number) {
        senders.emplace_back([this, window, number] {
            for (WParam i = 0; i < 50; ++i) {
                const WParam question = number * 1000 + i;
                EXPECT_EQ(windows_.SendMessageW(window, wm_question, question, 0),
                          static_cast<LParam>(question + 1));
            }
        });
    }
    for (std::thread& sender : senders) {
        sender.join();
    }
    leave(window);
}

TEST_F(MessageWindowsTest, handles_posted_messages_in_order_even_those_from_before_the_loop) {
    const WindowHandle window = start_loop([this](WindowHandle) { gate_.wait(); });
    for (const WParam number : {1U, 2U, 3U}) {
        EXPECT_TRUE(windows_.PostMessageW(window, wm_news, number, -1));
    }
    gate_.count_down();
    leave(window);
    join_loops();
    const auto entries = handled();
    ASSERT_EQ(entries.size(), 5U);
    for (const std::size_t number : {1U, 2U, 3U}) {
        EXPECT_EQ(entries[number].message, wm_news);
        EXPECT_EQ(entries[number].wparam, number);
        EXPECT_EQ(entries[number].lparam, -1);
    }
}

TEST_F(MessageWindowsTest, returns_posted_messages_from_the_loop_and_never_sent_ones) {
    std::vector<std::uint32_t> taken;
    const WindowHandle window = start_loop([&](WindowHandle mine) {
        WindowMessage message{};
        while (windows_.GetMessageW(&message, mine)) {
            taken.push_back(message.message);
            EXPECT_EQ(message.window, mine);
            windows_.DispatchMessageW(message);
        }
    });
    windows_.SendMessageW(window, wm_question, 0, 0);
    windows_.PostMessageW(window, wm_news, 0, 0);
    windows_.SendMessageW(window, wm_question, 0, 0);
    leave(window);
    join_loops();
    EXPECT_EQ(taken, (std::vector{wm_news, wm_leave}));
}

TEST_F(MessageWindowsTest, returns_what_the_procedure_returns_for_a_dispatched_message) {
    on(wm_news, [](WindowHandle, WParam, LParam) { return 5; });
    on_thread([this] {
        const WindowHandle window = create();
        EXPECT_EQ(windows_.DispatchMessageW({window, wm_news, 0, 0}), 5);
        windows_.DefWindowProcW(window, WM_CLOSE, 0, 0);
        EXPECT_EQ(windows_.DispatchMessageW({window, wm_news, 0, 0}), 0) << "the window is gone";
    });
}

TEST_F(MessageWindowsTest, leaves_the_loop_at_once_and_drops_what_was_posted) {
    on_thread([this] {
        const WindowHandle window = create();
        windows_.PostMessageW(window, wm_news, 0, 0);
        windows_.PostQuitMessage(0);
        WindowMessage message{};
        EXPECT_FALSE(windows_.GetMessageW(&message, window));
        EXPECT_FALSE(windows_.PostMessageW(window, wm_news, 0, 0)) << "the window went with its loop";
        EXPECT_EQ(windows_.GetLastError(), invalid_window_handle);
        EXPECT_FALSE(windows_.GetMessageW(&message, window)) << "nor does another loop get anywhere";
    });
    EXPECT_EQ(handled_messages(), std::vector{WM_CREATE});
}

TEST_F(MessageWindowsTest, releases_a_sender_who_comes_as_the_loop_is_left) {
    on(wm_news, [this](WindowHandle, WParam, LParam) {
        windows_.PostQuitMessage(0);
        gate_.wait();
        return 1;
    });
    const WindowHandle window = start_loop();
    auto late = std::async(std::launch::async, [&] {
        gate_.count_down();
        return windows_.SendMessageW(window, wm_question, 0, 0);
    });
    EXPECT_EQ(windows_.SendMessageW(window, wm_news, 0, 0), 1)
        << "the message that ends the loop is answered";
    EXPECT_EQ(late.wait_for(patience), std::future_status::ready);
}

TEST_F(MessageWindowsTest, ends_the_loops_of_the_quitting_thread_alone) {
    on(wm_question, [](WindowHandle, WParam, LParam) { return 2; });
    const WindowHandle left = start_loop();
    const WindowHandle stays = start_loop();
    windows_.SendMessageW(left, wm_leave, 0, 0);
    EXPECT_TRUE(eventually([&] { return !windows_.PostMessageW(left, wm_news, 0, 0); }));
    EXPECT_EQ(windows_.SendMessageW(stays, wm_question, 0, 0), 2);
    leave(stays);
}

TEST_F(MessageWindowsTest, returns_from_sending_to_a_thread_that_has_left_its_loop) {
    const WindowHandle window = start_loop({}, [this](WindowHandle) { gate_.wait(); });
    leave(window);
    EXPECT_EQ(windows_.SendMessageW(window, wm_question, 0, 0), 0) << "the thread still runs";
    gate_.count_down();
}

TEST_F(MessageWindowsTest, releases_a_sender_whose_window_is_destroyed) {
    on(wm_question, [](WindowHandle, WParam, LParam) { return 8; });
    const WindowHandle window = start_loop([this](WindowHandle mine) {
        gate_.wait();
        windows_.SendMessageW(mine, WM_CLOSE, 0, 0);
    });
    auto answer = std::async(std::launch::async, [&] {
        gate_.count_down();
        return windows_.SendMessageW(window, wm_question, 0, 0);
    });
    ASSERT_EQ(answer.wait_for(patience), std::future_status::ready);
    EXPECT_EQ(answer.get(), 0);
}

TEST_F(MessageWindowsTest, takes_windows_along_when_their_thread_ends) {
    std::promise<WindowHandle> made;
    std::thread owner([&] {
        made.set_value(create());
        gate_.wait();
    });
    const WindowHandle window = made.get_future().get();
    auto answer = std::async(std::launch::async, [&] {
        gate_.count_down();
        return windows_.SendMessageW(window, wm_question, 0, 0);
    });
    owner.join();
    ASSERT_EQ(answer.wait_for(patience), std::future_status::ready);
    EXPECT_EQ(answer.get(), 0);
    EXPECT_FALSE(windows_.PostMessageW(window, wm_news, 0, 0));
    EXPECT_TRUE(unregister_class());
}

TEST_F(MessageWindowsTest, releases_a_sender_whose_message_makes_the_procedure_throw) {
    on(wm_question,
       [](WindowHandle, WParam, LParam) -> LParam { throw std::runtime_error("out of memory"); });
    const WindowHandle window = start_loop();
    auto answer =
        std::async(std::launch::async, [&] { return windows_.SendMessageW(window, wm_question, 0, 0); });
    ASSERT_EQ(answer.wait_for(patience), std::future_status::ready);
    EXPECT_EQ(answer.get(), 0);
    join_loops();
    EXPECT_EQ(loops_broken_, 1) << "the exception leaves the loop";
}

TEST_F(MessageWindowsTest, knows_no_window_that_never_was) {
    const auto nothing = reinterpret_cast<WindowHandle>(std::uintptr_t{12345});
    WindowMessage message{};
    EXPECT_EQ(windows_.SendMessageW(nothing, wm_question, 0, 0), 0);
    EXPECT_FALSE(windows_.PostMessageW(nothing, wm_question, 0, 0));
    EXPECT_EQ(windows_.GetLastError(), invalid_window_handle);
    EXPECT_FALSE(windows_.GetMessageW(&message, nothing));
    EXPECT_EQ(windows_.DefWindowProcW(nothing, WM_CLOSE, 0, 0), 0);
    EXPECT_EQ(handled_messages(), std::vector<std::uint32_t>());
}

TEST_F(MessageWindowsTest, destroys_a_window_that_leaves_its_close_message_alone) {
    const WindowHandle window = start_loop();
    EXPECT_EQ(windows_.SendMessageW(window, WM_CLOSE, 0, 0), 0);
    EXPECT_EQ(handled_messages(), (std::vector{WM_CREATE, WM_CLOSE, WM_DESTROY}));
    EXPECT_EQ(windows_.SendMessageW(window, wm_question, 0, 0), 0);
    EXPECT_EQ(handled().size(), 3U);
}

TEST_F(MessageWindowsTest, leaves_every_other_message_without_effect) {
    on_thread([this] {
        const WindowHandle window = create();
        for (const std::uint32_t message : {WM_CREATE, WM_DESTROY, WM_DEVICECHANGE, wm_news}) {
            EXPECT_EQ(windows_.DefWindowProcW(window, message, 1, 1), 0);
        }
        EXPECT_TRUE(windows_.PostMessageW(window, wm_news, 0, 0)) << "the window is still there";
    });
}

TEST_F(MessageWindowsTest, keeps_the_last_error_of_each_thread) {
    ASSERT_FALSE(register_class());
    on_thread([this] {
        EXPECT_FALSE(windows_.PostMessageW(nullptr, wm_news, 0, 0));
        EXPECT_EQ(windows_.GetLastError(), invalid_window_handle);
    });
    EXPECT_EQ(windows_.GetLastError(), error_class_already_exists);
}

DeviceInterfaceBroadcast filter_for(const Guid& guid) {
    DeviceInterfaceBroadcast filter{};
    filter.header.size = sizeof(filter);
    filter.header.device_type = DBT_DEVTYP_DEVICEINTERFACE;
    filter.class_guid = guid;
    return filter;
}

TEST_F(MessageWindowsTest, tells_a_registered_window_of_every_device_that_comes_or_goes) {
    std::vector<std::uint32_t> types;
    std::vector<bool> of_hid;
    on(WM_DEVICECHANGE, [&](WindowHandle, WParam, LParam lparam) {
        const auto& broadcast = *reinterpret_cast<const DeviceInterfaceBroadcast*>(lparam);
        types.push_back(broadcast.header.device_type);
        of_hid.push_back(broadcast.class_guid == GUID_DEVINTERFACE_HID &&
                         broadcast.header.size == sizeof(broadcast));
        return 0;
    });
    const WindowHandle window = start_loop();
    EXPECT_NE(windows_.RegisterDeviceNotificationW(window, filter_for(GUID_DEVINTERFACE_HID), 0), nullptr);
    windows_.notify_device_change(DBT_DEVICEARRIVAL);
    windows_.notify_device_change(DBT_DEVICEREMOVECOMPLETE);
    windows_.notify_device_change(DBT_DEVICEARRIVAL);
    leave(window);
    join_loops();
    ASSERT_EQ(handled().size(), 5U);
    const auto entries = handled();
    EXPECT_EQ((std::vector{entries[1].wparam, entries[2].wparam, entries[3].wparam}),
              (std::vector<WParam>{DBT_DEVICEARRIVAL, DBT_DEVICEREMOVECOMPLETE, DBT_DEVICEARRIVAL}));
    EXPECT_EQ(types, std::vector(3, DBT_DEVTYP_DEVICEINTERFACE));
    EXPECT_EQ(of_hid, std::vector(3, true));
}

TEST_F(MessageWindowsTest, tells_no_window_that_is_not_registered_any_more_or_never_was) {
    const WindowHandle stranger = start_loop();
    const WindowHandle window = start_loop();
    const auto notification =
        windows_.RegisterDeviceNotificationW(window, filter_for(GUID_DEVINTERFACE_HID), 0);
    windows_.UnregisterDeviceNotification(notification);
    windows_.notify_device_change(DBT_DEVICEARRIVAL);
    // Whatever was posted to them would be handled before these.
    leave(stranger);
    leave(window);
    join_loops();
    EXPECT_EQ(handled_messages(), (std::vector{WM_CREATE, WM_CREATE, wm_leave, wm_leave}));
}

TEST_F(MessageWindowsTest, passes_over_a_registered_window_that_is_gone) {
    on_thread([this] {
        EXPECT_NE(windows_.RegisterDeviceNotificationW(create(), filter_for(GUID_DEVINTERFACE_HID), 0),
                  nullptr);
    });
    windows_.notify_device_change(DBT_DEVICEARRIVAL);
    EXPECT_EQ(handled_messages(), std::vector{WM_CREATE});
}

TEST_F(MessageWindowsTest, knows_notifications_of_hid_interfaces_only) {
    EXPECT_EQ(windows_.RegisterDeviceNotificationW(nullptr, filter_for({}), 0), nullptr);
    EXPECT_EQ(windows_.GetLastError(), error_not_supported);
}

}  // namespace
