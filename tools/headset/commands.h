// What the commands of the program do.
#pragma once

#include <istream>
#include <ostream>

#include "tools/headset/options.h"
#include "tools/headset/system.h"

namespace headset {

/// Carries out a command; the exit status. Throws UsageError, Refused, and others for what the system
/// refuses.
int run(const Options& options, System& system, std::istream& input, std::ostream& output);

}  // namespace headset
