// The plug-in's exported HID functions mean what hidapi's mean: one client, linked with either, says the
// same.

#include <atomic>
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

class HidapiClient : public KernelHeadsets {
  protected:
    /// Runs the client while the headset's mute key is pressed over and over.
    ClientRun run(const char* program, int headset) const {
        const auto before = outputs(headset).size();
        std::atomic<bool> over{false};
        std::thread user([&] {
            while (!over) {
                orvex_virtual_press(headset, telephony_page, phone_mute);
                std::this_thread::yield();
            }
        });
        const ProgramResult result = run_program(program, {orvex_virtual_serial(headset)});
        over = true;
        user.join();
        EXPECT_EQ(result.status, 0) << result.errors;
        const auto all = outputs(headset);
        return {result.output, {all.begin() + static_cast<std::ptrdiff_t>(before), all.end()}};
    }

    void expect_same(int headset) {
        hidapi_.wait_for_list(wide_serial(headset));
        const ClientRun with_hidapi = run(ORVEX_HIDAPI_CLIENT, headset);
        const ClientRun with_plugin = run(ORVEX_PLUGIN_CLIENT, headset);
        EXPECT_NE(with_hidapi.said.find("hid_read: 2: 08 01"), std::string::npos) << with_hidapi.said;
        EXPECT_NE(with_hidapi.said.find("by serial number: opened"), std::string::npos) << with_hidapi.said;
        EXPECT_EQ(with_plugin.said, with_hidapi.said);
        EXPECT_EQ(with_hidapi.written, std::vector<Report>(3, Report{0x09, 0x01}));
        EXPECT_EQ(with_plugin.written, with_hidapi.written);
    }

    SystemHidapi hidapi_;
};

TEST_F(HidapiClient, says_the_same_with_hidapi_and_with_the_plugin) {
    expect_same(plug_headset("poly-blackwire-3220"));
}

TEST_F(HidapiClient, says_the_same_of_a_serial_number_with_odd_characters) {
    expect_same(plug_headset("poly-blackwire-3220", "X 1/2:3"));
}

}  // namespace
