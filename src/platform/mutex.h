// Mutexes that clang's thread-safety analysis understands, and a value with a lock of its own.
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#if defined(__clang__)
#define ORVEX_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define ORVEX_THREAD_ANNOTATION(x)
#endif
#define CAPABILITY(x) ORVEX_THREAD_ANNOTATION(capability(x))
#define SCOPED_CAPABILITY ORVEX_THREAD_ANNOTATION(scoped_lockable)
#define GUARDED_BY(x) ORVEX_THREAD_ANNOTATION(guarded_by(x))
#define REQUIRES(...) ORVEX_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define ACQUIRE(...) ORVEX_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define RELEASE(...) ORVEX_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define TRY_ACQUIRE(...) ORVEX_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define EXCLUDES(...) ORVEX_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))

namespace platform {

class CAPABILITY("mutex") Mutex {
  public:
    void lock() ACQUIRE() { native_.lock(); }
    void unlock() RELEASE() { native_.unlock(); }

  private:
    std::mutex native_;
};

/// A mutex that its owner may lock again.
class CAPABILITY("mutex") RecursiveMutex {
  public:
    void lock() ACQUIRE() {
        native_.lock();
        owner_ = std::this_thread::get_id();
        ++depth_;
    }
    void unlock() RELEASE() {
        if (--depth_ == 0) {
            owner_ = std::thread::id();
        }
        native_.unlock();
    }

    /// True when the calling thread holds the mutex, somewhere up its stack.
    bool held_by_this_thread() const { return owner_ == std::this_thread::get_id(); }

  private:
    std::recursive_mutex native_;
    std::atomic<std::thread::id> owner_;
    int depth_ = 0;  // guarded by native_
};

/// Holds a mutex for a scope.
template <typename MutexType>
class SCOPED_CAPABILITY BasicLock {
  public:
    explicit BasicLock(MutexType& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~BasicLock() RELEASE() { mutex_.unlock(); }
    BasicLock(const BasicLock&) = delete;
    BasicLock& operator=(const BasicLock&) = delete;

  private:
    MutexType& mutex_;
};

using MutexLock = BasicLock<Mutex>;
using RecursiveMutexLock = BasicLock<RecursiveMutex>;

/// Waits on the annotated mutexes.
using Condition = std::condition_variable_any;

/// A value that several threads read and replace as a whole. Copies go in and out under a lock of its own,
/// which is never held while anything else runs; a copy may be stale the moment it is made.
template <typename T>
class Guarded {
  public:
    Guarded() = default;
    explicit Guarded(T value) : value_(std::move(value)) {}

    T get() const {
        MutexLock lock(mutex_);
        return value_;
    }

    /// Stores `value` and hands out the former one, which the caller destroys outside the lock.
    T exchange(T value) {
        MutexLock lock(mutex_);
        std::swap(value_, value);
        return value;
    }

    void set(T value) { exchange(std::move(value)); }

    /// Stores `value` in the place of `expected`, and of nothing else.
    void replace(const T& expected, T value) {
        MutexLock lock(mutex_);
        if (value_ == expected) {
            std::swap(value_, value);
        }
    }

  private:
    mutable Mutex mutex_;
    T value_ GUARDED_BY(mutex_){};
};

}  // namespace platform
