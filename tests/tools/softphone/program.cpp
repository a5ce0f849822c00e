#include "tests/tools/softphone/program.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utility>
#include <utmp.h>

namespace softphone {
namespace {

using Clock = std::chrono::steady_clock;

// Far more than anything here takes, also under a sanitizer on a busy machine.
constexpr std::chrono::seconds patience{60};

/// The panel is painted at any time, in between what a line editor writes for one key and the next. It hides
/// the cursor for that.
std::string without_panel(std::string output) {
    constexpr std::string_view begin = "\x1b[?25l";
    constexpr std::string_view end = "\x1b[?25h";
    for (auto start = output.find(begin); start != std::string::npos; start = output.find(begin, start)) {
        const auto stop = output.find(end, start);
        output.erase(start, stop == std::string::npos ? stop : stop + end.size() - start);
    }
    return output;
}

}  // namespace

TerminalProgram::TerminalProgram(const std::vector<std::string>& arguments, unsigned short rows,
                                 unsigned short columns, const std::string& state_folder) {
    const winsize size{rows, columns, 0, 0};
    EXPECT_EQ(openpty(&terminal_, &other_side_, nullptr, nullptr, &size), 0);
    for (const int descriptor : {terminal_, other_side_})
        fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    child_ = fork();
    if (child_ == 0) {
        setenv("TERM", "xterm", 1);
        setenv("NO_COLOR", "1", 1);
        setenv("XDG_STATE_HOME", state_folder.c_str(), 1);
        login_tty(dup(other_side_));
        test_support::become_program(SOFTPHONE_PROGRAM, arguments);
    }
}

TerminalProgram::~TerminalProgram() {
    if (child_ > 0) {
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }
    close(other_side_);
    if (terminal_ >= 0)
        close(terminal_);
}

void TerminalProgram::type(const std::string& text) {
    EXPECT_EQ(write(terminal_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

void TerminalProgram::resize(unsigned short rows, unsigned short columns) {
    const winsize size{rows, columns, 0, 0};
    EXPECT_EQ(ioctl(terminal_, TIOCSWINSZ, &size), 0);
}

void TerminalProgram::send_signal(int signal) {
    EXPECT_EQ(kill(child_, signal), 0);
}

void TerminalProgram::hang_up() {
    close(std::exchange(terminal_, -1));
}

testing::AssertionResult TerminalProgram::shows(const std::string& text) {
    std::string below;
    const bool found = wait_until([&] {
        below = without_panel(output_);
        return below.find(text, seen_) != std::string::npos;
    });
    if (!found)
        return testing::AssertionFailure() << testing::PrintToString(text) << " does not come after "
                                           << testing::PrintToString(below.substr(seen_));
    seen_ = below.find(text, seen_) + text.size();
    return testing::AssertionSuccess();
}

testing::AssertionResult TerminalProgram::paints(const std::string& text) {
    if (wait_until([&] { return output_.find(text) != std::string::npos; }))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << testing::PrintToString(text) << " is not painted";
}

/// Reads until `done`. False when it takes too long.
bool TerminalProgram::wait_until(const std::function<bool()>& done) {
    for (const auto deadline = Clock::now() + patience; Clock::now() < deadline; read_more())
        if (done())
            return true;
    return false;
}

int TerminalProgram::wait_for_end() {
    int status = -1;
    if (!wait_until([&] { return waitpid(child_, &status, WNOHANG) == child_; }))
        return -1;
    child_ = -1;
    while (read_more())
        continue;
    return status;
}

bool TerminalProgram::waits_stopped() {
    int status = 0;
    return wait_until([&] { return waitpid(child_, &status, WNOHANG | WUNTRACED) == child_; }) &&
           WIFSTOPPED(status);
}

bool TerminalProgram::in_line_mode() const {
    termios modes{};
    EXPECT_EQ(tcgetattr(terminal_, &modes), 0);
    return (modes.c_lflag & ICANON) != 0 && (modes.c_lflag & ECHO) != 0;
}

/// Takes what there is, or waits a moment for it. False when nothing came.
bool TerminalProgram::read_more() {
    pollfd source{terminal_, POLLIN, 0};
    if (poll(&source, 1, 20) <= 0)
        return false;
    std::array<char, 4096> chunk;
    const ssize_t size = read(terminal_, chunk.data(), chunk.size());
    if (size > 0)
        output_.append(chunk.data(), static_cast<std::size_t>(size));
    return size > 0;
}

}  // namespace softphone
