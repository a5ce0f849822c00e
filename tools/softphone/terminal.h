// The softphone on a terminal: the panel on top, lines of news below it, the prompt in the last row.
#pragma once

#include <deque>
#include <memory>
#include <string>

#include "tools/softphone/display.h"
#include "tools/softphone/input.h"
#include "tools/softphone/line_editor.h"
#include "tools/softphone/split_screen.h"
#include "tools/softphone/terminal_rescue.h"

namespace softphone {

class Terminal final : public Display, public Input {
  public:
    struct Settings {
        std::string title;
        bool panel = true;
        Style style;
    };
    Terminal(Settings settings, LineEditor::Completer complete);
    ~Terminal() override;

    void line(std::string_view text) override;
    void error(std::string_view text) override { line(text); }
    void refresh(const State& state) override;

    int descriptor() const override;
    bool read(const LineHandler& handle) override;
    bool strict() const override { return false; }
    void resized() override;
    void suspend() override;

  private:
    bool take_line(const std::optional<std::string>& line);
    void redraw();

    Settings settings_;
    ScreenSize size_;
    TerminalRescue rescue_;
    SplitScreen screen_;
    std::vector<std::string> panel_;
    std::deque<std::string> lines_;  ///< the newest, for drawing the screen again
    const LineHandler* handle_ = nullptr;
    bool open_ = true;
    std::unique_ptr<LineEditor> editor_;
};

}  // namespace softphone
