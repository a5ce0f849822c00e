// The plug-in's exported HID functions mean what hidapi's mean: one client says the same with either, in
// every way in which the plug-in can come into hidapi's place.

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <thread>

#include "plugin/exports/later_hidapi.h"
#include "tests/kernel/kernel_headsets.h"
#include "tests/kernel/plugin_on_kernel.h"
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

// ---- what hidapi's installed header need not have

class HidapiLater : public KernelHeadsets {
  protected:
    template <typename Function>
    Function* find(const char* name) const {
        return library_.find<Function>(name);
    }

    hid_device* open(int headset) const {
        hidapi_.wait_for_list(wide_serial(headset));
        hid_device* const device =
            find<decltype(hid_open)>("hid_open")(0x0B0E, 0, wide_serial(headset).c_str());
        EXPECT_NE(device, nullptr) << orvex_virtual_serial(headset);
        return device;
    }

    SystemHidapi hidapi_;
    ProductLibrary library_;
};

TEST_F(HidapiLater, hands_out_the_report_descriptor_of_the_node) {
    hid_device* const device = open(plug_device(plain_descriptor()));
    Report descriptor(plain_descriptor().size() + 1);
    const int length = find<decltype(hid_get_report_descriptor)>("hid_get_report_descriptor")(
        device, descriptor.data(), descriptor.size());
    descriptor.resize(static_cast<std::size_t>(std::max(length, 0)));
    EXPECT_EQ(descriptor, plain_descriptor());
    find<decltype(hid_close)>("hid_close")(device);
}

TEST_F(HidapiLater, says_which_hidapi_has_a_function_that_the_loaded_one_lacks) {
    const int headset = plug_device(plain_descriptor());
    hid_device* const device = open(headset);
    const Report report{0x00, 0x01};
    const int sent = find<decltype(hid_send_output_report)>("hid_send_output_report")(device, report.data(),
                                                                                      report.size());
    if (hidapi_.find<void()>("hid_send_output_report") == nullptr) {
        EXPECT_EQ(sent, -1);
        const std::string version = hidapi_.find<decltype(hid_version_str)>("hid_version_str")();
        EXPECT_EQ(std::wstring(find<decltype(hid_error)>("hid_error")(device)),
                  L"HidD_SetOutputReport: hidapi " + std::wstring(version.begin(), version.end()) +
                      L" has no hid_send_output_report; 0.15.0 or later is needed");
    }
    find<decltype(hid_close)>("hid_close")(device);
}

INSTANTIATE_TEST_SUITE_P(Clients, HidapiClient, testing::ValuesIn(with_plugin),
                         [](const auto& row) { return row.param.name; });

}  // namespace
