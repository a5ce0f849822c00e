// Top-level collections, report ids, report lengths, and what every function checks first.
#include <gtest/gtest.h>

#include "tests/platform/hidp/headset.h"

using namespace platform;
using namespace hidp_test;
using hidp::Tag;
using enum hidp::Tag;

namespace {

TEST(Reports, LengthsCountTheIdByteWithAndWithoutIds) {
    const auto plain = headset_with({{report_size, 8}, {report_count, 2}, {input, constant}});
    EXPECT_EQ(plain.caps().InputReportByteLength, 3);
    EXPECT_FALSE(hidp::has_report_ids(plain.data()));
    EXPECT_EQ(hidp::report_length(plain.data(), HidP_Input, 0), 3U);
    EXPECT_EQ(hidp::report_length(plain.data(), HidP_Input, 1), 0U);

    const auto numbered =
        headset_with({{report_id, 9}, {report_size, 8}, {report_count, 2}, {input, constant}});
    EXPECT_EQ(numbered.caps().InputReportByteLength, 3);
    EXPECT_TRUE(hidp::has_report_ids(numbered.data()));
    EXPECT_EQ(hidp::report_length(numbered.data(), HidP_Input, 9), 3U);
    EXPECT_EQ(hidp::report_length(numbered.data(), HidP_Input, 0), 0U);
}

TEST(Reports, ADirectionIsAsLongAsItsLongestReport) {
    const auto headset = headset_with({{report_size, 8},
                                       {report_id, 3},
                                       {report_count, 1},
                                       {output, constant},
                                       {report_id, 1},
                                       {report_count, 7},
                                       {output, constant},
                                       {report_id, 2},
                                       {report_count, 2},
                                       {output, constant}});
    EXPECT_EQ(headset.caps().OutputReportByteLength, 8);
    EXPECT_EQ(headset.caps().InputReportByteLength, 0);
    EXPECT_EQ(hidp::report_length(headset.data(), HidP_Output, 1), 8U);
    EXPECT_EQ(hidp::report_length(headset.data(), HidP_Output, 2), 3U);
    EXPECT_EQ(hidp::report_length(headset.data(), HidP_Output, 3), 2U);
    EXPECT_EQ(hidp::report_length(headset.data(), HidP_Output, 4), 0U);
    EXPECT_EQ(hidp::report_length(headset.data(), HidP_Input, 1), 0U);
    EXPECT_EQ(hidp::report_length(headset.data(), no_type, 1), 0U);
}

TEST(Reports, OfBitsAreRoundedUpToBytes) {
    const auto headset = headset_with({{report_size, 1}, {report_count, 9}, {feature, constant}});
    EXPECT_EQ(headset.caps().FeatureReportByteLength, 3);
}

TEST(Reports, AReportThatIsTakenUpAgainGoesOnWhereItStopped) {
    const auto headset = headset_with({{report_size, 8},
                                       {report_count, 1},
                                       {report_id, 1},
                                       {input, constant},
                                       {output, constant},
                                       {report_id, 2},
                                       {input, constant},
                                       {report_id, 1},
                                       {usage, hook_switch},
                                       {input, data_variable}});
    EXPECT_EQ(headset.direction(HidP_Input).capabilities.at(0).bit_position, 16U);
    EXPECT_EQ(hidp::report_length(headset.data(), HidP_Input, 1), 3U);
}

TEST(Reports, ItemsMayBringMoreBytesThanTheyNeed) {
    const auto headset = headset_with({{report_id, 1, 2},
                                       {report_size, 8, 4},
                                       {report_count, 2, 4},
                                       {usage, hook_switch, 2},
                                       {input, 2, 2}});
    EXPECT_EQ(headset.caps().InputReportByteLength, 3);
    EXPECT_EQ(headset.direction(HidP_Input).capabilities.at(0).report_id, 1);
}

TEST(Reports, LongAndReservedItemsArePassedOver) {
    Bytes bytes = headset_descriptor({{report_size, 8}, {report_count, 1}, {input, constant}});
    const Bytes long_item = {0xFE, 0x02, 0x10, 0xAA, 0xBB};
    const Bytes of_reserved_tags = {0xD1, 0xFF, 0xC5, 0xFF, 0xB9, 0xFF};  // a main, a global and a local item
    const Bytes of_the_reserved_type = {0x0D, 0xFF};
    for (const Bytes& item : {long_item, of_reserved_tags, of_the_reserved_type}) {
        bytes.insert(bytes.begin() + 6, item.begin(), item.end());
    }
    EXPECT_EQ(Collection(bytes).caps().InputReportByteLength, 2);
}

TEST(Reports, PushAndPopKeepAndRestoreTheGlobalItems) {
    const auto headset = headset_with({{report_size, 8},
                                       {report_count, 1},
                                       {push},
                                       {report_size, 16},
                                       {report_count, 2},
                                       {usage_page, led_page},
                                       {input, constant},
                                       {pop},
                                       {usage, hook_switch},
                                       {input, data_variable}});
    EXPECT_EQ(headset.caps().InputReportByteLength, 6);
    EXPECT_EQ(headset.direction(HidP_Input).capabilities.at(0).usage_page, telephony);
}

class TwoCollections : public testing::Test {
  protected:
    const Bytes bytes_ = descriptor({{usage_page, telephony},
                                     {usage, headset},
                                     {Tag::collection, application},
                                     {report_size, 1},
                                     {report_count, 8},
                                     {logical_maximum, 1},
                                     {report_id, 4},
                                     {usage, hook_switch},
                                     {input, data_variable},
                                     {end_collection},
                                     {usage, phone_mute},
                                     {Tag::collection, application},
                                     {usage, flash},
                                     {input, data_array},
                                     {report_id, 5},
                                     {output, constant},
                                     {end_collection}});
    const Collection first_{bytes_, 0};
    const Collection second_{bytes_, 1};
};

TEST_F(TwoCollections, HaveUsagesOfTheirOwn) {
    EXPECT_EQ(first_.caps().Usage, headset);
    EXPECT_EQ(second_.caps().Usage, phone_mute);
    EXPECT_EQ(second_.caps().UsagePage, telephony);
}

TEST_F(TwoCollections, HaveReportsOfTheirOwn) {
    EXPECT_EQ(second_.direction(HidP_Input).capabilities.at(0).bit_position, 8U);
    EXPECT_EQ(first_.caps().OutputReportByteLength, 0);
    EXPECT_EQ(second_.caps().OutputReportByteLength, 2);
    EXPECT_EQ(second_.caps().InputReportByteLength, 2);
}

TEST_F(TwoCollections, ShareTheGlobalItems) {
    const auto& cap = second_.direction(HidP_Input).capabilities.at(0);
    EXPECT_EQ(cap.report_id, 4);
    EXPECT_EQ(cap.logical_max, 1);
}

TEST(ReportIds, AreTheDescriptorsNotTheCollections) {
    const Bytes bytes = descriptor({{Tag::collection, application},
                                    {report_size, 8},
                                    {report_count, 1},
                                    {input, constant},
                                    {end_collection},
                                    {report_id, 1},
                                    {Tag::collection, application},
                                    {input, constant},
                                    {end_collection}});
    EXPECT_TRUE(hidp::has_report_ids(Collection(bytes, 0).data()));
}

TEST(LinkCollections, AreLinkedFromTheLastChildBackwards) {
    const auto headset = headset_with({{usage, 1},
                                       {Tag::collection, physical},
                                       {usage, 2},
                                       {Tag::collection, logical},
                                       {end_collection},
                                       {end_collection},
                                       {Tag::collection, 0x1FF},
                                       {end_collection}});
    const auto& nodes = headset.data()->link_collections;
    ASSERT_EQ(nodes.size(), 4U);
    EXPECT_EQ(headset.caps().NumberLinkCollectionNodes, 4);
    EXPECT_EQ(nodes[0].NumberOfChildren, 2);
    EXPECT_EQ(nodes[0].FirstChild, 3);
    EXPECT_EQ(nodes[3].NextSibling, 1);
    EXPECT_EQ(nodes[3].LinkUsage, 0);
    EXPECT_EQ(nodes[3].LinkUsagePage, telephony);
    EXPECT_EQ(nodes[3].CollectionType, 0xFFU);
    EXPECT_EQ(nodes[1].FirstChild, 2);
    EXPECT_EQ(nodes[2].Parent, 1);
    EXPECT_EQ(nodes[2].CollectionType, logical);
    EXPECT_EQ(nodes[2].NextSibling, 0);
}

TEST(Reports, AnEmptyCollectionHasNone) {
    const auto headset = headset_with({});
    EXPECT_EQ(headset.caps().InputReportByteLength, 0);
    EXPECT_EQ(headset.caps().NumberLinkCollectionNodes, 1);
    Bytes nothing;
    EXPECT_EQ(headset.set(HidP_Output, led_page, {led_mute}, nothing).status,
              HIDP_STATUS_REPORT_DOES_NOT_EXIST);
    EXPECT_EQ(headset.pressed(HidP_Input, telephony, nothing).status, HIDP_STATUS_REPORT_DOES_NOT_EXIST);
    EXPECT_EQ(headset.value(HidP_Feature, telephony, flash, nothing).status,
              HIDP_STATUS_REPORT_DOES_NOT_EXIST);
}

/// Every function on a report, called with the same report.
struct Statuses {
    Statuses(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE type, Bytes report) {
        const auto length = static_cast<ULONG>(report.size());
        const auto& parser = hidp::parser();
        USAGE usages[4] = {led_mute};
        ULONG set_count = 1;
        ULONG unset_count = 1;
        ULONG room = 1;
        ULONG value = 0;
        LONG scaled = 0;
        all = {parser.HidP_SetUsages(type, led_page, 0, usages, &set_count, data, report.data(), length),
               parser.HidP_UnsetUsages(type, led_page, 0, usages, &unset_count, data, report.data(), length),
               parser.HidP_GetUsages(type, led_page, 0, usages, &room, data, report.data(), length),
               parser.HidP_SetUsageValue(type, led_page, 0, led_ring, 1, data, report.data(), length),
               parser.HidP_GetUsageValue(type, led_page, 0, led_ring, &value, data, report.data(), length),
               parser.HidP_GetScaledUsageValue(type, led_page, 0, led_ring, &scaled, data, report.data(),
                                               length)};
    }

    std::vector<NTSTATUS> all;
};

std::vector<NTSTATUS> six_times(NTSTATUS status) {
    return std::vector<NTSTATUS>(6, status);
}

class ReportFunctions : public testing::Test {
  protected:
    const Collection headset_ = headset_with({{usage_page, led_page},
                                              {report_size, 1},
                                              {report_count, 1},
                                              {usage, led_mute},
                                              {output, data_variable},
                                              {report_size, 7},
                                              {logical_maximum, 100},
                                              {usage, led_ring},
                                              {output, data_variable}});
    const Bytes report_ = {0, 0};
};

TEST_F(ReportFunctions, SucceedOnTheRightReport) {
    EXPECT_EQ(Statuses(headset_.data(), HidP_Output, report_).all, six_times(HIDP_STATUS_SUCCESS));
}

TEST_F(ReportFunctions, RefuseNoPreparsedData) {
    EXPECT_EQ(Statuses(nullptr, HidP_Output, report_).all, six_times(HIDP_STATUS_INVALID_PREPARSED_DATA));
}

TEST_F(ReportFunctions, RefuseForeignPreparsedData) {
    alignas(HIDP_PREPARSED_DATA) UCHAR zeros[sizeof(HIDP_PREPARSED_DATA)] = {};
    const auto foreign = reinterpret_cast<PHIDP_PREPARSED_DATA>(zeros);
    EXPECT_EQ(Statuses(foreign, HidP_Output, report_).all, six_times(HIDP_STATUS_INVALID_PREPARSED_DATA));
    HIDP_CAPS caps{};
    EXPECT_EQ(hidp::parser().HidP_GetCaps(foreign, &caps), HIDP_STATUS_INVALID_PREPARSED_DATA);
    EXPECT_EQ(hidp::parser().HidP_GetCaps(nullptr, &caps), HIDP_STATUS_INVALID_PREPARSED_DATA);
    EXPECT_EQ(hidp::parser().HidP_MaxUsageListLength(HidP_Output, led_page, foreign), 0U);
    EXPECT_FALSE(hidp::has_report_ids(foreign));
    EXPECT_EQ(hidp::report_length(foreign, HidP_Output, 0), 0U);
    USHORT length = 1;
    HIDP_BUTTON_CAPS button{};
    EXPECT_EQ(hidp::parser().HidP_GetButtonCaps(HidP_Output, &button, &length, foreign),
              HIDP_STATUS_INVALID_PREPARSED_DATA);
}

TEST_F(ReportFunctions, RefuseAReportTypeThatThereIsNot) {
    EXPECT_EQ(Statuses(headset_.data(), no_type, report_).all, six_times(HIDP_STATUS_INVALID_REPORT_TYPE));
}

TEST_F(ReportFunctions, RefuseAnotherLength) {
    for (const std::size_t length : {0U, 1U, 3U}) {
        SCOPED_TRACE(length);
        EXPECT_EQ(Statuses(headset_.data(), HidP_Output, Bytes(length)).all,
                  six_times(HIDP_STATUS_INVALID_REPORT_LENGTH));
    }
}

TEST_F(ReportFunctions, RefuseTheReportOfAnUnnumberedDeviceWithAnId) {
    EXPECT_EQ(Statuses(headset_.data(), HidP_Output, {1, 0}).all,
              six_times(HIDP_STATUS_INCOMPATIBLE_REPORT_ID));
}

}  // namespace
