#include "hid/hid_access.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <new>
#include <vector>

#include "base/plugin_log.h"
#include "hid/data_entries.h"
#include "hid/hid_device.h"
#include "platform/platform.h"

namespace headset_plugin {

using platform::HidInterfaceInfo;
using platform::IoResult;

namespace {

/// The last failure to list or open of this thread: the plug-in's own passes must not replace a host's.
thread_local std::wstring t_global_error;

/// "operation: reason", as far as the system gives one.
std::wstring error_text(const wchar_t* operation, const std::wstring& reason) {
    return reason.empty() ? std::wstring(operation) : std::wstring(operation) + L": " + reason;
}

/// The text of a failure, in hidapi's manner; empty for none.
std::wstring failure_text(const IoResult& result, const wchar_t* operation, const wchar_t* timeout_text) {
    switch (result.status) {
        case IoResult::Status::done:
            return {};
        case IoResult::Status::timed_out:
            return timeout_text;
        case IoResult::Status::cancelled:
            return error_text(operation, L"cancelled");
        case IoResult::Status::failed:
            break;
    }
    return error_text(operation, result.error);
}

/// The bytes done, or the failure recorded.
int count_or_failure(hid_device* device, const IoResult& result, const wchar_t* operation,
                     const wchar_t* timeout_text) {
    if (result.status == IoResult::Status::done) {
        return static_cast<int>(result.size);
    }
    hid_set_error(device, failure_text(result, operation, timeout_text));
    return -1;
}

/// Records how a read ended: an empty text for one that did not fail.
void set_read_error(hid_device& device, const std::wstring& text) {
    device.last_read_error.set(text);
    if (!text.empty()) {
        device.last_error.set(text);
    }
}

int copy_text(std::span<wchar_t> buffer, const std::wstring& text) {
    const std::size_t length = std::min(text.size(), buffer.size() - 1);
    std::copy_n(text.begin(), length, buffer.begin());
    buffer[length] = L'\0';
    return 0;
}

template <typename Char>
Char* duplicate(const std::basic_string<Char>& text) {
    auto* const copy = static_cast<Char*>(std::calloc(text.size() + 1, sizeof(Char)));
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    std::copy(text.begin(), text.end(), copy);
    return copy;
}

wchar_t* duplicate(const std::optional<std::wstring>& text) {
    return text ? duplicate(*text) : nullptr;
}

/// One record of hidapi's enumeration list, from malloc as hidapi's are.
hid_device_info* make_record(const HidInterfaceInfo& info) {
    auto* const memory = static_cast<hid_device_info*>(std::calloc(1, sizeof(hid_device_info)));
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    HidEnumeration record(memory);
    record->path = duplicate(info.path);
    record->vendor_id = info.vendor_id;
    record->product_id = info.product_id;
    record->serial_number = duplicate(info.serial_number);
    record->release_number = info.release_number;
    record->manufacturer_string = duplicate(info.manufacturer_string);
    record->product_string = duplicate(info.product_string);
    record->usage_page = info.usage_page;
    record->usage = info.usage;
    record->interface_number = info.interface_number;
    record->bus_type = static_cast<hid_bus_type>(info.bus_type);
    return record.release();
}

/// True for two collections of one device.
bool is_same_device(const HidInterfaceInfo& one, const HidInterfaceInfo& other) {
    return one.vendor_id == other.vendor_id && one.product_id == other.product_id &&
           (one.hid_interface == other.hid_interface ||
            (one.serial_number && one.serial_number == other.serial_number));
}

/// Steps after the system has opened the device. Throws OpenError.
HidHandle make_handle(std::unique_ptr<platform::HidInterface> interface) {
    static constexpr const char* function = "hid_open_path";
    static std::atomic<std::uint32_t> g_last_number{0};
    auto device = std::make_shared<hid_device>();
    device->number = ++g_last_number;
    device->interface = std::move(interface);
    if (!device->interface->HidD_SetNumInputBuffers(hid_input_buffers)) {
        throw OpenError(L"HidD_SetNumInputBuffers");
    }
    device->pp_data.reset(device->interface->HidD_GetPreparsedData());
    if (!device->pp_data) {
        throw OpenError(L"HidD_GetPreparsedData");
    }
    plugin_log("HID_WIN: %s: pp_data fetched successfully\n", function);
    const auto& parser = platform::current().parser();
    if (parser.HidP_GetCaps(device->pp_data.get(), &device->caps) != platform::HIDP_STATUS_SUCCESS) {
        throw OpenError(L"HidP_GetCaps");
    }
    const platform::HIDP_CAPS& caps = device->caps;
    plugin_log(
        "HID_WIN: %s: caps fetched successfully, OutputReportByteLength=%d, InputReportByteLength=%d, NumberOutputButtonCaps=%d, NumberInputButtonCaps=%d, NumberOutputValueCaps=%d, NumberInputValueCaps=%d\n",
        function, caps.OutputReportByteLength, caps.InputReportByteLength, caps.NumberOutputButtonCaps,
        caps.NumberInputButtonCaps, caps.NumberOutputValueCaps, caps.NumberInputValueCaps);
    device->output_report_length = caps.OutputReportByteLength;
    device->input_report_length = caps.InputReportByteLength;
    device->number_input_value_caps = caps.NumberInputValueCaps;
    device->number_output_value_caps = caps.NumberOutputValueCaps;
    device->number_input_button_caps = caps.NumberInputButtonCaps;
    device->number_output_button_caps = caps.NumberOutputButtonCaps;
    plugin_log("HID_WIN: %s: query_device_info start\n", function);
    query_device_info(*device);
    plugin_log("HID_WIN: %s: query_device_info end\n", function);
    return device;
}

constexpr const wchar_t* no_room = L"Zero length buffer";

/// False, with the device's error set, for a buffer that has no room for as much as the id byte.
bool has_room(hid_device* device, std::span<const std::uint8_t> report) {
    if (device != nullptr && report.empty()) {
        hid_set_error(device, no_room);
    }
    return device != nullptr && !report.empty();
}

}  // namespace

void PreparsedDataRelease::operator()(platform::PHIDP_PREPARSED_DATA data) const {
    platform::current().hid().HidD_FreePreparsedData(data);
}

void HidEnumerationRelease::operator()(hid_device_info* list) const {
    while (list != nullptr) {
        hid_device_info* const next = list->next;
        std::free(list->path);
        std::free(list->serial_number);
        std::free(list->manufacturer_string);
        std::free(list->product_string);
        std::free(list);
        list = next;
    }
}

bool hid_access_init() {
    std::wstring error = platform::current().hid().init();
    if (error.empty()) {
        return true;
    }
    hid_set_error(nullptr, std::move(error));
    return false;
}

void hid_access_exit() {
    platform::current().hid().exit();
}

platform::HidapiVersion hid_access_version() {
    return hid_access_init() ? platform::current().hid().hidapi_version()
                             : platform::HidapiVersion{HID_API_VERSION_MAJOR, HID_API_VERSION_MINOR,
                                                       HID_API_VERSION_PATCH, HID_API_VERSION_STR};
}

HidEnumeration hid_list(std::uint16_t vendor_id, std::uint16_t product_id) {
    if (!hid_access_init()) {
        return nullptr;
    }
    HidEnumeration head;
    hid_device_info* last = nullptr;
    for (const auto& info : platform::current().hid().enumerate(vendor_id, product_id)) {
        hid_device_info* const record = make_record(info);
        if (last == nullptr) {
            head.reset(record);
        } else {
            last->next = record;
        }
        last = record;
    }
    if (!head) {
        hid_set_error(nullptr, L"No HID devices found in the system.");
    }
    return head;
}

HidHandle hid_open_handle(const char* path) {
    if (!hid_access_init()) {
        return nullptr;
    }
    auto opened = platform::current().hid().open(path);
    if (!opened.interface) {
        hid_set_error(nullptr, error_text(L"CreateFile", opened.error));
        return nullptr;
    }
    return hid_open_handle(std::move(opened.interface));
}

HidHandle hid_open_handle(std::unique_ptr<platform::HidInterface> opened) {
    try {
        return make_handle(std::move(opened));
    } catch (const OpenError& error) {
        hid_set_error(nullptr, error.text());
        return nullptr;
    }
}

HidHandle hid_open_handle(std::uint16_t vendor_id, std::uint16_t product_id,
                          std::optional<std::wstring_view> serial_number) {
    constexpr std::uint16_t telephony_page = 0x0B;  // HID Usage Tables, section 3.1
    if (!hid_access_init()) {
        return nullptr;
    }
    const auto list = platform::current().hid().enumerate(vendor_id, product_id);
    const auto first = std::find_if(list.begin(), list.end(), [&](const HidInterfaceInfo& info) {
        return !serial_number || info.serial_number == *serial_number;
    });
    if (first == list.end()) {
        hid_set_error(nullptr, L"Device with requested VID/PID/(SerialNumber) not found");
        return nullptr;
    }
    const auto telephony = std::find_if(first, list.end(), [&](const HidInterfaceInfo& info) {
        return info.usage_page == telephony_page && is_same_device(info, *first);
    });
    return hid_open_handle((telephony == list.end() ? first : telephony)->path.c_str());
}

int hid_read_report(hid_device* device, std::span<std::uint8_t> report, std::chrono::milliseconds timeout) {
    if (device == nullptr) {
        return -1;
    }
    if (report.empty()) {
        set_read_error(*device, no_room);
        return -1;
    }
    const IoResult result = device->interface->read(report, timeout);
    const std::wstring error = failure_text(result, L"ReadFile", L"");
    set_read_error(*device, error);
    return error.empty() ? static_cast<int>(result.size) : -1;
}

std::chrono::milliseconds hid_read_mode_timeout(const hid_device* device) {
    return device->blocking ? platform::no_timeout : std::chrono::milliseconds{0};
}

int hid_write_report(hid_device* device, std::span<const std::uint8_t> report) {
    if (!has_room(device, report)) {
        return -1;
    }
    std::vector<std::uint8_t> padded;
    if (report.size() < device->output_report_length) {
        padded.assign(report.begin(), report.end());
        padded.resize(device->output_report_length);
        report = padded;
    }
    return count_or_failure(device, device->interface->write(report, hid_write_timeout), L"WriteFile",
                            L"WriteFile/WaitForSingleObject Timeout");
}

int hid_send_feature(hid_device* device, std::span<const std::uint8_t> report) {
    return has_room(device, report) ? count_or_failure(device, device->interface->HidD_SetFeature(report),
                                                       L"HidD_SetFeature", L"HidD_SetFeature timeout")
                                    : -1;
}

int hid_get_feature(hid_device* device, std::span<std::uint8_t> report) {
    return has_room(device, report) ? count_or_failure(device, device->interface->HidD_GetFeature(report),
                                                       L"HidD_GetFeature", L"HidD_GetFeature timeout")
                                    : -1;
}

int hid_get_input(hid_device* device, std::span<std::uint8_t> report) {
    return has_room(device, report) ? count_or_failure(device, device->interface->HidD_GetInputReport(report),
                                                       L"HidD_GetInputReport", L"HidD_GetInputReport timeout")
                                    : -1;
}

int hid_send_output(hid_device* device, std::span<const std::uint8_t> report) {
    return has_room(device, report)
               ? count_or_failure(device, device->interface->HidD_SetOutputReport(report),
                                  L"HidD_SetOutputReport", L"HidD_SetOutputReport timeout")
               : -1;
}

int hid_copy_report_descriptor(hid_device* device, std::span<std::uint8_t> buffer) {
    if (!has_room(device, buffer)) {
        return -1;
    }
    const std::vector<std::uint8_t> descriptor = device->interface->report_descriptor();
    const std::size_t length = std::min(descriptor.size(), buffer.size());
    std::copy_n(descriptor.begin(), length, buffer.begin());
    return static_cast<int>(length);
}

hid_device_info* hid_info(hid_device* device) {
    if (device == nullptr) {
        return nullptr;
    }
    platform::MutexLock lock(device->info_mutex);
    if (!device->info) {
        if (auto info = device->interface->info()) {
            info->serial_number = info->serial_number.value_or(L"");
            device->info.reset(make_record(*info));
        } else {
            hid_set_error(device, L"The device does not say what it is.");
        }
    }
    return device->info.get();
}

void hid_cancel(hid_device* device) {
    if (device != nullptr) {
        device->interface->cancel();
    }
}

void hid_end_reading(hid_device* device) {
    if (device != nullptr) {
        device->interface->end_reading();
        device->interface->cancel();
    }
}

bool hid_is_connected(hid_device* device) {
    return device != nullptr && device->interface->is_connected();
}

int hid_copy_string(hid_device* device, platform::HidString which, std::span<wchar_t> buffer) {
    if (device == nullptr || buffer.empty()) {
        return -1;
    }
    const auto text = device->interface->string(which);
    if (!text) {
        hid_set_error(device, L"The device does not have this string.");
        return -1;
    }
    return copy_text(buffer, *text);
}

int hid_copy_indexed_string(hid_device* device, int index, std::span<wchar_t> buffer) {
    if (device == nullptr || buffer.empty() || index < 0) {
        return -1;
    }
    const auto text = device->interface->HidD_GetIndexedString(static_cast<platform::ULONG>(index));
    if (!text) {
        hid_set_error(device, L"HidD_GetIndexedString");
        return -1;
    }
    return copy_text(buffer, *text);
}

std::wstring hid_last_error(const hid_device* device) {
    return device == nullptr ? t_global_error : device->last_error.get();
}

std::wstring hid_last_read_error(const hid_device* device) {
    return device == nullptr ? std::wstring() : device->last_read_error.get();
}

void hid_set_error(hid_device* device, std::wstring text) {
    if (device == nullptr) {
        t_global_error = std::move(text);
    } else {
        device->last_error.set(std::move(text));
    }
}

std::size_t hid_output_report_length(const hid_device* device) {
    return device == nullptr ? 0 : device->output_report_length;
}

int hid_handle_number(const hid_device* device) {
    return device == nullptr ? 0 : static_cast<int>(device->number);
}

}  // namespace headset_plugin
