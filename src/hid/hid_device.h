// The record of one opened headset: hidapi's device handle with the parsed report descriptor and the data
// entries that usage-based reports are built from and decoded into.
#pragma once

#include <atomic>
#include <cstdint>
#include <hidapi/hidapi.h>
#include <memory>
#include <string>
#include <vector>

#include "hid/hid_access.h"
#include "platform/hid_backend.h"
#include "platform/mutex.h"

namespace headset_plugin {

/// What one capability holds at the moment. A button capability makes one entry, a list of the usages that
/// are on; a value capability makes one entry per usage.
struct HidDataEntry {
    bool IsButtonData = false;
    platform::USAGE UsagePage = 0;
    platform::NTSTATUS Status = platform::HIDP_STATUS_SUCCESS;  ///< the parser's last answer for this entry
    std::uint32_t ReportID = 0;

    // Buttons. A single usage is a range of one. The list is never cleared: 0 stands for no usage. UsageMin
    // is a value entry's usage, too: the log shows it for both kinds.
    std::uint32_t UsageMin = 0;
    std::uint32_t UsageMax = 0;
    std::uint32_t MaxUsageLength = 0;     ///< entries in use of `Usages`
    std::vector<platform::USAGE> Usages;  ///< at least MaxUsageLength entries

    // Values.
    platform::USAGE Usage = 0;
    std::uint32_t Value = 0;
    std::int32_t ScaledValue = 0;
};

/// Gives the preparsed data back to the platform that made it.
struct PreparsedDataRelease {
    void operator()(platform::PHIDP_PREPARSED_DATA data) const;
};
using PreparsedDataOwner = std::unique_ptr<platform::HIDP_PREPARSED_DATA, PreparsedDataRelease>;

}  // namespace headset_plugin

/// What hidapi's hid_device stands for here. Everything in it is fixed when it is opened, but for what the
/// locks guard.
struct hid_device_ {
    std::uint32_t number = 0;  ///< a running number, so that the log can tell handles apart; never 0
    std::atomic<bool> blocking{true};
    platform::USHORT output_report_length = 0;
    platform::USHORT input_report_length = 0;
    platform::USHORT number_input_value_caps = 0;
    platform::USHORT number_output_value_caps = 0;
    platform::USHORT number_input_button_caps = 0;
    platform::USHORT number_output_button_caps = 0;

    std::unique_ptr<platform::HidInterface> interface;
    headset_plugin::PreparsedDataOwner pp_data;
    platform::HIDP_CAPS caps{};

    std::vector<platform::HIDP_BUTTON_CAPS> input_button_caps;
    std::vector<platform::HIDP_VALUE_CAPS> input_value_caps;
    std::vector<platform::HIDP_BUTTON_CAPS> output_button_caps;
    std::vector<platform::HIDP_VALUE_CAPS> output_value_caps;

    // Held while a report is decoded, or built: a host thread and the read thread may both want one.
    platform::Mutex input_mutex;
    std::vector<headset_plugin::HidDataEntry> input_data GUARDED_BY(input_mutex);
    platform::Mutex output_mutex;
    std::vector<headset_plugin::HidDataEntry> output_data GUARDED_BY(output_mutex);
    std::vector<std::uint8_t> output_report GUARDED_BY(output_mutex);

    platform::Guarded<std::wstring> last_error;
    platform::Guarded<std::wstring> last_read_error;  ///< a reading thread's own: others may fail meanwhile

    platform::Mutex info_mutex;
    headset_plugin::HidEnumeration info GUARDED_BY(info_mutex);  ///< made when it is first asked for
};
