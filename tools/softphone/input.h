// Where the commands come from.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/common/file_descriptor.h"
#include "tools/softphone/text.h"

namespace softphone {

/// Takes a line and the place where it stands, "FILE:LINE" or empty. False when no more lines are wanted.
using LineHandler = std::function<bool(const std::string& line, const std::string& place)>;

class Input {
  public:
    virtual ~Input() = default;

    /// For poll(): readable when read() has something to do.
    virtual int descriptor() const = 0;
    /// Reads what is there and hands the finished lines over. False at the end. Throws CommandError when it
    /// cannot be read.
    virtual bool read(const LineHandler& handle) = 0;
    /// True when a mistake in a line ends the program, as in a script; a person at a prompt types the line
    /// again.
    virtual bool strict() const = 0;
    /// The terminal changed its size.
    virtual void resized() = 0;
    /// The user asks to suspend the program (SIGTSTP); returns when it goes on.
    virtual void suspend() = 0;
};

/// Reads lines from a file or a pipe.
class LineReader final : public Input {
  public:
    LineReader(platform::common::FileDescriptor file, std::string name);

    int descriptor() const override { return file_.get(); }
    bool read(const LineHandler& handle) override;
    bool strict() const override { return true; }
    void resized() override {}
    void suspend() override {}

  private:
    bool hand_over(const std::string& line, const LineHandler& handle);

    platform::common::FileDescriptor file_;
    std::string name_;
    std::string rest_;  ///< the beginning of a line that is not finished yet
    int line_number_ = 0;
};

/// A script file, or standard input read as a script; throws CommandError when it cannot be opened.
std::unique_ptr<Input> open_script(const std::string& path);
std::unique_ptr<Input> open_standard_input();

}  // namespace softphone
