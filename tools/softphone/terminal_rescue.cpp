#include "tools/softphone/terminal_rescue.h"

#include <array>
#include <csignal>
#include <cstddef>
#include <string_view>
#include <termios.h>
#include <unistd.h>

namespace softphone {
namespace {

constexpr std::array fatal_signals{SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

// A handler reaches globals only.
termios g_modes;
std::array<struct sigaction, fatal_signals.size()> g_former_actions;

void restore_former_actions() {
    for (std::size_t index = 0; index < fatal_signals.size(); ++index)
        sigaction(fatal_signals[index], &g_former_actions[index], nullptr);
}

/// Calls nothing but what a signal handler may (signal-safety(7)).
void rescue(int signal) {
    // No scroll region, a visible cursor, and the last row (DECSTBM, DECTCEM, CUP).
    constexpr std::string_view whole_screen = "\x1b[r\x1b[?25h\x1b[999;1H\r\n";
    [[maybe_unused]] const auto ignored = ::write(STDOUT_FILENO, whole_screen.data(), whole_screen.size());
    tcsetattr(STDIN_FILENO, TCSANOW, &g_modes);
    // Delivered on return, now to the former effect.
    restore_former_actions();
    raise(signal);
}

}  // namespace

TerminalRescue::TerminalRescue() {
    tcgetattr(STDIN_FILENO, &g_modes);
    struct sigaction action {};
    action.sa_handler = rescue;
    sigemptyset(&action.sa_mask);
    for (std::size_t index = 0; index < fatal_signals.size(); ++index)
        sigaction(fatal_signals[index], &action, &g_former_actions[index]);
}

TerminalRescue::~TerminalRescue() {
    restore_former_actions();
}

}  // namespace softphone
