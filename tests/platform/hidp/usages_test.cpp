// Buttons in reports: set, unset, listed.
#include <gtest/gtest.h>

#include "tests/platform/hidp/headset.h"

using namespace platform;
using namespace hidp_test;
using hidp::Tag;
using enum hidp::Tag;

namespace {

constexpr UCHAR led_report = 2;
constexpr UCHAR ringer_report = 3;

/// Three LEDs in one report, and the ringer in one of its own.
Collection headset_with_leds() {
    return headset_with({{usage_page, led_page},
                         {report_size, 1},
                         {report_id, led_report},
                         {report_count, 3},
                         {usage, led_mute},
                         {usage, led_off_hook},
                         {usage, led_ring},
                         {output, data_variable},
                         {report_count, 13},
                         {output, constant},
                         {usage_page, telephony},
                         {report_id, ringer_report},
                         {report_count, 1},
                         {usage, 0x9E},
                         {output, data_variable},
                         {report_count, 7},
                         {output, constant}});
}

/// Two fields of one byte that name keys of a telephone.
Collection keypad(std::int64_t logical_min = 1) {
    return headset_with({{logical_minimum, logical_min},
                         {logical_maximum, 12},
                         {usage_minimum, 0xB0},
                         {usage_maximum, 0xBB},
                         {report_size, 8},
                         {report_count, 2},
                         {input, data_array}});
}

TEST(SetUsages, SetsTheBitsAndTheReportId) {
    const auto headset = headset_with_leds();
    Bytes report = headset.empty_report(HidP_Output);
    EXPECT_EQ(headset.set(HidP_Output, led_page, {led_mute, led_ring}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{led_report, 0x05, 0x00}));
}

TEST(SetUsages, LeavesTheOtherBitsAlone) {
    const auto headset = headset_with_leds();
    Bytes report = {led_report, 0xFA, 0xFF};
    EXPECT_EQ(headset.set(HidP_Output, led_page, {led_mute}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{led_report, 0xFB, 0xFF}));
}

TEST(SetUsages, PassesOverEntriesOfZero) {
    const auto headset = headset_with_leds();
    Bytes report = headset.empty_report(HidP_Output);
    EXPECT_EQ(headset.set(HidP_Output, led_page, {0, 0, led_off_hook, 0}, report).status,
              HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{led_report, 0x02, 0x00}));
}

TEST(SetUsages, AListOfZerosChangesNothing) {
    const auto headset = headset_with_leds();
    Bytes report = headset.empty_report(HidP_Output);
    EXPECT_EQ(headset.set(HidP_Output, led_page, {0, 0}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, headset.empty_report(HidP_Output));
}

TEST(SetUsages, AnUnknownUsageLeavesTheReportAsItWas) {
    const auto headset = headset_with_leds();
    Bytes report = headset.empty_report(HidP_Output);
    const auto [status, index] = headset.set(HidP_Output, led_page, {led_mute, 0x77, led_ring}, report);
    EXPECT_EQ(status, HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(index, 1U);
    EXPECT_EQ(report, headset.empty_report(HidP_Output));
}

TEST(SetUsages, AnotherNameOfTheUsageThatStandsForNothing) {
    const auto headset = headset_with({{report_size, 8},
                                       {report_count, 1},
                                       {delimiter, 1},
                                       {usage, 0},
                                       {usage, flash},
                                       {delimiter, 0},
                                       {usage, redial},
                                       {output, data_array}});
    Bytes report = headset.empty_report(HidP_Output);
    EXPECT_EQ(headset.set(HidP_Output, telephony, {flash}, report).status, HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(headset.set(HidP_Output, telephony, {redial}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 1}));
}

TEST(SetUsages, AUsageOfAnotherReportLeavesTheReportAsItWas) {
    const auto headset = headset_with_leds();
    Bytes report = {ringer_report, 0x00, 0x00};
    const auto [status, index] = headset.set(HidP_Output, led_page, {led_mute}, report);
    EXPECT_EQ(status, HIDP_STATUS_INCOMPATIBLE_REPORT_ID);
    EXPECT_EQ(index, 0U);
    EXPECT_EQ(report, (Bytes{ringer_report, 0x00, 0x00}));
}

TEST(SetUsages, TheFirstUsageDecidesOnTheReport) {
    const auto headset = headset_with({{report_size, 1},
                                       {report_count, 1},
                                       {report_id, 1},
                                       {usage, hook_switch},
                                       {output, data_variable},
                                       {report_id, 2},
                                       {usage, flash},
                                       {output, data_variable}});
    Bytes report = headset.empty_report(HidP_Output);
    EXPECT_EQ(headset.set(HidP_Output, telephony, {hook_switch, flash}, report).status,
              HIDP_STATUS_INCOMPATIBLE_REPORT_ID);
    EXPECT_EQ(report, headset.empty_report(HidP_Output));
    EXPECT_EQ(headset.set(HidP_Output, telephony, {flash}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{2, 0x01}));
}

TEST(SetUsages, AUsageOfTwoReportsGoesIntoTheOneAtHand) {
    const auto headset = headset_with({{report_size, 1},
                                       {report_count, 1},
                                       {report_id, 1},
                                       {usage, hook_switch},
                                       {output, data_variable},
                                       {report_id, 2},
                                       {output, constant},
                                       {usage, hook_switch},
                                       {output, data_variable}});
    Bytes report = {2, 0x00};
    EXPECT_EQ(headset.set(HidP_Output, telephony, {hook_switch}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{2, 0x02}));
}

TEST(SetUsages, ARangeHasOneBitForEachUsage) {
    const auto headset = headset_with({{usage_minimum, 0xB0},
                                       {usage_maximum, 0xBB},
                                       {report_size, 1},
                                       {report_count, 12},
                                       {output, data_variable}});
    Bytes report = headset.empty_report(HidP_Output);
    EXPECT_EQ(headset.set(HidP_Output, telephony, {0xB1, 0xBB}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 0x02, 0x08}));
}

TEST(SetUsages, AUsageOfSeveralBitsSetsTheFirst) {
    const auto headset =
        headset_with({{usage, hook_switch}, {report_size, 1}, {report_count, 4}, {output, data_variable}});
    Bytes report = headset.empty_report(HidP_Output);
    EXPECT_EQ(headset.set(HidP_Output, telephony, {hook_switch}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 0x01}));
}

TEST(SetUsages, AnArrayTakesSelectorsInItsFirstFreeFields) {
    const auto headset = keypad();
    Bytes report = headset.empty_report(HidP_Input);
    EXPECT_EQ(headset.set(HidP_Input, telephony, {0xB4}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 5, 0}));
    EXPECT_EQ(headset.set(HidP_Input, telephony, {0xB0}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 5, 1}));
}

TEST(SetUsages, AFullArrayRefusesAnotherUsage) {
    const auto headset = keypad();
    Bytes report = headset.empty_report(HidP_Input);
    const auto [status, index] = headset.set(HidP_Input, telephony, {0xB0, 0xB1, 0xB2}, report);
    EXPECT_EQ(status, HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(index, 2U);
    EXPECT_EQ(report, (Bytes{0, 1, 2}));
}

TEST(SetUsages, AUsageThatAnArraysFieldCannotNameIsNotFound) {
    const auto headset = headset_with({{logical_minimum, 0},
                                       {logical_maximum, 1},
                                       {usage, hook_switch},
                                       {usage, flash},
                                       {report_size, 1},
                                       {report_count, 2},
                                       {output, data_array}});
    Bytes report = headset.empty_report(HidP_Output);
    EXPECT_EQ(headset.set(HidP_Output, telephony, {hook_switch}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(headset.set(HidP_Output, telephony, {flash}, report).status, HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(report, (Bytes{0, 0x01}));
}

TEST(ArraySelectors, CountFromTheLogicalMinimum) {
    for (const std::int64_t minimum : {1, 5}) {
        SCOPED_TRACE(minimum);
        const auto headset = keypad(minimum);
        Bytes report = headset.empty_report(HidP_Input);
        headset.set(HidP_Input, telephony, {0xB0, 0xB1}, report);
        EXPECT_EQ(report, (Bytes{0, static_cast<UCHAR>(minimum), static_cast<UCHAR>(minimum + 1)}));
        EXPECT_EQ(headset.pressed(HidP_Input, telephony, report).result, (Usages{0xB0, 0xB1}));
    }
}

TEST(ArraySelectors, CountFromOneWhereTheLogicalMinimumIsNotPositive) {
    for (const std::int64_t minimum : {0, -1}) {
        SCOPED_TRACE(minimum);
        const auto headset = keypad(minimum);
        Bytes report = headset.empty_report(HidP_Input);
        headset.set(HidP_Input, telephony, {0xB0}, report);
        EXPECT_EQ(report, (Bytes{0, 1, 0}));
    }
}

TEST(ArraySelectors, AreTheUsagesWhereTheseBeginWithZero) {
    const auto keyboard = headset_with({{usage_page, 0x07},
                                        {usage_minimum, 0},
                                        {usage_maximum, 0xFF},
                                        {logical_minimum, 0},
                                        {logical_maximum, 0xFF},
                                        {report_size, 8},
                                        {report_count, 6},
                                        {input, data_array}});
    Bytes report = keyboard.empty_report(HidP_Input);
    EXPECT_EQ(keyboard.set(HidP_Input, 0x07, {0x04}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 4, 0, 0, 0, 0, 0}));
    EXPECT_EQ(keyboard.pressed(HidP_Input, 0x07, report).result, Usages{0x04});
}

TEST(ArraySelectors, RunOnThroughUsagesDeclaredOneByOne) {
    const auto headset = headset_with({{usage, hook_switch},
                                       {usage_minimum, 0xB0},
                                       {usage_maximum, 0xB9},
                                       {usage, phone_mute},
                                       {logical_minimum, 0},
                                       {logical_maximum, 12},
                                       {report_size, 4},
                                       {report_count, 4},
                                       {input, data_array}});
    Bytes report = headset.empty_report(HidP_Input);
    EXPECT_EQ(headset.set(HidP_Input, telephony, {hook_switch, 0xB0, 0xB9, phone_mute}, report).status,
              HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 0x21, 0xCB}));
    EXPECT_EQ(headset.pressed(HidP_Input, telephony, report).result,
              (Usages{phone_mute, 0xB0, 0xB9, hook_switch}));
}

TEST(UnsetUsages, ClearsTheBits) {
    const auto headset = headset_with_leds();
    Bytes report = {led_report, 0xFF, 0xFF};
    EXPECT_EQ(headset.unset(HidP_Output, led_page, {led_mute, 0, led_ring}, report).status,
              HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{led_report, 0xFA, 0xFF}));
}

TEST(UnsetUsages, AButtonThatIsNotSetLeavesTheReportAsItWas) {
    const auto headset = headset_with_leds();
    Bytes report = {led_report, 0x01, 0x00};
    const auto [status, index] = headset.unset(HidP_Output, led_page, {led_mute, led_ring}, report);
    EXPECT_EQ(status, HIDP_STATUS_BUTTON_NOT_PRESSED);
    EXPECT_EQ(index, 1U);
    EXPECT_EQ(report, (Bytes{led_report, 0x01, 0x00}));
}

TEST(UnsetUsages, AUsageOfSeveralBitsClearsThemAll) {
    const auto headset =
        headset_with({{usage, hook_switch}, {report_size, 1}, {report_count, 4}, {output, data_variable}});
    Bytes report = {0, 0xFA};
    EXPECT_EQ(headset.unset(HidP_Output, telephony, {hook_switch}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 0xF0}));
}

TEST(UnsetUsages, TheFieldsOfAnArrayCloseUp) {
    const auto headset = keypad();
    Bytes report = {0, 5, 7};
    EXPECT_EQ(headset.unset(HidP_Input, telephony, {0xB4}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 7, 0}));
    EXPECT_EQ(headset.unset(HidP_Input, telephony, {0xB4}, report).status, HIDP_STATUS_BUTTON_NOT_PRESSED);
}

TEST(UnsetUsages, AUsageNamedTwiceIsClearedOnce) {
    const auto headset = keypad();
    Bytes report = {0, 5, 7};
    const auto [status, index] = headset.unset(HidP_Input, telephony, {0xB4, 0xB4}, report);
    EXPECT_EQ(status, HIDP_STATUS_BUTTON_NOT_PRESSED);
    EXPECT_EQ(index, 1U);
    EXPECT_EQ(report, (Bytes{0, 7, 0}));
}

TEST(GetUsages, ListsWhatIsSet) {
    const auto headset = headset_with_leds();
    EXPECT_EQ(headset.pressed(HidP_Output, led_page, {led_report, 0xFD, 0xFF}).result,
              (Usages{led_ring, led_mute}));
    EXPECT_EQ(headset.pressed(HidP_Output, led_page, {led_report, 0x00, 0x00}).result, Usages{});
}

TEST(GetUsages, ListsAUsageOfSeveralBitsOnce) {
    const auto headset =
        headset_with({{usage, hook_switch}, {report_size, 1}, {report_count, 4}, {input, data_variable}});
    EXPECT_EQ(headset.pressed(HidP_Input, telephony, {0, 0x0C}).result, Usages{hook_switch});
    EXPECT_EQ(headset.pressed(HidP_Input, telephony, {0, 0xF0}).result, Usages{});
}

TEST(GetUsages, BitsLeftOverBelongToTheLastUsageOfARange) {
    const auto headset = headset_with({{usage_minimum, 0xB0},
                                       {usage_maximum, 0xB1},
                                       {report_size, 1},
                                       {report_count, 4},
                                       {input, data_variable}});
    EXPECT_EQ(headset.pressed(HidP_Input, telephony, {0, 0x08}).result, Usages{0xB1});
    EXPECT_EQ(headset.pressed(HidP_Input, telephony, {0, 0x01}).result, Usages{0xB0});
}

TEST(GetUsages, PassesOverSelectorsThatNameNoUsage) {
    EXPECT_EQ(keypad().pressed(HidP_Input, telephony, {0, 13, 12}).result, Usages{0xBB});
    EXPECT_EQ(keypad(5).pressed(HidP_Input, telephony, {0, 4, 255}).result, Usages{});
}

TEST(GetUsages, ListsEveryAlias) {
    const auto headset = headset_with({{delimiter, 1},
                                       {usage, phone_mute},
                                       {usage, flash},
                                       {delimiter, 0},
                                       {report_size, 1},
                                       {report_count, 1},
                                       {input, data_variable}});
    EXPECT_EQ(headset.pressed(HidP_Input, telephony, {0, 1}).result, (Usages{flash, phone_mute}));
}

TEST(GetUsages, TellsTheRoomThatItNeeds) {
    const auto headset = headset_with_leds();
    const Bytes report = {led_report, 0x07, 0x00};
    Usages usages = {0xAAAA, 0xAAAA};
    ULONG length = 1;
    EXPECT_EQ(hidp::parser().HidP_GetUsages(HidP_Output, led_page, 0, usages.data(), &length, headset.data(),
                                            report.data(), static_cast<ULONG>(report.size())),
              HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, 3U);
    EXPECT_EQ(usages[1], 0xAAAA);
}

TEST(GetUsages, APageThatTheDirectionLacksIsNotFound) {
    const auto headset = headset_with_leds();
    EXPECT_EQ(headset.pressed(HidP_Output, button_page, {led_report, 0, 0}).status,
              HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(headset.pressed(HidP_Output, 0, {led_report, 0, 0}).status, HIDP_STATUS_USAGE_NOT_FOUND);
}

TEST(GetUsages, APageOfOtherReportsOnlyIsIncompatible) {
    const auto headset = headset_with_leds();
    EXPECT_EQ(headset.pressed(HidP_Output, led_page, {ringer_report, 0, 0}).status,
              HIDP_STATUS_INCOMPATIBLE_REPORT_ID);
    EXPECT_EQ(headset.pressed(HidP_Output, led_page, {0x55, 0, 0}).status,
              HIDP_STATUS_INCOMPATIBLE_REPORT_ID);
}

TEST(GetUsages, APageOfThisReportAmongOthersIsListed) {
    const auto headset = headset_with({{report_size, 1},
                                       {report_count, 1},
                                       {report_id, 1},
                                       {usage, hook_switch},
                                       {input, data_variable},
                                       {report_id, 2},
                                       {usage, flash},
                                       {input, data_variable}});
    EXPECT_EQ(headset.pressed(HidP_Input, telephony, {1, 1}).result, Usages{hook_switch});
    EXPECT_EQ(headset.pressed(HidP_Input, telephony, {2, 1}).result, Usages{flash});
    EXPECT_EQ(headset.pressed(HidP_Input, telephony, {2, 1}).status, HIDP_STATUS_SUCCESS);
}

/// Two nested collections, each with a mute key.
class NestedUsages : public testing::Test {
  protected:
    Usages pressed_in(USHORT link_collection, NTSTATUS expected = HIDP_STATUS_SUCCESS) const {
        const Bytes report = {0, 0x03};
        Usages usages(8);
        ULONG length = 8;
        EXPECT_EQ(
            hidp::parser().HidP_GetUsages(HidP_Input, telephony, link_collection, usages.data(), &length,
                                          headset_.data(), report.data(), static_cast<ULONG>(report.size())),
            expected);
        usages.resize(length);
        return usages;
    }

    const Collection headset_ = headset_with({{report_size, 1},
                                              {report_count, 1},
                                              {usage, hook_switch},
                                              {input, data_variable},
                                              {usage, 0x01},
                                              {Tag::collection, logical},
                                              {usage, phone_mute},
                                              {input, data_variable},
                                              {end_collection}});
};

TEST_F(NestedUsages, LinkCollection0IsAny) {
    EXPECT_EQ(pressed_in(0), (Usages{hook_switch, phone_mute}));
}

TEST_F(NestedUsages, AnotherLinkCollectionIsThatOneAlone) {
    EXPECT_EQ(pressed_in(1), Usages{phone_mute});
}

TEST_F(NestedUsages, TheRootIsTheTopLevelCollectionAlone) {
    EXPECT_EQ(pressed_in(0xFFFF), Usages{hook_switch});
}

TEST_F(NestedUsages, ALinkCollectionThatThereIsNotHasNoUsages) {
    EXPECT_EQ(pressed_in(2, HIDP_STATUS_USAGE_NOT_FOUND), Usages{});
}

TEST(MaxUsageListLength, CountsBitsAndFieldsOfArrays) {
    const auto headset = headset_with({{report_size, 1},
                                       {report_count, 3},
                                       {usage, hook_switch},
                                       {usage, flash},
                                       {input, data_variable},
                                       {usage_page, button_page},
                                       {usage_minimum, 1},
                                       {usage_maximum, 4},
                                       {input, data_variable},
                                       {report_size, 8},
                                       {report_count, 6},
                                       {usage_minimum, 1},
                                       {usage_maximum, 200},
                                       {input, data_array},
                                       {usage, 1},
                                       {input, data_variable}});
    const auto length = [&](HIDP_REPORT_TYPE type, USAGE page) {
        return hidp::parser().HidP_MaxUsageListLength(type, page, headset.data());
    };
    EXPECT_EQ(length(HidP_Input, telephony), 3U);
    EXPECT_EQ(length(HidP_Input, button_page), 9U);
    EXPECT_EQ(length(HidP_Input, 0), 12U);
    EXPECT_EQ(length(HidP_Output, 0), 0U);
}

}  // namespace
