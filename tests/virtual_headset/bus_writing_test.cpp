#include <future>
#include <gtest/gtest.h>
#include <thread>

#include "tests/support/recording_logger.h"
#include "tests/virtual_headset/bus.h"

namespace bus_test {
namespace {

using namespace std::chrono_literals;
using test_support::patience;
using Status = IoResult::Status;

TEST_F(BusTest, records_an_output_report_with_its_time_and_the_size_of_the_write) {
    const int headset = plug(jabra);
    const auto before = std::chrono::steady_clock::now();
    const IoResult result = write(*open(), {0x02, 0x05, 0x00});
    EXPECT_EQ(result.status, Status::done);
    EXPECT_EQ(result.size, 3U);
    const auto outputs = bus_.outputs(headset);
    ASSERT_EQ(outputs->size(), 1U);
    EXPECT_EQ(outputs->front().report, (Bytes{0x02, 0x05, 0x00}));
    EXPECT_EQ(outputs->front().written_size, 3U);
    EXPECT_GE(outputs->front().time, before);
    EXPECT_LE(outputs->front().time, std::chrono::steady_clock::now());
}

struct Cut {
    const char* what;
    USAGE page;
    Bytes written;
    Bytes arrived;
};

TEST_F(BusTest, cuts_a_write_to_the_length_of_its_report) {
    const Cut cuts[] = {
        {"longer than the report", telephony_page, {0x09, 0x01, 0xAA, 0xBB}, {0x09, 0x01}},
        {"as long as the report", telephony_page, {0x09, 0x01}, {0x09, 0x01}},
        {"shorter than the report", telephony_page, {0x09}, {0x09}},
        {"an id that the collection does not have",
         telephony_page,
         {0x77, 0x01, 0x02, 0x03},
         {0x77, 0x01, 0x02, 0x03}},
        {"an id of another collection", consumer_page, {0x09, 0x01, 0xAA, 0xBB}, {0x09, 0x01, 0xAA, 0xBB}},
    };
    for (const Cut& cut : cuts) {
        const int headset = plug(poly);
        const IoResult result = write(*open(cut.page), cut.written);
        EXPECT_EQ(result.status, Status::done) << cut.what;
        EXPECT_EQ(result.size, cut.written.size()) << cut.what << ": the writer hears of no cut";
        const auto outputs = bus_.outputs(headset);
        EXPECT_EQ(outputs->back().report, cut.arrived) << cut.what;
        EXPECT_EQ(outputs->back().written_size, cut.written.size()) << cut.what;
        bus_.reset();
    }
}

TEST_F(BusTest, lights_the_indicators_that_a_report_sets) {
    const int headset = plug(jabra);
    const auto opened = open();
    EXPECT_EQ(bus_.indicator(headset, off_hook_led), false);
    write(*opened, {0x02, 0x85, 0x00});  // off-hook, mute and ringer
    EXPECT_EQ(bus_.indicator(headset, off_hook_led), true);
    EXPECT_EQ(bus_.indicator(headset, mute_led), true);
    EXPECT_EQ(bus_.indicator(headset, ringer), true);
    EXPECT_EQ(bus_.indicator(headset, ring_led), false);
    write(*opened, {0x02, 0x08, 0x00});  // ring
    EXPECT_EQ(bus_.indicator(headset, off_hook_led), false);
    EXPECT_EQ(bus_.indicator(headset, mute_led), false);
    EXPECT_EQ(bus_.indicator(headset, ringer), false);
    EXPECT_EQ(bus_.indicator(headset, ring_led), true);
}

TEST_F(BusTest, leaves_indicators_of_other_reports_alone) {
    const int headset = plug(poly);
    const auto opened = open();
    write(*opened, {0x09, 0x01});
    write(*opened, {0x17, 0x01});
    EXPECT_EQ(bus_.indicator(headset, mute_led), true);
    EXPECT_EQ(bus_.indicator(headset, off_hook_led), true);
    write(*opened, {0x09, 0x00});
    EXPECT_EQ(bus_.indicator(headset, mute_led), false);
    EXPECT_EQ(bus_.indicator(headset, off_hook_led), true);
}

TEST_F(BusTest, takes_missing_bytes_of_a_short_report_for_dark) {
    const int headset = plug(poly);
    const auto opened = open();
    write(*opened, {0x09, 0x01});
    write(*opened, {0x09});
    EXPECT_EQ(bus_.indicator(headset, mute_led), false);
}

TEST_F(BusTest, has_no_indicators_but_those_of_the_descriptor) {
    const int headset = plug(jabra);
    EXPECT_EQ(bus_.indicator(headset, {led_page, 0x4B}), std::nullopt);
    EXPECT_EQ(bus_.indicator(headset, hook_switch), std::nullopt) << "a key";
    EXPECT_EQ(bus_.wait_indicator(headset, {led_page, 0x4B}, true, 1h), std::nullopt);
}

TEST_F(BusTest, keeps_indicators_and_reports_of_an_unplugged_headset_and_starts_dark_when_replugged) {
    const int headset = plug(jabra);
    write(*open(), {0x02, 0x01, 0x00});
    bus_.unplug(headset);
    EXPECT_EQ(bus_.indicator(headset, off_hook_led), true);
    EXPECT_EQ(bus_.outputs(headset)->size(), 1U);
    bus_.replug(headset);
    EXPECT_EQ(bus_.indicator(headset, off_hook_led), false);
    EXPECT_EQ(bus_.outputs(headset)->size(), 1U);
}

TEST_F(BusTest, waits_for_an_indicator) {
    const int headset = plug(jabra);
    const auto opened = open();
    EXPECT_EQ(bus_.wait_indicator(headset, mute_led, false, 0ms), true);
    EXPECT_EQ(bus_.wait_indicator(headset, mute_led, true, 5ms), false);
    std::thread writer([&] { write(*opened, {0x02, 0x04, 0x00}); });
    EXPECT_EQ(bus_.wait_indicator(headset, mute_led, true, patience), true);
    writer.join();
}

TEST_F(BusTest, waits_for_a_number_of_output_reports) {
    const int headset = plug(jabra);
    const auto opened = open();
    EXPECT_EQ(bus_.wait_outputs(headset, 0, 0ms), true);
    EXPECT_EQ(bus_.wait_outputs(headset, 1, 5ms), false);
    std::thread writer([&] {
        write(*opened, {0x02, 0x04, 0x00});
        write(*opened, {0x02, 0x00, 0x00});
    });
    EXPECT_EQ(bus_.wait_outputs(headset, 2, patience), true);
    writer.join();
    EXPECT_EQ(bus_.wait_outputs(headset, 1, 0ms), true) << "at least";
}

// ---- faults

TEST_F(BusTest, fails_every_write_until_the_headset_behaves_again) {
    const int headset = plug(jabra);
    const auto opened = open();
    bus_.misbehave(headset, Fault::write_fails);
    EXPECT_TRUE(failed_with(write(*opened, {0x02, 0x01, 0x00}), io_error));
    EXPECT_TRUE(failed_with(write(*opened, {0x02, 0x01, 0x00}), io_error));
    EXPECT_EQ(bus_.outputs(headset)->size(), 0U);
    EXPECT_EQ(bus_.indicator(headset, off_hook_led), false);
    bus_.misbehave(headset, Fault::none);
    EXPECT_EQ(write(*opened, {0x02, 0x01, 0x00}).status, Status::done);
}

TEST_F(BusTest, is_unplugged_by_a_write_when_told_to) {
    const int headset = plug(jabra);
    const auto opened = open();
    take_changes();
    bus_.misbehave(headset, Fault::unplug_in_write);
    EXPECT_TRUE(failed_with(write(*opened, {0x02, 0x01, 0x00}), not_connected));
    EXPECT_EQ(take_changes(), std::vector(3, false));
    EXPECT_TRUE(failed_with(write(*opened, {0x02, 0x01, 0x00}), not_connected));
    EXPECT_EQ(take_changes(), std::vector<bool>()) << "it left once";
    EXPECT_EQ(bus_.unplug(headset), not_plugged);
}

/// A headset that takes no output report, on a clock that stands still, and a write to it.
class HangingWrite : public BusTest {
  protected:
    void SetUp() override {
        clock_.stop();
        headset_ = plug(jabra);
        opened_ = open();
        bus_.misbehave(headset_, Fault::write_hangs);
        writing_ = std::async(std::launch::async, [this] { return write(*opened_, {0x02, 0x01, 0x00}); });
        ASSERT_TRUE(clock_.wait_for_sleepers(1, patience));
    }
    void TearDown() override {
        clock_.go();
        EXPECT_EQ(bus_.outputs(headset_)->size(), 0U);
    }

    /// What came of the write.
    IoResult result() {
        return writing_.wait_for(patience) == std::future_status::ready
                   ? writing_.get()
                   : IoResult{Status::done, 0, L"still hangs"};
    }

    int headset_ = no_headset;
    std::unique_ptr<HidInterface> opened_;
    std::future<IoResult> writing_;
};

TEST_F(HangingWrite, runs_into_its_time_limit) {
    clock_.advance(999ms);
    EXPECT_EQ(writing_.wait_for(2ms), std::future_status::timeout);
    clock_.advance(1ms);
    const IoResult timed_out = result();
    EXPECT_EQ(timed_out.status, Status::timed_out);
    EXPECT_EQ(timed_out.size, 0U);
}

TEST_F(HangingWrite, is_released_by_a_cancel) {
    opened_->cancel();
    EXPECT_EQ(result().status, Status::cancelled);
}

TEST_F(HangingWrite, is_not_released_by_the_end_of_reading) {
    opened_->end_reading();
    EXPECT_EQ(writing_.wait_for(2ms), std::future_status::timeout);
    clock_.advance(1s);
    EXPECT_EQ(result().status, Status::timed_out);
}

TEST_F(HangingWrite, fails_when_the_headset_is_unplugged) {
    bus_.unplug(headset_);
    EXPECT_TRUE(failed_with(result(), not_connected));
}

TEST_F(HangingWrite, holds_up_neither_reads_nor_other_headsets) {
    const int other = plug(game_voice);
    bus_.press(headset_, hook_switch);
    EXPECT_EQ(read_all(*opened_).size(), 2U);
    EXPECT_EQ(bus_.press(other, {button_page, 0x11}), "");
    clock_.advance(1s);
    EXPECT_EQ(result().status, Status::timed_out);
}

TEST_F(HangingWrite, is_released_by_a_cancel_that_comes_at_any_moment) {
    clock_.advance(1s);
    EXPECT_EQ(result().status, Status::timed_out);
    for (int i = 0; i < 50; ++i) {
        writing_ = std::async(std::launch::async, [this] { return write(*opened_, {0x02, 0x01, 0x00}); });
        EXPECT_TRUE(test_support::eventually([this] {
            opened_->cancel();
            return writing_.wait_for(0ms) == std::future_status::ready;
        }));
        EXPECT_EQ(result().status, Status::cancelled);
    }
}

// ---- expectations

TEST_F(BusTest, verifies_that_the_expected_reports_came_in_order_and_nothing_else) {
    const int headset = plug(jabra);
    const auto opened = open();
    EXPECT_EQ(bus_.expect(headset, Bytes{0x02, 0x01, 0x00}), "");
    EXPECT_EQ(bus_.expect(headset, Bytes{0x02, 0x00, 0x00}), "");
    EXPECT_EQ(write(*opened, {0x02, 0x01, 0x00, 0xFF}).status, Status::done) << "compared as it arrives";
    EXPECT_EQ(write(*opened, {0x02, 0x00, 0x00}).status, Status::done);
    EXPECT_EQ(bus_.verify(headset, 0ms), "");
    EXPECT_EQ(bus_.outputs(headset)->size(), 2U);
}

TEST_F(BusTest, fails_the_write_of_another_report_than_the_expected_one) {
    const int headset = plug(jabra);
    bus_.expect(headset, Bytes{0x02, 0x01, 0x00});
    EXPECT_TRUE(failed_with(write(*open(), {0x02, 0xA5, 0x0C}), L"The report was not expected."));
    EXPECT_EQ(bus_.outputs(headset)->size(), 0U);
    EXPECT_EQ(bus_.indicator(headset, off_hook_led), false);
    EXPECT_EQ(bus_.verify(headset, patience), "wanted report 02 01 00, found 02 a5 0c");
}

TEST_F(BusTest, fails_a_write_beyond_those_expected) {
    const int headset = plug(jabra);
    const auto opened = open();
    bus_.expect(headset, Bytes{0x02, 0x01, 0x00});
    write(*opened, {0x02, 0x01, 0x00});
    EXPECT_TRUE(failed_with(write(*opened, {0x02, 0x01, 0x00}), L"The report was not expected."));
    EXPECT_EQ(bus_.verify(headset, patience), "wanted report none, found 02 01 00");
}

TEST_F(BusTest, verifies_the_first_of_several_wrong_reports) {
    const int headset = plug(jabra);
    const auto opened = open();
    bus_.expect(headset, Bytes{0x02, 0x01, 0x00});
    write(*opened, {0x02, 0x03, 0x00});
    write(*opened, {0x02, 0x04, 0x00});
    EXPECT_EQ(bus_.verify(headset, patience), "wanted report 02 01 00, found 02 03 00");
}

TEST_F(BusTest, verifies_that_an_expected_report_is_missing) {
    const int headset = plug(jabra);
    bus_.expect(headset, Bytes{0x02, 0x01, 0x00});
    bus_.expect(headset, Bytes{0x02, 0x00, 0x00});
    write(*open(), {0x02, 0x01, 0x00});
    EXPECT_EQ(bus_.verify(headset, 5ms), "wanted report 02 00 00, found none");
}

TEST_F(BusTest, waits_for_expected_reports) {
    const int headset = plug(jabra);
    const auto opened = open();
    bus_.expect(headset, Bytes{0x02, 0x01, 0x00});
    std::thread writer([&] { write(*opened, {0x02, 0x01, 0x00}); });
    EXPECT_EQ(bus_.verify(headset, patience), "");
    writer.join();
}

TEST_F(BusTest, expects_nothing_any_more_once_verified) {
    const int headset = plug(jabra);
    const auto opened = open();
    bus_.expect(headset, Bytes{0x02, 0x01, 0x00});
    bus_.expect(headset, Bytes{0x02, 0x01, 0x00});
    write(*opened, {0x02, 0x07, 0x00});
    EXPECT_NE(bus_.verify(headset, patience), "");
    EXPECT_EQ(bus_.verify(headset, 0ms), "");
    EXPECT_EQ(write(*opened, {0x02, 0x07, 0x00}).status, Status::done);
}

}  // namespace
}  // namespace bus_test
