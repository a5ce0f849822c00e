#include <gtest/gtest.h>

#include "tests/virtual_headset/bus.h"

namespace bus_test {
namespace {

TEST_F(BusTest, presses_and_releases_a_key) {
    const int headset = plug(jabra);
    const auto opened = open();
    EXPECT_EQ(bus_.press(headset, phone_mute), "");
    EXPECT_EQ(read_all(*opened), (std::vector<Bytes>{{0x02, 0x08, 0x00}, {0x02, 0x00, 0x00}}));
}

TEST_F(BusTest, leaves_a_key_as_it_was_set_beside_others) {
    const int headset = plug(jabra);
    const auto opened = open();
    EXPECT_EQ(bus_.set_key(headset, hook_switch, true), "");
    EXPECT_EQ(bus_.press(headset, phone_mute), "");
    EXPECT_EQ(bus_.set_key(headset, hook_switch, false), "");
    EXPECT_EQ(
        read_all(*opened),
        (std::vector<Bytes>{{0x02, 0x01, 0x00}, {0x02, 0x09, 0x00}, {0x02, 0x01, 0x00}, {0x02, 0x00, 0x00}}));
}

TEST_F(BusTest, sends_a_report_for_a_key_that_was_set_so_before) {
    const int headset = plug(jabra);
    const auto opened = open();
    bus_.set_key(headset, hook_switch, false);
    bus_.set_key(headset, hook_switch, true);
    bus_.set_key(headset, hook_switch, true);
    EXPECT_EQ(read_all(*opened),
              (std::vector<Bytes>{{0x02, 0x00, 0x00}, {0x02, 0x01, 0x00}, {0x02, 0x01, 0x00}}));
}

TEST_F(BusTest, puts_keys_of_other_reports_into_their_own) {
    const int headset = plug(jabra);
    const auto telephony = open(telephony_page);
    const auto consumer = open(consumer_page);
    bus_.set_key(headset, hook_switch, true);
    bus_.set_key(headset, volume_up, true);
    EXPECT_EQ(read_all(*telephony), (std::vector<Bytes>{{0x02, 0x01, 0x00}}));
    EXPECT_EQ(read_all(*consumer), (std::vector<Bytes>{{0x01, 0x02, 0x00}}));
}

TEST_F(BusTest, sends_a_key_of_an_array_by_its_number) {
    const int headset = plug(jabra);
    const auto opened = open();
    EXPECT_EQ(bus_.press(headset, phone_key_1), "");
    // Keys count from 1, in the four bits from bit 7 of the first byte on.
    EXPECT_EQ(read_all(*opened), (std::vector<Bytes>{{0x02, 0x00, 0x01}, {0x02, 0x00, 0x00}}));
}

TEST_F(BusTest, refuses_a_second_key_where_the_report_holds_one) {
    const int headset = plug(jabra);
    const auto opened = open();
    bus_.set_key(headset, phone_key_1, true);
    EXPECT_EQ(bus_.set_key(headset, phone_key_2, true),
              "the key does not fit into its report beside the others that are down");
    EXPECT_EQ(bus_.press(headset, phone_key_2),
              "the key does not fit into its report beside the others that are down");
    bus_.set_key(headset, phone_key_1, false);
    EXPECT_EQ(read_all(*opened), (std::vector<Bytes>{{0x02, 0x00, 0x01}, {0x02, 0x00, 0x00}}))
        << "the refused key is not down";
}

TEST_F(BusTest, presses_a_key_of_a_range_on_a_headset_without_report_ids) {
    const int headset = plug(game_voice);
    const auto opened = open();
    EXPECT_EQ(bus_.press(headset, {button_page, 0x11}), "");
    EXPECT_EQ(bus_.press(headset, {button_page, 0x18}), "");
    EXPECT_EQ(read_all(*opened),
              (std::vector<Bytes>{{0x00, 0x01}, {0x00, 0x00}, {0x00, 0x80}, {0x00, 0x00}}));
}

TEST_F(BusTest, has_no_keys_but_those_of_the_descriptor) {
    const int headset = plug(game_voice);
    for (const FullUsage none :
         {FullUsage{button_page, 0x10}, FullUsage{button_page, 0x19}, hook_switch, mute_led}) {
        EXPECT_EQ(bus_.press(headset, none), "the headset has no such key");
        EXPECT_EQ(bus_.set_key(headset, none, true), "the headset has no such key");
        EXPECT_EQ(bus_.set_key(headset, none, false), "the headset has no such key");
    }
}

TEST_F(BusTest, has_no_keys_while_unplugged_and_all_up_when_plugged_in_again) {
    const int headset = plug(jabra);
    bus_.set_key(headset, hook_switch, true);
    bus_.unplug(headset);
    EXPECT_EQ(bus_.press(headset, phone_mute), not_plugged);
    EXPECT_EQ(bus_.set_key(headset, hook_switch, false), not_plugged);
    EXPECT_EQ(bus_.send_report(headset, Bytes{0x02, 0x00, 0x00}), not_plugged);
    bus_.replug(headset);
    const auto opened = open();
    bus_.press(headset, flash);
    EXPECT_EQ(read_all(*opened), (std::vector<Bytes>{{0x02, 0x10, 0x00}, {0x02, 0x00, 0x00}}));
}

TEST_F(BusTest, sends_only_reports_of_the_headsets_own_ids_and_lengths) {
    const int headset = plug(jabra);
    const auto opened = open();
    for (const Bytes& wrong : {Bytes{}, Bytes{0x02}, Bytes{0x02, 0x01}, Bytes{0x02, 0x01, 0x00, 0x00},
                               Bytes{0x03, 0x01, 0x00}, Bytes{0x00, 0x01, 0x00}}) {
        EXPECT_EQ(bus_.send_report(headset, wrong), "the headset has no input report of this id and length")
            << wrong.size() << " bytes";
    }
    EXPECT_EQ(read_all(*opened), std::vector<Bytes>());
    EXPECT_EQ(bus_.send_report(headset, Bytes{0x02, 0xFF, 0xFF}), "") << "padding bits included";
    EXPECT_EQ(read_all(*opened), (std::vector<Bytes>{{0x02, 0xFF, 0xFF}}));
}

}  // namespace
}  // namespace bus_test
