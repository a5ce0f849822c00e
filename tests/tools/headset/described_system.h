// A machine that a test describes.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/common/steady_clock.h"
#include "platform/text.h"
#include "tests/tools/headset/small_headset.h"
#include "tools/headset/system.h"
#include "virtual_headset/virtual_bus.h"

namespace headset {

/// A device of the described machine.
struct DescribedDevice {
    std::string node = "/dev/hidraw0";
    Bytes descriptor = model_descriptor("jabra-link-380c");
    std::uint16_t vendor_id = 0x0B0E;
    std::uint16_t product_id = 0x24C9;
    std::optional<std::wstring> manufacturer = L"GN Netcom A/S";
    std::optional<std::wstring> product = L"Jabra Link 380c";
    std::optional<std::wstring> serial = L"SN-1";
    NodeState state{};
};

/// Everything is well with it, and it has no device. Opened devices live on the bus, on which a test presses
/// their keys.
class DescribedSystem final : public System {
  public:
    std::string hidapi_failure{};
    std::string udev_failure{};
    bool has_udev_daemon = true;
    bool is_root = false;
    std::optional<RulesFile> rules{};
    std::string refused_path{};  ///< cannot be opened

    /// Its number on the bus.
    int plug(const DescribedDevice& device) {
        std::string failure;
        const auto number = bus_.plug({.descriptor = device.descriptor,
                                       .vendor_id = device.vendor_id,
                                       .product_id = device.product_id,
                                       .manufacturer = {},
                                       .product = {},
                                       .serial = {}},
                                      failure);
        devices_.push_back(device);
        if (number) {
            int collection = 0;
            for (const auto& info : bus_.enumerate(0, 0))
                if (!is_known(info.path))
                    paths_.emplace(device.node + ":" + std::to_string(++collection), info.path);
        }
        return number.value_or(0);
    }
    platform::virtual_platform::VirtualBus& bus() { return bus_; }

    std::string hidapi_error() override { return hidapi_failure; }
    std::string udev_error() override { return udev_failure; }
    bool udev_daemon_runs() override { return has_udev_daemon; }
    bool runs_as_root() override { return is_root; }
    std::optional<RulesFile> rules_file(const std::string& /*name*/) override { return rules; }

    std::vector<platform::HidInterfaceInfo> interfaces() override {
        std::vector<platform::HidInterfaceInfo> list;
        for (const auto& device : devices_)
            add_interfaces(device, list);
        return list;
    }

    Bytes report_descriptor(const std::string& node) override {
        const auto* const device = find(node);
        return device == nullptr ? Bytes() : device->descriptor;
    }

    NodeState node_state(const std::string& node) override { return find(node)->state; }

    platform::HidBackend::OpenResult open(const std::string& path) override {
        if (path == refused_path)
            return {nullptr, platform::to_wide(path + ": Permission denied")};
        return bus_.open(paths_.at(path));
    }

  private:
    bool is_known(const std::string& bus_path) const {
        return std::ranges::any_of(paths_, [&](const auto& path) { return path.second == bus_path; });
    }

    const DescribedDevice* find(const std::string& node) const {
        const auto found = std::ranges::find(devices_, node, &DescribedDevice::node);
        return found == devices_.end() ? nullptr : &*found;
    }

    /// As the platform of Linux lists them: one for each collection, or the bare node where the descriptor is
    /// refused.
    static void add_interfaces(const DescribedDevice& device, std::vector<platform::HidInterfaceInfo>& list) {
        platform::HidInterfaceInfo info;
        info.path = device.node;
        info.vendor_id = device.vendor_id;
        info.product_id = device.product_id;
        info.serial_number = device.serial;
        info.manufacturer_string = device.manufacturer;
        info.product_string = device.product;
        const auto collections = platform::hidp::parse(device.descriptor).collections;
        if (collections.empty())
            list.push_back(info);
        for (std::size_t i = 0; i < collections.size(); ++i) {
            const auto usage = collection_usage(collections[i].get());
            info.path = device.node + ":" + std::to_string(i + 1);
            info.usage_page = usage.page;
            info.usage = usage.id;
            list.push_back(info);
        }
    }

    platform::virtual_platform::VirtualBus bus_{
        [](bool) {}, [] { return platform::common::SteadyClock().make_sleeper(); }};
    std::vector<DescribedDevice> devices_;
    std::map<std::string, std::string> paths_;  ///< of the bus, by those of the machine
};

}  // namespace headset
