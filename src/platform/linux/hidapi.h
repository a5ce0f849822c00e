// hidapi, loaded by name.
#pragma once

#include <hidapi/hidapi.h>

#include "platform/linux/shared_library.h"

namespace platform::linux_platform {

/// hidapi's functions, of which the plug-in exports namesakes: calls go through this table, never by name.
///
/// Where the plug-in comes before hidapi among the libraries that a program is linked with, hidapi's own
/// calls of its exported functions arrive at the namesakes. So the table has no function that hands a hidapi
/// handle to another one: hid_get_device_info has the strings that hid_get_product_string and the like take
/// from it.
struct Hidapi {
    decltype(&::hid_enumerate) hid_enumerate;
    decltype(&::hid_free_enumeration) hid_free_enumeration;
    decltype(&::hid_open_path) hid_open_path;
    decltype(&::hid_write) hid_write;
    decltype(&::hid_send_feature_report) hid_send_feature_report;
    decltype(&::hid_get_feature_report) hid_get_feature_report;
    decltype(&::hid_get_input_report) hid_get_input_report;
    decltype(&::hid_send_feature_report) hid_send_output_report;  ///< since 0.15.0; null in an earlier one
    decltype(&::hid_close) hid_close;
    decltype(&::hid_get_device_info) hid_get_device_info;
    decltype(&::hid_get_indexed_string) hid_get_indexed_string;
    decltype(&::hid_error) hid_error;
    decltype(&::hid_version) hid_version;
    decltype(&::hid_version_str) hid_version_str;
};

/// Loads hidapi's hidraw backend. Throws LibraryError where it is missing or too old.
Hidapi load_hidapi();

}  // namespace platform::linux_platform
