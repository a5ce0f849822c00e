// Texts that a test keeps in the order in which they came: log lines, or calls.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <initializer_list>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace test_support {

/// How long a test waits for what is about to happen on another thread; generous, for sanitizers on busy
/// machines.
inline constexpr std::chrono::seconds patience{20};
/// The same for functions that take milliseconds.
inline constexpr int patience_ms = static_cast<int>(std::chrono::milliseconds(patience).count());

/// Thread: any.
class Recording {
  public:
    using Action = std::function<void(const std::string&)>;

    void add(const std::string& text) {
        Action action;
        {
            std::lock_guard lock(mutex_);
            texts_.push_back(text);
            action = action_;
        }
        changed_.notify_all();
        if (action) {
            action(text);
        }
    }

    std::vector<std::string> texts() const {
        std::lock_guard lock(mutex_);
        return texts_;
    }

    void clear() {
        std::lock_guard lock(mutex_);
        texts_.clear();
    }

    /// The texts equal to `text`.
    std::size_t count(const std::string& text) const {
        std::lock_guard lock(mutex_);
        return count_locked(text);
    }

    /// Waits for that many texts equal to `text` (since the last clear). False when `patience` is over.
    bool wait_for_count(const std::string& text, std::size_t count) const {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, patience, [&] { return count_locked(text) >= count; });
    }
    bool wait_for(const std::string& text) const { return wait_for_count(text, 1); }

    /// Called, outside the lock, with every text; to do something at that very moment. It may throw.
    void on_text(Action action) {
        std::lock_guard lock(mutex_);
        action_ = std::move(action);
    }

  private:
    std::size_t count_locked(const std::string& text) const {
        return static_cast<std::size_t>(std::count(texts_.begin(), texts_.end(), text));
    }

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<std::string> texts_;
    Action action_;
};

/// A call as text: "name(first, second)".
inline std::string call_text(const char* name, std::initializer_list<std::string> arguments) {
    std::string text = name;
    text += '(';
    const char* separator = "";
    for (const std::string& argument : arguments) {
        text += separator + argument;
        separator = ", ";
    }
    return text + ')';
}

}  // namespace test_support
