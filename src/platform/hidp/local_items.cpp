#include "platform/hidp/local_items.h"

#include <algorithm>

#include "platform/hidp/limits.h"

namespace platform::hidp {
namespace {

constexpr std::uint8_t extended_size = 4;  // HID 1.11, 6.2.2.8: page and usage in one item
constexpr std::uint32_t page_bits = 0xFFFF0000;
constexpr std::uint32_t delimiter_open = 1;  // 6.2.2.8
constexpr std::uint32_t delimiter_close = 0;

}  // namespace

void LocalRanges::add_single(const Item& item) {
    LocalRange& single = add();
    single.min = item.data;
    single.max = item.data;
    single.has_page = item.size == extended_size;
}

void LocalRanges::set_minimum(const Item& item) {
    minimum_ = item;
    add_complete_range();
}

void LocalRanges::set_maximum(const Item& item) {
    maximum_ = item;
    add_complete_range();
}

void LocalRanges::add_complete_range() {
    if (!minimum_ || !maximum_) {
        return;
    }
    LocalRange range{minimum_->data, maximum_->data, true, false, false};
    const bool min_has_page = minimum_->size == extended_size;
    const bool max_has_page = maximum_->size == extended_size;
    if (min_has_page && !max_has_page) {
        range.max |= range.min & page_bits;
    } else if (max_has_page && !min_has_page) {
        range.min |= range.max & page_bits;
    }
    range.has_page = min_has_page || max_has_page;
    minimum_.reset();
    maximum_.reset();
    if ((range.min & page_bits) != (range.max & page_bits)) {
        throw Malformed{"the range begins and ends on different usage pages"};
    }
    if (range.min > range.max) {
        throw Malformed{"the range's minimum is above its maximum"};
    }
    add() = range;
}

LocalRange& LocalRanges::add() {
    if (entries_.size() == max_local_items) {
        throw Malformed{"more than " + std::to_string(max_local_items) + " usages for one main item"};
    }
    return entries_.emplace_back();
}

void LocalRanges::join(std::size_t first) {
    for (std::size_t i = first + 1; i < entries_.size(); ++i) {
        entries_[i].is_alternative = true;
    }
}

void LocalRanges::clear() {
    entries_.clear();
    minimum_.reset();
    maximum_.reset();
}

void LocalRanges::check_complete() const {
    if (minimum_) {
        throw Malformed{"a minimum has no maximum"};
    }
    if (maximum_) {
        throw Malformed{"a maximum has no minimum"};
    }
}

void LocalItems::add(const Item& item) {
    switch (item.tag) {
        case Tag::usage:
            return usages_.add_single(item);
        case Tag::usage_minimum:
            return usages_.set_minimum(item);
        case Tag::usage_maximum:
            return usages_.set_maximum(item);
        case Tag::designator_index:
            return designators_.add_single(item);
        case Tag::designator_minimum:
            return designators_.set_minimum(item);
        case Tag::designator_maximum:
            return designators_.set_maximum(item);
        case Tag::string_index:
            return strings_.add_single(item);
        case Tag::string_minimum:
            return strings_.set_minimum(item);
        case Tag::string_maximum:
            return strings_.set_maximum(item);
        case Tag::delimiter:
            return delimit(item);
        default:
            return;
    }
}

void LocalItems::delimit(const Item& item) {
    if (item.data == delimiter_open) {
        if (open_set_) {
            throw Malformed{"a delimited set inside another"};
        }
        open_set_ = usages_.entries().size();
    } else if (item.data == delimiter_close) {
        if (!open_set_) {
            throw Malformed{"the end of a delimited set that was not begun"};
        }
        usages_.join(*open_set_);
        open_set_.reset();
    } else {
        throw Malformed{"the delimiter neither begins nor ends a set"};
    }
}

void LocalItems::check_complete() const {
    if (open_set_) {
        throw Malformed{"a delimited set is not closed before the main item"};
    }
    usages_.check_complete();
    strings_.check_complete();
    designators_.check_complete();
}

void LocalItems::clear() {
    usages_.clear();
    strings_.clear();
    designators_.clear();
    open_set_.reset();
}

std::size_t LocalItems::alternatives_of_first() const {
    std::size_t count = 0;
    while (count + 1 < usages().size() && usages()[count + 1].is_alternative) {
        ++count;
    }
    return count;
}

}  // namespace platform::hidp
