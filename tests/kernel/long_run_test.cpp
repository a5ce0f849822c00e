// What shows over time only: what is kept after a headset has gone, and what happens while nothing happens.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <malloc.h>
#include <set>
#include <string>
#include <system_error>
#include <unistd.h>

#include "tests/kernel/plugin_on_kernel.h"
#include "tests/kernel/wake_ups.h"

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

/// Bytes in blocks that malloc has handed out. What its threads keep for themselves would count as handed
/// out: the machine runs without these caches.
std::size_t count_memory() {
    return mallinfo2().uordblks;
}

/// The files, devices and sockets that the process has open.
std::multiset<std::string> open_files() {
    std::multiset<std::string> files;
    std::error_code gone;
    for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
        files.insert(std::filesystem::read_symlink(descriptor, gone));
    }
    return files;
}

/// Whether nobody reads from a headset, closes one or looks for headsets.
bool is_at_rest() {
    const auto files = open_files();
    return count_threads("orvex-read") == 0 && count_threads("orvex-hid-out") == 0 &&
           std::none_of(files.begin(), files.end(), [](const std::string& file) {
               return file.starts_with("/dev/hidraw") || file.starts_with("/sys/") ||
                      file.starts_with("/run/udev/");
           });
}

TEST_F(LongRun, two_hundred_headsets_come_and_go_and_leave_nothing_behind) {
    // Until the buffers of everybody on the way have their size.
    constexpr int first_headsets = 30;
    constexpr int headsets = 200;
    // Less than the smallest block of malloc for each: what is on its way at the moment.
    constexpr std::size_t tolerance = 16;
    ASSERT_STREQ(std::getenv("GLIBC_TUNABLES"), "glibc.malloc.tcache_count=0");
    start();
    for (int i = 0; i < first_headsets; ++i) {
        cycle();
    }
    ASSERT_TRUE(eventually(is_at_rest)) << testing::PrintToString(open_files());
    const auto files = open_files();
    const int threads = count_threads("");
    const std::size_t memory = count_memory();
    for (int i = 0; i < headsets; ++i) {
        cycle();
    }
    EXPECT_TRUE(eventually([&] { return open_files() == files; }))
        << testing::PrintToString(open_files()) << " after " << testing::PrintToString(files);
    EXPECT_TRUE(eventually([&] { return count_threads("") == threads; }))
        << count_threads("") << " after " << threads;
    EXPECT_TRUE(eventually([&] { return count_memory() < memory + headsets * tolerance; }))
        << count_memory() << " after " << memory;
}

TEST_F(LongRun, no_thread_wakes_up_while_two_headsets_are_silent) {
    start();
    plug_active("SILENT1");
    plug_active("SILENT2");
    EXPECT_TRUE(sleeps(getpid(), std::chrono::seconds(10)));
}

}  // namespace
