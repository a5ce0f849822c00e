// Which driver a headset gets.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "drivers/call_control_generic.h"

namespace headset_plugin {

using Driver = std::shared_ptr<call_control_generic>;
using DriverFactory = std::function<Driver(std::uint32_t vendor_id, std::uint32_t product_id)>;

/// A new driver for a headset; empty for a vendor that none is known for. Every device asks here. Thread:
/// any.
Driver create_driver(std::uint32_t vendor_id, std::uint32_t product_id);

/// A new driver of a Plantronics headset's fixed reports, chosen by the product's family. create_driver does
/// not ask here: these headsets have the standard driver. Thread: any.
Driver create_plantronics_driver(std::uint32_t product_id);

/// Puts another factory in the place of the built-in one, for headsets opened from now on; an empty one
/// brings that back. A test gives a headset a driver of its own this way.
void set_driver_factory(DriverFactory factory);

}  // namespace headset_plugin
