// Hosts that have a hidapi of their own, on the headset that the plug-in works with.

#include <algorithm>

#include "tests/kernel/kernel_headsets.h"
#include "tests/kernel/system_hidapi.h"
#include "tests/support/run_program.h"

namespace {

using namespace test_support;

struct HostRow {
    const char* name;
    const char* program;
    std::vector<std::string> options;
};

class HidapiHost : public KernelHeadsets, public testing::WithParamInterface<HostRow> {};

class HidapiHostWithOwnMalloc : public KernelHeadsets {};

TEST_P(HidapiHost, keeps_its_hidapi_and_leaves_the_plugin_its_own) {
    const int headset = plug_headset("poly-blackwire-3220");
    const SystemHidapi hidapi;
    hidapi.wait_for_list(wide_serial(headset));
    std::vector<std::string> arguments{orvex_virtual_serial(headset)};
    arguments.insert(arguments.end(), GetParam().options.begin(), GetParam().options.end());
    const ProgramResult result = run_program(GetParam().program, arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(orvex_virtual_wait_outputs(headset, 4, patience_ms), 1);
    const auto written = outputs(headset);
    EXPECT_EQ(std::count(written.begin(), written.end(), Report({0x09, 0x01})), 3) << "from the host";
    EXPECT_EQ(std::count(written.begin(), written.end(), Report({0x16, 0x02, 0x00})), 1)
        << "from the plug-in";
}

TEST_F(HidapiHostWithOwnMalloc, lists_a_headset) {
    const int headset = plug_headset();
    const SystemHidapi hidapi;
    hidapi.wait_for_list(wide_serial(headset));
    EXPECT_EQ(run_program(ORVEX_OWN_MALLOC_HOST, {ORVEX_PRODUCT_LIBRARY}).status, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Hosts, HidapiHost,
    testing::Values(HostRow{"linked_with_hidapi", ORVEX_LINKED_HOST, {}},
                    HostRow{
                        "linked_with_hidapi_and_the_plugin_loaded_globally", ORVEX_LINKED_HOST, {"global"}},
                    HostRow{"that_loads_hidapi", ORVEX_LOADING_HOST, {}},
                    HostRow{"that_loads_hidapi_after_the_plugin_globally", ORVEX_LOADING_HOST, {"global"}}),
    [](const auto& row) { return row.param.name; });

}  // namespace
