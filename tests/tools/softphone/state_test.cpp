#include "tools/softphone/state.h"

#include <gtest/gtest.h>

namespace softphone::state_test {
namespace {

constexpr Usage off_hook{0x08, 0x17};
constexpr Usage mute{0x08, 0x09};

class StateTest : public testing::Test {
  protected:
    StateTest() {
        state.headsets.add(1, "jabra");
        state.apply(Plugged{1, "Jabra Link 380c", "A1", {{off_hook, false}, {mute, false}}});
    }

    Headset& jabra() { return *state.headsets.find("jabra"); }

    State state;
    const DeviceNotice notice{"usb-A1", 0x0B0E, 0x24C9, "Jabra", "Jabra Link 380c", "A1"};
};

TEST_F(StateTest, a_plugged_headset_has_the_name_that_the_command_gave) {
    EXPECT_TRUE(jabra().plugged);
    EXPECT_EQ(jabra().product, "Jabra Link 380c");
    EXPECT_EQ(state.headsets.all().size(), 1U);
}

TEST_F(StateTest, indicators_follow_what_the_headset_shows) {
    state.apply(IndicatorChanged{1, {off_hook, true}});
    EXPECT_TRUE(jabra().indicator(off_hook)->lit);
    EXPECT_FALSE(jabra().indicator(mute)->lit);
    state.apply(IndicatorChanged{1, {off_hook, false}});
    EXPECT_FALSE(jabra().indicator(off_hook)->lit);
}

TEST_F(StateTest, an_unplugged_headset_is_dark) {
    state.apply(IndicatorChanged{1, {off_hook, true}});
    state.apply(Unplugged{1});
    EXPECT_FALSE(jabra().plugged);
    EXPECT_FALSE(jabra().indicator(off_hook)->lit);
}

TEST_F(StateTest, ready_and_removed_belong_to_the_serial) {
    state.apply(HeadsetReady{notice});
    EXPECT_TRUE(jabra().ready);
    state.apply(HeadsetRemoved{notice});
    EXPECT_FALSE(jabra().ready);
    EXPECT_TRUE(jabra().plugged) << "its own news says otherwise";
    EXPECT_EQ(state.unclaimed.ready.size(), 1U);
    EXPECT_EQ(state.unclaimed.removed.size(), 1U);
}

TEST_F(StateTest, a_headset_has_no_permission_from_the_line_that_says_so_to_the_next_look) {
    const std::string look = "3rdPartyHeadsetPlugin: plugin_control::device_mgr::enumerate_hid_device: ";
    state.apply(
        LogLine{look + "cannot open /dev/hidraw3, sn = A1: CreateFile: /dev/hidraw3: Permission denied."});
    EXPECT_FALSE(state.headsets.has_permission("A1"));
    EXPECT_TRUE(state.headsets.has_permission("A"));
    EXPECT_TRUE(state.headsets.has_permission("A12"));
    state.apply(LogLine{look + "complete hid_enumerate() "});
    EXPECT_TRUE(state.headsets.has_permission("A1"));
    state.apply(LogLine{look + "cannot open /dev/hidraw3, sn = A1: CreateFile: No such device."});
    EXPECT_TRUE(state.headsets.has_permission("A1")) << "that is another reason";
    state.apply(LogLine{
        look + "cannot open /dev/hidraw3, sn = A1: CreateFile: /dev/hidraw3: Operation not permitted."});
    EXPECT_FALSE(state.headsets.has_permission("A1")) << "a container's device cgroup says so";
}

TEST_F(StateTest, a_real_headset_is_listed_when_it_is_ready_and_gone_when_it_is_removed) {
    DeviceNotice real = notice;
    real.serial = "REAL";
    state.apply(HeadsetReady{real});
    Headset* headset = state.headsets.find_serial("REAL");
    ASSERT_NE(headset, nullptr);
    EXPECT_EQ(headset->number, 0);
    EXPECT_TRUE(headset->plugged);
    state.apply(HeadsetRemoved{real});
    EXPECT_FALSE(headset->plugged);
    state.apply(HeadsetReady{real});
    EXPECT_TRUE(headset->plugged);
    EXPECT_EQ(state.headsets.all().size(), 2U);
}

TEST_F(StateTest, news_of_an_unknown_headset_is_no_news) {
    state.apply(IndicatorChanged{9, {off_hook, true}});
    state.apply(Unplugged{9});
    state.apply(HeadsetRemoved{{"", 0, 0, "", "", "?"}});
    EXPECT_EQ(state.headsets.all().size(), 1U);
}

TEST_F(StateTest, the_last_keys_and_requests_are_kept) {
    for (int i = 0; i < 20; ++i)
        state.apply(KeyWorked{1, "hook", "pressed"});
    state.apply(KeyWorked{1, "mute", "down"});
    EXPECT_EQ(state.recent_keys.size(), 8U);
    EXPECT_EQ(state.recent_keys.back(), "mute down");
    state.apply(ActionRequested{Action::hold_call, "usb-A1", ""});
    EXPECT_EQ(state.recent_actions.back(), "HoldCall");
}

TEST(LogBook, finds_lines_in_their_order_each_once) {
    LogBook log;
    for (const char* line : {"a1", "b", "a2"})
        log.add(line);
    EXPECT_EQ(log.find_next("a"), "a1");
    EXPECT_EQ(log.find_next("a"), "a2");
    EXPECT_EQ(log.find_next("b"), std::nullopt) << "it came before the line that was found last";
    log.add("b");
    EXPECT_EQ(log.find_next("b"), "b");
}

TEST(LogBook, skipped_lines_are_not_found) {
    LogBook log;
    log.add("a");
    log.skip_all();
    EXPECT_EQ(log.find_next("a"), std::nullopt);
    log.add("a");
    EXPECT_EQ(log.find_next("a"), "a");
}

TEST(LogBook, the_tail_is_the_newest_lines) {
    LogBook log;
    for (const char* line : {"1", "2", "3"})
        log.add(line);
    EXPECT_EQ(log.tail(2), (std::deque<std::string>{"2", "3"}));
    EXPECT_EQ(log.tail(9).size(), 3U);
    EXPECT_TRUE(log.tail(0).empty());
}

TEST(LogBook, a_full_book_loses_its_oldest_lines_and_goes_on_finding) {
    LogBook log;
    log.add("first");
    EXPECT_EQ(log.find_next("first"), "first");
    for (int i = 0; i < 20'000; ++i)
        log.add("line " + std::to_string(i));
    EXPECT_EQ(log.tail(100'000).size(), 10'000U);
    EXPECT_EQ(log.find_next("line"), "line 10000");
    EXPECT_EQ(log.find_next("line"), "line 10001");
}

}  // namespace
}  // namespace softphone::state_test
