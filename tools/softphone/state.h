// What the softphone knows: its calls, the headsets, and what has come in.
#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "tools/softphone/event.h"

namespace softphone {

/// The plug-in's log, the newest lines only.
class LogBook {
  public:
    void add(std::string line);

    /// The newest lines, at most `count`.
    std::deque<std::string> tail(std::size_t count) const;

    /// The next line that contains `text`, after the one that was found last.
    std::optional<std::string> find_next(std::string_view text);
    /// find_next() looks at lines to come only.
    void skip_all() { next_ = lines_.size(); }

  private:
    std::deque<std::string> lines_;
    std::size_t next_ = 0;  ///< where find_next() goes on
};

/// What has come in and was not asked for by an expectation yet, each kind in its order.
struct Unclaimed {
    std::deque<ActionRequested> actions;
    std::deque<DeviceNotice> ready;
    std::deque<DeviceNotice> removed;
    std::map<int, std::deque<Bytes>> reports;  ///< by headset
};

struct State {
    CallList calls;
    HeadsetList headsets;
    LogBook log;
    Unclaimed unclaimed;
    std::deque<std::string> recent_keys;  ///< oldest first
    std::deque<std::string> recent_actions;

    /// Takes in what an event says.
    void apply(const Event& event);
};

}  // namespace softphone
