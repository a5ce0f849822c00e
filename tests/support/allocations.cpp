#include "tests/support/allocations.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

struct Count {
    bool is_running = false;
    std::size_t allocations = 0;
    std::size_t bytes = 0;
    std::size_t peak_bytes = 0;
};

thread_local Count t_count;
thread_local int t_allocations_left = -1;  ///< the one after these fails; negative: none does

/// Stands before every block and holds its size. As large as the strictest alignment, so that the block keeps
/// it.
constexpr std::size_t header_size = alignof(std::max_align_t);

bool fails_now() {
    return t_allocations_left >= 0 && t_allocations_left-- == 0;
}

void count_allocation(std::size_t size) {
    if (!t_count.is_running) {
        return;
    }
    ++t_count.allocations;
    t_count.bytes += size;
    t_count.peak_bytes = std::max(t_count.peak_bytes, t_count.bytes);
}

}  // namespace

void* operator new(std::size_t size) {
    void* const header = fails_now() ? nullptr : std::malloc(header_size + size);
    if (header == nullptr) {
        throw std::bad_alloc();
    }
    *static_cast<std::size_t*>(header) = size;
    count_allocation(size);
    return static_cast<char*>(header) + header_size;
}

[[gnu::noinline]] void operator delete(void* block) noexcept {
    if (block == nullptr) {
        return;
    }
    void* const header = static_cast<char*>(block) - header_size;
    if (t_count.is_running) {
        // A block from before the measurement may be larger than what was counted.
        t_count.bytes -= std::min(t_count.bytes, *static_cast<std::size_t*>(header));
    }
    std::free(header);
}

[[gnu::noinline]] void operator delete(void* block, std::size_t /*size*/) noexcept {
    operator delete(block);
}

namespace test_support {

AllocationMeter::AllocationMeter() {
    t_count = {};
    t_count.is_running = true;
}

AllocationMeter::~AllocationMeter() {
    t_count.is_running = false;
}

std::size_t AllocationMeter::allocations() const {
    return t_count.allocations;
}

std::size_t AllocationMeter::peak_bytes() const {
    return t_count.peak_bytes;
}

FailingAllocation::FailingAllocation(int count) {
    t_allocations_left = count;
}

FailingAllocation::~FailingAllocation() {
    t_allocations_left = -1;
}

bool FailingAllocation::struck() const {
    return t_allocations_left < 0;
}

}  // namespace test_support
