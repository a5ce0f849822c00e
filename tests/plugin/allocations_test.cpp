// Starting when memory runs out: the host is told, nothing is left running, and the next start works.

#include "tests/support/allocations.h"

#include <new>

#include "plugin/plugin_manager.h"
#include "tests/plugin/plugin_host.h"

namespace {

using namespace plugin_control;
using namespace test_support;

using AllocationFailure = PluginHost;

TEST_F(AllocationFailure, reaches_the_host_and_leaves_nothing_running) {
    int allocations = 0;
    for (bool created = false; !created; ++allocations) {
        ASSERT_LT(allocations, 100);
        try {
            const FailingAllocation failing(allocations);
            control_ = createPluginControl(logger_);
            created = !failing.struck();
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
