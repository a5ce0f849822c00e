#include "platform/thread.h"

#include <csignal>
#include <latch>
#include <memory>
#include <pthread.h>
#include <string>

namespace platform {

namespace {

/// Blocks every signal for the calling thread, and brings its mask back; a thread that starts meanwhile
/// inherits the block from its first instruction on.
class SignalBlock {
  public:
    SignalBlock() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &former_);
    }
    ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
    SignalBlock(const SignalBlock&) = delete;
    SignalBlock& operator=(const SignalBlock&) = delete;

  private:
    sigset_t former_;
};

}  // namespace

std::thread start_thread(const char* name, std::function<void()> body) {
    const SignalBlock block;
    std::thread thread(std::move(body));
    constexpr std::size_t longest_name = 15;  // pthread_setname_np(3)
    pthread_setname_np(thread.native_handle(), std::string(name).substr(0, longest_name).c_str());
    return thread;
}

void start_detached_thread(const char* name, std::function<void()> body) {
    // The body is held back until the thread is detached: one that was over before would be a thread that
    // nobody joined, if the process ended just then.
    const auto detached = std::make_shared<std::latch>(1);
    start_thread(name, [detached, body = std::move(body)] {
        detached->wait();
        body();
    }).detach();
    detached->count_down();
}

}  // namespace platform
