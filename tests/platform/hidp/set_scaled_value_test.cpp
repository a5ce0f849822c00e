// HidP_SetScaledUsageValue.
#include <gtest/gtest.h>
#include <ostream>

#include "tests/platform/hidp/scaling.h"

using namespace platform;
using namespace hidp_test;
using enum hidp::Tag;

namespace {

constexpr UCHAR id = 7;

/// One field behind three bits that belong to nothing.
Collection output_with(Range logical, Range physical, std::int64_t size, std::int64_t flags = data_variable) {
    return headset_with({{usage_page, generic_desktop},
                         {report_id, id},
                         {report_count, 1},
                         {report_size, 3},
                         {output, constant},
                         {logical_minimum, logical.min},
                         {logical_maximum, logical.max},
                         {physical_minimum, physical.min},
                         {physical_maximum, physical.max},
                         {report_size, size},
                         {usage, x},
                         {output, flags}});
}

NTSTATUS set_scaled(const Collection& device, LONG value, Bytes& report) {
    return hidp::parser().HidP_SetScaledUsageValue(HidP_Output, generic_desktop, 0, x, value, device.data(),
                                                   report.data(), static_cast<ULONG>(report.size()));
}

struct Setting {
    const char* name;
    Range logical;
    Range physical;
    std::int64_t size;
    LONG scaled;
    NTSTATUS status;
    ULONG raw;  ///< what the field holds then; all bits, as before, where it could not be set
    std::int64_t flags = data_variable;
};

void PrintTo(const Setting& setting, std::ostream* out) {
    *out << setting.name;
}

class SetScaledUsageValue : public testing::TestWithParam<Setting> {};

TEST_P(SetScaledUsageValue, ScalesToTheLogicalRange) {
    const Setting& expected = GetParam();
    const auto device = output_with(expected.logical, expected.physical, expected.size, expected.flags);
    Bytes report(device.empty_report(HidP_Output).size(), 0xFF);
    report[0] = id;
    EXPECT_EQ(set_scaled(device, expected.scaled, report), expected.status);
    EXPECT_EQ(device.value(HidP_Output, generic_desktop, x, report).result, expected.raw);
}

const Setting settings[] = {
    {"WithoutPhysicalRange", {0, 255}, {0, 0}, 8, 200, HIDP_STATUS_SUCCESS, 200},
    {"NegativeWithoutPhysicalRange", {-128, 127}, {0, 0}, 8, -128, HIDP_STATUS_SUCCESS, 0x80},
    {"MinusOneWithoutPhysicalRange", {-128, 127}, {0, 0}, 8, -1, HIDP_STATUS_SUCCESS, 0xFF},
    {"Of32BitsWithoutPhysicalRange", {lowest, highest}, {0, 0}, 32, -5, HIDP_STATUS_SUCCESS, 0xFFFFFFFB},
    {"FromALargerRange", {0, 7}, {0, 315}, 4, 135, HIDP_STATUS_SUCCESS, 3},
    {"FromASmallerRange", {0, 255}, {0, 15}, 8, 7, HIDP_STATUS_SUCCESS, 112},
    {"FromANegativeRange", {0, 100}, {-50, 50}, 8, -25, HIDP_STATUS_SUCCESS, 25},
    {"ToANegativeRange", {-2, 2}, {0, 100}, 3, 25, HIDP_STATUS_SUCCESS, 7},
    {"PhysicalMinimum", {0, 7}, {-50, 50}, 4, -50, HIDP_STATUS_SUCCESS, 0},
    {"PhysicalMaximum", {0, 7}, {-50, 50}, 4, 50, HIDP_STATUS_SUCCESS, 7},
    // (4096 + 458752) * 32768 is -2013265920 in 32 bits.
    {"OverflowingAsOnWindows", {0, 0x7FFF}, {-458752, 262143}, 32, 4096, HIDP_STATUS_SUCCESS, 0xFFFFF518},
    {"FromAllThatALongHas", {1, 200}, {lowest, highest}, 8, lowest, HIDP_STATUS_SUCCESS, 1},
    {"BelowTheRange", {0, 7}, {-50, 50}, 4, -51, HIDP_STATUS_VALUE_OUT_OF_RANGE, 15},
    {"AboveTheRange", {0, 7}, {-50, 50}, 4, 51, HIDP_STATUS_VALUE_OUT_OF_RANGE, 15},
    {"OutsideTheLogicalRange", {1, 8}, {0, 0}, 4, 0, HIDP_STATUS_VALUE_OUT_OF_RANGE, 15},
    {"OutsideTheRangeWithNullState", {1, 8}, {0, 315}, 4, 316, HIDP_STATUS_VALUE_OUT_OF_RANGE, 15, with_null},
    {"WithNullStateInRange", {1, 8}, {0, 315}, 4, 315, HIDP_STATUS_SUCCESS, 8, with_null},
    {"LogicalMinimumAboveMaximum", {0, -1}, {0, 0}, 8, 0, HIDP_STATUS_BAD_LOG_PHY_VALUES, 0xFF},
    {"PhysicalMinimumAboveMaximum", {0, 255}, {10, 5}, 8, 7, HIDP_STATUS_BAD_LOG_PHY_VALUES, 0xFF},
    {"PhysicalMinimumEqualToMaximum", {0, 255}, {5, 5}, 8, 5, HIDP_STATUS_BAD_LOG_PHY_VALUES, 0xFF},
};

INSTANTIATE_TEST_SUITE_P(Each, SetScaledUsageValue, testing::ValuesIn(settings),
                         [](const auto& test) { return test.param.name; });

TEST(SetScaledUsageValueOf, AFieldLeavesTheBitsAroundItAlone) {
    const auto device = output_with({0, 7}, {0, 70}, 3);
    Bytes report = {id, 0xFF};
    EXPECT_EQ(set_scaled(device, 0, report), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{id, 0b1100'0111}));
}

TEST(SetScaledUsageValueOf, AnEmptyReportGivesItItsId) {
    const auto device = output_with({0, 31}, {0, 0}, 5);
    Bytes report = {0, 0};
    EXPECT_EQ(set_scaled(device, 31, report), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{id, 0xF8}));
    report = {0, 0};
    EXPECT_EQ(set_scaled(device, 32, report), HIDP_STATUS_VALUE_OUT_OF_RANGE);
    EXPECT_EQ(report, (Bytes{0, 0}));
}

TEST(SetScaledUsageValueOf, ARangeGoesToTheUsagesField) {
    const auto device = headset_with({{usage_page, generic_desktop},
                                      {logical_maximum, 100},
                                      {report_size, 8},
                                      {report_count, 3},
                                      {usage_minimum, x - 1},
                                      {usage_maximum, x + 1},
                                      {output, data_variable}});
    Bytes report(4);
    EXPECT_EQ(set_scaled(device, 50, report), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 0, 50, 0}));
}

TEST(SetScaledUsageValueOf, AValueArrayGoesToItsFirstField) {
    const auto device = headset_with({{usage_page, generic_desktop},
                                      {logical_maximum, 100},
                                      {report_size, 8},
                                      {report_count, 2},
                                      {usage, x},
                                      {output, data_variable}});
    Bytes report = {0, 1, 2};
    EXPECT_EQ(set_scaled(device, 50, report), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 50, 2}));
}

TEST(SetScaledUsageValueOf, WrongArguments) {
    const auto device = output_with({0, 31}, {0, 0}, 5);
    Bytes report(3);
    const auto set = [&](HIDP_REPORT_TYPE type, USAGE page, USHORT link, USAGE wanted,
                         PHIDP_PREPARSED_DATA data, ULONG length) {
        return hidp::parser().HidP_SetScaledUsageValue(type, page, link, wanted, 1, data, report.data(),
                                                       length);
    };
    const auto data = device.data();
    EXPECT_EQ(set(no_type, generic_desktop, 0, x, data, 2), HIDP_STATUS_INVALID_REPORT_TYPE);
    EXPECT_EQ(set(HidP_Output, generic_desktop, 0, x, data, 3), HIDP_STATUS_INVALID_REPORT_LENGTH);
    EXPECT_EQ(set(HidP_Input, generic_desktop, 0, x, data, 0), HIDP_STATUS_REPORT_DOES_NOT_EXIST);
    EXPECT_EQ(set(HidP_Output, generic_desktop, 0, x, nullptr, 2), HIDP_STATUS_INVALID_PREPARSED_DATA);
    EXPECT_EQ(set(HidP_Output, led_page, 0, x, data, 2), HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(set(HidP_Output, generic_desktop, 1, x, data, 2), HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(set(HidP_Output, generic_desktop, 0, x + 1, data, 2), HIDP_STATUS_USAGE_NOT_FOUND);
    report[0] = id + 1;
    EXPECT_EQ(set(HidP_Output, generic_desktop, 0, x, data, 2), HIDP_STATUS_INCOMPATIBLE_REPORT_ID);
    EXPECT_EQ(report, (Bytes{id + 1, 0, 0}));
}

}  // namespace
