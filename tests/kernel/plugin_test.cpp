// The product library with headsets of a real kernel, from the host's first event to the bytes that reach the
// headset.

#include <filesystem>
#include <hidapi/hidapi.h>
#include <unistd.h>

#include "tests/kernel/plugin_on_kernel.h"
#include "tests/kernel/usb_headset.h"

namespace {

using namespace test_support;

TEST_F(PluginOnKernel, finds_a_headset_that_is_plugged_in_before_it_starts) {
    const int headset = plug_headset("jabra-link-380c", "SERIAL");
    start();
    wait_until_listed("SERIAL");
    activate("SERIAL");
    EXPECT_EQ(take_shown(headset, reports_until_ready), Reports(5, at_rest));
}

TEST_F(PluginOnKernel, finds_a_headset_that_is_plugged_in_later) {
    start();
    plug_active();
}

TEST_F(PluginOnKernel, finds_the_headset_of_an_audio_device_that_shows_up_first) {
    start();
    EXPECT_FALSE(control_->setAudioDevice(host_id("EARLY"), "", ""));
    const int headset = plug_headset("jabra-link-380c", "EARLY");
    EXPECT_TRUE(listener_->wait_for(notification("onActiveDeviceNotify", "EARLY")));
    EXPECT_EQ(take_shown(headset, reports_until_ready), Reports(5, at_rest));
}

TEST_F(PluginOnKernel, shows_a_call_that_rings_connects_is_muted_and_ends) {
    start();
    const int headset = plug_active();
    control_->incomingCall("", "1", true);
    EXPECT_EQ(take_shown(headset, 1), Reports{at_rest}) << "the standard dialect does not ring";
    control_->connectCall("", "1");
    EXPECT_EQ(take_shown(headset, 1), Reports{in_use});
    control_->mute("", "1");
    EXPECT_EQ(take_shown(headset, 1), Reports{in_use_muted});
    control_->unmute("", "1");
    EXPECT_EQ(take_shown(headset, 1), Reports{in_use});
    control_->endCall("", "1");
    EXPECT_EQ(take_shown(headset, 3), (Reports{in_use, at_rest, at_rest}));
}

TEST_F(PluginOnKernel, writes_the_report_of_each_indicator_to_a_headset_that_has_one_for_each) {
    start();
    const int headset = plug_active_poly();
    control_->connectCall("", "1");
    EXPECT_EQ(orvex_virtual_wait_indicator(headset, led_page, off_hook_led, 1, patience_ms), 1);
    EXPECT_EQ(outputs(headset).back(), (Report{0x17, 0x01}));
    control_->mute("", "1");
    EXPECT_EQ(orvex_virtual_wait_indicator(headset, led_page, mute_led, 1, patience_ms), 1);
    EXPECT_EQ(outputs(headset).back(), (Report{0x09, 0x01}));
}

TEST_F(PluginOnKernel, tells_the_host_of_the_mute_key_and_shows_what_it_makes_of_it) {
    start();
    const int headset = plug_active();
    control_->connectCall("", "1");
    take_shown(headset, 1);
    listener_->on_call([this](const std::string& call) {
        if (call.starts_with("onMuteCall")) {
            control_->mute("", "1");
        } else if (call.starts_with("onUnmuteCall")) {
            control_->unmute("", "1");
        }
    });
    EXPECT_EQ(orvex_virtual_press(headset, telephony_page, phone_mute), 0);
    EXPECT_TRUE(listener_->wait_for("onMuteCall(usb-SERIAL-00, 1, true)"));
    EXPECT_EQ(take_shown(headset, 2), (Reports{in_use_muted, in_use_muted})) << "the release shows it again";
    EXPECT_EQ(orvex_virtual_press(headset, telephony_page, phone_mute), 0);
    EXPECT_TRUE(listener_->wait_for("onUnmuteCall(usb-SERIAL-00, 1, false)"));
    EXPECT_EQ(take_shown(headset, 2), (Reports{in_use, in_use}));
}

TEST_F(PluginOnKernel, does_not_take_reports_of_other_collections_of_the_node_for_keys) {
    start();
    const int headset = plug_active_poly();
    control_->connectCall("", "1");
    EXPECT_EQ(orvex_virtual_wait_indicator(headset, led_page, off_hook_led, 1, patience_ms), 1);
    logger_->clear();
    constexpr int presses = 20;
    for (int press = 0; press < presses; ++press) {
        EXPECT_EQ(orvex_virtual_press(headset, consumer_page, volume_increment), 0);
    }
    EXPECT_EQ(orvex_virtual_press(headset, telephony_page, phone_mute), 0);
    const std::string done = "3rdPartyHeadsetPlugin: headset_plugin::device::process_read: exit\n";
    EXPECT_TRUE(logger_->wait_for_count(done, 2));
    EXPECT_EQ(logger_->count(done), 2U) << "press and release of the mute key, and nothing before them";
}

TEST_F(PluginOnKernel, tells_of_a_headset_that_is_unplugged_in_a_call_and_shows_the_call_when_it_is_back) {
    start();
    const int headset = plug_active();
    control_->connectCall("", "1");
    control_->mute("", "1");
    take_shown(headset, 2);
    unplug_headset(headset);
    EXPECT_TRUE(listener_->wait_for(notification("onDeviceRemovedNotify", "SERIAL")));
    replug_active(headset);
    EXPECT_EQ(take_shown(headset, 4), (Reports{at_rest, at_rest, in_use, in_use_muted}));
}

TEST_F(PluginOnKernel, shows_a_call_on_a_telephony_node_that_comes_after_the_headset_is_active) {
    start();
    plug_device(volume_keys_descriptor(),
                {.product_id = 0x24C9, .product = "Jabra Link 380c", .serial = "SERIAL"});
    wait_until_listed("SERIAL");
    activate("SERIAL");
    control_->connectCall("", "1");
    const int headset = plug_headset("jabra-link-380c", "SERIAL");
    EXPECT_EQ(take_shown(headset, 3), Reports(3, in_use)) << "once when it is opened, then state and mute";
}

TEST_F(PluginOnKernel, survives_a_headset_that_is_unplugged_in_a_write) {
    start();
    const int headset = plug_active();
    EXPECT_EQ(orvex_virtual_misbehave(headset, ORVEX_VIRTUAL_FAULT_UNPLUG_IN_WRITE), 0);
    control_->connectCall("", "1");
    EXPECT_TRUE(listener_->wait_for(notification("onDeviceRemovedNotify", "SERIAL")));
    replug_active(headset);
    EXPECT_EQ(take_shown(headset, 4), (Reports{at_rest, at_rest, in_use, in_use}));
}

TEST_F(PluginOnKernel, shows_calls_on_the_chosen_one_of_two_headsets_and_takes_its_keys_alone) {
    start();
    const int other = plug_active("OTHER");
    const int chosen = plug_active("CHOSEN");
    control_->connectCall("", "1");
    EXPECT_EQ(take_shown(chosen, 1), Reports{in_use});
    EXPECT_EQ(orvex_virtual_indicator(other, led_page, off_hook_led), 0);
    EXPECT_EQ(orvex_virtual_press(other, telephony_page, phone_mute), 0);
    EXPECT_EQ(orvex_virtual_press(chosen, telephony_page, phone_mute), 0);
    EXPECT_TRUE(listener_->wait_for("onMuteCall(usb-CHOSEN-00, 1, true)"));
    EXPECT_EQ(count_notifications("onMuteCall(usb-OTHER-00, 1, true)"), 0U);
}

TEST_F(PluginOnKernel, understands_text_in_other_letters_whatever_the_locale_of_the_host) {
    start();
    const int headset = plug_active("S\u00E9rie-\u4E2D");
    control_->connectCall("", "1");
    EXPECT_EQ(take_shown(headset, 1), Reports{in_use});
}

TEST_F(PluginOnKernel, starts_again_after_a_stop) {
    const int headset = plug_headset("jabra-link-380c", "SERIAL");
    for (int round = 0; round < 5; ++round) {
        start();
        wait_until_listed("SERIAL");
        activate("SERIAL");
        EXPECT_EQ(orvex_virtual_wait_outputs(headset, (round + 1) * reports_until_ready, patience_ms), 1);
        stop();
        logger_->clear();
        EXPECT_TRUE(wait_for_plugin_threads_to_end());
    }
}

// ---- without a udev daemon

using PluginWithoutUdev = PluginOnKernel;

TEST_F(PluginWithoutUdev, hears_of_headsets_from_the_kernel) {
    ASSERT_FALSE(std::filesystem::exists("/run/udev/control")) << "a udev daemon runs";
    start();
    const int headset = plug_active();
    control_->connectCall("", "1");
    EXPECT_EQ(take_shown(headset, 1), Reports{in_use});
    unplug_headset(headset);
    EXPECT_TRUE(listener_->wait_for(notification("onDeviceRemovedNotify", "SERIAL")));
    replug_active(headset);
    EXPECT_EQ(take_shown(headset, 4), (Reports{at_rest, at_rest, in_use, in_use}));
}

// ---- for an ordinary user

class PluginOfOrdinaryUser : public PluginOnKernel {
  protected:
    void SetUp() override { ASSERT_NE(getuid(), 0U) << "this is root"; }
};

TEST_F(PluginOfOrdinaryUser, is_refused_and_says_so_without_a_rule) {
    plug_headset();
    start();
    EXPECT_TRUE(logger_->wait_for(
        "3rdPartyHeadsetPlugin: plugin_control::device_mgr::enumerate_hid_device: failed open "
        "3rd device telephony page, remove it and skip . \n"));
    EXPECT_TRUE(
        eventually([&] { return !logger_->lines_with(": Permission denied. If this user").empty(); }));
    hid_device_info* const list = library_.find<decltype(hid_enumerate)>("hid_enumerate")(0x0B0E, 0);
    ASSERT_NE(list, nullptr);
    const std::string path = list->path;
    library_.find<decltype(hid_free_enumeration)>("hid_free_enumeration")(list);
    EXPECT_EQ(library_.find<decltype(hid_open_path)>("hid_open_path")(path.c_str()), nullptr);
    const std::wstring reason = library_.find<decltype(hid_error)>("hid_error")(nullptr);
    EXPECT_NE(reason.find(L"Permission denied"), std::wstring::npos);
}

using PluginOfOrdinaryUserWithRule = PluginOfOrdinaryUser;

TEST_F(PluginOfOrdinaryUserWithRule, works_with_a_headset_that_is_plugged_in_later) {
    start();
    const int headset = plug_active();
    control_->connectCall("", "1");
    EXPECT_EQ(take_shown(headset, 1), Reports{in_use});
}

}  // namespace
