#include "platform/hidp/main_item.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <span>
#include <string>
#include <utility>

#include "platform/hidp/limits.h"

namespace platform::hidp {
namespace {

class MainItem {
  public:
    MainItem(Direction& direction, const Capability& common, const GlobalState& global,
             const LocalItems& local)
        : direction_(direction),
          common_(common),
          global_(global),
          local_(local),
          usages_(local.usages()),
          first_(direction.capabilities.size()) {}

    void add_variables();
    void add_array();
    void count_buttons();
    void check_limits() const;

  private:
    std::span<Capability> added() { return std::span(direction_.capabilities).subspan(first_); }

    void make_room();
    void give_up_room();
    std::size_t last_set() const;
    Capability& add(std::size_t usage_index);
    void add_variable(std::size_t usage_index, ULONG first_field, ULONG fields);
    ULONG selector_of_first_usage() const;

    Direction& direction_;
    const Capability& common_;
    const GlobalState& global_;
    const LocalItems& local_;
    std::span<const LocalRange> usages_;
    std::size_t first_;           ///< where this item's capabilities begin
    std::span<Capability> room_;  ///< those of them that are not filled yet
};

void set_data_indices(Capability& capability, ULONG first) {
    capability.data_index_min = static_cast<USHORT>(first);
    capability.data_index_max = static_cast<USHORT>(first + capability.usage_count() - 1);
}

/// Usages are listed in the reverse of their order: a capability for each is filled from the last one on.
void MainItem::make_room() {
    std::fill_n(std::back_inserter(direction_.capabilities), usages_.size(), common_);
    room_ = added();
}

/// Removes what no usage has taken.
void MainItem::give_up_room() {
    const auto begin = direction_.capabilities.begin() + static_cast<std::ptrdiff_t>(first_);
    direction_.capabilities.erase(begin, begin + static_cast<std::ptrdiff_t>(room_.size()));
}

/// The index of the first usage of the last delimited set; a usage outside every set is a set of its own.
std::size_t MainItem::last_set() const {
    std::size_t set = 0;
    for (std::size_t i = 0; i < usages_.size(); ++i) {
        if (!usages_[i].is_alternative) {
            set = i;
        }
    }
    return set;
}

/// Each usage in turn takes as many fields as it has usages, the last one takes what is left over. Listed are
/// they in reverse, and numbered as listed; without a field left, a usage is not listed at all.
void MainItem::add_variables() {
    make_room();
    const std::size_t last = last_set();
    ULONG begin_field = 0;
    ULONG end_field = 0;
    for (std::size_t i = 0; i < usages_.size(); ++i) {
        const LocalRange& usage = usages_[i];
        if (!usage.is_alternative) {
            begin_field = end_field;
            const ULONG left = common_.report_count - begin_field;
            end_field += i == last ? left : std::min(left, usage.count());
        }
        const bool is_filler = common_.is_padding() && usage.last_usage() == 0;
        if (begin_field < end_field && !is_filler) {
            add_variable(i, begin_field, end_field - begin_field);
        }
    }
    give_up_room();
    ULONG indices_of_set = 0;  // as many as the longest of its names has usages
    for (Capability& capability : added()) {
        set_data_indices(capability, direction_.data_indices);
        indices_of_set = std::max(indices_of_set, capability.usage_count());
        if (!capability.is_alias) {
            direction_.data_indices += std::exchange(indices_of_set, 0);
        }
    }
    direction_.data_indices += indices_of_set;
}

void MainItem::add_variable(std::size_t usage_index, ULONG first_field, ULONG fields) {
    Capability& capability = add(usage_index);
    capability.bit_position = common_.field_position(first_field);
    const ULONG usages_with_field = std::min(capability.usage_count(), fields);
    capability.usage_max = static_cast<USAGE>(capability.usage_min + usages_with_field - 1);
    capability.report_count = static_cast<USHORT>(common_.bit_size == 0 ? 1 : fields);
}

/// Every field can name any of the usages. Listed are they in reverse, but numbered as declared.
void MainItem::add_array() {
    if (common_.is_padding() || common_.report_count == 0) {
        return;
    }
    make_room();
    const ULONG first_index = direction_.data_indices;
    ULONG index = first_index;
    const ULONG first_selector = selector_of_first_usage();
    for (std::size_t i = 0; i < usages_.size(); ++i) {
        Capability& capability = add(i);
        capability.has_more_for_array = i > 0;
        if (!capability.is_alias) {
            index = direction_.data_indices;
        }
        set_data_indices(capability, index);
        direction_.data_indices = std::max(direction_.data_indices, index + capability.usage_count());
        capability.lowest_selector = first_selector + (index - first_index);
    }
}

/// Field value 0 stands for no usage; but where the first usage is 0, which means the same, the values are
/// the usages, as on keyboards. A logical minimum above 0 is the first usage's value.
ULONG MainItem::selector_of_first_usage() const {
    if (global_.logical_min > 0) {
        return static_cast<ULONG>(global_.logical_min);
    }
    const bool begins_with_no_usage = usages_.front().first_usage() == 0;
    return begins_with_no_usage ? 0 : 1;
}

Capability& MainItem::add(std::size_t usage_index) {
    const LocalRange& usage = usages_[usage_index];
    const LocalRange string = local_.strings().of_usage(usage_index);
    const LocalRange designator = local_.designators().of_usage(usage_index);
    Capability& capability = room_.back();
    room_ = room_.first(room_.size() - 1);
    // HID 1.11, 6.2.2.8: a short usage takes the page that was declared last, be it after the usage.
    capability.usage_page = usage.page(global_.usage_page);
    capability.usage_min = usage.first_usage();
    capability.usage_max = usage.last_usage();
    capability.is_range = usage.is_range;
    capability.is_alias = usage.is_alternative;
    capability.string_min = static_cast<USHORT>(string.min);
    capability.string_max = static_cast<USHORT>(string.max);
    capability.is_string_range = string.is_range;
    capability.designator_min = static_cast<USHORT>(designator.min);
    capability.designator_max = static_cast<USHORT>(designator.max);
    capability.is_designator_range = designator.is_range;
    return capability;
}

void MainItem::count_buttons() {
    direction_.button_count = static_cast<USHORT>(direction_.button_count + added().size());
    for (const Capability& capability : added()) {
        direction_.usage_list_length += capability.report_count;
    }
}

void MainItem::check_limits() const {
    if (direction_.capabilities.size() > max_capabilities) {
        throw Malformed{"more than " + std::to_string(max_capabilities) + " capabilities"};
    }
    if (direction_.usage_list_length > max_usage_list_length) {
        throw Malformed{"more than " + std::to_string(max_usage_list_length) + " buttons"};
    }
    if (direction_.data_indices > max_data_indices) {
        throw Malformed{"more than " + std::to_string(max_data_indices) + " controls"};
    }
}

}  // namespace

void add_capabilities(Direction& direction, const Capability& common, const GlobalState& global,
                      const LocalItems& local) {
    direction.declared_capabilities =
        static_cast<USHORT>(direction.declared_capabilities + local.usages().size());
    MainItem item(direction, common, global, local);
    if (common.is_array()) {
        item.add_array();
    } else {
        item.add_variables();
    }
    if (common.is_button) {
        item.count_buttons();
    }
    item.check_limits();
}

}  // namespace platform::hidp
