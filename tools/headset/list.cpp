#include "tools/headset/list.h"

#include <system_error>

#include "platform/linux/device_path.h"
#include "platform/text.h"
#include "tools/headset/collections.h"
#include "tools/headset/table.h"

namespace headset {
namespace {

using platform::HidInterfaceInfo;

std::array<std::size_t, 3> report_lengths(PHIDP_PREPARSED_DATA data) {
    std::array<std::size_t, 3> lengths{};
    for (const auto direction : directions)
        lengths[direction] = longest_report(data, direction);
    return lengths;
}

ListedInterface list_interface(const HidInterfaceInfo& info, const Collections& collections) {
    ListedInterface listed{info, {}, find_refusal(info)};
    const auto collection = platform::linux_platform::DevicePath::parse(info.path).collection;
    if (collection && *collection < collections.size())
        listed.report_lengths = report_lengths(collections[*collection].get());
    return listed;
}

ListedNode list_node(System& system, const Node& node) {
    const auto parsed = platform::hidp::parse(system.report_descriptor(node.path));
    ListedNode listed{node.path, {}, system.node_state(node.path).open_error};
    for (const auto& info : node.interfaces)
        listed.interfaces.push_back(list_interface(info, parsed.collections));
    return listed;
}

std::string reason_text(int error) {
    return std::generic_category().message(error);
}

std::string heading(const ListedNode& node) {
    const auto& info = node.interfaces.front().info;
    std::string text = device_name(info);
    if (info.manufacturer_string)
        text += ", " + printable(*info.manufacturer_string);
    text += ", " + device_ids(info);
    return text +
           (info.serial_number ? ", serial number " + printable(*info.serial_number) : ", no serial number") +
           '\n';
}

std::string lengths_text(const ListedInterface& listed) {
    if (!listed.report_lengths)
        return "report descriptor refused";
    std::string text;
    for (const auto direction : directions) {
        const auto length = (*listed.report_lengths)[direction];
        text += std::string(text.empty() ? "" : ", ") + to_string(direction) + ' ' +
                (length == 0 ? "none" : std::to_string(length));
    }
    return text;
}

std::string refusal_text(const ListedInterface& listed) {
    return listed.refusal ? std::string("ignored: ") + listed.refusal->name + ": " + listed.refusal->reason
                          : "accepted";
}

Table interfaces_table(const ListedNode& node) {
    Table table;
    for (const auto& listed : node.interfaces)
        table.add({listed.info.path, usage_label({listed.info.usage_page, listed.info.usage}),
                   lengths_text(listed), refusal_text(listed)});
    return table;
}

std::string permission_text(const ListedNode& node) {
    return "  " + node.path +
           (node.open_error == 0 ? " can be opened by this user\n"
                                 : " cannot be opened by this user: " + reason_text(node.open_error) + '\n');
}

Json text_or_null(const std::optional<std::wstring>& text) {
    return text ? Json(platform::to_utf8(*text)) : Json();
}

Json interface_to_json(const ListedNode& node, const ListedInterface& listed) {
    const auto& info = listed.info;
    Json json{{"path", info.path},
              {"vendor_id", info.vendor_id},
              {"product_id", info.product_id},
              {"manufacturer", text_or_null(info.manufacturer_string)},
              {"product", text_or_null(info.product_string)},
              {"serial", text_or_null(info.serial_number)},
              {"UsagePage", info.usage_page},
              {"Usage", info.usage},
              {"name", usage_name({info.usage_page, info.usage})}};
    for (const auto direction : directions)
        json[std::string(to_string(direction)) + "ReportByteLength"] =
            listed.report_lengths ? Json((*listed.report_lengths)[direction]) : Json();
    json["can_open"] = node.open_error == 0;
    json["open_error"] = node.open_error == 0 ? Json() : Json(reason_text(node.open_error));
    json["admitted"] = !listed.refusal.has_value();
    json["rule"] = listed.refusal ? Json(listed.refusal->name) : Json();
    json["reason"] = listed.refusal ? Json(listed.refusal->reason) : Json();
    return json;
}

}  // namespace

std::vector<ListedNode> list(System& system) {
    std::vector<ListedNode> nodes;
    for (const auto& node : list_nodes(system))
        nodes.push_back(list_node(system, node));
    return nodes;
}

std::string to_text(const std::vector<ListedNode>& nodes) {
    std::string text;
    for (const auto& node : nodes) {
        text += text.empty() ? "" : "\n";
        text += heading(node) + permission_text(node) + interfaces_table(node).to_string();
    }
    return text.empty() ? "There is no HID device.\n" : text;
}

std::vector<Json> to_json(const std::vector<ListedNode>& nodes) {
    std::vector<Json> lines;
    for (const auto& node : nodes)
        for (const auto& listed : node.interfaces)
            lines.push_back(interface_to_json(node, listed));
    return lines;
}

}  // namespace headset
