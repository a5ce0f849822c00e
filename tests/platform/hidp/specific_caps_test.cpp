// HidP_GetSpecificButtonCaps and HidP_GetSpecificValueCaps.
#include <gtest/gtest.h>

#include "tests/platform/hidp/headset.h"

using namespace platform;
using namespace hidp_test;
using enum hidp::Tag;

namespace {

constexpr USHORT top_level = 0xFFFF;  // HIDP_LINK_COLLECTION_ROOT
constexpr USHORT inner_collection = 1;
constexpr USAGE volume = 0x30;

/// The hook switch and a volume outside, a range of keys and a volume in a link collection.
Collection phone_with_key_pad() {
    return headset_with({{report_size, 1},
                         {report_count, 1},
                         {usage, hook_switch},
                         {input, data_variable},
                         {report_size, 7},
                         {usage, volume},
                         {input, data_variable},
                         {usage, 0x06},
                         {collection, logical},
                         {report_size, 1},
                         {report_count, 12},
                         {usage_minimum, 0xB0},
                         {usage_maximum, 0xBB},
                         {input, data_variable},
                         {report_size, 4},
                         {report_count, 1},
                         {usage, volume},
                         {input, data_variable},
                         {end_collection}});
}

struct Wanted {
    USAGE page = 0;
    USHORT link_collection = 0;
    USAGE usage = 0;
};

template <typename Caps>
using Outcomes = Outcome<std::vector<Caps>>;

Outcomes<HIDP_BUTTON_CAPS> buttons(const Collection& device, const Wanted& wanted, USHORT room = 8) {
    std::vector<HIDP_BUTTON_CAPS> caps(8);
    const NTSTATUS status = hidp::parser().HidP_GetSpecificButtonCaps(
        HidP_Input, wanted.page, wanted.link_collection, wanted.usage, caps.data(), &room, device.data());
    caps.resize(room);
    return {status, caps};
}

Outcomes<HIDP_VALUE_CAPS> values(const Collection& device, const Wanted& wanted, USHORT room = 8) {
    std::vector<HIDP_VALUE_CAPS> caps(8);
    const NTSTATUS status = hidp::parser().HidP_GetSpecificValueCaps(
        HidP_Input, wanted.page, wanted.link_collection, wanted.usage, caps.data(), &room, device.data());
    caps.resize(room);
    return {status, caps};
}

TEST(SpecificCaps, OfAnythingAreAllOfTheirKind) {
    const auto device = phone_with_key_pad();
    const auto [status, found] = buttons(device, {});
    EXPECT_EQ(status, HIDP_STATUS_SUCCESS);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].NotRange.Usage, hook_switch);
    EXPECT_EQ(found[1].Range.UsageMin, 0xB0);
    EXPECT_EQ(values(device, {}).result.size(), 2U);
}

TEST(SpecificCaps, OfAUsageInARangeAreTheWholeRange) {
    const auto [status, found] = buttons(phone_with_key_pad(), {telephony, 0, 0xB5});
    EXPECT_EQ(status, HIDP_STATUS_SUCCESS);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].Range.UsageMin, 0xB0);
    EXPECT_EQ(found[0].Range.UsageMax, 0xBB);
    EXPECT_EQ(found[0].LinkCollection, inner_collection);
    EXPECT_EQ(found[0].LinkUsage, 0x06);
}

TEST(SpecificCaps, EndWithTheRange) {
    EXPECT_EQ(buttons(phone_with_key_pad(), {telephony, 0, 0xAF}).status, HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(buttons(phone_with_key_pad(), {telephony, 0, 0xB0}).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(buttons(phone_with_key_pad(), {telephony, 0, 0xBB}).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(buttons(phone_with_key_pad(), {telephony, 0, 0xBC}).status, HIDP_STATUS_USAGE_NOT_FOUND);
}

TEST(SpecificCaps, OfAUsageThatStandsTwiceAreBoth) {
    EXPECT_EQ(values(phone_with_key_pad(), {telephony, 0, volume}).result.size(), 2U);
}

TEST(SpecificCaps, OfALinkCollectionAreItsOwn) {
    const auto device = phone_with_key_pad();
    const auto inner = values(device, {0, inner_collection, 0}).result;
    ASSERT_EQ(inner.size(), 1U);
    EXPECT_EQ(inner[0].BitSize, 4);
    const auto outer = values(device, {0, top_level, 0}).result;
    ASSERT_EQ(outer.size(), 1U);
    EXPECT_EQ(outer[0].BitSize, 7);
}

TEST(SpecificCaps, OfNothingThatThereIs) {
    const auto device = phone_with_key_pad();
    for (const Wanted& wanted : {Wanted{led_page, 0, 0}, Wanted{0, 2, 0}, Wanted{0, 0, 0x77},
                                 Wanted{telephony, inner_collection, hook_switch}}) {
        const auto [status, found] = buttons(device, wanted);
        EXPECT_EQ(status, HIDP_STATUS_USAGE_NOT_FOUND);
        EXPECT_TRUE(found.empty());
    }
    EXPECT_EQ(values(device, {telephony, 0, hook_switch}).status, HIDP_STATUS_USAGE_NOT_FOUND)
        << "a button is no value";
    EXPECT_EQ(buttons(device, {telephony, 0, volume}).status, HIDP_STATUS_USAGE_NOT_FOUND)
        << "a value is no button";
}

TEST(SpecificCaps, NeedRoom) {
    const auto device = phone_with_key_pad();
    const auto [status, found] = values(device, {telephony, 0, volume}, 1);
    EXPECT_EQ(status, HIDP_STATUS_BUFFER_TOO_SMALL);
    ASSERT_EQ(found.size(), 2U) << "the room needed";
    EXPECT_EQ(found[0].NotRange.Usage, volume);
    EXPECT_EQ(found[1].NotRange.Usage, 0) << "no more than the room is filled";
    EXPECT_EQ(buttons(device, {telephony, 0, hook_switch}, 0).status, HIDP_STATUS_BUFFER_TOO_SMALL);
}

TEST(SpecificCaps, CheckTheirArguments) {
    const auto device = phone_with_key_pad();
    const auto& parser = hidp::parser();
    HIDP_BUTTON_CAPS button;
    HIDP_VALUE_CAPS value;
    USHORT length = 1;
    EXPECT_EQ(parser.HidP_GetSpecificButtonCaps(no_type, 0, 0, 0, &button, &length, device.data()),
              HIDP_STATUS_INVALID_REPORT_TYPE);
    EXPECT_EQ(parser.HidP_GetSpecificValueCaps(no_type, 0, 0, 0, &value, &length, device.data()),
              HIDP_STATUS_INVALID_REPORT_TYPE);
    EXPECT_EQ(parser.HidP_GetSpecificButtonCaps(HidP_Input, 0, 0, 0, &button, &length, nullptr),
              HIDP_STATUS_INVALID_PREPARSED_DATA);
    EXPECT_EQ(parser.HidP_GetSpecificValueCaps(HidP_Input, 0, 0, 0, &value, &length, nullptr),
              HIDP_STATUS_INVALID_PREPARSED_DATA);
    EXPECT_EQ(length, 1) << "as it was";
    EXPECT_EQ(parser.HidP_GetSpecificButtonCaps(HidP_Output, 0, 0, 0, &button, &length, device.data()),
              HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(length, 0);
}

}  // namespace
