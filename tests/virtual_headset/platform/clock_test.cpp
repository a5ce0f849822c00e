#include <future>
#include <gtest/gtest.h>

#include "platform/common/steady_clock.h"
#include "tests/support/recording_logger.h"
#include "virtual_headset/platform/virtual_clock.h"

namespace {

using namespace std::chrono_literals;
using platform::Clock;
using platform::Sleeper;
using platform::virtual_platform::VirtualClock;
using test_support::patience;

/// A wait on a thread of its own.
class Wait {
  public:
    Wait(Clock& clock, std::chrono::milliseconds duration)
        : sleeper_(clock.make_sleeper()),
          whole_(std::async(std::launch::async, [this, duration] { return sleeper_->sleep(duration); })) {}
    ~Wait() { sleeper_->wake(); }
    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;

    void wake() { sleeper_->wake(); }

    /// Whether the wait lasted as long as it should; nothing while it lasts.
    std::optional<bool> whole(std::chrono::milliseconds limit = patience) {
        return whole_.wait_for(limit) == std::future_status::ready ? std::optional(whole_.get())
                                                                   : std::nullopt;
    }

    bool lasts() const { return whole_.wait_for(0ms) == std::future_status::timeout; }

  private:
    const std::unique_ptr<Sleeper> sleeper_;
    std::future<bool> whole_;
};

/// What both clocks have in common, as long as the virtual one goes.
template <typename ClockType>
class GoingClock : public testing::Test {
  protected:
    ClockType clock_;
};

using Clocks = testing::Types<platform::common::SteadyClock, VirtualClock>;
TYPED_TEST_SUITE(GoingClock, Clocks);

TYPED_TEST(GoingClock, waits_as_long_as_it_is_told) {
    const auto sleeper = this->clock_.make_sleeper();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(sleeper->sleep(20ms));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
    EXPECT_TRUE(sleeper->sleep(0ms));
}

TYPED_TEST(GoingClock, ends_a_wait_early_when_woken) {
    Wait wait(this->clock_, 1h);
    wait.wake();
    EXPECT_EQ(wait.whole(), false);
}

TYPED_TEST(GoingClock, ends_every_wait_at_once_that_begins_after_the_wake) {
    const auto sleeper = this->clock_.make_sleeper();
    sleeper->wake();
    EXPECT_FALSE(sleeper->sleep(1h));
    EXPECT_FALSE(sleeper->sleep(1h));
    EXPECT_FALSE(sleeper->sleep(0ms));
}

TYPED_TEST(GoingClock, wakes_one_sleeper_and_not_another) {
    const auto woken = this->clock_.make_sleeper();
    const auto other = this->clock_.make_sleeper();
    woken->wake();
    EXPECT_TRUE(other->sleep(1ms));
}

class StoppedClock : public testing::Test {
  protected:
    StoppedClock() { clock_.stop(); }

    VirtualClock clock_;
};

TEST_F(StoppedClock, waits_until_the_time_was_moved_on_by_as_much) {
    Wait wait(clock_, 100ms);
    ASSERT_TRUE(clock_.wait_for_sleepers(1, patience));
    clock_.advance(60ms);
    clock_.advance(39ms);
    EXPECT_EQ(wait.whole(20ms), std::nullopt);
    clock_.advance(1ms);
    EXPECT_EQ(wait.whole(), true);
}

TEST_F(StoppedClock, counts_a_wait_from_when_it_began) {
    clock_.advance(1h);
    Wait wait(clock_, 100ms);
    ASSERT_TRUE(clock_.wait_for_sleepers(1, patience));
    EXPECT_TRUE(wait.lasts());
    clock_.advance(100ms);
    EXPECT_EQ(wait.whole(), true);
}

TEST_F(StoppedClock, ends_the_shorter_of_two_waits_first) {
    Wait longer(clock_, 200ms);
    Wait shorter(clock_, 100ms);
    ASSERT_TRUE(clock_.wait_for_sleepers(2, patience));
    clock_.advance(100ms);
    EXPECT_EQ(shorter.whole(), true);
    EXPECT_TRUE(longer.lasts());
    clock_.advance(100ms);
    EXPECT_EQ(longer.whole(), true);
}

TEST_F(StoppedClock, does_not_wait_for_no_time) {
    EXPECT_TRUE(clock_.make_sleeper()->sleep(0ms));
}

TEST_F(StoppedClock, ends_a_wait_early_when_woken) {
    Wait wait(clock_, 100ms);
    ASSERT_TRUE(clock_.wait_for_sleepers(1, patience));
    wait.wake();
    EXPECT_EQ(wait.whole(), false);
}

TEST_F(StoppedClock, knows_how_many_wait) {
    EXPECT_TRUE(clock_.wait_for_sleepers(0, 0ms));
    EXPECT_FALSE(clock_.wait_for_sleepers(1, 5ms));
    Wait wait(clock_, 100ms);
    EXPECT_TRUE(clock_.wait_for_sleepers(1, patience));
    EXPECT_FALSE(clock_.wait_for_sleepers(2, 0ms));
    clock_.advance(100ms);
    EXPECT_EQ(wait.whole(), true);
    EXPECT_FALSE(clock_.wait_for_sleepers(1, 0ms));
}

TEST_F(StoppedClock, ends_every_wait_when_it_goes_again) {
    Wait one(clock_, 1h);
    Wait other(clock_, 2h);
    ASSERT_TRUE(clock_.wait_for_sleepers(2, patience));
    clock_.go();
    EXPECT_EQ(one.whole(), true);
    EXPECT_EQ(other.whole(), true);
}

TEST_F(StoppedClock, ends_every_wait_when_it_goes_even_if_it_is_stopped_right_after) {
    Wait wait(clock_, 1h);
    ASSERT_TRUE(clock_.wait_for_sleepers(1, patience));
    clock_.go();
    clock_.stop();
    EXPECT_EQ(wait.whole(), true);
}

TEST_F(StoppedClock, goes_on_with_a_wait_when_it_is_stopped_twice) {
    clock_.advance(50ms);
    Wait wait(clock_, 100ms);
    ASSERT_TRUE(clock_.wait_for_sleepers(1, patience));
    clock_.advance(50ms);
    clock_.stop();
    clock_.advance(50ms);
    EXPECT_EQ(wait.whole(), true);
}

TEST(VirtualClock, does_not_touch_a_wait_in_progress_when_it_is_stopped) {
    // Whether the wait was in progress shows afterwards: one that begins on the stopped clock is a sleeper.
    const auto deadline = std::chrono::steady_clock::now() + patience;
    std::optional<bool> whole;
    while (!whole && std::chrono::steady_clock::now() < deadline) {
        VirtualClock clock;
        Wait wait(clock, 50ms);
        clock.wait_for_sleepers(1, 5ms);
        clock.stop();
        while (!whole && !clock.wait_for_sleepers(1, 0ms) && std::chrono::steady_clock::now() < deadline) {
            whole = wait.whole(10ms);
        }
    }
    EXPECT_EQ(whole, true);
}

}  // namespace
