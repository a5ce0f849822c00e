// Any bytes as a report descriptor: refused with a place, or collections that are sound.
#include <set>

#include "fuzz/check.h"
#include "platform/hidp/hidp.h"
#include "platform/hidp/limits.h"
#include "platform/hidp/preparsed_data.h"

using namespace platform;
using fuzz::check;

namespace {

void check_error(const hidp::ParseError& error, std::span<const std::uint8_t> descriptor) {
    check(!error.text.empty(), "an error says what is wrong");
    check(error.offset <= descriptor.size(), "an error lies inside the descriptor");
    const bool has_item = error.offset < descriptor.size() && descriptor.size() <= hidp::max_descriptor_size;
    check(!has_item || error.item == descriptor[error.offset] || error.offset == 0,
          "an error names the item that stands there");
}

/// Every node but the first hangs in exactly one list of siblings, its parent's.
void check_links(const std::vector<HIDP_LINK_COLLECTION_NODE>& nodes) {
    std::set<USHORT> seen;
    for (std::size_t parent = 0; parent < nodes.size(); ++parent) {
        USHORT count = 0;
        for (USHORT child = nodes[parent].FirstChild; child != 0; child = nodes[child].NextSibling) {
            check(child < nodes.size(), "a link collection is one of the collection's");
            check(nodes[child].Parent == parent, "a child knows its parent");
            check(seen.insert(child).second, "a link collection has one place");
            ++count;
        }
        check(count == nodes[parent].NumberOfChildren, "children are counted");
    }
    check(seen.size() + 1 == nodes.size(), "no link collection is lost");
}

void check_capability(const hidp::Capability& capability, const HIDP_PREPARSED_DATA& data,
                      HIDP_REPORT_TYPE type) {
    const auto& direction = data.directions[type];
    const auto length =
        hidp::report_length(const_cast<PHIDP_PREPARSED_DATA>(&data), type, capability.report_id);
    const std::size_t end =
        capability.bit_position + std::size_t{capability.bit_size} * capability.report_count;
    check(length <= direction.report_byte_length, "no report is longer than the longest");
    check(capability.bit_size == 0 || end <= length * 8, "a field lies in its report");
    check(capability.usage_min <= capability.usage_max, "a range goes upwards");
    check(capability.data_index_max < direction.data_indices, "a data index is one of those counted");
    check(capability.link_collection < data.link_collections.size(), "a field lies in a link collection");
    check(!data.link_collections[capability.link_collection].IsAlias, "and in the one that is no alias");
}

void check_collection(PHIDP_PREPARSED_DATA data) {
    check_links(data->link_collections);
    for (const auto type : {HidP_Input, HidP_Output, HidP_Feature}) {
        const auto& direction = data->directions[type];
        check(direction.capabilities.size() <= direction.declared_capabilities, "none is stored uncounted");
        for (const hidp::Capability& capability : direction.capabilities) {
            check_capability(capability, *data, type);
        }
        check(hidp::parser().HidP_MaxUsageListLength(type, 0, data) <= hidp::max_usage_list_length,
              "lists of usages are bounded");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span descriptor(data, size);
    const auto parsed = hidp::parse(descriptor);
    check(parsed.error.has_value() == parsed.collections.empty(), "an error, or collections");
    if (parsed.error) {
        check_error(*parsed.error, descriptor);
    }
    for (const auto& collection : parsed.collections) {
        check_collection(collection.get());
    }
    return 0;
}
