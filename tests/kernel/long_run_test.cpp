// What shows over time only: what is kept after a headset has gone, and what happens while nothing happens.

#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <map>
#include <thread>
#include <unistd.h>
#include <utility>

#include "tests/kernel/plugin_on_kernel.h"

namespace {

using namespace test_support;

class LongRun : public PluginOnKernel {
  protected:
    /// A headset comes, shows a call and goes. Nothing of it is kept on its own side.
    void cycle() {
        const int headset = plug_active();
        control_->connectCall("", "1");
        take_shown(headset, 1);
        control_->endCall("", "1");
        orvex_virtual_reset();
        EXPECT_TRUE(listener_->wait_for(notification("onDeviceRemovedNotify", "SERIAL")));
        taken_.clear();
        logger_->clear();
        listener_->clear();
    }
};

std::size_t count_entries(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t count_descriptors() {
    return count_entries("/proc/self/fd");
}

std::size_t count_all_threads() {
    return count_entries("/proc/self/task");
}

/// How often each thread but the calling one has gone to sleep.
std::map<std::string, std::string> count_wake_ups() {
    std::map<std::string, std::string> counts;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        if (thread.path().filename() == std::to_string(getpid())) {
            continue;
        }
        std::ifstream status(thread.path() / "status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("voluntary_ctxt_switches")) {
                counts[thread.path().filename()] = line;
            }
        }
    }
    return counts;
}

TEST_F(LongRun, two_hundred_headsets_come_and_go_and_leave_nothing_behind) {
    // Until the buffers of everybody on the way have their size.
    constexpr int first_headsets = 30;
    constexpr int headsets = 200;
    // Less than any object of a headset.
    constexpr std::size_t tolerance = 100;
    start();
    for (int i = 0; i < first_headsets; ++i) {
        cycle();
    }
    const std::size_t descriptors = count_descriptors();
    const std::size_t threads = count_all_threads();
    const std::size_t memory = mallinfo2().uordblks;
    for (int i = 0; i < headsets; ++i) {
        cycle();
    }
    EXPECT_TRUE(eventually([&] { return count_descriptors() == descriptors; })) << count_descriptors();
    EXPECT_TRUE(eventually([&] { return count_all_threads() == threads; })) << count_all_threads();
    EXPECT_LT(mallinfo2().uordblks, memory + headsets * tolerance);
}

TEST_F(LongRun, no_thread_wakes_up_while_two_headsets_are_silent) {
    start();
    plug_active("SILENT1");
    plug_active("SILENT2");
    auto before = count_wake_ups();
    EXPECT_TRUE(eventually([&] {
        const auto earlier = std::exchange(before, count_wake_ups());
        std::this_thread::sleep_for(std::chrono::seconds(1));
        return earlier == before;
    })) << "what the arrival set off does not end";
    // The silence is what is tested.
    std::this_thread::sleep_for(std::chrono::seconds(10));
    EXPECT_EQ(count_wake_ups(), before);
}

}  // namespace
