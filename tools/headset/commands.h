// What the commands of the program do.
#pragma once

#include <istream>
#include <ostream>

#include "tools/headset/options.h"

namespace headset {

/// Carries out a command. Throws UsageError and Refused.
void run(const Options& options, std::istream& input, std::ostream& output);

}  // namespace headset
