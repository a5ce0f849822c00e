// Signals as something to wait for: the program ends, resizes and suspends in its main loop, where it can put
// the terminal in order, and in no handler.
#pragma once

#include <optional>

#include "platform/common/file_descriptor.h"

namespace softphone {

class Signals {
  public:
    /// Blocks the signals that ask a program to end, and with `terminal` those by which a terminal speaks to
    /// a full-screen program, in this thread and in those that it starts from now on. To be made before any
    /// thread.
    explicit Signals(bool terminal);

    int descriptor() const { return descriptor_.get(); }

    /// The next signal that has come; none when there is none.
    std::optional<int> take();

  private:
    platform::common::FileDescriptor descriptor_;
};

}  // namespace softphone
