// The system's own hidapi, which knows nothing of the plug-in: what any other program sees of a headset.
#pragma once

#include <array>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <hidapi/hidapi.h>
#include <string>
#include <vector>

#include "tests/support/recording_logger.h"

namespace test_support {

/// One entry of an enumeration.
struct ListedDevice {
    std::string path;
    std::wstring serial;
    std::wstring product;
    std::wstring manufacturer;
    unsigned short vendor_id = 0;
    unsigned short product_id = 0;
    unsigned short usage_page = 0;
    int interface_number = -1;
};

class SystemHidapi {
  public:
    SystemHidapi() : library_(dlopen("libhidapi-hidraw.so.0", RTLD_NOW | RTLD_LOCAL)) {
        EXPECT_NE(library_, nullptr) << dlerror();
    }
    ~SystemHidapi() {
        find<decltype(hid_exit)>("hid_exit")();
        dlclose(library_);
    }
    SystemHidapi(const SystemHidapi&) = delete;
    SystemHidapi& operator=(const SystemHidapi&) = delete;

    template <typename Function>
    Function* find(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(library_, name));
    }

    /// The collections of every device with this serial number.
    std::vector<ListedDevice> list(const std::wstring& serial) const {
        const auto text = [](const wchar_t* value) { return std::wstring(value == nullptr ? L"" : value); };
        hid_device_info* const all = find<decltype(hid_enumerate)>("hid_enumerate")(0, 0);
        std::vector<ListedDevice> listed;
        for (const hid_device_info* info = all; info != nullptr; info = info->next) {
            if (text(info->serial_number) == serial) {
                listed.push_back({info->path, serial, text(info->product_string),
                                  text(info->manufacturer_string), info->vendor_id, info->product_id,
                                  info->usage_page, info->interface_number});
            }
        }
        find<decltype(hid_free_enumeration)>("hid_free_enumeration")(all);
        return listed;
    }

    /// Waits until a device with this serial number is there.
    std::vector<ListedDevice> wait_for_list(const std::wstring& serial) const {
        std::vector<ListedDevice> listed;
        EXPECT_TRUE(eventually([&] { return !(listed = list(serial)).empty(); }));
        return listed;
    }

  private:
    void* const library_;
};

/// A device that is opened with the system's hidapi.
class OpenedDevice {
  public:
    OpenedDevice(const SystemHidapi& hidapi, const std::string& path)
        : hidapi_(hidapi), device_(hidapi.find<decltype(hid_open_path)>("hid_open_path")(path.c_str())) {
        EXPECT_NE(device_, nullptr) << path;
    }
    ~OpenedDevice() { hidapi_.find<decltype(hid_close)>("hid_close")(device_); }
    OpenedDevice(const OpenedDevice&) = delete;
    OpenedDevice& operator=(const OpenedDevice&) = delete;

    /// The next input report; empty when `patience` is over.
    std::vector<std::uint8_t> read() const {
        constexpr int limit_ms = static_cast<int>(std::chrono::milliseconds(patience).count());
        std::vector<std::uint8_t> report(64);
        const int size = hidapi_.find<decltype(hid_read_timeout)>("hid_read_timeout")(
            device_, report.data(), report.size(), limit_ms);
        report.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
        return report;
    }

    /// Reads without a limit. \return hid_read's result
    int read_blocking() const {
        std::array<std::uint8_t, 64> report{};
        return hidapi_.find<decltype(hid_read)>("hid_read")(device_, report.data(), report.size());
    }

    int write(const std::vector<std::uint8_t>& report) const {
        return hidapi_.find<decltype(hid_write)>("hid_write")(device_, report.data(), report.size());
    }

    int get_feature_report(std::uint8_t id) const {
        std::array<std::uint8_t, 64> report{id};
        return hidapi_.find<decltype(hid_get_feature_report)>("hid_get_feature_report")(
            device_, report.data(), report.size());
    }

  private:
    const SystemHidapi& hidapi_;
    hid_device* const device_;
};

}  // namespace test_support
