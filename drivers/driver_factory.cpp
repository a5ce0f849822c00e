#include "drivers/driver_factory.h"

#include <algorithm>
#include <array>

#include "drivers/stdhid_cc.h"

namespace headset_plugin {

namespace {

/// The vendors whose headsets the standard driver serves: Logitech, Plantronics, Jabra and, twice,
/// Sennheiser.
constexpr std::array<std::uint32_t, 5> standard_vendors = {0x046D, 0x047F, 0x0B0E, 0x1377, 0x1395};

platform::Guarded<DriverFactory>& replacement() {
    static auto* const factory = new platform::Guarded<DriverFactory>;  // outlives every thread
    return *factory;
}

}  // namespace

Driver create_driver(std::uint32_t vendor_id, std::uint32_t product_id) {
    if (const DriverFactory factory = replacement().get()) {
        return factory(vendor_id, product_id);
    }
    const bool known =
        std::find(standard_vendors.begin(), standard_vendors.end(), vendor_id) != standard_vendors.end();
    return known ? std::make_shared<stdhid_cc>(product_id) : nullptr;
}

void set_driver_factory(DriverFactory factory) {
    replacement().set(std::move(factory));
}

}  // namespace headset_plugin
