#include "platform/linux/device_monitor.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <string_view>
#include <system_error>
#include <unistd.h>

#include "platform/linux/event.h"
#include "platform/thread.h"

namespace platform::linux_platform {

namespace {

/// The daemon's socket, by which libudev itself tells that one runs.
bool udev_daemon_runs() {
    return access("/run/udev/control", F_OK) == 0;
}

template <typename Object>
Object* required(Object* object, const char* what) {
    if (object == nullptr) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return object;
}

}  // namespace

DeviceMonitor::DeviceMonitor(std::function<void(bool)> changed)
    : udev_(load_udev()),
      changed_(std::move(changed)),
      context_(required(udev_.udev_new(), "udev_new"), udev_.udev_unref),
      monitor_(required(udev_.udev_monitor_new_from_netlink(context_.get(),
                                                            udev_daemon_runs() ? "udev" : "kernel"),
                        "udev_monitor_new_from_netlink"),
               udev_.udev_monitor_unref),
      end_(make_event()) {
    udev_.udev_monitor_filter_add_match_subsystem_devtype(monitor_.get(), "hidraw", nullptr);
    if (const int error = udev_.udev_monitor_enable_receiving(monitor_.get()); error < 0) {
        throw std::system_error(-error, std::generic_category(), "udev_monitor_enable_receiving");
    }
    thread_ = start_thread("orvex-udev", [this] { listen(); });
}

DeviceMonitor::~DeviceMonitor() {
    eventfd_write(end_.get(), 1);
    thread_.join();
}

void DeviceMonitor::listen() {
    std::array<pollfd, 2> polled{pollfd{udev_.udev_monitor_get_fd(monitor_.get()), POLLIN, 0},
                                 pollfd{end_.get(), POLLIN, 0}};
    while (true) {
        const int ready = poll(polled.data(), polled.size(), -1);
        if (polled[1].revents != 0) {
            return;
        }
        if (ready > 0) {
            try {
                receive();
            } catch (const std::exception&) {
                // No memory for the news: it is lost, the thread and the process are not.
            }
        }
    }
}

void DeviceMonitor::receive() {
    const std::unique_ptr<udev_device, decltype(udev_.udev_device_unref)> device(
        udev_.udev_monitor_receive_device(monitor_.get()), udev_.udev_device_unref);
    if (!device) {
        // Events were lost when the queue ran over: something may have come. Else it was none for this
        // filter.
        if (errno == ENOBUFS) {
            changed_(true);
        }
        return;
    }
    // A change may be of the node's permissions: what was refused before can be opened now.
    const char* const action = udev_.udev_device_get_action(device.get());
    changed_(action == nullptr || std::string_view(action) != "remove");
}

}  // namespace platform::linux_platform
