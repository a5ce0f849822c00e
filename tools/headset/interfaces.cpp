#include "tools/headset/interfaces.h"

#include <algorithm>
#include <stdexcept>

#include "platform/linux/device_path.h"
#include "platform/text.h"
#include "tools/headset/errors.h"

namespace headset {
namespace {

using platform::HidInterfaceInfo;

std::string node_of(const std::string& path) {
    return platform::linux_platform::DevicePath::parse(path).node;
}

/// hidapi gives an empty text where it finds none, as for the manufacturer of a device that is not on the
/// USB.
void forget_empty_names(HidInterfaceInfo& info) {
    for (auto* const name : {&info.manufacturer_string, &info.product_string})
        if (*name && (*name)->empty())
            name->reset();
}

/// The nodes with those of their interfaces that are wanted, where there are any.
template <class Predicate>
std::vector<Node> select(std::vector<Node> nodes, Predicate is_wanted) {
    for (auto& node : nodes)
        std::erase_if(node.interfaces, [&](const HidInterfaceInfo& info) { return !is_wanted(node, info); });
    std::erase_if(nodes, [](const Node& node) { return node.interfaces.empty(); });
    return nodes;
}

bool has_path(const Node& node, const HidInterfaceInfo& info, const std::string& path) {
    return node.path == path || info.path == path;
}

bool has_serial(const HidInterfaceInfo& info, const std::string& serial) {
    return info.serial_number && platform::to_utf8(*info.serial_number) == serial;
}

std::vector<Node> first_telephony(std::vector<Node> nodes) {
    const auto found = std::ranges::find_if(nodes, has_telephony);
    if (found == nodes.end())
        throw Refused("there is no headset: no device has a collection of the Telephony page");
    return {*found};
}

}  // namespace

std::vector<Node> list_nodes(System& system) {
    if (const auto error = system.hidapi_error(); !error.empty())
        throw std::runtime_error("hidapi cannot be loaded: " + error);
    std::vector<Node> nodes;
    for (auto& info : system.interfaces()) {
        const auto path = node_of(info.path);
        if (nodes.empty() || nodes.back().path != path)
            nodes.push_back({path, {}});
        forget_empty_names(info);
        nodes.back().interfaces.push_back(std::move(info));
    }
    return nodes;
}

bool names_node(System& system, const std::string& path) {
    return !system.report_descriptor(node_of(path)).empty();
}

Node find_node(System& system, const std::string& path) {
    auto found = select(list_nodes(system), [&](const auto&... of) { return has_path(of..., path); });
    if (found.empty())
        throw Refused(path + " is no HID device; \"headset list\" shows those that there are");
    return std::move(found.front());
}

std::vector<Node> find_headset(System& system, const std::string& path_or_serial) {
    if (path_or_serial.empty())
        return first_telephony(list_nodes(system));
    auto found = select(list_nodes(system), [&](const Node& node, const HidInterfaceInfo& info) {
        return has_path(node, info, path_or_serial) || has_serial(info, path_or_serial);
    });
    if (found.empty())
        throw Refused("there is no device with the path or serial number " + tools::quoted(path_or_serial) +
                      "; \"headset list\" shows those that there are");
    return found;
}

std::optional<Node> find_serial(System& system, const std::string& serial) {
    if (!system.hidapi_error().empty())
        return std::nullopt;
    const auto found = select(list_nodes(system), [&](const Node&, const HidInterfaceInfo& info) {
        return has_serial(info, serial);
    });
    if (found.empty())
        return std::nullopt;
    const auto telephony = std::ranges::find_if(found, has_telephony);
    return telephony == found.end() ? found.front() : *telephony;
}

bool has_telephony(const Node& node) {
    return std::ranges::any_of(node.interfaces, [](const HidInterfaceInfo& info) {
        return info.usage_page == plugin_control::telephony_usage_page;
    });
}

std::optional<plugin_control::Refusal> find_refusal(const HidInterfaceInfo& info) {
    plugin_control::Candidate candidate{info.vendor_id, info.product_id,
                                        static_cast<std::int16_t>(info.usage_page)};
    if (info.serial_number)
        candidate.serial = platform::to_utf8(*info.serial_number);
    return plugin_control::find_refusal(candidate);
}

std::string printable(std::wstring_view text) {
    return tools::printable(platform::to_utf8(text));
}

std::string device_name(const HidInterfaceInfo& info) {
    return info.product_string ? printable(*info.product_string) : "unnamed device";
}

std::string device_ids(const HidInterfaceInfo& info) {
    return tools::to_hex16(info.vendor_id) + ":" + tools::to_hex16(info.product_id);
}

Descriptor describe(System& system, const Node& node) {
    const auto& info = node.interfaces.front();
    return {.bytes = system.report_descriptor(node.path),
            .name = device_name(info),
            .ids = DeviceIds{info.vendor_id, info.product_id},
            .has_serial = info.serial_number.has_value()};
}

}  // namespace headset
