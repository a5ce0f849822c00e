// Linked with what the plug-in loads by name, and never installed: the packaging tool finds dependencies by
// what a binary is linked with. The functions are the youngest ones needed, so that it finds the versions
// needed as well: the plug-in asks for hidapi 0.13.0, and hid_get_device_info() came with it.
#include <hidapi/hidapi.h>
#include <libudev.h>

extern "C" __attribute__((visibility("default"))) const void* const orvex_loaded_libraries[] = {
    reinterpret_cast<const void*>(&hid_get_device_info),
    reinterpret_cast<const void*>(&udev_monitor_new_from_netlink),
};
