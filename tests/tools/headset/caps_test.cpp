#include <gtest/gtest.h>
#include <new>
#include <set>
#include <sstream>
#include <utility>

#include "tests/tools/headset/small_headset.h"
#include "tools/common/text.h"
#include "tools/headset/caps_json.h"
#include "tools/headset/caps_table.h"

namespace headset {
namespace {

using platform::hidp::parser;

std::vector<std::string> names(const Json& object) {
    std::vector<std::string> names;
    for (const auto& [name, value] : object.items())
        names.push_back(name);
    return names;
}

/// What a structure of the platform's says, beside what JSON says.
void expect_common(const Json& json, const auto& cap) {
    EXPECT_EQ(json["UsagePage"], cap.UsagePage);
    EXPECT_EQ(json["ReportID"], cap.ReportID);
    EXPECT_EQ(json["IsAlias"], cap.IsAlias);
    EXPECT_EQ(json["BitField"], cap.BitField);
    EXPECT_EQ(json["LinkCollection"], cap.LinkCollection);
    EXPECT_EQ(json["LinkUsage"], cap.LinkUsage);
    EXPECT_EQ(json["LinkUsagePage"], cap.LinkUsagePage);
    EXPECT_EQ(json["IsRange"], cap.IsRange);
    EXPECT_EQ(json["IsAbsolute"], cap.IsAbsolute);
    EXPECT_EQ(json["ReportCount"], cap.ReportCount);
    EXPECT_EQ(json["UsageMin"], cap.Range.UsageMin);
    EXPECT_EQ(json["UsageMax"], cap.IsRange != 0 ? cap.Range.UsageMax : cap.NotRange.Usage);
    EXPECT_EQ(json["DataIndexMin"], cap.Range.DataIndexMin);
    EXPECT_EQ(json["DataIndexMax"], cap.Range.DataIndexMax);
}

/// Throws for its second character.
class FailingBuffer final : public std::streambuf {
    int_type underflow() override { return uflow(); }
    int_type uflow() override {
        if (std::exchange(has_read_, true))
            throw std::bad_alloc();
        return traits_type::to_int_type('0');
    }
    bool has_read_ = false;
};

TEST(CapsJson, input_that_ends_for_lack_of_memory_is_no_success) {
    FailingBuffer buffer;
    std::istream input(&buffer);
    std::ostringstream output;
    EXPECT_THROW(answer_caps_lines(input, output), std::bad_alloc);
}

TEST(CapsJson, of_every_model_is_what_the_platform_functions_give) {
    for (const auto* model : platform::virtual_headsets::models()) {
        SCOPED_TRACE(model->key);
        const auto collections = parse_collections(model->descriptor);
        const Json json = caps_to_json(collections);
        ASSERT_EQ(json["collections"].size(), collections.size());
        for (std::size_t i = 0; i < collections.size(); ++i) {
            const Json& collection = json["collections"][i];
            const auto data = collections[i].get();
            HIDP_CAPS caps{};
            ASSERT_EQ(parser().HidP_GetCaps(data, &caps), platform::HIDP_STATUS_SUCCESS);
            EXPECT_EQ(collection["UsagePage"], caps.UsagePage);
            EXPECT_EQ(collection["Usage"], caps.Usage);
            EXPECT_EQ(collection["InputReportByteLength"], caps.InputReportByteLength);
            EXPECT_EQ(collection["OutputReportByteLength"], caps.OutputReportByteLength);
            EXPECT_EQ(collection["FeatureReportByteLength"], caps.FeatureReportByteLength);
            EXPECT_EQ(collection["NumberInputButtonCaps"], caps.NumberInputButtonCaps);
            EXPECT_EQ(collection["NumberInputValueCaps"], caps.NumberInputValueCaps);
            EXPECT_EQ(collection["NumberInputDataIndices"], caps.NumberInputDataIndices);
            EXPECT_EQ(collection["NumberOutputButtonCaps"], caps.NumberOutputButtonCaps);
            EXPECT_EQ(collection["NumberOutputValueCaps"], caps.NumberOutputValueCaps);
            EXPECT_EQ(collection["NumberOutputDataIndices"], caps.NumberOutputDataIndices);
            EXPECT_EQ(collection["NumberFeatureButtonCaps"], caps.NumberFeatureButtonCaps);
            EXPECT_EQ(collection["NumberFeatureValueCaps"], caps.NumberFeatureValueCaps);
            EXPECT_EQ(collection["NumberFeatureDataIndices"], caps.NumberFeatureDataIndices);
            EXPECT_EQ(collection["NumberLinkCollectionNodes"], caps.NumberLinkCollectionNodes);
            EXPECT_EQ(collection["LinkCollectionNodes"].size(), caps.NumberLinkCollectionNodes);
            for (const auto direction : directions) {
                SCOPED_TRACE(to_string(direction));
                const auto buttons = get_button_caps(data, direction);
                const Json& button_json = collection["ButtonCaps"][to_string(direction)];
                ASSERT_EQ(button_json.size(), buttons.size());
                for (std::size_t at = 0; at < buttons.size(); ++at)
                    expect_common(button_json[at], buttons[at]);
                const auto values = get_value_caps(data, direction);
                const Json& value_json = collection["ValueCaps"][to_string(direction)];
                ASSERT_EQ(value_json.size(), values.size());
                for (std::size_t at = 0; at < values.size(); ++at) {
                    expect_common(value_json[at], values[at]);
                    EXPECT_EQ(value_json[at]["HasNull"], values[at].HasNull);
                    EXPECT_EQ(value_json[at]["BitSize"], values[at].BitSize);
                    EXPECT_EQ(value_json[at]["Units"], values[at].Units);
                    EXPECT_EQ(value_json[at]["LogicalMin"], values[at].LogicalMin);
                    EXPECT_EQ(value_json[at]["LogicalMax"], values[at].LogicalMax);
                    EXPECT_EQ(value_json[at]["PhysicalMin"], values[at].PhysicalMin);
                    EXPECT_EQ(value_json[at]["PhysicalMax"], values[at].PhysicalMax);
                }
                std::set<platform::USAGE> pages;
                for (const auto& cap : buttons)
                    pages.insert(cap.UsagePage);
                const Json& lengths = collection["MaxUsageListLength"][to_string(direction)];
                ASSERT_TRUE(lengths.is_object());
                EXPECT_EQ(lengths.size(), pages.size());
                for (const auto& [page, length] : lengths.items())
                    EXPECT_EQ(length, parser().HidP_MaxUsageListLength(
                                          direction,
                                          static_cast<platform::USAGE>(std::stoul(page, nullptr, 16)), data))
                        << page;
            }
        }
    }
}

TEST(CapsJson, members_have_the_structures_names_in_their_order) {
    const Json collection = caps_to_json(parse_collections(small_headset()))["collections"][0];
    EXPECT_EQ(names(collection),
              (std::vector<std::string>{
                  "UsagePage", "Usage", "InputReportByteLength", "OutputReportByteLength",
                  "FeatureReportByteLength", "NumberLinkCollectionNodes", "NumberInputButtonCaps",
                  "NumberInputValueCaps", "NumberInputDataIndices", "NumberOutputButtonCaps",
                  "NumberOutputValueCaps", "NumberOutputDataIndices", "NumberFeatureButtonCaps",
                  "NumberFeatureValueCaps", "NumberFeatureDataIndices", "LinkCollectionNodes", "ButtonCaps",
                  "ValueCaps", "MaxUsageListLength"}));
    const std::vector<std::string> directions_in_order{"Input", "Output", "Feature"};
    for (const char* member : {"ButtonCaps", "ValueCaps", "MaxUsageListLength"})
        EXPECT_EQ(names(collection[member]), directions_in_order) << member;
    EXPECT_EQ(names(collection["LinkCollectionNodes"][0]),
              (std::vector<std::string>{"LinkUsage", "LinkUsagePage", "Parent", "NumberOfChildren",
                                        "NextSibling", "FirstChild", "CollectionType", "IsAlias"}));
    EXPECT_EQ(names(collection["ButtonCaps"]["Input"][0]),
              (std::vector<std::string>{
                  "UsagePage",  "ReportID",      "IsAlias",       "BitField",      "LinkCollection",
                  "LinkUsage",  "LinkUsagePage", "IsRange",       "IsStringRange", "IsDesignatorRange",
                  "IsAbsolute", "ReportCount",   "UsageMin",      "UsageMax",      "StringMin",
                  "StringMax",  "DesignatorMin", "DesignatorMax", "DataIndexMin",  "DataIndexMax"}));
    EXPECT_EQ(names(collection["ValueCaps"]["Input"][0]),
              (std::vector<std::string>{
                  "UsagePage",     "ReportID",      "IsAlias",     "BitField",      "LinkCollection",
                  "LinkUsage",     "LinkUsagePage", "IsRange",     "IsStringRange", "IsDesignatorRange",
                  "IsAbsolute",    "HasNull",       "BitSize",     "ReportCount",   "UnitsExp",
                  "Units",         "LogicalMin",    "LogicalMax",  "PhysicalMin",   "PhysicalMax",
                  "UsageMin",      "UsageMax",      "StringMin",   "StringMax",     "DesignatorMin",
                  "DesignatorMax", "DataIndexMin",  "DataIndexMax"}));
}

TEST(CapsJson, limits_and_exponents_are_signed) {
    using namespace platform::virtual_headsets;
    Bytes bytes = descriptor({usage_page(1), usage(6), collection(application), usage(0x30),
                              logical_minimum(-10), logical_maximum(10), report_size(8), report_count(1)});
    const Bytes exponent_and_rest{0x55, 0xFD, 0x81, 0x02, 0xC0};  // UNIT_EXPONENT (HID 1.11, 6.2.2.7), Input
    bytes.insert(bytes.end(), exponent_and_rest.begin(), exponent_and_rest.end());
    const Json json = caps_to_json(parse_collections(bytes));
    const Json& value = json["collections"][0]["ValueCaps"]["Input"][0];
    EXPECT_EQ(value["LogicalMin"], -10);
    EXPECT_EQ(value["UnitsExp"], -3);
    EXPECT_EQ(value["IsRange"].dump(), "0");
}

TEST(CapsJson, lengths_of_usage_lists_have_a_member_for_each_page_with_buttons) {
    const Json json = caps_to_json(parse_collections(model_descriptor("jabra-link-380c")));
    EXPECT_EQ(json["collections"][0]["MaxUsageListLength"].dump(),
              R"({"Input":{"0x09":1,"0x0B":8},"Output":{"0x08":7,"0x0B":1},"Feature":{}})");
    EXPECT_EQ(json["collections"][1]["MaxUsageListLength"]["Feature"].dump(), R"({"0xFF30":1})");
}

TEST(CapsLines, every_line_is_answered) {
    std::istringstream input(tools::to_hex(headset_without_ids()) +
                             "\n\nzz\n05 0B 95\n0xA1 0x01, 0xC0 # ok\r\nA1");
    std::ostringstream output;
    answer_caps_lines(input, output);
    std::istringstream lines(output.str());
    std::vector<Json> answers;
    for (std::string line; std::getline(lines, line);)
        answers.push_back(Json::parse(line));
    ASSERT_EQ(answers.size(), 6U);
    EXPECT_EQ(answers[0]["collections"].size(), 1U);
    EXPECT_EQ(answers[1]["error"]["text"], "no collection");
    EXPECT_EQ(answers[2].dump(), R"({"error":{"text":"\"zz\" is not hexadecimal"}})");
    EXPECT_EQ(answers[3]["error"]["offset"], 2);
    EXPECT_EQ(answers[3]["error"]["item"], 0x95);
    EXPECT_TRUE(answers[3]["error"]["text"].is_string());
    EXPECT_TRUE(answers[4].contains("collections"));
    EXPECT_EQ(answers[5]["error"]["item"], 0xA1);
}

TEST(CapsLines, bytes_that_are_no_text_are_answered_in_UTF8) {
    std::istringstream input("\xFF\xFE\n");
    std::ostringstream output;
    answer_caps_lines(input, output);
    EXPECT_TRUE(Json::parse(output.str())["error"]["text"].is_string());
}

TEST(CapsTable, has_a_line_for_each_capability) {
    EXPECT_EQ(
        caps_table(parse_collections(small_headset())),
        "Headset (0B:05)\n"
        "  Input 3 bytes, Output 3 bytes, Feature 2 bytes; link collections: 1\n"
        "\n"
        "  Input    id 01  1.0  1  button  Phone Mute (0B:2F)                  data variable relative\n"
        "  Input    id 01  2.0  8  value   0B:E0                      -10..10  data variable absolute null-state\n"
        "  Output   id 02  1.1  1  button  Mute (08:09)                        data variable absolute\n"
        "  Output   id 02  1.0  1  button  Off-Hook (08:17)                    data variable absolute\n"
        "  Output   id 03  1.0  1  button  Ring (08:18)                        data variable absolute\n"
        "  Feature  id 04  1.0  8  value   Generic Indicator (08:4B)  0..255   data variable absolute\n");
}

TEST(CapsTable, ranges_and_runs_are_named) {
    const auto table = caps_table(parse_collections(model_descriptor("jabra-link-380c")));
    for (const char* part :
         {"Phone Key 0 to Phone Key Pound (0B:B0-BB)", "62 x 8", "constant variable relative",
          "data array absolute null-state", "buffered-bytes", "\n\nConsumer Control (0C:01)\n"})
        EXPECT_NE(table.find(part), std::string::npos) << part;
}

TEST(CapsTable, without_report_ids_none_is_shown) {
    const auto table = caps_table(parse_collections(headset_without_ids()));
    EXPECT_EQ(table.find("id "), std::string::npos) << table;
    EXPECT_NE(table.find("Output none"), std::string::npos) << table;
}

}  // namespace
}  // namespace headset
