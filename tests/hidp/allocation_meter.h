// Counts what operator new hands out, so that tests can hold code to a limit.
#pragma once

#include <cstddef>

namespace hidp_test {

/// Measures from its construction on, on this thread. One at a time.
class AllocationMeter {
  public:
    AllocationMeter();
    ~AllocationMeter();
    AllocationMeter(const AllocationMeter&) = delete;
    AllocationMeter& operator=(const AllocationMeter&) = delete;

    std::size_t allocations() const;
    std::size_t peak_bytes() const;
};

}  // namespace hidp_test
