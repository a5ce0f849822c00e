// The udev rules, and the file of them that is installed.
#include "tools/headset/udev_rules.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

#include "device/vendor_names.h"

namespace headset {
namespace {

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (auto at = text.find(part); at != text.npos; at = text.find(part, at + part.size()))
        ++found;
    return found;
}

TEST(UdevRules, fit_the_kernels_name_of_the_device_and_let_the_seat_in) {
    EXPECT_EQ(udev_rule(0x047F), "SUBSYSTEM==\"hidraw\", KERNELS==\"0003:047F:*\", TAG+=\"uaccess\"");
}

TEST(UdevRules, every_vendor_has_one_under_its_name) {
    const auto rules = udev_rules();
    for (const auto& vendor : headset_plugin::vendor_names()) {
        EXPECT_EQ(count(rules, "\n" + udev_rule(vendor.vendor_id) + "\n"), 1U) << vendor.name;
        EXPECT_EQ(count(rules, "\n# " + std::string(vendor.name) + "\n"), 1U) << vendor.name;
    }
    EXPECT_EQ(count(rules, "SUBSYSTEM"), headset_plugin::vendor_names().size());
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
