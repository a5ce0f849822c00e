// Waiting for input reports without polling.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <span>

#include "platform/common/file_descriptor.h"
#include "platform/hid_backend.h"
#include "platform/mutex.h"

namespace platform::linux_platform {

/// Reads from a node that gives one report per read, as hidraw does. A reader sleeps in poll(2) until a
/// report, a failure or a release comes.
///
/// Thread: any, and several at once.
class ReportReader {
  public:
    /// Which reports are handed out; the others are dropped.
    using Filter = std::function<bool(std::span<const std::uint8_t> report)>;

    /// Throws std::system_error where the system has no descriptor left.
    /// \param node  opened with O_NONBLOCK; stays the caller's
    ReportReader(int node, Filter wanted);

    /// As HidInterface::read, but byte 0 is the report's id only where the device numbers its reports.
    IoResult read(std::span<std::uint8_t> report, std::chrono::milliseconds timeout);

    /// Releases every read that waits now, with `cancelled`.
    void cancel();
    /// The same, and refuses every later read.
    void end();

    /// False once the node's device is gone.
    bool is_connected() const;

  private:
    /// A read in progress, from its start to its end.
    class Visit;

    bool is_released() EXCLUDES(mutex_);
    IoResult take(std::span<std::uint8_t> report) const;
    void wait(std::chrono::milliseconds timeout) const;

    const int node_;
    const common::FileDescriptor release_;  ///< an eventfd, readable while reads are to end
    const Filter wanted_;

    Mutex mutex_;
    Condition left_;  ///< the last read that was released has ended
    unsigned reads_ GUARDED_BY(mutex_) = 0;
    unsigned released_ GUARDED_BY(mutex_) =
        0;  ///< of these, those that a cancel found and that have not ended
    bool ended_ GUARDED_BY(mutex_) = false;
};

}  // namespace platform::linux_platform
