// The parser against preparsed data dumped on Windows: every stored field of every capability.
#include <gtest/gtest.h>

#include "tests/platform/hidp/collection.h"
#include "tests/platform/hidp/json_fields.h"
#include "tests/support/reference_data.h"

using namespace platform;
using hidp_test::Collection;
using nlohmann::json;

namespace {

constexpr const char* direction_names[] = {"Input", "Output", "Feature"};

/// Without what the dump adds (the running number) or Windows leaves unused.
json stored_fields(json capability) {
    for (const char* name : {"index", "Reserved1", "UnknownTokens"}) {
        capability.erase(name);
    }
    return capability;
}

json windows_fields(const hidp::Capability& cap, const HIDP_LINK_COLLECTION_NODE& link) {
    json result = reference::common_fields(cap, link);
    result.update({{"IsMultipleItemsForArray", int{cap.has_more_for_array}},
                   {"IsButtonCap", int{cap.is_button}},
                   {"IsPadding", int{cap.is_padding()}},
                   {"IsAbsolute", int{cap.is_absolute()}},
                   {"IsRange", int{cap.is_range}},
                   {"IsAlias", int{cap.is_alias}},
                   {"IsStringRange", int{cap.is_string_range}},
                   {"IsDesignatorRange", int{cap.is_designator_range}}});
    if (cap.is_range) {
        result["Range"] = {{"UsageMin", cap.usage_min},           {"UsageMax", cap.usage_max},
                           {"StringMin", cap.string_min},         {"StringMax", cap.string_max},
                           {"DesignatorMin", cap.designator_min}, {"DesignatorMax", cap.designator_max},
                           {"DataIndexMin", cap.data_index_min},  {"DataIndexMax", cap.data_index_max}};
    } else {
        result["NotRange"] = {{"Usage", cap.usage_min},
                              {"Reserved1", cap.usage_max},
                              {"StringIndex", cap.string_min},
                              {"Reserved2", cap.string_max},
                              {"DesignatorIndex", cap.designator_min},
                              {"Reserved3", cap.designator_max},
                              {"DataIndex", cap.data_index_min},
                              {"Reserved4", cap.data_index_max}};
    }
    if (cap.is_button) {
        result["Button"] = {{"LogicalMin", cap.logical_min}, {"LogicalMax", cap.logical_max}};
    } else {
        result["NotButton"] = {{"HasNull", int{cap.has_null()}},  {"Reserved4", 0},
                               {"LogicalMin", cap.logical_min},   {"LogicalMax", cap.logical_max},
                               {"PhysicalMin", cap.physical_min}, {"PhysicalMax", cap.physical_max}};
    }
    return result;
}

/// The whole descriptor that the dump's collection is part of: global items last from one top-level
/// collection to the next, so that a collection alone may read differently.
std::string whole_descriptor(const json& dump) {
    const json& descriptor = dump.at("report_descriptor");
    if (descriptor.at("full_real_hex").is_string()) {
        return descriptor.at("full_real_hex");
    }
    const std::string alone = descriptor.at("hex");
    for (const auto& [name, headset] : reference::load("real")) {
        if (!reference::has_descriptor(headset)) {
            continue;
        }
        const std::string whole = headset.at("descriptor_hex");
        if (whole.find(alone) != std::string::npos) {
            return whole;
        }
    }
    return alone;
}

Collection dumped_collection(const json& dump) {
    const auto descriptor = reference::bytes(whole_descriptor(dump));
    const json& wanted = dump.at("preparsed");
    for (std::size_t index = 0;; ++index) {
        Collection collection(descriptor, index);
        if (collection.caps().UsagePage == wanted.at("UsagePage") &&
            collection.caps().Usage == wanted.at("Usage")) {
            return collection;
        }
    }
}

class WindowsReference : public testing::Test {
  protected:
    void SetUp() override { SKIP_WITHOUT_REFERENCE_DATA(); }
};

TEST_F(WindowsReference, CapsAreThoseOfTheDump) {
    for (const auto& [name, dump] : reference::load("winpp")) {
        SCOPED_TRACE(name);
        EXPECT_EQ(reference::to_json(dumped_collection(dump).caps()), dump.at("hidp_caps_derived"));
    }
}

TEST_F(WindowsReference, EveryStoredFieldOfEveryCapabilityIsThatOfTheDump) {
    for (const auto& [name, dump] : reference::load("winpp")) {
        const Collection collection = dumped_collection(dump);
        for (const auto type : {HidP_Input, HidP_Output, HidP_Feature}) {
            const json& expected = dump.at("preparsed").at("caps").at(direction_names[type]);
            const auto& actual = collection.direction(type).capabilities;
            ASSERT_EQ(actual.size(), expected.size()) << name;
            for (std::size_t i = 0; i < actual.size(); ++i) {
                SCOPED_TRACE(name + ", " + direction_names[type] + " " + std::to_string(i));
                const auto& link = collection.data()->link_collections[actual[i].link_collection];
                EXPECT_EQ(windows_fields(actual[i], link), stored_fields(expected[i]));
            }
        }
    }
}

TEST_F(WindowsReference, CapabilitiesAreCountedAndStoredAsInTheDump) {
    for (const auto& [name, dump] : reference::load("winpp")) {
        SCOPED_TRACE(name);
        const Collection collection = dumped_collection(dump);
        std::size_t first = 0;
        for (const auto type : {HidP_Input, HidP_Output, HidP_Feature}) {
            const auto& direction = collection.direction(type);
            const json actual = {{"FirstCap", first},
                                 {"LastCap", first + direction.capabilities.size()},
                                 {"NumberOfCaps", direction.declared_capabilities},
                                 {"ReportByteLength", direction.report_byte_length}};
            EXPECT_EQ(actual, dump.at("preparsed").at("caps_info").at(type));
            first += direction.declared_capabilities;
        }
    }
}

TEST_F(WindowsReference, LinkCollectionsAreThoseOfTheDump) {
    for (const auto& [name, dump] : reference::load("winpp")) {
        SCOPED_TRACE(name);
        const Collection collection = dumped_collection(dump);
        json actual = json::array();
        for (const auto& node : collection.data()->link_collections) {
            actual.push_back(reference::to_json(node));
        }
        EXPECT_EQ(actual, dump.at("preparsed").at("LinkCollectionArray"));
    }
}

}  // namespace
