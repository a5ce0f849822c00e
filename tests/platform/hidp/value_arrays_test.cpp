// Values of one usage in several fields, read and written as a whole.
#include <gtest/gtest.h>

#include "tests/platform/hidp/headset.h"

using namespace platform;
using namespace hidp_test;
using enum hidp::Tag;

namespace {

constexpr USAGE vendor_page = 0xFF00;
constexpr USAGE samples = 0x01;

/// Three bits of another field, and an array of `count` fields behind them.
Collection array_of(std::int64_t count, std::int64_t size, std::int64_t flags = data_variable) {
    return headset_with({{usage_page, vendor_page},
                         {report_id, 7},
                         {report_count, 1},
                         {report_size, 3},
                         {input, constant},
                         {report_count, count},
                         {report_size, size},
                         {usage, samples},
                         {input, flags},
                         {report_count, 1},
                         {report_size, 5},
                         {input, constant}});
}

NTSTATUS set_array(const Collection& device, USAGE usage, const Bytes& values, Bytes& report) {
    return hidp::parser().HidP_SetUsageValueArray(HidP_Input, vendor_page, 0, usage, values.data(),
                                                  static_cast<USHORT>(values.size()), device.data(),
                                                  report.data(), static_cast<ULONG>(report.size()));
}

Outcome<Bytes> get_array(const Collection& device, USAGE usage, std::size_t room, const Bytes& report) {
    Bytes values(room, 0xA5);
    const NTSTATUS status = hidp::parser().HidP_GetUsageValueArray(
        HidP_Input, vendor_page, 0, usage, values.data(), static_cast<USHORT>(room), device.data(),
        report.data(), static_cast<ULONG>(report.size()));
    return {status, values};
}

TEST(ValueArray, IsWrittenAndReadAcrossBytes) {
    const auto device = array_of(3, 8);
    Bytes report = device.empty_report(HidP_Input);
    ASSERT_EQ(set_array(device, samples, {0x12, 0x34, 0xFF}, report), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, (Bytes{7, 0x90, 0xA0, 0xF9, 0x07})) << "shifted by three bits, the id set";
    const auto [status, values] = get_array(device, samples, 3, report);
    EXPECT_EQ(status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(values, (Bytes{0x12, 0x34, 0xFF}));
}

TEST(ValueArray, PacksFieldsThatAreNoBytes) {
    const auto device = array_of(3, 5);
    Bytes report = device.empty_report(HidP_Input);
    std::fill(report.begin(), report.end(), UCHAR{0xFF});
    report[0] = 7;
    const Bytes all_ones = report;
    ASSERT_EQ(set_array(device, samples, {0x00, 0x80}, report), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(device.value(HidP_Input, vendor_page, samples, report).result, 0U);
    EXPECT_EQ(get_array(device, samples, 2, report).result, (Bytes{0x00, 0x00})) << "bit 15 is no field's";
    ASSERT_EQ(set_array(device, samples, {0xFF, 0x7F}, report), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, all_ones) << "nothing around it was touched";
}

TEST(ValueArray, OfMoreThan32BitsAFieldIsWhole) {
    const auto device = array_of(2, 40);
    Bytes report = device.empty_report(HidP_Input);
    const Bytes values{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    ASSERT_EQ(set_array(device, samples, values, report), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(get_array(device, samples, values.size(), report).result, values);
}

TEST(ValueArray, NeedsRoomForAllFields) {
    const auto device = array_of(3, 6);
    Bytes report = device.empty_report(HidP_Input);
    EXPECT_EQ(set_array(device, samples, {1, 2}, report), HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(set_array(device, samples, {}, report), HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(report, device.empty_report(HidP_Input));
    const auto [status, values] = get_array(device, samples, 2, report);
    EXPECT_EQ(status, HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(values, (Bytes{0xA5, 0xA5}));
}

TEST(ValueArray, LeavesRoomBehindItAlone) {
    const auto device = array_of(3, 8);
    Bytes report = device.empty_report(HidP_Input);
    ASSERT_EQ(set_array(device, samples, {1, 2, 3, 0xFF, 0xFF}, report), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(get_array(device, samples, 5, report).result, (Bytes{1, 2, 3, 0xA5, 0xA5}));
}

TEST(ValueArray, IsNotAValueOfOneField) {
    const auto device = array_of(1, 8);
    Bytes report = device.empty_report(HidP_Input);
    EXPECT_EQ(set_array(device, samples, {1}, report), HIDP_STATUS_NOT_VALUE_ARRAY);
    EXPECT_EQ(get_array(device, samples, 1, report).status, HIDP_STATUS_NOT_VALUE_ARRAY);
}

TEST(ValueArray, IsNotARangeOfUsages) {
    const auto device = headset_with({{usage_page, vendor_page},
                                      {report_count, 3},
                                      {report_size, 8},
                                      {usage_minimum, samples},
                                      {usage_maximum, samples + 2},
                                      {input, data_variable}});
    Bytes report = device.empty_report(HidP_Input);
    EXPECT_EQ(set_array(device, samples, {1, 2, 3}, report), HIDP_STATUS_NOT_VALUE_ARRAY);
}

TEST(ValueArray, ChecksItsArguments) {
    const auto device = array_of(3, 8);
    Bytes report = device.empty_report(HidP_Input);
    const auto length = static_cast<ULONG>(report.size());
    Bytes values(3);
    const auto& parser = hidp::parser();
    const auto set = [&](HIDP_REPORT_TYPE type, USHORT link, USAGE usage, PHIDP_PREPARSED_DATA data,
                         ULONG report_length) {
        return parser.HidP_SetUsageValueArray(type, vendor_page, link, usage, values.data(), 3, data,
                                              report.data(), report_length);
    };
    EXPECT_EQ(set(static_cast<HIDP_REPORT_TYPE>(3), 0, samples, device.data(), length),
              HIDP_STATUS_INVALID_REPORT_TYPE);
    EXPECT_EQ(set(HidP_Input, 0, samples, device.data(), length - 1), HIDP_STATUS_INVALID_REPORT_LENGTH);
    EXPECT_EQ(set(HidP_Input, 1, samples, device.data(), length), HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(set(HidP_Input, 0, samples + 1, device.data(), length), HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(set(HidP_Input, 0, samples, nullptr, length), HIDP_STATUS_INVALID_PREPARSED_DATA);
    report[0] = 8;
    EXPECT_EQ(set(HidP_Input, 0, samples, device.data(), length), HIDP_STATUS_INCOMPATIBLE_REPORT_ID);
}

}  // namespace
