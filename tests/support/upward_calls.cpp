#include "tests/support/upward_calls.h"

#include <mutex>
#include <utility>

#include "device/device_events.h"
#include "tests/support/recording.h"

namespace {

test_support::Recording g_calls;
std::mutex g_tasks_mutex;
std::deque<headset_plugin::WorkerTask> g_tasks;

}  // namespace

void plugin_control::on_headset_ready(const std::string& host_device_id, int vendor_id, int product_id,
                                      const std::string& vendor_name, const std::string& device_name,
                                      const std::string& serial) {
    g_calls.add(test_support::call_text(
        "on_headset_ready", {host_device_id, std::to_string(vendor_id), std::to_string(product_id),
                             vendor_name, device_name, serial}));
}

void headset_plugin::updateHeadsetState() {
    g_calls.add("updateHeadsetState()");
}

void remove_headset_with_serial(const std::string& serial) {
    g_calls.add(test_support::call_text("remove_headset_with_serial", {serial}));
}

void post_device_mgr_task(headset_plugin::WorkerTask task) {
    std::lock_guard lock(g_tasks_mutex);
    g_tasks.push_back(std::move(task));
}

namespace test_support {

std::vector<std::string> upward_calls() {
    return g_calls.texts();
}

bool wait_for_upward_call(const std::string& call) {
    return g_calls.wait_for(call);
}

std::deque<headset_plugin::WorkerTask> take_posted_tasks() {
    std::lock_guard lock(g_tasks_mutex);
    return std::exchange(g_tasks, {});
}

void clear_upward_calls() {
    g_calls.clear();
    take_posted_tasks();
}

}  // namespace test_support
