#include "hid/usage_output.h"

#include <algorithm>

#include "base/plugin_log.h"
#include "platform/platform.h"

namespace headset_plugin {

using platform::any_link_collection;
using platform::HidP_Output;
using platform::HIDP_STATUS_SUCCESS;
using platform::MutexLock;

namespace {

/// The report that holds a usage; 0 where no capability declares it as its single usage.
std::uint8_t find_report_id(const hid_device& device, std::uint16_t usage_page, std::uint16_t usage) {
    for (const auto& cap : device.output_button_caps) {
        if (cap.UsagePage == usage_page && cap.IsRange == 0 && cap.NotRange.Usage == usage) {
            return cap.ReportID;
        }
    }
    return 0;
}

int set_output_data_usages(hid_device& device, std::uint16_t usage_page, std::uint16_t usage,
                           std::uint32_t value) REQUIRES(device.output_mutex) {
    static constexpr const char* function = "set_output_data_usages";
    for (std::size_t i = 0; i < device.output_data.size(); ++i) {
        HidDataEntry& entry = device.output_data[i];
        if (entry.UsagePage != usage_page) {
            continue;
        }
        plugin_log("HID_WIN: %s: index=%d IsButtonData=%s UsageMin=0x%x\n", function, static_cast<int>(i),
                   true_or_false(entry.IsButtonData), entry.UsageMin);
        if (entry.IsButtonData && entry.UsageMin == usage) {
            // Each entry keeps its usage at its own index, also where its list is shared with others by the
            // parser.
            entry.Usages[i] = value != 0 ? usage : std::uint16_t{0};
            plugin_log("HID_WIN: %s: index=%d set usage=0x%x successfully\n", function, static_cast<int>(i),
                       entry.Usages[i]);
            return 1;
        }
    }
    return 0;
}

bool set_button_usages(hid_device& device, HidDataEntry& entry, int index) REQUIRES(device.output_mutex) {
    static constexpr const char* function = "gen_led_event";
    plugin_log("HID_WIN: %s: max_usage_length=%d\n", function, static_cast<int>(entry.MaxUsageLength));
    platform::ULONG num_usages = entry.MaxUsageLength;
    entry.Status = platform::current().parser().HidP_SetUsages(
        HidP_Output, entry.UsagePage, any_link_collection, entry.Usages.data(), &num_usages,
        device.pp_data.get(), device.output_report.data(), device.output_report_length);
    if (entry.Status != HIDP_STATUS_SUCCESS) {
        plugin_log("HID_WIN: %s: HidP_SetUsages failed\n", function);
        return false;
    }
    plugin_log("HID_WIN: %s: HidP_SetUsages index=%d num_usages=%d successfully\n", function, index,
               static_cast<int>(num_usages));
    return true;
}

bool set_value(hid_device& device, HidDataEntry& entry, int index) REQUIRES(device.output_mutex) {
    static constexpr const char* function = "gen_led_event";
    entry.Status = platform::current().parser().HidP_SetUsageValue(
        HidP_Output, entry.UsagePage, any_link_collection, entry.Usage, entry.Value, device.pp_data.get(),
        device.output_report.data(), device.output_report_length);
    if (entry.Status != HIDP_STATUS_SUCCESS) {
        plugin_log("HID_WIN: %s: HidP_SetUsageValue failed\n", function);
        return false;
    }
    plugin_log("HID_WIN: %s: HidP_SetUsageValue index=%d successfully\n", function, index);
    return true;
}

int gen_led_event(hid_device& device, std::uint8_t report_id) REQUIRES(device.output_mutex) {
    static constexpr const char* function = "gen_led_event";
    if (device.output_data.empty() || device.output_report.empty()) {
        return 0;
    }
    std::fill(device.output_report.begin(), device.output_report.end(), std::uint8_t{0});
    plugin_log("HID_WIN: %s: output_report_length=%d\n", function, device.output_report_length);
    for (std::size_t i = 0; i < device.output_data.size(); ++i) {
        HidDataEntry& entry = device.output_data[i];
        if (entry.ReportID != report_id) {
            continue;
        }
        const bool built = entry.IsButtonData ? set_button_usages(device, entry, static_cast<int>(i))
                                              : set_value(device, entry, static_cast<int>(i));
        if (!built) {
            return 0;
        }
    }
    if (device.output_report[0] == 0) {
        device.output_report[0] = report_id;
    }
    return 1;
}

void copy_report_out(const hid_device& device, std::uint8_t* buffer, std::uint32_t* out_length)
    REQUIRES(device.output_mutex) {
    *out_length = device.output_report_length;
    std::copy(device.output_report.begin(), device.output_report.end(), buffer);
}

}  // namespace

int gen_led_event_for_usage(hid_device* device, std::uint16_t usage_page, std::uint16_t usage,
                            std::uint32_t value, std::uint8_t* buffer, std::uint32_t* out_length) {
    static constexpr const char* function = "hid_gen_led_event";
    if (device == nullptr || buffer == nullptr || out_length == nullptr) {
        return -1;
    }
    plugin_log("HID_WIN: %s: [Enter]\n", function);
    const std::uint8_t report_id = find_report_id(*device, usage_page, usage);
    plugin_log("HID_WIN: %s: ReportID=0x%x\n", function, report_id);
    MutexLock lock(device->output_mutex);
    if (set_output_data_usages(*device, usage_page, usage, value) == 0) {
        return -1;
    }
    plugin_log("HID_WIN: %s: set_output_data_usages successfully\n", function);
    if (gen_led_event(*device, report_id) == 0) {
        return -1;
    }
    plugin_log("HID_WIN: %s: gen_led_event successfully\n", function);
    copy_report_out(*device, buffer, out_length);
    return 0;
}

int gen_led_events_for_usages(hid_device* device, std::uint16_t usage_page, const std::uint16_t* usages,
                              const std::uint32_t* values, std::int32_t count, std::uint8_t* buffer,
                              std::uint32_t* out_length) {
    static constexpr const char* function = "hid_gen_led_events";
    if (device == nullptr || usages == nullptr || buffer == nullptr || out_length == nullptr ||
        (values == nullptr && count > 0)) {
        return -1;
    }
    plugin_log("HID_WIN: %s: [Enter]\n", function);
    const std::uint8_t report_id = find_report_id(*device, usage_page, usages[0]);
    plugin_log("HID_WIN: %s: ReportID=0x%x\n", function, report_id);
    MutexLock lock(device->output_mutex);
    int recorded = -1;
    for (std::int32_t i = 0; i < count; ++i) {
        recorded = set_output_data_usages(*device, usage_page, usages[i], values[i]);
        if (recorded == 0) {
            plugin_log("HID_WIN: %s: set_output_data_usages failed for usage=0x%x\n", function, usages[i]);
            return 0;
        }
    }
    plugin_log("HID_WIN: %s: set_output_data_usages successfully\n", function);
    if (gen_led_event(*device, report_id) == 0) {
        return recorded;
    }
    plugin_log("HID_WIN: %s: gen_led_event successfully\n", function);
    copy_report_out(*device, buffer, out_length);
    return 0;
}

}  // namespace headset_plugin
