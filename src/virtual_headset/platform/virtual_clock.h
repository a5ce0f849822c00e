// The virtual platform's time: the real one, or one that a test moves by hand.
#pragma once

#include <chrono>
#include <memory>

#include "platform/clock.h"
#include "platform/mutex.h"

namespace platform::virtual_platform {

/// Thread: any.
class VirtualClock final : public Clock {
  public:
    std::unique_ptr<Sleeper> make_sleeper() override;

    /// From now on, waits last until `advance` has moved the time on by as much. Waits in progress are not
    /// affected.
    void stop();
    /// Ends every wait on the stopped clock and goes with real time again.
    void go();
    /// Moves the stopped clock on.
    void advance(std::chrono::milliseconds duration);
    /// Waits, in real time, for at least `count` waits on the stopped clock. False when `limit` is over.
    bool wait_for_sleepers(int count, std::chrono::milliseconds limit);

  private:
    friend class VirtualSleeper;

    Mutex mutex_;
    Condition changed_;
    bool stopped_ GUARDED_BY(mutex_) = false;
    unsigned starts_ GUARDED_BY(mutex_) = 0;  ///< goes so far, which ended the waits of their time
    std::chrono::milliseconds now_ GUARDED_BY(mutex_){0};  ///< of the stopped clock
    int sleepers_ GUARDED_BY(mutex_) = 0;
};

}  // namespace platform::virtual_platform
