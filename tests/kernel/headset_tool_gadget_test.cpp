// The tool with a headset on the USB, which has several nodes and may be a sound card.

#include <csignal>
#include <filesystem>

#include "tests/kernel/headset_tool.h"
#include "tests/kernel/ordinary_user.h"
#include "tests/kernel/plugin_on_kernel.h"
#include "tests/kernel/running_program.h"
#include "tests/kernel/udev_rules.h"
#include "tests/kernel/usb_headset.h"

namespace {

using namespace test_support;

class HeadsetToolOnUsb : public testing::Test {
  protected:
    std::map<int, std::string> wait_for_nodes(const std::wstring& serial, std::size_t count = 2) const {
        return test_support::wait_for_nodes(hidapi_, serial, count);
    }

    /// Waits until the USB device of a node is a sound card as well.
    static void wait_for_sound(const std::string& node) {
        namespace fs = std::filesystem;
        const fs::path hid = fs::canonical("/sys/class/hidraw" / fs::path(node).filename() / "device");
        EXPECT_TRUE(eventually([&] {
            const fs::directory_iterator interfaces(hid.parent_path().parent_path());
            return std::any_of(begin(interfaces), end(interfaces),
                               [](const fs::path& interface) { return fs::exists(interface / "sound"); });
        })) << hid;
    }

    const SystemHidapi hidapi_;
};

TEST_F(HeadsetToolOnUsb, lists_what_the_device_states_on_every_node) {
    const UsbGadget headset(usb_headset("TOOL1"));
    const auto nodes = wait_for_nodes(L"TOOL1");
    const ProgramResult result = run_headset({"list", "--json"});
    EXPECT_EQ(result.status, 0) << result.errors;
    std::map<std::string, Json> listed;
    for (const auto& entry : json_lines(result.output)) {
        EXPECT_EQ(entry["manufacturer"], "GN Audio A/S");
        EXPECT_EQ(entry["product"], "Jabra Link 380c");
        EXPECT_EQ(entry["serial"], "TOOL1");
        listed[entry["path"]] = entry;
    }
    EXPECT_EQ(listed.size(), 4U);
    EXPECT_EQ(listed[nodes.at(consumer_interface) + ":1"]["name"], "Consumer Control");
    EXPECT_EQ(listed[nodes.at(telephony_interface) + ":1"]["name"], "Headset");
}

TEST_F(HeadsetToolOnUsb, takes_several_nodes_for_one_headset) {
    const UsbGadget headset(usb_headset("TOOL2"));
    const auto nodes = wait_for_nodes(L"TOOL2");
    const Diagnosis found;
    EXPECT_EQ(found.names(), Names{"root"});
    ASSERT_EQ(found.headsets().size(), 1U);
    EXPECT_EQ(found.headsets()[0]["path"], nodes.at(telephony_interface));
    EXPECT_EQ(found.headsets()[0]["name"], "Jabra Link 380c");
    EXPECT_EQ(found.headsets()[0]["works"], true);
}

TEST_F(HeadsetToolOnUsb, finds_that_a_sound_card_with_keys_has_no_telephony) {
    auto description = usb_headset("TOOL3");
    description.interfaces = {volume_keys_descriptor()};
    description.has_sound = true;
    const UsbGadget headset(description);
    const std::string node = wait_for_nodes(L"TOOL3", 1).at(consumer_interface);
    wait_for_sound(node);
    const Diagnosis found;
    EXPECT_EQ(found.names(), (Names{"root", "telephony"}));
    EXPECT_FALSE(found.calls_work());
    EXPECT_EQ(found.headsets().at(0)["path"], node);
}

TEST_F(HeadsetToolOnUsb, finds_nothing_wrong_with_a_sound_card_that_has_telephony_on_another_node) {
    auto description = usb_headset("TOOL4");
    description.has_sound = true;
    const UsbGadget headset(description);
    wait_for_sound(wait_for_nodes(L"TOOL4").at(telephony_interface));
    const Diagnosis found;
    EXPECT_EQ(found.names(), Names{"root"});
    EXPECT_EQ(found.headsets().size(), 1U);
}

TEST_F(HeadsetToolOnUsb, monitors_all_nodes_of_a_serial_number_until_it_is_unplugged) {
    UsbGadget headset(usb_headset("TOOL5"));
    wait_for_nodes(L"TOOL5");
    RunningProgram monitor(ORVEX_HEADSET, {"monitor", "TOOL5"});
    EXPECT_TRUE(monitor.says("Reports of Jabra Link 380c, until Ctrl-C:\n"));
    EXPECT_TRUE(monitor.says("\n\n")) << "the end of its heading";
    headset.send(consumer_interface, {0x01});
    EXPECT_TRUE(monitor.says("  in   00 01  Consumer Control (0C:01): Volume Increment (0C:E9)\n"));
    headset.send(telephony_interface, {0x02, 0x08, 0x00});
    EXPECT_TRUE(monitor.says("  in   02 08 00  Headset (0B:05): Phone Mute (0B:2F)\n"));
    headset.unplug();
    EXPECT_TRUE(monitor.says("headset: the headset is gone: "));
    EXPECT_EQ(monitor.wait_for_end(), 1);
}

// ---- for an ordinary user

class UsbHeadsetOfOrdinaryUser : public PluginOnKernel {
  protected:
    const SystemHidapi hidapi_;
};

TEST_F(UsbHeadsetOfOrdinaryUser, is_refused_without_the_rules) {
    const UdevRulesFile no_rules("/etc/udev/rules.d/70-orvex-headset.rules", "");
    const UsbGadget headset(usb_headset("USER1"));
    wait_for_nodes(hidapi_, L"USER1", 2);
    EXPECT_EQ(diagnose_as_user().names(), Names{"permission"});
    const OrdinaryUser user;
    start();
    EXPECT_TRUE(logger_->wait_for(
        "3rdPartyHeadsetPlugin: plugin_control::device_mgr::enumerate_hid_device: failed open "
        "3rd device telephony page, remove it and skip . \n"));
}

TEST_F(UsbHeadsetOfOrdinaryUser, works_with_the_rules) {
    UsbGadget headset(usb_headset("USER2"));
    for (const auto& [number, node] : wait_for_nodes(hidapi_, L"USER2", 2)) {
        EXPECT_EQ(tags_of(node).count("uaccess"), 1U) << node;
    }
    EXPECT_EQ(diagnose_as_user().names(), Names{});
    const OrdinaryUser user;
    start();
    wait_until_listed("USER2");
    wait_until_open();
    activate("USER2");
    for (int report = 0; report < reports_until_ready; ++report) {
        EXPECT_EQ(headset.receive(telephony_interface), at_rest);
    }
    control_->connectCall("", "1");
    EXPECT_EQ(headset.receive(telephony_interface), in_use);
}

}  // namespace
