// The terminal's screen in two: the panel on top stands still, lines scroll below it.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tools/softphone/panel.h"

namespace softphone {

/// The size of the terminal on standard output.
ScreenSize terminal_size();

/// Writes to standard output. The destructor gives the whole screen back to the terminal.
class SplitScreen {
  public:
    SplitScreen() = default;
    ~SplitScreen();
    SplitScreen(const SplitScreen&) = delete;
    SplitScreen& operator=(const SplitScreen&) = delete;

    /// Clears the screen, keeps the top rows for the panel and puts the cursor into the last row.
    void split(ScreenSize size, int top_rows);
    /// The whole screen scrolls again; what it shows stays.
    void release();
    /// Shows the panel's lines, if they are not shown already. The cursor stays where it is.
    void paint(std::vector<std::string> lines);

  private:
    int top_rows_ = 0;
    std::vector<std::string> painted_;
};

}  // namespace softphone
