// What the worst descriptors cost, and that work on reports allocates nothing.
#include "tests/support/allocations.h"

#include <gtest/gtest.h>
#include <ostream>

#include "platform/hidp/limits.h"
#include "tests/hidp/headset.h"

using namespace platform;
using namespace hidp_test;
using hidp::Tag;
using test_support::AllocationMeter;
using enum hidp::Tag;

namespace {

constexpr std::size_t memory_limit = 1024 * 1024;

/// A full descriptor: the frame of a collection, and one piece again and again.
Bytes filled_with(const Bytes& frame, const Bytes& piece, const Bytes& end) {
    Bytes bytes = frame;
    while (bytes.size() + piece.size() + end.size() <= hidp::max_descriptor_size) {
        bytes.insert(bytes.end(), piece.begin(), piece.end());
    }
    bytes.insert(bytes.end(), end.begin(), end.end());
    return bytes;
}

Bytes repeated(std::size_t times, const Bytes& piece) {
    Bytes bytes;
    for (std::size_t i = 0; i < times; ++i) {
        bytes.insert(bytes.end(), piece.begin(), piece.end());
    }
    return bytes;
}

struct Costly {
    const char* name;
    Bytes descriptor;
};

void PrintTo(const Costly& costly, std::ostream* out) {
    *out << costly.name;
}

class CostlyDescriptor : public testing::TestWithParam<Costly> {};

TEST_P(CostlyDescriptor, StaysWithinTheMemoryLimit) {
    const AllocationMeter meter;
    const auto parsed = hidp::parse(GetParam().descriptor);
    EXPECT_EQ(parsed.collections.empty(), parsed.error.has_value());
    EXPECT_LT(meter.peak_bytes(), memory_limit);
}

Bytes frame(std::int64_t size, std::int64_t count) {
    return descriptor({{Tag::collection, application}, {report_size, size}, {report_count, count}});
}

/// One report id after the other, three fields each.
Bytes many_reports() {
    Bytes bytes = frame(1, 1);
    for (int id = 255; id > 0; --id) {
        const Bytes fields =
            descriptor({{report_id, id}, {input, constant}, {output, constant}, {feature, constant}});
        bytes.insert(bytes.end(), fields.begin(), fields.end());
    }
    bytes.push_back(0xC0);
    return bytes;
}

const Bytes end = {0xC0};
const Bytes bare_usage = {0x08};
const Bytes usage_and_input = {0x08, 0x80};
const Bytes empty_collection = {0xA0, 0xC0};
const Bytes open_collection = {0xA0};
const Bytes widest_range = {0x1B, 0x00, 0x00, 0x00, 0x00, 0x2B, 0xFF, 0xFF, 0x00, 0x00};

const Costly costly_descriptors[] = {
    {"UsagesWithoutEnd", filled_with(frame(8, 1), bare_usage, {})},
    {"OneCapabilityInTwoBytes", filled_with(frame(8, 1), usage_and_input, end)},
    {"EmptyCollections", filled_with({}, empty_collection, {})},
    {"AsManyCollectionsAsAllowed", repeated(hidp::max_collections, empty_collection)},
    {"NestedCollections", filled_with({}, open_collection, {})},
    {"WidestRanges", filled_with(frame(8, 65535), widest_range, end)},
    {"ManyReports", many_reports()},
};

INSTANTIATE_TEST_SUITE_P(Each, CostlyDescriptor, testing::ValuesIn(costly_descriptors),
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
    EXPECT_EQ(meter.allocations(), 0U);
}

TEST(AllocationMeterItself, CountsAnAllocation) {
    const AllocationMeter meter;
    const Bytes bytes(1000);
    EXPECT_EQ(meter.allocations(), 1U);
    EXPECT_GE(meter.peak_bytes(), bytes.size());
}

}  // namespace
