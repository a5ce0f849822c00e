#include "tests/support/recording_logger.h"

#include <algorithm>
#include <thread>

namespace test_support {

void RecordingLogger::log(const std::string& message, int level) {
    std::function<void(const std::string&)> action;
    {
        std::lock_guard lock(mutex_);
        lines_.push_back(message);
        if (level != 2) {
            odd_levels_.push_back(level);
        }
        action = action_;
    }
    changed_.notify_all();
    if (action) {
        action(message);
    }
}

std::vector<std::string> RecordingLogger::lines() const {
    std::lock_guard lock(mutex_);
    return lines_;
}

std::vector<std::string> RecordingLogger::lines_with(const std::string& text) const {
    std::vector<std::string> found = lines();
    std::erase_if(found, [&](const std::string& line) { return line.find(text) == std::string::npos; });
    return found;
}

std::size_t RecordingLogger::count(const std::string& line) const {
    std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::count(lines_.begin(), lines_.end(), line));
}

void RecordingLogger::clear() {
    std::lock_guard lock(mutex_);
    lines_.clear();
}

bool RecordingLogger::wait_for(const std::string& line) const {
    return wait_for_count(line, 1);
}

bool RecordingLogger::wait_for_count(const std::string& line, std::size_t count) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, patience, [&] {
        return static_cast<std::size_t>(std::count(lines_.begin(), lines_.end(), line)) >= count;
    });
}

std::vector<int> RecordingLogger::odd_levels() const {
    std::lock_guard lock(mutex_);
    return odd_levels_;
}

void RecordingLogger::on_line(std::function<void(const std::string&)> action) {
    std::lock_guard lock(mutex_);
    action_ = std::move(action);
}

::testing::AssertionResult in_order(const std::vector<std::string>& lines,
                                    const std::vector<std::string>& wanted) {
    auto from = lines.begin();
    for (const std::string& line : wanted) {
        const auto found = std::find(from, lines.end(), line);
        if (found == lines.end()) {
            auto failure = ::testing::AssertionFailure()
                           << "missing, or out of order: " << line << "in the log:\n";
            for (const std::string& logged : lines) {
                failure << logged;
            }
            return failure;
        }
        from = found + 1;
    }
    return ::testing::AssertionSuccess();
}

bool eventually(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

}  // namespace test_support
