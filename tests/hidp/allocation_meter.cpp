#include "tests/hidp/allocation_meter.h"

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

thread_local Count g_count;

/// Stands before every block and holds its size. As large as the strictest alignment, so that the block keeps
/// it.
constexpr std::size_t header_size = alignof(std::max_align_t);

}  // namespace

void* operator new(std::size_t size) {
    void* const header = std::malloc(header_size + size);
    if (header == nullptr) {
        throw std::bad_alloc();
    }
    *static_cast<std::size_t*>(header) = size;
    if (g_count.is_running) {
        ++g_count.allocations;
        g_count.bytes += size;
        g_count.peak_bytes = std::max(g_count.peak_bytes, g_count.bytes);
    }
    return static_cast<char*>(header) + header_size;
}

void operator delete(void* block) noexcept {
    if (block == nullptr) {
        return;
    }
    void* const header = static_cast<char*>(block) - header_size;
    if (g_count.is_running) {
        // A block from before the measurement may be larger than what was counted.
        g_count.bytes -= std::min(g_count.bytes, *static_cast<std::size_t*>(header));
    }
    std::free(header);
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}

namespace hidp_test {

AllocationMeter::AllocationMeter() {
    g_count = {};
    g_count.is_running = true;
}

AllocationMeter::~AllocationMeter() {
    g_count.is_running = false;
}

std::size_t AllocationMeter::allocations() const {
    return g_count.allocations;
}

std::size_t AllocationMeter::peak_bytes() const {
    return g_count.peak_bytes;
}

}  // namespace hidp_test
