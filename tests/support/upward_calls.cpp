#include "tests/support/upward_calls.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>

#include "device/device_events.h"
#include "tests/support/recording_logger.h"

namespace {

std::mutex g_mutex;
std::condition_variable g_changed;
std::vector<std::string> g_calls;
std::deque<headset_plugin::WorkerTask> g_tasks;

void record(std::string call) {
    {
        std::lock_guard lock(g_mutex);
        g_calls.push_back(std::move(call));
    }
    g_changed.notify_all();
}

}  // namespace

void plugin_control::on_headset_ready(const std::string& host_device_id, int vendor_id, int product_id,
                                      const std::string& vendor_name, const std::string& device_name,
                                      const std::string& serial) {
    record("on_headset_ready(" + host_device_id + ", " + std::to_string(vendor_id) + ", " +
           std::to_string(product_id) + ", " + vendor_name + ", " + device_name + ", " + serial + ")");
}

void headset_plugin::updateHeadsetState() {
    record("updateHeadsetState()");
}

void remove_headset_with_serial(const std::string& serial) {
    record("remove_headset_with_serial(" + serial + ")");
}

void post_device_mgr_task(headset_plugin::WorkerTask task) {
    std::lock_guard lock(g_mutex);
    g_tasks.push_back(std::move(task));
}

namespace test_support {

std::vector<std::string> upward_calls() {
    std::lock_guard lock(g_mutex);
    return g_calls;
}

bool wait_for_upward_call(const std::string& call) {
    std::unique_lock lock(g_mutex);
    return g_changed.wait_for(
        lock, patience, [&] { return std::find(g_calls.begin(), g_calls.end(), call) != g_calls.end(); });
}

std::deque<headset_plugin::WorkerTask> take_posted_tasks() {
    std::lock_guard lock(g_mutex);
    return std::exchange(g_tasks, {});
}

void clear_upward_calls() {
    std::lock_guard lock(g_mutex);
    g_calls.clear();
    g_tasks.clear();
}

}  // namespace test_support
