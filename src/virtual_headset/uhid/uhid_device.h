// One HID device of the kernel that this process drives through /dev/uhid.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "virtual_headset/virtual_bus.h"

struct uhid_event;

namespace platform::virtual_platform {

/// Thread: any, and several at once.
class UhidDevice {
  public:
    /// Asks the kernel for a device; without one, `failure` says why. It is not there yet: the kernel reports
    /// the start among its events.
    static std::shared_ptr<UhidDevice> create(int headset, const HeadsetDescription& description,
                                              Failure& failure);
    /// Takes ownership of an opened /dev/uhid.
    explicit UhidDevice(int descriptor) : descriptor_(descriptor) {}
    ~UhidDevice();
    UhidDevice(const UhidDevice&) = delete;
    UhidDevice& operator=(const UhidDevice&) = delete;

    /// Readable when the kernel has an event.
    int descriptor() const { return descriptor_; }

    /// The next event of the kernel. False when there is none.
    bool next_event(uhid_event& event) const;

    /// Sends an input report, byte 0 its id (0 for none).
    void send_input(std::span<const std::uint8_t> report) const;
    /// Answers a request for an input report by the control channel; byte 0 is the report's id (0 for none).
    void answer_request(const uhid_event& request, std::span<const std::uint8_t> report) const;
    /// Answers a request by the control channel: the headset has no such report.
    void refuse_request(const uhid_event& request) const;
    /// Takes the device away: who has it open finds that out.
    void destroy() const;

  private:
    bool write_event(const uhid_event& event) const;

    const int descriptor_;
};

}  // namespace platform::virtual_platform
