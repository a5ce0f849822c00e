// Counts what operator new hands out and lets it fail on order. ThreadSanitizer has an operator new of its
// own that cannot be replaced beside it, so tests of this are left out there.
#pragma once

#include <cstddef>

namespace test_support {

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

/// Lets the allocation of this thread that comes after `count` others fail, for a scope. One at a time.
class FailingAllocation {
  public:
    explicit FailingAllocation(int count);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    bool struck() const;
};

}  // namespace test_support
