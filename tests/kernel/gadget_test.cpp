// A USB headset made of software, as the kernel shows it to every program.

#include <map>

#include "tests/kernel/system_hidapi.h"
#include "tests/kernel/usb_headset.h"

namespace {

using namespace test_support;

class UsbHeadset : public ::testing::Test {
  protected:
    /// Waits until both interfaces are there, which appear one after the other in any order.
    std::map<int, ListedDevice> wait_for_interfaces() const {
        std::map<int, ListedDevice> interfaces;
        EXPECT_TRUE(eventually([&] {
            for (const ListedDevice& listed : hidapi_.list(L"USB1")) {
                interfaces.emplace(listed.interface_number, listed);
            }
            return interfaces.size() == 2;
        }));
        return interfaces;
    }

    SystemHidapi hidapi_;
    UsbGadget headset_{usb_headset("USB1")};
};

TEST_F(UsbHeadset, appears_with_its_strings_and_a_node_for_each_interface) {
    auto interfaces = wait_for_interfaces();
    for (const auto& [number, listed] : interfaces) {
        EXPECT_EQ(listed.vendor_id, 0x0B0E);
        EXPECT_EQ(listed.product_id, 0x24C9);
        EXPECT_EQ(listed.manufacturer, L"GN Audio A/S");
        EXPECT_EQ(listed.product, L"Jabra Link 380c");
    }
    EXPECT_EQ(interfaces[consumer_interface].usage_page, consumer_page);
    EXPECT_EQ(interfaces[telephony_interface].usage_page, telephony_page);
    EXPECT_NE(interfaces[consumer_interface].path, interfaces[telephony_interface].path);
}

TEST_F(UsbHeadset, carries_reports_both_ways) {
    const OpenedDevice device(hidapi_, wait_for_interfaces()[telephony_interface].path);
    headset_.send(telephony_interface, {0x02, 0x08, 0x00});
    EXPECT_EQ(device.read(), (Report{0x02, 0x08, 0x00}));
    EXPECT_EQ(device.write({0x02, 0x01, 0x00}), 3);
    EXPECT_EQ(headset_.receive(telephony_interface), (Report{0x02, 0x01, 0x00}));
}

TEST_F(UsbHeadset, is_gone_when_it_is_unplugged_and_back_when_it_is_plugged_again) {
    wait_for_interfaces();
    headset_.unplug();
    EXPECT_TRUE(eventually([&] { return hidapi_.list(L"USB1").empty(); }));
    headset_.plug();
    wait_for_interfaces();
}

}  // namespace
