#include <gtest/gtest.h>

#include "hid/usage_input.h"
#include "tests/hid/hid_fixture.h"

namespace platform::hid_test {
namespace {

using namespace virtual_headsets;
using headset_plugin::check_report_id;
using headset_plugin::hid_last_error;

constexpr std::uint32_t in = 1;
constexpr std::uint32_t out = 2;
constexpr std::uint32_t both = 3;

/// Report 1: an input value, 2: an input button, 3: an output value, 4: an output button, 5: buttons both
/// ways.
Bytes five_reports() {
    return telephony({
        report_id(2),         usage(0x2F),    input(variable), report_id(4), usage(0x17),
        output(variable),                                                                       //
        report_id(5),         usage(0x20),    input(variable), usage(0x18),  output(variable),  //
        logical_maximum(100), report_size(8),                                                   //
        report_id(1),         usage(0x50),    input(variable), report_id(3), usage(0x51),
        output(variable),  //
    });
}

class CheckReportId : public HidFixture {};

TEST_F(CheckReportId, looks_at_both_kinds_of_capability_in_the_directions_asked_for) {
    struct Row {
        std::uint32_t report_id;
        std::uint32_t directions;
        int found;
    };
    constexpr Row rows[] = {
        {1, in, 1},     {2, in, 1},       {5, in, 1},         {3, in, 0},  {4, in, 0},   {3, out, 1},
        {4, out, 1},    {5, out, 1},      {1, out, 0},        {2, out, 0}, {5, both, 1},  // in both
        {1, both, 0},   {2, both, 0},                                                     // in input alone
        {3, both, 0},   {4, both, 0},                                                     // in output alone
        {0, in, 0},     {6, in, 0},       {6, out, 0},                                    // no such report
        {0x102, in, 0}, {0x105, both, 0},                                                 // not cut to a byte
        {1, 0, 0},      {4, 0, 0},        {5, 0, 0},                                      // no direction
        {5, 4, 0},      {5, 7, 0},        {5, 0xFFFFFFFF, 0},
    };
    const HidHandle handle = open(five_reports());
    for (const Row& row : rows) {
        EXPECT_EQ(check_report_id(handle.get(), row.report_id, row.directions), row.found)
            << "report " << row.report_id << ", directions " << row.directions;
        EXPECT_EQ(platform_.asked.preparsed_data_held, 1) << "only what the handle holds";
    }
    EXPECT_TRUE(log_->lines().empty());
    EXPECT_EQ(hid_last_error(handle.get()), L"");
}

TEST_F(CheckReportId, finds_0_for_a_headset_without_report_ids) {
    const HidHandle handle =
        open(telephony({usage(0x2F), input(variable), report_count(7), input(constant)}));
    EXPECT_EQ(check_report_id(handle.get(), 0, in), 1);
    EXPECT_EQ(check_report_id(handle.get(), 0, out), 0);
}

TEST_F(CheckReportId, needs_a_device) {
    EXPECT_EQ(check_report_id(nullptr, 5, in), 0);
}

TEST_F(CheckReportId, fails_without_preparsed_data) {
    const HidHandle handle = open(five_reports());
    platform_.script.refuse_preparsed_data = true;
    for (const std::uint32_t directions : {in, out, both}) {
        EXPECT_EQ(check_report_id(handle.get(), 5, directions), 0);
    }
}

TEST_F(CheckReportId, takes_what_the_parser_refuses_as_not_found_and_keeps_the_reason) {
    struct Row {
        std::string_view function;
        HIDP_REPORT_TYPE type;
        std::uint32_t report_id;
        std::uint32_t directions;
        int found;
        const wchar_t* error;
    };
    const Row rows[] = {
        {"HidP_GetValueCaps", HidP_Input, 1, in, 0, L"HidP_GetValueCaps"},
        {"HidP_GetValueCaps", HidP_Input, 2, in, 1, L"HidP_GetValueCaps"},  // the buttons are still looked at
        {"HidP_GetButtonCaps", HidP_Input, 2, in, 0, L"HidP_GetButtonCaps"},
        {"HidP_GetButtonCaps", HidP_Input, 1, in, 1, L""},  // found before
        {"HidP_GetValueCaps", HidP_Output, 3, out, 0, L"HidP_GetValueCaps"},
        {"HidP_GetValueCaps", HidP_Output, 4, out, 1, L"HidP_GetValueCaps"},
        {"HidP_GetButtonCaps", HidP_Output, 4, out, 0, L"HidP_GetButtonCaps"},
        {"HidP_GetButtonCaps", HidP_Input, 5, both, 0, L"HidP_GetButtonCaps"},
        {"HidP_GetButtonCaps", HidP_Output, 5, both, 0, L"HidP_GetButtonCaps"},
    };
    for (const Row& row : rows) {
        const HidHandle handle = open(five_reports());
        script_parser().failing = {.function = row.function, .type = row.type};
        EXPECT_EQ(check_report_id(handle.get(), row.report_id, row.directions), row.found)
            << row.function << ", report " << row.report_id;
        EXPECT_EQ(hid_last_error(handle.get()), row.error) << row.function << ", report " << row.report_id;
        parser_.failing = {};
    }
}

TEST_F(CheckReportId, tells_whether_reports_are_numbered_by_buttons_and_by_values) {
    EXPECT_TRUE(headset_plugin::numbers_reports(*open(five_reports())));
    EXPECT_TRUE(headset_plugin::numbers_reports(*open(
        telephony({report_id(1), logical_maximum(100), report_size(8), usage(0x50), input(variable)}))));
    EXPECT_FALSE(headset_plugin::numbers_reports(
        *open(telephony({usage(0x2F), input(variable), report_count(7), input(constant)}))));
}

}  // namespace
}  // namespace platform::hid_test
