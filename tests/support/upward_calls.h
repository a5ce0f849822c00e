// What a layer below the device manager calls upwards, recorded instead of done; tasks posted to the worker
// wait until a test runs them.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "base/worker.h"

namespace test_support {

/// "on_headset_ready(...)", "remove_headset_with_serial(serial)", "updateHeadsetState()", in order.
std::vector<std::string> upward_calls();
/// Waits for an upward call; false when `patience` is over.
bool wait_for_upward_call(const std::string& call);
/// Takes the tasks that were posted so far.
std::deque<headset_plugin::WorkerTask> take_posted_tasks();
void clear_upward_calls();

}  // namespace test_support
