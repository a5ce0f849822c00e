#include "tools/softphone/terminal.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <unistd.h>

namespace softphone {
namespace {

constexpr const char* prompt = "softphone> ";
// More than any screen has rows.
constexpr std::size_t kept_log_lines = 500;

bool hung_up() {
    pollfd source{STDIN_FILENO, POLLIN, 0};
    return poll(&source, 1, 0) > 0 && (source.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}

}  // namespace

Terminal::Terminal(Settings settings, LineEditor::Completer complete) : settings_(std::move(settings)) {
    redraw();
    editor_ = std::make_unique<LineEditor>(
        prompt, [this](const std::optional<std::string>& line) { return take_line(line); },
        std::move(complete), [this] { redraw(); });
}

Terminal::~Terminal() {
    editor_->hide();
}

void Terminal::line(std::string_view text) {
    editor_->hide();
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fputc('\n', stdout);
    lines_.emplace_back(text);
    if (lines_.size() > kept_log_lines)
        lines_.pop_front();
}

void Terminal::refresh(const State& state) {
    std::fflush(stdout);
    if (settings_.panel) {
        panel_ = render_panel(state, settings_.title, size_, settings_.style);
        screen_.paint(panel_);
    }
    editor_->show();
}

int Terminal::descriptor() const {
    return STDIN_FILENO;
}

bool Terminal::read(const LineHandler& handle) {
    // libedit says nothing of a terminal that is gone, and would be asked for ever.
    if (hung_up())
        return false;
    handle_ = &handle;
    editor_->read();
    handle_ = nullptr;
    return open_;
}

bool Terminal::take_line(const std::optional<std::string>& line) {
    open_ = line && (*handle_)(*line, "");
    return open_;
}

void Terminal::resized() {
    if (terminal_size() == size_)
        return;
    editor_->resized();
    redraw();
}

void Terminal::suspend() {
    editor_->hide();
    screen_.release();
    std::fflush(stdout);
    editor_->release_terminal();
    // SIGSTOP, since SIGTSTP is blocked and waited for.
    std::raise(SIGSTOP);
    editor_->take_terminal();
    redraw();
}

void Terminal::redraw() {
    if (editor_)
        editor_->hide();
    size_ = terminal_size();
    if (!settings_.panel)
        return;
    const int rows = panel_rows(size_);
    screen_.split(size_, rows);
    screen_.paint(panel_);
    const auto shown = std::min(lines_.size(), static_cast<std::size_t>(size_.rows - rows - 1));
    for (auto line = lines_.end() - static_cast<std::ptrdiff_t>(shown); line != lines_.end(); ++line)
        std::printf("%s\n", line->c_str());
    std::fflush(stdout);
}

}  // namespace softphone
