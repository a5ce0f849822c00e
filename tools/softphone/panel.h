// The panel at the top of the terminal: calls, headsets with their indicators, the last keys and requests,
// the log.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/softphone/display.h"
#include "tools/softphone/state.h"

namespace softphone {

/// A terminal's size in characters.
struct ScreenSize {
    int rows = 0;
    int columns = 0;
    bool operator==(const ScreenSize&) const = default;
};

/// How many rows the panel takes on a screen; 0 when it would leave too little below it.
int panel_rows(ScreenSize size);

/// The panel's lines, as many as panel_rows() says, none wider than the screen. Where there is little room,
/// the calls come before everything else, the newest first, and the log comes last.
std::vector<std::string> render_panel(const State& state, std::string_view title, ScreenSize size,
                                      Style style);

}  // namespace softphone
