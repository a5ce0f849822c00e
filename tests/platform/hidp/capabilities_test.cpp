// Which capabilities a descriptor makes, in which order, with which indices.
#include <gtest/gtest.h>

#include "tests/platform/hidp/headset.h"

using namespace platform;
using namespace hidp_test;
using hidp::Tag;
using enum hidp::Tag;

namespace {

const hidp::Capability& input_of(const Collection& collection, std::size_t index) {
    return collection.direction(HidP_Input).capabilities.at(index);
}

Usages usages_of(const Collection& collection) {
    Usages usages;
    for (const auto& cap : collection.direction(HidP_Input).capabilities) {
        usages.push_back(cap.usage_min);
    }
    return usages;
}

TEST(Capabilities, UsagesOfOneVariableItemAreListedInReverseAndNumberedAsListed) {
    const auto collection = headset_with({{usage, hook_switch},
                                          {usage, flash},
                                          {usage, redial},
                                          {report_size, 1},
                                          {report_count, 3},
                                          {input, data_variable}});
    EXPECT_EQ(usages_of(collection), (Usages{redial, flash, hook_switch}));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(input_of(collection, i).data_index_min, i);
        EXPECT_EQ(input_of(collection, i).bit_position, 8 + 2 - i);
        EXPECT_EQ(input_of(collection, i).report_count, 1);
    }
}

TEST(Capabilities, UsagesOfSeveralItemsAreListedInTheItemsOrder) {
    const auto collection = headset_with({{report_size, 1},
                                          {report_count, 1},
                                          {usage, hook_switch},
                                          {input, data_variable},
                                          {usage, phone_mute},
                                          {input, data_variable}});
    EXPECT_EQ(usages_of(collection), (Usages{hook_switch, phone_mute}));
}

TEST(Capabilities, FieldsLeftOverGoToTheLastUsageDeclared) {
    const auto collection = headset_with(
        {{usage, hook_switch}, {usage, flash}, {report_size, 1}, {report_count, 8}, {input, data_variable}});
    EXPECT_EQ(usages_of(collection), (Usages{flash, hook_switch}));
    EXPECT_EQ(input_of(collection, 0).report_count, 7);
    EXPECT_EQ(input_of(collection, 0).bit_position, 9U);
    EXPECT_EQ(input_of(collection, 1).report_count, 1);
    EXPECT_EQ(collection.caps().NumberInputDataIndices, 2);
}

TEST(Capabilities, AUsageWithoutAFieldIsCountedButNotListed) {
    const auto collection = headset_with({{usage, hook_switch},
                                          {usage, flash},
                                          {usage, redial},
                                          {report_size, 1},
                                          {report_count, 2},
                                          {input, data_variable}});
    EXPECT_EQ(usages_of(collection), (Usages{flash, hook_switch}));
    EXPECT_EQ(collection.direction(HidP_Input).declared_capabilities, 3);
    EXPECT_EQ(collection.caps().NumberInputDataIndices, 2);
    EXPECT_EQ(collection.caps().NumberInputButtonCaps, 2);
}

TEST(Capabilities, AnItemOfNoFieldsIsCountedButNotListed) {
    const auto collection = headset_with({{report_size, 1},
                                          {report_count, 0},
                                          {usage, hook_switch},
                                          {input, data_variable},
                                          {usage, flash},
                                          {input, data_array}});
    EXPECT_EQ(usages_of(collection), Usages{});
    EXPECT_EQ(collection.direction(HidP_Input).declared_capabilities, 2);
    EXPECT_EQ(collection.caps().InputReportByteLength, 0);
}

TEST(Capabilities, ARangeIsOneCapabilityWithOneDataIndexForEachUsage) {
    const auto collection = headset_with({{usage_minimum, 0xB0},
                                          {usage_maximum, 0xBB},
                                          {report_size, 1},
                                          {report_count, 12},
                                          {input, data_variable}});
    const auto buttons = collection.buttons(HidP_Input);
    ASSERT_EQ(buttons.size(), 1U);
    EXPECT_TRUE(buttons[0].IsRange);
    EXPECT_EQ(buttons[0].Range.UsageMin, 0xB0);
    EXPECT_EQ(buttons[0].Range.UsageMax, 0xBB);
    EXPECT_EQ(buttons[0].Range.DataIndexMin, 0);
    EXPECT_EQ(buttons[0].Range.DataIndexMax, 11);
    EXPECT_EQ(buttons[0].ReportCount, 12);
}

TEST(Capabilities, ARangeOfVariablesEndsWithTheFields) {
    const auto collection = headset_with({{usage_minimum, 1},
                                          {usage_maximum, 0xFFFF},
                                          {report_size, 8},
                                          {report_count, 2},
                                          {input, data_variable}});
    EXPECT_EQ(input_of(collection, 0).usage_max, 2);
    EXPECT_EQ(collection.caps().NumberInputDataIndices, 2);
}

TEST(Capabilities, AShortUsageTakesThePageDeclaredLastBeforeTheMainItem) {
    const auto collection = headset_with(
        {{usage, 7}, {usage_page, button_page}, {report_size, 1}, {report_count, 1}, {input, data_variable}});
    EXPECT_EQ(input_of(collection, 0).usage_page, button_page);
}

TEST(Capabilities, AFourByteUsageBringsItsPage) {
    const auto collection = headset_with({{usage, 0x90007},
                                          {usage, hook_switch},
                                          {report_size, 1},
                                          {report_count, 2},
                                          {input, data_variable}});
    EXPECT_EQ(input_of(collection, 0).usage_page, telephony);
    EXPECT_EQ(input_of(collection, 1).usage_page, button_page);
    EXPECT_EQ(input_of(collection, 1).usage_min, 7);
}

TEST(Capabilities, OneFourByteEndGivesARangeItsPage) {
    for (const bool minimum_has_page : {false, true}) {
        SCOPED_TRACE(minimum_has_page);
        const auto collection = headset_with({{usage_minimum, minimum_has_page ? 0x90001 : 1},
                                              {usage_maximum, minimum_has_page ? 3 : 0x90003},
                                              {report_size, 1},
                                              {report_count, 3},
                                              {input, data_variable}});
        EXPECT_EQ(input_of(collection, 0).usage_page, button_page);
        EXPECT_EQ(input_of(collection, 0).usage_min, 1);
        EXPECT_EQ(input_of(collection, 0).usage_max, 3);
    }
}

TEST(Capabilities, FieldsOfOneBitAndArraysAreButtonsOthersValues) {
    struct {
        std::int64_t size;
        std::int64_t bits;
        bool is_button;
    } const cases[] = {
        {1, data_variable, true}, {2, data_variable, false}, {8, data_array, true}, {1, data_array, true}};
    for (const auto& expected : cases) {
        SCOPED_TRACE(testing::Message() << expected.size << " bits, flags " << expected.bits);
        const auto collection = headset_with(
            {{usage, hook_switch}, {report_size, expected.size}, {report_count, 1}, {input, expected.bits}});
        EXPECT_EQ(collection.caps().NumberInputButtonCaps, expected.is_button ? 1 : 0);
        EXPECT_EQ(collection.caps().NumberInputValueCaps, expected.is_button ? 0 : 1);
    }
}

TEST(Capabilities, ConstantVariablesWithAUsageAreListedAsPadding) {
    const auto collection =
        headset_with({{usage, hook_switch}, {report_size, 1}, {report_count, 1}, {input, constant_variable}});
    EXPECT_TRUE(input_of(collection, 0).is_padding());
    EXPECT_EQ(collection.caps().NumberInputButtonCaps, 1);
    EXPECT_EQ(collection.caps().NumberInputDataIndices, 1);
}

TEST(Capabilities, ConstantsOfNoUseAreCountedButNotListed) {
    for (const auto bits : {constant, constant_variable}) {
        SCOPED_TRACE(bits);
        const auto collection =
            headset_with({{usage, 0}, {report_size, 8}, {report_count, 1}, {input, bits}});
        EXPECT_EQ(usages_of(collection), Usages{});
        EXPECT_EQ(collection.direction(HidP_Input).declared_capabilities, 1);
        EXPECT_EQ(collection.caps().InputReportByteLength, 2);
    }
}

TEST(Capabilities, AConstantArrayIsCountedButNotListed) {
    const auto collection =
        headset_with({{usage, flash}, {report_size, 8}, {report_count, 1}, {input, constant}});
    EXPECT_EQ(usages_of(collection), Usages{});
    EXPECT_EQ(collection.direction(HidP_Input).declared_capabilities, 1);
}

TEST(Capabilities, FieldsWithoutUsageOnlyTakeRoom) {
    for (const auto bits : {constant, data_variable, data_array}) {
        SCOPED_TRACE(bits);
        const auto collection = headset_with({{report_size, 4}, {report_count, 3}, {input, bits}});
        EXPECT_EQ(collection.direction(HidP_Input).declared_capabilities, 0);
        EXPECT_EQ(collection.caps().InputReportByteLength, 3);
    }
}

TEST(Capabilities, UsageZeroWithDataIsListed) {
    const auto collection =
        headset_with({{usage, 0}, {report_size, 8}, {report_count, 1}, {input, data_variable}});
    EXPECT_EQ(usages_of(collection), Usages{0});
    EXPECT_EQ(collection.caps().NumberInputDataIndices, 1);
}

TEST(Capabilities, ArrayUsagesAreListedInReverseAndNumberedAsDeclared) {
    const auto collection = headset_with({{usage, hook_switch},
                                          {usage_minimum, 0xB0},
                                          {usage_maximum, 0xB9},
                                          {usage, phone_mute},
                                          {logical_minimum, 1},
                                          {logical_maximum, 12},
                                          {report_size, 8},
                                          {report_count, 2},
                                          {input, data_array}});
    EXPECT_EQ(usages_of(collection), (Usages{phone_mute, 0xB0, hook_switch}));
    EXPECT_EQ(input_of(collection, 0).data_index_min, 11);
    EXPECT_EQ(input_of(collection, 1).data_index_min, 1);
    EXPECT_EQ(input_of(collection, 1).data_index_max, 10);
    EXPECT_EQ(input_of(collection, 2).data_index_min, 0);
    EXPECT_TRUE(input_of(collection, 0).has_more_for_array);
    EXPECT_TRUE(input_of(collection, 1).has_more_for_array);
    EXPECT_FALSE(input_of(collection, 2).has_more_for_array);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(input_of(collection, i).bit_position, 8U);
        EXPECT_EQ(input_of(collection, i).report_count, 2);
    }
}

TEST(Capabilities, DelimitedUsagesAreAliasesOfOneControl) {
    const auto collection = headset_with({{delimiter, 1},
                                          {usage, phone_mute},
                                          {usage, 0x000C00E2},
                                          {delimiter, 0},
                                          {usage, hook_switch},
                                          {report_size, 1},
                                          {report_count, 2},
                                          {input, data_variable}});
    EXPECT_EQ(usages_of(collection), (Usages{hook_switch, 0xE2, phone_mute}));
    EXPECT_FALSE(input_of(collection, 0).is_alias);
    EXPECT_TRUE(input_of(collection, 1).is_alias);
    EXPECT_FALSE(input_of(collection, 2).is_alias);
    EXPECT_EQ(input_of(collection, 0).bit_position, 9U);
    EXPECT_EQ(input_of(collection, 1).bit_position, 8U);
    EXPECT_EQ(input_of(collection, 2).bit_position, 8U);
    EXPECT_EQ(input_of(collection, 1).data_index_min, input_of(collection, 2).data_index_min);
    EXPECT_EQ(collection.caps().NumberInputDataIndices, 2);
    EXPECT_TRUE(collection.buttons(HidP_Input)[1].IsAlias);
}

TEST(Capabilities, AliasesInTheLastSetShareTheFieldsLeftOver) {
    const auto collection = headset_with({{usage, hook_switch},
                                          {delimiter, 1},
                                          {usage, phone_mute},
                                          {usage, flash},
                                          {delimiter, 0},
                                          {report_size, 1},
                                          {report_count, 4},
                                          {input, data_variable}});
    EXPECT_EQ(usages_of(collection), (Usages{flash, phone_mute, hook_switch}));
    EXPECT_EQ(input_of(collection, 0).report_count, 3);
    EXPECT_EQ(input_of(collection, 1).report_count, 3);
}

/// A key with an alias that is a range of three usages.
Collection control_with_a_longer_alias(std::int64_t flags) {
    return headset_with({{delimiter, 1},
                         {usage, phone_mute},
                         {usage_minimum, 0xB0},
                         {usage_maximum, 0xB2},
                         {delimiter, 0},
                         {logical_maximum, 7},
                         {report_size, 8},
                         {report_count, 5},
                         {input, flags},
                         {usage, hook_switch},
                         {input, flags}});
}

TEST(Capabilities, AnAliasOfMoreUsagesThanItsControlHasDataIndicesOfItsOwn) {
    for (const auto flags : {data_variable, data_array}) {
        const auto collection = control_with_a_longer_alias(flags);
        EXPECT_EQ(input_of(collection, 0).data_index_min, 0);
        EXPECT_EQ(input_of(collection, 0).data_index_max, 2);
        EXPECT_EQ(input_of(collection, 1).data_index_min, 0);
        EXPECT_EQ(input_of(collection, 1).data_index_max, 0);
        EXPECT_EQ(input_of(collection, 2).data_index_min, 3) << "behind the longer one";
        EXPECT_EQ(collection.caps().NumberInputDataIndices, 4);
    }
}

TEST(Capabilities, AliasesInAnArrayShareSelectorAndDataIndex) {
    const auto collection = headset_with({{delimiter, 1},
                                          {usage, phone_mute},
                                          {usage, 0x000C00E2},
                                          {delimiter, 0},
                                          {usage, hook_switch},
                                          {logical_minimum, 1},
                                          {report_size, 8},
                                          {report_count, 1},
                                          {input, data_array}});
    EXPECT_EQ(usages_of(collection), (Usages{hook_switch, 0xE2, phone_mute}));
    EXPECT_EQ(input_of(collection, 0).lowest_selector, 2U);
    EXPECT_EQ(input_of(collection, 1).lowest_selector, 1U);
    EXPECT_EQ(input_of(collection, 2).lowest_selector, 1U);
    EXPECT_EQ(input_of(collection, 1).data_index_min, 0);
    EXPECT_EQ(input_of(collection, 2).data_index_min, 0);
}

TEST(Capabilities, OnlyArraysAndValuesKeepTheLogicalRange) {
    const auto collection = headset_with({{logical_minimum, 0},
                                          {logical_maximum, 1},
                                          {report_count, 1},
                                          {report_size, 1},
                                          {usage, hook_switch},
                                          {input, data_variable},
                                          {usage, flash},
                                          {input, data_array},
                                          {report_size, 6},
                                          {usage, redial},
                                          {input, data_variable}});
    EXPECT_EQ(input_of(collection, 0).logical_max, 0);
    EXPECT_EQ(input_of(collection, 1).logical_max, 1);
    EXPECT_EQ(collection.values(HidP_Input).at(0).LogicalMax, 1);
}

TEST(Capabilities, AValueCapabilityHoldsWhatTheItemsSay) {
    const auto collection = headset_with({{report_id, 3},
                                          {usage_page, 0x01},
                                          {usage, 0x02},
                                          {Tag::collection, logical},
                                          {usage, 0x30},
                                          {string_index, 4},
                                          {designator_minimum, 5},
                                          {designator_maximum, 6},
                                          {logical_minimum, -127},
                                          {logical_maximum, 127},
                                          {physical_minimum, -1000},
                                          {physical_maximum, 100000},
                                          {unit_exponent, -3},
                                          {unit, 0x1001},
                                          {report_size, 8},
                                          {report_count, 2},
                                          {input, data_variable | relative | null_state},
                                          {end_collection}});
    const HIDP_VALUE_CAPS cap = collection.values(HidP_Input).at(0);
    EXPECT_EQ(cap.UsagePage, 0x01);
    EXPECT_EQ(cap.ReportID, 3);
    EXPECT_FALSE(cap.IsAlias);
    EXPECT_EQ(cap.BitField, data_variable | relative | null_state);
    EXPECT_EQ(cap.LinkCollection, 1);
    EXPECT_EQ(cap.LinkUsage, 0x02);
    EXPECT_EQ(cap.LinkUsagePage, 0x01);
    EXPECT_FALSE(cap.IsRange);
    EXPECT_FALSE(cap.IsStringRange);
    EXPECT_TRUE(cap.IsDesignatorRange);
    EXPECT_FALSE(cap.IsAbsolute);
    EXPECT_TRUE(cap.HasNull);
    EXPECT_EQ(cap.BitSize, 8);
    EXPECT_EQ(cap.ReportCount, 2);
    EXPECT_EQ(cap.UnitsExp, 0xFFFFFFFD);
    EXPECT_EQ(cap.Units, 0x1001U);
    EXPECT_EQ(cap.LogicalMin, -127);
    EXPECT_EQ(cap.LogicalMax, 127);
    EXPECT_EQ(cap.PhysicalMin, -1000);
    EXPECT_EQ(cap.PhysicalMax, 100000);
    EXPECT_EQ(cap.NotRange.Usage, 0x30);
    EXPECT_EQ(cap.NotRange.Reserved1, 0x30);
    EXPECT_EQ(cap.NotRange.StringIndex, 4);
    EXPECT_EQ(cap.NotRange.Reserved2, 4);
    EXPECT_EQ(cap.Range.DesignatorMin, 5);
    EXPECT_EQ(cap.Range.DesignatorMax, 6);
    EXPECT_EQ(cap.NotRange.DataIndex, 0);
    EXPECT_EQ(cap.NotRange.Reserved4, 0);
}

TEST(Capabilities, DesignatorsBelongToTheUsagesInTheirOrder) {
    const auto collection = headset_with({{usage, hook_switch},
                                          {designator_index, 4},
                                          {usage, flash},
                                          {designator_index, 5},
                                          {report_size, 1},
                                          {report_count, 2},
                                          {input, data_variable}});
    EXPECT_EQ(input_of(collection, 0).designator_min, 5);
    EXPECT_EQ(input_of(collection, 1).designator_min, 4);
    EXPECT_FALSE(input_of(collection, 1).is_designator_range);
}

TEST(Capabilities, StringsBelongToTheUsagesInTheirOrder) {
    const auto collection = headset_with({{usage, hook_switch},
                                          {string_index, 4},
                                          {usage, flash},
                                          {string_index, 5},
                                          {usage, redial},
                                          {report_size, 1},
                                          {report_count, 3},
                                          {input, data_variable}});
    EXPECT_EQ(input_of(collection, 2).string_min, 4);
    EXPECT_EQ(input_of(collection, 1).string_min, 5);
    EXPECT_EQ(input_of(collection, 0).string_min, 5);
}

TEST(Capabilities, TheUnitExponentIsTheSignedItemNotTheNibbleThatItCodes) {
    const auto collection = headset_with(
        {{usage, 0x30}, {unit_exponent, 0x0E}, {report_size, 8}, {report_count, 1}, {input, data_variable}});
    EXPECT_EQ(collection.values(HidP_Input).at(0).UnitsExp, 0x0EU);
}

TEST(Capabilities, ALogicalMaximumThatOverflowsItsItemStaysNegative) {
    const auto collection = headset_with({{usage, 0x30},
                                          {logical_minimum, 0},
                                          {logical_maximum, 0xFF, 1},
                                          {report_size, 8},
                                          {report_count, 1},
                                          {input, data_variable}});
    EXPECT_EQ(collection.values(HidP_Input).at(0).LogicalMax, -1);
}

TEST(Capabilities, LocalItemsServeOneMainItemOnly) {
    const auto collection = headset_with({{report_size, 1},
                                          {report_count, 1},
                                          {usage, hook_switch},
                                          {input, data_variable},
                                          {input, data_variable},
                                          {usage, flash},
                                          {Tag::collection, logical},
                                          {input, data_variable},
                                          {usage, redial},
                                          {end_collection},
                                          {input, data_variable}});
    EXPECT_EQ(usages_of(collection), Usages{hook_switch});
}

TEST(Capabilities, AShortListIsFilledAndTheWholeNumberTold) {
    const auto collection = headset_with(
        {{usage, hook_switch}, {usage, flash}, {report_size, 1}, {report_count, 2}, {input, data_variable}});
    HIDP_BUTTON_CAPS caps[1];
    USHORT length = 1;
    EXPECT_EQ(hidp::parser().HidP_GetButtonCaps(HidP_Input, caps, &length, collection.data()),
              HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, 2);
    EXPECT_EQ(caps[0].NotRange.Usage, flash);
}

TEST(Capabilities, AKindThatTheDirectionLacksIsNotFound) {
    const auto collection =
        headset_with({{usage, hook_switch}, {report_size, 1}, {report_count, 1}, {input, data_variable}});
    USHORT length = 4;
    EXPECT_EQ(hidp::parser().HidP_GetValueCaps(HidP_Input, nullptr, &length, collection.data()),
              HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(length, 0);
    length = 4;
    EXPECT_EQ(hidp::parser().HidP_GetButtonCaps(HidP_Output, nullptr, &length, collection.data()),
              HIDP_STATUS_USAGE_NOT_FOUND);
}

TEST(Capabilities, AReportTypeThatThereIsNotIsRefused) {
    const auto collection =
        headset_with({{usage, hook_switch}, {report_size, 1}, {report_count, 1}, {input, data_variable}});
    const auto type = static_cast<HIDP_REPORT_TYPE>(HidP_Feature + 1);
    USHORT length = 0;
    EXPECT_EQ(hidp::parser().HidP_GetButtonCaps(type, nullptr, &length, collection.data()),
              HIDP_STATUS_INVALID_REPORT_TYPE);
    EXPECT_EQ(hidp::parser().HidP_GetValueCaps(type, nullptr, &length, collection.data()),
              HIDP_STATUS_INVALID_REPORT_TYPE);
    EXPECT_EQ(hidp::parser().HidP_MaxUsageListLength(type, 0, collection.data()), 0U);
}

}  // namespace
