#include "platform/linux/report_reader.h"

#include <array>
#include <future>
#include <gtest/gtest.h>
#include <numeric>
#include <sys/socket.h>
#include <vector>

#include "tests/support/recording_logger.h"

namespace {

using namespace std::chrono_literals;
using platform::IoResult;
using platform::no_timeout;
using platform::common::FileDescriptor;
using platform::linux_platform::ReportReader;
using test_support::patience;
using Status = IoResult::Status;
using Bytes = std::vector<std::uint8_t>;

/// A pair of sockets that keep messages apart, as hidraw keeps reports apart.
class ReportReaderTest : public testing::Test {
  protected:
    using Ends = std::array<FileDescriptor, 2>;

    static Ends make_ends() {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends.data()), 0);
        return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
    }

    void send_report(const Bytes& report) {
        EXPECT_EQ(send(device_.get(), report.data(), report.size(), 0), static_cast<ssize_t>(report.size()));
    }
    void pull_out() { device_ = FileDescriptor(); }

    struct Read {
        IoResult result;
        Bytes report;
    };
    static Read read(ReportReader& reader, std::chrono::milliseconds timeout, std::size_t room = 8) {
        Bytes report(room);
        IoResult result = reader.read(report, timeout);
        report.resize(result.size);
        return {std::move(result), report};
    }
    static std::future<Read> start_read(ReportReader& reader) {
        return std::async(std::launch::async, [&reader] { return read(reader, no_timeout); });
    }
    static Status status_of(std::future<Read>& reading) {
        EXPECT_EQ(reading.wait_for(patience), std::future_status::ready);
        return reading.get().result.status;
    }

    /// Cancels until the read has ended: one that is only about to wait is not released by an earlier cancel.
    static Status cancel_until_over(ReportReader& reader, std::future<Read>& reading) {
        do {
            reader.cancel();
        } while (reading.wait_for(1ms) != std::future_status::ready);
        return reading.get().result.status;
    }

    Ends ends_ = make_ends();
    FileDescriptor& node_ = ends_[0];
    FileDescriptor& device_ = ends_[1];
    ReportReader reader_{node_.get(), [](std::span<const std::uint8_t>) { return true; }};
};

TEST_F(ReportReaderTest, reads_one_report_at_a_time_in_order) {
    send_report({1, 2, 3});
    send_report({4});
    EXPECT_EQ(read(reader_, no_timeout).report, (Bytes{1, 2, 3}));
    EXPECT_EQ(read(reader_, no_timeout).report, (Bytes{4}));
}

TEST_F(ReportReaderTest, cuts_a_report_to_the_room) {
    send_report({1, 2, 3});
    EXPECT_EQ(read(reader_, no_timeout, 2).report, (Bytes{1, 2}));
    EXPECT_EQ(read(reader_, 0ms).result.status, Status::timed_out);
}

TEST_F(ReportReaderTest, drops_reports_that_are_not_wanted) {
    ReportReader reader(node_.get(), [](std::span<const std::uint8_t> report) { return report[0] == 2; });
    send_report({1, 1});
    send_report({2, 2});
    send_report({3, 3});
    EXPECT_EQ(read(reader, no_timeout).report, (Bytes{2, 2}));
    EXPECT_EQ(read(reader, 0ms).result.status, Status::timed_out);
}

TEST_F(ReportReaderTest, waits_until_a_report_comes) {
    auto reading = start_read(reader_);
    send_report({7});
    EXPECT_EQ(reading.wait_for(patience), std::future_status::ready);
    EXPECT_EQ(reading.get().report, (Bytes{7}));
}

TEST_F(ReportReaderTest, gives_up_when_the_time_is_over) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(read(reader_, 20ms).result.status, Status::timed_out);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
    EXPECT_EQ(read(reader_, 0ms).result.status, Status::timed_out);
}

TEST_F(ReportReaderTest, unwanted_reports_do_not_lengthen_the_wait) {
    ReportReader reader(node_.get(), [](std::span<const std::uint8_t>) { return false; });
    send_report({1});
    EXPECT_EQ(read(reader, 20ms).result.status, Status::timed_out);
}

TEST_F(ReportReaderTest, fails_when_the_device_has_gone_after_the_reports_that_came_before) {
    send_report({1});
    pull_out();
    EXPECT_EQ(read(reader_, no_timeout).report, (Bytes{1}));
    const IoResult result = read(reader_, no_timeout).result;
    EXPECT_EQ(result.status, Status::failed);
    EXPECT_FALSE(result.error.empty());
}

TEST_F(ReportReaderTest, an_unplug_ends_a_read_that_waits) {
    auto reading = start_read(reader_);
    pull_out();
    EXPECT_EQ(status_of(reading), Status::failed);
}

TEST_F(ReportReaderTest, tells_whether_the_device_is_there) {
    EXPECT_TRUE(reader_.is_connected());
    pull_out();
    EXPECT_FALSE(reader_.is_connected());
}

TEST_F(ReportReaderTest, cancel_ends_every_read_that_waits_and_no_later_one) {
    std::vector<std::future<Read>> reads;
    for (int i = 0; i < 4; ++i) {
        reads.push_back(start_read(reader_));
    }
    for (auto& reading : reads) {
        EXPECT_EQ(cancel_until_over(reader_, reading), Status::cancelled);
    }
    send_report({1});
    EXPECT_EQ(read(reader_, no_timeout).report, (Bytes{1}));
}

TEST_F(ReportReaderTest, cancel_without_a_read_does_nothing) {
    reader_.cancel();
    EXPECT_EQ(read(reader_, 0ms).result.status, Status::timed_out);
}

TEST_F(ReportReaderTest, end_refuses_reads_that_wait_and_all_later_ones) {
    auto first = start_read(reader_);
    auto second = start_read(reader_);
    reader_.end();
    EXPECT_EQ(status_of(first), Status::cancelled);
    EXPECT_EQ(status_of(second), Status::cancelled);
    send_report({1});
    EXPECT_EQ(read(reader_, no_timeout).result.status, Status::cancelled);
    reader_.cancel();
    EXPECT_EQ(read(reader_, 0ms).result.status, Status::cancelled);
}

TEST_F(ReportReaderTest, readers_and_cancellers_at_once_lose_no_report) {
    constexpr int reports = 300;
    std::atomic<int> taken{0};
    const auto read_all = [&] {
        while (taken < reports) {
            taken += read(reader_, 5ms).result.status == Status::done ? 1 : 0;
        }
    };
    auto one = std::async(std::launch::async, read_all);
    auto other = std::async(std::launch::async, read_all);
    for (int i = 0; i < reports; ++i) {
        while (send(device_.get(), "x", 1, 0) != 1) {
            reader_.cancel();
        }
        reader_.cancel();
    }
    EXPECT_EQ(one.wait_for(patience), std::future_status::ready);
    EXPECT_EQ(other.wait_for(patience), std::future_status::ready);
    EXPECT_EQ(taken, reports);
}

}  // namespace
