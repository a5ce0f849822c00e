// The udev rules that are installed, at work on USB devices with an audio interface and without.

#include <fcntl.h>
#include <memory>

#include "platform/common/file_descriptor.h"
#include "tests/kernel/headset_tool.h"
#include "tests/kernel/ordinary_user.h"
#include "tests/kernel/udev_rules.h"
#include "tests/kernel/usb_headset.h"

namespace {

using namespace test_support;

/// A keyboard with its modifier keys alone.
Report keyboard_descriptor() {
    using namespace platform::virtual_headsets;
    constexpr std::uint16_t generic_desktop_page = 0x01;
    constexpr std::uint16_t keyboard_page = 0x07;
    // clang-format off
    return descriptor({
        usage_page(generic_desktop_page),
        usage(0x06),  // Keyboard
        collection(application),
            usage_page(keyboard_page),
            usage_minimum(0xE0),  // Left Control
            usage_maximum(0xE7),  // Right GUI
            logical_minimum(0),
            logical_maximum(1),
            report_size(1),
            report_count(8),
            input(data | variable),
        end_collection(),
    });
    // clang-format on
}

class UdevRulesOnUsb : public testing::Test {
  protected:
    /// A USB device of a vendor with these HID interfaces.
    static UsbGadgetDescription device_of(std::int32_t vendor_id, std::vector<Report> interfaces,
                                          bool has_sound) {
        const std::string serial = "RULES" + std::to_string(vendor_id) + (has_sound ? "S" : "");
        return {.vendor_id = static_cast<std::uint16_t>(vendor_id),
                .product_id = 1,
                .manufacturer = "Vendor",
                .product = "Device",
                .serial = serial,
                .interfaces = std::move(interfaces),
                .has_sound = has_sound};
    }

    static UsbGadgetDescription headset_of(std::int32_t vendor_id) {
        return device_of(vendor_id, {volume_keys_descriptor(), plain_descriptor()}, true);
    }

    std::vector<std::string> nodes_of(const UsbGadgetDescription& description) const {
        const std::wstring serial(description.serial.begin(), description.serial.end());
        std::vector<std::string> nodes;
        for (const auto& [number, node] : wait_for_nodes(hidapi_, serial, description.interfaces.size()))
            nodes.push_back(node);
        return nodes;
    }

    static bool is_tagged(const std::string& node) { return tags_of(node).contains("uaccess"); }

    static bool opens_for_user(const std::string& node) {
        const OrdinaryUser user;
        return platform::common::FileDescriptor(open(node.c_str(), O_RDWR | O_CLOEXEC)).get() >= 0;
    }

    /// Plugs a device and sees whether all its nodes are open or all closed.
    void expect_access(const UsbGadgetDescription& description, bool is_open) const {
        const UsbGadget device(description);
        const auto nodes = nodes_of(description);
        EXPECT_EQ(nodes.size(), description.interfaces.size());
        for (const auto& node : nodes) {
            EXPECT_EQ(is_tagged(node), is_open) << description.serial << ", " << node;
            EXPECT_EQ(opens_for_user(node), is_open) << description.serial << ", " << node;
        }
    }

    const SystemHidapi hidapi_;
};

constexpr std::int32_t hp = 0x03F0;
constexpr std::int32_t creative = 0x041E;
constexpr std::int32_t microsoft = 0x045E;
constexpr std::int32_t logitech = 0x046D;
constexpr std::int32_t sony = 0x054C;
constexpr std::int32_t bose = 0x05A7;
constexpr std::int32_t jabra = 0x0B0E;
constexpr std::int32_t c_media = 0x0D8C;
constexpr std::int32_t razer = 0x1532;

TEST_F(UdevRulesOnUsb, open_headsets_of_every_vendor) {
    for (const auto vendor_id : {logitech, hp, razer})
        expect_access(headset_of(vendor_id), true);
}

TEST_F(UdevRulesOnUsb, leave_keyboards_closed) {
    for (const auto vendor_id : {hp, creative, microsoft, logitech, sony, bose, c_media, razer})
        expect_access(device_of(vendor_id, {keyboard_descriptor(), volume_keys_descriptor()}, false), false);
}

TEST_F(UdevRulesOnUsb, open_a_device_without_sound_of_a_headset_maker) {
    expect_access(device_of(jabra, {plain_descriptor()}, false), true);
}

TEST_F(UdevRulesOnUsb, leave_a_keyboard_with_sound_closed_where_a_rule_says_so) {
    const auto keyboard = device_of(razer, {keyboard_descriptor()}, true);
    expect_access(keyboard, true);
    const UdevRulesFile rules("/etc/udev/rules.d/71-keyboard.rules",
                              "SUBSYSTEM==\"hidraw\", KERNELS==\"0003:1532:0001.*\", TAG-=\"uaccess\"\n");
    expect_access(keyboard, false);
}

TEST_F(UdevRulesOnUsb, open_a_headset_that_was_there_before_the_package) {
    const auto description = headset_of(razer);
    std::unique_ptr<UsbGadget> headset;
    std::vector<std::string> nodes;
    {
        const UdevRulesFile no_rules(std::string("/etc/udev/rules.d/") + "70-orvex-headset.rules", "");
        headset = std::make_unique<UsbGadget>(description);
        nodes = nodes_of(description);
        for (const auto& node : nodes)
            EXPECT_FALSE(is_tagged(node)) << node;
    }
    const ProgramResult configured = run_program(ORVEX_POSTINST, {"configure", ""});
    EXPECT_EQ(configured.status, 0) << configured.errors;
    for (const auto& node : nodes)
        EXPECT_TRUE(eventually([&] { return opens_for_user(node); })) << node;
}

}  // namespace
