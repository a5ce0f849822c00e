// The clock of platforms without a need for another.
#pragma once

#include "platform/clock.h"

namespace platform::common {

class SteadyClock final : public Clock {
  public:
    std::unique_ptr<Sleeper> make_sleeper() override;
};

}  // namespace platform::common
