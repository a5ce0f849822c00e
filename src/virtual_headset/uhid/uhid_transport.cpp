#include "virtual_headset/uhid/uhid_transport.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <linux/uhid.h>
#include <sys/epoll.h>
#include <system_error>

#include "platform/thread.h"

namespace platform::virtual_platform {

namespace {

// The kernel looks for a driver on a thread of its own. Where it has to be loaded, on a busy machine, that
// takes seconds.
constexpr std::chrono::seconds start_limit{20};

Failure system_failure(const char* what) {
    return std::string(what) + ": " + std::strerror(errno);
}

}  // namespace

Failure UhidTransport::attach(int headset, const HeadsetDescription& description) {
    Failure failure;
    auto device = UhidDevice::create(headset, description, failure);
    if (!device) {
        return failure;
    }
    MutexLock lock(mutex_);
    failure = start_dispatching();
    if (!failure.empty()) {
        return failure;
    }
    epoll_event wanted{};
    wanted.events = EPOLLIN;
    wanted.data.fd = headset;
    if (epoll_ctl(poller_, EPOLL_CTL_ADD, device->descriptor(), &wanted) != 0) {
        return system_failure("the headset cannot be watched");
    }
    attached_[headset] = {std::move(device)};
    return wait_for_start(headset);
}

Failure UhidTransport::start_dispatching() {
    if (dispatcher_.joinable()) {
        return {};
    }
    if (poller_ < 0) {
        poller_ = epoll_create1(EPOLL_CLOEXEC);
    }
    if (poller_ < 0) {
        return system_failure("headsets cannot be watched");
    }
    try {
        dispatcher_ = start_thread("virtual-uhid", [this, poller = poller_] { dispatch(poller); });
        return {};
    } catch (const std::system_error& error) {
        return std::string("headsets cannot be watched: ") + error.what();
    }
}

Failure UhidTransport::wait_for_start(int headset) {
    const auto deadline = std::chrono::steady_clock::now() + start_limit;
    while (true) {
        const auto waiting = attached_.find(headset);
        if (waiting == attached_.end()) {
            return "the headset was unplugged before the kernel had a driver for it";
        }
        if (waiting->second.started) {
            return {};
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return "the kernel has no driver for the headset, or does not understand its descriptor";
        }
        started_.wait_until(mutex_, deadline);
    }
}

void UhidTransport::detach(int headset) {
    std::shared_ptr<UhidDevice> detached;
    {
        MutexLock lock(mutex_);
        const auto found = attached_.find(headset);
        if (found == attached_.end()) {
            return;
        }
        detached = std::move(found->second.device);
        attached_.erase(found);
        epoll_ctl(poller_, EPOLL_CTL_DEL, detached->descriptor(), nullptr);
        started_.notify_all();
    }
    // Not left to the destructor: the dispatching thread may keep the device a little longer.
    detached->destroy();
}

void UhidTransport::send(int headset, std::span<const std::uint8_t> report) {
    if (const auto device = find(headset)) {
        device->send_input(report);
    }
}

bool UhidTransport::can_show(Fault fault) const {
    // The kernel takes reports on its own, and opens a device that has keys as soon as it is there.
    return fault == Fault::none || fault == Fault::unplug_in_write;
}

std::shared_ptr<UhidDevice> UhidTransport::find(int headset) {
    MutexLock lock(mutex_);
    const auto found = attached_.find(headset);
    return found == attached_.end() ? nullptr : found->second.device;
}

void UhidTransport::dispatch(int poller) {
    while (true) {
        epoll_event ready{};
        if (epoll_wait(poller, &ready, 1, -1) == 1) {
            handle_event(ready.data.fd);
        }
    }
}

void UhidTransport::handle_event(int headset) {
    const auto device = find(headset);
    uhid_event event{};
    if (!device || !device->next_event(event)) {
        return;
    }
    switch (event.type) {
        case UHID_START:
            handle_start(headset);
            break;
        case UHID_OUTPUT:
            bus_.receive_output(headset, std::span(event.u.output.data, event.u.output.size));
            break;
        case UHID_GET_REPORT:
            handle_get_report(headset, *device, event);
            break;
        case UHID_SET_REPORT:
            device->refuse_request(event);
            break;
        default:
            break;
    }
}

/// Without an answer the one who asks waits for five seconds.
void UhidTransport::handle_get_report(int headset, const UhidDevice& device, const uhid_event& request) {
    std::vector<std::uint8_t> report;
    if (request.u.get_report.rtype == UHID_INPUT_REPORT) {
        report = bus_.input_report(headset, request.u.get_report.rnum);
    }
    if (report.empty()) {
        device.refuse_request(request);
    } else {
        device.answer_request(request, report);
    }
}

void UhidTransport::handle_start(int headset) {
    MutexLock lock(mutex_);
    const auto found = attached_.find(headset);
    if (found != attached_.end()) {
        found->second.started = true;
        started_.notify_all();
    }
}

}  // namespace platform::virtual_platform
