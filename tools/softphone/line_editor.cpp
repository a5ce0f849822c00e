#include "tools/softphone/line_editor.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <editline/readline.h>
#include <utility>

#include "tools/softphone/history.h"
#include "tools/softphone/split_screen.h"

namespace softphone {
namespace {

constexpr int control_l = 0x0C;
constexpr int kept_lines = 1000;

void read_kept_history() {
    if (const auto file = history_file(); !file.empty())
        read_history(file.c_str());
}

/// Adds these lines to the file. It is read once more, since another softphone may have added its own
/// meanwhile. libedit's append_history() adds one line too many.
void keep_history(const Words& lines) {
    const auto file = history_file();
    if (lines.empty() || file.empty() || !make_private_folder(file))
        return;
    clear_history();
    read_history(file.c_str());
    for (const auto& line : lines)
        add_history(line.c_str());
    write_history(file.c_str());
}

LineEditor* g_editor = nullptr;

}  // namespace

LineEditor::LineEditor(const char* prompt, LineTaker take_line, Completer complete,
                       std::function<void()> redraw)
    : prompt_(prompt),
      take_line_(std::move(take_line)),
      complete_(std::move(complete)),
      redraw_(std::move(redraw)) {
    g_editor = this;
    rl_readline_name = "softphone";
    rl_initialize();
    using_history();
    stifle_history(kept_lines);
    read_kept_history();
    rl_attempted_completion_function = completions;
    rl_add_defun("softphone-redraw", redraw_key, control_l);
    install();
}

LineEditor::~LineEditor() {
    rl_callback_handler_remove();
    keep_history(lines_);
    g_editor = nullptr;
}

void LineEditor::read() {
    rl_callback_read_char();
    if (!finished_)
        return;
    // Versions of libedit differ in whether they show the next prompt by themselves, so it is removed and
    // installed.
    rl_callback_handler_remove();
    const auto line = *std::exchange(finished_, std::nullopt);
    // The end of the input leaves the cursor where it was, a finished line moves it on to the next row.
    if (!line)
        hide();
    hidden_ = true;
    taking_ = true;
    const bool more = take_line_(line);
    taking_ = false;
    if (more)
        install();
}

void LineEditor::install() {
    rl_callback_handler_install(prompt_, line_finished);
    hidden_ = false;
}

void LineEditor::hide() {
    if (hidden_)
        return;
    hidden_ = true;
    // A long line covers several rows, and the cursor is in one of them.
    const auto cursor = std::strlen(prompt_) + static_cast<std::size_t>(rl_point);
    const auto rows_up = cursor / static_cast<std::size_t>(terminal_size().columns);
    if (rows_up > 0)
        std::printf("\x1b[%zuA", rows_up);  // CUU
    std::fputs("\r\x1b[J", stdout);         // ED: to the end of the screen
}

void LineEditor::show() {
    if (!hidden_ || taking_)
        return;
    hidden_ = false;
    rl_forced_update_display();
}

void LineEditor::resized() {
    rl_resize_terminal();
}

void LineEditor::release_terminal() {
    rl_deprep_terminal();
}

void LineEditor::take_terminal() {
    rl_prep_terminal(1);
}

void LineEditor::line_finished(char* line) {
    g_editor->finished_.emplace();
    if (!line)
        return;
    g_editor->finished_->emplace(line);
    if (*line) {
        add_history(line);
        g_editor->lines_.emplace_back(line);
    }
    std::free(line);
}

char** LineEditor::completions(const char* word, int start, int /*end*/) {
    // No file names where none of the candidates fits.
    rl_attempted_completion_over = 1;
    LineEditor& editor = *g_editor;
    try {
        editor.candidates_ = editor.complete_(split_words({rl_line_buffer, static_cast<std::size_t>(start)}));
    } catch (const CommandError&) {
        // The line is not one that can be completed.
        return nullptr;
    }
    return rl_completion_matches(word, next_completion);
}

char* LineEditor::next_completion(const char* word, int state) {
    LineEditor& editor = *g_editor;
    if (state == 0)
        editor.next_candidate_ = 0;
    while (editor.next_candidate_ < editor.candidates_.size()) {
        const std::string& candidate = editor.candidates_[editor.next_candidate_++];
        if (candidate.starts_with(word))
            return strdup(candidate.c_str());
    }
    return nullptr;
}

int LineEditor::redraw_key(int /*count*/, int /*key*/) {
    g_editor->redraw_();
    g_editor->show();
    return 0;
}

}  // namespace softphone
