// The line that the user types: editing, history and completion by libedit.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "tools/softphone/text.h"

namespace softphone {

/// There can be one at a time, because libedit's callbacks carry no data of ours.
class LineEditor {
  public:
    /// The words that may follow those given.
    using Completer = std::function<Words(const Words& before)>;
    /// Takes a finished line; none at the end of the input. False when no more are wanted.
    using LineTaker = std::function<bool(const std::optional<std::string>& line)>;

    /// Shows the prompt, a text that lives as long as this, and takes the history of former runs from
    /// history_file(). `redraw` is called when the user asks for a fresh screen (Control-L).
    LineEditor(const char* prompt, LineTaker take_line, Completer complete, std::function<void()> redraw);
    /// Gives the terminal back as it was, and keeps the history; nothing is written where its folder cannot
    /// be made.
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    /// Reads a key; when it finishes a line, the line is taken before this returns. To be called when
    /// standard input is readable.
    void read();

    /// Takes the prompt and what has been typed off the screen, so that other lines can be written; show()
    /// puts it back, but for the time that a line is being taken.
    void hide();
    void show();

    void resized();
    /// Leaves the terminal as the shell wants it, and takes it again.
    void release_terminal();
    void take_terminal();

  private:
    void install();
    static void line_finished(char* line);
    static char** completions(const char* word, int start, int end);
    static char* next_completion(const char* word, int state);
    static int redraw_key(int count, int key);

    const char* prompt_;
    LineTaker take_line_;
    Completer complete_;
    std::function<void()> redraw_;
    Words candidates_;
    std::size_t next_candidate_ = 0;
    /// The line that was finished just now: none inside when the input ended. It is taken when libedit has
    /// returned, since what a command throws must not pass through C, nor a command print while libedit
    /// draws.
    std::optional<std::optional<std::string>> finished_;
    Words lines_;  ///< what this run adds to the history
    bool hidden_ = false;
    bool taking_ = false;
};

}  // namespace softphone
