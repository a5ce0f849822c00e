// Values in reports: read, written, scaled.
#include <algorithm>
#include <gtest/gtest.h>
#include <ostream>

#include "tests/platform/hidp/scaling.h"

using namespace platform;
using namespace hidp_test;
using hidp::Tag;
using enum hidp::Tag;

namespace {

/// One field of `size` bits that begins at bit 3 of its report.
Collection value_with(Range logical, Range physical, std::int64_t size, std::int64_t flags = data_variable) {
    return headset_with({{usage_page, generic_desktop},
                         {report_count, 1},
                         {report_size, 3},
                         {input, constant},
                         {logical_minimum, logical.min},
                         {logical_maximum, logical.max},
                         {physical_minimum, physical.min},
                         {physical_maximum, physical.max},
                         {report_size, size},
                         {usage, x},
                         {input, flags}});
}

class ValueOfSize : public testing::TestWithParam<int> {};

TEST_P(ValueOfSize, IsWrittenAndReadAcrossBytes) {
    const int size = GetParam();
    const auto device = value_with({0, 1}, {0, 0}, size);
    const ULONG all_ones = 0xFFFFFFFF >> (32 - size);
    for (const ULONG value : {all_ones, ULONG{1}, all_ones & 0xA5A5A5A5}) {
        Bytes report = device.empty_report(HidP_Input);
        EXPECT_EQ(device.set_value(HidP_Input, generic_desktop, x, value, report), HIDP_STATUS_SUCCESS);
        EXPECT_EQ(device.value(HidP_Input, generic_desktop, x, report).result, value);
    }
}

TEST_P(ValueOfSize, LeavesTheBitsAroundItAlone) {
    const auto device = value_with({0, 1}, {0, 0}, GetParam());
    Bytes report = device.empty_report(HidP_Input);
    const Bytes zeros = report;
    std::fill(report.begin() + 1, report.end(), UCHAR{0xFF});
    const Bytes ones = report;
    device.set_value(HidP_Input, generic_desktop, x, 0, report);
    EXPECT_NE(report, ones);
    device.set_value(HidP_Input, generic_desktop, x, 0xFFFFFFFF, report);
    EXPECT_EQ(report, ones);
    report = zeros;
    device.set_value(HidP_Input, generic_desktop, x, 0xFFFFFFFF, report);
    EXPECT_NE(report, zeros);
    device.set_value(HidP_Input, generic_desktop, x, 0, report);
    EXPECT_EQ(report, zeros);
}

INSTANTIATE_TEST_SUITE_P(Bits, ValueOfSize, testing::Values(2, 5, 6, 8, 12, 13, 16, 24, 29, 31, 32),
                         testing::PrintToStringParamName());

TEST(UsageValue, TakesItsPlaceInTheReport) {
    const auto device = value_with({0, 1}, {0, 0}, 12);
    Bytes report = device.empty_report(HidP_Input);
    device.set_value(HidP_Input, generic_desktop, x, 0xABC, report);
    EXPECT_EQ(report, (Bytes{0, 0xE0, 0x55}));
}

TEST(UsageValue, IsCutToItsField) {
    const auto device = value_with({0, 1}, {0, 0}, 5);
    Bytes report = device.empty_report(HidP_Input);
    EXPECT_EQ(device.set_value(HidP_Input, generic_desktop, x, 0x1234567F, report), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 0xF8}));
}

TEST(UsageValue, IsReadWithoutSign) {
    const auto device = value_with({-8, 7}, {0, 0}, 4);
    EXPECT_EQ(device.value(HidP_Input, generic_desktop, x, {0, 0x78}).result, 0xFU);
}

TEST(UsageValue, OfAFieldLongerThan32BitsIsItsLowestBits) {
    const auto device = headset_with({{usage_page, generic_desktop},
                                      {usage, x},
                                      {report_size, 64},
                                      {report_count, 1},
                                      {feature, data_variable}});
    Bytes report = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(device.value(HidP_Feature, generic_desktop, x, report).result, 0x04030201U);
    EXPECT_EQ(device.set_value(HidP_Feature, generic_desktop, x, 0xF4F3F2F1, report), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 0xF1, 0xF2, 0xF3, 0xF4, 5, 6, 7, 8}));
}

TEST(UsageValue, OfAValueArrayIsItsFirstField) {
    const auto device = headset_with({{usage_page, generic_desktop},
                                      {usage, x},
                                      {report_size, 8},
                                      {report_count, 3},
                                      {output, data_variable}});
    Bytes report = {0, 1, 2, 3};
    EXPECT_EQ(device.value(HidP_Output, generic_desktop, x, report).result, 1U);
    EXPECT_EQ(device.set_value(HidP_Output, generic_desktop, x, 9, report), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{0, 9, 2, 3}));
}

TEST(UsageValue, OfNoBitsIsZero) {
    const auto device = headset_with({{usage_page, generic_desktop},
                                      {usage_minimum, x},
                                      {usage_maximum, y},
                                      {report_size, 0},
                                      {report_count, 2},
                                      {input, data_variable},
                                      {report_size, 8},
                                      {report_count, 1},
                                      {input, constant}});
    Bytes report = {0, 0xFF};
    EXPECT_EQ(device.set_value(HidP_Input, generic_desktop, y, 5, report), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(device.value(HidP_Input, generic_desktop, y, report).result, 0U);
    EXPECT_EQ(report, (Bytes{0, 0xFF}));
    EXPECT_EQ(device.values(HidP_Input).at(0).ReportCount, 1);
}

TEST(UsageValue, OfARangeHasItsOwnField) {
    const auto device = headset_with({{usage_page, generic_desktop},
                                      {usage_minimum, x},
                                      {usage_maximum, y},
                                      {report_size, 8},
                                      {report_count, 2},
                                      {input, data_variable}});
    const Bytes report = {0, 5, 6};
    EXPECT_EQ(device.value(HidP_Input, generic_desktop, x, report).result, 5U);
    EXPECT_EQ(device.value(HidP_Input, generic_desktop, y, report).result, 6U);
    EXPECT_EQ(device.value(HidP_Input, generic_desktop, y + 1, report).status, HIDP_STATUS_USAGE_NOT_FOUND);
}

TEST(UsageValue, GivesTheReportItsId) {
    const auto device = headset_with({{usage_page, generic_desktop},
                                      {report_id, 7},
                                      {usage, x},
                                      {report_size, 8},
                                      {report_count, 1},
                                      {output, data_variable}});
    Bytes report = {0, 0};
    EXPECT_EQ(device.set_value(HidP_Output, generic_desktop, x, 3, report), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{7, 3}));
    report[0] = 8;
    EXPECT_EQ(device.set_value(HidP_Output, generic_desktop, x, 4, report),
              HIDP_STATUS_INCOMPATIBLE_REPORT_ID);
    EXPECT_EQ(device.value(HidP_Output, generic_desktop, x, report).status,
              HIDP_STATUS_INCOMPATIBLE_REPORT_ID);
    EXPECT_EQ(report, (Bytes{8, 3}));
}

struct Scaling {
    const char* name;
    Range logical;
    Range physical;
    std::int64_t size;
    ULONG raw;
    NTSTATUS status;
    LONG scaled;
    std::int64_t flags = data_variable;
};

void PrintTo(const Scaling& scaling, std::ostream* out) {
    *out << scaling.name;
}

class ScaledUsageValue : public testing::TestWithParam<Scaling> {};

TEST_P(ScaledUsageValue, IsScaledToThePhysicalRange) {
    const Scaling& expected = GetParam();
    const auto device = value_with(expected.logical, expected.physical, expected.size, expected.flags);
    Bytes report = device.empty_report(HidP_Input);
    device.set_value(HidP_Input, generic_desktop, x, expected.raw, report);
    const auto [status, scaled] = device.scaled(HidP_Input, generic_desktop, x, report);
    EXPECT_EQ(status, expected.status);
    EXPECT_EQ(scaled, expected.scaled);
}

const Scaling scalings[] = {
    {"WithoutPhysicalRange", {0, 255}, {0, 0}, 8, 200, HIDP_STATUS_SUCCESS, 200},
    {"NegativeWithoutPhysicalRange", {-128, 127}, {0, 0}, 8, 0x80, HIDP_STATUS_SUCCESS, -128},
    {"MinusOne", {-128, 127}, {0, 0}, 8, 0xFF, HIDP_STATUS_SUCCESS, -1},
    {"MinusOneOf32Bits", {lowest, highest}, {0, 0}, 32, 0xFFFFFFFF, HIDP_STATUS_SUCCESS, -1},
    {"ToALargerRange", {0, 7}, {0, 315}, 4, 3, HIDP_STATUS_SUCCESS, 135},
    {"ToASmallerRange", {0, 255}, {0, 15}, 8, 128, HIDP_STATUS_SUCCESS, 7},
    {"ToANegativeRange", {0, 100}, {-50, 50}, 8, 25, HIDP_STATUS_SUCCESS, -25},
    {"FromANegativeRange", {-2, 2}, {0, 100}, 3, 7, HIDP_STATUS_SUCCESS, 25},
    {"OverTheWholeRange", {lowest, highest}, {lowest, highest}, 32, 0x7FFFFFFF, HIDP_STATUS_SUCCESS, highest},
    {"BelowTheRange", {1, 8}, {0, 0}, 4, 0, HIDP_STATUS_VALUE_OUT_OF_RANGE, 0},
    {"AboveTheRange", {1, 8}, {0, 0}, 4, 9, HIDP_STATUS_VALUE_OUT_OF_RANGE, 0},
    {"NullBelowTheRange", {1, 8}, {0, 315}, 4, 0, HIDP_STATUS_NULL, 0, with_null},
    {"NullAboveTheRange", {1, 8}, {0, 315}, 4, 9, HIDP_STATUS_NULL, 0, with_null},
    {"WithNullStateInRange", {1, 8}, {0, 315}, 4, 8, HIDP_STATUS_SUCCESS, 315, with_null},
    {"LogicalMinimumAboveMaximum", {0, -1}, {0, 0}, 8, 5, HIDP_STATUS_BAD_LOG_PHY_VALUES, 0},
    {"LogicalMinimumEqualToMaximum", {5, 5}, {0, 0}, 8, 5, HIDP_STATUS_BAD_LOG_PHY_VALUES, 0},
    {"PhysicalMinimumAboveMaximum", {0, 255}, {10, 5}, 8, 5, HIDP_STATUS_BAD_LOG_PHY_VALUES, 0},
    {"BadRangeBeforeNull", {0, -1}, {0, 0}, 8, 5, HIDP_STATUS_BAD_LOG_PHY_VALUES, 0, with_null},
};

INSTANTIATE_TEST_SUITE_P(Each, ScaledUsageValue, testing::ValuesIn(scalings),
                         [](const auto& test) { return test.param.name; });

TEST(UsageValue, OfAnUnknownUsageIsNotScaled) {
    const auto device = value_with({0, 255}, {0, 0}, 8);
    const Bytes report = device.empty_report(HidP_Input);
    LONG scaled = 77;
    EXPECT_EQ(
        hidp::parser().HidP_GetScaledUsageValue(HidP_Input, generic_desktop, 0, y, &scaled, device.data(),
                                                report.data(), static_cast<ULONG>(report.size())),
        HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(scaled, 77);
}

}  // namespace
