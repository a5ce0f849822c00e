#include "tools/softphone/split_screen.h"

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace softphone {
namespace {

// Control functions of ECMA-48, and of the VT100 where it says DEC.
constexpr const char* clear_screen = "\x1b[2J";   // ED
constexpr const char* clear_line_end = "\x1b[K";  // EL
constexpr const char* save_cursor =
    "\x1b"
    "7";  // DECSC
constexpr const char* restore_cursor =
    "\x1b"
    "8";                                          // DECRC
constexpr const char* hide_cursor = "\x1b[?25l";  // DECTCEM
constexpr const char* show_cursor = "\x1b[?25h";
constexpr const char* no_scroll_region = "\x1b[r";  // DECSTBM

std::string scroll_region(int top, int bottom) {
    return "\x1b[" + std::to_string(top) + ";" + std::to_string(bottom) + "r";  // DECSTBM
}

std::string move_to(int row) {
    return "\x1b[" + std::to_string(row) + ";1H";  // CUP
}

void write(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

}  // namespace

ScreenSize terminal_size() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0)
        return {24, 80};  // what a terminal without a size is taken for, as by tput(1)
    return {size.ws_row, size.ws_col};
}

SplitScreen::~SplitScreen() {
    release();
}

void SplitScreen::split(ScreenSize size, int top_rows) {
    top_rows_ = top_rows;
    painted_.clear();
    // Setting the region moves the cursor home.
    write(no_scroll_region + std::string(clear_screen) +
          (top_rows > 0 ? scroll_region(top_rows + 1, size.rows) : "") + move_to(size.rows));
}

void SplitScreen::release() {
    if (std::exchange(top_rows_, 0) > 0)
        write(save_cursor + std::string(no_scroll_region) + restore_cursor);
}

void SplitScreen::paint(std::vector<std::string> lines) {
    if (lines == painted_)
        return;
    std::string text = std::string(hide_cursor) + save_cursor;
    for (int row = 1; const auto& line : lines)
        text += move_to(row++) + line + clear_line_end;
    write(text + restore_cursor + show_cursor);
    painted_ = std::move(lines);
}

}  // namespace softphone
