// HID access beyond hidapi: the exported functions that work by usage.
#pragma once

#include <cstdint>
#include <hidapi/hidapi.h>

extern "C" {

/// Sets one usage on (value not 0) or off and builds the output report that it belongs to from all usages set
/// so far. `buffer` has room for the device's output report; `*out_length` becomes its length. 0, or -1 on
/// failure.
int hid_gen_led_event(hid_device* device, std::uint16_t usage_page, std::uint16_t usage, std::uint32_t value,
                      std::uint8_t* buffer, std::uint32_t* out_length);

/// The same for `count` usages in the report of the first one; `usages` holds at least one. A usage that the
/// device does not have gives 0 with buffer and length left alone. 0; -1 for missing arguments; when the
/// report cannot be built 1, or -1 where `count` is 0.
int hid_gen_led_events(hid_device* device, std::uint16_t usage_page, const std::uint16_t* usages,
                       const std::uint32_t* values, std::int32_t count, std::uint8_t* buffer,
                       std::uint32_t* out_length);

/// 1 when an input report shows a mute key pressed, -1 when not or on failure. Byte 0 is the report id;
/// without report ids it may be 0 or missing.
int hid_process_read(hid_device* device, const std::uint8_t* report, std::int32_t length);

/// 1 when the device has reports of this id: `directions` 1 input, 2 output, 3 both. Else 0.
int hid_check_report_id(hid_device* device, std::uint32_t report_id, std::uint32_t directions);

/// Releases every read and write that waits on the device, with -1. A null device is ignored.
void hid_cancel_io(hid_device* device);

}  // extern "C"
