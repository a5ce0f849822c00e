#include "platform/linux/udev.h"

namespace platform::linux_platform {

Udev load_udev() {
    const SharedLibrary library("libudev.so.1");
    Udev table{};
    library.look_up("udev_new", table.udev_new);
    library.look_up("udev_unref", table.udev_unref);
    library.look_up("udev_monitor_new_from_netlink", table.udev_monitor_new_from_netlink);
    library.look_up("udev_monitor_filter_add_match_subsystem_devtype",
                    table.udev_monitor_filter_add_match_subsystem_devtype);
    library.look_up("udev_monitor_enable_receiving", table.udev_monitor_enable_receiving);
    library.look_up("udev_monitor_get_fd", table.udev_monitor_get_fd);
    library.look_up("udev_monitor_receive_device", table.udev_monitor_receive_device);
    library.look_up("udev_monitor_unref", table.udev_monitor_unref);
    library.look_up("udev_device_get_action", table.udev_device_get_action);
    library.look_up("udev_device_unref", table.udev_device_unref);
    return table;
}

}  // namespace platform::linux_platform
