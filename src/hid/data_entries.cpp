#include "hid/data_entries.h"

#include <algorithm>

#include "platform/platform.h"

namespace headset_plugin {

using platform::HIDP_BUTTON_CAPS;
using platform::HIDP_STATUS_SUCCESS;
using platform::HIDP_VALUE_CAPS;

namespace {

// What one direction of a device may need. Real headsets need a few dozen of each; a hostile descriptor of a
// few hundred bytes could ask for gigabytes, and for as much work and as many log lines with every report.
constexpr std::size_t most_value_usages = 1 << 10;
constexpr std::size_t most_list_places = 1 << 14;

/// One direction of a device, with what can go wrong there.
struct Direction {
    platform::HIDP_REPORT_TYPE type;
    const wchar_t* button_caps_failed;
    const wchar_t* value_caps_failed;
    const wchar_t* range_reversed;
    const wchar_t* too_many_in_range;
    const wchar_t* too_many_single;
};

constexpr Direction input = {platform::HidP_Input,
                             L"HidP_GetButtonCaps for input",
                             L"HidP_GetValueCaps for input",
                             L"Range.UsageMin > Range.UsageMax after HidP_GetValueCaps for input",
                             L"data_index >= dev->input_data_length with range",
                             L"data_index >= dev->input_data_length without range"};
constexpr Direction output = {platform::HidP_Output,
                              L"HidP_GetButtonCaps for output",
                              L"HidP_GetValueCaps for output",
                              L"Range.UsageMin > Range.UsageMax after HidP_GetValueCaps for output",
                              L"data_index >= dev->output_data_length with range",
                              L"data_index >= dev->output_data_length without range"};

std::vector<HIDP_BUTTON_CAPS> fetch_button_caps(const Direction& direction, platform::USHORT count,
                                                platform::PHIDP_PREPARSED_DATA data) {
    std::vector<HIDP_BUTTON_CAPS> caps(count);
    if (count > 0 && platform::current().parser().HidP_GetButtonCaps(direction.type, caps.data(), &count,
                                                                     data) != HIDP_STATUS_SUCCESS) {
        throw OpenError(direction.button_caps_failed);
    }
    return caps;
}

std::vector<HIDP_VALUE_CAPS> fetch_value_caps(const Direction& direction, platform::USHORT count,
                                              platform::PHIDP_PREPARSED_DATA data) {
    std::vector<HIDP_VALUE_CAPS> caps(count);
    if (count > 0 && platform::current().parser().HidP_GetValueCaps(direction.type, caps.data(), &count,
                                                                    data) != HIDP_STATUS_SUCCESS) {
        throw OpenError(direction.value_caps_failed);
    }
    return caps;
}

std::size_t count_value_usages(const Direction& direction, const std::vector<HIDP_VALUE_CAPS>& caps) {
    std::size_t count = 0;
    for (const HIDP_VALUE_CAPS& cap : caps) {
        if (cap.IsRange == 0) {
            ++count;
            continue;
        }
        if (cap.Range.UsageMin > cap.Range.UsageMax) {
            throw OpenError(direction.range_reversed);
        }
        count += static_cast<std::size_t>(cap.Range.UsageMax - cap.Range.UsageMin) + 1;
    }
    if (count > most_value_usages) {
        throw OpenError(L"Internal error");
    }
    return count;
}

HidDataEntry button_entry(const HIDP_BUTTON_CAPS& cap, std::uint32_t max_usage_length) {
    HidDataEntry entry;
    entry.IsButtonData = true;
    entry.UsagePage = cap.UsagePage;
    entry.ReportID = cap.ReportID;
    entry.UsageMin = cap.IsRange != 0 ? cap.Range.UsageMin : cap.NotRange.Usage;
    entry.UsageMax = cap.IsRange != 0 ? cap.Range.UsageMax : cap.NotRange.Usage;
    entry.MaxUsageLength = max_usage_length;
    entry.Usages.assign(max_usage_length, 0);
    return entry;
}

HidDataEntry value_entry(const HIDP_VALUE_CAPS& cap, std::uint32_t usage) {
    HidDataEntry entry;
    entry.UsagePage = cap.UsagePage;
    entry.Usage = static_cast<platform::USAGE>(usage);
    entry.UsageMin = usage;
    entry.ReportID = cap.ReportID;
    return entry;
}

/// The room that a button entry's list needs. An output usage is written at the entry's own index in the
/// list, which can lie past what the parser gives for the page.
std::uint32_t usage_list_length(const Direction& direction, platform::USAGE page, std::size_t index,
                                platform::PHIDP_PREPARSED_DATA data) {
    const auto length = platform::current().parser().HidP_MaxUsageListLength(direction.type, page, data);
    const auto own_place = static_cast<std::uint32_t>(index + 1);
    return direction.type == platform::HidP_Output ? std::max(length, own_place) : length;
}

void add_button_entries(std::vector<HidDataEntry>& entries, const Direction& direction,
                        const std::vector<HIDP_BUTTON_CAPS>& caps, platform::PHIDP_PREPARSED_DATA data) {
    std::size_t places = 0;
    for (const HIDP_BUTTON_CAPS& cap : caps) {
        const std::uint32_t length = usage_list_length(direction, cap.UsagePage, entries.size(), data);
        places += length;
        if (places > most_list_places) {
            throw OpenError(L"Internal error");
        }
        entries.push_back(button_entry(cap, length));
    }
}

void add_value_entries(std::vector<HidDataEntry>& entries, std::size_t entry_count,
                       const Direction& direction, const std::vector<HIDP_VALUE_CAPS>& caps) {
    for (const HIDP_VALUE_CAPS& cap : caps) {
        // A single usage is read as the end of a range of one.
        const std::uint32_t last = cap.Range.UsageMax;
        const std::uint32_t first = cap.IsRange != 0 ? cap.Range.UsageMin : last;
        for (std::uint32_t usage = first; usage <= last; ++usage) {
            if (entries.size() >= entry_count) {
                throw OpenError(cap.IsRange != 0 ? direction.too_many_in_range : direction.too_many_single);
            }
            entries.push_back(value_entry(cap, usage));
        }
    }
}

std::vector<HidDataEntry> make_entries(const Direction& direction, platform::PHIDP_PREPARSED_DATA data,
                                       const std::vector<HIDP_BUTTON_CAPS>& button_caps,
                                       const std::vector<HIDP_VALUE_CAPS>& value_caps) {
    const std::size_t entry_count = button_caps.size() + count_value_usages(direction, value_caps);
    std::vector<HidDataEntry> entries;
    entries.reserve(entry_count);
    add_button_entries(entries, direction, button_caps, data);
    add_value_entries(entries, entry_count, direction, value_caps);
    return entries;
}

}  // namespace

void query_device_info(hid_device& device) {
    const auto data = device.pp_data.get();
    const platform::HIDP_CAPS& caps = device.caps;
    device.input_button_caps = fetch_button_caps(input, caps.NumberInputButtonCaps, data);
    device.input_value_caps = fetch_value_caps(input, caps.NumberInputValueCaps, data);
    {
        platform::MutexLock lock(device.input_mutex);
        device.input_data = make_entries(input, data, device.input_button_caps, device.input_value_caps);
    }
    platform::MutexLock lock(device.output_mutex);
    device.output_report.assign(device.output_report_length, 0);
    device.output_button_caps = fetch_button_caps(output, caps.NumberOutputButtonCaps, data);
    device.output_value_caps = fetch_value_caps(output, caps.NumberOutputValueCaps, data);
    device.output_data = make_entries(output, data, device.output_button_caps, device.output_value_caps);
}

}  // namespace headset_plugin
