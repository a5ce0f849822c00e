// What the doctor finds on described machines.
#include "tools/headset/doctor.h"

#include <cerrno>
#include <gtest/gtest.h>

#include "tests/tools/headset/described_system.h"
#include "tools/headset/udev_rules.h"

namespace headset {
namespace {

using Names = std::vector<std::string>;
using std::chrono::hours;

constexpr std::uint16_t own_vendor = ORVEX_CONFIGURED_VENDOR_ID;
constexpr Time boot{hours{1}};

class Doctor : public testing::Test {
  protected:
    Names names() {
        Names found;
        for (const auto& finding : diagnose(system_).findings)
            found.emplace_back(finding.name);
        return found;
    }

    Finding finding(const std::string& name) {
        for (auto& found : diagnose(system_).findings)
            if (found.name == name)
                return found;
        ADD_FAILURE() << "there is no finding " << name;
        return {};
    }

    bool calls_work() { return diagnose(system_).calls_work(); }

    void expect_only(const std::string& name, Severity severity) {
        EXPECT_EQ(names(), Names{name});
        EXPECT_EQ(finding(name).severity, severity);
        EXPECT_NE(finding(name).text, "");
        EXPECT_NE(finding(name).remedy, "");
        EXPECT_EQ(calls_work(), severity != Severity::error);
    }

    /// A headset that may not be opened, with rules that ran when it came, one hour after boot.
    void plug_refused(std::uint16_t vendor_id = 0x0B0E) {
        system_.plug({.vendor_id = vendor_id, .state = {.open_error = EACCES, .rules_ran = boot + hours{1}}});
    }

    DescribedSystem system_;
};

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST_F(Doctor, finds_nothing_where_all_is_well) {
    system_.plug({});
    EXPECT_EQ(to_text(diagnose(system_)),
              "Calls will work with Jabra Link 380c (/dev/hidraw0):\n"
              "  works     mute key, off-hook indicator, mute indicator\n"
              "  not used  answer and end key, reject key, hold key, redial key, ring indicator\n");
    auto json = to_json(diagnose(system_));
    EXPECT_EQ(to_line(json["headsets"][0]["functions"][0]),
              "{\"name\":\"mute key\",\"support\":\"works\",\"controls\":[\"Phone Mute (0B:2F)\"]}\n");
    json["headsets"][0].erase("functions");
    EXPECT_EQ(to_line(json),
              "{\"calls_work\":true,\"headsets\":[{\"path\":\"/dev/hidraw0\",\"name\":\"Jabra Link "
              "380c\",\"works\":true}],\"findings\":[]}\n");
}

TEST_F(Doctor, the_whole_text_of_a_finding) {
    system_.plug({.serial = {}});
    EXPECT_EQ(to_text(diagnose(system_)),
              "error, serial: Jabra Link 380c (/dev/hidraw0)\n"
              "  it has no serial number, so the plug-in does not use it\n"
              "  Remedy: look for new firmware, or use another headset\n"
              "\n"
              "Calls will not work.\n");
    EXPECT_EQ(to_line(to_json(diagnose(system_))["findings"]),
              "[{\"severity\":\"error\",\"name\":\"serial\",\"headset\":\"Jabra Link 380c "
              "(/dev/hidraw0)\",\"text\":\"it has no serial number, so the plug-in does not use it\","
              "\"remedy\":\"look for new firmware, or use another headset\"}]\n");
}

// ---- the machine

TEST_F(Doctor, no_headset) {
    expect_only("headset", Severity::error);
    EXPECT_TRUE(to_json(diagnose(system_))["findings"][0]["headset"].is_null());
}

TEST_F(Doctor, a_keyboard_is_no_headset) {
    using namespace platform::virtual_headsets;
    system_.plug({.descriptor = descriptor(
                      {usage_page(0x01), usage(0x06), collection(application), end_collection()})});
    expect_only("headset", Severity::error);
}

TEST_F(Doctor, no_hidapi) {
    system_.plug({});
    system_.hidapi_failure = "libhidapi-hidraw.so.0: not there";
    expect_only("hidapi", Severity::error);
    EXPECT_TRUE(contains(finding("hidapi").text, "libhidapi-hidraw.so.0: not there"));
    EXPECT_TRUE(contains(finding("hidapi").remedy, "libhidapi-hidraw0"));
}

TEST_F(Doctor, no_libudev) {
    system_.plug({});
    system_.udev_failure = "libudev.so.1: not there";
    expect_only("udev", Severity::warning);
    EXPECT_TRUE(contains(finding("udev").remedy, "libudev1"));
}

TEST_F(Doctor, no_udev_daemon) {
    system_.plug({});
    system_.has_udev_daemon = false;
    expect_only("udev daemon", Severity::warning);
}

TEST_F(Doctor, root_may_do_more_than_others) {
    system_.plug({});
    system_.is_root = true;
    expect_only("root", Severity::note);
}

// ---- permission

TEST_F(Doctor, no_permission_without_rules) {
    plug_refused();
    expect_only("permission", Severity::error);
    EXPECT_TRUE(contains(finding("permission").text, "/dev/hidraw0: Permission denied"));
    EXPECT_TRUE(contains(finding("permission").remedy,
                         "headset udev-rules | sudo tee /etc/udev/rules.d/70-orvex-headset.rules"));
}

TEST_F(Doctor, no_permission_with_rules_of_other_vendors) {
    plug_refused();
    system_.rules = RulesFile{"/etc/x.rules", "# " + udev_rule(0x0B0E) + "\n" + udev_rule(0x047F), boot};
    EXPECT_TRUE(contains(finding("permission").remedy, "install the udev rules"));
}

TEST_F(Doctor, no_permission_for_a_device_that_the_rules_leave_closed) {
    system_.rules = RulesFile{"/etc/x.rules", udev_rules(), boot};
    plug_refused(0x1532);
    const auto remedy = finding("permission").remedy;
    EXPECT_TRUE(contains(
        remedy, "echo '" + udev_rule(0x1532) + "' | sudo tee /etc/udev/rules.d/70-orvex-headset-1532.rules"))
        << remedy;
}

TEST_F(Doctor, no_permission_for_a_sound_card_without_rules_and_with_them) {
    system_.plug({.vendor_id = 0x1532,
                  .state = {.open_error = EACCES, .rules_ran = boot + hours{1}, .has_sound = true}});
    EXPECT_TRUE(contains(finding("permission").remedy,
                         "headset udev-rules | sudo tee /etc/udev/rules.d/70-orvex-headset.rules"));
    system_.rules = RulesFile{"/etc/x.rules", udev_rules(), boot};
    EXPECT_TRUE(contains(finding("permission").remedy, "log in at the seat"));
}

TEST_F(Doctor, no_permission_because_the_rules_came_after_the_node) {
    plug_refused();
    system_.rules = RulesFile{"/etc/x.rules", udev_rules(), boot + hours{2}};
    EXPECT_EQ(finding("permission").remedy,
              "unplug the headset and plug it in again: /etc/x.rules was installed later");
}

TEST_F(Doctor, no_permission_although_the_rules_ran) {
    plug_refused();
    system_.rules = RulesFile{"/etc/x.rules", udev_rules(), boot};
    EXPECT_TRUE(contains(finding("permission").remedy, "log in at the seat"));
}

TEST_F(Doctor, no_permission_and_nothing_that_applies_rules) {
    plug_refused();
    system_.rules = RulesFile{"/etc/x.rules", udev_rules(), boot};
    system_.has_udev_daemon = false;
    EXPECT_TRUE(contains(finding("permission").remedy, "without udev rules"));
}

TEST_F(Doctor, what_a_container_withholds_needs_no_rules) {
    const std::pair<int, const char*> rows[] = {{EPERM, "device cgroup"},
                                                {ENOENT, "bind /dev/hidraw"},
                                                {EIO, "unplug the headset and plug it in again"}};
    for (const auto& [error, remedy] : rows) {
        DescribedSystem system;
        system.plug({.state = {.open_error = error}});
        const auto diagnosis = diagnose(system);
        ASSERT_EQ(diagnosis.findings.size(), 1U);
        EXPECT_TRUE(contains(diagnosis.findings[0].remedy, remedy)) << diagnosis.findings[0].remedy;
    }
}

// ---- the headset

TEST_F(Doctor, no_serial) {
    system_.plug({.serial = {}});
    expect_only("serial", Severity::error);
}

TEST_F(Doctor, no_telephony_collection) {
    system_.plug({.descriptor = model_descriptor("logitech-g535"), .state = {.has_sound = true}});
    expect_only("telephony", Severity::error);
}

TEST_F(Doctor, a_telephony_collection_that_the_plug_in_cannot_work_with) {
    using namespace platform::virtual_headsets;
    // More values than the plug-in keeps of one headset.
    system_.plug({.descriptor = descriptor({usage_page(0x0B), usage(0x05), collection(application),
                                            logical_minimum(0), logical_maximum(3), report_size(2),
                                            report_count(2000), usage_minimum(0x1000), usage_maximum(0x1FFF),
                                            output(variable), end_collection()})});
    expect_only("telephony", Severity::error);
    EXPECT_TRUE(contains(finding("telephony").text, "Internal error"));
}

TEST_F(Doctor, a_node_beside_the_one_with_the_telephony_collection_is_no_headset_of_its_own) {
    using namespace platform::virtual_headsets;
    const auto other =
        descriptor({usage_page(0xFF00), usage(0x01), collection(application), end_collection()});
    system_.plug({.state = {.has_sound = true}});
    system_.plug({.node = "/dev/hidraw1", .descriptor = other, .state = {.has_sound = true}});
    EXPECT_EQ(names(), Names{});
    system_.plug(
        {.node = "/dev/hidraw2", .descriptor = other, .serial = L"SN-2", .state = {.has_sound = true}});
    EXPECT_EQ(names(), Names{"telephony"});
    EXPECT_TRUE(calls_work());
}

TEST_F(Doctor, no_driver_for_the_vendor) {
    system_.plug({.vendor_id = 0x1532});
    expect_only("driver", Severity::error);
    EXPECT_TRUE(contains(finding("driver").text, "nothing works"));
    EXPECT_FALSE(contains(to_text(diagnose(system_)), "  works"));
}

TEST_F(Doctor, an_indicator_is_missing) {
    using namespace platform::virtual_headsets;
    system_.plug({.descriptor = descriptor(
                      {usage_page(0x0B), usage(0x05), collection(application), logical_minimum(0),
                       logical_maximum(1), report_size(1), report_count(1), usage(0x2F), input(variable),
                       report_count(7), input(constant), report_count(1), usage_page(0x08), usage(0x17),
                       output(variable), report_count(7), output(constant), end_collection()})});
    expect_only("indicators", Severity::error);
    EXPECT_TRUE(contains(finding("indicators").text, "cannot light: Mute (08:09)"));
}

TEST_F(Doctor, no_mute_key) {
    using namespace platform::virtual_headsets;
    system_.plug({.descriptor = descriptor(
                      {usage_page(0x0B), usage(0x05), collection(application), logical_minimum(0),
                       logical_maximum(1), report_size(1), report_count(2), usage_page(0x08), usage(0x17),
                       usage(0x09), output(variable), report_count(6), output(constant), end_collection()})});
    expect_only("mute key", Severity::warning);
}

TEST_F(Doctor, the_makers_own_headset) {
    system_.plug({.vendor_id = own_vendor});
    expect_only("own headset", Severity::error);
}

TEST_F(Doctor, a_refused_descriptor) {
    system_.plug({.descriptor = {0x05, 0x0B}, .state = {.has_sound = true}});
    expect_only("report descriptor", Severity::error);
    EXPECT_TRUE(contains(finding("report descriptor").text, "offset 0"));
}

TEST_F(Doctor, another_process_has_the_node_open) {
    system_.plug({.state = {.holders = {{"chat", 12}, {"\x1B[2J", 34}}}});
    expect_only("other program", Severity::warning);
    EXPECT_TRUE(contains(finding("other program").text, "chat (process 12), ?[2J (process 34);"));
}

TEST_F(Doctor, names_steer_no_terminal) {
    system_.plug({.product = L"\x1B[2J\x9B"
                             L"Evil\nname",
                  .serial = {},
                  .state = {.holders = {{"\xFF\n", 1}}}});
    const auto text = to_text(diagnose(system_));
    EXPECT_TRUE(contains(text, "error, serial: ?[2J?Evil?name (/dev/hidraw0)\n")) << text;
    EXPECT_TRUE(contains(text, "\xEF\xBF\xBD? (process 1)")) << text;
}

TEST_F(Doctor, the_desktop_has_the_mute_key_too) {
    system_.plug({.state = {.mute_inputs = {"/dev/input/event7"}}});
    expect_only("desktop mute key", Severity::warning);
    EXPECT_TRUE(contains(finding("desktop mute key").text, "/dev/input/event7"));
    EXPECT_TRUE(contains(finding("desktop mute key").remedy, "KERNELS==\"0003:0B0E:24C9.*\""));
}

TEST_F(Doctor, the_kernel_switches_the_mute_indicator_too) {
    system_.plug({.state = {.mute_leds = {{"input5::mute", "audio-mute"}, {"input6::mute", "none"}}}});
    expect_only("desktop mute indicator", Severity::warning);
    EXPECT_TRUE(contains(finding("desktop mute indicator").text, "input5::mute with its trigger audio-mute"));
    EXPECT_EQ(finding("desktop mute indicator").remedy,
              "echo none | sudo tee /sys/class/leds/input5::mute/trigger");
}

TEST_F(Doctor, an_led_that_nothing_switches_does_no_harm) {
    system_.plug({.state = {.mute_leds = {{"input5::mute", "none"}}}});
    EXPECT_EQ(names(), Names{});
}

TEST_F(Doctor, calls_work_with_one_headset_of_two) {
    system_.plug({.serial = {}});
    system_.plug({.node = "/dev/hidraw1"});
    EXPECT_TRUE(calls_work());
    const auto json = to_json(diagnose(system_));
    EXPECT_EQ(json["headsets"][0]["works"], false);
    EXPECT_EQ(json["headsets"][1]["works"], true);
    EXPECT_TRUE(
        contains(to_text(diagnose(system_)), "Calls will work with Jabra Link 380c (/dev/hidraw1):\n"));
}

}  // namespace
}  // namespace headset
