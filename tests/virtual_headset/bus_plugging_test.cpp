#include <gtest/gtest.h>

#include "tests/virtual_headset/bus.h"

namespace bus_test {
namespace {

TEST_F(BusTest, lists_one_interface_for_each_top_level_collection) {
    plug(jabra);
    const auto interfaces = bus_.enumerate(0, 0);
    ASSERT_EQ(interfaces.size(), 3U);
    EXPECT_EQ(interfaces[0].usage_page, telephony_page);
    EXPECT_EQ(interfaces[0].usage, 0x05);
    EXPECT_EQ(interfaces[1].usage_page, 0xFF00);
    EXPECT_EQ(interfaces[1].usage, 0x01);
    EXPECT_EQ(interfaces[2].usage_page, consumer_page);
    EXPECT_EQ(interfaces[2].usage, 0x01);
    for (const HidInterfaceInfo& interface : interfaces) {
        EXPECT_EQ(interface.vendor_id, 0x0B0E);
        EXPECT_EQ(interface.product_id, 0x24C9);
        EXPECT_EQ(interface.serial_number, L"50C2ED83A1F4");
        EXPECT_EQ(interface.manufacturer_string, L"GN Audio A/S");
        EXPECT_EQ(interface.product_string, L"Jabra Link 380c");
        EXPECT_EQ(interface.release_number, 0x0100);
        EXPECT_EQ(interface.interface_number, 0);
        EXPECT_EQ(interface.bus_type, 1) << "USB, as hidapi numbers buses";
    }
    EXPECT_NE(interfaces[0].path, interfaces[1].path);
    EXPECT_NE(interfaces[1].path, interfaces[2].path);
    EXPECT_NE(interfaces[2].path, interfaces[0].path);
}

TEST_F(BusTest, lists_only_what_has_the_wanted_ids_and_0_wants_any) {
    plug(jabra);
    plug(game_voice);
    EXPECT_EQ(bus_.enumerate(0, 0).size(), 4U);
    EXPECT_EQ(bus_.enumerate(0x0B0E, 0).size(), 3U);
    EXPECT_EQ(bus_.enumerate(0, 0x003B).size(), 1U);
    EXPECT_EQ(bus_.enumerate(0x045E, 0x003B).size(), 1U);
    EXPECT_EQ(bus_.enumerate(0x0B0E, 0x003B).size(), 0U);
}

TEST_F(BusTest, leaves_out_texts_that_a_headset_does_not_have) {
    HeadsetDescription nameless = describe(game_voice);
    nameless.manufacturer.reset();
    nameless.product.reset();
    nameless.serial.reset();
    plug(nameless);
    const auto interfaces = bus_.enumerate(0, 0);
    ASSERT_EQ(interfaces.size(), 1U);
    EXPECT_EQ(interfaces[0].serial_number, std::nullopt);
    EXPECT_EQ(interfaces[0].manufacturer_string, std::nullopt);
    EXPECT_EQ(interfaces[0].product_string, std::nullopt);

    const auto opened = open();
    EXPECT_EQ(opened->string(platform::HidString::serial_number), std::nullopt);
    EXPECT_EQ(opened->HidD_GetIndexedString(2), std::nullopt);
}

TEST_F(BusTest, gives_the_texts_of_an_opened_headset_by_name_and_by_index) {
    plug(jabra);
    const auto opened = open();
    EXPECT_EQ(opened->string(platform::HidString::manufacturer), L"GN Audio A/S");
    EXPECT_EQ(opened->string(platform::HidString::product), L"Jabra Link 380c");
    EXPECT_EQ(opened->string(platform::HidString::serial_number), L"50C2ED83A1F4");
    EXPECT_EQ(opened->HidD_GetIndexedString(1), L"GN Audio A/S");
    EXPECT_EQ(opened->HidD_GetIndexedString(2), L"Jabra Link 380c");
    EXPECT_EQ(opened->HidD_GetIndexedString(3), L"50C2ED83A1F4");
    EXPECT_EQ(opened->HidD_GetIndexedString(0), std::nullopt);
    EXPECT_EQ(opened->HidD_GetIndexedString(4), std::nullopt);
}

/// Why a headset with this descriptor cannot be plugged in.
Failure refusal(platform::virtual_platform::VirtualBus& bus, const Bytes& descriptor) {
    HeadsetDescription headset;
    headset.descriptor = descriptor;
    Failure failure;
    EXPECT_EQ(bus.plug(headset, failure), std::nullopt);
    return failure;
}

TEST_F(BusTest, refuses_a_malformed_descriptor_with_the_place_in_it) {
    EXPECT_EQ(refusal(bus_, {0x05, 0x0B, 0xC0}),
              "offset 2, item 0xC0: the end of a collection that was not begun");
    EXPECT_EQ(bus_.enumerate(0, 0).size(), 0U);
    EXPECT_EQ(take_changes(), std::vector<bool>());
}

TEST_F(BusTest, refuses_a_descriptor_without_collections) {
    EXPECT_EQ(refusal(bus_, {0x05, 0x0B}), "offset 0, item 0x00: no collection");
    EXPECT_EQ(refusal(bus_, {}), "offset 0, item 0x00: no collection");
}

TEST_F(BusTest, tells_of_every_interface_that_arrives_or_leaves) {
    const int headset = plug(jabra);
    EXPECT_EQ(take_changes(), std::vector(3, true));
    EXPECT_EQ(bus_.unplug(headset), "");
    EXPECT_EQ(take_changes(), std::vector(3, false));
    EXPECT_EQ(bus_.replug(headset), "");
    EXPECT_EQ(take_changes(), std::vector(3, true));
    plug(game_voice);
    take_changes();
    bus_.reset();
    EXPECT_EQ(take_changes(), std::vector(4, false));
}

TEST_F(BusTest, may_be_asked_while_it_tells_of_an_arrival) {
    std::vector<std::size_t> seen;
    platform::virtual_platform::VirtualBus* asked = nullptr;
    platform::virtual_platform::VirtualBus bus([&](bool) { seen.push_back(asked->enumerate(0, 0).size()); },
                                               [this] { return clock_.make_sleeper(); });
    asked = &bus;
    Failure failure;
    bus.plug(describe(jabra), failure);
    EXPECT_EQ(seen, (std::vector<std::size_t>{3, 3, 3})) << "all are there when the first is told of";
}

TEST_F(BusTest, lists_an_unplugged_headset_no_more_and_a_replugged_one_on_its_path) {
    const int headset = plug(jabra);
    plug(game_voice);
    const std::string before = path(consumer_page);
    bus_.unplug(headset);
    EXPECT_EQ(bus_.enumerate(0, 0).size(), 1U);
    EXPECT_EQ(bus_.open(before).interface, nullptr);
    bus_.replug(headset);
    EXPECT_EQ(bus_.enumerate(0, 0).size(), 4U);
    EXPECT_EQ(path(consumer_page), before);
    EXPECT_NE(bus_.open(before).interface, nullptr);
}

TEST_F(BusTest, never_gives_a_path_again_to_another_headset) {
    const int first = plug(game_voice);
    const std::string former = path(telephony_page);
    bus_.unplug(first);
    plug(game_voice);
    EXPECT_NE(path(telephony_page), former);

    bus_.reset();
    EXPECT_NE(plug(game_voice), first);
    EXPECT_NE(path(telephony_page), former);
}

TEST_F(BusTest, keeps_two_headsets_of_one_serial_apart) {
    const int one = plug(jabra);
    const int other = plug(jabra);
    EXPECT_NE(one, other);
    const auto interfaces = bus_.enumerate(0, 0);
    ASSERT_EQ(interfaces.size(), 6U);
    EXPECT_EQ(interfaces[0].serial_number, interfaces[3].serial_number);
    EXPECT_NE(interfaces[0].path, interfaces[3].path);

    const auto second = bus_.open(interfaces[3].path).interface;
    bus_.press(one, hook_switch);
    EXPECT_EQ(read_all(*second).size(), 0U);
    bus_.press(other, hook_switch);
    EXPECT_EQ(read_all(*second).size(), 2U);
    write(*second, {0x02, 0x01, 0x00});
    EXPECT_EQ(bus_.indicator(one, off_hook_led), false);
    EXPECT_EQ(bus_.indicator(other, off_hook_led), true);
}

TEST_F(BusTest, opens_no_path_that_is_none) {
    plug(jabra);
    for (const std::string& wrong :
         {std::string(), std::string("/dev/hidraw0"), path(telephony_page) + "0"}) {
        const auto opened = bus_.open(wrong);
        EXPECT_EQ(opened.interface, nullptr) << wrong;
        EXPECT_EQ(opened.error, L"The system cannot find the device specified.") << wrong;
    }
}

TEST_F(BusTest, refuses_to_be_opened_until_the_headset_behaves_again) {
    const int headset = plug(jabra);
    EXPECT_EQ(bus_.misbehave(headset, Fault::open_refused), "");
    for (int attempt = 0; attempt < 2; ++attempt) {
        const auto opened = bus_.open(path(telephony_page));
        EXPECT_EQ(opened.interface, nullptr);
        EXPECT_EQ(opened.error, L"Access is denied.");
    }
    bus_.misbehave(headset, Fault::none);
    EXPECT_NE(bus_.open(path(telephony_page)).interface, nullptr);
}

TEST_F(BusTest, forgets_a_fault_when_the_headset_is_plugged_in_again) {
    const int headset = plug(jabra);
    bus_.misbehave(headset, Fault::open_refused);
    bus_.unplug(headset);
    bus_.replug(headset);
    EXPECT_NE(bus_.open(path(telephony_page)).interface, nullptr);
}

TEST_F(BusTest, can_be_unplugged_in_the_middle_of_opening) {
    const int headset = plug(jabra);
    const std::string where = path(telephony_page);
    take_changes();
    bus_.misbehave(headset, Fault::unplug_in_open);
    const auto opened = bus_.open(where);
    EXPECT_EQ(opened.interface, nullptr);
    EXPECT_EQ(opened.error, not_connected);
    EXPECT_EQ(take_changes(), std::vector(3, false));
    EXPECT_EQ(bus_.unplug(headset), not_plugged);
    EXPECT_EQ(bus_.enumerate(0, 0).size(), 0U);
}

TEST_F(BusTest, says_why_a_headset_cannot_be_plugged_or_unplugged) {
    const int headset = plug(jabra);
    EXPECT_EQ(bus_.unplug(no_headset), no_such_headset);
    EXPECT_EQ(bus_.replug(no_headset), no_such_headset);
    EXPECT_EQ(bus_.replug(headset), "the headset is plugged in already");
    bus_.unplug(headset);
    EXPECT_EQ(bus_.unplug(headset), not_plugged);
    take_changes();
    EXPECT_EQ(bus_.unplug(headset), not_plugged);
    EXPECT_EQ(take_changes(), std::vector<bool>()) << "nothing changed";
}

TEST_F(BusTest, knows_nothing_of_a_headset_that_there_is_not) {
    using namespace std::chrono_literals;
    EXPECT_EQ(bus_.description(no_headset), std::nullopt);
    EXPECT_EQ(bus_.misbehave(no_headset, Fault::none), no_such_headset);
    EXPECT_EQ(bus_.misbehave(no_headset, Fault::read_fails), no_such_headset);
    EXPECT_EQ(bus_.press(no_headset, hook_switch), no_such_headset);
    EXPECT_EQ(bus_.set_key(no_headset, hook_switch, true), no_such_headset);
    EXPECT_EQ(bus_.send_report(no_headset, Bytes{0x02, 0x00, 0x00}), no_such_headset);
    EXPECT_EQ(bus_.indicator(no_headset, mute_led), std::nullopt);
    EXPECT_EQ(bus_.wait_indicator(no_headset, mute_led, false, 1h), std::nullopt);
    EXPECT_FALSE(bus_.outputs(no_headset));
    EXPECT_EQ(bus_.wait_outputs(no_headset, 0, 1h), std::nullopt);
    EXPECT_EQ(bus_.expect(no_headset, Bytes{0x02}), no_such_headset);
    EXPECT_EQ(bus_.verify(no_headset, 1h), no_such_headset);
}

TEST_F(BusTest, describes_a_headset_even_when_it_is_unplugged_until_it_is_reset) {
    const int headset = plug(jabra);
    bus_.unplug(headset);
    const auto description = bus_.description(headset);
    ASSERT_TRUE(description);
    EXPECT_EQ(description->serial, "50C2ED83A1F4");
    EXPECT_EQ(description->descriptor, describe(jabra).descriptor);
    bus_.reset();
    EXPECT_FALSE(bus_.description(headset));
    EXPECT_EQ(take_changes(), (std::vector{true, true, true, false, false, false})) << "it had left already";
}

TEST_F(BusTest, gives_each_collection_its_own_capabilities_which_outlive_the_headset) {
    plug(jabra);
    auto opened = open(consumer_page);
    const platform::hidp::PreparsedData data(opened->HidD_GetPreparsedData());
    opened.reset();
    bus_.reset();
    platform::HIDP_CAPS caps{};
    EXPECT_EQ(platform::hidp::parser().HidP_GetCaps(data.get(), &caps), platform::HIDP_STATUS_SUCCESS);
    EXPECT_EQ(caps.UsagePage, consumer_page);
    EXPECT_EQ(caps.InputReportByteLength, 3);
    EXPECT_EQ(caps.OutputReportByteLength, 0);
}

TEST_F(BusTest, has_no_feature_reports) {
    plug(jabra);
    const auto opened = open();
    Bytes report = {0x02, 0x00};
    EXPECT_TRUE(failed_with(opened->HidD_SetFeature(report), L"The device has no feature reports."));
    EXPECT_TRUE(failed_with(opened->HidD_GetFeature(report), L"The device has no feature reports."));
}

}  // namespace
}  // namespace bus_test
