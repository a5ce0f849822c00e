// Controls by their data indices: HidP_MaxDataListLength, HidP_GetData, HidP_SetData.
#include <gtest/gtest.h>
#include <utility>

#include "tests/platform/hidp/headset.h"

using namespace platform;
using namespace hidp_test;
using enum hidp::Tag;

namespace {

using Data = std::vector<std::pair<USHORT, ULONG>>;

Outcome<Data> get_data(const Collection& device, const Bytes& report) {
    ULONG length = hidp::parser().HidP_MaxDataListLength(HidP_Input, device.data());
    std::vector<HIDP_DATA> list(length);
    const NTSTATUS status = hidp::parser().HidP_GetData(HidP_Input, list.data(), &length, device.data(),
                                                        report.data(), static_cast<ULONG>(report.size()));
    Data data;
    for (ULONG i = 0; status == HIDP_STATUS_SUCCESS && i < length; ++i) {
        data.emplace_back(list[i].DataIndex, list[i].RawValue);
    }
    return {status, data};
}

/// The result is the length that the function leaves: on failure, the index of the offending entry.
Outcome<ULONG> set_data(const Collection& device, const Data& data, Bytes& report) {
    std::vector<HIDP_DATA> list;
    for (const auto& [index, value] : data) {
        list.push_back({index, 0, {value}});
    }
    auto length = static_cast<ULONG>(list.size());
    const NTSTATUS status = hidp::parser().HidP_SetData(HidP_Input, list.data(), &length, device.data(),
                                                        report.data(), static_cast<ULONG>(report.size()));
    return {status, length};
}

// Data indices of the keys below; usages that are declared one by one are numbered backwards.
constexpr USHORT flash_index = 0;
constexpr USHORT hook_index = 1;
constexpr USHORT volume_index = 2;
constexpr USHORT first_key_index = 3;

/// In report 1 two keys, a volume of six bits and an array of two keys out of twelve.
Collection phone() {
    return headset_with({{report_id, 1},
                         {report_size, 1},
                         {report_count, 2},
                         {usage, hook_switch},
                         {usage, flash},
                         {input, data_variable},
                         {report_size, 6},
                         {report_count, 1},
                         {logical_minimum, -32},
                         {logical_maximum, 31},
                         {usage, 0x30},
                         {input, data_variable},
                         {report_size, 8},
                         {report_count, 2},
                         {logical_minimum, 1},
                         {logical_maximum, 12},
                         {usage_minimum, 0xB0},
                         {usage_maximum, 0xBB},
                         {input, data_array}});
}

TEST(GetData, ListsButtonsThatAreSetAndAllValues) {
    const auto [status, data] = get_data(phone(), {1, 0b0000'0100, 0, 0});
    EXPECT_EQ(status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(data, (Data{{volume_index, 1}}));
    EXPECT_EQ(get_data(phone(), {1, 0b0000'0011, 0, 0}).result,
              (Data{{flash_index, 1}, {hook_index, 1}, {volume_index, 0}}));
}

TEST(GetData, ListsTheKeysOfAnArrayInTheOrderOfItsFields) {
    EXPECT_EQ(get_data(phone(), {1, 0, 4, 1}).result,
              (Data{{volume_index, 0}, {first_key_index + 3, 1}, {first_key_index, 1}}));
    EXPECT_EQ(get_data(phone(), {1, 0, 0, 13}).result, (Data{{volume_index, 0}})) << "no key has selector 13";
}

TEST(GetData, GivesValuesWithoutSign) {
    EXPECT_EQ(get_data(phone(), {1, 0b1111'1100, 0, 0}).result, (Data{{volume_index, 63}}));
}

TEST(GetData, ListsEachUsageOfARangeOfValues) {
    const auto device = headset_with({{report_size, 4},
                                      {report_count, 3},
                                      {usage_minimum, 0x30},
                                      {usage_maximum, 0x32},
                                      {input, data_variable}});
    EXPECT_EQ(get_data(device, {0, 0x21, 0x03}).result, (Data{{0, 1}, {1, 2}, {2, 3}}));
    Bytes report(3);
    EXPECT_EQ(set_data(device, {{2, 0xFF}, {0, 5}}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 0x05, 0x0F}));
}

TEST(GetData, GivesAButtonOfSeveralBitsOnce) {
    const auto device =
        headset_with({{report_size, 1}, {report_count, 8}, {usage, flash}, {input, data_variable}});
    EXPECT_EQ(get_data(device, {0, 0b0101'0000}).result, (Data{{0, 1}}));
}

TEST(GetData, GivesANullAsItStands) {
    const auto device = headset_with({{report_size, 4},
                                      {report_count, 2},
                                      {logical_minimum, 1},
                                      {logical_maximum, 8},
                                      {usage_minimum, 0x30},
                                      {usage_maximum, 0x31},
                                      {input, data_variable | null_state}});
    EXPECT_EQ(get_data(device, {0, 0xF0}).result, (Data{{0, 0}, {1, 15}}));
}

TEST(GetData, PassesOverValueArraysAndFieldsWithoutBits) {
    const auto device = headset_with({{report_size, 8},
                                      {report_count, 2},
                                      {usage, 0x30},
                                      {input, data_variable},
                                      {report_size, 0},
                                      {usage_minimum, 0x31},
                                      {usage_maximum, 0x32},
                                      {input, data_variable},
                                      {report_size, 1},
                                      {report_count, 1},
                                      {usage, flash},
                                      {input, data_variable}});
    EXPECT_EQ(get_data(device, {0, 0xFF, 0xFF, 1}).result, (Data{{3, 1}}));
}

TEST(GetData, PassesOverOtherReports) {
    const auto device = headset_with({{report_size, 8},
                                      {report_count, 1},
                                      {report_id, 1},
                                      {usage, 0x30},
                                      {input, data_variable},
                                      {report_id, 2},
                                      {usage, 0x31},
                                      {input, data_variable}});
    EXPECT_EQ(get_data(device, {2, 9}).result, (Data{{1, 9}}));
    const auto [status, data] = get_data(device, {3, 9});
    EXPECT_EQ(status, HIDP_STATUS_SUCCESS);
    EXPECT_TRUE(data.empty());
}

/// One bit with two names, of which the second has two usages.
Collection bit_named_twice() {
    return headset_with({{report_size, 1},
                         {report_count, 8},
                         {delimiter, 1},
                         {usage, hook_switch},
                         {usage_minimum, 0xB0},
                         {usage_maximum, 0xB1},
                         {delimiter, 0},
                         {input, data_variable}});
}

TEST(GetData, PassesOverAliases) {
    EXPECT_EQ(get_data(bit_named_twice(), {0, 3}).result, (Data{{0, 1}}));
}

TEST(GetData, NeedsRoom) {
    const auto device = phone();
    const Bytes report = {1, 3, 4, 5};
    HIDP_DATA room[2]{};
    ULONG length = 1;
    EXPECT_EQ(hidp::parser().HidP_GetData(HidP_Input, room, &length, device.data(), report.data(), 4),
              HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, 5U);
    EXPECT_EQ(room[0].RawValue, 1U);
    EXPECT_EQ(room[1].RawValue, 0U) << "no more than the room is filled";
}

TEST(GetData, ChecksItsArguments) {
    const auto device = phone();
    const Bytes report(5);
    const auto get = [&](HIDP_REPORT_TYPE type, PHIDP_PREPARSED_DATA data, ULONG report_length) {
        ULONG length = 0;
        return hidp::parser().HidP_GetData(type, nullptr, &length, data, report.data(), report_length);
    };
    EXPECT_EQ(get(static_cast<HIDP_REPORT_TYPE>(3), device.data(), 4), HIDP_STATUS_INVALID_REPORT_TYPE);
    EXPECT_EQ(get(HidP_Input, device.data(), 3), HIDP_STATUS_INVALID_REPORT_LENGTH);
    EXPECT_EQ(get(HidP_Input, device.data(), 5), HIDP_STATUS_INVALID_REPORT_LENGTH);
    EXPECT_EQ(get(HidP_Input, nullptr, 4), HIDP_STATUS_INVALID_PREPARSED_DATA);
    EXPECT_EQ(get(HidP_Output, device.data(), 0), HIDP_STATUS_REPORT_DOES_NOT_EXIST);
}

TEST(SetData, WhatItWritesIsListed) {
    const auto device = phone();
    const Data data = {{hook_index, 1}, {volume_index, 42}, {first_key_index + 11, 1}, {first_key_index, 1}};
    Bytes report(4);
    const auto [status, length] = set_data(device, data, report);
    EXPECT_EQ(status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(length, 4U);
    EXPECT_EQ(report, (Bytes{1, 0b1010'1001, 12, 1})) << "the id is set, too";
    EXPECT_EQ(get_data(device, report).result, data);
}

TEST(SetData, CutsAValueToItsField) {
    Bytes report(4);
    EXPECT_EQ(set_data(phone(), {{volume_index, 0xFFFFFFC1}}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{1, 0b0000'0100, 0, 0}));
}

TEST(SetData, TellsAButtonByItsOnAlone) {
    HIDP_DATA off_with_rubbish{};
    off_with_rubbish.DataIndex = hook_index;
    off_with_rubbish.RawValue = 0xFFFFFF00;
    Bytes report = {1, 1, 0, 0};
    ULONG length = 1;
    EXPECT_EQ(
        hidp::parser().HidP_SetData(HidP_Input, &off_with_rubbish, &length, phone().data(), report.data(), 4),
        HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{1, 0, 0, 0}));
}

TEST(SetData, ClearsButtons) {
    Bytes report = {1, 0b0000'0011, 4, 5};
    EXPECT_EQ(set_data(phone(), {{hook_index, 0}, {first_key_index + 3, 0}}, report).status,
              HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{1, 0b0000'0010, 5, 0})) << "an array's fields move up";
}

TEST(SetData, AButtonToClearThatIsNotSet) {
    Bytes report = {1, 0, 0, 0};
    for (const USHORT index : {hook_index, first_key_index}) {
        const auto [status, place] = set_data(phone(), {{volume_index, 0}, {index, 0}}, report);
        EXPECT_EQ(status, HIDP_STATUS_BUTTON_NOT_PRESSED);
        EXPECT_EQ(place, 1U);
    }
}

TEST(SetData, AnArrayWhoseFieldsRunOut) {
    Bytes report = {1, 0, 0, 0};
    const auto [status, place] =
        set_data(phone(), {{first_key_index, 1}, {first_key_index + 1, 1}, {first_key_index + 2, 1}}, report);
    EXPECT_EQ(status, HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(place, 2U);
    EXPECT_EQ(report, (Bytes{1, 0, 1, 2})) << "the entries before it are applied";
}

TEST(SetData, AnIndexBehindTheLast) {
    const auto device = phone();
    Bytes report(4);
    const auto [status, place] = set_data(device, {{hook_index, 1}, {first_key_index + 12, 1}}, report);
    EXPECT_EQ(status, HIDP_STATUS_DATA_INDEX_OUT_OF_RANGE);
    EXPECT_EQ(place, 1U);
    EXPECT_EQ(report, (Bytes{1, 1, 0, 0})) << "the entry before it is applied";
}

TEST(SetData, AnIndexThatOnlyAnAliasHas) {
    Bytes report(2);
    EXPECT_EQ(set_data(bit_named_twice(), {{0, 1}}, report).status, HIDP_STATUS_IS_VALUE_ARRAY);
    EXPECT_EQ(set_data(bit_named_twice(), {{1, 1}}, report).status, HIDP_STATUS_DATA_INDEX_NOT_FOUND);
    EXPECT_EQ(report, Bytes(2));
}

TEST(SetData, AKeyThatTheFieldIsTooSmallFor) {
    const auto device = headset_with({{report_size, 3},
                                      {report_count, 1},
                                      {usage_minimum, 0xB0},
                                      {usage_maximum, 0xBB},
                                      {input, data_array}});
    Bytes report(2);
    EXPECT_EQ(set_data(device, {{7, 1}}, report).status, HIDP_STATUS_DATA_INDEX_NOT_FOUND);
    EXPECT_EQ(set_data(device, {{6, 1}}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 7}));
}

TEST(SetData, TheUsageThatStandsForNothing) {
    const auto keyboard = headset_with({{report_size, 8},
                                        {report_count, 2},
                                        {usage_minimum, 0},
                                        {usage_maximum, 0x65},
                                        {input, data_array}});
    Bytes report = {0, 0x04, 0x00};
    EXPECT_EQ(set_data(keyboard, {{0, 1}}, report).status, HIDP_STATUS_DATA_INDEX_NOT_FOUND);
    EXPECT_EQ(set_data(keyboard, {{0, 0}}, report).status, HIDP_STATUS_DATA_INDEX_NOT_FOUND);
    EXPECT_EQ(set_data(keyboard, {{5, 1}}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 0x04, 0x05}));
}

TEST(SetData, OneUsageOfSeveralFieldsIsAValueArray) {
    const auto device = headset_with({{report_count, 2},
                                      {report_size, 8},
                                      {usage, 0x30},
                                      {input, data_variable},
                                      {usage, hook_switch},
                                      {usage, flash},
                                      {input, data_array},
                                      {report_size, 1},
                                      {usage, phone_mute},
                                      {input, data_variable}});
    const Bytes empty = device.empty_report(HidP_Input);
    Bytes report = empty;
    for (const USHORT index : {USHORT{0}, USHORT{1}, USHORT{2}, USHORT{3}}) {
        EXPECT_EQ(set_data(device, {{index, 1}}, report).status, HIDP_STATUS_IS_VALUE_ARRAY);
    }
    EXPECT_EQ(report, empty);
}

TEST(SetData, TheFirstEntryDecidesOnTheReport) {
    const auto device = headset_with({{report_size, 8},
                                      {report_count, 1},
                                      {report_id, 1},
                                      {usage, 0x30},
                                      {input, data_variable},
                                      {report_id, 2},
                                      {usage, 0x31},
                                      {input, data_variable}});
    Bytes report(2);
    const auto [status, place] = set_data(device, {{1, 5}, {0, 6}}, report);
    EXPECT_EQ(status, HIDP_STATUS_INCOMPATIBLE_REPORT_ID);
    EXPECT_EQ(place, 1U);
    EXPECT_EQ(report, (Bytes{2, 5}));
    report = {3, 0};
    EXPECT_EQ(set_data(device, {{0, 6}}, report).status, HIDP_STATUS_INCOMPATIBLE_REPORT_ID);
    EXPECT_EQ(report, (Bytes{3, 0}));
}

TEST(SetData, AnEmptyListIsForNoReport) {
    Bytes report(4);
    const auto [status, length] = set_data(phone(), {}, report);
    EXPECT_EQ(status, HIDP_STATUS_REPORT_DOES_NOT_EXIST);
    EXPECT_EQ(length, 0U);
}

TEST(SetData, ChecksItsArguments) {
    const auto device = phone();
    Bytes report(5);
    const HIDP_DATA control{};
    const auto set = [&](HIDP_REPORT_TYPE type, PHIDP_PREPARSED_DATA data, ULONG report_length) {
        ULONG length = 1;
        return hidp::parser().HidP_SetData(type, &control, &length, data, report.data(), report_length);
    };
    EXPECT_EQ(set(static_cast<HIDP_REPORT_TYPE>(3), device.data(), 4), HIDP_STATUS_INVALID_REPORT_TYPE);
    EXPECT_EQ(set(HidP_Input, device.data(), 3), HIDP_STATUS_INVALID_REPORT_LENGTH);
    EXPECT_EQ(set(HidP_Input, device.data(), 5), HIDP_STATUS_INVALID_REPORT_LENGTH);
    EXPECT_EQ(set(HidP_Input, nullptr, 4), HIDP_STATUS_INVALID_PREPARSED_DATA);
    EXPECT_EQ(set(HidP_Output, device.data(), 0), HIDP_STATUS_REPORT_DOES_NOT_EXIST);
    EXPECT_EQ(report, Bytes(5));
}

TEST(MaxDataListLength, CountsFieldsOfButtonsAndUsagesOfValues) {
    EXPECT_EQ(hidp::parser().HidP_MaxDataListLength(HidP_Input, phone().data()), 2U + 1U + 2U);
    const auto device = headset_with({{report_size, 8},
                                      {report_count, 5},
                                      {usage, 0x30},
                                      {input, data_variable},
                                      {usage_minimum, 0x31},
                                      {usage_maximum, 0x33},
                                      {input, data_variable}});
    EXPECT_EQ(hidp::parser().HidP_MaxDataListLength(HidP_Input, device.data()), 1U + 3U);
}

TEST(MaxDataListLength, OfWrongArgumentsIsZero) {
    const auto device = phone();
    EXPECT_EQ(hidp::parser().HidP_MaxDataListLength(HidP_Output, device.data()), 0U);
    EXPECT_EQ(hidp::parser().HidP_MaxDataListLength(static_cast<HIDP_REPORT_TYPE>(3), device.data()), 0U);
    EXPECT_EQ(hidp::parser().HidP_MaxDataListLength(HidP_Input, nullptr), 0U);
}

}  // namespace
