// Puts the terminal in order when the program crashes.
#pragma once

namespace softphone {

/// While it lives, a fatal signal first gives the terminal the modes and the screen that it had when this was
/// made, and then does what it would have done. A program that ends in good order restores the terminal
/// itself.
class TerminalRescue {
  public:
    TerminalRescue();
    ~TerminalRescue();
    TerminalRescue(const TerminalRescue&) = delete;
    TerminalRescue& operator=(const TerminalRescue&) = delete;
};

}  // namespace softphone
