#include "tools/softphone/softphone.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <system_error>

#include "tools/softphone/commands.h"

namespace softphone {
namespace {

constexpr int no_timeout = -1;  // poll(2)
// poll(2) takes an int of milliseconds; a longer wait is made of several.
constexpr std::chrono::milliseconds::rep longest_wait = 1'000'000;

}  // namespace

Softphone::Softphone(const PluginLibrary& library, Signals& signals, Display& display, Printer& printer,
                     bool show_log)
    : library_(library),
      signals_(signals),
      display_(display),
      printer_(printer),
      show_log_(show_log),
      virtual_headsets_(library.virtual_api, *events_),
      host_(library, events_),
      phone_(state_.calls, host_, events_) {}

int Softphone::run(Input& input) {
    input_ = &input;
    host_.start();
    take_events();
    while (!done_)
        wait_once(no_timeout, true);
    host_.stop();
    take_events();
    return status_;
}

void Softphone::print(const Event& event) {
    printer_.print(event, state_.headsets);
}

void Softphone::wait(std::chrono::milliseconds time) {
    run_until(Clock::now() + time, [] { return false; });
}

void Softphone::check(const Expectation& expectation) {
    Finding finding;
    run_until(Clock::now() + expectation.time, [&] {
        finding = expectation.check();
        return finding.outcome != Outcome::waiting;
    });
    const Outcome outcome = finding.outcome == Outcome::waiting ? expectation.at_deadline : finding.outcome;
    const bool met = outcome == Outcome::met;
    if (!met && status_ == exit_ok)
        status_ = exit_expectation_failed;
    print(ExpectationChecked{met, expectation.wanted, finding.found, place_});
}

/// Carries a line out. False when no more are wanted.
bool Softphone::execute(const std::string& line, const std::string& place) {
    place_ = place;
    try {
        if (const Words words = split_words(line); !words.empty()) {
            print(CommandGiven{words.front(), std::string(trimmed(line))});
            run_command(*this, words);
        }
    } catch (const CommandError& error) {
        fail(error.what());
    }
    take_events();
    return !done_;
}

void Softphone::fail(const std::string& text) {
    // What the command did before it failed comes first.
    take_events();
    print(CommandFailed{text, place_});
    if (input_->strict()) {
        status_ = exit_bad_command;
        quit();
    }
}

/// Lets things happen until `done`, which is asked after each. False when the deadline came first, or someone
/// quit.
bool Softphone::run_until(Clock::time_point deadline, const std::function<bool()>& done) {
    take_events();
    while (!done()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (done_ || left.count() <= 0)
            return false;
        wait_once(static_cast<int>(std::min(left.count(), longest_wait)), false);
    }
    return true;
}

/// Waits until something happens, and acts on it. Commands are read only between commands.
void Softphone::wait_once(int timeout_ms, bool for_input) {
    std::array<pollfd, 3> sources{{{events_->descriptor(), POLLIN, 0},
                                   {signals_.descriptor(), POLLIN, 0},
                                   {for_input ? input_->descriptor() : -1, POLLIN, 0}}};
    if (poll(sources.data(), sources.size(), timeout_ms) < 0 && errno != EINTR)
        throw std::system_error(errno, std::generic_category(), "poll");
    take_signals();
    take_events();
    const auto handle = [this](const std::string& line, const std::string& place) {
        return execute(line, place);
    };
    if (sources[2].revents != 0 && !done_ && !input_->read(handle))
        quit();
}

void Softphone::take_signals() {
    while (const auto signal = signals_.take()) {
        if (*signal == SIGWINCH) {
            input_->resized();
        } else if (*signal == SIGTSTP) {
            input_->suspend();
        } else {
            status_ = exit_signal + *signal;
            quit();
        }
    }
}

void Softphone::take_events() {
    // Carrying out a request makes events of its own, which come after those that are waiting.
    for (auto events = events_->take_all(); !events.empty(); events = events_->take_all())
        std::ranges::for_each(events, [this](const Event& event) { take(event); });
    display_.refresh(state_);
}

void Softphone::take(const Event& event) {
    state_.apply(event);
    if (show_log_ || !std::holds_alternative<LogLine>(event))
        print(event);
    if (const auto* request = std::get_if<ActionRequested>(&event); request && automatic_)
        phone_.answer(*request);
}

}  // namespace softphone
