#include "tools/headset/encode.h"

#include <gtest/gtest.h>

#include "tests/tools/headset/small_headset.h"
#include "tools/headset/errors.h"

namespace headset {
namespace {

using platform::HidP_Feature;
using platform::HidP_Input;
using platform::HidP_Output;
using Lines = std::vector<std::string>;

Lines encoded(const Bytes& descriptor, HIDP_REPORT_TYPE direction, const std::vector<const char*>& words) {
    const auto collections = parse_collections(descriptor);
    std::vector<Assignment> assignments;
    for (const char* word : words)
        assignments.push_back(parse_assignment(word));
    Lines lines;
    for (const auto& report : encode(collections, direction, assignments))
        lines.push_back(tools::to_hex(report.bytes));
    return lines;
}

std::string refusal(HIDP_REPORT_TYPE direction, const char* word) {
    try {
        encoded(small_headset(), direction, {word});
    } catch (const Refused& error) {
        return error.what();
    }
    return "accepted";
}

TEST(ParseAssignment, a_usage_alone_is_set) {
    const auto assignment = parse_assignment("08:17");
    EXPECT_EQ(assignment.usages, (std::vector{Usage{0x08, 0x17}}));
    EXPECT_EQ(assignment.value, 1);
}

TEST(ParseAssignment, values_are_decimal_or_hexadecimal) {
    EXPECT_EQ(parse_assignment("0x08:0x17=0").value, 0);
    EXPECT_EQ(parse_assignment("0B:E0=10").value, 10);
    EXPECT_EQ(parse_assignment("0B:E0=0x10").value, 16);
    EXPECT_EQ(parse_assignment("0B:E0=-3").value, -3);
}

TEST(ParseAssignment, anything_else_is_no_usage) {
    for (const char* text : {"", "08", "08:17=", "08:17=x", "08:17=1=1", "mumble", "08:17=0x", "08:17=FF"})
        EXPECT_THROW(parse_assignment(text), UsageError) << text;
}

TEST(ParseAssignment, a_name_stands_for_every_usage_that_has_it) {
    EXPECT_EQ(parse_assignment("phone mute=0").usages, (std::vector{Usage{0x0B, 0x2F}}));
    EXPECT_EQ(parse_assignment("phone mute=0").value, 0);
    EXPECT_EQ(parse_assignment("Mute").usages, (std::vector{Usage{0x08, 0x09}, Usage{0x0C, 0xE2}}));
    EXPECT_EQ(parse_assignment("Mute (08:09)").usages, (std::vector{Usage{0x08, 0x09}}));
    EXPECT_EQ(parse_assignment("Button 3").usages, (std::vector{Usage{0x09, 0x03}}));
}

TEST(Encode, takes_the_names_that_decode_prints) {
    EXPECT_EQ(encoded(small_headset(), HidP_Output, {"Off-Hook", "mute"}), Lines{"02 03"});
    const auto jabra = model_descriptor("jabra-link-380c");
    EXPECT_EQ(encoded(jabra, HidP_Input, {"Phone Mute"}), Lines{"02 08 00"});
    EXPECT_EQ(encoded(jabra, HidP_Input, {"Volume Decrement (0C:EA)"}),
              encoded(jabra, HidP_Input, {"0C:EA"}));
}

TEST(Encode, a_name_of_several_usages_of_the_descriptor_is_refused) {
    using namespace platform::virtual_headsets;
    const auto both = descriptor({usage_page(0x0C), usage(0x01), collection(application), logical_minimum(0),
                                  logical_maximum(1), report_size(1), report_count(1), usage(0xE2),
                                  output(variable), usage_page(0x08), usage(0x09), output(variable),
                                  report_count(6), output(constant), end_collection()});
    const auto collections = parse_collections(both);
    try {
        encode(collections, HidP_Output, std::vector{parse_assignment("mute")});
        ADD_FAILURE() << "nothing thrown";
    } catch (const Refused& error) {
        EXPECT_STREQ(error.what(), "the name stands for Mute (08:09) or Mute (0C:E2): use the number");
    }
}

TEST(Encode, a_report_is_as_long_as_those_of_its_id) {
    EXPECT_EQ(encoded(small_headset(), HidP_Output, {"08:17"}), Lines{"02 01"});
    EXPECT_EQ(encoded(small_headset(), HidP_Output, {"08:18"}), Lines{"03 01 00"});
}

TEST(Encode, usages_of_one_report_come_together) {
    EXPECT_EQ(encoded(small_headset(), HidP_Output, {"08:17", "08:09=1"}), Lines{"02 03"});
}

TEST(Encode, reports_come_in_the_order_of_their_ids) {
    EXPECT_EQ(encoded(small_headset(), HidP_Output, {"08:18", "08:09"}), (Lines{"02 02", "03 01 00"}));
}

TEST(Encode, zero_leaves_or_clears_a_button) {
    EXPECT_EQ(encoded(small_headset(), HidP_Output, {"08:17=0"}), Lines{"02 00"});
    EXPECT_EQ(encoded(small_headset(), HidP_Output, {"08:17", "08:09", "08:17=0"}), Lines{"02 02"});
}

TEST(Encode, values_and_the_other_directions) {
    EXPECT_EQ(encoded(small_headset(), HidP_Input, {"0B:E0=5", "0B:2F"}), Lines{"01 01 05"});
    EXPECT_EQ(encoded(small_headset(), HidP_Input, {"0B:E0=-3"}), Lines{"01 00 FD"});
    EXPECT_EQ(encoded(small_headset(), HidP_Feature, {"08:4B=0xA5"}), Lines{"04 A5"});
}

TEST(Encode, a_value_that_is_not_set_is_null_where_it_can_be) {
    EXPECT_EQ(encoded(small_headset(), HidP_Input, {"0B:2F"}), Lines{"01 01 0B"});
}

TEST(Encode, without_report_ids_the_id_is_0) {
    EXPECT_EQ(encoded(headset_without_ids(), HidP_Input, {"0B:2F"}), Lines{"00 01"});
}

TEST(Encode, a_key_of_an_array_is_named_by_its_selector) {
    EXPECT_EQ(encoded(model_descriptor("jabra-link-380c"), HidP_Input, {"0B:B3"}), Lines{"02 00 02"});
}

TEST(Encode, the_reports_of_all_collections_can_be_made) {
    EXPECT_EQ(encoded(model_descriptor("jabra-link-380c"), HidP_Output, {"FF40:17", "08:17"}),
              (Lines{"02 01 00", "04 01 00"}));
}

TEST(Encode, a_usage_that_is_not_there_is_named) {
    EXPECT_EQ(refusal(HidP_Output, "08:1E"), "the descriptor has no Speaker (08:1E) in its Output reports");
    EXPECT_EQ(refusal(HidP_Input, "08:17"), "the descriptor has no Off-Hook (08:17) in its Input reports");
}

TEST(Encode, a_value_that_does_not_fit_is_refused) {
    EXPECT_EQ(refusal(HidP_Output, "08:17=2"), "Off-Hook (08:17) is a button: it can be 0 or 1, not 2");
    EXPECT_EQ(refusal(HidP_Input, "0B:E0=256"), "0B:E0 has 8 bits: 256 does not fit");
    EXPECT_EQ(refusal(HidP_Input, "0B:E0=-129"), "0B:E0 has 8 bits: -129 does not fit");
    EXPECT_EQ(refusal(HidP_Input, "0B:E0=-128"), "accepted");
    EXPECT_EQ(refusal(HidP_Feature, "08:4B=-1"), "Generic Indicator (08:4B) has 8 bits: -1 does not fit");
    EXPECT_EQ(refusal(HidP_Feature, "08:4B=255"), "accepted");
}

TEST(Encode, an_array_that_is_full_has_no_room) {
    const auto collections = parse_collections(model_descriptor("jabra-link-380c"));
    const Assignment keys[] = {parse_assignment("0B:B3"), parse_assignment("0B:B4")};
    EXPECT_THROW(encode(collections, HidP_Input, keys), Refused);
}

TEST(Encode, a_selector_that_the_field_is_too_small_for_has_no_room) {
    using namespace platform::virtual_headsets;
    const auto one_bit_array =
        descriptor({usage_page(0x0B), usage(0x05), collection(application), logical_minimum(1),
                    logical_maximum(2), report_size(1), report_count(1), usage_page(0x09), usage(0x07),
                    usage(0x01), input(array), report_count(7), input(constant), end_collection()});
    EXPECT_EQ(encoded(one_bit_array, HidP_Input, {"09:07"}), Lines{"00 01"});
    EXPECT_THROW(encoded(one_bit_array, HidP_Input, {"09:01"}), Refused);
}

TEST(Encode, a_usage_of_several_reports_is_set_in_the_first) {
    const auto epos = model_descriptor("epos-impact-d");  // has Button 7 in reports 2 and 4
    EXPECT_EQ(encoded(epos, HidP_Input, {"09:07"}), Lines{"02 80"});
}

}  // namespace
}  // namespace headset
