// The list that a function fills for its caller.
#pragma once

#include <span>

#include "platform/hid_types.h"

namespace platform::hidp {

/// Takes entries while there is room, and counts on when it is full.
template <typename Entry>
class FoundList {
  public:
    explicit FoundList(std::span<Entry> room) : room_(room) {}

    void add(const Entry& entry) {
        if (count_ < room_.size()) {
            room_[count_] = entry;
        }
        ++count_;
    }
    ULONG count() const { return count_; }
    bool overflows() const { return count_ > room_.size(); }

  private:
    std::span<Entry> room_;
    ULONG count_ = 0;
};

}  // namespace platform::hidp
