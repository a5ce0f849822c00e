// Global items: the state that describes every field from here on, whatever the collection
// (HID 1.11, 6.2.2.7).
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/hid_types.h"
#include "platform/hidp/items.h"

namespace platform::hidp {

struct GlobalState {
    USAGE usage_page = 0;
    LONG logical_min = 0;
    LONG logical_max = 0;
    LONG physical_min = 0;
    LONG physical_max = 0;
    LONG units_exp = 0;
    ULONG units = 0;
    std::optional<USHORT> report_size;   ///< in bits; a main item needs one
    std::optional<USHORT> report_count;  ///< likewise
    UCHAR report_id = 0;                 ///< 0 until the first Report ID item
};

class GlobalItems {
  public:
    /// Takes a global item. Throws Malformed for a value that cannot be, and for a Pop without a Push.
    void add(const Item& item);

    const GlobalState& state() const { return state_; }

  private:
    void push();
    void pop();

    GlobalState state_;
    std::vector<GlobalState> pushed_;
};

}  // namespace platform::hidp
