// The platform of Linux: hidapi, hidraw and udev, each loaded by name.

#include <map>
#include <system_error>

#include "platform/common/message_window.h"
#include "platform/common/steady_clock.h"
#include "platform/hidp/hidp.h"
#include "platform/linux/device_monitor.h"
#include "platform/linux/hid_backend.h"
#include "platform/platform.h"

namespace platform {

namespace linux_platform {

namespace {

/// Windows that hear of devices for as long as one of them has registered for that.
class LinuxMessageWindows final : public common::QueuedMessageWindows {
  public:
    NotificationHandle RegisterDeviceNotificationW(WindowHandle window,
                                                   const DeviceInterfaceBroadcast& filter,
                                                   std::uint32_t flags) override {
        // Before the window can be told of anything: an event between the two would be lost.
        const auto monitor = share_monitor();
        const auto notification =
            monitor ? QueuedMessageWindows::RegisterDeviceNotificationW(window, filter, flags) : nullptr;
        if (notification != nullptr) {
            MutexLock lock(mutex_);
            monitors_.emplace(notification, monitor);
        }
        return notification;
    }

    void UnregisterDeviceNotification(NotificationHandle notification) override {
        QueuedMessageWindows::UnregisterDeviceNotification(notification);
        std::shared_ptr<DeviceMonitor> last;  // ends, and waits for its thread, without the lock
        MutexLock lock(mutex_);
        if (auto node = monitors_.extract(notification)) {
            last = std::move(node.mapped());
        }
    }

  private:
    std::shared_ptr<DeviceMonitor> share_monitor() {
        MutexLock lock(mutex_);
        if (auto running = monitor_.lock()) {
            return running;
        }
        try {
            auto started = std::make_shared<DeviceMonitor>([this](bool arrived) {
                notify_device_change(arrived ? DBT_DEVICEARRIVAL : DBT_DEVICEREMOVECOMPLETE);
            });
            monitor_ = started;
            return started;
        } catch (const std::runtime_error&) {
            // Without udev there is no hot-plug; what is plugged in already works.
            return nullptr;
        }
    }

    Mutex mutex_;
    std::weak_ptr<DeviceMonitor> monitor_ GUARDED_BY(mutex_);
    std::map<NotificationHandle, std::shared_ptr<DeviceMonitor>> monitors_ GUARDED_BY(mutex_);
};

class LinuxPlatform final : public Platform {
  public:
    HidBackend& hid() override { return hid_; }
    const HidParser& parser() override { return hidp::parser(); }
    MessageWindows& windows() override { return windows_; }
    Clock& clock() override { return clock_; }

  private:
    LinuxHidBackend hid_;
    LinuxMessageWindows windows_;
    common::SteadyClock clock_;
};

}  // namespace

}  // namespace linux_platform

Platform& current() {
    static auto* const platform = new linux_platform::LinuxPlatform;  // outlives every thread
    return *platform;
}

}  // namespace platform
