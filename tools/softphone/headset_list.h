// The headsets as the softphone knows them: virtual ones, which it plugs itself, and real ones, of which it
// hears when the plug-in says that they are ready.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/softphone/hid_names.h"
#include "tools/softphone/text.h"

namespace softphone {

struct Indicator {
    Usage usage;
    bool lit = false;
};

struct Headset {
    int number = 0;    ///< of a virtual headset; 0 for a real one
    std::string name;  ///< what the user calls it
    std::string product;
    std::string serial;
    bool plugged = false;
    bool ready = false;                 ///< the plug-in's active headset
    std::vector<Indicator> indicators;  ///< those that a virtual headset has
    std::string last_report;            ///< the last output report in hexadecimal

    const Indicator* indicator(Usage usage) const;
};

/// A headset that the plug-in sees.
struct FoundHeadset {
    std::string product;
    std::string serial;
};

/// The names of the lit indicators, "all dark" when none is.
std::string lit_names(const std::vector<Indicator>& indicators);

/// A headset keeps its place and its address once it is in the list.
class HeadsetList {
  public:
    /// Adds a headset. `name`, or a name made from it when it is taken already, becomes its name.
    Headset& add(int number, const std::string& name);

    /// Takes in what the plug-in sees now: adds headsets that are new, under a name made from the product,
    /// and marks real ones that have come back or gone. Virtual ones have news of their own.
    void take_found(const std::vector<FoundHeadset>& found);
    /// Adds a real headset.
    Headset& add_found(const FoundHeadset& found);

    /// The headset with this name or number, or null.
    Headset* find(std::string_view name);
    const Headset* find(std::string_view name) const;
    Headset* find_number(int number);
    const Headset* find_number(int number) const;
    /// What the user calls the headset with this number.
    std::string name_of(int number) const;
    /// The plugged headset with this serial number, else an unplugged one, or null.
    Headset* find_serial(std::string_view serial);
    const Headset* find_serial(std::string_view serial) const;

    /// The headset named by the user; without a name, the only one that is plugged. Throws CommandError.
    Headset& choose(const std::optional<std::string>& name);

    /// This headset is ready from now on, and no other; null for none at all.
    void set_ready(const Headset* ready);

    /// Takes in a line of the plug-in's log, the only place where it says what it may not open. It repeats
    /// this each time that it looks for headsets.
    void take_log_line(const std::string& line);
    /// False while the plug-in has no permission to open the headset, which stays dark then, ready or not.
    bool has_permission(std::string_view serial) const;

    const std::deque<Headset>& all() const { return headsets_; }
    Words names() const;

  private:
    std::deque<Headset> headsets_;
    Words refusals_;  ///< the lines that say so
};

}  // namespace softphone
