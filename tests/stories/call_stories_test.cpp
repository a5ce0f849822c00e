// Calls and headsets, from the host's first event to the last output report.

#include "tests/stories/headset_rows.h"

namespace {

using namespace plugin_control;
using namespace test_support;

class CallStory : public StoryHost, public ::testing::WithParamInterface<HeadsetRow> {
  protected:
    const HeadsetRow& row() const { return GetParam(); }
};

INSTANTIATE_TEST_SUITE_P(Models, CallStory, ::testing::ValuesIn(showing_headsets), row_name<HeadsetRow>);

TEST_P(CallStory, a_headset_is_put_to_rest_when_it_is_opened_and_again_when_it_is_ready) {
    const int headset = plug(row().model);
    EXPECT_EQ(take_shown(headset),
              *row().first != '\0' ? reports({row().first}) : reports({row().rest, row().idle}));
    EXPECT_TRUE(choose(headset));
    EXPECT_EQ(take_shown(headset), Lines());
    let_ready();
    EXPECT_EQ(take_shown(headset), reports({row().rest, row().idle, row().rest}));
    EXPECT_EQ(listener_->calls(),
              (Lines{"onListenerAttached()", notification("onActiveDeviceNotify", headset, row().vendor)}));
}

TEST_P(CallStory, a_call_rings_connects_is_muted_held_resumed_and_ends) {
    const int headset = plug_active(row().model);
    take_shown(headset);
    control_->createCall("", "1", 0);
    EXPECT_EQ(take_shown(headset), Lines());
    control_->incomingCall("", "1", true);
    EXPECT_EQ(take_shown(headset), reports({row().rest}));
    control_->connectCall("", "1");
    EXPECT_EQ(take_shown(headset), reports({row().in_use}));
    control_->mute("", "1");
    EXPECT_EQ(take_shown(headset), reports({row().muted}));
    control_->holdCall("", "1");
    EXPECT_EQ(take_shown(headset), reports({row().muted}));
    control_->resumeCall("", "1");
    EXPECT_EQ(take_shown(headset), reports({row().in_use_muted}));
    control_->unmute("", "1");
    EXPECT_EQ(take_shown(headset), reports({row().unmuted}));
    control_->endCall("", "1");
    EXPECT_EQ(take_shown(headset), reports({row().unmuted, row().idle, row().rest}));
}

TEST_P(CallStory, an_outgoing_call_shows_in_use_from_ringback_on) {
    const int headset = plug_active(row().model);
    take_shown(headset);
    control_->createCall("", "1", 1);
    control_->ringbackCall("", "1");
    EXPECT_EQ(take_shown(headset), reports({row().in_use}));
    control_->connectCall("", "1");
    EXPECT_EQ(take_shown(headset), reports({row().in_use}));
}

TEST_P(CallStory, a_consultation_shows_in_use_until_the_last_call_ends) {
    const int headset = plug_active(row().model);
    control_->connectCall("", "1");
    control_->holdCall("", "1");
    control_->connectCall("", "2");
    take_shown(headset);
    control_->holdCall("", "1");
    EXPECT_EQ(take_shown(headset), reports({row().in_use}));
    control_->endCall("", "1");
    EXPECT_EQ(take_shown(headset), reports({row().in_use, row().unmuted}));
    control_->endCall("", "2");
    EXPECT_EQ(take_shown(headset), reports({row().unmuted, row().idle, row().rest}));
}

TEST_P(CallStory, a_headset_that_is_plugged_in_while_a_call_rings_shows_it) {
    control_->incomingCall("", "1", true);
    const int headset = plug(row().model);
    EXPECT_TRUE(choose(headset));
    take_shown(headset);
    let_ready();
    EXPECT_EQ(take_shown(headset), reports({row().rest}));
    control_->connectCall("", "1");
    EXPECT_EQ(take_shown(headset), reports({row().in_use}));
}

TEST_P(CallStory, a_headset_that_becomes_ready_in_a_muted_call_shows_it) {
    control_->connectCall("", "1");
    control_->mute("", "1");
    const int headset = plug(row().model);
    EXPECT_TRUE(choose(headset));
    take_shown(headset);
    let_ready();
    EXPECT_EQ(take_shown(headset), reports({row().in_use, row().muted}));
}

TEST_P(CallStory, a_sync_shows_the_calls_that_the_host_has_now) {
    const int headset = plug_active(row().model);
    control_->incomingCall("", "old", true);
    take_shown(headset);
    control_->callStateSync("", {{"1", CALL_STATE_HOLD, 0, false}, {"2", CALL_STATE_CONNECTED, 0, true}}, 2);
    EXPECT_EQ(take_shown(headset), reports({row().in_use, row().muted}));
    control_->callStateSync("", {}, 0);
    EXPECT_EQ(take_shown(headset), reports({row().unmuted, row().idle, row().rest}));
}

TEST_P(CallStory, the_mute_key_asks_the_host_whose_echo_lights_the_indicator) {
    const int headset = plug_active(row().model);
    control_->connectCall("", "1");
    listener_->on_call([this](const std::string& call) {
        if (call.starts_with("onMuteCall")) {
            control_->mute("", "1");
        } else if (call.starts_with("onUnmuteCall")) {
            control_->unmute("", "1");
        }
    });
    listener_->clear();
    take_shown(headset);
    press(headset, phone_mute_key);
    EXPECT_EQ(take_shown(headset), reports({row().muted, row().in_use_muted}))
        << "the release shows it again";
    press(headset, phone_mute_key);
    EXPECT_EQ(take_shown(headset), reports({row().unmuted, row().in_use}));
    EXPECT_EQ(listener_->calls(), (Lines{"onMuteCall(" + host_id(headset) + ", 1, true)",
                                         "onUnmuteCall(" + host_id(headset) + ", 1, false)"}));
}

TEST_P(CallStory, the_mute_key_shows_nothing_until_the_host_says_so) {
    const int headset = plug_active(row().model);
    control_->connectCall("", "1");
    take_shown(headset);
    press(headset, phone_mute_key);
    EXPECT_EQ(take_shown(headset), reports({row().in_use}));
}

TEST_P(CallStory, the_hook_switch_is_no_key_of_the_standard_dialect) {
    const int headset = plug_active(row().model);
    control_->incomingCall("", "1", true);
    listener_->clear();
    take_shown(headset);
    press(headset, hook_switch_key);
    EXPECT_EQ(listener_->calls(), Lines());
    EXPECT_EQ(take_shown(headset), Lines());
}

TEST_P(CallStory, the_hook_switch_has_the_indicators_of_a_call_sent_again_at_press_and_release) {
    const int headset = plug_active(row().model);
    control_->connectCall("", "1");
    listener_->clear();
    take_shown(headset);
    press(headset, hook_switch_key);
    EXPECT_EQ(take_shown(headset), reports({row().in_use, row().in_use}));
    control_->mute("", "1");
    take_shown(headset);
    press(headset, hook_switch_key);
    EXPECT_EQ(take_shown(headset), reports({row().in_use_muted, row().in_use_muted}));
    EXPECT_EQ(listener_->calls(), Lines());
}

TEST_P(CallStory,
       a_headset_that_is_unplugged_in_a_call_is_gone_for_the_host_and_shows_the_call_when_it_is_back) {
    const int headset = plug_active(row().model);
    control_->connectCall("", "1");
    control_->mute("", "1");
    listener_->clear();
    unplug(headset);
    EXPECT_EQ(listener_->calls(), Lines{notification("onDeviceRemovedNotify", headset, row().vendor)});
    take_shown(headset);
    control_->unmute("", "1");
    control_->mute("", "1");
    EXPECT_EQ(take_shown(headset), Lines());

    replug(headset);
    EXPECT_EQ(take_shown(headset),
              *row().first != '\0' ? reports({row().first}) : reports({row().rest, row().idle}));
    activate(headset);
    EXPECT_EQ(take_shown(headset), reports({row().in_use, row().muted}));
    EXPECT_EQ(listener_->calls(), (Lines{notification("onDeviceRemovedNotify", headset, row().vendor),
                                         notification("onActiveDeviceNotify", headset, row().vendor)}));
}

TEST_P(CallStory, stop_puts_the_headset_to_rest_and_a_start_knows_no_calls) {
    const int headset = plug_active(row().model);
    control_->connectCall("", "1");
    control_->mute("", "1");
    take_shown(headset);
    stopPluginControl();
    EXPECT_EQ(take_shown(headset), reports({row().unmuted, row().idle}));
    control_->connectCall("", "2");
    EXPECT_EQ(take_shown(headset), Lines());

    start_with_listeners();
    take_shown(headset);
    activate(headset);
    EXPECT_EQ(take_shown(headset), reports({row().rest, row().idle, row().rest}));
    control_->callStateSync("", {{"1", CALL_STATE_CONNECTED, 0, true}}, 1);
    EXPECT_EQ(take_shown(headset), reports({row().in_use, row().muted}));
}

TEST_P(CallStory, a_change_of_audio_device_moves_the_call_from_one_headset_to_the_other) {
    const int other = plug_active("jabra-link-380c");
    const int headset = plug(row().model, "ANOTHER-SERIAL");
    control_->connectCall("", "1");
    take_shown(other);
    take_shown(headset);

    EXPECT_TRUE(choose(headset));
    EXPECT_EQ(take_shown(other), (Lines{"02 01 00", "02 00 00"}));
    let_ready();
    EXPECT_EQ(take_shown(headset), reports({row().in_use, row().unmuted}));
    control_->mute("", "1");
    EXPECT_EQ(take_shown(headset), reports({row().muted}));
    EXPECT_EQ(take_shown(other), Lines());

    EXPECT_TRUE(choose(other));
    EXPECT_EQ(take_shown(headset), reports({row().unmuted, row().idle}));
    let_ready();
    EXPECT_EQ(take_shown(other), (Lines{"02 01 00", "02 05 00"}));
}

TEST_P(CallStory, an_audio_device_without_a_headset_leaves_the_former_one_dark) {
    const int headset = plug_active(row().model);
    control_->connectCall("", "1");
    take_shown(headset);
    EXPECT_FALSE(control_->setAudioDevice("the speakers", "Speakers", ""));
    EXPECT_EQ(take_shown(headset), reports({row().unmuted, row().idle}));
    control_->mute("", "1");
    EXPECT_EQ(take_shown(headset), Lines());
}

TEST_P(CallStory, a_headset_that_shows_up_within_the_retry_window_becomes_active) {
    const int headset = plug(row().model);
    unplug(headset);
    control_->connectCall("", "1");
    listener_->clear();
    EXPECT_FALSE(choose(headset));
    EXPECT_FALSE(choose(headset)) << "the retry thread has it";
    EXPECT_TRUE(virtual_clock().wait_for_sleepers(1, patience));
    replug(headset);
    take_shown(headset);
    virtual_clock().advance(std::chrono::milliseconds(100));
    EXPECT_TRUE(logger_->wait_for(line("plugin_control::device_mgr::setFirstAudioDevice",
                                       "just matched, go post headsetReady and inventory.")));
    let_ready();
    EXPECT_EQ(take_shown(headset), reports({row().in_use, row().unmuted}));
    EXPECT_EQ(listener_->calls(), Lines{notification("onActiveDeviceNotify", headset, row().vendor)});
}

TEST_P(CallStory, a_headset_that_expects_these_reports_gets_no_other) {
    const int headset = plug_active(row().model);
    for (const std::string& report : reports({row().rest, row().in_use, row().muted})) {
        Report bytes;
        for (std::size_t digit = 0; digit < report.size(); digit += 3) {
            bytes.push_back(static_cast<std::uint8_t>(std::stoi(report.substr(digit, 2), nullptr, 16)));
        }
        ASSERT_EQ(orvex_virtual_expect(headset, bytes.data(), bytes.size()), 0);
    }
    control_->incomingCall("", "1", true);
    control_->connectCall("", "1");
    control_->mute("", "1");
    EXPECT_EQ(orvex_virtual_verify(headset, patience_ms), 0) << orvex_virtual_error();
}

// ---- headsets that show nothing

class DarkStory : public StoryHost, public ::testing::WithParamInterface<DarkHeadset> {};

INSTANTIATE_TEST_SUITE_P(Models, DarkStory, ::testing::ValuesIn(dark_headsets), row_name<DarkHeadset>);

TEST_P(DarkStory, a_headset_without_a_driver_is_told_to_the_host_and_shows_nothing) {
    const int headset = plug_active(GetParam().model);
    control_->incomingCall("", "1", true);
    control_->connectCall("", "1");
    control_->mute("", "1");
    control_->endCall("", "1");
    EXPECT_EQ(orvex_virtual_output_count(headset), 0);
    EXPECT_EQ(listener_->calls().at(1), notification("onActiveDeviceNotify", headset, GetParam().vendor));
}

TEST_P(DarkStory, a_headset_without_a_driver_has_no_keys_for_the_host) {
    const int headset = plug_active(GetParam().model);
    control_->connectCall("", "1");
    listener_->clear();
    if (!GetParam().has_keys) {
        EXPECT_EQ(orvex_virtual_press(headset, 0x0B, phone_mute_key), -1);
        return;
    }
    const std::string unsupported = line("headset_plugin::device::process_read", "unsupported");
    const std::size_t before = logger_->count(unsupported);
    EXPECT_EQ(orvex_virtual_press(headset, 0x0B, phone_mute_key), 0);
    EXPECT_TRUE(logger_->wait_for_count(unsupported, before + 2));
    EXPECT_EQ(listener_->calls(), Lines());
}

// ---- two headsets of one model

class PairStory : public StoryHost {};

TEST_F(PairStory, keys_count_on_the_active_one_of_two_alone) {
    const int first = plug("jabra-link-380c", "FIRST");
    const int second = plug("jabra-link-380c", "SECOND");
    activate(second);
    control_->connectCall("", "1");
    listener_->clear();
    EXPECT_EQ(orvex_virtual_press(first, 0x0B, phone_mute_key), 0);
    EXPECT_TRUE(logger_->wait_for_count(
        line("headset_plugin::device::handle_readback", "ignore none active headset button action"), 2));
    EXPECT_EQ(listener_->calls(), Lines());
    press(second, phone_mute_key);
    EXPECT_EQ(listener_->calls(), Lines{"onMuteCall(" + host_id(second) + ", 1, true)"});
}

TEST_F(PairStory, the_other_headset_that_goes_away_changes_nothing_for_the_active_one) {
    const int first = plug("jabra-link-380c", "FIRST");
    const int second = plug("sennheiser-sc-660", "SECOND");
    activate(second);
    control_->connectCall("", "1");
    take_shown(second);
    unplug(first);
    EXPECT_EQ(take_shown(second), Lines());
    control_->mute("", "1");
    EXPECT_EQ(take_shown(second), Lines{"09 03"});
}

TEST_F(PairStory, the_active_headset_that_goes_away_is_not_replaced_until_the_host_chooses) {
    const int first = plug("jabra-link-380c", "FIRST");
    const int second = plug_active("sennheiser-sc-660");
    control_->connectCall("", "1");
    take_shown(first);
    unplug(second);
    control_->mute("", "1");
    EXPECT_EQ(take_shown(first), Lines());
    activate(first);
    EXPECT_EQ(take_shown(first), (Lines{"02 01 00", "02 05 00"}));
}

}  // namespace
