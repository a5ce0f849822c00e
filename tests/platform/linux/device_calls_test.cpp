#include "platform/linux/device_calls.h"

#include <atomic>
#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <thread>

#include "tests/support/recording_logger.h"

namespace {

using namespace std::chrono_literals;
using platform::IoResult;
using platform::linux_platform::DeviceCalls;
using test_support::eventually;
using test_support::patience;
using Status = IoResult::Status;

IoResult done(std::size_t size) {
    return {.status = Status::done, .size = size};
}

/// A device that takes nothing until it is let.
class DeadDevice {
  public:
    /// Has `calls` wait for the device, and comes back when they do: a call that nobody waits for any more.
    void hold_up(DeviceCalls& calls, std::shared_ptr<int> owned = nullptr) {
        auto caller = std::async(std::launch::async, [&calls, held = call(std::move(owned))]() mutable {
            return calls.run(std::move(held), patience).status;
        });
        EXPECT_TRUE(eventually([&] { return was_asked(); }));
        calls.cancel();
        EXPECT_EQ(caller.get(), Status::cancelled);
    }

    DeviceCalls::Call call(std::shared_ptr<int> owned = nullptr) {
        return [begun = begun_, alive = alive_.get_future().share(), owned = std::move(owned)] {
            ++*begun;
            alive.wait();
            return done(1);
        };
    }
    void answer() { alive_.set_value(); }
    bool was_asked() const { return *begun_ != 0; }

  private:
    std::promise<void> alive_;
    /// Shared with the calls, which may outlive the device.
    std::shared_ptr<std::atomic<int>> begun_ = std::make_shared<std::atomic<int>>(0);
};

TEST(DeviceCalls, give_the_result_of_the_call) {
    DeviceCalls calls;
    EXPECT_EQ(calls.run([] { return done(3); }, patience).size, 3U);
    const IoResult failed = calls.run([] { return IoResult{.error = L"no"}; }, patience);
    EXPECT_EQ(failed.status, Status::failed);
    EXPECT_EQ(failed.error, L"no");
}

TEST(DeviceCalls, run_on_one_thread_that_is_not_the_callers) {
    DeviceCalls calls;
    std::thread::id first;
    std::thread::id second;
    calls.run([&] { return first = std::this_thread::get_id(), done(0); }, patience);
    calls.run([&] { return second = std::this_thread::get_id(), done(0); }, patience);
    EXPECT_TRUE(first != std::this_thread::get_id());
    EXPECT_TRUE(first == second);
}

TEST(DeviceCalls, give_up_on_a_device_that_does_not_answer) {
    DeadDevice device;
    DeviceCalls calls;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(calls.run(device.call(), 20ms).status, Status::timed_out);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
    device.answer();
}

TEST(DeviceCalls, behind_one_that_hangs_are_given_up_in_their_own_time_and_never_begun) {
    DeadDevice device;
    DeviceCalls calls;
    std::atomic<bool> begun{false};
    device.hold_up(calls);
    EXPECT_EQ(calls.run([&] { return begun = true, done(1); }, 20ms).status, Status::timed_out);
    device.answer();
    EXPECT_EQ(calls.run([] { return done(5); }, patience).size, 5U);
    EXPECT_FALSE(begun);
}

TEST(DeviceCalls, are_released_by_cancel_begun_or_not) {
    DeadDevice device;
    DeviceCalls calls;
    device.hold_up(calls);
    auto queued = std::async(std::launch::async, [&] { return calls.run([] { return done(1); }, patience); });
    do {
        calls.cancel();
    } while (queued.wait_for(1ms) != std::future_status::ready);
    EXPECT_EQ(queued.get().status, Status::cancelled);
    device.answer();
    EXPECT_EQ(calls.run([] { return done(5); }, patience).size, 5U);
}

TEST(DeviceCalls, keep_what_a_call_owns_until_it_is_back_although_nobody_waits) {
    DeadDevice device;
    auto owned = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = owned;
    {
        DeviceCalls calls;
        device.hold_up(calls, std::move(owned));
    }
    EXPECT_FALSE(watched.expired());
    device.answer();
    EXPECT_TRUE(eventually([&] { return watched.expired(); }));
}

TEST(DeviceCalls, end_with_a_last_one_that_waits_for_the_others_and_keeps_nobody_waiting) {
    DeadDevice device;
    std::atomic<bool> over{false};
    {
        DeviceCalls calls;
        device.hold_up(calls);
        calls.end_with([&] { over = true; });
    }
    EXPECT_FALSE(over);
    device.answer();
    EXPECT_TRUE(eventually([&] { return over.load(); }));
}

TEST(DeviceCalls, end_with_a_last_one_elsewhere_although_none_ran_before) {
    std::atomic<bool> over{false};
    std::atomic<bool> elsewhere{false};
    DeviceCalls calls;
    calls.end_with([&, caller = std::this_thread::get_id()] {
        elsewhere = caller != std::this_thread::get_id();
        over = true;
    });
    EXPECT_TRUE(eventually([&] { return over.load(); }));
    EXPECT_TRUE(elsewhere);
}

TEST(DeviceCalls, that_run_out_of_memory_fail) {
    DeviceCalls calls;
    EXPECT_EQ(calls.run([]() -> IoResult { throw std::bad_alloc(); }, patience).status, Status::failed);
    EXPECT_EQ(calls.run([] { return done(5); }, patience).size, 5U);
}

TEST(DeviceCalls, that_never_ran_need_no_thread) {
    const DeviceCalls calls;
}

}  // namespace
