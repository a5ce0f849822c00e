// The road from the plug-in's threads to the main loop.
#pragma once

#include <deque>
#include <mutex>

#include "platform/common/file_descriptor.h"
#include "tools/softphone/event.h"

namespace softphone {

/// Any thread posts, the main loop takes. Posting never waits for the main loop.
class EventQueue {
  public:
    EventQueue();

    /// Appends an event and makes descriptor() readable.
    void post(Event event);

    /// Everything posted so far, in order.
    std::deque<Event> take_all();

    /// For poll(): readable while events wait.
    int descriptor() const { return wakeup_.get(); }

  private:
    platform::common::FileDescriptor
        wakeup_;        ///< an eventfd: a poll() can wait for it together with the terminal and the signals
    std::mutex mutex_;  ///< guards events_
    std::deque<Event> events_;
};

}  // namespace softphone
