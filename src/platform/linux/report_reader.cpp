#include "platform/linux/report_reader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <unistd.h>

#include "platform/linux/event.h"
#include "platform/linux/system_error.h"

namespace platform::linux_platform {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

/// What may wait in front of a wanted report (kernel, include/linux/hidraw.h: HIDRAW_BUFFER_SIZE). A device
/// that sends more than that meanwhile does not keep a reader beyond its time.
constexpr int queue_length = 64;

/// What is left until a point in time, not less than nothing.
milliseconds until(steady_clock::time_point deadline) {
    return std::max(std::chrono::ceil<milliseconds>(deadline - steady_clock::now()), milliseconds{0});
}

}  // namespace

/// The event that releases reads stays readable until the last read that it is meant for has seen it. A read
/// that starts in between waits for that: the event is not for it.
class ReportReader::Visit {
  public:
    explicit Visit(ReportReader& reader) : reader_(reader) {
        MutexLock lock(reader_.mutex_);
        while (reader_.released_ != 0) {
            reader_.left_.wait(reader_.mutex_);
        }
        ++reader_.reads_;
    }
    ~Visit() {
        MutexLock lock(reader_.mutex_);
        --reader_.reads_;
        if (reader_.released_ == 0 || --reader_.released_ > 0) {
            return;
        }
        eventfd_t count = 0;
        if (!reader_.ended_) {
            eventfd_read(reader_.release_.get(), &count);
        }
        reader_.left_.notify_all();
    }
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

  private:
    ReportReader& reader_;
};

ReportReader::ReportReader(int node, Filter wanted)
    : node_(node), release_(make_event()), wanted_(std::move(wanted)) {}

IoResult ReportReader::read(std::span<std::uint8_t> report, milliseconds timeout) {
    const auto deadline = steady_clock::now() + timeout;
    int dropped = 0;
    const Visit visit(*this);
    while (!is_released()) {
        const IoResult taken = take(report);
        if (taken.status == IoResult::Status::failed) {
            return taken;
        }
        if (taken.status == IoResult::Status::done) {
            if (wanted_(report.first(taken.size))) {
                return taken;
            }
            if (++dropped < queue_length) {
                continue;
            }
        }
        const milliseconds left = timeout == no_timeout ? no_timeout : until(deadline);
        if (left == milliseconds{0}) {
            return {.status = IoResult::Status::timed_out};
        }
        wait(left);
    }
    return {.status = IoResult::Status::cancelled};
}

/// Takes a report that is there already; `timed_out` when there is none.
IoResult ReportReader::take(std::span<std::uint8_t> report) const {
    while (true) {
        const ssize_t size = ::read(node_, report.data(), report.size());
        if (size > 0) {
            return {.status = IoResult::Status::done, .size = static_cast<std::size_t>(size)};
        }
        if (size == 0) {
            return {.status = IoResult::Status::failed, .error = L"The device has ended its reports."};
        }
        if (errno == EAGAIN) {
            return {.status = IoResult::Status::timed_out};
        }
        if (errno != EINTR) {
            return {.status = IoResult::Status::failed, .error = error_text(errno)};
        }
    }
}

void ReportReader::wait(milliseconds timeout) const {
    std::array<pollfd, 2> polled{pollfd{node_, POLLIN, 0}, pollfd{release_.get(), POLLIN, 0}};
    const auto limit = static_cast<int>(std::min<milliseconds::rep>(timeout.count(), INT_MAX));
    poll(polled.data(), polled.size(), limit);
}

bool ReportReader::is_released() {
    MutexLock lock(mutex_);
    return ended_ || released_ != 0;
}

void ReportReader::cancel() {
    MutexLock lock(mutex_);
    released_ = reads_;
    if (reads_ != 0) {
        eventfd_write(release_.get(), 1);
    }
}

void ReportReader::end() {
    MutexLock lock(mutex_);
    ended_ = true;
    eventfd_write(release_.get(), 1);
}

bool ReportReader::is_connected() const {
    pollfd polled{node_, POLLIN, 0};
    return poll(&polled, 1, 0) >= 0 && (polled.revents & (POLLERR | POLLHUP | POLLNVAL)) == 0;
}

}  // namespace platform::linux_platform
