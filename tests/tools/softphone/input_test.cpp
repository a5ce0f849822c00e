#include "tools/softphone/input.h"

#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

#include "tools/softphone/event_queue.h"

namespace softphone {
namespace {

/// A reader at the end of a pipe, and what it has handed over.
class LineReaderTest : public testing::Test {
  protected:
    LineReaderTest() : LineReaderTest(make_pipe()) {}

    bool write_and_read(std::string_view text) {
        EXPECT_EQ(write(sender_.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
        return reader_.read(keep_);
    }
    bool close_and_read() {
        sender_ = platform::common::FileDescriptor();
        return reader_.read(keep_);
    }

    using Lines = std::vector<std::pair<std::string, std::string>>;
    Lines lines_;
    std::size_t wanted_ = 100;

  private:
    static std::array<int, 2> make_pipe() {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        return ends;
    }
    explicit LineReaderTest(std::array<int, 2> ends)
        : sender_(ends[1]), reader_(platform::common::FileDescriptor(ends[0]), "f") {}

    platform::common::FileDescriptor sender_;
    LineReader reader_;
    LineHandler keep_ = [this](const std::string& line, const std::string& place) {
        lines_.emplace_back(line, place);
        return lines_.size() < wanted_;
    };
};

TEST_F(LineReaderTest, lines_come_with_their_places) {
    EXPECT_TRUE(write_and_read("one\n\nthree\n"));
    EXPECT_EQ(lines_, (Lines{{"one", "f:1"}, {"", "f:2"}, {"three", "f:3"}}));
}

TEST_F(LineReaderTest, a_line_in_pieces_waits_for_its_end) {
    EXPECT_TRUE(write_and_read("on"));
    EXPECT_TRUE(lines_.empty());
    EXPECT_TRUE(write_and_read("e\ntwo"));
    EXPECT_EQ(lines_, (Lines{{"one", "f:1"}}));
}

TEST_F(LineReaderTest, the_last_line_may_lack_its_newline) {
    EXPECT_TRUE(write_and_read("one\ntwo"));
    EXPECT_FALSE(close_and_read());
    EXPECT_EQ(lines_, (Lines{{"one", "f:1"}, {"two", "f:2"}}));
}

TEST_F(LineReaderTest, no_more_lines_are_handed_over_than_wanted) {
    wanted_ = 2;
    EXPECT_FALSE(write_and_read("1\n2\n3\n"));
    EXPECT_EQ(lines_.size(), 2U);
}

TEST(OpenScript, a_missing_file_is_refused) {
    EXPECT_THROW(open_script("/no/such/file"), CommandError);
}

TEST(OpenScript, a_folder_is_refused_when_it_is_read) {
    const auto folder = open_script("/");
    EXPECT_THROW(folder->read([](const std::string&, const std::string&) { return true; }), CommandError);
}

TEST(EventQueue, several_threads_post_and_nothing_is_lost_or_reordered) {
    EventQueue queue;
    constexpr int each = 1000;
    auto post = [&](int headset) {
        for (int i = 0; i < each; ++i)
            queue.post(ReportSent{headset, {static_cast<std::uint8_t>(i % 256)}});
    };
    std::thread first(post, 1);
    std::thread second(post, 2);
    std::array<int, 3> taken{};
    while (taken[1] + taken[2] < 2 * each)
        for (const auto& event : queue.take_all()) {
            const auto& report = std::get<ReportSent>(event);
            int& count = taken.at(static_cast<std::size_t>(report.headset));
            ASSERT_EQ(report.report.at(0), count % 256);
            ++count;
        }
    first.join();
    second.join();
}

}  // namespace
}  // namespace softphone
