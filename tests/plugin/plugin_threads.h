// The plug-in's threads, as the system lists them.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/recording_logger.h"

namespace test_support {

/// The threads whose name begins so; those of the plug-in are "orvex-worker", "orvex-read" and so on.
inline int count_threads(const std::string& prefix) {
    int count = 0;
    std::error_code thread_ended;
    for (std::filesystem::directory_iterator thread("/proc/self/task", thread_ended), end; thread != end;
         thread.increment(thread_ended)) {
        std::string name;
        std::getline(std::ifstream(thread->path() / "comm"), name);
        count += name.starts_with(prefix) ? 1 : 0;
    }
    return count;
}

inline bool plugin_threads_are_gone() {
    return count_threads("orvex-") == 0;
}

/// Waits until no thread of the plug-in is left; false when `patience` is over.
inline bool wait_for_plugin_threads_to_end() {
    return eventually(plugin_threads_are_gone);
}

}  // namespace test_support
