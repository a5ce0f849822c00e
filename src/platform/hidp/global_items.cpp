#include "platform/hidp/global_items.h"

#include <limits>
#include <string>

#include "platform/hidp/limits.h"

namespace platform::hidp {
namespace {

[[noreturn]] void refuse_above(const char* what, std::uint32_t value, std::uint32_t limit) {
    throw Malformed{std::string(what) + " " + std::to_string(value) + " is above " + std::to_string(limit)};
}

/// The item's value as a T, for values that `what` names in the error text.
template <typename T>
T narrow(const Item& item, const char* what) {
    constexpr T limit = std::numeric_limits<T>::max();
    if (item.data > limit) {
        refuse_above(what, item.data, limit);
    }
    return static_cast<T>(item.data);
}

UCHAR report_id_of(const Item& item) {
    if (item.data == 0) {
        throw Malformed{"report id 0 is reserved"};  // HID 1.11, 6.2.2.7
    }
    return narrow<UCHAR>(item, "report id");
}

}  // namespace

void GlobalItems::add(const Item& item) {
    switch (item.tag) {
        case Tag::usage_page:
            state_.usage_page = narrow<USAGE>(item, "usage page");
            return;
        case Tag::logical_minimum:
            state_.logical_min = item.as_signed();
            return;
        case Tag::logical_maximum:
            state_.logical_max = item.as_signed();
            return;
        case Tag::physical_minimum:
            state_.physical_min = item.as_signed();
            return;
        case Tag::physical_maximum:
            state_.physical_max = item.as_signed();
            return;
        case Tag::unit_exponent:
            state_.units_exp = item.as_signed();
            return;
        case Tag::unit:
            state_.units = item.data;
            return;
        case Tag::report_size:
            state_.report_size = narrow<USHORT>(item, "report size");
            return;
        case Tag::report_count:
            state_.report_count = narrow<USHORT>(item, "report count");
            return;
        case Tag::report_id:
            state_.report_id = report_id_of(item);
            return;
        case Tag::push:
            return push();
        case Tag::pop:
            return pop();
        default:
            return;
    }
}

void GlobalItems::push() {
    if (pushed_.size() == max_push_depth) {
        throw Malformed{"more than " + std::to_string(max_push_depth) + " Push items without a Pop"};
    }
    pushed_.push_back(state_);
}

void GlobalItems::pop() {
    if (pushed_.empty()) {
        throw Malformed{"Pop without a Push"};
    }
    state_ = pushed_.back();
    pushed_.pop_back();
}

}  // namespace platform::hidp
