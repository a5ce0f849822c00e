#include "drivers/driver_factory.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "drivers/plt_cc.h"
#include "drivers/stdhid_cc.h"

namespace headset_plugin {

namespace {

/// The vendors whose headsets the standard driver serves: Logitech, Plantronics, Jabra and, twice,
/// Sennheiser.
constexpr std::array<std::uint32_t, 5> standard_vendors = {0x046D, 0x047F, 0x0B0E, 0x1377, 0x1395};

template <typename T>
Driver create(std::uint32_t product_id) {
    return std::make_shared<T>(product_id);
}

struct PlantronicsRow {
    std::uint32_t family;
    Driver (*create)(std::uint32_t product_id);
};

constexpr PlantronicsRow plantronics_rows[] = {
    {0xC000, create<plt_blackwire_cc>},
    {0x4300, create<plt_blackwire_7225_cc>},
};

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

Driver create_plantronics_driver(std::uint32_t product_id) {
    const auto* const row =
        std::find_if(std::begin(plantronics_rows), std::end(plantronics_rows),
                     [&](const PlantronicsRow& known) { return known.family == product_family(product_id); });
    return (row != std::end(plantronics_rows) ? row->create : create<plt_cc>)(product_id);
}

void set_driver_factory(DriverFactory factory) {
    replacement().set(std::move(factory));
}

}  // namespace headset_plugin
