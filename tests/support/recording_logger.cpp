#include "tests/support/recording_logger.h"

#include <algorithm>
#include <thread>

namespace test_support {

void RecordingLogger::log(const std::string& message, int level) {
    if (level != 2) {
        std::lock_guard lock(mutex_);
        odd_levels_.push_back(level);
    }
    lines_.add(message);
}

std::vector<std::string> RecordingLogger::lines_with(const std::string& text) const {
    std::vector<std::string> found = lines();
    std::erase_if(found, [&](const std::string& line) { return line.find(text) == std::string::npos; });
    return found;
}

std::vector<int> RecordingLogger::odd_levels() const {
    std::lock_guard lock(mutex_);
    return odd_levels_;
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
