#include "tools/headset/end_request.h"

#include <pthread.h>

#include "platform/thread.h"

namespace headset {

EndRequest::EndRequest(std::function<void()> end) : end_(std::move(end)) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM})
        sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, &former_);
    thread_ = platform::start_thread("headset-signals", [this, signals] { wait(signals); });
}

EndRequest::~EndRequest() {
    over_ = true;
    pthread_kill(thread_.native_handle(), SIGTERM);
    thread_.join();
    pthread_sigmask(SIG_SETMASK, &former_, nullptr);
}

void EndRequest::wait(const sigset_t& signals) {
    int signal = 0;
    sigwait(&signals, &signal);
    if (!over_)
        end_();
}

}  // namespace headset
