// What the worst descriptors cost, and that work on reports allocates nothing.
#include "tests/support/allocations.h"

#include <gtest/gtest.h>

#include "tests/platform/hidp/costly_descriptors.h"
#include "tests/platform/hidp/headset.h"

using namespace platform;
using namespace hidp_test;
using hidp::Tag;
using test_support::AllocationMeter;
using enum hidp::Tag;

namespace {

constexpr std::size_t memory_limit = 1024 * 1024;

class CostlyDescriptor : public testing::TestWithParam<Costly> {};

TEST_P(CostlyDescriptor, StaysWithinTheMemoryLimit) {
    const AllocationMeter meter;
    const auto parsed = hidp::parse(GetParam().descriptor);
    EXPECT_EQ(parsed.collections.empty(), parsed.error.has_value());
    EXPECT_LT(meter.peak_bytes(), memory_limit);
}

INSTANTIATE_TEST_SUITE_P(Each, CostlyDescriptor, testing::ValuesIn(costly_descriptors()),
                         [](const auto& test) { return test.param.name; });

TEST(WorkOnReports, AllocatesNothing) {
    const auto headset = headset_with({{usage_page, led_page},
                                       {report_size, 1},
                                       {report_count, 1},
                                       {usage, led_mute},
                                       {output, data_variable},
                                       {report_size, 7},
                                       {logical_maximum, 100},
                                       {usage, led_ring},
                                       {output, data_variable},
                                       {report_size, 8},
                                       {usage_page, telephony},
                                       {usage_minimum, 0xB0},
                                       {usage_maximum, 0xBB},
                                       {output, data_array}});
    UCHAR report[3] = {};
    USAGE led[1] = {led_mute};
    USAGE key[1] = {0xB3};
    ULONG length = 1;
    ULONG value = 0;
    LONG scaled = 0;
    USAGE_AND_PAGE all_set[2] = {};
    ULONG set_count = 2;
    HIDP_DATA controls[3] = {};
    ULONG control_count = 3;
    const auto& parser = hidp::parser();
    const PHIDP_PREPARSED_DATA data = headset.data();

    const AllocationMeter meter;
    ASSERT_EQ(parser.HidP_SetUsages(HidP_Output, led_page, 0, led, &length, data, report, 3),
              HIDP_STATUS_SUCCESS);
    ASSERT_EQ(parser.HidP_SetUsages(HidP_Output, telephony, 0, key, &length, data, report, 3),
              HIDP_STATUS_SUCCESS);
    ASSERT_EQ(parser.HidP_SetUsageValue(HidP_Output, led_page, 0, led_ring, 5, data, report, 3),
              HIDP_STATUS_SUCCESS);
    ASSERT_EQ(parser.HidP_GetUsages(HidP_Output, telephony, 0, key, &length, data, report, 3),
              HIDP_STATUS_SUCCESS);
    ASSERT_EQ(parser.HidP_GetUsageValue(HidP_Output, led_page, 0, led_ring, &value, data, report, 3),
              HIDP_STATUS_SUCCESS);
    ASSERT_EQ(parser.HidP_GetScaledUsageValue(HidP_Output, led_page, 0, led_ring, &scaled, data, report, 3),
              HIDP_STATUS_SUCCESS);
    ASSERT_EQ(parser.HidP_UnsetUsages(HidP_Output, telephony, 0, key, &length, data, report, 3),
              HIDP_STATUS_SUCCESS);
    ASSERT_EQ(parser.HidP_SetScaledUsageValue(HidP_Output, led_page, 0, led_ring, 9, data, report, 3),
              HIDP_STATUS_SUCCESS);
    ASSERT_EQ(parser.HidP_GetUsagesEx(HidP_Output, 0, all_set, &set_count, data, report, 3),
              HIDP_STATUS_SUCCESS);
    ASSERT_EQ(parser.HidP_GetData(HidP_Output, controls, &control_count, data, report, 3),
              HIDP_STATUS_SUCCESS);
    ASSERT_EQ(parser.HidP_SetData(HidP_Output, controls, &control_count, data, report, 3),
              HIDP_STATUS_SUCCESS);
    EXPECT_EQ(meter.allocations(), 0U);
}

TEST(AllocationMeterItself, CountsAnAllocation) {
    const AllocationMeter meter;
    const Bytes bytes(1000);
    EXPECT_EQ(meter.allocations(), 1U);
    EXPECT_GE(meter.peak_bytes(), bytes.size());
}

}  // namespace
