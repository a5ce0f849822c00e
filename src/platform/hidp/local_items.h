// Local items: the usages, strings and designators that the next main item uses up (HID 1.11, 6.2.2.8).
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/hid_types.h"
#include "platform/hidp/items.h"

namespace platform::hidp {

/// A Usage (String, Designator) item, or a pair of Minimum and Maximum; never expanded, since five bytes of
/// descriptor can name 65,536 usages.
struct LocalRange {
    std::uint32_t min = 0;
    std::uint32_t max = 0;
    bool is_range = false;
    bool has_page = false;        ///< came in four bytes: the upper half is the usage page
    bool is_alternative = false;  ///< for the entry before it, in one delimited set

    std::uint32_t count() const { return max - min + 1; }

    // Of a usage: the ids without their page, and that page, or the one that is current where it names none.
    USAGE first_usage() const { return static_cast<USAGE>(min); }
    USAGE last_usage() const { return static_cast<USAGE>(max); }
    USAGE page(USAGE current) const { return has_page ? static_cast<USAGE>(min >> 16) : current; }
};

class LocalRanges {
  public:
    void reserve(std::size_t count) { entries_.reserve(count); }

    void add_single(const Item& item);
    void set_minimum(const Item& item);
    void set_maximum(const Item& item);

    /// Throws Malformed when a minimum or maximum lacks its partner.
    void check_complete() const;

    const std::vector<LocalRange>& entries() const { return entries_; }

    /// The entry that belongs to the usage with this index; the last one serves the usages left over.
    LocalRange of_usage(std::size_t usage_index) const {
        return entries_.empty() ? LocalRange{} : entries_[std::min(usage_index, entries_.size() - 1)];
    }

    /// Makes the entries after the one at `first` alternatives of it.
    void join(std::size_t first);

    /// Forgets everything but the memory that it took.
    void clear();

  private:
    LocalRange& add();
    void add_complete_range();

    std::vector<LocalRange> entries_;
    std::optional<Item> minimum_;
    std::optional<Item> maximum_;
};

class LocalItems {
  public:
    LocalItems() { usages_.reserve(usual_usages); }

    /// Takes a local item. Throws Malformed for one that makes no sense where it stands.
    void add(const Item& item);

    /// Throws Malformed when a main item comes while a range or a delimited set is incomplete.
    void check_complete() const;

    /// Forgets everything, after a main item.
    void clear();

    const std::vector<LocalRange>& usages() const { return usages_.entries(); }

    /// How many of the usages behind the first are only other names for it.
    std::size_t alternatives_of_first() const;

    const LocalRanges& strings() const { return strings_; }
    const LocalRanges& designators() const { return designators_; }

  private:
    /// For one main item: what most headsets get along with.
    static constexpr std::size_t usual_usages = 16;

    void delimit(const Item& item);

    LocalRanges usages_;
    LocalRanges strings_;
    LocalRanges designators_;
    std::optional<std::size_t> open_set_;  ///< the index of its first usage
};

}  // namespace platform::hidp
