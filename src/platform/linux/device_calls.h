// Calls into a device that may not come back for seconds.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/hid_backend.h"

namespace platform::linux_platform {

/// Runs calls one at a time, in order, on a thread of their own, while their callers wait for as long as they
/// want to: the kernel gives a device five seconds to take a report, and nothing can call the writer back
/// meanwhile.
///
/// The thread starts with the first call and sleeps between calls.
///
/// Thread: any, and several at once.
class DeviceCalls {
  public:
    using Call = std::function<IoResult()>;

    DeviceCalls();
    /// Does not wait for a call that is not back. No `run` is in progress.
    ~DeviceCalls();
    /// Runs `last` when all calls are back, without waiting for it; the object takes no more calls.
    void end_with(std::function<void()> last);
    DeviceCalls(const DeviceCalls&) = delete;
    DeviceCalls& operator=(const DeviceCalls&) = delete;

    /// Runs `call` and hands out its result. `timed_out` when it was not back in time: one that was not begun
    /// by then never is, the result of one that was is lost. `call` may outlive the caller, so it owns what
    /// it uses.
    IoResult run(Call call, std::chrono::milliseconds timeout);

    /// Releases every `run` that waits now, with `cancelled`; their calls fare as with a timeout.
    void cancel();

  private:
    struct Pending;
    class State;

    const std::shared_ptr<State> state_;
};

}  // namespace platform::linux_platform
