// What the device manager reports upwards. Declared here, where it is called; the plug-in boundary defines
// it.
#pragma once

#include <string>

namespace headset_plugin {

/// A headset went away. Called without a lock held. [worker thread]
void onDeviceRemoved(const std::string& host_device_id, int vendor_id, int product_id,
                     const std::string& vendor_name, const std::string& device_name,
                     const std::string& serial);

/// The active headset was opened only now: it has to be shown the calls. Called without a lock held. [worker
/// thread]
void onActiveDeviceOpened();

}  // namespace headset_plugin
