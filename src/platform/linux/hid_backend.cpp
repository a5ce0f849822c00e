#include "platform/linux/hid_backend.h"

#include <cerrno>
#include <fcntl.h>

#include "platform/hidp/hidp.h"
#include "platform/linux/device_path.h"
#include "platform/linux/hidraw_interface.h"
#include "platform/linux/interface_info.h"
#include "platform/linux/report_descriptor.h"
#include "platform/linux/system_error.h"
#include "platform/linux/utf8_locale.h"

namespace platform::linux_platform {

namespace {

struct TopLevelUsage {
    USAGE page;
    USAGE usage;
};

/// The top-level collections of a node, none where its descriptor is refused.
std::vector<TopLevelUsage> top_level_usages(const std::string& node) {
    std::vector<TopLevelUsage> usages;
    for (const auto& collection : hidp::parse(descriptor_of(node)).collections) {
        HIDP_CAPS caps{};
        hidp::parser().HidP_GetCaps(collection.get(), &caps);
        usages.push_back({caps.UsagePage, caps.Usage});
    }
    return usages;
}

/// Adds the collections of the node whose entries begin at `entry`, and returns the entry behind them. hidapi
/// has an entry for each, too, but what numbers them is the parser that opens them. A node that it refuses
/// stays listed as hidapi sees it: opening it says why.
const hid_device_info* add_node(const hid_device_info* entry, std::vector<HidInterfaceInfo>& list) {
    if (entry->path == nullptr) {
        return entry->next;  // the node went away while hidapi looked at it
    }
    const std::string node = entry->path;
    const std::vector<TopLevelUsage> usages = top_level_usages(node);
    for (std::size_t i = 0; i < usages.size(); ++i) {
        HidInterfaceInfo info = interface_info(*entry);
        info.path = DevicePath{node, i}.to_string();
        info.usage_page = usages[i].page;
        info.usage = usages[i].usage;
        list.push_back(std::move(info));
    }
    for (; entry != nullptr && entry->path != nullptr && node == entry->path; entry = entry->next) {
        if (usages.empty()) {
            list.push_back(interface_info(*entry));
        }
    }
    return entry;
}

HidBackend::OpenResult refused(const std::string& node, const std::wstring& reason) {
    return {nullptr, to_wide(node) + L": " + reason};
}

}  // namespace

std::wstring LinuxHidBackend::init() {
    if (hidapi_ != nullptr) {
        return {};
    }
    MutexLock lock(load_mutex_);
    if (hidapi_ != nullptr) {
        return {};
    }
    try {
        hidapi_ =
            new Hidapi(load_hidapi());  // for as long as the process lives; its functions call its hid_init
        return {};
    } catch (const LibraryError& error) {
        return to_wide(std::string(error.what()) + " (Debian package: libhidapi-hidraw0)");
    }
}

// hidapi is the process's: the host may be using it. What hid_exit would free is one error text.
void LinuxHidBackend::exit() {}

HidapiVersion LinuxHidBackend::hidapi_version() {
    const Hidapi& hidapi = *hidapi_;
    const hid_api_version& version = *hidapi.hid_version();
    return {version.major, version.minor, version.patch, hidapi.hid_version_str()};
}

std::vector<HidInterfaceInfo> LinuxHidBackend::enumerate(std::uint16_t vendor_id, std::uint16_t product_id) {
    const Hidapi& hidapi = *hidapi_;
    MutexLock lock(hidapi_mutex_);
    const Utf8Locale utf8;
    const std::unique_ptr<hid_device_info, decltype(hidapi.hid_free_enumeration)> entries(
        hidapi.hid_enumerate(vendor_id, product_id), hidapi.hid_free_enumeration);
    std::vector<HidInterfaceInfo> list;
    for (const hid_device_info* entry = entries.get(); entry != nullptr;) {
        entry = add_node(entry, list);
    }
    return list;
}

HidBackend::OpenResult LinuxHidBackend::open(const std::string& path) {
    const Hidapi& hidapi = *hidapi_;
    const DevicePath wanted = DevicePath::parse(path);
    common::FileDescriptor node(::open(wanted.node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (node.get() < 0) {
        return refused(wanted.node, error_text(errno));
    }
    std::vector<std::uint8_t> descriptor = descriptor_of(node.get());
    if (descriptor.empty()) {
        const bool is_other_file = errno == ENOTTY || errno == EINVAL;
        return refused(wanted.node, is_other_file ? L"this is no HID device" : error_text(errno));
    }
    try {
        CollectionDescriptor collection(std::move(descriptor), wanted.collection);
        MutexLock lock(hidapi_mutex_);
        const Utf8Locale utf8;
        std::unique_ptr<hid_device, decltype(hidapi.hid_close)> device(
            hidapi.hid_open_path(wanted.node.c_str()), hidapi.hid_close);
        if (!device) {
            const wchar_t* const reason = hidapi.hid_error(nullptr);
            return refused(wanted.node, reason == nullptr ? L"" : reason);
        }
        auto opened = std::make_shared<const OpenNode>(hidapi, std::move(device), std::move(node));
        return {std::make_unique<HidrawInterface>(std::move(opened), std::move(collection))};
    } catch (const std::runtime_error& error) {
        return refused(wanted.node, to_wide(error.what()));
    }
}

void LinuxHidBackend::HidD_FreePreparsedData(PHIDP_PREPARSED_DATA data) {
    hidp::PreparsedDataDeleter{}(data);
}

}  // namespace platform::linux_platform
