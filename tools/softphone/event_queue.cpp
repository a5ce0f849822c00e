#include "tools/softphone/event_queue.h"

#include <cerrno>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace softphone {

EventQueue::EventQueue() : wakeup_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (wakeup_.get() < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
}

void EventQueue::post(Event event) {
    {
        const std::lock_guard lock(mutex_);
        events_.push_back(std::move(event));
    }
    // A full counter is as readable as any other, so that a failed write loses nothing.
    [[maybe_unused]] const int ignored = eventfd_write(wakeup_.get(), 1);
}

std::deque<Event> EventQueue::take_all() {
    // The counter is reset before the events are taken: one that is posted in between wakes the loop once too
    // often, never once too little.
    eventfd_t count = 0;
    [[maybe_unused]] const int ignored = eventfd_read(wakeup_.get(), &count);
    const std::lock_guard lock(mutex_);
    return std::exchange(events_, {});
}

}  // namespace softphone
