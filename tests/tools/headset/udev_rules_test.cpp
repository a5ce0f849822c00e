// The udev rules, and the file of them that is installed.
#include "tools/headset/udev_rules.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "device/vendor_names.h"
#include "drivers/driver_factory.h"

namespace headset {
namespace {

/// The lines that are no comments.
std::vector<std::string> rules_of(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> rules;
    for (std::string line; std::getline(stream, line);)
        if (!line.empty() && line.front() != '#')
            rules.push_back(line);
    return rules;
}

TEST(UdevRules, fit_the_kernels_name_of_the_device_and_let_the_seat_in) {
    EXPECT_EQ(udev_rule(0x047F), "SUBSYSTEM==\"hidraw\", KERNELS==\"0003:047F:*\", TAG+=\"uaccess\"");
}

TEST(UdevRules, import_the_interfaces_on_a_line_before_the_one_that_matches_them) {
    const std::vector<std::string> wanted = {
        "SUBSYSTEM==\"hidraw\", SUBSYSTEMS==\"usb\", ENV{ID_USB_INTERFACES}==\"\", IMPORT{builtin}=\"usb_id\"",
        "SUBSYSTEM==\"hidraw\", ENV{ID_USB_INTERFACES}==\"*:0101*\", TAG+=\"uaccess\""};
    const auto lines = rules_of(udev_rules());
    ASSERT_GE(lines.size(), wanted.size());
    EXPECT_EQ((std::vector<std::string>{lines.begin(), lines.begin() + 2}), wanted);
    EXPECT_EQ(sound_card_rules(), wanted[0] + "\n" + wanted[1]);
}

TEST(UdevRules, name_the_vendors_that_get_a_driver_and_make_no_keyboards) {
    constexpr std::int32_t logitech = 0x046D;
    std::vector<std::string> wanted;
    for (const auto& vendor : headset_plugin::vendor_names())
        if (headset_plugin::create_driver(static_cast<std::uint32_t>(vendor.vendor_id), 0) != nullptr &&
            vendor.vendor_id != logitech)
            wanted.push_back(udev_rule(vendor.vendor_id));
    const auto lines = rules_of(udev_rules());
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ((std::vector<std::string>{lines.begin() + 2, lines.end()}), wanted);
    EXPECT_EQ(wanted.size(), 4U);
}

TEST(UdevRules, open_a_device_by_its_vendor_or_by_its_sound) {
    struct Row {
        std::int32_t vendor_id;
        bool has_sound;
        bool is_open;
    };
    constexpr Row rows[] = {{0x0B0E, false, true},  {0x0B0E, true, true},   {0x046D, false, false},
                            {0x046D, true, true},   {0x03F0, false, false}, {0x03F0, true, true},
                            {0x1532, false, false}, {0x1532, true, true}};
    for (const auto& [vendor_id, has_sound, is_open] : rows)
        EXPECT_EQ(has_rule_for(udev_rules(), vendor_id, has_sound), is_open) << vendor_id << has_sound;
    EXPECT_FALSE(has_rule_for("# " + udev_rule(0x0B0E), 0x0B0E, false));
    EXPECT_TRUE(has_rule_for(udev_rule(0x1532), 0x1532, true));
    EXPECT_FALSE(has_rule_for(udev_rule(0x1532), 0x0B0E, true));
}

TEST(UdevRules, the_file_that_is_installed_holds_them) {
    std::ifstream file(std::string(HEADSET_RULES_FOLDER) + "/" + rules_file_name);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), udev_rules());
}

TEST(UdevRules, the_file_comes_before_the_one_that_acts_on_them) {
    EXPECT_LT(std::string(rules_file_name), "73-seat-late.rules");
}

}  // namespace
}  // namespace headset
