// Whether a process does anything while nothing happens.
#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

#include "tests/support/recording_logger.h"

namespace test_support {

using WakeUps = std::map<std::string, std::string>;

/// How often each thread of a process has gone to sleep, the calling thread left out.
inline WakeUps count_wake_ups(pid_t process) {
    WakeUps counts;
    const auto tasks = std::filesystem::path("/proc") / std::to_string(process) / "task";
    for (const auto& thread : std::filesystem::directory_iterator(tasks)) {
        if (thread.path().filename() == std::to_string(gettid())) {
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

/// Whether no other thread of a process wakes up for that long, once what was under way is over.
inline testing::AssertionResult sleeps(pid_t process, std::chrono::seconds duration) {
    WakeUps before = count_wake_ups(process);
    const bool is_quiet = eventually([&] {
        const auto earlier = std::exchange(before, count_wake_ups(process));
        std::this_thread::sleep_for(std::chrono::seconds(1));
        return earlier == before;
    });
    if (!is_quiet) {
        return testing::AssertionFailure() << "what was under way does not end";
    }
    // The silence is what is tested.
    std::this_thread::sleep_for(duration);
    const WakeUps after = count_wake_ups(process);
    return after == before ? testing::AssertionSuccess()
                           : testing::AssertionFailure() << testing::PrintToString(before) << " became "
                                                         << testing::PrintToString(after);
}

}  // namespace test_support
