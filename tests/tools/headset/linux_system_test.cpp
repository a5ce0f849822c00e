// The machine as its files show it, on a made-up tree of them.
#include "tools/headset/linux_system.h"

#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace headset {
namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
  protected:
    Files() {
        std::string name = testing::TempDir() + "orvex-tree-XXXXXX";
        root_ = mkdtemp(name.data());
        system_.emplace(root_);
    }
    ~Files() override { fs::remove_all(root_); }

    void write(const std::string& path, const std::string& content) {
        fs::create_directories((root_ / path).parent_path());
        std::ofstream(root_ / path) << content;
    }
    void link(const std::string& path, const fs::path& target) {
        fs::create_directories((root_ / path).parent_path());
        fs::create_symlink(target, root_ / path);
    }
    /// A USB headset with the node /dev/hidraw3, and its HID interface beside its sound card.
    void add_headset() {
        write("dev/hidraw3", "");
        write(usb + "/idVendor", "0b0e\n");
        write(usb + "/1-1:1.0/sound/card1/id", "Headset");
        write(hid + "/report_descriptor", "");
        link("sys/class/hidraw/hidraw3/device", root_ / hid);
    }
    NodeState state() { return system_->node_state("/dev/hidraw3"); }

    const std::string usb = "sys/devices/pci/usb1/1-1";
    const std::string hid = usb + "/1-1:1.3/0003:0B0E:24C9.0001";
    fs::path root_;
    std::optional<LinuxSystem> system_;
};

TEST_F(Files, a_node_without_anything_else) {
    write("dev/hidraw3", "");
    const auto found = state();
    EXPECT_EQ(found.open_error, 0);
    EXPECT_TRUE(found.rules_ran);
    EXPECT_FALSE(found.has_sound);
    EXPECT_TRUE(found.mute_inputs.empty());
    EXPECT_TRUE(found.mute_leds.empty());
    EXPECT_TRUE(found.holders.empty());
}

TEST_F(Files, a_node_that_is_not_there) {
    EXPECT_EQ(state().open_error, ENOENT);
    EXPECT_FALSE(state().rules_ran);
}

TEST_F(Files, the_sound_card_of_the_same_usb_device) {
    add_headset();
    EXPECT_TRUE(state().has_sound);
    fs::remove_all(root_ / usb / "1-1:1.0/sound");
    EXPECT_FALSE(state().has_sound);
}

TEST_F(Files, the_mute_key_that_the_desktop_sees) {
    add_headset();
    // Bit 248, KEY_MICMUTE, is bit 56 of the fourth word from the right.
    write(hid + "/input/input5/capabilities/key", "100000000000000 0 0 0\n");
    write(hid + "/input/input5/event7/dev", "");
    write(hid + "/input/input5/id/vendor", "");
    write(hid + "/input/input6/capabilities/key", "1000000000000 0\n");
    write(hid + "/input/input6/event8/dev", "");
    EXPECT_EQ(state().mute_inputs, std::vector<std::string>{"/dev/input/event7"});
}

TEST_F(Files, keys_that_cannot_be_read_are_none) {
    add_headset();
    write(hid + "/input/input5/capabilities/key", "zz 0 0 0\n");
    write(hid + "/input/input5/event7/dev", "");
    write(hid + "/input/input6/event8/dev", "");
    EXPECT_TRUE(state().mute_inputs.empty());
}

TEST_F(Files, the_mute_led_and_what_switches_it) {
    add_headset();
    write(hid + "/input/input5/input5::mute/trigger", "none kbd-capslock [audio-mute] timer\n");
    write(hid + "/input/input5/input5::capslock/trigger", "[none]\n");
    write(hid + "/input/input6/input6::mute/trigger", "[none] audio-mute\n");
    write(hid + "/input/input7/input7::mute/brightness", "0\n");
    const auto leds = state().mute_leds;
    ASSERT_EQ(leds.size(), 3U);
    EXPECT_EQ(leds[0].name, "input5::mute");
    EXPECT_EQ(leds[0].trigger, "audio-mute");
    EXPECT_EQ(leds[1].trigger, "none");
    EXPECT_EQ(leds[2].trigger, "none");
}

TEST_F(Files, the_processes_that_have_the_node_open) {
    write("dev/hidraw3", "");
    write("proc/12/comm", "chat\n");
    link("proc/12/fd/0", "/dev/null");
    link("proc/12/fd/5", "/dev/hidraw3");
    write("proc/34/comm", "music\n");
    link("proc/34/fd/5", "/dev/hidraw31");
    link("proc/self/fd/5", "/dev/hidraw3");
    link("proc/" + std::to_string(getpid()) + "/fd/5", "/dev/hidraw3");
    const auto holders = state().holders;
    ASSERT_EQ(holders.size(), 1U);
    EXPECT_EQ(holders[0].name, "chat");
    EXPECT_EQ(holders[0].id, 12);
}

TEST_F(Files, the_rules_file_that_counts) {
    EXPECT_FALSE(system_->rules_file("70-x.rules"));
    write("usr/lib/udev/rules.d/70-x.rules", "installed");
    EXPECT_EQ(system_->rules_file("70-x.rules")->content, "installed");
    write("etc/udev/rules.d/70-x.rules", "own");
    const auto file = system_->rules_file("70-x.rules");
    EXPECT_EQ(file->content, "own");
    EXPECT_EQ(file->path, root_ / "etc/udev/rules.d/70-x.rules");
}

TEST_F(Files, a_rules_file_counts_from_its_arrival_and_not_from_its_making) {
    write("dev/hidraw3", "");
    write("lib/udev/rules.d/70-x.rules", "");
    const timeval long_ago[] = {{1, 0}, {1, 0}};
    ASSERT_EQ(utimes((root_ / "dev/hidraw3").c_str(), long_ago), 0);
    ASSERT_EQ(utimes((root_ / "lib/udev/rules.d/70-x.rules").c_str(), long_ago), 0);
    EXPECT_EQ(state().rules_ran, Time(std::chrono::seconds{1}));
    EXPECT_GT(system_->rules_file("70-x.rules")->installed, state().rules_ran);
}

TEST_F(Files, the_udev_daemon_shows_by_its_socket) {
    EXPECT_FALSE(system_->udev_daemon_runs());
    write("run/udev/control", "");
    EXPECT_TRUE(system_->udev_daemon_runs());
}

TEST_F(Files, only_nodes_have_a_report_descriptor) {
    write("dev/hidraw3", "");
    for (const char* path : {"/dev/null", "/dev/hidraw-none", "hidraw0", "/tmp/hidraw0", "", "/"})
        EXPECT_TRUE(system_->report_descriptor(path).empty()) << path;
}

TEST(ThisMachine, has_hidapi_and_libudev) {
    LinuxSystem system;
    EXPECT_EQ(system.hidapi_error(), "");
    EXPECT_EQ(system.udev_error(), "");
    EXPECT_EQ(system.runs_as_root(), geteuid() == 0);
}

}  // namespace
}  // namespace headset
