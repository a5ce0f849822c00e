// The parser against preparsed data and capabilities that Wine's tests check and that hold on Windows.
#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "tests/platform/hidp/collection.h"
#include "tests/platform/hidp/json_fields.h"
#include "tests/support/reference_data.h"

using namespace platform;
using hidp_test::Collection;
using nlohmann::json;
using reference::expect_fields;

namespace {

template <typename Caps>
json list_fields(const Caps& caps) {
    json result = {{"UsagePage", caps.UsagePage},    {"ReportID", caps.ReportID},
                   {"BitField", caps.BitField},      {"LinkCollection", caps.LinkCollection},
                   {"LinkUsage", caps.LinkUsage},    {"LinkUsagePage", caps.LinkUsagePage},
                   {"IsRange", caps.IsRange != 0},   {"IsAbsolute", caps.IsAbsolute != 0},
                   {"ReportCount", caps.ReportCount}};
    if (caps.IsRange) {
        result["UsageMin"] = caps.Range.UsageMin;
        result["UsageMax"] = caps.Range.UsageMax;
        result["DataIndexMin"] = caps.Range.DataIndexMin;
        result["DataIndexMax"] = caps.Range.DataIndexMax;
    } else {
        result["Usage"] = caps.NotRange.Usage;
        result["Reserved1"] = caps.NotRange.Reserved1;
        result["DataIndex"] = caps.NotRange.DataIndex;
        result["Reserved4"] = caps.NotRange.Reserved4;
    }
    return result;
}

json to_json(const HIDP_BUTTON_CAPS& caps) {
    return list_fields(caps);
}

json to_json(const HIDP_VALUE_CAPS& caps) {
    json result = list_fields(caps);
    result["BitSize"] = caps.BitSize;
    result["LogicalMin"] = caps.LogicalMin;
    result["LogicalMax"] = caps.LogicalMax;
    return result;
}

/// The flag bits that the records of stored capabilities name.
int flags(const hidp::Capability& cap) {
    const auto flag = [](bool is_set, int bit) { return is_set ? bit : 0; };
    return flag(cap.has_more_for_array, 1) | flag(cap.is_padding(), 2) | flag(cap.is_button, 4) |
           flag(cap.is_absolute(), 8) | flag(cap.is_range, 16) | flag(cap.is_string_range, 64) |
           flag(cap.is_designator_range, 128);
}

json wine_fields(const hidp::Capability& cap, const HIDP_LINK_COLLECTION_NODE& link) {
    json result = reference::common_fields(cap, link);
    result.update({{"Flags", flags(cap)},
                   {"UsageMin", cap.usage_min},
                   {"UsageMax", cap.usage_max},
                   {"DesignatorMin", cap.designator_min},
                   {"DesignatorMax", cap.designator_max},
                   {"DataIndexMin", cap.data_index_min},
                   {"DataIndexMax", cap.data_index_max},
                   {"LogicalMin", cap.logical_min},
                   {"LogicalMax", cap.logical_max},
                   {"PhysicalMin", cap.physical_min},
                   {"PhysicalMax", cap.physical_max},
                   {"NullValue", int{cap.has_null()}}});
    return result;
}

/// What the preparsed data of the Windows parser begins with. Counted, but not stored, are usages without a
/// field; the last index is that behind the stored ones.
json header(const Collection& collection) {
    constexpr std::size_t stored_capability_size = 104;
    constexpr const char* names[] = {"input", "output", "feature"};
    const HIDP_CAPS caps = collection.caps();
    json result = {{"Usage", caps.Usage},
                   {"UsagePage", caps.UsagePage},
                   {"NumberLinkCollectionNodes", caps.NumberLinkCollectionNodes}};
    std::size_t first = 0;
    for (const auto type : {HidP_Input, HidP_Output, HidP_Feature}) {
        const hidp::Direction& direction = collection.direction(type);
        result[names[type]] = {{"FirstCap", first},
                               {"NumberOfCaps", direction.declared_capabilities},
                               {"LastCap", first + direction.capabilities.size()},
                               {"ReportByteLength", direction.report_byte_length}};
        first += direction.declared_capabilities;
    }
    result["FirstByteOfLinkCollectionArray"] = first * stored_capability_size;
    return result;
}

/// A top-level collection against a record of its preparsed data.
void expect_stored(const Collection& collection, const json& record) {
    expect_fields(header(collection), record.at("header"));
    for (const auto type : {HidP_Input, HidP_Output, HidP_Feature}) {
        constexpr const char* names[] = {"Input", "Output", "Feature"};
        const auto& actual = collection.direction(type).capabilities;
        const json& expected = record.at("caps").at(names[type]);
        ASSERT_EQ(actual.size(), expected.size());
        for (std::size_t i = 0; i < actual.size(); ++i) {
            SCOPED_TRACE(std::string(names[type]) + " " + std::to_string(i));
            expect_fields(
                wine_fields(actual[i], collection.data()->link_collections[actual[i].link_collection]),
                expected[i]);
        }
    }
    const auto& nodes = collection.data()->link_collections;
    ASSERT_EQ(nodes.size(), record.at("link_nodes").size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        SCOPED_TRACE("link collection " + std::to_string(i));
        expect_fields(reference::to_json(nodes[i]), record.at("link_nodes")[i]);
    }
}

class WineReference : public testing::Test {
  protected:
    void SetUp() override { SKIP_WITHOUT_REFERENCE_DATA(); }
};

TEST_F(WineReference, StoredCapabilitiesOfVariablesAndArrays) {
    const json record = reference::load_one("wine/wine_B_kdr");
    expect_stored(Collection(reference::descriptor(record)), record);
}

TEST_F(WineReference, StoredCapabilitiesOfTwoTopLevelCollections) {
    const json record = reference::load_one("wine/wine_C_multiple_tlc");
    ASSERT_EQ(record.at("tlcs").size(), 2U);
    for (std::size_t index = 0; index < 2; ++index) {
        SCOPED_TRACE(index);
        expect_stored(Collection(reference::descriptor(record), index), record.at("tlcs")[index]);
    }
}

TEST_F(WineReference, CapsOfTheSmallestCollection) {
    const json record = reference::load_one("wine/wine_D_minimal");
    expect_fields(reference::to_json(Collection(reference::descriptor(record)).caps()),
                  record.at("HIDP_CAPS"));
}

/// The collection that has everything, without and with report ids.
class WineCollection : public testing::TestWithParam<int> {
  protected:
    void SetUp() override {
        SKIP_WITHOUT_REFERENCE_DATA();
        record_ = reference::load_one("wine/wine_A_report_id_" + std::to_string(GetParam()));
        collection_.emplace(reference::descriptor(record_));
    }

    json record_;
    std::optional<Collection> collection_;
};

TEST_P(WineCollection, Caps) {
    expect_fields(reference::to_json(collection_->caps()), record_.at("HIDP_CAPS"));
}

TEST_P(WineCollection, FirstCapabilities) {
    const auto buttons = collection_->buttons(HidP_Input);
    const auto values = collection_->values(HidP_Input);
    for (std::size_t i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        expect_fields(to_json(buttons.at(i)), record_.at("button_caps_first_four")[i]);
        expect_fields(to_json(values.at(i)), record_.at("value_caps_first_four")[i]);
    }
}

TEST_P(WineCollection, FirstLinkCollections) {
    for (std::size_t i = 0; i < 2; ++i) {
        SCOPED_TRACE(i);
        expect_fields(reference::to_json(collection_->data()->link_collections.at(i)),
                      record_.at("link_nodes_first_two")[i]);
    }
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutReportIds, WineCollection, testing::Values(0, 1));

}  // namespace
