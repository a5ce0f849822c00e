// libudev, loaded by name.
#pragma once

#include <libudev.h>

#include "platform/linux/shared_library.h"

namespace platform::linux_platform {

/// The functions that watch for devices.
struct Udev {
    decltype(&::udev_new) udev_new;
    decltype(&::udev_unref) udev_unref;
    decltype(&::udev_monitor_new_from_netlink) udev_monitor_new_from_netlink;
    decltype(&::udev_monitor_filter_add_match_subsystem_devtype)
        udev_monitor_filter_add_match_subsystem_devtype;
    decltype(&::udev_monitor_enable_receiving) udev_monitor_enable_receiving;
    decltype(&::udev_monitor_get_fd) udev_monitor_get_fd;
    decltype(&::udev_monitor_receive_device) udev_monitor_receive_device;
    decltype(&::udev_monitor_unref) udev_monitor_unref;
    decltype(&::udev_device_get_action) udev_device_get_action;
    decltype(&::udev_device_unref) udev_device_unref;
};

/// Loads libudev. Throws LibraryError.
Udev load_udev();

}  // namespace platform::linux_platform
