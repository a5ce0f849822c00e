#include <future>
#include <gtest/gtest.h>

#include "tests/hid/hid_fixture.h"

namespace platform::hid_test {
namespace {

using namespace virtual_headsets;
using headset_plugin::hid_cancel;
using headset_plugin::hid_last_error;
using headset_plugin::hid_read_report;
using headset_plugin::hid_write_report;
using std::chrono::milliseconds;
using test_support::eventually;
using virtual_platform::Fault;

constexpr milliseconds no_wait{0};

/// Two bytes in, three bytes out, report id 2 both ways.
Bytes two_in_three_out() {
    return telephony({report_id(2), usage(0x2F), input(variable), report_count(7), input(constant),
                      usage_page(led_page), usage(0x17), report_count(1), output(variable), report_count(15),
                      output(constant)});
}

Bytes unnumbered() {
    return telephony({usage(0x2F), input(variable), report_count(7), input(constant), usage_page(led_page),
                      usage(0x17), report_count(1), output(variable), report_count(7), output(constant)});
}

IoResult done(std::size_t size) {
    return {.status = IoResult::Status::done, .size = size};
}
IoResult timed_out() {
    return {.status = IoResult::Status::timed_out};
}
IoResult failed(const wchar_t* why) {
    return {.status = IoResult::Status::failed, .error = why};
}

/// A read in another thread; `begun` says how many reads are under way or over.
std::future<int> read_elsewhere(hid_device* device, Bytes& report) {
    return std::async(std::launch::async,
                      [device, &report] { return hid_read_report(device, report, no_timeout); });
}

class Transfer : public HidFixture {
  protected:
    void SetUp() override {
        HidFixture::SetUp();
        handle_ = open(two_in_three_out());
    }
    void TearDown() override {
        handle_.reset();
        HidFixture::TearDown();
    }

    void expect_error(const wchar_t* text) { EXPECT_EQ(hid_last_error(handle_.get()), text); }

    /// The one report that reached the headset, and the size of the write that carried it.
    virtual_platform::OutputRecord output() {
        const auto outputs = bus().outputs(headset_);
        EXPECT_EQ(outputs->size(), 1U);
        return outputs->empty() ? virtual_platform::OutputRecord{} : outputs->front();
    }

    HidHandle handle_;
};

class Read : public Transfer {};
class Write : public Transfer {
  protected:
    /// A write in another thread that hangs, while the clock stands still.
    std::future<int> hanging_write() {
        EXPECT_EQ(bus().misbehave(headset_, Fault::write_hangs), "");
        platform_.virtual_clock().stop();
        auto writing =
            std::async(std::launch::async, [this] { return hid_write_report(handle_.get(), Bytes{0x02}); });
        EXPECT_TRUE(platform_.virtual_clock().wait_for_sleepers(1, test_support::patience));
        return writing;
    }
};
class Feature : public Transfer {};
class DeviceString : public Transfer {};
class NoDevice : public HidFixture {};

// ---- reading

TEST_F(Read, gives_a_report_with_its_id) {
    ASSERT_EQ(bus().send_report(headset_, Bytes{0x02, 0x01}), "");
    Bytes report(8, 0xEE);
    EXPECT_EQ(hid_read_report(handle_.get(), report, no_timeout), 2);
    EXPECT_EQ(report, (Bytes{0x02, 0x01, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}));
}

TEST_F(Read, cuts_a_report_to_the_room) {
    ASSERT_EQ(bus().send_report(headset_, Bytes{0x02, 0x01}), "");
    Bytes report(1);
    EXPECT_EQ(hid_read_report(handle_.get(), report, no_timeout), 1);
    EXPECT_EQ(report, Bytes{0x02});
}

TEST_F(Read, gives_the_id_0_to_a_report_without_id) {
    const HidHandle handle = open(unnumbered());
    ASSERT_EQ(bus().send_report(headset_, Bytes{0x00, 0x01}), "");
    Bytes report(8);
    EXPECT_EQ(hid_read_report(handle.get(), report, no_timeout), 2);
    EXPECT_EQ(report, (Bytes{0x00, 0x01, 0, 0, 0, 0, 0, 0}));
}

TEST_F(Read, gives_nothing_when_its_time_is_over) {
    Bytes report(8);
    for (const milliseconds timeout : {no_wait, milliseconds{1}}) {
        EXPECT_EQ(hid_read_report(handle_.get(), report, timeout), 0);
        expect_error(L"");
    }
}

TEST_F(Read, waits_without_limit_in_blocking_mode_and_not_at_all_else) {
    EXPECT_EQ(headset_plugin::hid_read_mode_timeout(handle_.get()), no_timeout);
    handle_->blocking = false;
    EXPECT_EQ(headset_plugin::hid_read_mode_timeout(handle_.get()), no_wait);
}

TEST_F(Read, that_waits_ends_with_the_next_report) {
    Bytes report(2);
    std::future<int> reading = read_elsewhere(handle_.get(), report);
    ASSERT_TRUE(eventually([&] { return platform_.asked.reads_begun == 1; }));
    ASSERT_EQ(bus().press(headset_, phone_mute), "");
    EXPECT_EQ(reading.get(), 2);
    EXPECT_EQ(report, (Bytes{0x02, 0x01}));
}

TEST_F(Read, finds_the_last_sixty_four_reports) {
    constexpr int sent = 70;
    for (int i = 0; i < sent; ++i) {
        ASSERT_EQ(bus().send_report(headset_, Bytes{0x02, static_cast<std::uint8_t>(i)}), "");
    }
    Bytes report(2);
    for (int i = sent - 64; i < sent; ++i) {
        ASSERT_EQ(hid_read_report(handle_.get(), report, no_wait), 2);
        EXPECT_EQ(report[1], i);
    }
    EXPECT_EQ(hid_read_report(handle_.get(), report, no_wait), 0);
}

TEST_F(Read, that_fails_tells_the_systems_reason) {
    ASSERT_EQ(bus().misbehave(headset_, Fault::read_fails), "");
    Bytes report(2);
    EXPECT_EQ(hid_read_report(handle_.get(), report, no_timeout), -1);
    expect_error(L"ReadFile: The request could not be performed because of an I/O device error.");
}

TEST_F(Read, that_fails_without_a_reason_tells_the_operation) {
    platform_.script.read = [](auto) { return failed(L""); };
    Bytes report(2);
    EXPECT_EQ(hid_read_report(handle_.get(), report, no_timeout), -1);
    expect_error(L"ReadFile");
}

TEST_F(Read, that_waits_fails_when_the_headset_is_pulled_out) {
    Bytes report(2);
    std::future<int> reading = read_elsewhere(handle_.get(), report);
    ASSERT_TRUE(eventually([&] { return platform_.asked.reads_begun == 1; }));
    ASSERT_EQ(bus().unplug(headset_), "");
    EXPECT_EQ(reading.get(), -1);
    expect_error(L"ReadFile: The device is not connected.");
}

TEST_F(Read, is_released_by_cancelling_and_a_later_one_works) {
    Bytes report(2);
    std::future<int> reading = read_elsewhere(handle_.get(), report);
    // What is not waiting yet is not released: cancelled until it is.
    ASSERT_TRUE(eventually([&] {
        hid_cancel(handle_.get());
        return reading.wait_for(no_wait) == std::future_status::ready;
    }));
    EXPECT_EQ(reading.get(), -1);
    expect_error(L"ReadFile: cancelled");
    ASSERT_EQ(bus().press(headset_, phone_mute), "");
    EXPECT_EQ(hid_read_report(handle_.get(), report, no_timeout), 2);
}

TEST_F(Read, ends_for_good_when_reading_is_ended) {
    Bytes report(2);
    std::future<int> reading = read_elsewhere(handle_.get(), report);
    headset_plugin::hid_end_reading(handle_.get());  // no matter whether it waits already
    EXPECT_EQ(reading.get(), -1);
    ASSERT_EQ(bus().press(headset_, phone_mute), "");
    EXPECT_EQ(hid_read_report(handle_.get(), report, no_timeout), -1);
    expect_error(L"ReadFile: cancelled");
}

// ---- writing

TEST_F(Write, fills_a_short_report_up_with_zeros) {
    EXPECT_EQ(hid_write_report(handle_.get(), Bytes{0x02, 0x01}), 3);
    EXPECT_EQ(output().report, (Bytes{0x02, 0x01, 0x00}));
    EXPECT_EQ(output().written_size, 3U);
}

TEST_F(Write, passes_a_report_of_full_length_as_it_is) {
    EXPECT_EQ(hid_write_report(handle_.get(), Bytes{0x02, 0x01, 0x80}), 3);
    EXPECT_EQ(output().report, (Bytes{0x02, 0x01, 0x80}));
}

TEST_F(Write, leaves_a_longer_buffer_to_the_system) {
    EXPECT_EQ(hid_write_report(handle_.get(), Bytes{0x02, 0x01, 0x80, 0x77}), 4);
    EXPECT_EQ(output().report, (Bytes{0x02, 0x01, 0x80}));
    EXPECT_EQ(output().written_size, 4U);
}

TEST_F(Write, refuses_an_empty_buffer) {
    EXPECT_EQ(hid_write_report(handle_.get(), {}), -1);
    expect_error(L"Zero length buffer");
    EXPECT_TRUE(bus().outputs(headset_)->empty());
}

TEST_F(Write, gives_the_system_one_second) {
    hid_write_report(handle_.get(), Bytes{0x02});
    EXPECT_EQ(platform_.asked.write_timeout.load(), milliseconds{1000});
}

TEST_F(Write, that_hangs_is_given_up_after_one_second) {
    std::future<int> writing = hanging_write();
    platform_.virtual_clock().advance(milliseconds{999});
    EXPECT_EQ(writing.wait_for(no_wait), std::future_status::timeout);
    platform_.virtual_clock().advance(milliseconds{1});
    EXPECT_EQ(writing.get(), -1);
    expect_error(L"WriteFile/WaitForSingleObject Timeout");
}

TEST_F(Write, that_hangs_is_released_by_cancelling) {
    std::future<int> writing = hanging_write();
    hid_cancel(handle_.get());
    EXPECT_EQ(writing.get(), -1);
    expect_error(L"WriteFile: cancelled");
}

TEST_F(Write, that_fails_tells_the_systems_reason) {
    ASSERT_EQ(bus().misbehave(headset_, Fault::write_fails), "");
    EXPECT_EQ(hid_write_report(handle_.get(), Bytes{0x02}), -1);
    expect_error(L"WriteFile: The request could not be performed because of an I/O device error.");
}

TEST_F(Write, that_fails_without_a_reason_tells_the_operation) {
    platform_.script.write = [](auto) { return failed(L""); };
    EXPECT_EQ(hid_write_report(handle_.get(), Bytes{0x02}), -1);
    expect_error(L"WriteFile");
}

TEST_F(Write, into_a_headset_that_is_being_pulled_out_fails) {
    ASSERT_EQ(bus().misbehave(headset_, Fault::unplug_in_write), "");
    EXPECT_EQ(hid_write_report(handle_.get(), Bytes{0x02}), -1);
    expect_error(L"WriteFile: The device is not connected.");
}

TEST_F(Write, keeps_its_error_apart_from_that_of_opening_and_of_other_handles) {
    headset_plugin::hid_set_error(nullptr, L"opening");
    const HidHandle other = open_plugged(headset_);
    EXPECT_EQ(hid_write_report(handle_.get(), {}), -1);
    EXPECT_EQ(hid_last_error(nullptr), L"opening");
    EXPECT_EQ(hid_last_error(other.get()), L"");
}

// ---- feature reports

TEST_F(Feature, report_is_handed_to_the_headset) {
    Bytes sent;
    platform_.script.set_feature = [&](std::span<const std::uint8_t> report) {
        sent.assign(report.begin(), report.end());
        return done(report.size());
    };
    EXPECT_EQ(headset_plugin::hid_send_feature(handle_.get(), Bytes{0x07, 0x01, 0x02}), 3);
    EXPECT_EQ(sent, (Bytes{0x07, 0x01, 0x02}));
}

TEST_F(Feature, report_is_fetched_by_the_id_in_its_first_byte) {
    platform_.script.get_feature = [](std::span<std::uint8_t> report) {
        report[1] = static_cast<std::uint8_t>(report[0] + 1);
        return done(2);
    };
    Bytes report{0x07, 0x00, 0x00};
    EXPECT_EQ(headset_plugin::hid_get_feature(handle_.get(), report), 2);
    EXPECT_EQ(report, (Bytes{0x07, 0x08, 0x00}));
}

TEST_F(Feature, report_that_fails_tells_which_way_and_why) {
    struct Row {
        IoResult result;
        const wchar_t* set_error;
        const wchar_t* get_error;
    };
    const Row rows[] = {
        {failed(L"why"), L"HidD_SetFeature: why", L"HidD_GetFeature: why"},
        {failed(L""), L"HidD_SetFeature", L"HidD_GetFeature"},
        {timed_out(), L"HidD_SetFeature timeout", L"HidD_GetFeature timeout"},
    };
    for (const Row& row : rows) {
        platform_.script.set_feature = [&](auto) { return row.result; };
        platform_.script.get_feature = [&](auto) { return row.result; };
        Bytes report(2);
        EXPECT_EQ(headset_plugin::hid_send_feature(handle_.get(), report), -1);
        expect_error(row.set_error);
        EXPECT_EQ(headset_plugin::hid_get_feature(handle_.get(), report), -1);
        expect_error(row.get_error);
    }
}

// ---- strings

TEST_F(DeviceString, is_copied_by_kind_and_by_index) {
    struct Row {
        HidString which;
        int index;
        const wchar_t* text;
    };
    const Row rows[] = {{HidString::manufacturer, 1, L"Maker"},
                        {HidString::product, 2, L"Headset"},
                        {HidString::serial_number, 3, L"SN1"}};
    for (const Row& row : rows) {
        std::vector<wchar_t> text(16, L'?');
        EXPECT_EQ(headset_plugin::hid_copy_string(handle_.get(), row.which, text), 0);
        EXPECT_STREQ(text.data(), row.text);
        text.assign(16, L'?');
        EXPECT_EQ(headset_plugin::hid_copy_indexed_string(handle_.get(), row.index, text), 0);
        EXPECT_STREQ(text.data(), row.text);
    }
}

TEST_F(DeviceString, is_cut_to_the_room_and_terminated) {
    struct Row {
        std::size_t room;
        const wchar_t* text;
    };
    for (const Row& row : {Row{8, L"Headset"}, Row{7, L"Headse"}, Row{2, L"H"}, Row{1, L""}}) {
        std::vector<wchar_t> text(16, L'?');
        const std::span<wchar_t> room(text.data(), row.room);
        EXPECT_EQ(headset_plugin::hid_copy_string(handle_.get(), HidString::product, room), 0);
        EXPECT_STREQ(text.data(), row.text);
        EXPECT_EQ(text[row.room], L'?');
    }
}

TEST_F(DeviceString, fails_where_the_headset_does_not_have_it) {
    auto nameless = described(two_in_three_out());
    nameless.product.reset();
    handle_ = open_plugged(plug(bus(), nameless));
    std::vector<wchar_t> text(16, L'?');
    EXPECT_EQ(headset_plugin::hid_copy_string(handle_.get(), HidString::product, text), -1);
    expect_error(L"The device does not have this string.");
    EXPECT_EQ(headset_plugin::hid_copy_indexed_string(handle_.get(), 9, text), -1);
    expect_error(L"HidD_GetIndexedString");
    EXPECT_EQ(headset_plugin::hid_copy_indexed_string(handle_.get(), -1, text), -1);
    EXPECT_EQ(text[0], L'?');
}

TEST_F(DeviceString, needs_room) {
    EXPECT_EQ(headset_plugin::hid_copy_string(handle_.get(), HidString::product, {}), -1);
    EXPECT_EQ(headset_plugin::hid_copy_indexed_string(handle_.get(), 1, {}), -1);
}

// ---- without a device

TEST_F(NoDevice, gives_every_operations_failure) {
    Bytes report{0x02};
    std::vector<wchar_t> text(4, L'?');
    EXPECT_EQ(hid_read_report(nullptr, report, no_wait), -1);
    EXPECT_EQ(hid_write_report(nullptr, report), -1);
    EXPECT_EQ(headset_plugin::hid_send_feature(nullptr, report), -1);
    EXPECT_EQ(headset_plugin::hid_get_feature(nullptr, report), -1);
    EXPECT_EQ(headset_plugin::hid_copy_string(nullptr, HidString::product, text), -1);
    EXPECT_EQ(headset_plugin::hid_copy_indexed_string(nullptr, 1, text), -1);
    EXPECT_EQ(headset_plugin::hid_output_report_length(nullptr), 0U);
    EXPECT_TRUE(log_->lines().empty());
}

TEST_F(NoDevice, is_ignored_by_cancelling) {
    hid_cancel(nullptr);
    headset_plugin::hid_end_reading(nullptr);
    EXPECT_EQ(hid_last_error(nullptr), L"");
}

}  // namespace
}  // namespace platform::hid_test
