#include "tools/softphone/panel.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace softphone {
namespace {

// Rows of the panel. The title, the keys, the requests and the rule below have one each.
constexpr int call_rows = 3;
constexpr int headset_rows = 3;
constexpr int most_log_rows = 8;
constexpr int other_rows = 4;
constexpr int fixed_rows = call_rows + headset_rows + other_rows;
// What a prompt needs below the panel to be of use.
constexpr int least_rows_below = 8;

constexpr std::size_t label_width = 10;

bool starts_character(char c) {
    // UTF-8: all bytes of a character but the first are 10xxxxxx.
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
}

/// A line of coloured pieces that ends at the width of the screen.
class PanelLine {
  public:
    PanelLine(int columns, Style style)
        : left_(static_cast<std::size_t>(std::max(columns, 0))), style_(style) {}

    PanelLine& add(std::string_view text, Colour colour = Colour::none) {
        std::size_t size = 0;
        for (; size < text.size(); ++size) {
            if (starts_character(text[size]) && left_ == 0)
                break;
            left_ -= starts_character(text[size]) ? 1U : 0U;
        }
        text_ += style_.paint(colour, text.substr(0, size));
        return *this;
    }

    std::string text() const { return text_; }

  private:
    std::size_t left_;  ///< columns
    Style style_;
    std::string text_;
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
        const int count = static_cast<int>(items.size());
        const int shown = count > rows ? rows - 1 : count;
        auto item = items.begin();
        for (int row = 0; row < rows; ++row) {
            PanelLine text = line(row == 0 ? label : "");
            if (row < shown)
                add_item(text, *item++);
            else if (row < count)
                text.add("and " + std::to_string(count - shown) + " more", Colour::dim);
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

/// Newest first, because the end of the line may not fit.
std::string newest_first(const std::deque<std::string>& recent) {
    const Words words(recent.rbegin(), recent.rend());
    std::string text;
    for (const auto& word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

}  // namespace

int panel_rows(ScreenSize size) {
    const int left = size.rows - fixed_rows - least_rows_below;
    return left < 0 ? 0 : fixed_rows + std::min(left / 2, most_log_rows);
}

std::vector<std::string> render_panel(const State& state, std::string_view title, ScreenSize size,
                                      Style style) {
    const int log_rows = panel_rows(size) - fixed_rows;
    if (log_rows < 0)
        return {};
    PanelWriter panel(size, style);
    panel.put(panel.full_line().add(" softphone  ", Colour::bold).add(title, Colour::dim));
    panel.group("Calls", state.calls.all(), call_rows, add_call);
    panel.group("Headsets", state.headsets.all(), headset_rows, [&](PanelLine& line, const Headset& headset) {
        add_headset(line, headset, state.headsets.has_permission(headset.serial));
    });
    panel.put(panel.line("Keys").add(newest_first(state.recent_keys)));
    panel.put(panel.line("Requests").add(newest_first(state.recent_actions), Colour::magenta));
    const auto log = state.log.tail(static_cast<std::size_t>(log_rows));
    panel.group("Log", log, log_rows,
                [](PanelLine& line, const std::string& text) { line.add(text, Colour::dim); });
    panel.put(panel.full_line().add(std::string(static_cast<std::size_t>(size.columns), '-'), Colour::dim));
    return panel.take();
}

}  // namespace softphone
