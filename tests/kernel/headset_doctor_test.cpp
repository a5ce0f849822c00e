// What `headset doctor` finds on a real kernel.

#include <fcntl.h>
#include <linux/input.h>
#include <poll.h>

#include "device/vendor_names.h"
#include "platform/common/file_descriptor.h"
#include "tests/kernel/headset_tool.h"
#include "tests/kernel/udev_rules.h"
#include "tests/kernel/usb_headset.h"

namespace {

using namespace test_support;

class HeadsetDoctor : public HeadsetTool {
  protected:
    /// Waits until the device without a serial number is there.
    void wait_for_nameless() const { hidapi_.wait_for_list(L""); }
};

/// The note that root gets.
constexpr const char* root = "root";

TEST_F(HeadsetDoctor, finds_no_headset) {
    const Diagnosis found;
    EXPECT_EQ(found.names(), (Names{root, "headset"}));
    EXPECT_FALSE(found.calls_work());
    EXPECT_TRUE(found.headsets().empty());
}

TEST_F(HeadsetDoctor, finds_nothing_wrong_with_a_headset_that_works) {
    const std::string node = node_of(plug_headset());
    const Diagnosis found;
    EXPECT_EQ(found.names(), Names{root});
    EXPECT_TRUE(found.calls_work());
    ASSERT_EQ(found.headsets().size(), 1U);
    const Json headset = found.headsets()[0];
    EXPECT_EQ(headset["path"], node);
    EXPECT_EQ(headset["name"], "Jabra Link 380c");
    EXPECT_EQ(headset["works"], true);
    EXPECT_EQ(headset["functions"][0]["support"], "works");
    const ProgramResult for_people = run_headset({"doctor"});
    EXPECT_EQ(for_people.status, 0);
    EXPECT_NE(for_people.output.find("\nCalls will work with Jabra Link 380c (" + node + "):\n  works "),
              std::string::npos)
        << for_people.output;
}

TEST_F(HeadsetDoctor, finds_that_a_headset_has_no_serial_number) {
    plug_device(plain_descriptor(), {.product = nullptr, .serial = nullptr});
    wait_for_nameless();
    const Diagnosis found;
    EXPECT_EQ(found.names(), (Names{root, "serial"}));
    EXPECT_FALSE(found.calls_work());
    EXPECT_EQ(found.headsets().at(0)["name"], "unnamed device");
}

TEST_F(HeadsetDoctor, takes_a_device_without_telephony_for_no_headset) {
    const int keyboard = plug_device(volume_keys_descriptor());
    node_of(keyboard);
    EXPECT_EQ(Diagnosis().names(), (Names{root, "headset"}));
}

TEST_F(HeadsetDoctor, names_the_indicator_that_is_missing) {
    const int headset = plug_device(plain_descriptor(off_hook_led, ring_led));
    node_of(headset);
    const Diagnosis without_mute;
    EXPECT_EQ(without_mute.names(), (Names{root, "indicators"}));
    EXPECT_TRUE(without_mute.text("indicators").ends_with("cannot light: Mute (08:09)"));
    EXPECT_FALSE(without_mute.calls_work());

    unplug_headset(headset);
    node_of(plug_device(plain_descriptor(mute_led, ring_led), {.serial = "PLAIN2"}));
    const Diagnosis without_off_hook;
    EXPECT_EQ(without_off_hook.names(), (Names{root, "indicators"}));
    EXPECT_TRUE(without_off_hook.text("indicators").ends_with("cannot light: Off-Hook (08:17)"));
    EXPECT_FALSE(without_off_hook.calls_work());
}

TEST_F(HeadsetDoctor, finds_that_there_is_no_driver_for_a_vendor) {
    node_of(plug_headset("razer-blackshark-v2"));
    const Diagnosis found;
    EXPECT_EQ(found.names(), (Names{root, "driver", "desktop mute key"}));
    EXPECT_FALSE(found.calls_work());
}

TEST_F(HeadsetDoctor, finds_that_the_client_serves_the_headset_itself) {
    node_of(plug_device(plain_descriptor(), {.vendor_id = headset_plugin::ORVEX_VENDOR_ID}));
    const Diagnosis found;
    EXPECT_FALSE(found.calls_work());
    EXPECT_EQ(found.names(), (Names{root, "own headset"}));
}

TEST_F(HeadsetDoctor, names_the_processes_that_have_the_headset_open) {
    const std::string node = node_of(plug_headset());
    {
        const OpenedDevice held(hidapi_, node);
        const Diagnosis found;
        EXPECT_EQ(found.names(), (Names{root, "other program"}));
        EXPECT_TRUE(found.calls_work());
        EXPECT_TRUE(found.text("other program")
                        .starts_with("other processes have it open: test_kernel (process " +
                                     std::to_string(getpid()) + ");"))
            << found.text("other program");
    }
    EXPECT_EQ(Diagnosis().names(), Names{root});
}

TEST_F(HeadsetDoctor, names_the_input_device_by_which_the_kernel_hands_on_the_mute_key) {
    const int headset = plug_headset("poly-blackwire-3220");
    node_of(headset);
    const Diagnosis found;
    EXPECT_EQ(found.names(), (Names{root, "desktop mute key"}));
    EXPECT_TRUE(found.calls_work());
    const std::string text = found.text("desktop mute key");
    const auto begin = text.find("/dev/input/");
    const std::string device = text.substr(begin, text.find(':', begin) - begin);
    const platform::common::FileDescriptor input(open(device.c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_GE(input.get(), 0) << device;
    EXPECT_EQ(orvex_virtual_press(headset, telephony_page, phone_mute), 0);
    input_event event{};
    while (event.type != EV_KEY) {
        pollfd source{input.get(), POLLIN, 0};
        ASSERT_EQ(poll(&source, 1, patience_ms), 1) << "the key does not come";
        ASSERT_EQ(read(input.get(), &event, sizeof event), static_cast<ssize_t>(sizeof event));
    }
    EXPECT_EQ(event.code, KEY_MICMUTE);
}

/// Does what a remedy says, by the machine's administrator.
void do_remedy(const std::string& command) {
    const std::string folder = std::filesystem::path(ORVEX_HEADSET).parent_path();
    const ProgramResult result =
        run_shell("sudo() { \"$@\"; }; PATH=" + folder + ":$PATH; set -e; " + command);
    EXPECT_EQ(result.status, 0) << command << '\n' << result.errors;
}

TEST_F(HeadsetDoctor, finds_what_switches_the_mute_indicator_beside_the_plugin) {
    const std::string node = node_of(plug_headset());
    const std::string name = std::filesystem::path(node).filename();
    const std::string triggers = "/sys/class/hidraw/" + name + "/device/input/*/*::mute/trigger";
    EXPECT_EQ(run_shell("echo kbd-capslock | tee " + triggers).status, 0);
    const Diagnosis found;
    EXPECT_EQ(found.names(), (Names{root, "desktop mute indicator"}));
    EXPECT_TRUE(found.text("desktop mute indicator").ends_with("::mute with its trigger kbd-capslock"));
    EXPECT_TRUE(found.calls_work());
    do_remedy(found.remedy("desktop mute indicator"));
    EXPECT_EQ(Diagnosis().names(), Names{root});
}

TEST_F(HeadsetDoctor, says_on_which_of_two_headsets_calls_will_work) {
    node_of(plug_headset("razer-blackshark-v2"));
    const std::string node = node_of(plug_headset());
    const ProgramResult result = run_headset({"doctor"});
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("\nCalls will work with Jabra Link 380c (" + node + "):\n  works "),
              std::string::npos)
        << result.output;
}

// ---- permission

constexpr const char* installed_rules = "/etc/udev/rules.d/70-orvex-headset.rules";

class HeadsetDoctorOfOrdinaryUser : public HeadsetDoctor {
  protected:
    /// Plugs an unplugged headset again. \return its node
    std::string replug(int headset) const {
        unplug_headset(headset);
        EXPECT_TRUE(eventually([&] { return hidapi_.list(wide_serial(headset)).empty(); }));
        EXPECT_EQ(orvex_virtual_replug(headset), 0) << orvex_virtual_error();
        return settled_node_of(headset);
    }

    static std::string file_of_packaging() { return run_headset({"udev-rules"}).output; }
};

TEST_F(HeadsetDoctorOfOrdinaryUser, leads_from_a_refusal_to_a_headset_that_works) {
    const int headset = plug_headset();
    const std::string node = settled_node_of(headset);
    const Diagnosis refused = diagnose_as_user();
    EXPECT_EQ(refused.names(), Names{"permission"});
    EXPECT_FALSE(refused.calls_work());
    EXPECT_EQ(refused.text("permission"), "this user cannot open " + node + ": Permission denied");
    const std::string remedy = refused.remedy("permission");
    const std::string beginning = "install the udev rules, unplug the headset and plug it in again: ";
    ASSERT_TRUE(remedy.starts_with(beginning)) << remedy;
    EXPECT_NE(remedy.find(installed_rules), std::string::npos) << remedy;
    const UdevRulesFile rules(installed_rules);

    do_remedy(remedy.substr(beginning.size()));
    const Diagnosis with_rules = diagnose_as_user();
    EXPECT_EQ(with_rules.names(), Names{"permission"});
    EXPECT_EQ(with_rules.remedy("permission"), std::string("unplug the headset and plug it in again: ") +
                                                   installed_rules + " was installed later");

    replug(headset);
    const Diagnosis cured = diagnose_as_user();
    EXPECT_EQ(cured.names(), Names{});
    EXPECT_TRUE(cured.calls_work());
}

TEST_F(HeadsetDoctorOfOrdinaryUser, is_content_when_the_package_came_after_the_headset) {
    settled_node_of(plug_headset());
    const UdevRulesFile rules(installed_rules, file_of_packaging());
    EXPECT_EQ(diagnose_as_user().names(), Names{"permission"});
    const ProgramResult configured = run_program(ORVEX_POSTINST, {"configure", ""});
    EXPECT_EQ(configured.status, 0) << configured.errors;
    EXPECT_TRUE(eventually([] { return diagnose_as_user().names().empty(); }));
}

TEST_F(HeadsetDoctorOfOrdinaryUser, leads_to_rules_for_a_vendor_that_has_no_name) {
    const int headset = plug_headset("razer-blackshark-v2");
    settled_node_of(headset);
    const std::string remedy = diagnose_as_user().remedy("permission");
    const UdevRulesFile rules("/etc/udev/rules.d/70-orvex-headset-1532.rules");
    do_remedy(remedy.substr(remedy.find("echo")));
    replug(headset);
    EXPECT_EQ(diagnose_as_user().names(), (Names{"driver", "desktop mute key"}));
}

TEST_F(HeadsetDoctorOfOrdinaryUser, says_that_the_rules_are_for_whoever_sits_at_the_machine) {
    const UdevRulesFile rules(installed_rules, file_of_packaging());
    const UdevRulesFile nobody_at_the_seat("/etc/udev/rules.d/73-seat.rules", "");
    settled_node_of(plug_headset());
    const Diagnosis found = diagnose_as_user();
    EXPECT_EQ(found.names(), Names{"permission"});
    EXPECT_TRUE(found.remedy("permission").starts_with("log in at the seat: ")) << found.remedy("permission");
}

TEST_F(HeadsetDoctorOfOrdinaryUser, does_not_show_processes_of_others) {
    const UdevRulesFile rules(installed_rules, file_of_packaging());
    const OpenedDevice held(hidapi_, settled_node_of(plug_headset()));
    EXPECT_EQ(diagnose_as_user().names(), Names{});
}

// ---- without a udev daemon

using HeadsetDoctorWithoutUdev = HeadsetDoctor;

TEST_F(HeadsetDoctorWithoutUdev, says_that_nothing_applies_rules) {
    ASSERT_FALSE(std::filesystem::exists("/run/udev/control")) << "a udev daemon runs";
    node_of(plug_headset());
    const Diagnosis found;
    EXPECT_EQ(found.names(), (Names{"udev daemon", root}));
    EXPECT_TRUE(found.calls_work());
    const Diagnosis of_user = diagnose_as_user();
    EXPECT_EQ(of_user.names(), (Names{"udev daemon", "permission"}));
    EXPECT_FALSE(of_user.calls_work());
    EXPECT_EQ(of_user.remedy("permission"),
              "give this user access to the node without udev rules: nothing applies them here");
}

}  // namespace
