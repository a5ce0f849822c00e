#include "tests/platform/hidp/json_fields.h"

#include <gtest/gtest.h>

namespace reference {

using namespace platform;
using nlohmann::json;

json to_json(const HIDP_CAPS& caps) {
    return {{"Usage", caps.Usage},
            {"UsagePage", caps.UsagePage},
            {"InputReportByteLength", caps.InputReportByteLength},
            {"OutputReportByteLength", caps.OutputReportByteLength},
            {"FeatureReportByteLength", caps.FeatureReportByteLength},
            {"NumberLinkCollectionNodes", caps.NumberLinkCollectionNodes},
            {"NumberInputButtonCaps", caps.NumberInputButtonCaps},
            {"NumberInputValueCaps", caps.NumberInputValueCaps},
            {"NumberInputDataIndices", caps.NumberInputDataIndices},
            {"NumberOutputButtonCaps", caps.NumberOutputButtonCaps},
            {"NumberOutputValueCaps", caps.NumberOutputValueCaps},
            {"NumberOutputDataIndices", caps.NumberOutputDataIndices},
            {"NumberFeatureButtonCaps", caps.NumberFeatureButtonCaps},
            {"NumberFeatureValueCaps", caps.NumberFeatureValueCaps},
            {"NumberFeatureDataIndices", caps.NumberFeatureDataIndices}};
}

json to_json(const HIDP_LINK_COLLECTION_NODE& node) {
    return {{"LinkUsage", node.LinkUsage},
            {"LinkUsagePage", node.LinkUsagePage},
            {"Parent", node.Parent},
            {"NumberOfChildren", node.NumberOfChildren},
            {"NextSibling", node.NextSibling},
            {"FirstChild", node.FirstChild},
            {"CollectionType", static_cast<int>(node.CollectionType)},
            {"IsAlias", static_cast<int>(node.IsAlias)},
            {"Reserved", 0}};
}

json common_fields(const hidp::Capability& cap, const HIDP_LINK_COLLECTION_NODE& link) {
    const ULONG bits = ULONG{cap.bit_size} * cap.report_count;
    return {{"UsagePage", cap.usage_page},
            {"ReportID", cap.report_id},
            {"BitPosition", cap.bit_position % 8},
            {"BitSize", cap.bit_size},
            {"ReportCount", cap.report_count},
            {"BytePosition", cap.bit_position / 8},
            {"BitCount", bits},
            {"BitField", cap.bit_field},
            {"NextBytePosition", (cap.bit_position + bits + 7) / 8},
            {"LinkCollection", cap.link_collection},
            {"LinkUsagePage", link.LinkUsagePage},
            {"LinkUsage", link.LinkUsage},
            {"Units", cap.units},
            {"UnitsExp", cap.units_exp}};
}

void expect_fields(const json& actual, const json& expected) {
    for (const auto& [name, value] : expected.items()) {
        if (!value.is_null()) {
            EXPECT_EQ(actual.value(name, json()), value) << name;
        }
    }
}

}  // namespace reference
