// hidapi, loaded by name.
#pragma once

#include <hidapi/hidapi.h>

#include "platform/linux/shared_library.h"

namespace platform::linux_platform {

/// hidapi's functions, of which the plug-in exports namesakes: calls go through this table, never by name.
struct Hidapi {
    decltype(&::hid_enumerate) hid_enumerate;
    decltype(&::hid_free_enumeration) hid_free_enumeration;
    decltype(&::hid_open_path) hid_open_path;
    decltype(&::hid_write) hid_write;
    decltype(&::hid_send_feature_report) hid_send_feature_report;
    decltype(&::hid_get_feature_report) hid_get_feature_report;
    decltype(&::hid_close) hid_close;
    decltype(&::hid_get_manufacturer_string) hid_get_manufacturer_string;
    decltype(&::hid_get_product_string) hid_get_product_string;
    decltype(&::hid_get_serial_number_string) hid_get_serial_number_string;
    decltype(&::hid_get_indexed_string) hid_get_indexed_string;
    decltype(&::hid_error) hid_error;
};

/// Loads hidapi's hidraw backend. Throws LibraryError where it is missing or too old.
Hidapi load_hidapi();

}  // namespace platform::linux_platform
