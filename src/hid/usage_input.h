// Input reports by usage: is a mute key pressed?
#pragma once

#include <cstdint>
#include <span>

#include "hid/hid_device.h"

namespace headset_plugin {

/// Decodes an input report and tells whether a mute key is pressed: 1 yes, -1 no or failure. Byte 0 is the
/// report's id, 0 for a device without report ids. A report that is shorter than the collection's longest is
/// taken as filled up with zeros. What an earlier report of another id held counts
/// until a report of that id replaces it. Thread: any, and several at once.
int process_read_for_mute(hid_device* device, std::span<const std::uint8_t> report);

/// Whether capabilities have this report id: `directions` 1 input, 2 output, 3 both. 1 yes, 0 no, failure, or
/// wrong directions. With 3, an id that no input capability has is not looked for among the output
/// capabilities.
int check_report_id(hid_device* device, std::uint32_t report_id, std::uint32_t directions);

/// True when the device numbers its reports.
bool numbers_reports(const hid_device& device);

}  // namespace headset_plugin
