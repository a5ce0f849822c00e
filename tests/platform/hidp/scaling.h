// What tests of scaled values have in common.
#pragma once

#include <cstdint>
#include <limits>

#include "tests/platform/hidp/headset.h"

namespace hidp_test {

struct Range {
    std::int64_t min;
    std::int64_t max;
};

inline constexpr platform::LONG lowest = std::numeric_limits<platform::LONG>::min();
inline constexpr platform::LONG highest = std::numeric_limits<platform::LONG>::max();

inline constexpr auto with_null = data_variable | null_state;

}  // namespace hidp_test
