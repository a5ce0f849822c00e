#include "hid/usage_input.h"

#include <algorithm>
#include <vector>

#include "base/plugin_log.h"
#include "hid/hid_access.h"
#include "platform/platform.h"

namespace headset_plugin {

using platform::any_link_collection;
using platform::HIDP_BUTTON_CAPS;
using platform::HidP_Input;
using platform::HIDP_STATUS_NULL;
using platform::HIDP_STATUS_SUCCESS;
using platform::HIDP_VALUE_CAPS;
using platform::MutexLock;

namespace {

/// Phone Mute of the Telephony page (HID Usage Tables, 14.1), and a second usage that headsets are known to
/// send it by.
constexpr bool is_mute_usage(std::uint32_t usage) {
    return usage == 0x2F || usage == 0xB5;
}

/// The report as the parser wants it: as long as the collection's reports.
std::vector<std::uint8_t> complete_report(const hid_device& device, std::span<const std::uint8_t> report) {
    std::vector<std::uint8_t> complete(std::max<std::size_t>(report.size(), device.input_report_length));
    std::copy(report.begin(), report.end(), complete.begin());
    return complete;
}

/// Keeps, in place and in order, the usages of the entry's own capability: the parser lists those of the
/// whole page.
void keep_own_usages(HidDataEntry& entry, platform::ULONG num_usages, int index) {
    static constexpr const char* function = "get_input_data_usages";
    std::size_t kept = 0;
    for (std::size_t i = 0; i < num_usages; ++i) {
        const platform::USAGE usage = entry.Usages[i];
        plugin_log("HID_WIN: %s: usage_index=%d UsageMin=0x%x UsageMax=0x%x Usages[%d]=0x%x\n", function,
                   static_cast<int>(i), entry.UsageMin, entry.UsageMax, static_cast<int>(i), usage);
        if (entry.UsageMin <= usage && usage <= entry.UsageMax) {
            entry.Usages[kept++] = usage;
        }
    }
    if (kept < entry.MaxUsageLength) {
        entry.Usages[kept] = 0;
        plugin_log("HID_WIN: %s: HidP_GetUsages input_data_index=%d valid_num_usages=%d successfully\n",
                   function, index, static_cast<int>(kept));
    }
}

bool get_button_usages(hid_device& device, HidDataEntry& entry, int index,
                       std::span<const std::uint8_t> report) {
    static constexpr const char* function = "get_input_data_usages";
    plugin_log("HID_WIN: %s: input_data_index=%d max_usage_length=%d\n", function, index,
               static_cast<int>(entry.MaxUsageLength));
    platform::ULONG num_usages = entry.MaxUsageLength;
    entry.Status = platform::current().parser().HidP_GetUsages(
        HidP_Input, entry.UsagePage, any_link_collection, entry.Usages.data(), &num_usages,
        device.pp_data.get(), report.data(), static_cast<platform::ULONG>(report.size()));
    if (entry.Status != HIDP_STATUS_SUCCESS) {
        plugin_log("HID_WIN: %s: HidP_GetUsages failed\n", function);
        return false;
    }
    plugin_log("HID_WIN: %s: HidP_GetUsages input_data_index=%d num_usages=%d successfully\n", function,
               index, static_cast<int>(num_usages));
    keep_own_usages(entry, std::min(num_usages, entry.MaxUsageLength), index);
    return true;
}

bool get_values(hid_device& device, HidDataEntry& entry, int index, std::span<const std::uint8_t> report) {
    static constexpr const char* function = "get_input_data_usages";
    const auto& parser = platform::current().parser();
    const auto length = static_cast<platform::ULONG>(report.size());
    entry.Status = parser.HidP_GetUsageValue(HidP_Input, entry.UsagePage, any_link_collection, entry.Usage,
                                             &entry.Value, device.pp_data.get(), report.data(), length);
    if (entry.Status != HIDP_STATUS_SUCCESS) {
        plugin_log("HID_WIN: %s: HidP_GetUsageValue failed\n", function);
        return false;
    }
    plugin_log("HID_WIN: %s: HidP_GetUsageValue input_data_index=%d successfully\n", function, index);
    entry.Status =
        parser.HidP_GetScaledUsageValue(HidP_Input, entry.UsagePage, any_link_collection, entry.Usage,
                                        &entry.ScaledValue, device.pp_data.get(), report.data(), length);
    if (entry.Status != HIDP_STATUS_SUCCESS && entry.Status != HIDP_STATUS_NULL) {
        plugin_log("HID_WIN: %s: HidP_GetScaledUsageValue failed\n", function);
        return false;
    }
    plugin_log("HID_WIN: %s: HidP_GetScaledUsageValue input_data_index=%d successfully\n", function, index);
    return true;
}

int get_input_data_usages(hid_device& device, std::span<const std::uint8_t> report)
    REQUIRES(device.input_mutex) {
    static constexpr const char* function = "get_input_data_usages";
    if (device.input_data.empty() || report.empty()) {
        return 0;
    }
    const std::uint8_t report_id = report[0];
    plugin_log("HID_WIN: %s: report_id=0x%x input_data_length=%d\n", function, report_id,
               static_cast<int>(device.input_data.size()));
    for (std::size_t i = 0; i < device.input_data.size(); ++i) {
        HidDataEntry& entry = device.input_data[i];
        if (entry.ReportID != report_id) {
            continue;
        }
        const bool decoded = entry.IsButtonData
                                 ? get_button_usages(device, entry, static_cast<int>(i), report)
                                 : get_values(device, entry, static_cast<int>(i), report);
        if (!decoded) {
            return 0;
        }
    }
    return 1;
}

/// One usage of a mute capability. An absolute one that shows no usage at the place before its data index
/// counts as pressed, too.
bool is_mute_at(const HIDP_BUTTON_CAPS& cap, int usage_index, platform::USAGE usage) {
    static constexpr const char* function = "hid_process_read";
    if (cap.IsAbsolute != 0) {
        if (is_mute_usage(usage) || (usage == 0 && usage_index == cap.NotRange.DataIndex - 1)) {
            plugin_log("HID_WIN: %s: absolute mute cap, mute with usage_index=%d, usage=0x%x\n", function,
                       usage_index, usage);
            return true;
        }
        plugin_log("HID_WIN: %s: skip: absolute mute cap, NOT mute with usage_index=%d, usage=0x%x\n",
                   function, usage_index, usage);
        return false;
    }
    if (is_mute_usage(usage)) {
        plugin_log("HID_WIN: %s: non-absolute mute cap, mute with usage_index=%d, usage=0x%x\n", function,
                   usage_index, usage);
        return true;
    }
    plugin_log("HID_WIN: %s: skip: non-absolute mute cap, NOT mute with usage_index=%d, usage=0x%x\n",
               function, usage_index, usage);
    return false;
}

bool holds_mute(const HidDataEntry& entry, const HIDP_BUTTON_CAPS& cap, int index) {
    static constexpr const char* function = "hid_process_read";
    plugin_log(
        "HID_WIN: %s: input_data_index=%d, caps_usage=0x%x, caps_IsAbsolute=%d, UsageMin=0x%x, UsageMax=0x%x, MaxUsageLength=%d\n",
        function, index, cap.NotRange.Usage, cap.IsAbsolute, entry.UsageMin, entry.UsageMax,
        static_cast<int>(entry.MaxUsageLength));
    bool mute = false;
    for (std::size_t i = 0; i < entry.MaxUsageLength; ++i) {
        const platform::USAGE usage = entry.Usages[i];
        const int usage_index = static_cast<int>(i);
        plugin_log("HID_WIN: %s: usage_index=%d, usage=0x%x\n", function, usage_index, usage);
        if (is_mute_usage(cap.NotRange.Usage) && is_mute_at(cap, usage_index, usage)) {
            mute = true;
        }
        if (usage == 0) {
            plugin_log("HID_WIN: %s: break for invalid USAGE at usage_index=%d\n", function, usage_index);
            break;
        }
    }
    return mute;
}

/// The capabilities of one kind and direction, fetched afresh; none where the parser fails.
template <typename Cap, typename Fetch>
bool any_cap_has_id(hid_device& device, std::size_t count, std::uint32_t report_id, const wchar_t* error,
                    Fetch fetch) {
    std::vector<Cap> caps(count);
    auto length = static_cast<platform::USHORT>(count);
    if (count > 0 && fetch(caps.data(), &length) != HIDP_STATUS_SUCCESS) {
        hid_set_error(&device, error);
        return false;
    }
    return std::any_of(caps.begin(), caps.end(), [&](const Cap& cap) { return cap.ReportID == report_id; });
}

bool direction_has_id(hid_device& device, platform::HIDP_REPORT_TYPE type, std::uint32_t report_id,
                      platform::PHIDP_PREPARSED_DATA data) {
    const auto& parser = platform::current().parser();
    const bool is_input = type == HidP_Input;
    return any_cap_has_id<HIDP_VALUE_CAPS>(
               device, is_input ? device.number_input_value_caps : device.number_output_value_caps, report_id,
               L"HidP_GetValueCaps",
               [&](HIDP_VALUE_CAPS* caps, platform::USHORT* length) {
                   return parser.HidP_GetValueCaps(type, caps, length, data);
               }) ||
           any_cap_has_id<HIDP_BUTTON_CAPS>(
               device, is_input ? device.number_input_button_caps : device.number_output_button_caps,
               report_id, L"HidP_GetButtonCaps", [&](HIDP_BUTTON_CAPS* caps, platform::USHORT* length) {
                   return parser.HidP_GetButtonCaps(type, caps, length, data);
               });
}

}  // namespace

bool numbers_reports(const hid_device& device) {
    const auto has_id = [](const auto& cap) { return cap.ReportID != 0; };
    return std::any_of(device.input_button_caps.begin(), device.input_button_caps.end(), has_id) ||
           std::any_of(device.input_value_caps.begin(), device.input_value_caps.end(), has_id);
}

int process_read_for_mute(hid_device* device, std::span<const std::uint8_t> report) {
    if (device == nullptr || report.empty()) {
        return -1;
    }
    const auto complete = complete_report(*device, report);
    MutexLock lock(device->input_mutex);
    if (get_input_data_usages(*device, complete) == 0) {
        return -1;
    }
    int result = -1;
    for (std::size_t i = 0; i < device->input_data.size(); ++i) {
        // Button entries come first, one per capability.
        if (device->input_data[i].IsButtonData &&
            holds_mute(device->input_data[i], device->input_button_caps[i], static_cast<int>(i))) {
            result = 1;
        }
    }
    return result;
}

int check_report_id(hid_device* device, std::uint32_t report_id, std::uint32_t directions) {
    constexpr std::uint32_t wants_input = 1;
    constexpr std::uint32_t wants_output = 2;
    if (device == nullptr || directions > (wants_input | wants_output)) {
        return 0;
    }
    const PreparsedDataOwner data(device->interface->HidD_GetPreparsedData());
    if (!data) {
        return 0;
    }
    const bool in_input =
        (directions & wants_input) != 0 && direction_has_id(*device, HidP_Input, report_id, data.get());
    if ((directions & wants_input) != 0 && !in_input) {
        return 0;
    }
    if ((directions & wants_output) == 0) {
        return in_input ? 1 : 0;
    }
    return direction_has_id(*device, platform::HidP_Output, report_id, data.get()) ? 1 : 0;
}

}  // namespace headset_plugin
