#include "tools/softphone/panel.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace softphone {
namespace {

constexpr ScreenSize usual{24, 80};

std::vector<std::string> panel(const State& state, ScreenSize size = usual) {
    return render_panel(state, "lib.so", size, Style());
}

bool has_line(const std::vector<std::string>& lines, const std::string& text) {
    return std::ranges::any_of(lines, [&](const std::string& line) { return line.find(text) != line.npos; });
}

TEST(PanelRows, a_screen_that_is_too_small_has_no_panel) {
    EXPECT_EQ(panel_rows({11, 80}), 0);
    EXPECT_EQ(panel_rows({12, 80}), 4);
    EXPECT_EQ(panel_rows({24, 80}), 13);
    EXPECT_TRUE(panel({}, {10, 80}).empty());
}

TEST(PanelRows, the_panel_leaves_room_below_and_stops_growing) {
    for (int rows = 12; rows < 200; ++rows)
        EXPECT_LE(panel_rows({rows, 80}) + 8, rows) << rows;
    EXPECT_EQ(panel_rows({100, 80}), panel_rows({200, 80}));
}

TEST(RenderPanel, always_has_the_rows_that_it_announces) {
    State state;
    for (int rows : {12, 13, 15, 17, 18, 24, 33, 60})
        EXPECT_EQ(panel(state, {rows, 80}).size(), static_cast<std::size_t>(panel_rows({rows, 80})));
}

TEST(RenderPanel, shows_calls_headsets_keys_requests_and_log) {
    State state;
    state.calls.update("42", [](Call& call) {
        call.phase = CallPhase::connected;
        call.muted = true;
    });
    state.headsets.add(1, "jabra");
    state.apply(Plugged{1, "Jabra", "A1", {{{0x08, 0x17}, true}, {{0x08, 0x09}, false}}});
    state.apply(HeadsetReady{{"", 0, 0, "", "Jabra", "A1"}});
    state.apply(KeyWorked{1, "hook", "pressed"});
    state.apply(KeyWorked{1, "mute", "pressed"});
    state.apply(ActionRequested{Action::mute_call, "", "42"});
    state.apply(LogLine{"line of the log"});

    const auto lines = panel(state);
    EXPECT_TRUE(has_line(lines, "42  connected  muted"));
    EXPECT_TRUE(has_line(lines, "* jabra  [off-hook]   mute "));
    EXPECT_TRUE(has_line(lines, "mute, hook")) << "the newest key comes first";
    EXPECT_TRUE(has_line(lines, "muteCall 42"));
    EXPECT_TRUE(has_line(lines, "line of the log"));
}

/// Calls 1 to `count`, and a log.
State busy_state(int count) {
    State state;
    for (int cid = 1; cid <= count; ++cid)
        state.calls.update(std::to_string(cid), [](Call&) {});
    for (int line = 0; line < 20; ++line)
        state.apply(LogLine{"log line"});
    return state;
}

TEST(RenderPanel, calls_come_before_the_log) {
    const auto lines = panel(busy_state(6));
    for (const char* call : {"1  created", "3  created", "6  created"})
        EXPECT_TRUE(has_line(lines, call)) << call;
    EXPECT_FALSE(has_line(lines, "more"));
    EXPECT_FALSE(has_line(lines, "log line"));
    EXPECT_TRUE(has_line(panel(busy_state(5)), "log line"));
}

TEST(RenderPanel, shows_the_newest_calls_and_how_many_more_there_are) {
    const auto lines = panel(busy_state(9));
    EXPECT_EQ(lines[1], " Calls     9  created");
    EXPECT_TRUE(has_line(lines, "5  created"));
    EXPECT_FALSE(has_line(lines, "4  created"));
    EXPECT_TRUE(has_line(lines, "and 4 more"));
}

TEST(RenderPanel, a_small_screen_shows_calls_and_headsets) {
    auto state = busy_state(2);
    state.headsets.add(1, "jabra");
    const auto lines = panel(state, {12, 80});
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[1], " Calls     2  created  and 1 more");
    EXPECT_TRUE(has_line(lines, "jabra"));
    EXPECT_TRUE(has_line(panel(state, {15, 80}), "1  created")) << "the next row is for another call";
    EXPECT_FALSE(has_line(panel(state, {18, 80}), "log line"));
}

TEST(RenderPanel, a_line_that_is_cut_ends_with_a_mark) {
    State state;
    state.apply(LogLine{"0123456789abcdef"});
    EXPECT_TRUE(has_line(panel(state, {24, 20}), " Log       01234567>"));
    EXPECT_TRUE(has_line(panel(state, {24, 27}), " Log       0123456789abcdef"));
}

TEST(RenderPanel, nothing_steers_the_terminal) {
    State state;
    state.apply(LogLine{"\x1B[2J\xC2\x9B\xFF\n"});
    state.calls.update("\x1B[H", [](Call&) {});
    const auto lines = panel(state);
    EXPECT_TRUE(has_line(lines, "?[2J?\xEF\xBF\xBD?"));
    EXPECT_TRUE(has_line(lines, "?[H  created"));
    EXPECT_FALSE(has_line(lines, "\x1B"));
}

TEST(RenderPanel, no_line_is_wider_than_the_screen) {
    State state;
    state.apply(LogLine{std::string(500, 'x')});
    for (const auto& line : panel(state, {24, 40}))
        EXPECT_LE(line.size(), 40U) << line;
}

TEST(RenderPanel, characters_of_several_bytes_count_once_and_stay_whole) {
    State state;
    std::string umlauts;
    for (int i = 0; i < 100; ++i)
        umlauts += "\xC3\xA4";
    state.apply(LogLine{umlauts});
    const auto lines = panel(state, {24, 20});
    EXPECT_TRUE(has_line(lines, " Log       " + umlauts.substr(0, 2 * 8) + ">"));
    EXPECT_FALSE(has_line(lines, umlauts.substr(0, 2 * 9)));
}

}  // namespace
}  // namespace softphone
