// Prints the tables of docs/headsets.md: the vendors that the plug-in knows, and what it can do with each
// headset whose report descriptor is at hand. That is what `headset explain` finds out.
//
// Usage: headset_tables
#include <algorithm>
#include <cstdint>
#include <exception>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "device/vendor_names.h"
#include "drivers/driver_factory.h"
#include "drivers/stdhid_cc.h"
#include "tests/docs/markdown_table.h"
#include "tests/support/reference_data.h"
#include "tools/common/text.h"
#include "tools/headset/explain.h"
#include "virtual_headset/models/model.h"

namespace docs {
namespace {

using headset::Explanation;
using headset::range_label;
using headset::usage_name;
using headset::usage_number;

// HID Usage Tables, section 3.
constexpr std::uint16_t led_page = 0x08;
constexpr std::uint16_t telephony_page = 0x0B;

struct Device {
    headset::Descriptor descriptor;
    bool has_product_id = true;

    std::string ids() const {
        return tools::to_hex16(descriptor.ids->vendor) + ":" +
               (has_product_id ? tools::to_hex16(descriptor.ids->product) : "?");
    }
};

// ---- where descriptors come from

std::vector<Device> models() {
    std::vector<Device> devices;
    for (const auto* model : platform::virtual_headsets::models()) {
        devices.push_back({{.bytes = model->descriptor,
                            .name = model->product,
                            .ids = headset::DeviceIds{model->vendor_id, model->product_id}}});
    }
    return devices;
}

/// The name, without what the record remarks on it.
std::string name_of(const nlohmann::json& record) {
    const auto name = record.at("name").get<std::string>();
    return name.substr(0, name.find(" ("));
}

/// A record of a real device whose vendor is known: without the vendor there is no telling whether it has a
/// driver.
bool is_usable(const nlohmann::json& record) {
    return record.at("kind").get<std::string>().starts_with("device") && !record.at("vid").is_null() &&
           reference::has_descriptor(record);
}

std::vector<Device> reference_devices() {
    std::vector<Device> devices;
    for (const auto& [file, record] : reference::load("real")) {
        if (!is_usable(record)) {
            continue;
        }
        const bool has_product_id = !record["pid"].is_null();
        const auto product_id = has_product_id ? record["pid"].get<std::uint16_t>() : std::uint16_t{0};
        devices.push_back({{.bytes = reference::descriptor(record),
                            .name = name_of(record),
                            .ids = headset::DeviceIds{record["vid"].get<std::uint16_t>(), product_id}},
                           has_product_id});
    }
    return devices;
}

bool is_model_of(const Device& model, const Device& real) {
    return model.descriptor.bytes == real.descriptor.bytes &&
           model.descriptor.ids->vendor == real.descriptor.ids->vendor &&
           (model.descriptor.ids->product == real.descriptor.ids->product || !real.has_product_id);
}

/// Every device once: a model stands for the device that it is a model of.
std::vector<Device> all_devices() {
    const std::vector<Device> modelled = models();
    std::vector<Device> devices = modelled;
    for (const Device& real : reference_devices()) {
        if (std::ranges::none_of(modelled, [&](const Device& model) { return is_model_of(model, real); })) {
            devices.push_back(real);
        }
    }
    std::ranges::sort(devices, {}, [](const Device& device) { return device.descriptor.name; });
    return devices;
}

// ---- what is told of them

bool has_telephony(const Explanation& explanation) {
    return std::ranges::any_of(explanation.collections, [](const auto& collection) {
        return collection.usage.page == telephony_page;
    });
}

/// A device with a collection of the Telephony page, or of a vendor of headsets.
bool is_headset(const Explanation& explanation) {
    const auto is_vendor = [&](const headset_plugin::VendorName& vendor) {
        return vendor.vendor_id == explanation.ids->vendor;
    };
    return has_telephony(explanation) || std::ranges::any_of(headset_plugin::vendor_names(), is_vendor);
}

bool is_let_in(const Explanation& explanation) {
    return std::ranges::any_of(explanation.collections, [](const auto& collection) {
        return collection.fate != headset::CollectionFate::left_alone;
    });
}

std::string opening(const Explanation& explanation) {
    if (explanation.is_open) {
        return "opened";
    }
    if (!is_let_in(explanation)) {
        return "ignored";
    }
    return has_telephony(explanation) ? "accepted, cannot be opened: " + explanation.open_error
                                      : "accepted, not opened: no collection of the Telephony page";
}

std::string indicator_cell(const Explanation& explanation, std::size_t index) {
    if (!explanation.is_open || !explanation.indicators[index].on) {
        return nothing;
    }
    return explanation.indicators[index].works() ? "yes" : "cannot be lit";
}

std::string mute_key_cell(const Explanation& explanation) {
    Cells keys;
    for (const auto& key : explanation.mute_keys) {
        keys.push_back(usage_name(key.usage) + (key.also_released ? ", also when released" : ""));
    }
    return joined(keys, "; ");
}

/// What the user gets.
std::string verdict(const Explanation& explanation) {
    if (!explanation.is_open) {
        return "nothing";
    }
    if (!explanation.has_driver) {
        return "nothing: no driver for the vendor";
    }
    const bool shows_call = !explanation.states.front().lit.empty();
    const bool shows_mute = explanation.indicators.back().works();
    Cells works;
    if (shows_call) {
        works.emplace_back("call shown");
    }
    if (shows_mute) {
        works.emplace_back("mute shown");
    }
    if (!explanation.mute_keys.empty()) {
        works.emplace_back("mute key");
    }
    return works.empty() ? "nothing" : joined(works, ", ");
}

/// The controls of telephony that the plug-in makes no use of.
std::string unused_cell(const Explanation& explanation, const std::string& kind) {
    Cells names;
    std::set<std::string> seen;
    for (const auto& control : explanation.unused) {
        const bool is_telephony = control.first.page == telephony_page || control.first.page == led_page;
        std::string name = control.first.id == control.last ? usage_name(control.first)
                                                            : range_label(control.first, control.last);
        if (name.empty()) {
            name = usage_number(control.first);
        }
        if (control.kind == kind && is_telephony && seen.insert(name).second) {
            names.push_back(name);
        }
    }
    return joined(names, ", ");
}

void print_headsets() {
    MarkdownTable table("headsets", {"Headset", "Ids", "Works", "Opening", "Off-Hook", "Mute", "Mute key",
                                     "Other indicators", "Other keys"});
    for (const Device& device : all_devices()) {
        const Explanation explanation = headset::explain(device.descriptor);
        if (is_headset(explanation)) {
            table.add({explanation.name, device.ids(), verdict(explanation), opening(explanation),
                       indicator_cell(explanation, 0), indicator_cell(explanation, 1),
                       mute_key_cell(explanation), unused_cell(explanation, "indicator"),
                       unused_cell(explanation, "key")});
        }
    }
    table.print();
}

void print_vendors() {
    struct Vendor {
        Cells ids{};
        bool is_standard = true;
    };
    std::map<std::string, Vendor> vendors;
    for (const auto& [vendor_id, name] : headset_plugin::vendor_names()) {
        Vendor& vendor = vendors[name];
        vendor.ids.push_back(tools::to_hex16(static_cast<unsigned>(vendor_id)));
        const auto driver = headset_plugin::create_driver(static_cast<std::uint32_t>(vendor_id), 0);
        vendor.is_standard =
            vendor.is_standard && std::dynamic_pointer_cast<headset_plugin::stdhid_cc>(driver);
    }
    MarkdownTable table("vendors", {"Vendor", "Ids", "Driver"});
    for (const auto& [name, vendor] : vendors) {
        table.add({name, joined(vendor.ids, ", "), vendor.is_standard ? code("stdhid_cc") : nothing});
    }
    table.print();
}

}  // namespace
}  // namespace docs

int main() try {
    docs::print_vendors();
    docs::print_headsets();
    return 0;
} catch (const std::exception& error) {
    std::cerr << "headset_tables: " << error.what() << '\n';
    return 1;
}
