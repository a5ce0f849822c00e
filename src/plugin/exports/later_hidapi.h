// Functions of hidapi that came after the oldest version that the plug-in works with. A header that has them
// declares them in the same way.
#pragma once

#include <cstddef>
#include <hidapi/hidapi.h>

extern "C" {

int hid_get_report_descriptor(hid_device* dev, unsigned char* buf, std::size_t buf_size);    // 0.14.0
int hid_send_output_report(hid_device* dev, const unsigned char* data, std::size_t length);  // 0.15.0
const wchar_t* hid_read_error(hid_device* dev);                                              // 0.15.0

}  // extern "C"
