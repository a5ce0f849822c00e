#include "tools/softphone/signals.h"

#include <cerrno>
#include <csignal>
#include <sys/signalfd.h>
#include <system_error>

namespace softphone {

Signals::Signals(bool terminal) {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        sigaddset(&set, signal);
    if (terminal)
        for (const int signal : {SIGWINCH, SIGTSTP})
            sigaddset(&set, signal);
    if (const int error = pthread_sigmask(SIG_BLOCK, &set, nullptr))
        throw std::system_error(error, std::generic_category(), "pthread_sigmask");
    descriptor_ = platform::common::FileDescriptor(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (descriptor_.get() < 0)
        throw std::system_error(errno, std::generic_category(), "signalfd");
}

std::optional<int> Signals::take() {
    signalfd_siginfo signal{};
    if (read(descriptor_.get(), &signal, sizeof signal) != static_cast<ssize_t>(sizeof signal))
        return std::nullopt;
    return static_cast<int>(signal.ssi_signo);
}

}  // namespace softphone
