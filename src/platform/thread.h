// Threads of a library in somebody else's process: named, so that a debugger shows whose they are, and with
// every signal blocked, so that the host's signals reach the host's threads.
#pragma once

#include <functional>
#include <thread>

namespace platform {

/// Starts a thread that runs `body`. The system shows `name`, cut to what it holds (15 characters on Linux).
/// Throws std::system_error when no thread can be had.
std::thread start_thread(const char* name, std::function<void()> body);

/// The same for a thread that nobody will wait for.
void start_detached_thread(const char* name, std::function<void()> body);

}  // namespace platform
