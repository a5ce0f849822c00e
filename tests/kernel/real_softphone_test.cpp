// The softphone with a headset of the kernel that somebody else has plugged, as a person's headset is.

#include "tests/kernel/headset_tool.h"
#include "tests/kernel/running_program.h"
#include "tests/kernel/udev_rules.h"

namespace {

using namespace test_support;

using RealSoftphone = HeadsetTool;

TEST_F(RealSoftphone, lists_chooses_and_lights_a_headset_and_hears_its_mute_key) {
    const int headset = plug_headset("jabra-link-380c", "SERIAL");
    node_of(headset);
    RunningProgram phone(ORVEX_SOFTPHONE, {"--real", "--json"});
    phone.type("device");
    EXPECT_TRUE(phone.says(R"({"event":"device","headset":"jabra-link-380c","device_id":")"));
    EXPECT_TRUE(phone.says(R"("name":"Jabra Link 380c","serial":"SERIAL"})"));
    phone.type("device jabra-link-380c");
    phone.type("expect ready jabra-link-380c within 20000");
    EXPECT_TRUE(phone.says(R"({"event":"ready","headset":"jabra-link-380c",)"));
    EXPECT_TRUE(phone.says(R"({"event":"expect","ok":true,)"));

    constexpr int reports_until_ready = 5;
    EXPECT_EQ(orvex_virtual_wait_outputs(headset, reports_until_ready, patience_ms), 1);
    phone.type("connect 42");
    EXPECT_EQ(orvex_virtual_wait_indicator(headset, led_page, off_hook_led, 1, patience_ms), 1);
    EXPECT_EQ(orvex_virtual_press(headset, telephony_page, phone_mute), 0);
    EXPECT_TRUE(phone.says(R"({"event":"action","action":"muteCall",)"));
    EXPECT_EQ(orvex_virtual_wait_indicator(headset, led_page, mute_led, 1, patience_ms), 1)
        << "the phone does what it is asked for";
    phone.type("end 42");
    EXPECT_EQ(orvex_virtual_wait_indicator(headset, led_page, off_hook_led, 0, patience_ms), 1);

    unplug_headset(headset);
    EXPECT_TRUE(phone.says(R"({"event":"removed","headset":"jabra-link-380c",)"));
    phone.type("quit");
    EXPECT_EQ(phone.wait_for_end(), 0);
}

/// Sees `command` answered with the reason why there is no headset.
void expect_none(RunningProgram& phone, const std::string& reason) {
    for (const char* command : {"headsets", "device"}) {
        phone.type(command);
        EXPECT_TRUE(phone.says(
            "no headset is found; \"headset doctor\" tells what to do. The reason: " + reason + "\n"))
            << command;
    }
}

TEST_F(RealSoftphone, has_no_permission_without_rules_and_shows_the_call_as_soon_as_they_are_applied) {
    const int headset = plug_headset("jabra-link-380c", "SERIAL");
    plug_headset("razer-blackshark-v2",
                 "OTHER");  // whose change comes first or last, and is none of this one's
    settled_node_of(headset);
    RunningProgram phone("/bin/su", {"user", "-s", "/bin/sh", "-c", ORVEX_SOFTPHONE " --real"});
    phone.type("device");
    phone.type("device jabra-link-380c");
    EXPECT_TRUE(phone.says("refused    onActiveDeviceNotify("));
    phone.type("connect 42");
    phone.type("headsets");
    EXPECT_TRUE(phone.says("serial \"SERIAL\", no permission"));
    EXPECT_EQ(orvex_virtual_indicator(headset, led_page, off_hook_led), 0);

    const UdevRulesFile rules("/etc/udev/rules.d/70-orvex-headset.rules",
                              "SUBSYSTEM==\"hidraw\", KERNELS==\"0003:0B0E:*\", MODE=\"0666\"\n");
    EXPECT_EQ(run_shell("udevadm trigger --subsystem-match=hidraw --action=change").status, 0);
    EXPECT_EQ(orvex_virtual_wait_indicator(headset, led_page, off_hook_led, 1, patience_ms), 1);
    phone.type("headsets");
    EXPECT_TRUE(phone.says("serial \"SERIAL\", ready"));
    phone.type("quit");
    EXPECT_EQ(phone.wait_for_end(), 0);
}

TEST_F(RealSoftphone, says_why_there_is_no_headset) {
    RunningProgram phone(ORVEX_SOFTPHONE, {"--real"});
    expect_none(phone, "No HID devices found in the system.");
    plug_device(plain_descriptor(), {.product = "No serial", .serial = nullptr});
    hidapi_.wait_for_list(L"");
    expect_none(phone, "no HID device has both telephony and a serial number");
    phone.type("quit");
    EXPECT_EQ(phone.wait_for_end(), 0);
}

}  // namespace
