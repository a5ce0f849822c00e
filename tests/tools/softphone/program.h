// Runs the softphone as people do.
#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/types.h>
#include <vector>

#include "tests/support/run_program.h"

namespace softphone {

using test_support::ProgramResult;

/// Runs the program to its end, with this text on its standard input.
inline ProgramResult run_program(const std::vector<std::string>& arguments, const std::string& input = "") {
    return test_support::run_program(SOFTPHONE_PROGRAM, arguments, input);
}

/// The program on a terminal of its own.
class TerminalProgram {
  public:
    /// \param state_folder  XDG_STATE_HOME, by default one that cannot be made
    explicit TerminalProgram(const std::vector<std::string>& arguments, unsigned short rows = 30,
                             unsigned short columns = 100,
                             const std::string& state_folder = "/dev/null/none");
    ~TerminalProgram();
    TerminalProgram(const TerminalProgram&) = delete;
    TerminalProgram& operator=(const TerminalProgram&) = delete;

    void type(const std::string& text);
    void resize(unsigned short rows, unsigned short columns);
    void send_signal(int signal);
    /// Takes the terminal away, as a window that is closed.
    void hang_up();
    /// Reads until what came below the panel since the last call that succeeded contains `text`, at most some
    /// seconds.
    testing::AssertionResult shows(const std::string& text);
    /// Reads until the panel has been painted with `text` in it, at most some seconds.
    testing::AssertionResult paints(const std::string& text);
    /// Waits for the end of the program. Its status as wait(2) gives it, or -1 after some seconds.
    int wait_for_end();
    /// Waits until the program is stopped, at most some seconds.
    bool waits_stopped();
    /// Everything that has come, the panel's paintings included.
    const std::string& output() const { return output_; }
    /// True while the terminal hands over whole lines and echoes, as a shell leaves it for programs.
    bool in_line_mode() const;

  private:
    bool wait_until(const std::function<bool()>& done);
    bool read_more();

    pid_t child_ = -1;
    int terminal_ = -1;
    int other_side_ = -1;  ///< kept open, so that the terminal and its modes outlive the program
    std::string output_;
    std::size_t seen_ = 0;  ///< of what came below the panel
};

}  // namespace softphone
