#include "tests/support/glue_calls.h"

#include "device/device_events.h"
#include "devicemgr/device_mgr_events.h"
#include "tests/support/recording.h"

namespace {

test_support::Recording g_calls;

void record(const char* function, const std::string& host_device_id, int vendor_id, int product_id,
            const std::string& vendor_name, const std::string& device_name, const std::string& serial) {
    g_calls.add(
        test_support::call_text(function, {host_device_id, std::to_string(vendor_id),
                                           std::to_string(product_id), vendor_name, device_name, serial}));
}

}  // namespace

void plugin_control::on_headset_ready(const std::string& host_device_id, int vendor_id, int product_id,
                                      const std::string& vendor_name, const std::string& device_name,
                                      const std::string& serial) {
    record("on_headset_ready", host_device_id, vendor_id, product_id, vendor_name, device_name, serial);
}

void headset_plugin::onDeviceRemoved(const std::string& host_device_id, int vendor_id, int product_id,
                                     const std::string& vendor_name, const std::string& device_name,
                                     const std::string& serial) {
    record("onDeviceRemoved", host_device_id, vendor_id, product_id, vendor_name, device_name, serial);
}

void headset_plugin::onActiveDeviceOpened() {
    g_calls.add("onActiveDeviceOpened()");
}

void headset_plugin::updateHeadsetState() {
    g_calls.add("updateHeadsetState()");
}

namespace test_support {

std::vector<std::string> glue_calls() {
    return g_calls.texts();
}

bool wait_for_glue_call(const std::string& call) {
    return g_calls.wait_for(call);
}

void clear_glue_calls() {
    g_calls.clear();
}

void on_glue_call(std::function<void(const std::string&)> action) {
    g_calls.on_text(std::move(action));
}

}  // namespace test_support
