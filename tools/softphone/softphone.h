// The program: one loop that waits for the plug-in's events, for the user and for signals, and acts on them.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "tools/softphone/event_queue.h"
#include "tools/softphone/expectations.h"
#include "tools/softphone/host.h"
#include "tools/softphone/input.h"
#include "tools/softphone/phone.h"
#include "tools/softphone/plugin_library.h"
#include "tools/softphone/printers.h"
#include "tools/softphone/signals.h"
#include "tools/softphone/state.h"
#include "tools/softphone/virtual_headsets.h"

namespace softphone {

/// Exit statuses of the program.
enum ExitStatus : int {
    exit_ok = 0,
    exit_expectation_failed = 1,
    exit_bad_command = 2,
    exit_no_library = 3,
    exit_system_error = 71,  ///< as EX_OSERR of sysexits.h
    exit_signal = 128,       ///< plus the number of the signal, as shells count
};

/// Everything here is called on the main thread.
class Softphone {
  public:
    /// The objects referred to outlive this one.
    Softphone(const PluginLibrary& library, Signals& signals, Display& display, Printer& printer,
              bool show_log);

    /// Starts the plug-in, carries out the commands of `input` until it ends or someone quits, stops the
    /// plug-in, and returns the exit status.
    int run(Input& input);

    // For the commands.
    State& state() { return state_; }
    Host& host() { return host_; }
    Phone& phone() { return phone_; }
    VirtualHeadsets& virtual_headsets() { return virtual_headsets_; }
    /// Takes in which headsets are plugged now.
    void look_for_headsets() { state_.headsets.take_found(library_.find_headsets()); }
    /// Why there is none among them, of a library that has no virtual ones.
    std::string why_no_headset() const { return library_.why_no_headset(); }
    /// Shows an event at once.
    void print(const Event& event);
    /// Has an event taken in and shown after those that wait already.
    void post(Event event) { events_->post(std::move(event)); }
    void set_automatic(bool automatic) { automatic_ = automatic; }
    /// Lets things happen for a while.
    void wait(std::chrono::milliseconds time);
    /// Waits for what is expected and shows the result.
    void check(const Expectation& expectation);
    void quit() { done_ = true; }

  private:
    using Clock = std::chrono::steady_clock;

    bool execute(const std::string& line, const std::string& place);
    void fail(const std::string& text);
    bool run_until(Clock::time_point deadline, const std::function<bool()>& done);
    void wait_once(int timeout_ms, bool for_input);
    void take_signals();
    void take_events();
    void take(const Event& event);

    const PluginLibrary& library_;
    Signals& signals_;
    Display& display_;
    Printer& printer_;
    const bool show_log_;
    Input* input_ = nullptr;
    State state_;
    std::shared_ptr<EventQueue> events_ = std::make_shared<EventQueue>();
    VirtualHeadsets virtual_headsets_;
    Host host_;
    Phone phone_;
    bool automatic_ = true;  ///< requests from the headset are carried out at once
    bool done_ = false;
    int status_ = exit_ok;
    std::string place_;  ///< of the command that is carried out
};

}  // namespace softphone
