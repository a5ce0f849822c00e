// Output reports by usage: a driver names an indicator, the device's own report descriptor says where it is.
#pragma once

#include <cstdint>

#include "hid/hid_device.h"

namespace headset_plugin {

/// Records one usage as on (`value` not 0) or off, and builds the report that it belongs to from every usage
/// recorded so far: what was set stays set until it is set again with 0, so that one indicator survives an
/// update of another.
///
/// `buffer` has room for the device's output report length; `*out_length` becomes that length. Returns 0, or
/// -1 with buffer and length left alone. Thread: any, and several at once.
int gen_led_event_for_usage(hid_device* device, std::uint16_t usage_page, std::uint16_t usage,
                            std::uint32_t value, std::uint8_t* buffer, std::uint32_t* out_length);

/// The same for `count` usages of one page in the report of the first of them; `usages` holds at least one. A
/// usage that the device does not have ends the call with 0 and buffer and length left alone. Returns 0; -1
/// without device, usages or buffer; when the report cannot be built 1, or -1 where `count` is 0.
int gen_led_events_for_usages(hid_device* device, std::uint16_t usage_page, const std::uint16_t* usages,
                              const std::uint32_t* values, std::int32_t count, std::uint8_t* buffer,
                              std::uint32_t* out_length);

}  // namespace headset_plugin
