#include "tools/headset/decode.h"

#include <gtest/gtest.h>

#include "tests/tools/headset/small_headset.h"
#include "tools/headset/encode.h"
#include "tools/headset/errors.h"

namespace headset {
namespace {

using platform::HidP_Feature;
using platform::HidP_Input;
using platform::HidP_Output;

DecodedReport decoded(const Bytes& descriptor, HIDP_REPORT_TYPE direction, const Bytes& report) {
    return decode(parse_collections(descriptor), direction, report);
}

std::string refusal(const Bytes& descriptor, HIDP_REPORT_TYPE direction, const Bytes& report) {
    try {
        decoded(descriptor, direction, report);
    } catch (const Refused& error) {
        return error.what();
    }
    return "accepted";
}

TEST(Decode, buttons_and_values) {
    const auto report = decoded(small_headset(), HidP_Input, {0x01, 0x01, 0xFD});
    EXPECT_EQ(report.report_id, 1);
    EXPECT_EQ(report.collection, (Usage{0x0B, 0x05}));
    EXPECT_EQ(report.buttons, (std::vector<Usage>{{0x0B, 0x2F}}));
    ASSERT_EQ(report.values.size(), 1U);
    EXPECT_EQ(report.values[0].usage, (Usage{0x0B, 0xE0}));
    EXPECT_EQ(report.values[0].value, 0xFDU);
    EXPECT_EQ(report.values[0].scaled, -3);
}

TEST(Decode, a_null_value_is_not_scaled) {
    const auto report = decoded(small_headset(), HidP_Input, {0x01, 0x00, 0x0B});
    EXPECT_EQ(report.buttons, std::vector<Usage>{});
    ASSERT_EQ(report.values.size(), 1U);
    EXPECT_EQ(report.values[0].value, 0x0BU);
    EXPECT_EQ(report.values[0].scaled, std::nullopt);
}

TEST(Decode, only_what_is_in_the_report) {
    EXPECT_EQ(decoded(small_headset(), HidP_Output, {0x02, 0x03}).buttons.size(), 2U);
    EXPECT_EQ(decoded(small_headset(), HidP_Output, {0x03, 0x03, 0x00}).buttons,
              (std::vector<Usage>{{0x08, 0x18}}));
    EXPECT_EQ(decoded(small_headset(), HidP_Feature, {0x04, 0xFF}).values.at(0).value, 0xFFU);
}

TEST(Decode, a_report_may_be_filled_up_to_the_longest) {
    EXPECT_EQ(refusal(small_headset(), HidP_Output, {0x02, 0x01}), "accepted");
    EXPECT_EQ(refusal(small_headset(), HidP_Output, {0x02, 0x01, 0x00}), "accepted");
    EXPECT_EQ(refusal(small_headset(), HidP_Output, {0x02, 0x01, 0x00, 0x00}),
              "the Output report \"02 01 00 00\" has 4 bytes; it is to have 2 to 3 bytes");
    EXPECT_EQ(refusal(small_headset(), HidP_Output, {0x02}),
              "the Output report \"02\" has 1 byte; it is to have 2 to 3 bytes");
}

TEST(Decode, an_id_that_is_not_there_is_refused) {
    EXPECT_EQ(refusal(small_headset(), HidP_Input, {0x02, 0x01, 0x00}),
              "the Input report \"02 01 00\": the descriptor has no Input report of the id 02");
    EXPECT_EQ(refusal(small_headset(), HidP_Input, {}), "a report has at least one byte");
}

TEST(Decode, without_report_ids_the_0_may_be_left_out) {
    for (const Bytes& report : {Bytes{0x01}, Bytes{0x00, 0x01}})
        EXPECT_EQ(decoded(headset_without_ids(), HidP_Input, report).buttons,
                  (std::vector<Usage>{{0x0B, 0x2F}}));
    EXPECT_EQ(refusal(headset_without_ids(), HidP_Input, {0x01, 0x01}),
              "the Input report \"01 01\": the descriptor has no Input report that begins with 01");
    EXPECT_EQ(refusal(headset_without_ids(), HidP_Input, {0x00, 0x01, 0x00}),
              "the Input report \"00 01 00\" has 3 bytes; it is to have 2 bytes with the id 0");
    EXPECT_EQ(refusal(headset_without_ids(), HidP_Output, {0x00, 0x01}),
              "the Output report \"00 01\": the descriptor has no Output report that begins with 00");
}

TEST(Decode, the_report_goes_to_the_collection_that_has_its_id) {
    const auto jabra = model_descriptor("jabra-link-380c");
    EXPECT_EQ(decoded(jabra, HidP_Input, {0x01, 0x01, 0x00}).collection, (Usage{0x0C, 0x01}));
    EXPECT_EQ(decoded(jabra, HidP_Input, {0x04, 0x01, 0x00}).collection, (Usage{0xFF00, 0x01}));
}

TEST(Decode, a_usage_of_several_fields_has_a_value_for_each) {
    Bytes report(63);
    report[0] = 0x05;
    report[62] = 0x7F;
    const auto values = decoded(model_descriptor("jabra-link-380c"), HidP_Input, report).values;
    ASSERT_EQ(values.size(), 62U);
    EXPECT_EQ(values[0].value, 0U);
    EXPECT_EQ(values[61].value, 0x7FU);
    EXPECT_EQ(values[61].scaled, 0x7F);
    EXPECT_EQ(values[61].usage, (Usage{0xFF00, 0x01}));
}

// But those of an array whose fields are too small to name them.
TEST(Decode, every_button_of_every_model_comes_back_from_its_report) {
    for (const auto* model : platform::virtual_headsets::models()) {
        const auto collections = parse_collections(model->descriptor);
        for (const auto direction : directions)
            for (const auto& collection : collections)
                for (const Capability& capability : capabilities(collection.get(), direction)) {
                    const Usage usage = first_usage(capability);
                    if (!capability.is_button || usage.id == 0 || !capability.holds(usage.id))
                        continue;
                    const Assignment assignment{{usage}, 1};
                    const auto reports = encode(collections, direction, {&assignment, 1});
                    ASSERT_EQ(reports.size(), 1U) << model->key << usage_label(usage);
                    EXPECT_EQ(decode(collections, direction, reports[0].bytes).buttons,
                              std::vector<Usage>{usage})
                        << model->key << " " << usage_label(usage);
                }
    }
}

TEST(DecodeText, names_what_is_set) {
    EXPECT_EQ(to_text(decoded(small_headset(), HidP_Input, {0x01, 0x01, 0x05})),
              "Input report 01 of Headset (0B:05)\n"
              "  button  Phone Mute (0B:2F)\n"
              "  value   0B:E0               raw 5  scaled 5\n");
    EXPECT_EQ(to_text(decoded(headset_without_ids(), HidP_Input, {0x00})),
              "Input report of Headset (0B:05)\n"
              "  no button is set\n");
}

}  // namespace
}  // namespace headset
