#include "tests/support/allocations.h"

#include <gtest/gtest.h>
#include <string>

#include "base/plugin_log.h"
#include "tests/support/layer_log.h"

namespace {

using test_support::install_layer_logger;

/// The number of allocations that an action makes on this thread.
template <typename Action>
std::size_t allocations(const Action& action) {
    const test_support::AllocationMeter meter;
    action();
    return meter.allocations();
}

TEST(PluginLogAllocations, are_none_without_a_logger) {
    install_layer_logger();  // and lets go of it
    const std::string text(500, 'x');
    EXPECT_EQ(allocations([&] { plugin_log("%s: %s\n", "function", text.c_str()); }), 0U);
}

TEST(PluginLogAllocations, are_one_string_for_a_delivered_line) {
    const std::string line = std::string(500, 'x') + "\n";
    auto logger = install_layer_logger();
    const std::size_t by_the_logger = allocations([&] { logger->log(line, 2); });
    logger = install_layer_logger();
    EXPECT_EQ(allocations([&] { plugin_log("%s", line.c_str()); }), by_the_logger + 1);
}

}  // namespace
