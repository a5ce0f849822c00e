// HidP_GetUsagesEx.
#include <gtest/gtest.h>

#include "tests/platform/hidp/headset.h"

using namespace platform;
using namespace hidp_test;
using enum hidp::Tag;

namespace {

using PagesAndUsages = std::vector<std::pair<USAGE, USAGE>>;

/// Keys of two pages, one of them an array in a link collection, in report 1; a key in report 2.
Collection keys_of_two_pages() {
    return headset_with(
        {{report_id, 1},         {report_size, 1},       {report_count, 2},         {usage, hook_switch},
         {usage, flash},         {input, data_variable}, {usage_page, button_page}, {report_count, 6},
         {usage_minimum, 1},     {usage_maximum, 6},     {input, data_variable},    {usage_page, telephony},
         {usage, 0x06},          {collection, logical},  {report_size, 8},          {report_count, 2},
         {usage_minimum, 0xB0},  {usage_maximum, 0xBB},  {input, data_array},       {end_collection},
         {report_id, 2},         {report_size, 24},      {report_count, 1},         {usage, 0x30},
         {input, data_variable}, {report_size, 1},       {usage, phone_mute},       {input, data_variable}});
}

Outcome<PagesAndUsages> pressed(const Collection& device, const Bytes& report, USHORT link_collection = 0) {
    USAGE_AND_PAGE room[16];
    ULONG length = 16;
    const NTSTATUS status =
        hidp::parser().HidP_GetUsagesEx(HidP_Input, link_collection, room, &length, device.data(),
                                        report.data(), static_cast<ULONG>(report.size()));
    PagesAndUsages found;
    for (ULONG i = 0; status == HIDP_STATUS_SUCCESS && i < length; ++i) {
        found.emplace_back(room[i].UsagePage, room[i].Usage);
    }
    return {status, found};
}

TEST(UsagesEx, ListEveryPageInTheOrderOfTheCapabilities) {
    const auto [status, found] = pressed(keys_of_two_pages(), {1, 0b1000'1011, 4, 1, 0});
    EXPECT_EQ(status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(found, (PagesAndUsages{{telephony, flash},
                                     {telephony, hook_switch},
                                     {button_page, 2},
                                     {button_page, 6},
                                     {telephony, 0xB3},
                                     {telephony, 0xB0}}));
}

TEST(UsagesEx, OfALinkCollectionAreItsOwn) {
    const auto [status, found] = pressed(keys_of_two_pages(), {1, 0xFF, 4, 0, 0}, 1);
    EXPECT_EQ(status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(found, (PagesAndUsages{{telephony, 0xB3}}));
}

TEST(UsagesEx, OfNothingPressedAreNone) {
    const auto [status, found] = pressed(keys_of_two_pages(), {1, 0, 0, 0, 0});
    EXPECT_EQ(status, HIDP_STATUS_SUCCESS);
    EXPECT_TRUE(found.empty());
}

TEST(UsagesEx, AreThoseOfTheReportAlone) {
    EXPECT_EQ(pressed(keys_of_two_pages(), {2, 0xFF, 0xFF, 0xFF, 1}).result,
              (PagesAndUsages{{telephony, phone_mute}}));
}

TEST(UsagesEx, OfAnotherReport) {
    EXPECT_EQ(pressed(keys_of_two_pages(), {3, 0, 0, 0, 0}).status, HIDP_STATUS_INCOMPATIBLE_REPORT_ID);
    EXPECT_EQ(pressed(keys_of_two_pages(), {2, 0, 0, 0, 0}, 1).status, HIDP_STATUS_INCOMPATIBLE_REPORT_ID);
}

TEST(UsagesEx, OfNoButtons) {
    EXPECT_EQ(pressed(keys_of_two_pages(), {1, 0, 0, 0, 0}, 2).status, HIDP_STATUS_USAGE_NOT_FOUND);
}

TEST(UsagesEx, NeedRoom) {
    const auto device = keys_of_two_pages();
    const Bytes report = {1, 0b0000'0111, 0, 0, 0};
    USAGE_AND_PAGE room[2]{};
    ULONG length = 1;
    EXPECT_EQ(hidp::parser().HidP_GetUsagesEx(HidP_Input, 0, room, &length, device.data(), report.data(), 5),
              HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, 3U);
    EXPECT_EQ(room[0].Usage, flash);
    EXPECT_EQ(room[1].Usage, 0);
}

TEST(UsagesEx, CheckTheirArguments) {
    const auto device = keys_of_two_pages();
    const Bytes report(6);
    const auto get = [&](HIDP_REPORT_TYPE type, PHIDP_PREPARSED_DATA data, ULONG report_length) {
        ULONG length = 0;
        return hidp::parser().HidP_GetUsagesEx(type, 0, nullptr, &length, data, report.data(), report_length);
    };
    EXPECT_EQ(get(static_cast<HIDP_REPORT_TYPE>(3), device.data(), 5), HIDP_STATUS_INVALID_REPORT_TYPE);
    EXPECT_EQ(get(HidP_Input, device.data(), 4), HIDP_STATUS_INVALID_REPORT_LENGTH);
    EXPECT_EQ(get(HidP_Input, device.data(), 6), HIDP_STATUS_INVALID_REPORT_LENGTH);
    EXPECT_EQ(get(HidP_Input, nullptr, 5), HIDP_STATUS_INVALID_PREPARSED_DATA);
    EXPECT_EQ(get(HidP_Output, device.data(), 0), HIDP_STATUS_REPORT_DOES_NOT_EXIST);
    EXPECT_EQ(get(HidP_Input, device.data(), 5), HIDP_STATUS_SUCCESS);
}

}  // namespace
