// Hot-plug: hidraw nodes that come and go.
#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "platform/common/file_descriptor.h"
#include "platform/linux/udev.h"

namespace platform::linux_platform {

/// Listens to the kernel's device events on a thread of its own, which sleeps between them.
///
/// Where a udev daemon runs it is asked, not the kernel: its events come when its rules have run, and a node
/// that was looked at before that would seem to refuse its user.
class DeviceMonitor {
  public:
    /// Listens from the moment on that this returns. Throws LibraryError without libudev, std::system_error
    /// where the system refuses.
    /// \param changed  told of a node that arrived, or may have (true), or left (false); on the thread
    explicit DeviceMonitor(std::function<void(bool arrived)> changed);
    /// Waits until `changed` is not running.
    ~DeviceMonitor();
    DeviceMonitor(const DeviceMonitor&) = delete;
    DeviceMonitor& operator=(const DeviceMonitor&) = delete;

  private:
    void listen();
    void receive();

    const Udev udev_;
    const std::function<void(bool)> changed_;
    const std::unique_ptr<udev, decltype(Udev::udev_unref)> context_;
    const std::unique_ptr<udev_monitor, decltype(Udev::udev_monitor_unref)> monitor_;
    const common::FileDescriptor end_;  ///< an eventfd
    std::thread thread_;
};

}  // namespace platform::linux_platform
