// Ctrl-C, for a command that runs until then.
#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

namespace headset {

/// Calls a function when the program is asked to end (SIGINT, SIGTERM), for as long as it lives. To be made
/// before any thread that the calling one starts: the signals are blocked in these.
class EndRequest {
  public:
    /// \param end  called once at most, on a thread of its own
    explicit EndRequest(std::function<void()> end);
    ~EndRequest();
    EndRequest(const EndRequest&) = delete;
    EndRequest& operator=(const EndRequest&) = delete;

  private:
    void wait(const sigset_t& signals);

    const std::function<void()> end_;
    std::atomic<bool> over_{false};
    sigset_t former_;
    std::thread thread_;
};

}  // namespace headset
