// HID access: hidapi's functions as the plug-in itself uses them. The exported hid_* functions are wrappers
// of these.
//
// Every function may be called from any thread, and several at once on one handle; only closing ends a handle
// for all. A handle is shared: it is closed when the last owner lets go.
#pragma once

#include <chrono>
#include <cstdint>
#include <hidapi/hidapi.h>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "platform/hid_backend.h"

namespace headset_plugin {

using HidHandle = std::shared_ptr<hid_device>;

/// Output reports are given up after this time; the error text is then "WriteFile/WaitForSingleObject
/// Timeout".
inline constexpr std::chrono::milliseconds hid_write_timeout{1000};
/// Input reports that the system keeps for a reader.
inline constexpr std::uint32_t hid_input_buffers = 64;

struct HidEnumerationRelease {
    void operator()(hid_device_info* list) const;
};
using HidEnumeration = std::unique_ptr<hid_device_info, HidEnumerationRelease>;

/// Gets HID access ready; every other function does so by itself. False, with the reason in hid_last_error,
/// on failure.
bool hid_access_init();
void hid_access_exit();

/// The version of the hidapi that is loaded; where there is none, of the header that this is compiled with.
platform::HidapiVersion hid_access_version();

/// One entry per top-level collection of every device with these ids, 0 standing for any; empty when there is
/// none.
HidEnumeration hid_list(std::uint16_t vendor_id, std::uint16_t product_id);

/// Opens a path of the enumeration and makes its data entries. Empty, with the reason in hid_last_error, on
/// failure.
HidHandle hid_open_handle(const char* path);

/// The same for a collection that is open already, of whatever backend: its parsed report descriptor is one
/// that the platform frees. Not null.
HidHandle hid_open_handle(std::unique_ptr<platform::HidInterface> opened);

/// Opens the first device that matches and, of that device, the telephony collection, or the first where it
/// has none. An absent serial number matches every device. A device is what states one serial number; without
/// one, one HID interface.
HidHandle hid_open_handle(std::uint16_t vendor_id, std::uint16_t product_id,
                          std::optional<std::wstring_view> serial_number);

/// Reads an input report, byte 0 its id (0 for a device without ids). Returns its length, at most the
/// buffer's; 0 when nothing came in time; -1 when the device is gone, the read was cancelled, or for no
/// device. A failure is the device's last error and its last read error.
int hid_read_report(hid_device* device, std::span<std::uint8_t> report, std::chrono::milliseconds timeout);

/// The waiting time of a plain read on this handle: none in non-blocking mode.
std::chrono::milliseconds hid_read_mode_timeout(const hid_device* device);

/// Writes an output report, byte 0 its id; one shorter than the device's reports is filled up with zeros.
/// Returns the number of bytes written or -1.
int hid_write_report(hid_device* device, std::span<const std::uint8_t> report);

int hid_send_feature(hid_device* device, std::span<const std::uint8_t> report);
int hid_get_feature(hid_device* device, std::span<std::uint8_t> report);
int hid_get_input(hid_device* device, std::span<std::uint8_t> report);
int hid_send_output(hid_device* device, std::span<const std::uint8_t> report);

/// Copies as much of the report descriptor as fits. The number of bytes copied, or -1 for no device or no
/// room.
int hid_copy_report_descriptor(hid_device* device, std::span<std::uint8_t> buffer);

/// What hid_list says of the collection, `next` null, an empty serial number for none; the device's until it
/// is closed. Null on failure.
hid_device_info* hid_info(hid_device* device);

/// Releases what waits on the handle now, with -1. A null device is ignored.
void hid_cancel(hid_device* device);

/// Releases what waits on the handle now and has every later read fail: for ending a read thread, which might
/// only be about to wait.
void hid_end_reading(hid_device* device);

/// False when the device behind the handle is gone, even if no read or write has failed yet; and for no
/// handle.
bool hid_is_connected(hid_device* device);

/// Copies a string, cut to the room and terminated. 0, or -1 when the device has none.
int hid_copy_string(hid_device* device, platform::HidString which, std::span<wchar_t> buffer);
int hid_copy_indexed_string(hid_device* device, int index, std::span<wchar_t> buffer);

/// The text of the device's last error; without a device, of this thread's last failure to list or open.
std::wstring hid_last_error(const hid_device* device);

/// The text of the failure of the device's last read; empty where that did not fail, and for no device.
std::wstring hid_last_read_error(const hid_device* device);

/// Records an error; without a device as this thread's last failure to list or open. An empty text is none.
void hid_set_error(hid_device* device, std::wstring text);

/// The length of the device's output reports in bytes, id byte included; 0 for no device.
std::size_t hid_output_report_length(const hid_device* device);

/// The handle's running number, 0 for none; for the log.
int hid_handle_number(const hid_device* device);

}  // namespace headset_plugin
