// Makes the headsets of a bus devices of the kernel: they appear under /dev/hidraw*, in udev and in every
// program.
#pragma once

#include <map>
#include <memory>
#include <thread>

#include "platform/mutex.h"
#include "virtual_headset/transport.h"
#include "virtual_headset/uhid/uhid_device.h"

namespace platform::virtual_platform {

/// Lives as long as the process, since its thread does.
class UhidTransport final : public Transport {
  public:
    /// \param bus  is told what the kernel sends; not used before the first headset is attached
    explicit UhidTransport(VirtualBus& bus) : bus_(bus) {}

    Failure attach(int headset, const HeadsetDescription& description) override;
    void detach(int headset) override;
    void send(int headset, std::span<const std::uint8_t> report) override;
    bool can_show(Fault fault) const override;

  private:
    struct Attached {
        std::shared_ptr<UhidDevice> device;
        bool started = false;  ///< a driver of the kernel has taken it
    };

    Failure start_dispatching() REQUIRES(mutex_);
    Failure wait_for_start(int headset) REQUIRES(mutex_);
    std::shared_ptr<UhidDevice> find(int headset);

    // What runs on the dispatching thread.
    void dispatch(int poller);
    void handle_event(int headset);
    void handle_get_report(int headset, const UhidDevice& device, const uhid_event& request);
    void handle_start(int headset);

    VirtualBus& bus_;
    Mutex mutex_;  ///< taken after that of the bus, and never held while the bus is called
    Condition started_;
    std::map<int, Attached> attached_ GUARDED_BY(mutex_);
    int poller_ GUARDED_BY(mutex_) = -1;  ///< epoll, over every attached device
    std::thread dispatcher_ GUARDED_BY(mutex_);
};

}  // namespace platform::virtual_platform
