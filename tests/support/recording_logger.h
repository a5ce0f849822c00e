// A host's logger that keeps what it is given, and assertions on it: the log is part of the plug-in's
// behaviour.
#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <vector>

#include "orvex/headset_plugin.h"
#include "tests/support/recording.h"

namespace test_support {

/// Thread: any.
class RecordingLogger final : public plugin_control::IPluginLogger {
  public:
    void log(const std::string& message, int level) override;

    std::vector<std::string> lines() const { return lines_.texts(); }
    /// The lines that contain `text`, in order.
    std::vector<std::string> lines_with(const std::string& text) const;
    /// The lines equal to `line`.
    std::size_t count(const std::string& line) const { return lines_.count(line); }
    void clear() { lines_.clear(); }
    /// Waits for a line equal to `line` (since the last clear). False when `patience` is over.
    bool wait_for(const std::string& line) const { return lines_.wait_for(line); }
    bool wait_for_count(const std::string& line, std::size_t count) const {
        return lines_.wait_for_count(line, count);
    }
    /// The levels that lines came with, other than 2; must stay empty.
    std::vector<int> odd_levels() const;
    /// Called, outside any lock, for every line; to do something at that very moment. It may throw.
    void on_line(Recording::Action action) { lines_.on_text(std::move(action)); }

  private:
    Recording lines_;
    mutable std::mutex mutex_;
    std::vector<int> odd_levels_;
};

/// Succeeds when `wanted` occur in `lines` one after the other, other lines between them allowed.
::testing::AssertionResult in_order(const std::vector<std::string>& lines,
                                    const std::vector<std::string>& wanted);

/// Waits until `condition` is true, polling; false when `patience` is over. For what has no signal of its
/// own.
bool eventually(const std::function<bool()>& condition);

}  // namespace test_support
