// The plug-in's threads, as the system lists them.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/recording_logger.h"

namespace test_support {

inline bool plugin_threads_are_gone() {
    std::error_code thread_ended;
    for (std::filesystem::directory_iterator thread("/proc/self/task", thread_ended), end; thread != end;
         thread.increment(thread_ended)) {
        std::string name;
        std::getline(std::ifstream(thread->path() / "comm"), name);
        if (name.starts_with("orvex-")) {
            return false;
        }
    }
    return true;
}

/// Waits until no thread of the plug-in is left; false when `patience` is over.
inline bool wait_for_plugin_threads_to_end() {
    return eventually(plugin_threads_are_gone);
}

}  // namespace test_support
