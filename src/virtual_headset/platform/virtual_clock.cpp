#include "virtual_headset/platform/virtual_clock.h"

namespace platform::virtual_platform {

using std::chrono::steady_clock;

class VirtualSleeper final : public Sleeper {
  public:
    explicit VirtualSleeper(VirtualClock& clock) : clock_(clock) {}

    bool sleep(std::chrono::milliseconds duration) override {
        MutexLock lock(clock_.mutex_);
        if (clock_.stopped_) {
            sleep_stopped(clock_.now_ + duration);
        } else {
            sleep_until(steady_clock::now() + duration);
        }
        return !awake_;
    }

    void wake() override {
        MutexLock lock(clock_.mutex_);
        awake_ = true;
        clock_.changed_.notify_all();
    }

  private:
    void sleep_stopped(std::chrono::milliseconds deadline) REQUIRES(clock_.mutex_) {
        ++clock_.sleepers_;
        clock_.changed_.notify_all();
        const unsigned starts = clock_.starts_;
        while (!awake_ && starts == clock_.starts_ && clock_.now_ < deadline) {
            clock_.changed_.wait(clock_.mutex_);
        }
        --clock_.sleepers_;
    }

    void sleep_until(steady_clock::time_point deadline) REQUIRES(clock_.mutex_) {
        while (!awake_ && steady_clock::now() < deadline) {
            clock_.changed_.wait_until(clock_.mutex_, deadline);
        }
    }

    VirtualClock& clock_;
    bool awake_ GUARDED_BY(clock_.mutex_) = false;
};

std::unique_ptr<Sleeper> VirtualClock::make_sleeper() {
    return std::make_unique<VirtualSleeper>(*this);
}

void VirtualClock::stop() {
    MutexLock lock(mutex_);
    stopped_ = true;
}

void VirtualClock::go() {
    MutexLock lock(mutex_);
    stopped_ = false;
    ++starts_;
    changed_.notify_all();
}

void VirtualClock::advance(std::chrono::milliseconds duration) {
    MutexLock lock(mutex_);
    now_ += duration;
    changed_.notify_all();
}

bool VirtualClock::wait_for_sleepers(int count, std::chrono::milliseconds limit) {
    const auto deadline = steady_clock::now() + limit;
    MutexLock lock(mutex_);
    while (sleepers_ < count) {
        if (steady_clock::now() >= deadline) {
            return false;
        }
        changed_.wait_until(mutex_, deadline);
    }
    return true;
}

}  // namespace platform::virtual_platform
