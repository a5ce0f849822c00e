#include "platform/common/steady_clock.h"

#include "platform/mutex.h"

namespace platform::common {

namespace {

class SteadySleeper final : public Sleeper {
  public:
    bool sleep(std::chrono::milliseconds duration) override {
        const auto deadline = std::chrono::steady_clock::now() + duration;
        MutexLock lock(mutex_);
        while (!awake_ && std::chrono::steady_clock::now() < deadline) {
            woken_.wait_until(mutex_, deadline);
        }
        return !awake_;
    }

    void wake() override {
        MutexLock lock(mutex_);
        awake_ = true;
        woken_.notify_all();
    }

  private:
    Mutex mutex_;
    Condition woken_;
    bool awake_ GUARDED_BY(mutex_) = false;
};

}  // namespace

std::unique_ptr<Sleeper> SteadyClock::make_sleeper() {
    return std::make_unique<SteadySleeper>();
}

}  // namespace platform::common
