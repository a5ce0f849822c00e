#include "tools/softphone/panel.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

namespace softphone {
namespace {

/// A group of lines of the panel.
enum Section : std::size_t { calls, headsets, keys, requests, log_lines, section_count };
using Rows = std::array<int, section_count>;

/// Who gets the next row of a panel that is small, the most important first.
constexpr std::array row_order{calls, headsets, requests, keys, calls, headsets, calls, headsets};

// The title, and the rule below.
constexpr int frame_rows = 2;
constexpr int least_rows = frame_rows + 2;
constexpr int usual_rows = frame_rows + static_cast<int>(row_order.size());
constexpr int most_extra_rows = 8;
// What a prompt needs below the panel to be of use.
constexpr int least_rows_below = 8;

constexpr std::size_t label_width = 10;

bool starts_character(char c) {
    // UTF-8: all bytes of a character but the first are 10xxxxxx.
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
}

/// As many bytes as the first `count` characters have.
std::size_t size_of(std::string_view text, std::size_t count) {
    std::size_t size = 0;
    for (; size < text.size(); ++size)
        if (starts_character(text[size]) && count-- == 0)
            break;
    return size;
}

std::size_t count_characters(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(text, starts_character));
}

/// A line of coloured pieces that ends at the width of the screen, with a mark when it is cut there.
class PanelLine {
  public:
    PanelLine(int columns, Style style)
        : columns_(static_cast<std::size_t>(std::max(columns, 0))), style_(style) {}

    PanelLine& add(std::string_view text, Colour colour = Colour::none) {
        pieces_.push_back({printable(text), colour});
        width_ += count_characters(pieces_.back().text);
        return *this;
    }

    std::string text() const {
        constexpr std::string_view cut_mark = ">";
        const bool is_cut = width_ > columns_ && columns_ > 0;
        std::size_t left = is_cut ? columns_ - cut_mark.size() : columns_;
        std::string text;
        for (const auto& piece : pieces_) {
            const auto size = size_of(piece.text, left);
            text += style_.paint(piece.colour, std::string_view(piece.text).substr(0, size));
            left -= std::min(left, count_characters(piece.text));
        }
        return is_cut ? text + style_.paint(Colour::dim, cut_mark) : text;
    }

  private:
    struct Piece {
        std::string text;
        Colour colour;
    };
    std::size_t columns_;
    Style style_;
    std::vector<Piece> pieces_;
    std::size_t width_ = 0;
};

class PanelWriter {
  public:
    PanelWriter(ScreenSize size, Style style) : size_(size), style_(style) {}

    /// Adds a line with a label in front, which is empty in all but the first of a group.
    PanelLine line(std::string_view label) const {
        std::string padded(label);
        padded.resize(label_width, ' ');
        return PanelLine(size_.columns, style_).add(" ").add(padded, Colour::dim);
    }

    PanelLine full_line() const { return {size_.columns, style_}; }

    void put(const PanelLine& line) { lines_.push_back(line.text()); }

    /// Adds a group of exactly `rows` lines, one per item; the last says how many more items there are.
    template <class Items>
    void group(std::string_view label, const Items& items, int rows, auto add_item) {
        const int count = static_cast<int>(std::size(items));
        // A single row has an item and the number of the others.
        const int shown = count > rows && rows > 1 ? rows - 1 : std::min(count, rows);
        auto item = std::begin(items);
        for (int row = 0; row < rows; ++row) {
            PanelLine text = line(row == 0 ? label : "");
            if (row < shown)
                add_item(text, *item++);
            if (row == rows - 1 && shown < count)
                text.add((row < shown ? "  and " : "and ") + std::to_string(count - shown) + " more",
                         Colour::dim);
            put(text);
        }
    }

    std::vector<std::string> take() { return std::move(lines_); }

  private:
    ScreenSize size_;
    Style style_;
    std::vector<std::string> lines_;
};

Colour colour_of(CallPhase phase) {
    const bool up = phase == CallPhase::connected || phase == CallPhase::ringback;
    return up ? Colour::green : Colour::yellow;
}

void add_call(PanelLine& line, const Call& call) {
    line.add(call.cid + "  ", Colour::bold).add(to_string(call.phase), colour_of(call.phase));
    if (call.muted)
        line.add("  muted", Colour::red);
}

void add_headset(PanelLine& line, const Headset& headset, bool has_permission) {
    line.add(headset.ready && has_permission ? "* " : "  ", Colour::green).add(headset.name, Colour::bold);
    if (!headset.plugged)
        line.add("  not plugged", Colour::dim);
    if (!has_permission)
        line.add("  no permission", Colour::red);
    for (const auto& indicator : headset.indicators) {
        const std::string name = usage_name(indicator_names(), indicator.usage);
        line.add("  ");
        line.add(indicator.lit ? "[" + name + "]" : " " + name + " ",
                 indicator.lit ? Colour::green : Colour::dim);
    }
    line.add("  " + headset.last_report, Colour::dim);
}

void add_text(PanelLine& line, const std::string& text) {
    line.add(text);
}

/// In one line, newest first, because the end of the line may not fit; nothing when there is none.
Words newest_first(const std::deque<std::string>& recent) {
    std::string text;
    for (auto word = recent.rbegin(); word != recent.rend(); ++word)
        text += (text.empty() ? "" : ", ") + *word;
    return text.empty() ? Words{} : Words{text};
}

/// How the rows of a panel are shared. Calls that are many take their rows from the log.
Rows share(int rows, int call_count) {
    Rows shares{};
    int left = rows - frame_rows;
    for (const Section section : row_order) {
        if (left == 0)
            return shares;
        ++shares[section];
        --left;
    }
    const int more_calls = std::clamp(call_count - shares[calls], 0, left);
    shares[calls] += more_calls;
    shares[log_lines] = left - more_calls;
    return shares;
}

}  // namespace

int panel_rows(ScreenSize size) {
    const int room = size.rows - least_rows_below;
    if (room < least_rows)
        return 0;
    return std::min(room, usual_rows + std::clamp((room - usual_rows) / 2, 0, most_extra_rows));
}

std::vector<std::string> render_panel(const State& state, std::string_view title, ScreenSize size,
                                      Style style) {
    const int rows = panel_rows(size);
    if (rows == 0)
        return {};
    const std::vector<Call> newest_calls(state.calls.all().rbegin(), state.calls.all().rend());
    const Rows shares = share(rows, static_cast<int>(newest_calls.size()));
    PanelWriter panel(size, style);
    panel.put(panel.full_line().add(" softphone  ", Colour::bold).add(title, Colour::dim));
    panel.group("Calls", newest_calls, shares[calls], add_call);
    panel.group("Headsets", state.headsets.all(), shares[headsets],
                [&](PanelLine& line, const Headset& headset) {
                    add_headset(line, headset, state.headsets.has_permission(headset.serial));
                });
    panel.group("Keys", newest_first(state.recent_keys), shares[keys], add_text);
    panel.group("Requests", newest_first(state.recent_actions), shares[requests],
                [](PanelLine& line, const std::string& text) { line.add(text, Colour::magenta); });
    panel.group("Log", state.log.tail(static_cast<std::size_t>(shares[log_lines])), shares[log_lines],
                [](PanelLine& line, const std::string& text) { line.add(text, Colour::dim); });
    panel.put(panel.full_line().add(std::string(static_cast<std::size_t>(size.columns), '-'), Colour::dim));
    return panel.take();
}

}  // namespace softphone
