// The seam to time: the waits of the plug-in, so that a test can own them.
#pragma once

#include <chrono>
#include <memory>

namespace platform {

/// A wait that another thread can end early.
///
/// Thread: one waits, any may wake.
class Sleeper {
  public:
    virtual ~Sleeper() = default;

    /// Waits for `duration`. False when wake was called, before or during the wait.
    virtual bool sleep(std::chrono::milliseconds duration) = 0;

    /// Ends the wait in progress and every later one.
    virtual void wake() = 0;
};

class Clock {
  public:
    virtual ~Clock() = default;
    virtual std::unique_ptr<Sleeper> make_sleeper() = 0;
};

}  // namespace platform
