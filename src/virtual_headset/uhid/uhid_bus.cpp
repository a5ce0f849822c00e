// The bus of headsets that the whole system sees.

#include "platform/common/steady_clock.h"
#include "virtual_headset/uhid/uhid_transport.h"

namespace platform::virtual_platform {

namespace {

struct UhidBus {
    common::SteadyClock clock;
    UhidTransport transport{bus};
    // Whoever wants to know of arrivals asks the kernel.
    VirtualBus bus{[](bool) {}, [this] { return clock.make_sleeper(); }, &transport};
};

}  // namespace

VirtualBus& headset_bus() {
    static auto* const uhid = new UhidBus;  // outlives every thread
    return uhid->bus;
}

}  // namespace platform::virtual_platform
