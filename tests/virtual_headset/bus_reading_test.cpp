#include <future>
#include <gtest/gtest.h>

#include "tests/support/recording_logger.h"
#include "tests/virtual_headset/bus.h"

namespace bus_test {
namespace {

using namespace std::chrono_literals;
using platform::no_timeout;
using test_support::eventually;
using test_support::patience;
using Status = IoResult::Status;

/// A read without a limit on a thread of its own.
std::future<Read> read_on_thread(HidInterface& interface, std::chrono::milliseconds timeout = no_timeout) {
    return std::async(std::launch::async, [&interface, timeout] { return read(interface, timeout); });
}

bool is_over(const std::future<Read>& reading, std::chrono::milliseconds limit = patience) {
    return reading.wait_for(limit) == std::future_status::ready;
}

TEST_F(BusTest, hands_a_report_to_a_read_that_waits) {
    const int headset = plug(jabra);
    const auto opened = open();
    for (const auto timeout : {no_timeout, std::chrono::milliseconds(patience)}) {
        auto reading = read_on_thread(*opened, timeout);
        EXPECT_FALSE(is_over(reading, 2ms));
        bus_.send_report(headset, Bytes{0x02, 0x01, 0x00});
        ASSERT_TRUE(is_over(reading));
        const Read done = reading.get();
        EXPECT_EQ(done.result.status, Status::done);
        EXPECT_EQ(done.report, (Bytes{0x02, 0x01, 0x00}));
    }
}

TEST_F(BusTest, keeps_reports_in_order_for_reads_to_come) {
    const int headset = plug(jabra);
    const auto opened = open();
    bus_.send_report(headset, Bytes{0x02, 0x01, 0x00});
    bus_.send_report(headset, Bytes{0x02, 0x09, 0x00});
    bus_.send_report(headset, Bytes{0x02, 0x00, 0x00});
    EXPECT_EQ(read_all(*opened),
              (std::vector<Bytes>{{0x02, 0x01, 0x00}, {0x02, 0x09, 0x00}, {0x02, 0x00, 0x00}}));
}

TEST_F(BusTest, ends_a_read_when_its_time_is_over) {
    plug(jabra);
    const auto opened = open();
    const auto start = std::chrono::steady_clock::now();
    const Read timed = read(*opened, 20ms);
    EXPECT_EQ(timed.result.status, Status::timed_out);
    EXPECT_EQ(timed.result.size, 0U);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
    EXPECT_EQ(read(*opened, 0ms).result.status, Status::timed_out) << "a poll does not wait";
}

TEST_F(BusTest, copies_as_much_of_a_report_as_fits_and_drops_the_rest) {
    const int headset = plug(jabra);
    const auto opened = open();
    bus_.send_report(headset, Bytes{0x02, 0x41, 0x07});
    const Read cut = read(*opened, 0ms, 2);
    EXPECT_EQ(cut.report, (Bytes{0x02, 0x41}));
    EXPECT_EQ(read(*opened).result.status, Status::timed_out);
}

TEST_F(BusTest, delivers_to_a_collection_its_own_reports_only) {
    const int headset = plug(jabra);
    const auto telephony = open(telephony_page);
    const auto vendor = open(0xFF00);
    const auto consumer = open(consumer_page);
    bus_.send_report(headset, Bytes{0x02, 0x01, 0x00});
    bus_.press(headset, volume_up);
    EXPECT_EQ(read_all(*telephony), (std::vector<Bytes>{{0x02, 0x01, 0x00}}));
    EXPECT_EQ(read_all(*vendor), std::vector<Bytes>());
    EXPECT_EQ(read_all(*consumer), (std::vector<Bytes>{{0x01, 0x02, 0x00}, {0x01, 0x00, 0x00}}));
}

TEST_F(BusTest, fills_a_report_up_to_the_longest_of_its_collection) {
    const int headset = plug(jabra);
    const auto vendor = open(0xFF00);
    Bytes padded(63);
    padded[0] = 0x04;
    padded[1] = 0x21;
    bus_.send_report(headset, Bytes{0x04, 0x21, 0x00});
    EXPECT_EQ(read_all(*vendor), std::vector<Bytes>{padded});
}

TEST_F(BusTest, delivers_a_report_to_everybody_who_has_its_collection_open) {
    const int headset = plug(jabra);
    const auto one = open();
    auto other = open();
    bus_.set_key(headset, hook_switch, true);
    EXPECT_EQ(read_all(*one).size(), 1U);
    EXPECT_EQ(read_all(*other).size(), 1U);
    other.reset();
    bus_.set_key(headset, hook_switch, false);
    EXPECT_EQ(read_all(*one).size(), 1U);
}

TEST_F(BusTest, delivers_nothing_from_before_the_opening) {
    const int headset = plug(jabra);
    bus_.press(headset, hook_switch);
    EXPECT_EQ(read_all(*open()), std::vector<Bytes>());
}

TEST_F(BusTest, gives_reports_of_a_headset_without_ids_an_id_of_0) {
    const int headset = plug(game_voice);
    const auto opened = open();
    bus_.send_report(headset, Bytes{0x00, 0x81});
    EXPECT_EQ(read_all(*opened), (std::vector<Bytes>{{0x00, 0x81}}));
}

/// The second bytes of the reports that are left of a number of reports, numbered from 0, sent without
/// reading.
std::vector<int> left_of(platform::virtual_platform::VirtualBus& bus, int headset, HidInterface& interface,
                         int sent) {
    for (int i = 0; i < sent; ++i) {
        bus.send_report(headset, Bytes{0x00, static_cast<std::uint8_t>(i)});
    }
    std::vector<int> numbers;
    for (const Bytes& report : read_all(interface)) {
        numbers.push_back(report[1]);
    }
    return numbers;
}

std::vector<int> numbers_between(int first, int end) {
    std::vector<int> numbers;
    for (int number = first; number < end; ++number) {
        numbers.push_back(number);
    }
    return numbers;
}

TEST_F(BusTest, keeps_32_reports_and_drops_the_oldest) {
    const int headset = plug(game_voice);
    const auto opened = open();
    EXPECT_EQ(left_of(bus_, headset, *opened, 32), numbers_between(0, 32));
    EXPECT_EQ(left_of(bus_, headset, *opened, 35), numbers_between(3, 35));
}

TEST_F(BusTest, keeps_as_many_reports_as_it_was_asked_to) {
    const int headset = plug(game_voice);
    const auto opened = open();
    EXPECT_TRUE(opened->HidD_SetNumInputBuffers(64));
    EXPECT_EQ(left_of(bus_, headset, *opened, 70), numbers_between(6, 70));
    EXPECT_TRUE(opened->HidD_SetNumInputBuffers(2));
    EXPECT_EQ(left_of(bus_, headset, *opened, 5), numbers_between(3, 5));
}

TEST_F(BusTest, keeps_buffers_for_each_opening) {
    const int headset = plug(game_voice);
    const auto small = open();
    const auto other = open();
    EXPECT_TRUE(small->HidD_SetNumInputBuffers(2));
    EXPECT_EQ(left_of(bus_, headset, *small, 10).size(), 2U);
    EXPECT_EQ(read_all(*other).size(), 10U);
}

TEST_F(BusTest, drops_what_is_too_much_for_fewer_buffers_with_the_next_report) {
    const int headset = plug(game_voice);
    const auto opened = open();
    for (const std::uint8_t number : Bytes{1, 2, 3, 4}) {
        bus_.send_report(headset, Bytes{0x00, number});
    }
    EXPECT_TRUE(opened->HidD_SetNumInputBuffers(2));
    bus_.send_report(headset, Bytes{0x00, 5});
    EXPECT_EQ(read_all(*opened), (std::vector<Bytes>{{0x00, 4}, {0x00, 5}}));
}

TEST_F(BusTest, accepts_numbers_of_buffers_that_windows_accepts_and_keeps_its_own_else) {
    const int headset = plug(game_voice);
    const auto opened = open();
    for (const platform::ULONG count : {0U, 1U, 513U, 0xFFFFFFFFU}) {
        EXPECT_FALSE(opened->HidD_SetNumInputBuffers(count)) << count;
    }
    EXPECT_EQ(left_of(bus_, headset, *opened, 40).size(), 32U);
    EXPECT_TRUE(opened->HidD_SetNumInputBuffers(512));
    bus_.unplug(headset);
    EXPECT_FALSE(opened->HidD_SetNumInputBuffers(64)) << "the device is gone";
}

TEST_F(BusTest, releases_reads_that_wait_when_cancelled_and_lets_later_ones_wait) {
    const int headset = plug(jabra);
    const auto opened = open();
    auto reading = read_on_thread(*opened);
    // The read may not wait yet: a cancel releases those that do.
    EXPECT_TRUE(eventually([&] {
        opened->cancel();
        return is_over(reading, 0ms);
    }));
    EXPECT_EQ(reading.get().result.status, Status::cancelled);

    EXPECT_EQ(read(*opened).result.status, Status::timed_out) << "not cancelled by an earlier cancel";
    bus_.set_key(headset, hook_switch, true);
    EXPECT_EQ(read(*opened).result.status, Status::done);
}

TEST_F(BusTest, keeps_what_has_arrived_through_a_cancel) {
    const int headset = plug(jabra);
    const auto opened = open();
    bus_.press(headset, hook_switch);
    opened->cancel();
    EXPECT_EQ(read_all(*opened).size(), 2U);
}

TEST_F(BusTest, releases_the_read_that_waits_when_reading_is_ended_and_refuses_all_later_ones) {
    const int headset = plug(jabra);
    const auto opened = open();
    auto reading = read_on_thread(*opened);
    opened->end_reading();
    ASSERT_TRUE(is_over(reading));
    EXPECT_EQ(reading.get().result.status, Status::cancelled);

    bus_.press(headset, hook_switch);
    EXPECT_EQ(read(*opened, no_timeout).result.status, Status::cancelled) << "although reports have arrived";
    EXPECT_EQ(read(*opened, 0ms).result.status, Status::cancelled);
    EXPECT_EQ(write(*opened, {0x02, 0x01, 0x00}).status, Status::done) << "writing goes on";
}

TEST_F(BusTest, ends_the_reading_of_one_opening_and_not_of_another) {
    const int headset = plug(jabra);
    const auto ended = open();
    const auto other = open();
    ended->end_reading();
    bus_.press(headset, hook_switch);
    EXPECT_EQ(read_all(*other).size(), 2U);
}

TEST_F(BusTest, fails_the_read_that_waits_when_the_headset_is_unplugged) {
    const int headset = plug(jabra);
    const auto opened = open();
    auto reading = read_on_thread(*opened);
    bus_.unplug(headset);
    ASSERT_TRUE(is_over(reading));
    EXPECT_TRUE(failed_with(reading.get().result, not_connected));
    EXPECT_TRUE(failed_with(read(*opened).result, not_connected)) << "every later one, too";
}

TEST_F(BusTest, knows_whether_the_headset_is_still_there) {
    const int headset = plug(jabra);
    const auto opened = open();
    EXPECT_TRUE(opened->is_connected());
    bus_.unplug(headset);
    EXPECT_FALSE(opened->is_connected());
}

TEST_F(BusTest, does_not_revive_an_opening_when_the_headset_is_plugged_in_again) {
    const int headset = plug(jabra);
    const auto former = open();
    bus_.unplug(headset);
    bus_.replug(headset);
    const auto fresh = open();
    bus_.press(headset, hook_switch);
    EXPECT_FALSE(former->is_connected());
    EXPECT_TRUE(failed_with(read(*former).result, not_connected));
    EXPECT_TRUE(failed_with(write(*former, {0x02, 0x01, 0x00}), not_connected));
    EXPECT_TRUE(fresh->is_connected());
    EXPECT_EQ(read_all(*fresh).size(), 2U);
}

TEST_F(BusTest, outlives_its_openings_in_any_order) {
    const int headset = plug(jabra);
    auto one = open();
    auto other = open();
    one.reset();
    bus_.reset();
    EXPECT_TRUE(failed_with(read(*other).result, not_connected));
    other.reset();
    EXPECT_EQ(bus_.unplug(headset), no_such_headset);
}

TEST_F(BusTest, fails_one_read_when_told_to) {
    const int headset = plug(jabra);
    const auto opened = open();
    auto reading = read_on_thread(*opened);
    EXPECT_EQ(bus_.misbehave(headset, Fault::read_fails), "");
    ASSERT_TRUE(is_over(reading));
    EXPECT_TRUE(failed_with(reading.get().result, io_error));
    EXPECT_EQ(read(*opened).result.status, Status::timed_out) << "once only";
    EXPECT_TRUE(opened->is_connected());
}

TEST_F(BusTest, answers_one_read_with_a_single_byte_when_told_to) {
    const int headset = plug(jabra);
    const auto opened = open();
    EXPECT_EQ(bus_.misbehave(headset, Fault::read_one_byte), "");
    const Read one_byte = read(*opened);
    EXPECT_EQ(one_byte.result.status, Status::done);
    EXPECT_EQ(one_byte.report, Bytes{0x00});
    EXPECT_EQ(read(*opened).result.status, Status::timed_out) << "once only";
}

TEST_F(BusTest, answers_one_read_with_nothing_when_told_to) {
    const int headset = plug(jabra);
    const auto opened = open();
    EXPECT_EQ(bus_.misbehave(headset, Fault::read_zero_bytes), "");
    const Read nothing = read(*opened);
    EXPECT_EQ(nothing.result.status, Status::done);
    EXPECT_EQ(nothing.report, Bytes{});
    EXPECT_EQ(read(*opened).result.status, Status::timed_out) << "once only";
}

TEST_F(BusTest, fails_reads_of_every_opening_and_keeps_a_fault_of_another_kind) {
    const int headset = plug(jabra);
    const auto telephony = open(telephony_page);
    const auto consumer = open(consumer_page);
    bus_.misbehave(headset, Fault::write_fails);
    bus_.misbehave(headset, Fault::read_fails);
    EXPECT_TRUE(failed_with(read(*telephony).result, io_error));
    EXPECT_TRUE(failed_with(read(*consumer).result, io_error));
    EXPECT_TRUE(failed_with(write(*telephony, {0x02, 0x01, 0x00}), io_error));
}

}  // namespace
}  // namespace bus_test
