#include <array>
#include <gtest/gtest.h>
#include <type_traits>

#include "base/headset_types.h"
#include "drivers/jabra_cc.h"
#include "drivers/plt_cc.h"
#include "drivers/stdhid_cc.h"
#include "tests/drivers/driver_fixture.h"
#include "tests/support/virtual_slots.h"

namespace headset_plugin::driver_test {
namespace {

/// A driver that leaves to its base what a driver may leave.
class PlainDriver final : public call_control_generic {
  public:
    using call_control_generic::call_control_generic;
    std::int32_t set_led_event_data(std::uint32_t, std::span<std::uint8_t>) override { return -1; }
    std::int32_t process_read(std::span<const std::uint8_t>) override { return HEADSET_KEY_INVALID; }
    std::int32_t set_mute_data(bool, std::span<std::uint8_t>) override { return -1; }

    using call_control_generic::headset_leds_state_;
    using call_control_generic::hid_device;
    using call_control_generic::product_id_;
};

static_assert(std::is_abstract_v<call_control_generic>);
static_assert(std::is_base_of_v<call_control_generic, stdhid_cc>);
static_assert(std::is_base_of_v<call_control_generic, jabra_cc>);
static_assert(std::is_base_of_v<call_control_generic, plt_cc>);
static_assert(std::is_base_of_v<plt_cc, plt_blackwire_cc>);
static_assert(std::is_base_of_v<plt_blackwire_cc, plt_blackwire_7225_cc>);

/// The operations by which Plantronics models differ.
class OpenPlantronics final : public plt_cc {
  public:
    using plt_cc::accepts_report_id;
    using plt_cc::mute_key_value;
    using plt_cc::mute_report_id;
    using plt_cc::off_hook_report_id;
    using plt_cc::plt_cc;
    using plt_cc::ring_report_id;
};

class DriverInterface : public DriverFixture {};
class DriverFactoryTest : public DriverFixture {};

TEST(ProductFamily, is_the_high_byte_of_16) {
    constexpr std::pair<std::uint32_t, std::uint32_t> rows[] = {
        {0x02AB, 0x0200}, {0x0200, 0x0200}, {0x02FF, 0x0200}, {0x0300, 0x0300},
        {0x01FF, 0x0100}, {0x00AB, 0x0000}, {0xFFFF, 0xFF00}, {0x1C056, 0xC000},  // 16 bits of product id
    };
    for (const auto& [product_id, family] : rows) {
        EXPECT_EQ(product_family(product_id), family) << hex(product_id);
    }
}

TEST(ProductFamily, is_shared_by_256_products) {
    for (std::uint32_t high_byte = 0; high_byte <= 0xFF; ++high_byte) {
        const std::uint32_t family = high_byte * 256;
        for (std::uint32_t low_byte = 0; low_byte <= 0xFF; ++low_byte) {
            EXPECT_EQ(product_family(family + low_byte), family);
        }
    }
}

TEST_F(DriverInterface, has_its_operations_in_this_order) {
    using test_support::slot_of;
    const std::uintptr_t slots[] = {
        slot_of(&call_control_generic::set_led_event_data),
        slot_of(&call_control_generic::process_read),
        slot_of(&call_control_generic::set_mute_data),
        slot_of(&call_control_generic::handle_headset_reponse),
        slot_of(&call_control_generic::toggle_led),
        slot_of(&call_control_generic::query_state_follow_up),
        slot_of(&OpenPlantronics::ring_report_id),
        slot_of(&OpenPlantronics::off_hook_report_id),
        slot_of(&OpenPlantronics::accepts_report_id),
        slot_of(&OpenPlantronics::mute_report_id),
        slot_of(&OpenPlantronics::mute_key_value),
    };
    std::uintptr_t wanted = 2;  // after the destructor's two
    for (const std::uintptr_t slot : slots) {
        EXPECT_EQ(slot, wanted++);
    }
}

TEST_F(DriverInterface, begins_with_its_product_id_all_dark_and_no_handle) {
    const PlainDriver driver(0x24C9);
    EXPECT_EQ(driver.product_id_, 0x24C9U);
    EXPECT_EQ(driver.headset_leds_state_, 0);
    EXPECT_EQ(driver.hid_device(), nullptr);
}

TEST_F(DriverInterface, asks_for_no_follow_up_unless_a_driver_does) {
    PlainDriver driver(0);
    std::array<std::uint8_t, 4> output{};
    for (const std::int32_t key : key_codes) {
        EXPECT_EQ(driver.handle_headset_reponse(key), 0U) << key;
    }
    for (const std::uint32_t mask : follow_up_masks) {
        EXPECT_EQ(driver.toggle_led(mask, output), 0) << hex(mask);
    }
    for (const std::uint32_t state : headset_states) {
        EXPECT_EQ(driver.query_state_follow_up(state), 0U) << hex(state);
    }
    EXPECT_EQ(output, (std::array<std::uint8_t, 4>{}));
    EXPECT_TRUE(log_->lines().empty());
}

TEST_F(DriverInterface, borrows_the_handle_and_does_not_keep_it_open) {
    PlainDriver driver(0);
    HidHandle handle = open_model("jabra-link-380c");
    driver.set_hid_device(handle);
    EXPECT_EQ(driver.hid_device(), handle);
    handle.reset();
    EXPECT_EQ(driver.hid_device(), nullptr);
}

TEST_F(DriverInterface, gives_the_handle_back) {
    PlainDriver driver(0);
    const HidHandle handle = open_model("jabra-link-380c");
    driver.set_hid_device(handle);
    driver.set_hid_device(nullptr);
    EXPECT_EQ(driver.hid_device(), nullptr);
}

TEST_F(DriverFactoryTest, gives_five_vendors_the_standard_driver_and_others_none) {
    for (const std::uint32_t vendor : {0x046DU, 0x047FU, 0x0B0EU, 0x1377U, 0x1395U}) {
        EXPECT_NE(dynamic_cast<stdhid_cc*>(create_driver(vendor, 0xC056).get()), nullptr)
            << std::hex << vendor;
    }
    for (const std::uint32_t vendor : {0U, 0x045EU, 0x1532U, 0x6993U, 0xF0F0U, 0x1046DU}) {
        EXPECT_EQ(create_driver(vendor, 0xC056), nullptr) << std::hex << vendor;
    }
}

TEST_F(DriverFactoryTest, gives_no_product_of_these_vendors_a_driver_of_fixed_reports) {
    for (const std::uint32_t vendor : {0x046DU, 0x047FU, 0x0B0EU}) {
        for (std::uint32_t family = 0; family <= 0xFF; ++family) {
            for (const std::uint32_t low_byte : low_bytes) {
                const Driver driver = create_driver(vendor, family << 8 | low_byte);
                EXPECT_NE(dynamic_cast<stdhid_cc*>(driver.get()), nullptr) << std::hex << vendor << family;
            }
        }
    }
}

TEST_F(DriverFactoryTest, gives_every_headset_a_driver_of_its_own) {
    EXPECT_NE(create_driver(0x0B0E, 1), create_driver(0x0B0E, 1));
}

TEST_F(DriverFactoryTest, can_be_replaced_and_put_back) {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> asked;
    set_driver_factory([&](std::uint32_t vendor_id, std::uint32_t product_id) {
        asked.emplace_back(vendor_id, product_id);
        return std::make_shared<PlainDriver>(product_id);
    });
    const Driver plain = create_driver(0x1234, 0x5678);
    EXPECT_NE(dynamic_cast<PlainDriver*>(plain.get()), nullptr);
    EXPECT_EQ(asked, (std::vector<std::pair<std::uint32_t, std::uint32_t>>{{0x1234, 0x5678}}));
    set_driver_factory({});
    EXPECT_EQ(create_driver(0x1234, 0x5678), nullptr);
}

}  // namespace
}  // namespace headset_plugin::driver_test
