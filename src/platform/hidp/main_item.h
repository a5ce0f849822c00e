// The capabilities of one Input, Output or Feature item.
#pragma once

#include "platform/hidp/global_items.h"
#include "platform/hidp/local_items.h"
#include "platform/hidp/preparsed_data.h"

namespace platform::hidp {

/// Adds the capabilities of one main item to `direction`, in the order and with the data indices of the
/// Windows parser. `common` holds what all of them share, with the item's first bit and its whole count of
/// fields. Throws Malformed where the direction exceeds a limit.
void add_capabilities(Direction& direction, const Capability& common, const GlobalState& global,
                      const LocalItems& local);

}  // namespace platform::hidp
