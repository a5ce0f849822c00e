// The lists of calls and of headsets.
#include <gtest/gtest.h>

#include "tools/softphone/actions.h"
#include "tools/softphone/call_list.h"
#include "tools/softphone/headset_list.h"

namespace softphone {
namespace {

void set_phase(CallList& calls, const std::string& cid, CallPhase phase) {
    calls.update(cid, [phase](Call& call) { call.phase = phase; });
}

TEST(CallList, a_new_call_is_added_and_an_ended_one_leaves) {
    CallList calls;
    set_phase(calls, "1", CallPhase::ringing);
    ASSERT_NE(calls.find("1"), nullptr);
    EXPECT_EQ(calls.find("1")->phase, CallPhase::ringing);

    const Call ended = calls.update("1", [](Call& call) { call.phase = CallPhase::ended; });
    EXPECT_EQ(ended.phase, CallPhase::ended);
    EXPECT_EQ(calls.find("1"), nullptr);
    EXPECT_TRUE(calls.all().empty());
}

TEST(CallList, the_oldest_call_of_a_phase_is_the_first) {
    CallList calls;
    set_phase(calls, "2", CallPhase::held);
    set_phase(calls, "1", CallPhase::connected);
    set_phase(calls, "3", CallPhase::connected);
    ASSERT_NE(calls.first(CallPhase::connected), nullptr);
    EXPECT_EQ(calls.first(CallPhase::connected)->cid, "1");
    EXPECT_EQ(calls.first(CallPhase::ringing), nullptr);
}

TEST(CallList, every_phase_has_the_state_that_the_plug_in_knows) {
    const std::pair<CallPhase, plugin_control::CallState> expected[] = {
        {CallPhase::created, plugin_control::CALL_STATE_IDLE},
        {CallPhase::ringing, plugin_control::CALL_STATE_ALERTING},
        {CallPhase::silent, plugin_control::CALL_STATE_ALERTING},
        {CallPhase::ringback, plugin_control::CALL_STATE_CONNECTED},
        {CallPhase::connected, plugin_control::CALL_STATE_CONNECTED},
        {CallPhase::held, plugin_control::CALL_STATE_HOLD},
    };
    CallList calls;
    for (const auto& [phase, state] : expected)
        set_phase(calls, std::string(to_string(phase)), phase);
    calls.update("held", [](Call& call) {
        call.muted = true;
        call.direction = 7;
    });

    const auto infos = calls.to_call_infos();
    ASSERT_EQ(infos.size(), std::size(expected));
    for (std::size_t i = 0; i < infos.size(); ++i) {
        EXPECT_EQ(infos[i].cid, to_string(expected[i].first));
        EXPECT_EQ(infos[i].state, expected[i].second) << infos[i].cid;
    }
    EXPECT_TRUE(infos.back().mute);
    EXPECT_EQ(infos.back().direction, 7);
}

TEST(HeadsetList, a_name_that_is_taken_gets_a_number) {
    HeadsetList headsets;
    EXPECT_EQ(headsets.add(1, "jabra").name, "jabra");
    EXPECT_EQ(headsets.add(2, "jabra").name, "jabra-2");
    EXPECT_EQ(headsets.add(3, "jabra").name, "jabra-3");
    EXPECT_EQ(headsets.names(), (Words{"jabra", "jabra-2", "jabra-3"}));
}

TEST(HeadsetList, finds_by_name_by_number_and_by_serial) {
    HeadsetList headsets;
    headsets.add(0, "real").serial = "R";
    headsets.add(5, "jabra").serial = "A";
    EXPECT_EQ(headsets.find("5"), headsets.find("jabra"));
    EXPECT_EQ(headsets.find("0"), nullptr);
    EXPECT_EQ(headsets.find_serial("A"), headsets.find_number(5));
    EXPECT_EQ(headsets.find_serial("B"), nullptr);
    EXPECT_EQ(headsets.name_of(5), "jabra");
    EXPECT_EQ(headsets.name_of(6), "6");
}

TEST(HeadsetList, of_two_with_one_serial_the_plugged_one_is_meant) {
    HeadsetList headsets;
    headsets.add(1, "old").serial = "A";
    Headset& plugged = headsets.add(2, "new");
    plugged.serial = "A";
    EXPECT_EQ(headsets.find_serial("A"), headsets.find("old"));
    plugged.plugged = true;
    EXPECT_EQ(headsets.find_serial("A"), &plugged);
}

TEST(HeadsetList, without_a_name_the_only_plugged_one_is_chosen) {
    HeadsetList headsets;
    EXPECT_THROW(headsets.choose(std::nullopt), CommandError);
    Headset& first = headsets.add(1, "first");
    EXPECT_THROW(headsets.choose(std::nullopt), CommandError);
    first.plugged = true;
    Headset& second = headsets.add(2, "second");
    EXPECT_EQ(&headsets.choose(std::nullopt), &first);
    second.plugged = true;
    EXPECT_THROW(headsets.choose(std::nullopt), CommandError);
    EXPECT_EQ(&headsets.choose("second"), &second);
    EXPECT_THROW(headsets.choose("third"), CommandError);
}

TEST(HeadsetList, headsets_that_are_found_are_added_once_under_a_name_of_their_product) {
    HeadsetList headsets;
    headsets.take_found(
        {{"Jabra Link 380c", "A"}, {"Jabra Link 380c", "B"}, {"  (2) ", "C"}, {"\xC3\xA9", "D"}});
    headsets.take_found(
        {{"Jabra Link 380c", "A"}, {"Jabra Link 380c", "B"}, {"  (2) ", "C"}, {"\xC3\xA9", "D"}});
    EXPECT_EQ(headsets.names(), (Words{"jabra-link-380c", "jabra-link-380c-2", "2", "headset"}));
    EXPECT_EQ(headsets.find("jabra-link-380c-2")->serial, "B");
    EXPECT_EQ(headsets.find("jabra-link-380c-2")->product, "Jabra Link 380c");
}

TEST(HeadsetList, a_headset_that_is_not_found_any_more_is_unplugged_until_it_is_found_again) {
    HeadsetList headsets;
    headsets.take_found({{"Headset", "A"}});
    EXPECT_TRUE(headsets.find_serial("A")->plugged);
    headsets.take_found({});
    EXPECT_FALSE(headsets.find_serial("A")->plugged);
    headsets.take_found({{"Headset", "A"}});
    EXPECT_TRUE(headsets.find_serial("A")->plugged);
    EXPECT_EQ(headsets.all().size(), 1U);
}

TEST(HeadsetList, a_virtual_headset_that_is_found_is_no_other_one_and_has_its_own_news) {
    HeadsetList headsets;
    headsets.add(1, "jabra").serial = "A";
    headsets.take_found({{"Jabra Link 380c", "A"}});
    EXPECT_EQ(headsets.all().size(), 1U);
    EXPECT_FALSE(headsets.find("jabra")->plugged);
    headsets.find("jabra")->plugged = true;
    headsets.take_found({});
    EXPECT_TRUE(headsets.find("jabra")->plugged);
}

TEST(HeadsetList, one_at_a_time_is_ready) {
    HeadsetList headsets;
    const Headset& first = headsets.add(1, "first");
    const Headset& second = headsets.add(2, "second");
    headsets.set_ready(&first);
    headsets.set_ready(&second);
    EXPECT_FALSE(first.ready);
    EXPECT_TRUE(second.ready);
    headsets.set_ready(nullptr);
    EXPECT_FALSE(second.ready);
}

TEST(LitNames, lists_the_lit_ones) {
    EXPECT_EQ(lit_names({{{0x08, 0x17}, true}, {{0x08, 0x18}, false}, {{0x08, 0x09}, true}}),
              "off-hook, mute lit");
    EXPECT_EQ(lit_names({{{0x08, 0x17}, false}}), "all dark");
}

TEST(Actions, every_one_is_found_by_its_name_in_any_case) {
    const Words names = action_names();
    EXPECT_EQ(names.size(), 8U);
    for (const auto& name : names)
        EXPECT_EQ(to_string(find_action(name)), name);
    EXPECT_EQ(find_action("mutecall"), Action::mute_call);
    EXPECT_THROW(find_action("onMuteCall"), CommandError);
}

TEST(Actions, each_is_answered_as_a_client_would) {
    EXPECT_EQ(answer_to(Action::answer), CallStep::connect);
    EXPECT_EQ(answer_to(Action::end_call), CallStep::end);
    EXPECT_EQ(answer_to(Action::reject_call), CallStep::end);
    EXPECT_EQ(answer_to(Action::hold_call), CallStep::hold);
    EXPECT_EQ(answer_to(Action::resume_call), CallStep::resume);
    EXPECT_EQ(answer_to(Action::mute_call), CallStep::mute);
    EXPECT_EQ(answer_to(Action::unmute_call), CallStep::unmute);
    EXPECT_EQ(answer_to(Action::function_key), std::nullopt);
}

}  // namespace
}  // namespace softphone
