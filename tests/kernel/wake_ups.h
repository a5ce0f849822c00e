// Whether a process does anything while nothing happens.
#pragma once

#include <algorithm>
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

/// By id, what the threads of a process do: whether they sleep, and how often they have gone to sleep.
using Threads = std::map<std::string, std::string>;

/// Those of a process, the calling thread left out.
inline Threads look_at_threads(pid_t process) {
    Threads threads;
    const auto tasks = std::filesystem::path("/proc") / std::to_string(process) / "task";
    for (const auto& thread : std::filesystem::directory_iterator(tasks)) {
        if (thread.path().filename() == std::to_string(gettid())) {
            continue;
        }
        std::ifstream status(thread.path() / "status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("State:") || line.starts_with("voluntary_ctxt_switches:")) {
                threads[thread.path().filename()] += line + " ";
            }
        }
    }
    return threads;
}

/// Whether every one sleeps. One that only waits for the processor is still about to do something.
inline bool all_sleep(const Threads& threads) {
    return std::all_of(threads.begin(), threads.end(), [](const auto& thread) {
        return thread.second.find("(sleeping)") != std::string::npos;
    });
}

/// Whether no other thread of a process wakes up for that long, once what was under way is over.
inline testing::AssertionResult sleeps(pid_t process, std::chrono::seconds duration) {
    Threads before = look_at_threads(process);
    const bool is_quiet = eventually([&] {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const auto earlier = std::exchange(before, look_at_threads(process));
        return earlier == before && all_sleep(before);
    });
    if (!is_quiet) {
        return testing::AssertionFailure() << "what was under way does not end";
    }
    // The silence is what is tested.
    std::this_thread::sleep_for(duration);
    const Threads after = look_at_threads(process);
    return after == before ? testing::AssertionSuccess()
                           : testing::AssertionFailure() << testing::PrintToString(before) << " became "
                                                         << testing::PrintToString(after);
}

}  // namespace test_support
