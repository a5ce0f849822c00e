// The capabilities of a descriptor for people.
#pragma once

#include <string>

#include "tools/headset/collections.h"

namespace headset {

/// A paragraph per collection: what it is, how long its reports are, and a line per capability.
std::string caps_table(const Collections& collections);

}  // namespace headset
