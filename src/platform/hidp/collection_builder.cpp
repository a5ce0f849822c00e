#include "platform/hidp/collection_builder.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/hidp/limits.h"
#include "platform/hidp/main_item.h"

namespace platform::hidp {
namespace {

/// Of capabilities, reports and link collections: what most headsets get along with.
constexpr std::size_t usual_count = 16;

constexpr ULONG bits_per_byte = 8;
constexpr ULONG id_byte_bits = 8;  // every report begins with its id, if only with 0

HIDP_REPORT_TYPE report_type(Tag tag) {
    switch (tag) {
        case Tag::input:
            return HidP_Input;
        case Tag::output:
            return HidP_Output;
        default:
            return HidP_Feature;
    }
}

USHORT required(std::optional<USHORT> value, const char* item_name) {
    if (!value) {
        throw Malformed{std::string("no ") + item_name + " before the main item"};
    }
    return *value;
}

Report& report_of(std::vector<Report>& reports, HIDP_REPORT_TYPE type, UCHAR id) {
    const Report wanted{type, id, 0};
    const auto at = std::lower_bound(reports.begin(), reports.end(), wanted, precedes);
    const bool is_known = at != reports.end() && !precedes(wanted, *at);
    return is_known ? *at : *reports.insert(at, wanted);
}

Capability common_capability(const Item& item, const GlobalState& global) {
    Capability common;
    common.report_id = global.report_id;
    common.bit_field = static_cast<USHORT>(item.data);
    common.bit_size = required(global.report_size, "Report Size");
    common.report_count = required(global.report_count, "Report Count");
    common.units = global.units;
    common.units_exp = global.units_exp;
    common.is_button = common.is_array() || common.bit_size == 1;
    const bool has_logical_range = common.is_array() || !common.is_button;
    if (has_logical_range) {
        common.logical_min = global.logical_min;
        common.logical_max = global.logical_max;
    }
    if (!common.is_button) {
        common.physical_min = global.physical_min;
        common.physical_max = global.physical_max;
    }
    return common;
}

/// Forgets everything but the memory that it took.
void clear(HIDP_PREPARSED_DATA& data) {
    for (Direction& direction : data.directions) {
        direction.capabilities.clear();
        direction = {.capabilities = std::move(direction.capabilities)};
    }
    data.reports.clear();
    data.link_collections.clear();
}

/// `node` under the usage. An alias is another name for the link collection that follows.
HIDP_LINK_COLLECTION_NODE named(HIDP_LINK_COLLECTION_NODE node, const LocalRange& usage,
                                const GlobalState& global, bool is_alias) {
    node.LinkUsagePage = usage.page(global.usage_page);
    node.LinkUsage = usage.first_usage();
    node.IsAlias = is_alias;
    return node;
}

}  // namespace

CollectionBuilder::CollectionBuilder() {
    for (Direction& direction : data_.directions) {
        direction.capabilities.reserve(usual_count);
    }
    data_.reports.reserve(usual_count);
    data_.link_collections.reserve(usual_count);
}

/// The copy has the memory that it needs, and no more.
PreparsedData CollectionBuilder::take() {
    PreparsedData data(new HIDP_PREPARSED_DATA(data_));
    clear(data_);
    return data;
}

void CollectionBuilder::open_collection(const Item& item, const GlobalState& global,
                                        const LocalItems& local) {
    HIDP_LINK_COLLECTION_NODE node{};
    node.LinkUsagePage = global.usage_page;
    node.CollectionType = item.data & 0xFF;
    const bool is_top_level = data_.link_collections.empty();  // known by one usage alone, the first
    for (std::size_t i = is_top_level ? 0 : local.alternatives_of_first(); i > 0; --i) {
        add_link_collection(named(node, local.usages()[i], global, true));
    }
    add_link_collection(local.usages().empty() ? node : named(node, local.usages().front(), global, false));
    current_ = static_cast<USHORT>(data_.link_collections.size() - 1);
}

void CollectionBuilder::add_link_collection(HIDP_LINK_COLLECTION_NODE node) {
    auto& nodes = data_.link_collections;
    if (nodes.size() == max_collections) {
        throw Malformed{"more than " + std::to_string(max_collections) + " collections"};
    }
    if (!nodes.empty()) {
        HIDP_LINK_COLLECTION_NODE& parent = nodes[current_];
        node.Parent = current_;
        node.NextSibling = parent.FirstChild;  // the newest child stands first
        parent.FirstChild = static_cast<USHORT>(nodes.size());
        ++parent.NumberOfChildren;
    }
    nodes.push_back(node);
}

void CollectionBuilder::close_collection() {
    current_ = data_.link_collections[current_].Parent;
}

void CollectionBuilder::add_fields(const Item& item, const GlobalState& global, const LocalItems& local) {
    const HIDP_REPORT_TYPE type = report_type(item.tag);
    Capability common = common_capability(item, global);
    common.link_collection = current_;
    common.bit_position = take_bits(type, common.report_id, ULONG{common.bit_size} * common.report_count);
    if (!local.usages().empty()) {
        add_capabilities(data_.directions[type], common, global, local);
    }
}

/// Appends bits to a report and returns where they begin.
ULONG CollectionBuilder::take_bits(HIDP_REPORT_TYPE type, UCHAR id, ULONG bits) {
    Report& report = report_of(data_.reports, type, id);
    if (bits > max_report_bits - report.bits) {
        throw Malformed{"the report is longer than " + std::to_string(max_report_bits / bits_per_byte) +
                        " bytes"};
    }
    const ULONG begin = id_byte_bits + report.bits;
    report.bits += bits;
    Direction& direction = data_.directions[type];
    direction.report_byte_length = std::max(direction.report_byte_length, report.byte_length());
    return begin;
}

}  // namespace platform::hidp
