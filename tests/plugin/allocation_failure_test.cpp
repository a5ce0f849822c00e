// Starting when memory runs out: the host is told, nothing is left running, and the next start works.

#if defined(__has_feature)
#if __has_feature(thread_sanitizer) || __has_feature(address_sanitizer)
#define ALLOCATOR_IS_THE_SANITIZERS  // clang's sanitizers bring operators of their own, which cannot be
                                     // replaced
#endif
#endif

#ifndef ALLOCATOR_IS_THE_SANITIZERS

#include <cstdlib>
#include <new>

#include "plugin/plugin_manager.h"
#include "tests/plugin/plugin_host.h"

namespace {

using namespace plugin_control;
using namespace test_support;

using AllocationFailure = PluginHost;

thread_local int t_allocations_left = -1;  ///< the one after these fails; negative: none does

/// Lets the allocation of this thread that comes after `count` others fail, for a scope.
class FailingAllocation {
  public:
    explicit FailingAllocation(int count) { t_allocations_left = count; }
    ~FailingAllocation() { t_allocations_left = -1; }
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    static bool struck() { return t_allocations_left < 0; }
};

TEST_F(AllocationFailure, reaches_the_host_and_leaves_nothing_running) {
    int allocations = 0;
    for (bool created = false; !created; ++allocations) {
        ASSERT_LT(allocations, 100);
        try {
            const FailingAllocation failing(allocations);
            control_ = createPluginControl(logger_);
            created = !FailingAllocation::struck();
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(plugin_manager(), nullptr);
            EXPECT_TRUE(wait_for_plugin_threads_to_end()) << "after " << allocations << " allocations";
        }
    }
    EXPECT_GT(allocations, 3);
    EXPECT_EQ(plugin_manager(), control_);
}

TEST_F(AllocationFailure, gives_null_from_a_facade) {
    std::weak_ptr<IPluginLogger> logger = logger_;
    IPluginCallControlCallback* control = nullptr;
    {
        const FailingAllocation failing(0);
        control = createPluginControlFacade(&logger);
    }
    EXPECT_EQ(control, nullptr);
    EXPECT_EQ(plugin_manager(), nullptr);
    EXPECT_NE(createPluginControlFacade(&logger), nullptr);
}

}  // namespace

void* operator new(std::size_t size) {
    if (t_allocations_left == 0) {
        t_allocations_left = -1;
        throw std::bad_alloc();
    }
    if (t_allocations_left > 0) {
        --t_allocations_left;
    }
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

#endif
