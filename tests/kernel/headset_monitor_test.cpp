// What `headset monitor` shows of a headset on a kernel, and how it ends.

#include <csignal>

#include "tests/kernel/headset_tool.h"
#include "tests/kernel/running_program.h"
#include "tests/kernel/wake_ups.h"

namespace {

using namespace test_support;

class HeadsetMonitor : public HeadsetTool {
  protected:
    static void press(int headset, std::uint16_t page, std::uint16_t usage) {
        EXPECT_EQ(orvex_virtual_press(headset, page, usage), 0) << orvex_virtual_error();
    }
};

TEST_F(HeadsetMonitor, shows_the_keys_of_all_collections_by_name_until_ctrl_c) {
    const int headset = plug_headset("poly-blackwire-3220");
    const std::string node = node_of(headset);
    RunningProgram monitor(ORVEX_HEADSET, {"monitor"});
    EXPECT_TRUE(monitor.says("Reports of Plantronics Blackwire 3220 Series, until Ctrl-C:\n"));
    EXPECT_TRUE(monitor.says("  " + node + ":2  Headset (0B:05)\n"));
    for (int round = 0; round < 3; ++round) {
        press(headset, telephony_page, phone_mute);
        EXPECT_TRUE(monitor.says("  in   08 01  Headset (0B:05): Phone Mute (0B:2F)\n"));
        EXPECT_TRUE(monitor.says("  in   08 00  Headset (0B:05): nothing is set\n"));
        press(headset, consumer_page, volume_increment);
        EXPECT_TRUE(monitor.says("  in   01 01  Consumer Control (0C:01): Volume Increment (0C:E9)\n"));
        EXPECT_TRUE(monitor.says("  in   01 00  Consumer Control (0C:01): nothing is set\n"));
    }
    monitor.send_signal(SIGINT);
    EXPECT_EQ(monitor.wait_for_end(), 0);
}

TEST_F(HeadsetMonitor, of_one_collection_shows_no_keys_of_another) {
    const int headset = plug_headset("poly-blackwire-3220");
    RunningProgram monitor(ORVEX_HEADSET, {"monitor", "--json", node_of(headset) + ":2", "--set", "08:17"});
    EXPECT_TRUE(monitor.says("\"direction\":\"Output\"")) << "it is open";
    press(headset, consumer_page, volume_increment);
    press(headset, telephony_page, phone_mute);
    EXPECT_TRUE(monitor.says("\"direction\":\"Input\",\"bytes\":\"08 01\","));
    monitor.send_signal(SIGTERM);
    EXPECT_EQ(monitor.wait_for_end(), 0);
}

TEST_F(HeadsetMonitor, ends_with_a_message_when_the_headset_is_unplugged) {
    const int headset = plug_headset("jabra-link-380c", "SERIAL");
    node_of(headset);
    RunningProgram monitor(ORVEX_HEADSET, {"monitor", "SERIAL"});
    EXPECT_TRUE(monitor.says("until Ctrl-C"));
    unplug_headset(headset);
    EXPECT_TRUE(monitor.says("headset: the headset is gone: "));
    EXPECT_EQ(monitor.wait_for_end(), 1);
}

TEST_F(HeadsetMonitor, lights_what_it_is_asked_to_until_it_ends) {
    const int headset = plug_headset();
    node_of(headset);
    RunningProgram monitor(ORVEX_HEADSET, {"monitor", "--set", "08:17", "08:09"});
    EXPECT_TRUE(monitor.says("  out  02 05 00  Headset (0B:05): "));
    for (const auto indicator : {off_hook_led, mute_led}) {
        EXPECT_EQ(orvex_virtual_wait_indicator(headset, led_page, indicator, 1, patience_ms), 1);
    }
    press(headset, telephony_page, phone_mute);
    EXPECT_TRUE(monitor.says("  in   02 08 00  Headset (0B:05): Phone Mute (0B:2F)\n"));
    monitor.send_signal(SIGINT);
    EXPECT_EQ(monitor.wait_for_end(), 0);
    for (const auto indicator : {off_hook_led, mute_led}) {
        EXPECT_EQ(orvex_virtual_wait_indicator(headset, led_page, indicator, 0, patience_ms), 1);
    }
}

TEST_F(HeadsetMonitor, sleeps_while_the_headset_is_silent) {
    node_of(plug_headset());
    RunningProgram monitor(ORVEX_HEADSET, {"monitor"});
    EXPECT_TRUE(monitor.says("\n\n")) << "the end of its heading";
    EXPECT_TRUE(sleeps(monitor.process(), std::chrono::seconds(3)));
    monitor.send_signal(SIGINT);
    EXPECT_EQ(monitor.wait_for_end(), 0);
}

TEST_F(HeadsetMonitor, sends_a_user_who_may_not_open_the_headset_to_the_doctor) {
    const std::string node = node_of(plug_headset());
    const ProgramResult result = run_headset_as_user("monitor");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "headset: " + node + ": Permission denied; \"headset doctor\" tells what to do\n");
}

}  // namespace
