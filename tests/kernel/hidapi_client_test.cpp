// The plug-in's exported HID functions mean what hidapi's mean: one client says the same with either, in
// every way in which the plug-in can come into hidapi's place.

#include <atomic>
#include <cstdlib>
#include <thread>

#include "tests/kernel/kernel_headsets.h"
#include "tests/kernel/system_hidapi.h"
#include "tests/support/run_program.h"

namespace {

using namespace test_support;

struct ClientRun {
    std::string said;
    std::vector<Report> written;
};

/// How a client is built and started.
struct ClientRow {
    const char* name;
    const char* program;
    const char* preloaded = "";
};

const ClientRow with_hidapi{"hidapi", ORVEX_HIDAPI_CLIENT};
const ClientRow with_plugin[] = {
    {"linked_with_the_plugin", ORVEX_PLUGIN_CLIENT},
    {"linked_with_the_plugin_before_hidapi", ORVEX_PLUGIN_FIRST_CLIENT},
    {"linked_with_hidapi_and_the_plugin_preloaded", ORVEX_HIDAPI_CLIENT, ORVEX_PRODUCT_LIBRARY},
};

class HidapiClient : public KernelHeadsets, public testing::WithParamInterface<ClientRow> {
  protected:
    /// Runs the client while the headset's mute key is pressed over and over.
    ClientRun run(const ClientRow& client, int headset) const {
        const auto before = outputs(headset).size();
        setenv("LD_PRELOAD", client.preloaded, 1);  // before there is another thread
        std::atomic<bool> over{false};
        std::thread user([&] {
            while (!over) {
                orvex_virtual_press(headset, telephony_page, phone_mute);
                std::this_thread::yield();
            }
        });
        const ProgramResult result = run_program(client.program, {orvex_virtual_serial(headset)});
        over = true;
        user.join();
        unsetenv("LD_PRELOAD");
        EXPECT_EQ(result.status, 0) << result.errors;
        const auto all = outputs(headset);
        return {result.output, {all.begin() + static_cast<std::ptrdiff_t>(before), all.end()}};
    }

    void expect_same(int headset) {
        hidapi_.wait_for_list(wide_serial(headset));
        const ClientRun wanted = run(with_hidapi, headset);
        const ClientRun found = run(GetParam(), headset);
        for (const char* const line : {"hid_read: 2: 08 01", "by serial number: opened",
                                       "device info: with telephony", "get input report: 2: 08"}) {
            EXPECT_NE(wanted.said.find(line), std::string::npos) << line << "\n" << wanted.said;
        }
        EXPECT_EQ(found.said, wanted.said);
        EXPECT_EQ(wanted.written, std::vector<Report>(3, Report{0x09, 0x01}));
        EXPECT_EQ(found.written, wanted.written);
    }

    SystemHidapi hidapi_;
};

TEST_P(HidapiClient, says_what_it_says_with_hidapi) {
    expect_same(plug_headset("poly-blackwire-3220"));
}

TEST_P(HidapiClient, says_the_same_of_a_serial_number_with_odd_characters) {
    expect_same(plug_headset("poly-blackwire-3220", "X 1/2:3"));
}

INSTANTIATE_TEST_SUITE_P(Clients, HidapiClient, testing::ValuesIn(with_plugin),
                         [](const auto& row) { return row.param.name; });

}  // namespace
