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
    EXPECT_EQ(panel_rows({17, 80}), 0);
    EXPECT_EQ(panel_rows({24, 80}), 13);
    EXPECT_TRUE(panel({}, {10, 80}).empty());
}

TEST(PanelRows, the_panel_leaves_room_below_and_stops_growing) {
    for (int rows = 18; rows < 200; ++rows)
        EXPECT_LE(panel_rows({rows, 80}) + 8, rows) << rows;
    EXPECT_EQ(panel_rows({100, 80}), panel_rows({200, 80}));
}

TEST(RenderPanel, always_has_the_rows_that_it_announces) {
    State state;
    for (int rows : {18, 24, 33, 60})
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

TEST(RenderPanel, says_how_many_do_not_fit) {
    State state;
    for (const char* cid : {"1", "2", "3"})
        state.calls.update(cid, [](Call&) {});
    EXPECT_FALSE(has_line(panel(state), "more"));
    state.calls.update("4", [](Call&) {});
    const auto lines = panel(state);
    EXPECT_TRUE(has_line(lines, "2  created"));
    EXPECT_FALSE(has_line(lines, "3  created"));
    EXPECT_TRUE(has_line(lines, "and 2 more"));
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
    EXPECT_TRUE(has_line(lines, " Log       " + umlauts.substr(0, 2 * 9)));
    EXPECT_FALSE(has_line(lines, umlauts.substr(0, 2 * 10)));
}

}  // namespace
}  // namespace softphone
