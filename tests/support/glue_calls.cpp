#include "tests/support/glue_calls.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>

#include "device/device_events.h"
#include "devicemgr/device_mgr_events.h"
#include "tests/support/recording_logger.h"

namespace {

std::mutex g_mutex;
std::condition_variable g_changed;
std::vector<std::string> g_calls;
std::function<void(const std::string&)> g_action;

void record(const std::string& call) {
    std::function<void(const std::string&)> action;
    {
        std::lock_guard lock(g_mutex);
        g_calls.push_back(call);
        action = g_action;
    }
    g_changed.notify_all();
    if (action) {
        action(call);
    }
}

std::string description(const std::string& host_device_id, int vendor_id, int product_id,
                        const std::string& vendor_name, const std::string& device_name,
                        const std::string& serial) {
    return "(" + host_device_id + ", " + std::to_string(vendor_id) + ", " + std::to_string(product_id) +
           ", " + vendor_name + ", " + device_name + ", " + serial + ")";
}

}  // namespace

void plugin_control::on_headset_ready(const std::string& host_device_id, int vendor_id, int product_id,
                                      const std::string& vendor_name, const std::string& device_name,
                                      const std::string& serial) {
    record("on_headset_ready" +
           description(host_device_id, vendor_id, product_id, vendor_name, device_name, serial));
}

void headset_plugin::onDeviceRemoved(const std::string& host_device_id, int vendor_id, int product_id,
                                     const std::string& vendor_name, const std::string& device_name,
                                     const std::string& serial) {
    record("onDeviceRemoved" +
           description(host_device_id, vendor_id, product_id, vendor_name, device_name, serial));
}

void headset_plugin::updateHeadsetState() {
    record("updateHeadsetState()");
}

namespace test_support {

std::vector<std::string> glue_calls() {
    std::lock_guard lock(g_mutex);
    return g_calls;
}

bool wait_for_glue_call(const std::string& call) {
    std::unique_lock lock(g_mutex);
    return g_changed.wait_for(
        lock, patience, [&] { return std::find(g_calls.begin(), g_calls.end(), call) != g_calls.end(); });
}

void clear_glue_calls() {
    std::lock_guard lock(g_mutex);
    g_calls.clear();
}

void on_glue_call(std::function<void(const std::string&)> action) {
    std::lock_guard lock(g_mutex);
    g_action = std::move(action);
}

}  // namespace test_support
