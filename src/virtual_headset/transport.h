// What carries the reports of a bus's headsets out of the process, so that other programs see them as
// devices.
#pragma once

#include "virtual_headset/virtual_bus.h"

namespace platform::virtual_platform {

class Transport {
  public:
    virtual ~Transport() = default;

    /// Makes a plugged headset appear; empty when it did, else why not. Output reports for it go to
    /// VirtualBus::receive_output from then on. Called without a lock held; may block.
    virtual Failure attach(int headset, const HeadsetDescription& description) = 0;

    /// Makes it disappear. The bus's mutex is held: must not wait for anybody who calls the bus.
    virtual void detach(int headset) = 0;

    /// Delivers an input report, byte 0 its id (0 for none). The bus's mutex is held, so that reports arrive
    /// in the order in which they are sent.
    virtual void send(int headset, std::span<const std::uint8_t> report) = 0;

    /// Whether a headset can misbehave like this before those who see it through the transport.
    virtual bool can_show(Fault fault) const = 0;
};

}  // namespace platform::virtual_platform
