// The exported HID functions, called as a host calls them.

#include <array>
#include <atomic>
#include <cwchar>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <hidapi/hidapi.h>
#include <set>
#include <string>
#include <thread>

#include "hid/hid_access.h"
#include "orvex/headset_hid.h"
#include "orvex/headset_version.h"
#include "plugin/exports/later_hidapi.h"
#include "tests/hid/headsets_on_bus.h"
#include "tests/support/recording_logger.h"
#include "virtual_headset/platform/virtual_platform.h"

namespace platform::hid_test {
namespace {

using namespace virtual_headsets;
using std::chrono::milliseconds;
using test_support::eventually;
using virtual_platform::Fault;

constexpr milliseconds no_wait{0};
constexpr std::uint16_t vendor = 0x0B0E;
constexpr std::uint16_t product = 0x1234;

/// Report 2: Phone Mute, and Off-Hook and Mute to light; its output is three bytes long.
Bytes numbered() {
    return telephony({report_id(2), usage(0x2F), input(variable | relative), report_count(7), input(constant),
                      usage_page(led_page), report_count(1), usage(0x17), output(variable), usage(0x09),
                      output(variable), report_count(14), output(constant)});
}

Bytes unnumbered() {
    return telephony({usage(0x2F), input(variable | relative), report_count(7), input(constant),
                      usage_page(led_page), report_count(1), usage(0x17), output(variable), report_count(7),
                      output(constant)});
}

/// The same keys in the longest input report that full-speed USB moves at once.
Bytes unnumbered_and_long() {
    constexpr std::uint32_t rest_of_64_bytes = 64 * 8 - 1;
    return telephony(
        {usage(0x2F), input(variable | relative), report_count(rest_of_64_bytes), input(constant)});
}

class HidFunctions : public testing::Test {
  protected:
    void SetUp() override { open(numbered()); }

    void TearDown() override {
        hid_close(device_);
        platform_.bus().reset();
        platform_.virtual_clock().go();
    }

    virtual_platform::VirtualBus& bus() { return platform_.bus(); }

    /// Closes what was open and opens another headset.
    void open(const Bytes& descriptor) {
        hid_close(device_);
        headset_ = plug(bus(), described(descriptor));
        device_ = hid_open_path(path_of(bus(), headset_).c_str());
        ASSERT_NE(device_, nullptr);
    }

    void expect_error(const wchar_t* text) { EXPECT_STREQ(hid_error(device_), text); }

    std::future<int> read_elsewhere() {
        return std::async(std::launch::async, [this] {
            std::array<unsigned char, 8> report{};
            return hid_read(device_, report.data(), report.size());
        });
    }

    /// A write in another thread that hangs, while the clock stands still.
    std::future<int> hanging_write() {
        EXPECT_EQ(bus().misbehave(headset_, Fault::write_hangs), "");
        platform_.virtual_clock().stop();
        auto writing = std::async(std::launch::async, [device = device_] {
            const Bytes report{0x02, 0x01};
            return hid_write(device, report.data(), report.size());
        });
        EXPECT_TRUE(platform_.virtual_clock().wait_for_sleepers(1, test_support::patience));
        return writing;
    }

    virtual_platform::VirtualPlatform& platform_ = virtual_platform::virtual_platform();
    int headset_ = 0;
    hid_device* device_ = nullptr;
};

class HidEnumerate : public HidFunctions {};
class HidOpenFunctions : public HidFunctions {};
class HidRead : public HidFunctions {};
class HidWrite : public HidFunctions {};
class HidClose : public HidFunctions {};
class HidStrings : public HidFunctions {};
class HidDeviceInfo : public HidFunctions {};
class HidExtensions : public HidFunctions {};

// ---- beginning, listing, opening

TEST_F(HidEnumerate, needs_no_beginning_and_may_be_begun_and_ended) {
    EXPECT_EQ(hid_exit(), 0);
    hid_device_info* const list = hid_enumerate(vendor, product);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(path_of(bus(), headset_), list->path);
    hid_free_enumeration(list);
    EXPECT_EQ(hid_init(), 0);
    EXPECT_EQ(hid_init(), 0);
}

TEST_F(HidEnumerate, gives_null_with_a_reason_where_there_is_none_and_null_may_be_freed) {
    hid_device_info* const list = hid_enumerate(0x9999, 0);
    EXPECT_EQ(list, nullptr);
    EXPECT_STREQ(hid_error(nullptr), L"No HID devices found in the system.");
    hid_free_enumeration(list);
}

TEST_F(HidEnumerate, gives_an_empty_serial_number_where_the_headset_has_none) {
    auto description = described(numbered());
    description.serial.reset();
    description.vendor_id = 0x9999;
    plug(bus(), description);
    hid_device_info* const list = hid_enumerate(0x9999, 0);
    ASSERT_NE(list, nullptr);
    EXPECT_STREQ(list->serial_number, L"");
    hid_free_enumeration(list);
}

TEST_F(HidOpenFunctions, open_by_ids_and_serial_number) {
    hid_device* const by_serial = hid_open(vendor, product, L"SN1");
    EXPECT_NE(by_serial, nullptr);
    hid_device* const by_ids = hid_open(vendor, product, nullptr);
    EXPECT_NE(by_ids, nullptr);
    EXPECT_NE(by_ids, by_serial);
    hid_close(by_serial);
    hid_close(by_ids);
}

TEST_F(HidOpenFunctions, fail_with_a_reason) {
    const wchar_t* const not_found = L"Device with requested VID/PID/(SerialNumber) not found";
    EXPECT_EQ(hid_open(vendor, product, L"SN2"), nullptr);
    EXPECT_STREQ(hid_error(nullptr), not_found);
    EXPECT_EQ(hid_open(0x9999, product, nullptr), nullptr);
    EXPECT_STREQ(hid_error(nullptr), not_found);
    EXPECT_EQ(hid_open_path("nowhere"), nullptr);
    EXPECT_STREQ(hid_error(nullptr), L"CreateFile: The system cannot find the device specified.");
    ASSERT_EQ(bus().misbehave(headset_, Fault::open_refused), "");
    EXPECT_EQ(hid_open_path(path_of(bus(), headset_).c_str()), nullptr);
    EXPECT_STREQ(hid_error(nullptr), L"CreateFile: Access is denied.");
}

TEST_F(HidOpenFunctions, fail_for_no_path) {
    EXPECT_EQ(hid_open_path(nullptr), nullptr);
    EXPECT_STREQ(hid_error(nullptr), L"CreateFile: The system cannot find the device specified.");
}

// ---- reading

TEST_F(HidRead, gives_a_report_with_its_id) {
    ASSERT_EQ(bus().send_report(headset_, Bytes{0x02, 0x01}), "");
    std::array<unsigned char, 4> report{0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_EQ(hid_read(device_, report.data(), report.size()), 2);
    EXPECT_EQ(report, (std::array<unsigned char, 4>{0x02, 0x01, 0xEE, 0xEE}));
}

TEST_F(HidRead, gives_a_report_without_id_byte_where_there_are_no_ids) {
    open(unnumbered());
    ASSERT_EQ(bus().send_report(headset_, Bytes{0x00, 0x05}), "");
    std::array<unsigned char, 4> report{0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_EQ(hid_read_timeout(device_, report.data(), report.size(), -1), 1);
    EXPECT_EQ(report, (std::array<unsigned char, 4>{0x05, 0xEE, 0xEE, 0xEE}));
}

TEST_F(HidRead, cuts_a_report_to_the_room_with_and_without_id) {
    std::array<unsigned char, 2> report{0xEE, 0xEE};
    ASSERT_EQ(bus().send_report(headset_, Bytes{0x02, 0x01}), "");
    EXPECT_EQ(hid_read(device_, report.data(), 1), 1);
    EXPECT_EQ(report, (std::array<unsigned char, 2>{0x02, 0xEE}));
    open(unnumbered());
    ASSERT_EQ(bus().send_report(headset_, Bytes{0x00, 0x05}), "");
    EXPECT_EQ(hid_read(device_, report.data(), 1), 1);
    EXPECT_EQ(report, (std::array<unsigned char, 2>{0x05, 0xEE}));
}

TEST_F(HidRead, waits_in_blocking_mode) {
    std::future<int> reading = read_elsewhere();
    EXPECT_EQ(reading.wait_for(no_wait), std::future_status::timeout);
    ASSERT_EQ(bus().press(headset_, phone_mute), "");
    EXPECT_EQ(reading.get(), 2);
}

TEST_F(HidRead, does_not_wait_in_non_blocking_mode_and_the_mode_can_be_changed_back) {
    std::array<unsigned char, 4> report{};
    EXPECT_EQ(hid_set_nonblocking(device_, 1), 0);
    EXPECT_EQ(hid_read(device_, report.data(), report.size()), 0);
    EXPECT_EQ(hid_set_nonblocking(device_, 0), 0);
    std::future<int> reading = read_elsewhere();
    ASSERT_EQ(bus().press(headset_, phone_mute), "");
    EXPECT_EQ(reading.get(), 2);
}

TEST_F(HidRead, gives_nothing_when_its_own_time_is_over_in_either_mode) {
    std::array<unsigned char, 4> report{};
    for (const int non_blocking : {0, 1}) {
        hid_set_nonblocking(device_, non_blocking);
        EXPECT_EQ(hid_read_timeout(device_, report.data(), report.size(), 0), 0);
        EXPECT_EQ(hid_read_timeout(device_, report.data(), report.size(), 1), 0);
    }
    open(unnumbered());
    EXPECT_EQ(hid_read_timeout(device_, report.data(), report.size(), 1), 0);
    expect_error(L"Success");
}

TEST_F(HidRead, fails_without_a_buffer) {
    EXPECT_EQ(hid_read(device_, nullptr, 4), -1);
    EXPECT_EQ(hid_read_timeout(device_, nullptr, 4, 0), -1);
}

TEST_F(HidRead, of_no_length_fails_and_leaves_a_report_that_waits) {
    for (const Bytes& descriptor : {numbered(), unnumbered()}) {
        open(descriptor);
        ASSERT_EQ(bus().set_key(headset_, phone_mute, true), "");
        std::array<unsigned char, 4> report{};
        EXPECT_EQ(hid_read(device_, report.data(), 0), -1);
        expect_error(L"Zero length buffer");
        EXPECT_EQ(hid_read_timeout(device_, report.data(), 0, 0), -1);
        expect_error(L"Zero length buffer");
        EXPECT_GT(hid_read_timeout(device_, report.data(), report.size(), 0), 0) << "the report is gone";
    }
}

TEST_F(HidRead, fails_with_the_systems_reason_when_the_headset_is_pulled_out) {
    std::future<int> reading = read_elsewhere();
    ASSERT_EQ(bus().unplug(headset_), "");
    EXPECT_EQ(reading.get(), -1);
    expect_error(L"ReadFile: The device is not connected.");
}

TEST_F(HidRead, is_released_by_cancelling_and_later_ones_work) {
    std::future<int> reading = read_elsewhere();
    ASSERT_TRUE(eventually([&] {
        hid_cancel_io(device_);
        return reading.wait_for(no_wait) == std::future_status::ready;
    }));
    EXPECT_EQ(reading.get(), -1);
    expect_error(L"ReadFile: cancelled");
    ASSERT_EQ(bus().press(headset_, phone_mute), "");
    std::array<unsigned char, 4> report{};
    EXPECT_EQ(hid_read(device_, report.data(), report.size()), 2);
}

TEST_F(HidRead, gives_every_report_to_everybody_who_has_the_headset_open) {
    hid_device* const other = hid_open_path(path_of(bus(), headset_).c_str());
    ASSERT_EQ(bus().send_report(headset_, Bytes{0x02, 0x01}), "");
    std::array<unsigned char, 4> report{};
    EXPECT_EQ(hid_read(device_, report.data(), report.size()), 2);
    EXPECT_EQ(hid_read(other, report.data(), report.size()), 2);
    hid_close(other);
    ASSERT_EQ(bus().send_report(headset_, Bytes{0x02, 0x00}), "");
    EXPECT_EQ(hid_read(device_, report.data(), report.size()), 2);
}

// ---- writing

TEST_F(HidWrite, fills_a_short_report_up_with_zeros) {
    const Bytes report{0x02, 0x01};
    EXPECT_EQ(hid_write(device_, report.data(), report.size()), 3);
    const auto outputs = bus().outputs(headset_);
    ASSERT_EQ(outputs->size(), 1U);
    EXPECT_EQ(outputs->front().report, (Bytes{0x02, 0x01, 0x00}));
    EXPECT_EQ(bus().indicator(headset_, {led_page, 0x17}), true);
}

TEST_F(HidWrite, refuses_a_buffer_that_is_empty_or_missing) {
    const Bytes report{0x02, 0x01};
    EXPECT_EQ(hid_write(device_, report.data(), 0), -1);
    expect_error(L"Zero length buffer");
    EXPECT_EQ(hid_write(device_, nullptr, 2), -1);
    expect_error(L"Zero length buffer");
    EXPECT_TRUE(bus().outputs(headset_)->empty());
}

TEST_F(HidWrite, that_hangs_is_given_up_after_one_second) {
    std::future<int> writing = hanging_write();
    platform_.virtual_clock().advance(milliseconds{1000});
    EXPECT_EQ(writing.get(), -1);
    expect_error(L"WriteFile/WaitForSingleObject Timeout");
}

TEST_F(HidWrite, of_feature_reports_fails_where_the_headset_has_none) {
    Bytes report{0x02, 0x01};
    EXPECT_EQ(hid_send_feature_report(device_, report.data(), report.size()), -1);
    expect_error(L"HidD_SetFeature: The device has no feature reports.");
    EXPECT_EQ(hid_get_feature_report(device_, report.data(), report.size()), -1);
    expect_error(L"HidD_GetFeature: The device has no feature reports.");
    EXPECT_EQ(hid_send_feature_report(device_, nullptr, 2), -1);
    EXPECT_EQ(hid_get_feature_report(device_, nullptr, 2), -1);
}

TEST_F(HidWrite, of_an_output_report_by_the_control_channel_lights_the_headset) {
    const Bytes report{0x02, 0x01};
    EXPECT_EQ(hid_send_output_report(device_, report.data(), report.size()), 2);
    EXPECT_EQ(bus().indicator(headset_, {led_page, 0x17}), true);
    ASSERT_EQ(bus().misbehave(headset_, Fault::write_fails), "");
    EXPECT_EQ(hid_send_output_report(device_, report.data(), report.size()), -1);
    expect_error(L"HidD_SetOutputReport: The request could not be performed because of an I/O device error.");
    EXPECT_EQ(hid_send_output_report(device_, nullptr, 2), -1);
    expect_error(L"Zero length buffer");
}

TEST_F(HidRead, of_an_input_report_by_its_id_gives_the_keys_as_they_are) {
    ASSERT_EQ(bus().set_key(headset_, phone_mute, true), "");
    std::array<unsigned char, 4> report{0x02, 0xEE, 0xEE, 0xEE};
    EXPECT_EQ(hid_get_input_report(device_, report.data(), report.size()), 2);
    EXPECT_EQ(report, (std::array<unsigned char, 4>{0x02, 0x01, 0xEE, 0xEE}));
    ASSERT_EQ(bus().set_key(headset_, phone_mute, false), "");
    EXPECT_EQ(hid_get_input_report(device_, report.data(), report.size()), 2);
    EXPECT_EQ(report[1], 0x00);
    report[0] = 0x07;
    EXPECT_EQ(hid_get_input_report(device_, report.data(), report.size()), -1);
    expect_error(L"HidD_GetInputReport: The device has no such input report.");
    EXPECT_EQ(hid_get_input_report(device_, nullptr, 2), -1);
    expect_error(L"Zero length buffer");
}

TEST_F(HidRead, of_an_input_report_without_id_leaves_byte_0) {
    open(unnumbered());
    ASSERT_EQ(bus().set_key(headset_, phone_mute, true), "");
    std::array<unsigned char, 4> report{};
    EXPECT_EQ(hid_get_input_report(device_, report.data(), report.size()), 2);
    EXPECT_EQ(report, (std::array<unsigned char, 4>{0x00, 0x01, 0x00, 0x00}));
    ASSERT_EQ(bus().unplug(headset_), "");
    EXPECT_EQ(hid_get_input_report(device_, report.data(), report.size()), -1);
}

TEST_F(HidWrite, and_reading_of_feature_reports_need_room) {
    Bytes report{0x02, 0x01};
    EXPECT_EQ(hid_send_feature_report(device_, report.data(), 0), -1);
    expect_error(L"Zero length buffer");
    open(numbered());
    EXPECT_EQ(hid_get_feature_report(device_, report.data(), 0), -1);
    expect_error(L"Zero length buffer");
}

// ---- closing, and handles that are not open

/// Every function that takes a handle, on arguments that would do; its failure.
struct HandleFunction {
    const char* name;
    std::function<int(hid_device*)> call;
    int failure = -1;
};

std::array<unsigned char, 8> g_report{0x02};
std::array<wchar_t, 8> g_text;
std::uint32_t g_length;
constexpr std::array<std::uint16_t, 1> usages{0x17};
constexpr std::array<std::uint32_t, 1> values{1};

const HandleFunction handle_functions[] = {
    {"hid_write", [](hid_device* device) { return hid_write(device, g_report.data(), g_report.size()); }},
    {"hid_read_timeout",
     [](hid_device* device) { return hid_read_timeout(device, g_report.data(), g_report.size(), 0); }},
    {"hid_read", [](hid_device* device) { return hid_read(device, g_report.data(), g_report.size()); }},
    {"hid_set_nonblocking", [](hid_device* device) { return hid_set_nonblocking(device, 1); }},
    {"hid_send_feature_report",
     [](hid_device* device) { return hid_send_feature_report(device, g_report.data(), g_report.size()); }},
    {"hid_get_feature_report",
     [](hid_device* device) { return hid_get_feature_report(device, g_report.data(), g_report.size()); }},
    {"hid_get_input_report",
     [](hid_device* device) { return hid_get_input_report(device, g_report.data(), g_report.size()); }},
    {"hid_send_output_report",
     [](hid_device* device) { return hid_send_output_report(device, g_report.data(), g_report.size()); }},
    {"hid_get_report_descriptor",
     [](hid_device* device) { return hid_get_report_descriptor(device, g_report.data(), g_report.size()); }},
    {"hid_get_device_info",
     [](hid_device* device) { return hid_get_device_info(device) == nullptr ? -1 : 0; }},
    {"hid_get_manufacturer_string",
     [](hid_device* device) { return hid_get_manufacturer_string(device, g_text.data(), g_text.size()); }},
    {"hid_get_product_string",
     [](hid_device* device) { return hid_get_product_string(device, g_text.data(), g_text.size()); }},
    {"hid_get_serial_number_string",
     [](hid_device* device) { return hid_get_serial_number_string(device, g_text.data(), g_text.size()); }},
    {"hid_get_indexed_string",
     [](hid_device* device) { return hid_get_indexed_string(device, 1, g_text.data(), g_text.size()); }},
    {"hid_gen_led_event",
     [](hid_device* device) {
         return hid_gen_led_event(device, led_page, usages[0], 1, g_report.data(), &g_length);
     }},
    {"hid_gen_led_events",
     [](hid_device* device) {
         return hid_gen_led_events(device, led_page, usages.data(), values.data(), 1, g_report.data(),
                                   &g_length);
     }},
    {"hid_process_read", [](hid_device* device) { return hid_process_read(device, g_report.data(), 2); }},
    {"hid_check_report_id", [](hid_device* device) { return hid_check_report_id(device, 2, 1); }, 0},
};

/// Each fails, and closing and cancelling do nothing.
void expect_no_handle(hid_device* device) {
    for (const HandleFunction& function : handle_functions) {
        EXPECT_EQ(function.call(device), function.failure) << function.name;
    }
    hid_cancel_io(device);
    hid_close(device);
}

TEST_F(HidClose, makes_every_function_fail_on_the_handle_and_may_be_repeated) {
    hid_device* const closed = std::exchange(device_, nullptr);
    hid_close(closed);
    expect_no_handle(closed);
    EXPECT_STREQ(hid_error(closed), L"no such device");
    EXPECT_STREQ(hid_read_error(closed), L"no such device");
}

TEST_F(HidClose, and_every_other_function_fail_without_a_device) {
    expect_no_handle(nullptr);
}

TEST_F(HidClose, and_every_other_function_fail_on_a_pointer_that_is_no_handle) {
    int stranger = 0;
    auto* const no_handle = reinterpret_cast<hid_device*>(&stranger);
    expect_no_handle(no_handle);
    EXPECT_STREQ(hid_error(no_handle), L"no such device");
}

TEST_F(HidClose, releases_a_read_in_another_thread_whether_it_waits_already_or_not) {
    constexpr int rounds = 20;
    for (int i = 0; i < rounds; ++i) {
        std::promise<void> about_to_read;
        auto reading = std::async(std::launch::async, [&, device = device_] {
            std::array<unsigned char, 8> report{};
            about_to_read.set_value();
            return hid_read(device, report.data(), report.size());
        });
        about_to_read.get_future().wait();
        hid_close(std::exchange(device_, nullptr));
        EXPECT_EQ(reading.get(), -1);
        device_ = hid_open_path(path_of(bus(), headset_).c_str());
    }
}

TEST_F(HidClose, releases_a_write_that_hangs) {
    std::future<int> writing = hanging_write();
    hid_close(std::exchange(device_, nullptr));
    EXPECT_EQ(writing.get(), -1);
}

TEST_F(HidClose, may_come_from_one_thread_while_others_use_the_handle) {
    std::vector<std::future<bool>> users;
    for (int i = 0; i < 3; ++i) {
        users.push_back(std::async(std::launch::async, [device = device_] {
            std::array<unsigned char, 8> report{};
            std::uint32_t length = 0;
            return eventually([&] {
                hid_gen_led_event(device, led_page, 0x17, 1, report.data(), &length);
                hid_write(device, report.data(), 3);
                hid_error(device);
                return hid_read_timeout(device, report.data(), report.size(), 0) == -1;
            });
        }));
    }
    ASSERT_EQ(bus().wait_outputs(headset_, 10, test_support::patience), true);
    hid_close(std::exchange(device_, nullptr));
    for (auto& user : users) {
        EXPECT_TRUE(user.get());
    }
}

// ---- strings and errors

TEST_F(HidStrings, are_cut_to_the_room_and_terminated) {
    using Get = int (*)(hid_device*, wchar_t*, std::size_t);
    struct Row {
        Get get;
        const wchar_t* text;
        const wchar_t* cut;
    };
    const Get indexed = [](hid_device* device, wchar_t* text, std::size_t room) {
        return hid_get_indexed_string(device, 2, text, room);
    };
    for (const Row& row :
         {Row{hid_get_manufacturer_string, L"Maker", L"Ma"}, Row{hid_get_product_string, L"Headset", L"He"},
          Row{hid_get_serial_number_string, L"SN1", L"SN"}, Row{indexed, L"Headset", L"He"}}) {
        std::array<wchar_t, 16> text;
        text.fill(L'?');
        EXPECT_EQ(row.get(device_, text.data(), text.size()), 0);
        EXPECT_STREQ(text.data(), row.text);
        text.fill(L'?');
        EXPECT_EQ(row.get(device_, text.data(), 3), 0);
        EXPECT_STREQ(text.data(), row.cut);
        EXPECT_EQ(text[3], L'?');
        EXPECT_EQ(row.get(device_, text.data(), 0), -1);
        EXPECT_EQ(row.get(device_, nullptr, 3), -1);
    }
}

TEST_F(HidStrings, fail_where_the_headset_has_none_at_an_index) {
    std::array<wchar_t, 16> text;
    EXPECT_EQ(hid_get_indexed_string(device_, 9, text.data(), text.size()), -1);
    expect_error(L"HidD_GetIndexedString");
    EXPECT_EQ(hid_get_indexed_string(device_, -1, text.data(), text.size()), -1);
}

TEST_F(HidStrings, of_errors_say_success_where_there_was_none) {
    expect_error(L"Success");
}

TEST_F(HidStrings, of_errors_are_valid_until_the_thread_asks_again) {
    hid_write(device_, nullptr, 0);
    const wchar_t* const text = hid_error(device_);
    std::thread([] { hid_error(nullptr); }).join();  // does not touch this thread's text
    EXPECT_STREQ(text, L"Zero length buffer");
}

TEST_F(HidStrings, of_errors_are_those_of_the_last_call_on_the_handle) {
    hid_write(device_, nullptr, 0);
    expect_error(L"Zero length buffer");
    const Bytes report{0x02, 0x01};
    EXPECT_EQ(hid_write(device_, report.data(), report.size()), 3);
    expect_error(L"Success");
}

TEST_F(HidStrings, of_errors_without_a_handle_are_the_processs) {
    std::thread([] { hid_open(0x9999, product, nullptr); }).join();
    EXPECT_STREQ(hid_error(nullptr), L"Device with requested VID/PID/(SerialNumber) not found");
    std::thread([] { hid_init(); }).join();
    EXPECT_STREQ(hid_error(nullptr), L"Success");
}

TEST_F(HidStrings, of_errors_are_not_those_of_the_plugins_own_passes) {
    hid_init();
    headset_plugin::hid_list(0x9999, 0);
    EXPECT_STREQ(hid_error(nullptr), L"Success");
}

TEST_F(HidStrings, of_errors_without_a_handle_may_be_asked_for_while_other_threads_fail) {
    std::atomic<bool> over{false};
    std::thread failing([&] {
        while (!over) {
            hid_open(0x9999, product, nullptr);
            hid_open_path("nowhere");
        }
    });
    const std::set<std::wstring> texts{L"Success", L"Device with requested VID/PID/(SerialNumber) not found",
                                       L"CreateFile: The system cannot find the device specified."};
    constexpr int rounds = 200;
    for (int i = 0; i < rounds; ++i) {
        EXPECT_EQ(texts.count(hid_error(nullptr)), 1U);
    }
    over = true;
    failing.join();
}

TEST_F(HidStrings, of_read_errors_are_those_of_reads_alone) {
    std::array<unsigned char, 4> report{};
    EXPECT_EQ(hid_read(device_, report.data(), 0), -1);
    const Bytes output{0x02, 0x01};
    EXPECT_EQ(hid_write(device_, output.data(), output.size()), 3);
    EXPECT_STREQ(hid_read_error(device_), L"Zero length buffer");
    hid_write(device_, nullptr, 0);
    EXPECT_EQ(hid_read_timeout(device_, report.data(), report.size(), 0), 0);
    EXPECT_STREQ(hid_read_error(device_), L"Success");
}

// ---- what the device is

TEST_F(HidDeviceInfo, is_the_entry_of_the_enumeration) {
    hid_device_info* const list = hid_enumerate(vendor, product);
    ASSERT_NE(list, nullptr);
    const hid_device_info* const info = hid_get_device_info(device_);
    ASSERT_NE(info, nullptr);
    EXPECT_STREQ(info->path, list->path);
    EXPECT_EQ(info->vendor_id, list->vendor_id);
    EXPECT_EQ(info->product_id, list->product_id);
    EXPECT_STREQ(info->serial_number, list->serial_number);
    EXPECT_EQ(info->release_number, list->release_number);
    EXPECT_STREQ(info->manufacturer_string, list->manufacturer_string);
    EXPECT_STREQ(info->product_string, list->product_string);
    EXPECT_EQ(info->usage_page, list->usage_page);
    EXPECT_EQ(info->usage, list->usage);
    EXPECT_EQ(info->interface_number, list->interface_number);
    EXPECT_EQ(info->bus_type, list->bus_type);
    EXPECT_EQ(info->next, nullptr);
    EXPECT_EQ(hid_get_device_info(device_), info) << "valid until the device is closed";
    hid_free_enumeration(list);
}

TEST_F(HidDeviceInfo, is_that_of_the_collection_that_is_open) {
    const int headset = plug_model(bus(), "jabra-link-380c");
    const std::string path = path_of(bus(), headset, 0x0C);
    hid_device* const consumer = hid_open_path(path.c_str());
    ASSERT_NE(consumer, nullptr);
    EXPECT_EQ(hid_get_device_info(consumer)->path, path);
    EXPECT_EQ(hid_get_device_info(consumer)->usage_page, 0x0C);
    hid_close(consumer);
}

TEST_F(HidDeviceInfo, has_an_empty_serial_number_where_the_headset_has_none) {
    auto description = described(numbered());
    description.serial.reset();
    hid_device* const device = hid_open_path(path_of(bus(), plug(bus(), description)).c_str());
    ASSERT_NE(device, nullptr);
    EXPECT_STREQ(hid_get_device_info(device)->serial_number, L"");
    hid_close(device);
}

TEST_F(HidDeviceInfo, has_a_report_descriptor_as_much_as_fits) {
    const Bytes descriptor = numbered();
    Bytes copy(descriptor.size() + 1, 0xEE);
    EXPECT_EQ(hid_get_report_descriptor(device_, copy.data(), copy.size()),
              static_cast<int>(descriptor.size()));
    copy.pop_back();
    EXPECT_EQ(copy, descriptor);
    Bytes start(4, 0xEE);
    EXPECT_EQ(hid_get_report_descriptor(device_, start.data(), 3), 3);
    EXPECT_EQ(start, (Bytes{descriptor[0], descriptor[1], descriptor[2], 0xEE}));
    EXPECT_EQ(hid_get_report_descriptor(device_, nullptr, 3), -1);
    expect_error(L"Zero length buffer");
}

// ---- versions

TEST(HidVersion, is_that_of_hidapi) {
    const hid_api_version* const version = hid_version();
    EXPECT_EQ(HID_API_MAKE_VERSION(version->major, version->minor, version->patch), HID_API_VERSION);
    EXPECT_STREQ(hid_version_str(), HID_API_VERSION_STR);
}

TEST(PluginVersion, of_the_library_is_that_of_the_headers) {
    EXPECT_EQ(orvex_headset_plugin_version(), ORVEX_HEADSET_PLUGIN_VERSION);
    EXPECT_EQ(ORVEX_HEADSET_PLUGIN_MAKE_VERSION(1, 2, 3), 1002003);
    EXPECT_EQ(ORVEX_HEADSET_PLUGIN_VERSION_STRING, std::to_string(ORVEX_HEADSET_PLUGIN_VERSION_MAJOR) + "." +
                                                       std::to_string(ORVEX_HEADSET_PLUGIN_VERSION_MINOR) +
                                                       "." +
                                                       std::to_string(ORVEX_HEADSET_PLUGIN_VERSION_PATCH));
}

// ---- beyond hidapi

TEST_F(HidExtensions, build_an_output_report_from_one_usage_or_several) {
    std::array<std::uint8_t, 4> report{0xEE, 0xEE, 0xEE, 0xEE};
    std::uint32_t length = 0;
    EXPECT_EQ(hid_gen_led_event(device_, led_page, 0x09, 1, report.data(), &length), 0);
    EXPECT_EQ(length, 3U);
    EXPECT_EQ(report, (std::array<std::uint8_t, 4>{0x02, 0x02, 0x00, 0xEE}));
    length = 0;
    EXPECT_EQ(hid_gen_led_events(device_, led_page, usages.data(), values.data(), 1, report.data(), &length),
              0);
    EXPECT_EQ(length, 3U);
    EXPECT_EQ(report, (std::array<std::uint8_t, 4>{0x02, 0x03, 0x00, 0xEE}));
}

TEST_F(HidExtensions, tell_an_unknown_usage_as_failure_alone_and_as_success_among_several) {
    std::array<std::uint8_t, 4> report{};
    std::uint32_t length = 77;
    const std::uint16_t unknown[] = {0x4B};
    EXPECT_EQ(hid_gen_led_event(device_, led_page, unknown[0], 1, report.data(), &length), -1);
    EXPECT_EQ(hid_gen_led_events(device_, led_page, unknown, values.data(), 1, report.data(), &length), 0);
    EXPECT_EQ(length, 77U);
}

TEST_F(HidExtensions, need_their_arguments) {
    std::array<std::uint8_t, 4> report{};
    std::uint32_t length = 77;
    EXPECT_EQ(hid_gen_led_event(device_, led_page, 0x17, 1, nullptr, &length), -1);
    EXPECT_EQ(hid_gen_led_event(device_, led_page, 0x17, 1, report.data(), nullptr), -1);
    EXPECT_EQ(hid_gen_led_events(device_, led_page, nullptr, values.data(), 1, report.data(), &length), -1);
    EXPECT_EQ(hid_gen_led_events(device_, led_page, usages.data(), nullptr, 1, report.data(), &length), -1);
    EXPECT_EQ(hid_gen_led_events(device_, led_page, usages.data(), values.data(), 1, nullptr, &length), -1);
    EXPECT_EQ(hid_gen_led_events(device_, led_page, usages.data(), values.data(), 1, report.data(), nullptr),
              -1);
    EXPECT_EQ(length, 77U);
    EXPECT_EQ(hid_process_read(device_, nullptr, 2), -1);
}

TEST_F(HidExtensions, find_a_mute_key_in_a_report) {
    const Bytes pressed{0x02, 0x01};
    const Bytes released{0x02, 0x00};
    EXPECT_EQ(hid_process_read(device_, pressed.data(), 2), 1);
    EXPECT_EQ(hid_process_read(device_, pressed.data(), 0), -1);
    EXPECT_EQ(hid_process_read(device_, pressed.data(), -1), -1);
    EXPECT_EQ(hid_process_read(device_, released.data(), 2), -1);
}

TEST_F(HidExtensions, find_a_mute_key_in_what_a_read_gave_with_ids_and_without) {
    for (const Bytes& descriptor : {numbered(), unnumbered()}) {
        open(descriptor);
        ASSERT_EQ(bus().set_key(headset_, phone_mute, true), "");
        std::array<unsigned char, 8> report{};
        const int length = hid_read(device_, report.data(), report.size());
        ASSERT_GT(length, 0);
        EXPECT_EQ(hid_process_read(device_, report.data(), length), 1);
    }
}

TEST_F(HidExtensions, find_a_mute_key_in_a_report_without_id_whether_its_0_is_there_or_not) {
    struct Row {
        Bytes report;
        int result;
    };
    open(unnumbered());
    for (const Row& row : {Row{{0x00, 0x01}, 1}, Row{{0x00, 0x00}, -1}, Row{{0x01}, 1}, Row{{0x00}, -1}}) {
        EXPECT_EQ(hid_process_read(device_, row.report.data(), static_cast<std::int32_t>(row.report.size())),
                  row.result)
            << testing::PrintToString(row.report);
    }
}

TEST_F(HidExtensions, find_a_mute_key_in_the_longest_report_without_id) {
    open(unnumbered_and_long());
    for (const bool pressed : {true, false}) {
        ASSERT_EQ(bus().set_key(headset_, phone_mute, pressed), "");
        std::array<unsigned char, 64> report{};
        EXPECT_EQ(hid_read(device_, report.data(), report.size()), 64);
        EXPECT_EQ(hid_process_read(device_, report.data(), 64), pressed ? 1 : -1);
    }
}

TEST_F(HidExtensions, check_report_ids) {
    EXPECT_EQ(hid_check_report_id(device_, 2, 3), 1);
    EXPECT_EQ(hid_check_report_id(device_, 3, 3), 0);
    EXPECT_EQ(hid_check_report_id(device_, 0x102, 1), 0);
    EXPECT_EQ(hid_check_report_id(device_, 2, 0), 0);
    EXPECT_EQ(hid_check_report_id(device_, 2, 4), 0);
}

}  // namespace
}  // namespace platform::hid_test
