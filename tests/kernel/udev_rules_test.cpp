// The udev rules that are installed, at work on devices without a USB device behind them.

#include <regex>

#include "tests/kernel/headset_tool.h"

namespace {

using namespace test_support;

class UdevRules : public HeadsetTool {
  protected:
    void SetUp() override { ASSERT_NE(getuid(), 0U) << "this is root"; }

    static bool may_use(const std::string& node) { return access(node.c_str(), R_OK | W_OK) == 0; }

    /// Plugs a headset of a vendor. \return its node
    std::string plug_of(std::uint16_t vendor_id) const {
        const std::string serial = "VENDOR" + std::to_string(vendor_id);
        return settled_node_of(
            plug_device(plain_descriptor(), {.vendor_id = vendor_id, .serial = serial.c_str()}));
    }
};

std::vector<std::uint16_t> vendors_of(const std::string& rules) {
    const std::regex vendor("KERNELS==\"0003:([0-9A-F]{4}):\\*\"");
    std::vector<std::uint16_t> vendors;
    for (std::sregex_iterator found(rules.begin(), rules.end(), vendor), end; found != end; ++found) {
        vendors.push_back(static_cast<std::uint16_t>(std::stoul((*found)[1], nullptr, 16)));
    }
    return vendors;
}

TEST_F(UdevRules, let_the_one_at_the_seat_open_the_devices_of_every_vendor_in_them) {
    const auto vendors = vendors_of(run_headset({"udev-rules"}).output);
    EXPECT_EQ(vendors.size(), 4U);
    for (const auto vendor : vendors) {
        const std::string node = plug_of(vendor);
        EXPECT_EQ(tags_of(node).count("uaccess"), 1U) << vendor;
        EXPECT_TRUE(may_use(node)) << vendor;
    }
}

TEST_F(UdevRules, leave_other_devices_alone) {
    constexpr std::uint16_t others[] = {0x046D, 0x1532};  // Logitech, Razer
    for (const auto vendor : others) {
        const std::string node = plug_of(vendor);
        EXPECT_EQ(tags_of(node).count("uaccess"), 0U) << vendor;
        EXPECT_FALSE(may_use(node)) << vendor;
    }
}

TEST_F(UdevRules, are_all_that_calls_need) {
    const std::string node = settled_node_of(plug_headset());
    const Diagnosis found;
    EXPECT_EQ(found.names(), Names{});
    EXPECT_TRUE(found.calls_work());
    EXPECT_EQ(found.headsets().at(0)["path"], node);
}

}  // namespace
