// HidP_InitializeReportForID.
#include <gtest/gtest.h>

#include "tests/platform/hidp/headset.h"

using namespace platform;
using namespace hidp_test;
using enum hidp::Tag;

namespace {

NTSTATUS initialize(const Collection& device, HIDP_REPORT_TYPE type, UCHAR id, Bytes& report) {
    return hidp::parser().HidP_InitializeReportForID(type, id, device.data(), report.data(),
                                                     static_cast<ULONG>(report.size()));
}

struct NullState {
    const char* name;
    std::int64_t logical_min;
    std::int64_t logical_max;
    std::int64_t size;
    ULONG empty;  ///< what the field holds in an empty report
};

void PrintTo(const NullState& state, std::ostream* out) {
    *out << state.name;
}

class EmptyValue : public testing::TestWithParam<NullState> {
  protected:
    Bytes empty_report(std::int64_t flags) const {
        const NullState& state = GetParam();
        const auto device = headset_with({{usage_page, generic_desktop},
                                          {report_count, 2},
                                          {report_size, state.size},
                                          {logical_minimum, state.logical_min},
                                          {logical_maximum, state.logical_max},
                                          {usage, x},
                                          {input, flags}});
        Bytes report = device.empty_report(HidP_Input);
        std::fill(report.begin(), report.end(), UCHAR{0x5A});
        EXPECT_EQ(initialize(device, HidP_Input, 0, report), HIDP_STATUS_SUCCESS);
        Bytes values(report.size() - 1);
        EXPECT_EQ(hidp::parser().HidP_GetUsageValueArray(HidP_Input, generic_desktop, 0, x, values.data(),
                                                         static_cast<USHORT>(values.size()), device.data(),
                                                         report.data(), static_cast<ULONG>(report.size())),
                  HIDP_STATUS_SUCCESS);
        EXPECT_EQ(device.value(HidP_Input, generic_desktop, x, report).result,
                  (flags & null_state) != 0 ? state.empty : 0U);
        return report;
    }
};

TEST_P(EmptyValue, IsNullWhereThereIsANullState) {
    const Bytes report = empty_report(data_variable | null_state);
    EXPECT_EQ(report[0], 0);
}

TEST_P(EmptyValue, IsZeroWithoutOne) {
    const Bytes report = empty_report(data_variable);
    EXPECT_EQ(report, Bytes(report.size()));
}

const NullState null_states[] = {
    {"ZeroWhereItIsOutside", 1, 8, 4, 0},           {"AllBitsForAHatSwitch", 0, 7, 4, 0xF},
    {"AllBitsWhereZeroIsInside", 0, 0x7F, 8, 0xFF}, {"BehindTheMaximumWhereAllBitsAreMinusOne", -3, 3, 4, 4},
    {"ZeroWhereNoValueIsOutside", -8, 7, 4, 0},     {"InAFieldOf32Bits", 0, 0x7FFFFFFF, 32, 0xFFFFFFFF},
};

INSTANTIATE_TEST_SUITE_P(Each, EmptyValue, testing::ValuesIn(null_states),
                         [](const auto& test) { return test.param.name; });

/// A button in report 1, a value in report 2, and nothing but filler in report 3.
Collection three_reports() {
    return headset_with({{report_size, 8},
                         {report_count, 1},
                         {report_id, 1},
                         {usage, hook_switch},
                         {input, data_array},
                         {report_id, 2},
                         {usage, phone_mute},
                         {input, data_variable},
                         {report_id, 3},
                         {input, constant},
                         {output, constant}});
}

TEST(EmptyReport, HasItsIdAndNothingElse) {
    const auto device = three_reports();
    for (const UCHAR id : {UCHAR{1}, UCHAR{2}}) {
        Bytes report(2, 0xFF);
        EXPECT_EQ(initialize(device, HidP_Input, id, report), HIDP_STATUS_SUCCESS);
        EXPECT_EQ(report, (Bytes{id, 0}));
    }
}

TEST(EmptyReport, DoesNotExistWithoutAControl) {
    const auto device = three_reports();
    Bytes report(2, 0xFF);
    EXPECT_EQ(initialize(device, HidP_Input, 3, report), HIDP_STATUS_REPORT_DOES_NOT_EXIST);
    EXPECT_EQ(initialize(device, HidP_Input, 4, report), HIDP_STATUS_REPORT_DOES_NOT_EXIST);
    EXPECT_EQ(initialize(device, HidP_Input, 0, report), HIDP_STATUS_REPORT_DOES_NOT_EXIST);
    EXPECT_EQ(initialize(device, HidP_Output, 3, report), HIDP_STATUS_REPORT_DOES_NOT_EXIST);
    EXPECT_EQ(report, Bytes(2, 0xFF));
    Bytes none;
    EXPECT_EQ(initialize(device, HidP_Feature, 1, none), HIDP_STATUS_REPORT_DOES_NOT_EXIST);
}

TEST(EmptyReport, ChecksItsArguments) {
    const auto device = three_reports();
    Bytes longer(3);
    EXPECT_EQ(initialize(device, HidP_Input, 1, longer), HIDP_STATUS_INVALID_REPORT_LENGTH);
    Bytes report(2);
    EXPECT_EQ(initialize(device, static_cast<HIDP_REPORT_TYPE>(3), 1, report),
              HIDP_STATUS_INVALID_REPORT_TYPE);
    EXPECT_EQ(hidp::parser().HidP_InitializeReportForID(HidP_Input, 1, nullptr, report.data(), 2),
              HIDP_STATUS_INVALID_PREPARSED_DATA);
}

}  // namespace
