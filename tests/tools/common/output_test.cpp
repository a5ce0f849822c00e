#include "tools/common/output.h"

#include <gtest/gtest.h>
#include <new>

namespace tools {
namespace {

TEST(Output, a_stream_hands_on_what_is_written) {
    testing::internal::CaptureStdout();
    OutputStream stream;
    stream << "one " << 2 << std::flush;
    stream << '\n';
    stream.flush();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "one 2\n");
}

TEST(Fail, says_what_is_wrong_in_one_line) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(fail("tool", 71, std::runtime_error("no \x1B[2J\nfile")), 71);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "tool: no ?[2J?file\n");
}

TEST(Fail, has_words_for_a_lack_of_memory) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(fail("tool", 71, std::bad_alloc()), 71);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "tool: there is not enough memory\n");
}

}  // namespace
}  // namespace tools
