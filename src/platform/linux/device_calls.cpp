#include "platform/linux/device_calls.h"

#include <list>
#include <system_error>
#include <utility>

#include "platform/linux/system_error.h"
#include "platform/mutex.h"
#include "platform/thread.h"

namespace platform::linux_platform {

using std::chrono::steady_clock;

/// A call whose caller waits.
struct DeviceCalls::Pending {
    explicit Pending(Call work) : call(std::move(work)) {}

    Call call;
    IoResult result{};
    bool begun = false;
    bool over = false;  ///< the result is there, or nobody wants it any more
};

/// What the callers share with the thread, which may live longer than they.
class DeviceCalls::State {
  public:
    IoResult run(const std::shared_ptr<State>& self, Call call, std::chrono::milliseconds timeout);
    void cancel();
    void end(const std::shared_ptr<State>& self, std::function<void()> last);

  private:
    void start(const std::shared_ptr<State>& self) REQUIRES(mutex_);

    /// The thread's part.
    void serve();
    static IoResult call(Pending& pending);
    std::shared_ptr<Pending> next() EXCLUDES(mutex_);
    std::shared_ptr<Pending> begin_next() REQUIRES(mutex_);
    void finish(Pending& pending, IoResult result) REQUIRES(mutex_);

    Mutex mutex_;
    Condition changed_;
    std::list<std::shared_ptr<Pending>> waiting_ GUARDED_BY(mutex_);  ///< in the order of their callers
    bool started_ GUARDED_BY(mutex_) = false;
    bool ended_ GUARDED_BY(mutex_) = false;
    std::function<void()> last_;  ///< the thread's, once ended_ is set
};

IoResult DeviceCalls::State::run(const std::shared_ptr<State>& self, Call call,
                                 std::chrono::milliseconds timeout) {
    const auto deadline = steady_clock::now() + timeout;
    const auto pending = std::make_shared<Pending>(std::move(call));
    MutexLock lock(mutex_);
    try {
        start(self);
    } catch (const std::system_error& error) {
        return {.status = IoResult::Status::failed, .error = error_text(error.code().value())};
    }
    waiting_.push_back(pending);
    changed_.notify_all();
    while (!pending->over && steady_clock::now() < deadline) {
        changed_.wait_until(mutex_, deadline);
    }
    finish(*pending, {.status = IoResult::Status::timed_out});
    waiting_.remove(pending);
    return std::move(pending->result);
}

/// Starts the thread unless it runs. Throws std::system_error.
void DeviceCalls::State::start(const std::shared_ptr<State>& self) {
    if (!started_) {
        start_detached_thread("orvex-hid-out", [self] { self->serve(); });
        started_ = true;
    }
}

/// Settles a call that nothing has settled yet.
void DeviceCalls::State::finish(Pending& pending, IoResult result) {
    if (!pending.over) {
        pending.result = std::move(result);
        pending.over = true;
        changed_.notify_all();
    }
}

void DeviceCalls::State::cancel() {
    MutexLock lock(mutex_);
    for (const auto& pending : waiting_) {
        finish(*pending, {.status = IoResult::Status::cancelled});
    }
}

void DeviceCalls::State::end(const std::shared_ptr<State>& self, std::function<void()> last) {
    MutexLock lock(mutex_);
    if (ended_) {
        return;
    }
    last_ = std::move(last);
    try {
        if (last_) {
            start(self);
        }
    } catch (const std::system_error&) {
        last_();  // there is nobody else to do it
    }
    ended_ = true;
    changed_.notify_all();
}

std::shared_ptr<DeviceCalls::Pending> DeviceCalls::State::next() {
    MutexLock lock(mutex_);
    while (!ended_) {
        if (auto begun = begin_next()) {
            return begun;
        }
        changed_.wait(mutex_);
    }
    return nullptr;
}

std::shared_ptr<DeviceCalls::Pending> DeviceCalls::State::begin_next() {
    for (const auto& pending : waiting_) {
        if (!pending->begun && !pending->over) {
            pending->begun = true;
            return pending;
        }
    }
    return nullptr;
}

void DeviceCalls::State::serve() {
    while (const auto pending = next()) {
        IoResult result = call(*pending);
        MutexLock lock(mutex_);
        finish(*pending, std::move(result));
    }
    if (last_) {
        last_();
    }
}

/// Makes the call and lets go of all that it owns. Memory that runs out is a failure of the call, not the end
/// of the process.
IoResult DeviceCalls::State::call(Pending& pending) {
    try {
        return std::exchange(pending.call, nullptr)();
    } catch (const std::exception&) {
        return {.status = IoResult::Status::failed};
    }
}

DeviceCalls::DeviceCalls() : state_(std::make_shared<State>()) {}

DeviceCalls::~DeviceCalls() {
    end_with(nullptr);
}

void DeviceCalls::end_with(std::function<void()> last) {
    state_->end(state_, std::move(last));
}

IoResult DeviceCalls::run(Call call, std::chrono::milliseconds timeout) {
    return state_->run(state_, std::move(call), timeout);
}

void DeviceCalls::cancel() {
    state_->cancel();
}

}  // namespace platform::linux_platform
