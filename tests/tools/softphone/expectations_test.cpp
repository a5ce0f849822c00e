#include "tools/softphone/expectations.h"

#include <gtest/gtest.h>
#include <set>

namespace softphone {
namespace {

constexpr Usage off_hook{0x08, 0x17};

class ExpectationTest : public testing::Test {
  protected:
    ExpectationTest() {
        state.headsets.add(1, "jabra");
        state.apply(Plugged{1, "Jabra Link 380c", "A1", {{off_hook, false}}});
    }

    Finding look(const char* words) { return make_expectation(state, split_words(words)).check(); }
    Outcome outcome(const char* words) { return look(words).outcome; }

    State state;
};

TEST_F(ExpectationTest, an_indicator_is_waited_for) {
    const Expectation lit = make_expectation(state, {"indicator", "off-hook", "on"});
    EXPECT_EQ(lit.check().outcome, Outcome::waiting);
    EXPECT_EQ(lit.check().found, "all dark");
    state.apply(IndicatorChanged{1, {off_hook, true}});
    EXPECT_EQ(lit.check().outcome, Outcome::met);
    EXPECT_EQ(outcome("indicator 08:17 off jabra"), Outcome::waiting);
}

TEST_F(ExpectationTest, an_indicator_that_the_headset_lacks_fails_at_once) {
    EXPECT_EQ(outcome("indicator ring off"), Outcome::failed);
}

TEST_F(ExpectationTest, actions_are_claimed_in_their_order) {
    EXPECT_EQ(outcome("action EndCall"), Outcome::waiting);
    state.apply(ActionRequested{Action::mute_call, "", "42"});
    state.apply(ActionRequested{Action::end_call, "", "42"});
    EXPECT_EQ(outcome("action mutecall 42"), Outcome::met);
    EXPECT_EQ(outcome("action EndCall"), Outcome::met);
    EXPECT_EQ(outcome("action EndCall"), Outcome::waiting);
}

TEST_F(ExpectationTest, another_action_or_another_call_fails) {
    state.apply(ActionRequested{Action::mute_call, "", "42"});
    EXPECT_EQ(outcome("action EndCall"), Outcome::failed);
    state.apply(ActionRequested{Action::end_call, "", "42"});
    const Finding finding = look("action EndCall 43");
    EXPECT_EQ(finding.outcome, Outcome::failed);
    EXPECT_EQ(finding.found, "EndCall 42");
}

TEST_F(ExpectationTest, reports_are_claimed_in_their_order) {
    state.apply(ReportReceived{1, {2, 0, 0}, {}});
    state.apply(ReportReceived{1, {2, 1, 0}, {}});
    EXPECT_EQ(outcome("report 02:00:00"), Outcome::met);
    const Finding finding = look("report 02:00:00 jabra");
    EXPECT_EQ(finding.outcome, Outcome::failed);
    EXPECT_EQ(finding.found, "02 01 00");
    EXPECT_EQ(outcome("report 020000"), Outcome::waiting);
}

TEST_F(ExpectationTest, calls_are_those_of_the_softphone) {
    EXPECT_EQ(outcome("call 1 ended"), Outcome::met);
    EXPECT_EQ(outcome("call 1 connected"), Outcome::waiting);
    state.calls.update("1", [](Call& call) { call.phase = CallPhase::connected; });
    EXPECT_EQ(outcome("call 1 connected"), Outcome::met);
    EXPECT_EQ(outcome("call 1 unmuted"), Outcome::met);
    EXPECT_EQ(outcome("call 1 muted"), Outcome::waiting);
}

TEST_F(ExpectationTest, a_log_line_contains_the_words) {
    state.apply(LogLine{"one two  three"});
    EXPECT_EQ(outcome("log two three"), Outcome::waiting) << "spaces count";
    EXPECT_EQ(outcome("log one two"), Outcome::met);
    EXPECT_EQ(outcome("log one two"), Outcome::waiting) << "a line is found once";
}

TEST_F(ExpectationTest, notices_are_claimed_in_their_order) {
    state.apply(HeadsetReady{{"", 0, 0, "", "Other", "B2"}});
    EXPECT_EQ(outcome("ready jabra"), Outcome::failed);
    EXPECT_EQ(outcome("ready"), Outcome::waiting);
    state.apply(HeadsetReady{{"", 0, 0, "", "Jabra Link 380c", "A1"}});
    EXPECT_EQ(outcome("removed"), Outcome::waiting);
    EXPECT_EQ(outcome("ready jabra"), Outcome::met);
    state.apply(HeadsetRemoved{{"", 0, 0, "", "Jabra Link 380c", "A1"}});
    EXPECT_EQ(outcome("removed jabra"), Outcome::met);
}

TEST_F(ExpectationTest, an_absence_is_met_at_its_end) {
    const Expectation none = make_expectation(state, {"no", "action", "for", "70"});
    EXPECT_EQ(none.at_deadline, Outcome::met);
    EXPECT_EQ(none.time.count(), 70);
    EXPECT_EQ(none.check().outcome, Outcome::waiting);
    state.apply(ActionRequested{Action::end_call, "", "42"});
    EXPECT_EQ(none.check().outcome, Outcome::failed);
}

TEST_F(ExpectationTest, an_absence_fails_for_what_was_there_before) {
    EXPECT_EQ(outcome("no report"), Outcome::waiting);
    state.apply(ReportReceived{1, {2, 0, 0}, {}});
    EXPECT_EQ(outcome("no report"), Outcome::failed);
    EXPECT_EQ(outcome("no ready"), Outcome::waiting);
    EXPECT_EQ(outcome("no removed"), Outcome::waiting);
    state.apply(HeadsetReady{{"", 0, 0, "", "Jabra", "A1"}});
    EXPECT_EQ(outcome("no ready"), Outcome::failed);
}

TEST_F(ExpectationTest, it_waits_two_seconds_or_as_long_as_it_says) {
    EXPECT_EQ(make_expectation(state, {"ready"}).time.count(), 2000);
    EXPECT_EQ(make_expectation(state, {"ready", "within", "50"}).time.count(), 50);
    EXPECT_EQ(make_expectation(state, {"ready", "jabra", "within", "0"}).time.count(), 0);
    EXPECT_EQ(make_expectation(state, {"ready"}).at_deadline, Outcome::failed);
}

TEST_F(ExpectationTest, what_cannot_be_expected_is_refused) {
    for (const char* words :
         {"rain", "indicator off-hook", "indicator off-hook lit", "indicator shine on", "action Sing",
          "report", "report 2", "call 1 dead", "ready nobody", "no rain", "ready within soon", "log"})
        EXPECT_THROW(make_expectation(state, split_words(words)), CommandError) << words;
}

TEST(ConditionHelp, every_condition_is_named_once_and_explained) {
    std::set<std::string> names;
    for (const auto& condition : condition_help()) {
        EXPECT_TRUE(names.insert(condition.name).second) << condition.name;
        EXPECT_STRNE(condition.help, "") << condition.name;
    }
    EXPECT_EQ(names.size(), 8U);
}

}  // namespace
}  // namespace softphone
