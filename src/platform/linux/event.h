// What wakes a thread that sleeps in poll(2).
#pragma once

#include <cerrno>
#include <sys/eventfd.h>
#include <system_error>

#include "platform/common/file_descriptor.h"

namespace platform::linux_platform {

/// A new eventfd(2), not readable yet. Throws std::system_error where the system has no descriptor left.
inline common::FileDescriptor make_event() {
    common::FileDescriptor event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (event.get() < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    return event;
}

}  // namespace platform::linux_platform
