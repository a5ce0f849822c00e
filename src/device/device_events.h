// What a headset reports upwards. Declared here, where it is called; the device manager and the plug-in
// boundary define it. None of these is called with a lock held.
#pragma once

#include <string>

#include "base/worker.h"

namespace plugin_control {

/// A headset is ready and active. [worker thread]
void on_headset_ready(const std::string& host_device_id, int vendor_id, int product_id,
                      const std::string& vendor_name, const std::string& device_name,
                      const std::string& serial);

}  // namespace plugin_control

namespace headset_plugin {

/// A headset of the maker's own asks for the current state. [message thread]
void updateHeadsetState();

}  // namespace headset_plugin

/// Asks for a closed headset to be taken off the device list. Returns at once. [read thread]
void remove_headset_with_serial(const std::string& serial);

/// Runs a task on the device manager's worker.
void post_device_mgr_task(headset_plugin::WorkerTask task);
