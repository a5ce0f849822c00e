#include "tools/headset/collections.h"

#include "tools/headset/errors.h"

namespace headset {

using platform::hidp::parser;

const char* to_string(HIDP_REPORT_TYPE direction) {
    static constexpr const char* names[] = {"Input", "Output", "Feature"};
    return names[direction];
}

Collections parse_collections(std::span<const std::uint8_t> descriptor) {
    auto parsed = platform::hidp::parse(descriptor);
    if (parsed.error)
        throw Refused("the descriptor is refused: " + parsed.error->to_string());
    return std::move(parsed.collections);
}

HIDP_CAPS get_caps(PHIDP_PREPARSED_DATA data) {
    HIDP_CAPS caps{};
    parser().HidP_GetCaps(data, &caps);
    return caps;
}

std::vector<HIDP_BUTTON_CAPS> get_button_caps(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE direction) {
    auto count = static_cast<platform::USHORT>(capabilities(data, direction).size());
    std::vector<HIDP_BUTTON_CAPS> caps(count);
    parser().HidP_GetButtonCaps(direction, caps.data(), &count, data);
    caps.resize(count);
    return caps;
}

std::vector<HIDP_VALUE_CAPS> get_value_caps(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE direction) {
    auto count = static_cast<platform::USHORT>(capabilities(data, direction).size());
    std::vector<HIDP_VALUE_CAPS> caps(count);
    parser().HidP_GetValueCaps(direction, caps.data(), &count, data);
    caps.resize(count);
    return caps;
}

std::vector<HIDP_LINK_COLLECTION_NODE> get_link_collections(PHIDP_PREPARSED_DATA data) {
    platform::ULONG count = get_caps(data).NumberLinkCollectionNodes;
    std::vector<HIDP_LINK_COLLECTION_NODE> nodes(count);
    parser().HidP_GetLinkCollectionNodes(nodes.data(), &count, data);
    return nodes;
}

Usage collection_usage(PHIDP_PREPARSED_DATA data) {
    const HIDP_CAPS caps = get_caps(data);
    return {caps.UsagePage, caps.Usage};
}

std::span<const Capability> capabilities(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE direction) {
    return data->directions[direction].capabilities;
}

std::size_t longest_report(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE direction) {
    return data->directions[direction].report_byte_length;
}

}  // namespace headset
