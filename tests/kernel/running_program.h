// A program that runs beside the test, which talks with it meanwhile.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <sys/types.h>
#include <vector>

#include "platform/common/file_descriptor.h"

namespace test_support {

/// Killed in the end, should it still run. Every wait is for `patience` at most.
class RunningProgram {
  public:
    RunningProgram(const std::string& program, const std::vector<std::string>& arguments);
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    pid_t process() const { return process_; }
    /// Hands a line to its standard input.
    void type(const std::string& line);
    void send_signal(int signal) const;

    /// Waits until the program has said this, after what this function found last. Its standard output and
    /// its standard error are one, as on a terminal.
    testing::AssertionResult says(const std::string& text);
    /// Waits for its end. \return its exit status, -1 when a signal ended it or it still runs
    int wait_for_end();

  private:
    bool read_more();

    platform::common::FileDescriptor line_;  ///< to and from its standard streams
    pid_t process_ = -1;
    std::string said_;
    std::size_t found_ = 0;  ///< where the text ends that was found last
};

}  // namespace test_support
