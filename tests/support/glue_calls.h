// What the device manager and its headsets report to the plug-in boundary, recorded instead of done.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace test_support {

/// "on_headset_ready(host id, vendor id, product id, vendor, name, serial)", "onDeviceRemoved(...)",
/// "onActiveDeviceOpened()" and "updateHeadsetState()", in order; ids in decimal.
std::vector<std::string> glue_calls();
/// Waits for a call; false when `patience` is over.
bool wait_for_glue_call(const std::string& call);
void clear_glue_calls();
/// Called, outside the lock, with every call.
void on_glue_call(std::function<void(const std::string&)> action);

}  // namespace test_support
