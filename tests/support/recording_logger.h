// A host's logger that keeps what it is given, and assertions on it: the log is part of the plug-in's
// behaviour.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <vector>

#include "orvex/headset_plugin.h"

namespace test_support {

/// How long a test waits for what is about to happen on another thread; generous, for sanitizers on busy
/// machines.
inline constexpr std::chrono::seconds patience{20};

/// Thread: any.
class RecordingLogger final : public plugin_control::IPluginLogger {
  public:
    void log(const std::string& message, int level) override;

    std::vector<std::string> lines() const;
    /// The lines that contain `text`, in order.
    std::vector<std::string> lines_with(const std::string& text) const;
    std::size_t count(const std::string& line) const;  ///< lines equal to `line`
    void clear();
    /// Waits for a line equal to `line` (since the last clear). False when `patience` is over.
    bool wait_for(const std::string& line) const;
    bool wait_for_count(const std::string& line, std::size_t count) const;
    /// The levels that lines came with, other than 2; must stay empty.
    std::vector<int> odd_levels() const;
    /// Called, outside the lock, for every line; to do something at that very moment.
    void on_line(std::function<void(const std::string&)> action);

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<std::string> lines_;
    std::vector<int> odd_levels_;
    std::function<void(const std::string&)> action_;
};

/// Succeeds when `wanted` occur in `lines` one after the other, other lines between them allowed.
::testing::AssertionResult in_order(const std::vector<std::string>& lines,
                                    const std::vector<std::string>& wanted);

/// Waits until `condition` is true, polling; false when `patience` is over. For what has no signal of its
/// own.
bool eventually(const std::function<bool()>& condition);

}  // namespace test_support
