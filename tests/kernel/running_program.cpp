#include "tests/kernel/running_program.h"

#include <array>
#include <csignal>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/recording_logger.h"
#include "tests/support/run_program.h"

namespace test_support {
using platform::common::FileDescriptor;

RunningProgram::RunningProgram(const std::string& program, const std::vector<std::string>& arguments) {
    std::array<int, 2> ends{};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    line_ = FileDescriptor(ends[0]);
    const FileDescriptor others_end(ends[1]);
    process_ = fork();
    if (process_ == 0) {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            dup2(others_end.get(), stream);
        become_program(program, arguments);
    }
}

RunningProgram::~RunningProgram() {
    if (process_ > 0) {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
}

void RunningProgram::type(const std::string& line) {
    const std::string typed = line + '\n';
    EXPECT_EQ(send(line_.get(), typed.data(), typed.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(typed.size()));
}

void RunningProgram::send_signal(int signal) const {
    EXPECT_EQ(kill(process_, signal), 0);
}

testing::AssertionResult RunningProgram::says(const std::string& text) {
    auto place = said_.find(text, found_);
    while (place == std::string::npos && read_more())
        place = said_.find(text, found_);
    if (place == std::string::npos)
        return testing::AssertionFailure()
               << testing::PrintToString(text) << " does not come after " << said_.substr(found_);
    found_ = place + text.size();
    return testing::AssertionSuccess();
}

int RunningProgram::wait_for_end() {
    int status = 0;
    if (!eventually([&] { return waitpid(process_, &status, WNOHANG) == process_; }))
        return -1;
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// False when nothing comes any more.
bool RunningProgram::read_more() {
    constexpr auto limit = std::chrono::milliseconds(patience);
    pollfd source{line_.get(), POLLIN, 0};
    std::array<char, 4096> chunk{};
    if (poll(&source, 1, static_cast<int>(limit.count())) != 1)
        return false;
    const ssize_t size = read(source.fd, chunk.data(), chunk.size());
    said_.append(chunk.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
    return size > 0;
}

}  // namespace test_support
