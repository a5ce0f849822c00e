// HidP_GetLinkCollectionNodes.
#include <gtest/gtest.h>

#include "platform/hidp/limits.h"
#include "tests/platform/hidp/headset.h"

using namespace platform;
using namespace hidp_test;
using enum hidp::Tag;

namespace {

constexpr USAGE key_pad = 0x06;
constexpr USAGE handset = 0x04;

std::vector<HIDP_LINK_COLLECTION_NODE> nodes_of(const Collection& device) {
    ULONG count = 0;
    EXPECT_EQ(hidp::parser().HidP_GetLinkCollectionNodes(nullptr, &count, device.data()),
              HIDP_STATUS_BUFFER_TOO_SMALL);
    std::vector<HIDP_LINK_COLLECTION_NODE> nodes(count);
    EXPECT_EQ(hidp::parser().HidP_GetLinkCollectionNodes(nodes.data(), &count, device.data()),
              HIDP_STATUS_SUCCESS);
    EXPECT_EQ(count, nodes.size());
    return nodes;
}

/// A key in an inner collection that has two names.
Collection named_twice() {
    return headset_with({{delimiter, 1},
                         {usage, key_pad},
                         {usage, handset},
                         {delimiter, 0},
                         {collection, logical},
                         {report_size, 1},
                         {report_count, 1},
                         {usage, hook_switch},
                         {input, data_variable},
                         {end_collection}});
}

TEST(LinkCollectionNodes, BeginWithTheTopLevelCollection) {
    const auto nodes = nodes_of(headset_with({{usage, key_pad}, {collection, logical}, {end_collection}}));
    ASSERT_EQ(nodes.size(), 2U);
    EXPECT_EQ(nodes[0].LinkUsagePage, telephony);
    EXPECT_EQ(nodes[0].LinkUsage, headset);
    EXPECT_EQ(nodes[0].CollectionType, application);
    EXPECT_EQ(nodes[0].NumberOfChildren, 1);
    EXPECT_EQ(nodes[0].FirstChild, 1);
    EXPECT_EQ(nodes[1].LinkUsage, key_pad);
    EXPECT_EQ(nodes[1].CollectionType, logical);
    EXPECT_EQ(nodes[1].Parent, 0);
    EXPECT_EQ(nodes[1].IsAlias, 0U);
}

TEST(LinkCollectionNodes, HaveAnAliasForEveryOtherNameBeforeTheFirst) {
    const auto device = named_twice();
    const auto nodes = nodes_of(device);
    ASSERT_EQ(nodes.size(), 3U);
    EXPECT_EQ(nodes[1].LinkUsage, handset);
    EXPECT_EQ(nodes[1].IsAlias, 1U);
    EXPECT_EQ(nodes[2].LinkUsage, key_pad);
    EXPECT_EQ(nodes[2].IsAlias, 0U);
    EXPECT_EQ(nodes[0].NumberOfChildren, 2);
    EXPECT_EQ(nodes[0].FirstChild, 2);
    EXPECT_EQ(nodes[2].NextSibling, 1);
    EXPECT_EQ(nodes[1].NextSibling, 0);
    EXPECT_EQ(device.buttons(HidP_Input).at(0).LinkCollection, 2) << "its fields are the first name's";
    EXPECT_EQ(device.buttons(HidP_Input).at(0).LinkUsage, key_pad);
    EXPECT_EQ(device.caps().NumberLinkCollectionNodes, 3);
}

TEST(LinkCollectionNodes, KnowATopLevelCollectionByItsFirstNameAlone) {
    const Collection device(descriptor({{usage_page, telephony},
                                        {delimiter, 1},
                                        {usage, headset},
                                        {usage, handset},
                                        {delimiter, 0},
                                        {collection, application},
                                        {end_collection}}));
    const auto nodes = nodes_of(device);
    ASSERT_EQ(nodes.size(), 1U);
    EXPECT_EQ(nodes[0].LinkUsage, headset);
    EXPECT_EQ(device.caps().Usage, headset);
}

TEST(LinkCollectionNodes, AreBoundedWithTheirAliases) {
    const auto with_names = [](std::size_t count) {
        Bytes bytes = descriptor({{usage_page, telephony}, {collection, application}, {delimiter, 1}});
        bytes.insert(bytes.end(), count, 0x08);  // Usage (0)
        const Bytes end =
            descriptor({{delimiter, 0}, {collection, logical}, {end_collection}, {end_collection}});
        bytes.insert(bytes.end(), end.begin(), end.end());
        return hidp::parse(bytes);
    };
    EXPECT_EQ(with_names(hidp::max_collections - 1).error, std::nullopt);
    const auto refused = with_names(hidp::max_collections);
    ASSERT_TRUE(refused.error.has_value());
    EXPECT_EQ(refused.error->text, "more than 1024 collections");
}

TEST(LinkCollectionNodes, CopyNothingIntoTooLittleRoom) {
    const auto device = named_twice();
    HIDP_LINK_COLLECTION_NODE room[2]{};
    ULONG count = 2;
    EXPECT_EQ(hidp::parser().HidP_GetLinkCollectionNodes(room, &count, device.data()),
              HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(room[0].LinkUsage, 0);
}

TEST(LinkCollectionNodes, NeedPreparsedData) {
    ULONG count = 7;
    EXPECT_EQ(hidp::parser().HidP_GetLinkCollectionNodes(nullptr, &count, nullptr),
              HIDP_STATUS_INVALID_PREPARSED_DATA);
    EXPECT_EQ(count, 7U);
}

}  // namespace
