// Runs programs as people do.
#pragma once

#include <string>
#include <vector>

namespace test_support {

struct ProgramResult {
    int status = -1;  ///< exit status, -1 for a program that was ended by a signal
    std::string output;
    std::string errors;
};

/// Runs a program to its end, with this text on its standard input.
ProgramResult run_program(const std::string& program, const std::vector<std::string>& arguments,
                          const std::string& input = "");

/// Replaces this process, which was forked, by a program.
[[noreturn]] void become_program(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace test_support
