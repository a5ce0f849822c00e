// The parser against results that Wine's tests check and that hold on Windows.
#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>
#include <optional>
#include <string>

#include "tests/hidp/collection.h"
#include "tests/hidp/json_fields.h"
#include "tests/support/reference_data.h"

using namespace platform;
using hidp_test::Bytes;
using hidp_test::Collection;
using hidp_test::Usages;
using nlohmann::json;
using reference::expect_fields;

namespace {

// Usage pages and usages of the descriptors (HID Usage Tables).
constexpr USAGE generic_desktop = 0x01;
constexpr USAGE keyboard = 0x07;
constexpr USAGE led = 0x08;
constexpr USAGE button = 0x09;
constexpr USAGE ordinal = 0x0A;
constexpr USAGE haptics = 0x0E;
constexpr USAGE x = 0x30;
constexpr USAGE z = 0x32;
constexpr USAGE rx = 0x33;
constexpr USAGE ry = 0x34;
constexpr USAGE hat_switch = 0x39;

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

json to_json(const hidp::Capability& cap, const HIDP_LINK_COLLECTION_NODE& link) {
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

/// Capabilities and link collections of a top-level collection against a record that lists them whole.
void expect_stored(const Collection& collection, const json& record) {
    for (const auto type : {HidP_Input, HidP_Output, HidP_Feature}) {
        constexpr const char* names[] = {"Input", "Output", "Feature"};
        const auto& actual = collection.direction(type).capabilities;
        const json& expected = record.at("caps").at(names[type]);
        ASSERT_EQ(actual.size(), expected.size());
        for (std::size_t i = 0; i < actual.size(); ++i) {
            SCOPED_TRACE(std::string(names[type]) + " " + std::to_string(i));
            expect_fields(to_json(actual[i], collection.data()->link_collections[actual[i].link_collection]),
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
    const Collection collection(reference::descriptor(record));
    expect_stored(collection, record);
    EXPECT_EQ(collection.direction(HidP_Feature).declared_capabilities, 2);
    EXPECT_EQ(collection.caps().InputReportByteLength, 15);
}

TEST_F(WineReference, StoredCapabilitiesOfTwoTopLevelCollections) {
    const json record = reference::load_one("wine/wine_C_multiple_tlc");
    for (std::size_t index = 0; index < 2; ++index) {
        SCOPED_TRACE(index);
        const Collection collection(reference::descriptor(record), index);
        const json& expected = record.at("tlcs")[index];
        expect_stored(collection, expected);
        EXPECT_EQ(collection.caps().Usage, expected.at("header").at("Usage"));
        EXPECT_EQ(collection.caps().InputReportByteLength,
                  expected.at("header").at("input").at("ReportByteLength"));
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

    Bytes report(HIDP_REPORT_TYPE type) const {
        Bytes result = collection_->empty_report(type);
        result[0] = report_id();
        return result;
    }

    UCHAR report_id() const { return static_cast<UCHAR>(GetParam()); }

    USHORT link_collection_of(USAGE page, USAGE usage) const {
        const auto& nodes = collection_->data()->link_collections;
        const auto found = std::find_if(nodes.begin(), nodes.end(), [&](const auto& node) {
            return node.LinkUsagePage == page && node.LinkUsage == usage;
        });
        return static_cast<USHORT>(found - nodes.begin());
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

TEST_P(WineCollection, MaxUsageListLength) {
    const auto length = [&](HIDP_REPORT_TYPE type, USAGE page) {
        return hidp::parser().HidP_MaxUsageListLength(type, page, collection_->data());
    };
    EXPECT_EQ(length(static_cast<HIDP_REPORT_TYPE>(HidP_Feature + 1), 0), 0U);
    EXPECT_EQ(length(HidP_Input, 0), 50U);
    EXPECT_EQ(length(HidP_Input, button), 32U);
    EXPECT_EQ(length(HidP_Input, led), 8U);
    EXPECT_EQ(length(HidP_Feature, button), 8U);
    EXPECT_EQ(length(HidP_Feature, led), 0U);
}

TEST_P(WineCollection, ListedCapabilitiesNeedRoom) {
    USHORT length = 0;
    EXPECT_EQ(hidp::parser().HidP_GetButtonCaps(HidP_Input, nullptr, &length, collection_->data()),
              HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, 17);
    length = 0;
    EXPECT_EQ(hidp::parser().HidP_GetValueCaps(HidP_Input, nullptr, &length, collection_->data()),
              HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, 7);
}

TEST_P(WineCollection, ConstantsWithoutUsageMakeAReportButNoCapability) {
    USHORT length = 8;
    HIDP_BUTTON_CAPS buttons[8];
    EXPECT_EQ(hidp::parser().HidP_GetButtonCaps(HidP_Output, buttons, &length, collection_->data()),
              HIDP_STATUS_USAGE_NOT_FOUND);
    length = 8;
    HIDP_VALUE_CAPS values[8];
    EXPECT_EQ(hidp::parser().HidP_GetValueCaps(HidP_Output, values, &length, collection_->data()),
              HIDP_STATUS_USAGE_NOT_FOUND);
}

TEST_P(WineCollection, ButtonsAreSetAndListed) {
    Bytes report = this->report(HidP_Input);
    EXPECT_EQ(collection_->set(HidP_Input, button, {255}, report).status, HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(collection_->set(HidP_Input, button, {255, 2, 255}, report).status,
              HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(collection_->set(HidP_Input, button, {4, 6}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(collection_->pressed(HidP_Input, button, report).result, (Usages{4, 6}));

    Usages room(1);
    ULONG length = 1;
    EXPECT_EQ(hidp::parser().HidP_GetUsages(HidP_Input, button, 0, room.data(), &length, collection_->data(),
                                            report.data(), static_cast<ULONG>(report.size())),
              HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, 2U);
}

TEST_P(WineCollection, ButtonsDeclaredOneByOneAreListedInReverse) {
    Bytes report = collection_->empty_report(HidP_Input);
    EXPECT_EQ(collection_->set(HidP_Input, led, {4, 6}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(collection_->pressed(HidP_Input, led, report).result, (Usages{6, 4}));
}

TEST_P(WineCollection, AButtonIsNoValue) {
    Bytes report = this->report(HidP_Input);
    EXPECT_EQ(collection_->set_value(HidP_Input, led, 6, 1, report), HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(collection_->value(HidP_Input, led, 6, report).status, HIDP_STATUS_USAGE_NOT_FOUND);
}

TEST_P(WineCollection, AnArrayTakesAsManyUsagesAsItHasFields) {
    Bytes report = this->report(HidP_Input);
    EXPECT_EQ(collection_->pressed(HidP_Input, keyboard, report).status, HIDP_STATUS_SUCCESS);
    const auto [status, index] = collection_->set(HidP_Input, keyboard, {9, 11, 10}, report);
    EXPECT_EQ(status, HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(index, 2U);
    EXPECT_EQ(report[13], 2);
    EXPECT_EQ(report[14], 4);
    EXPECT_EQ(collection_->pressed(HidP_Input, keyboard, report).result, (Usages{9, 11}));
}

TEST_P(WineCollection, AnArrayOfUsagesDeclaredOneByOne) {
    Bytes report = collection_->empty_report(HidP_Input);
    const std::size_t first = report.size() - 2;
    ASSERT_EQ(collection_->set(HidP_Input, keyboard, {142, 143}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report[first], 3);
    EXPECT_EQ(report[first + 1], 4);
    EXPECT_EQ(collection_->unset(HidP_Input, keyboard, {142, 143}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report[first], 0);
    EXPECT_EQ(report[first + 1], 0);
    EXPECT_EQ(collection_->unset(HidP_Input, keyboard, {142, 143}, report).status,
              HIDP_STATUS_BUTTON_NOT_PRESSED);
    EXPECT_EQ(collection_->set(HidP_Input, keyboard, {140}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report[first], 1);
}

TEST_P(WineCollection, AValueArrayIsReadAndWrittenByItsFirstField) {
    Bytes report = this->report(HidP_Input);
    EXPECT_EQ(collection_->set_value(HidP_Input, generic_desktop, hat_switch, 8, report),
              HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report[16], 8);
    EXPECT_EQ(report[17], 0);
    report[16] = 0xFF;
    report[17] = 0xFF;
    const auto [status, value] = collection_->value(HidP_Input, generic_desktop, hat_switch, report);
    EXPECT_EQ(status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(value, 0xFFFFU);
}

TEST_P(WineCollection, ValuesOfUnknownUsages) {
    const Bytes report = this->report(HidP_Input);
    EXPECT_EQ(collection_->value(HidP_Input, generic_desktop, 0, report).status, HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(collection_->value(HidP_Input, 0, x, report).status, HIDP_STATUS_USAGE_NOT_FOUND);
}

TEST_P(WineCollection, ScaledInputValues) {
    struct {
        USAGE usage;
        ULONG raw;
        NTSTATUS status;
        LONG scaled;
    } const cases[] = {
        {x, 128, HIDP_STATUS_SUCCESS, -128},
        {x, 127, HIDP_STATUS_SUCCESS, 127},
        {x, 0, HIDP_STATUS_SUCCESS, 0},
        {z, 0x7FFFFFFF, HIDP_STATUS_VALUE_OUT_OF_RANGE, 0},
        {z, 0x3FFFFFFF, HIDP_STATUS_SUCCESS, 0x7FFFFFFF},
        {z, 0, HIDP_STATUS_SUCCESS, -0x7FFFFFFF - 1},
        {rx, 0, HIDP_STATUS_SUCCESS, 0},
        {ry, 0xFEEDCAFE, HIDP_STATUS_BAD_LOG_PHY_VALUES, 0},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(testing::Message()
                     << std::hex << "usage " << expected.usage << ", raw " << expected.raw);
        Bytes report = this->report(HidP_Input);
        ASSERT_EQ(collection_->set_value(HidP_Input, generic_desktop, expected.usage, expected.raw, report),
                  HIDP_STATUS_SUCCESS);
        EXPECT_EQ(collection_->value(HidP_Input, generic_desktop, expected.usage, report).result,
                  expected.raw);
        const auto [status, scaled] =
            collection_->scaled(HidP_Input, generic_desktop, expected.usage, report);
        EXPECT_EQ(status, expected.status);
        EXPECT_EQ(scaled, expected.scaled);
    }
}

TEST_P(WineCollection, ScaledFeatureValues) {
    Bytes report = this->report(HidP_Feature);
    collection_->set_value(HidP_Feature, generic_desktop, z, 0x7FFFFFFF, report);
    EXPECT_EQ(collection_->scaled(HidP_Feature, generic_desktop, z, report).status,
              HIDP_STATUS_VALUE_OUT_OF_RANGE);
    collection_->set_value(HidP_Feature, generic_desktop, z, 0x7FFF, report);
    EXPECT_EQ(collection_->scaled(HidP_Feature, generic_desktop, z, report).result, 0x0003FFFF);
    collection_->set_value(HidP_Feature, generic_desktop, z, 0, report);
    EXPECT_EQ(collection_->scaled(HidP_Feature, generic_desktop, z, report).result, -0x70000);
}

TEST_P(WineCollection, ARangeOfValuesHasOneFieldForEachUsage) {
    const USHORT system_control = link_collection_of(generic_desktop, 0x80);
    Bytes report = this->report(HidP_Feature);
    const auto length = static_cast<ULONG>(report.size());
    for (USAGE usage = 1; usage <= 10; ++usage) {
        ASSERT_EQ(hidp::parser().HidP_SetUsageValue(HidP_Feature, ordinal, system_control, usage, usage,
                                                    collection_->data(), report.data(), length),
                  HIDP_STATUS_SUCCESS);
        EXPECT_EQ(report[20U + usage], usage);
        LONG scaled = 0;
        EXPECT_EQ(
            hidp::parser().HidP_GetScaledUsageValue(HidP_Feature, ordinal, system_control, usage, &scaled,
                                                    collection_->data(), report.data(), length),
            HIDP_STATUS_SUCCESS);
        EXPECT_EQ(scaled, 16 * usage);
    }
}

TEST_P(WineCollection, ChecksOfAValueFunctionInTheirOrder) {
    const auto waveform = link_collection_of(haptics, 0x10);
    Bytes report = this->report(HidP_Feature);
    const auto set = [&](HIDP_REPORT_TYPE type, USHORT link, UCHAR id, std::size_t length) {
        report[0] = id;
        return hidp::parser().HidP_SetUsageValue(type, ordinal, link, 3, 4101, collection_->data(),
                                                 report.data(), static_cast<ULONG>(length));
    };
    const auto get = [&](HIDP_REPORT_TYPE type, USHORT link, UCHAR id, std::size_t length, ULONG* value) {
        report[0] = id;
        return hidp::parser().HidP_GetUsageValue(type, ordinal, link, 3, value, collection_->data(),
                                                 report.data(), static_cast<ULONG>(length));
    };
    const UCHAR id = report_id();
    const auto other_id = static_cast<UCHAR>(1 - id);
    const auto other_id_status = id == 1 ? HIDP_STATUS_SUCCESS : HIDP_STATUS_INCOMPATIBLE_REPORT_ID;
    const auto no_type = static_cast<HIDP_REPORT_TYPE>(HidP_Feature + 1);
    const std::size_t length = report.size();
    report.resize(length + 1);
    EXPECT_EQ(set(no_type, waveform, id, length), HIDP_STATUS_INVALID_REPORT_TYPE);
    EXPECT_EQ(set(HidP_Feature, waveform, id, length + 1), HIDP_STATUS_INVALID_REPORT_LENGTH);
    EXPECT_EQ(set(HidP_Feature, waveform, other_id, length), other_id_status);
    EXPECT_EQ(set(HidP_Feature, waveform, 2, length), HIDP_STATUS_INCOMPATIBLE_REPORT_ID);
    EXPECT_EQ(set(HidP_Feature, 0xDEAD, id, length), HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(set(HidP_Feature, waveform, id, length), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report[1] | report[2] << 8, 4101);

    ULONG value = 0;
    EXPECT_EQ(get(no_type, waveform, id, length, &value), HIDP_STATUS_INVALID_REPORT_TYPE);
    EXPECT_EQ(get(HidP_Feature, waveform, id, length + 1, &value), HIDP_STATUS_INVALID_REPORT_LENGTH);
    EXPECT_EQ(get(HidP_Feature, waveform, other_id, length, &value), other_id_status);
    EXPECT_EQ(get(HidP_Feature, waveform, 2, length, &value), HIDP_STATUS_INCOMPATIBLE_REPORT_ID);
    EXPECT_EQ(get(HidP_Feature, 0xDEAD, id, length, &value), HIDP_STATUS_USAGE_NOT_FOUND);
    EXPECT_EQ(get(HidP_Feature, waveform, id, length, &value), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(value, 4101U);
}

TEST_P(WineCollection, LinkCollectionsNeedRoom) {
    ULONG length = 0;
    EXPECT_EQ(hidp::parser().HidP_GetLinkCollectionNodes(nullptr, &length, collection_->data()),
              HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, 11U);
}

TEST_P(WineCollection, EmptyReports) {
    Bytes report(collection_->caps().InputReportByteLength + 1U, 0xCD);
    const auto length = static_cast<ULONG>(report.size() - 1);
    const auto initialize = [&](HIDP_REPORT_TYPE type, int id, ULONG report_length) {
        return hidp::parser().HidP_InitializeReportForID(type, static_cast<UCHAR>(id), collection_->data(),
                                                         report.data(), report_length);
    };
    EXPECT_EQ(initialize(HidP_Input, report_id(), length - 1), HIDP_STATUS_INVALID_REPORT_LENGTH);
    EXPECT_EQ(initialize(HidP_Input, report_id(), length + 1), HIDP_STATUS_INVALID_REPORT_LENGTH);
    EXPECT_EQ(initialize(HidP_Input, 1 - report_id(), length), HIDP_STATUS_REPORT_DOES_NOT_EXIST);
    EXPECT_EQ(initialize(HidP_Feature, 3, collection_->caps().FeatureReportByteLength),
              HIDP_STATUS_REPORT_DOES_NOT_EXIST);
    EXPECT_EQ(initialize(HidP_Output, report_id(), collection_->caps().OutputReportByteLength),
              HIDP_STATUS_REPORT_DOES_NOT_EXIST);
    EXPECT_EQ(initialize(HidP_Input, report_id(), length), HIDP_STATUS_SUCCESS);
    Bytes expected(length);
    expected[0] = report_id();
    expected.push_back(0xCD);
    EXPECT_EQ(report, expected);
}

/// Bytes that count up from 1.
Bytes counted(std::size_t size) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), UCHAR{1});
    return bytes;
}

TEST_P(WineCollection, ValueArrays) {
    const auto set = [&](HIDP_REPORT_TYPE type, USAGE page, USAGE usage, std::size_t size, Bytes& report) {
        return hidp::parser().HidP_SetUsageValueArray(type, page, 0, usage, counted(size).data(),
                                                      static_cast<USHORT>(size), collection_->data(),
                                                      report.data(), static_cast<ULONG>(report.size()));
    };
    Bytes input = report(HidP_Input);
    EXPECT_EQ(set(HidP_Input, generic_desktop, x, 8, input), HIDP_STATUS_NOT_VALUE_ARRAY);
    EXPECT_EQ(set(HidP_Input, generic_desktop, hat_switch, 0, input), HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(set(HidP_Input, generic_desktop, hat_switch, 8, input), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(Bytes(input.begin() + 16, input.begin() + 22), counted(6)) << "two fields of 24 bits";

    constexpr USAGE cutoff_time = 0x28;
    Bytes feature = report(HidP_Feature);
    EXPECT_EQ(set(HidP_Feature, haptics, cutoff_time, 0, feature), HIDP_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(set(HidP_Feature, haptics, cutoff_time, 64, feature), HIDP_STATUS_SUCCESS);
    EXPECT_EQ(Bytes(feature.begin() + 9, feature.begin() + 17), counted(8));
    EXPECT_EQ(set(HidP_Feature, ordinal, 1, 64, feature), HIDP_STATUS_NOT_VALUE_ARRAY);
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutReportIds, WineCollection, testing::Values(0, 1));

}  // namespace
