#include "tools/headset/explain.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>

#include "tests/tools/headset/small_headset.h"
#include "tools/common/text.h"
#include "tools/headset/errors.h"

namespace headset::explain_test {
namespace {

constexpr Usage off_hook{0x08, 0x17};
constexpr Usage mute{0x08, 0x09};
constexpr Usage phone_mute{0x0B, 0x2F};

Explanation explained(const Bytes& descriptor, std::optional<DeviceIds> ids = {}) {
    return explain({descriptor, "", ids});
}

/// What the plug-in does with a model: its reports in hexadecimal, empty where there is none.
struct Row {
    const char* model;
    const char* off_hook;
    const char* mute;
    const char* call;
    const char* mute_key;
};

std::ostream& operator<<(std::ostream& stream, const Row& row) {
    return stream << row.model;
}

std::string hex(const std::optional<Bytes>& report) {
    return report ? tools::to_hex(*report) : "";
}

class ExplainModel : public testing::TestWithParam<Row> {};

TEST_P(ExplainModel, tells_what_it_lights_and_reads) {
    const Row& row = GetParam();
    const auto explanation = explained(model_descriptor(row.model));
    ASSERT_TRUE(explanation.is_open);
    ASSERT_EQ(explanation.indicators.size(), 2U);
    const auto& [first, second] = std::tie(explanation.indicators[0], explanation.indicators[1]);
    EXPECT_EQ(first.usage, off_hook);
    EXPECT_EQ(hex(first.on), row.off_hook);
    EXPECT_EQ(first.works(), *row.off_hook != '\0');
    EXPECT_EQ(second.usage, mute);
    EXPECT_EQ(hex(second.on), row.mute);
    EXPECT_EQ(second.works(), *row.mute != '\0');
    EXPECT_EQ(hex(explanation.states.at(0).report), row.call);
    EXPECT_EQ(explanation.mute_keys.size(), *row.mute_key != '\0' ? 1U : 0U);
    for (const auto& key : explanation.mute_keys) {
        EXPECT_EQ(key.usage, phone_mute);
        EXPECT_EQ(tools::to_hex(key.pressed), row.mute_key);
        EXPECT_FALSE(key.also_released);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Models, ExplainModel,
    testing::Values(Row{"anker-powerconf", "02 01 00", "02 02 00", "02 01 00", "02 04 00"},
                    Row{"epos-impact-d", "03 02", "03 10", "03 02", "02 20"},
                    Row{"jabra-link-380c", "02 01 00", "02 04 00", "02 01 00", "02 08 00"},
                    Row{"microsoft-game-voice", "", "", "", ""},
                    Row{"poly-blackwire-3220", "17 01", "09 01", "17 01", "08 01"},
                    Row{"poly-voyager-base", "04 01", "03 01", "04 01", "01 02"},
                    Row{"sennheiser-sc-660", "09 02", "09 01", "09 02", "08 01"}),
    [](const auto& row) {
        std::string name = row.param.model;
        std::ranges::replace(name, '-', '_');
        return name;
    });

TEST(Explain, every_model_with_a_telephony_collection_is_opened) {
    for (const auto* model : platform::virtual_headsets::models()) {
        const auto explanation = explained(model->descriptor, DeviceIds{model->vendor_id, model->product_id});
        const bool has_telephony = std::ranges::any_of(
            explanation.collections, [](const auto& collection) { return collection.usage.page == 0x0B; });
        EXPECT_EQ(explanation.is_open, has_telephony) << model->key;
    }
}

TEST(Explain, collections_that_are_not_opened_are_listed_with_their_fate) {
    const auto collections = explained(model_descriptor("jabra-link-380c")).collections;
    ASSERT_EQ(collections.size(), 3U);
    EXPECT_EQ(collections[0].fate, CollectionFate::opened);
    EXPECT_EQ(collections[1].fate, CollectionFate::left_alone);
    EXPECT_EQ(collections[2].fate, CollectionFate::let_in);
}

TEST(Explain, collections_that_are_ignored_are_listed_with_the_reason) {
    Descriptor descriptor{model_descriptor("jabra-link-380c")};
    descriptor.has_serial = false;
    const auto explanation = explain(descriptor);
    EXPECT_FALSE(explanation.is_open);
    EXPECT_EQ(explanation.collections.at(0).fate, CollectionFate::left_alone);
    const auto text = to_text(explanation);
    EXPECT_NE(text.find("  1  Headset (0B:05)           ignored: the device states no serial number\n"
                        "  2  FF00:01                   ignored: only the Telephony and the Consumer page "
                        "count\n"),
              std::string::npos)
        << text;
}

TEST(Explain, controls_without_use_are_listed) {
    const auto text = to_text(explained(model_descriptor("jabra-link-380c")));
    const auto unused = text.substr(text.find("There, but not used"));
    for (const char* part :
         {"key        Hook Switch (0B:20)", "key        Flash (0B:21)", "indicator  Ring (08:18)",
          "indicator  Hold (08:20)", "indicator  Ringer (0B:9E)"})
        EXPECT_NE(unused.find(part), std::string::npos) << part;
    for (const char* used : {"Off-Hook (08:17)", "Phone Mute", "Volume Increment"})
        EXPECT_EQ(unused.find(used), std::string::npos) << used;
}

TEST(Explain, a_connected_call_needs_both_indicators) {
    using namespace platform::virtual_headsets;
    const auto explanation = explained(
        descriptor({usage_page(0x0B), usage(0x05), collection(application), report_id(2), logical_minimum(0),
                    logical_maximum(1), report_size(1), report_count(1), usage_page(0x08), usage(0x17),
                    output(variable), report_count(7), output(constant), end_collection()}));
    EXPECT_TRUE(explanation.indicators.at(0).works());
    EXPECT_FALSE(explanation.indicators.at(1).works());
    EXPECT_EQ(explanation.states.at(0).report, std::nullopt);
    const auto text = to_text(explanation);
    EXPECT_NE(text.find("a connected call      nothing is sent"), std::string::npos) << text;
    EXPECT_NE(text.find("Missing\n  indicator  Mute (08:09)\n  key        Phone Mute (0B:2F)\n"),
              std::string::npos)
        << text;
}

TEST(Explain, indicators_in_a_range_are_not_lit) {
    using namespace platform::virtual_headsets;
    const auto explanation = explained(descriptor(
        {usage_page(0x0B), usage(0x05), collection(application), report_id(2), logical_minimum(0),
         logical_maximum(1), report_size(1), report_count(2), usage_page(0x08), usage_minimum(0x17),
         usage_maximum(0x18), output(variable), report_count(6), output(constant), end_collection()}));
    EXPECT_FALSE(explanation.indicators.at(0).works());
}

/// What works in a call: "works", "not used" or "not there" by function.
std::map<std::string, std::string> functions(const Explanation& explanation) {
    std::map<std::string, std::string> found;
    for (const auto& function : explanation.functions)
        found.emplace(function.name, to_string(function.support));
    return found;
}

TEST(Explain, with_the_standard_driver_mute_alone_works) {
    const auto explanation = explained(model_descriptor("jabra-link-380c"));
    EXPECT_EQ(functions(explanation), (std::map<std::string, std::string>{{"mute key", "works"},
                                                                          {"answer and end key", "not used"},
                                                                          {"reject key", "not used"},
                                                                          {"hold key", "not used"},
                                                                          {"redial key", "not used"},
                                                                          {"off-hook indicator", "works"},
                                                                          {"mute indicator", "works"},
                                                                          {"ring indicator", "not used"}}));
    const auto text = to_text(explanation);
    for (const char* line : {"  mute key            works     Phone Mute (0B:2F)\n",
                             "  answer and end key  not used  Hook Switch (0B:20)\n",
                             "  hold key            not used  Flash (0B:21)\n",
                             "  ring indicator      not used  Ring (08:18), Ringer (0B:9E)\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line << text;
}

TEST(Explain, what_the_headset_lacks_is_not_there) {
    const auto found = functions(explained(model_descriptor("logitech-mx-brio")));
    EXPECT_EQ(found.at("mute key"), "works");
    EXPECT_EQ(found.at("off-hook indicator"), "not there");
    EXPECT_EQ(found.at("redial key"), "not there");
}

TEST(Explain, without_a_driver_nothing_works) {
    const auto razer = explained(model_descriptor("razer-blackshark-v2"), DeviceIds{0x1532, 0x0565});
    EXPECT_EQ(functions(razer).at("mute key"), "not used");
    for (const auto& [name, support] : functions(razer))
        EXPECT_NE(support, "works") << name;
    EXPECT_NE(to_text(razer).find("no driver for this vendor, so nothing works"), std::string::npos);
}

TEST(Explain, controls_in_a_range_of_usages_do_not_work) {
    using namespace platform::virtual_headsets;
    const auto explanation = explained(descriptor({usage_page(0x0B),
                                                   usage(0x05),
                                                   collection(application),
                                                   logical_minimum(0),
                                                   logical_maximum(1),
                                                   report_size(1),
                                                   report_count(2),
                                                   usage_minimum(0x2E),
                                                   usage_maximum(0x2F),
                                                   input(variable | relative),
                                                   report_count(6),
                                                   input(constant),
                                                   report_count(2),
                                                   usage_page(0x08),
                                                   usage(0x09),
                                                   usage(0x17),
                                                   output(variable),
                                                   usage_minimum(0x18),
                                                   usage_maximum(0x19),
                                                   output(variable),
                                                   report_count(4),
                                                   output(constant),
                                                   end_collection()}));
    EXPECT_EQ(functions(explanation).at("mute key"), "not used");
    EXPECT_EQ(functions(explanation).at("off-hook indicator"), "works");
    EXPECT_NE(to_text(explanation).find("mute key            not used: inside a range of usages"),
              std::string::npos)
        << to_text(explanation);
}

TEST(Explain, the_second_mute_usage_counts) {
    using namespace platform::virtual_headsets;
    const auto explanation = explained(
        descriptor({usage_page(0x0B), usage(0x05), collection(application), logical_minimum(0),
                    logical_maximum(1), report_size(1), report_count(1), usage(0xB5),
                    input(variable | relative), report_count(7), input(constant), end_collection()}));
    ASSERT_EQ(explanation.mute_keys.size(), 1U);
    EXPECT_EQ(explanation.mute_keys[0].usage, (Usage{0x0B, 0xB5}));
    EXPECT_EQ(tools::to_hex(explanation.mute_keys[0].pressed), "00 01");
}

TEST(Explain, a_headset_without_telephony_is_not_opened) {
    const auto explanation = explained(model_descriptor("logitech-g535"));
    EXPECT_FALSE(explanation.is_open);
    EXPECT_TRUE(explanation.indicators.empty());
    EXPECT_NE(to_text(explanation).find("Missing\n  a collection of the Telephony page"), std::string::npos);
}

TEST(Explain, the_vendor_decides_about_the_driver) {
    const auto jabra = model_descriptor("jabra-link-380c");
    EXPECT_TRUE(explained(jabra).has_driver);
    EXPECT_TRUE(explained(jabra, DeviceIds{0x0B0E, 0x24C9}).has_driver);
    const auto razer = explained(model_descriptor("razer-blackshark-v2"), DeviceIds{0x1532, 0x0565});
    EXPECT_FALSE(razer.has_driver);
    EXPECT_EQ(razer.states.at(0).report, std::nullopt);
    EXPECT_NE(to_text(razer).find("1532:0565: the plug-in has no driver for this vendor"), std::string::npos);
}

TEST(Explain, the_makers_own_headsets_are_not_let_in) {
    const auto explanation =
        explained(model_descriptor("jabra-link-380c"), DeviceIds{ORVEX_CONFIGURED_VENDOR_ID, 0x0001});
    EXPECT_FALSE(explanation.is_open);
    EXPECT_EQ(explanation.collections.at(0).fate, CollectionFate::left_alone);
}

TEST(Explain, a_collection_that_cannot_be_opened_is_told_with_the_reason) {
    using namespace platform::virtual_headsets;
    // More values than the plug-in keeps of one headset.
    const auto explanation =
        explained(descriptor({usage_page(0x0B), usage(0x05), collection(application), logical_minimum(0),
                              logical_maximum(3), report_size(2), report_count(2000), usage_minimum(0x1000),
                              usage_maximum(0x1FFF), input(variable), end_collection()}));
    EXPECT_FALSE(explanation.is_open);
    EXPECT_EQ(explanation.collections.at(0).fate, CollectionFate::not_opened);
    EXPECT_NE(to_text(explanation).find("cannot be opened: Internal error"), std::string::npos);
}

TEST(Explain, a_malformed_descriptor_is_refused) {
    EXPECT_THROW(explained({0x05, 0x0B}), Refused);
}

TEST(Explain, the_whole_text) {
    Descriptor descriptor{small_headset(), "Small", DeviceIds{0x0B0E, 0x1234}};
    EXPECT_EQ(to_text(explain(descriptor)),
              "Small, 0B0E:1234: the plug-in has a driver for this vendor\n"
              "\n"
              "In a call\n"
              "  mute key            works      Phone Mute (0B:2F)\n"
              "  answer and end key  not there\n"
              "  reject key          not there\n"
              "  hold key            not there\n"
              "  redial key          not there\n"
              "  off-hook indicator  works      Off-Hook (08:17)\n"
              "  mute indicator      works      Mute (08:09)\n"
              "  ring indicator      not used   Ring (08:18)\n"
              "\n"
              "Collections\n"
              "  1  Headset (0B:05)  opened\n"
              "\n"
              "Indicators\n"
              "  Off-Hook (08:17)      lit by 02 01, put out by 02 00\n"
              "  Mute (08:09)          lit by 02 02, put out by 02 00\n"
              "  a connected call      02 01, lit: Off-Hook\n"
              "  ... and muted         02 03, lit: Off-Hook, Mute\n"
              "  ... and a call rings  02 03, lit: Off-Hook, Mute\n"
              "\n"
              "Keys\n"
              "  Phone Mute (0B:2F)  reaches the client as the mute key: 01 01 0B\n"
              "\n"
              "Missing\n"
              "  nothing\n"
              "\n"
              "There, but not used\n"
              "  value      0B:E0\n"
              "  indicator  Ring (08:18)\n");
}

}  // namespace
}  // namespace headset::explain_test
