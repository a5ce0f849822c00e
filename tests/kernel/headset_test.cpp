// Virtual headsets as the kernel shows them to every program.

#include <chrono>
#include <future>

#include "tests/kernel/kernel_headsets.h"
#include "tests/kernel/system_hidapi.h"

namespace {

using namespace test_support;

class KernelHeadset : public KernelHeadsets {
  protected:
    std::string path_of(int headset) const {
        const auto listed = hidapi_.wait_for_list(wide_serial(headset));
        return listed.empty() ? std::string() : listed.front().path;
    }

    SystemHidapi hidapi_;
};

TEST_F(KernelHeadset, appears_with_its_ids_serial_product_and_collections) {
    const auto listed = hidapi_.wait_for_list(wide_serial(plug_headset("poly-blackwire-3220")));
    ASSERT_EQ(listed.size(), 3U);
    const unsigned short pages[] = {0x0C, 0x0B, 0xFFA0};
    for (std::size_t i = 0; i < listed.size(); ++i) {
        EXPECT_EQ(listed[i].usage_page, pages[i]);
        EXPECT_EQ(listed[i].path, listed[0].path) << "one device has them all";
        EXPECT_EQ(listed[i].vendor_id, 0x047F);
        EXPECT_EQ(listed[i].product_id, 0xC056);
        EXPECT_EQ(listed[i].product, L"Plantronics Blackwire 3220 Series");
    }
}

TEST_F(KernelHeadset, is_gone_when_it_is_unplugged_and_back_when_it_is_plugged_again) {
    const int headset = plug_headset();
    hidapi_.wait_for_list(wide_serial(headset));
    unplug_headset(headset);
    EXPECT_TRUE(eventually([&] { return hidapi_.list(wide_serial(headset)).empty(); }));
    EXPECT_EQ(orvex_virtual_replug(headset), 0) << orvex_virtual_error();
    EXPECT_FALSE(hidapi_.wait_for_list(wide_serial(headset)).empty());
}

TEST_F(KernelHeadset, sends_input_reports_byte_for_byte) {
    const int headset = plug_headset();
    const OpenedDevice device(hidapi_, path_of(headset));
    EXPECT_EQ(orvex_virtual_press(headset, telephony_page, phone_mute), 0) << orvex_virtual_error();
    EXPECT_EQ(device.read(), (Report{0x02, 0x08, 0x00})) << "pressed";
    EXPECT_EQ(device.read(), (Report{0x02, 0x00, 0x00})) << "released";
    const Report report{0x02, 0x12, 0x34};
    EXPECT_EQ(orvex_virtual_send_report(headset, report.data(), report.size()), 0) << orvex_virtual_error();
    EXPECT_EQ(device.read(), report);
}

TEST_F(KernelHeadset, sends_reports_of_its_collections_in_the_order_of_the_presses) {
    const int headset = plug_headset("poly-blackwire-3220");
    const OpenedDevice device(hidapi_, path_of(headset));
    for (int round = 0; round < 10; ++round) {
        EXPECT_EQ(orvex_virtual_press(headset, telephony_page, phone_mute), 0);
        EXPECT_EQ(orvex_virtual_press(headset, consumer_page, volume_increment), 0);
    }
    for (int round = 0; round < 10; ++round) {
        EXPECT_EQ(device.read(), (Report{0x08, 0x01}));
        EXPECT_EQ(device.read(), (Report{0x08, 0x00}));
        EXPECT_EQ(device.read(), (Report{0x01, 0x01}));
        EXPECT_EQ(device.read(), (Report{0x01, 0x00}));
    }
}

TEST_F(KernelHeadset, receives_output_reports_byte_for_byte_and_lights_its_indicators) {
    const int headset = plug_headset();
    const OpenedDevice device(hidapi_, path_of(headset));
    EXPECT_EQ(device.write({0x02, 0x05, 0x00}), 3);
    EXPECT_EQ(orvex_virtual_wait_indicator(headset, led_page, mute_led, 1, patience_ms), 1);
    EXPECT_EQ(orvex_virtual_indicator(headset, led_page, off_hook_led), 1);
    EXPECT_EQ(device.write({0x02, 0x01, 0x00}), 3);
    EXPECT_EQ(orvex_virtual_wait_indicator(headset, led_page, mute_led, 0, patience_ms), 1);
    EXPECT_EQ(outputs(headset), (Reports{{0x02, 0x05, 0x00}, {0x02, 0x01, 0x00}}));
}

TEST_F(KernelHeadset, says_which_output_report_was_not_the_expected_one) {
    const int headset = plug_headset();
    const OpenedDevice device(hidapi_, path_of(headset));
    const Report expected{0x02, 0x01, 0x00};
    EXPECT_EQ(orvex_virtual_expect(headset, expected.data(), expected.size()), 0);
    device.write({0x02, 0x04, 0x00});
    EXPECT_EQ(orvex_virtual_verify(headset, patience_ms), -1);
    EXPECT_STREQ(orvex_virtual_error(), "wanted report 02 01 00, found 02 04 00");
}

TEST_F(KernelHeadset, without_report_ids_sends_and_receives_reports_without_them) {
    const int headset = plug_device(plain_descriptor());
    const OpenedDevice device(hidapi_, path_of(headset));
    EXPECT_EQ(orvex_virtual_set_key(headset, telephony_page, phone_mute, 1), 0);
    EXPECT_EQ(device.read(), (Report{0x02})) << "no byte for an id";
    EXPECT_EQ(device.write({0x00, 0x01}), 2);
    EXPECT_EQ(orvex_virtual_wait_indicator(headset, led_page, off_hook_led, 1, patience_ms), 1);
    EXPECT_EQ(outputs(headset), (Reports{{0x00, 0x01}}));
}

TEST_F(KernelHeadset, ends_a_read_that_blocks_when_it_is_unplugged) {
    const int headset = plug_headset();
    const OpenedDevice device(hidapi_, path_of(headset));
    auto read = std::async(std::launch::async, [&] { return device.read_blocking(); });
    unplug_headset(headset);
    ASSERT_EQ(read.wait_for(patience), std::future_status::ready);
    EXPECT_EQ(read.get(), -1);
}

TEST_F(KernelHeadset, refuses_a_request_for_a_feature_report_without_delay) {
    const OpenedDevice device(hidapi_, path_of(plug_headset("poly-blackwire-3220")));
    constexpr std::uint8_t feature_report = 0x1B;
    constexpr auto limit_of_the_kernel = std::chrono::seconds(5);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(device.get_feature_report(feature_report), -1);
    EXPECT_LT(std::chrono::steady_clock::now() - start, limit_of_the_kernel);
}

TEST_F(KernelHeadset, is_unplugged_in_a_write_on_demand) {
    const int headset = plug_headset();
    const OpenedDevice device(hidapi_, path_of(headset));
    EXPECT_EQ(orvex_virtual_misbehave(headset, ORVEX_VIRTUAL_FAULT_UNPLUG_IN_WRITE), 0);
    device.write({0x02, 0x01, 0x00});
    EXPECT_EQ(device.read_blocking(), -1);
    EXPECT_EQ(orvex_virtual_output_count(headset), 0);
}

TEST_F(KernelHeadset, says_that_the_kernel_cannot_show_other_faults) {
    const int headset = plug_headset();
    for (const auto fault : {ORVEX_VIRTUAL_FAULT_OPEN_REFUSED, ORVEX_VIRTUAL_FAULT_WRITE_HANGS,
                             ORVEX_VIRTUAL_FAULT_WRITE_FAILS, ORVEX_VIRTUAL_FAULT_READ_FAILS,
                             ORVEX_VIRTUAL_FAULT_READ_ONE_BYTE, ORVEX_VIRTUAL_FAULT_UNPLUG_IN_OPEN}) {
        EXPECT_EQ(orvex_virtual_misbehave(headset, fault), -1);
        EXPECT_STREQ(orvex_virtual_error(), "headsets of the kernel cannot misbehave like this");
    }
}

TEST_F(KernelHeadset, of_every_model_has_a_driver_of_the_kernel) {
    const char* model = nullptr;
    for (std::size_t i = 0; (model = orvex_virtual_model(i)) != nullptr; ++i) {
        SCOPED_TRACE(model);
        const int headset = plug_headset(model);
        ASSERT_GT(headset, 0);
        EXPECT_FALSE(hidapi_.wait_for_list(wide_serial(headset)).empty());
        unplug_headset(headset);
    }
}

}  // namespace
