// What is refused, and with which place and reason.
#include <gtest/gtest.h>
#include <ostream>
#include <string>

#include "platform/hidp/hidp.h"
#include "platform/hidp/limits.h"
#include "tests/platform/hidp/descriptor_items.h"

using namespace platform;
using namespace hidp_test;
using enum hidp::Tag;

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Malformed {
    const char* name;
    Bytes descriptor;
    const char* error;
};

void PrintTo(const Malformed& malformed, std::ostream* out) {
    *out << malformed.name;
}

class MalformedDescriptor : public testing::TestWithParam<Malformed> {};

TEST_P(MalformedDescriptor, IsRefusedWithPlaceAndReason) {
    const auto parsed = hidp::parse(GetParam().descriptor);
    EXPECT_TRUE(parsed.collections.empty());
    ASSERT_TRUE(parsed.error.has_value());
    EXPECT_EQ(parsed.error->to_string(), GetParam().error);
}

/// Ten bytes: a collection and the size and number of the fields to come.
Bytes in_collection(std::initializer_list<ItemText> items) {
    Bytes bytes = descriptor(
        {{usage_page, 0x0B}, {usage, 0x05}, {collection, application}, {report_size, 1}, {report_count, 1}});
    const Bytes rest = descriptor(items);
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    return bytes;
}

Bytes repeated(std::size_t count, Bytes item, Bytes rest) {
    Bytes bytes;
    for (std::size_t i = 0; i < count; ++i) {
        bytes.insert(bytes.end(), item.begin(), item.end());
    }
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    return bytes;
}

/// Arrays of 1,024 usages of one byte each, and one usage more.
Bytes too_many_capabilities() {
    const Bytes one_more = {0x08, 0x80};
    const Bytes second = repeated(hidp::max_local_items, {0x08}, repeated(1, {0x80}, one_more));
    const Bytes first = repeated(hidp::max_local_items, {0x08}, repeated(1, {0x80}, second));
    return repeated(1, descriptor({{collection, application}, {report_size, 8}, {report_count, 1}}), first);
}

const Malformed malformed_descriptors[] = {
    {"Empty", {}, "offset 0, item 0x00: no collection"},
    {"WithoutCollection", descriptor({{usage_page, 0x0B}}), "offset 0, item 0x00: no collection"},
    {"ItemCutShort", {0x05, 0x0B, 0x26, 0xFF}, "offset 2, item 0x26: the item needs 2 bytes, 1 are left"},
    {"LongItemWithoutHeader", {0xFE, 0x05}, "offset 0, item 0xFE: the item needs 2 bytes, 1 are left"},
    {"LongItemCutShort", {0xFE, 0x02, 0x10, 0xAA}, "offset 0, item 0xFE: the item needs 2 bytes, 1 are left"},
    {"CollectionNotClosed", in_collection({{collection, physical}, {end_collection}}),
     "offset 4, item 0xA1: the collection is not closed"},
    {"InnerCollectionNotClosed", in_collection({{collection, physical}}),
     "offset 10, item 0xA1: the collection is not closed"},
    {"EndCollectionTooMany", in_collection({{end_collection}, {end_collection}}),
     "offset 11, item 0xC0: the end of a collection that was not begun"},
    {"FieldOutsideCollection", descriptor({{report_size, 8}, {report_count, 1}, {input, data_variable}}),
     "offset 4, item 0x81: a field outside every collection"},
    {"FieldBetweenCollections", in_collection({{end_collection}, {feature, constant}}),
     "offset 11, item 0xB1: a field outside every collection"},
    {"NoReportSize",
     descriptor({{usage, 1}, {collection, application}, {report_count, 1}, {input, constant}}),
     "offset 6, item 0x81: no Report Size before the main item"},
    {"NoReportCount",
     descriptor({{usage, 1}, {collection, application}, {report_size, 1}, {output, constant}}),
     "offset 6, item 0x91: no Report Count before the main item"},
    {"ReportId0", in_collection({{report_id, 0}}), "offset 10, item 0x85: report id 0 is reserved"},
    {"ReportId256", in_collection({{report_id, 256}}), "offset 10, item 0x86: report id 256 is above 255"},
    {"UsagePageTooLarge", in_collection({{usage_page, 0x10000}}),
     "offset 10, item 0x07: usage page 65536 is above 65535"},
    {"ReportSizeTooLarge", in_collection({{report_size, 0x10000}}),
     "offset 10, item 0x77: report size 65536 is above 65535"},
    {"ReportCountTooLarge", in_collection({{report_count, 0xFFFFFFFF}}),
     "offset 10, item 0x97: report count 4294967295 is above 65535"},
    {"PopWithoutPush", in_collection({{push}, {pop}, {pop}}), "offset 12, item 0xB4: Pop without a Push"},
    {"PushedTooOften", repeated(hidp::max_push_depth + 1, {0xA4}, {}),
     "offset 8, item 0xA4: more than 8 Push items without a Pop"},
    {"UsageMinimumAboveMaximum", in_collection({{usage_minimum, 0x10}, {usage_maximum, 0x01}}),
     "offset 12, item 0x29: the range's minimum is above its maximum"},
    {"UsageMaximumBeforeASmallerOne", in_collection({{usage_maximum, 0x01}, {usage_minimum, 0x10}}),
     "offset 12, item 0x19: the range's minimum is above its maximum"},
    {"UsageRangeOverTwoPages", in_collection({{usage_minimum, 0x90001}, {usage_maximum, 0xA0003}}),
     "offset 15, item 0x2B: the range begins and ends on different usage pages"},
    {"UsageMinimumAlone", in_collection({{usage_minimum, 1}, {input, data_variable}}),
     "offset 12, item 0x81: a minimum has no maximum"},
    {"UsageMaximumAlone", in_collection({{usage_maximum, 1}, {end_collection}}),
     "offset 12, item 0xC0: a maximum has no minimum"},
    {"StringMinimumAlone", in_collection({{usage, 1}, {string_minimum, 1}, {input, data_variable}}),
     "offset 14, item 0x81: a minimum has no maximum"},
    {"DesignatorMaximumAlone", in_collection({{usage, 1}, {designator_maximum, 1}, {collection, logical}}),
     "offset 14, item 0xA1: a maximum has no minimum"},
    {"DelimitedSetNotClosed", in_collection({{delimiter, 1}, {usage, 1}, {input, data_variable}}),
     "offset 14, item 0x81: a delimited set is not closed before the main item"},
    {"DelimitedSetNested", in_collection({{delimiter, 1}, {usage, 1}, {delimiter, 1}}),
     "offset 14, item 0xA9: a delimited set inside another"},
    {"DelimitedSetNotBegun", in_collection({{delimiter, 0}}),
     "offset 10, item 0xA9: the end of a delimited set that was not begun"},
    {"DelimiterOfNoMeaning", in_collection({{delimiter, 2}}),
     "offset 10, item 0xA9: the delimiter neither begins nor ends a set"},
    {"ReportTooLong",
     in_collection(
         {{report_size, 8}, {report_count, 16383}, {input, constant}, {report_count, 1}, {input, constant}}),
     "offset 19, item 0x81: the report is longer than 16383 bytes"},
    {"FieldsOfMoreThan32BitsOfLength",
     in_collection({{report_size, 65535}, {report_count, 65535}, {input, constant}}),
     "offset 16, item 0x81: the report is longer than 16383 bytes"},
    {"TooManyButtons",
     in_collection(
         {{report_size, 1}, {report_count, 16385}, {usage, 1}, {output, data_variable}, {end_collection}}),
     "offset 17, item 0x91: more than 16384 buttons"},
    {"TooManyControls",
     in_collection(
         {{usage_minimum, 0}, {usage_maximum, 0xFFFF}, {usage, 1}, {input, data_array}, {end_collection}}),
     "offset 17, item 0x81: more than 65536 controls"},
    {"TooManyUsages", repeated(hidp::max_local_items + 1, {0x08}, {}),
     "offset 1024, item 0x08: more than 1024 usages for one main item"},
    {"TooManyCapabilities", too_many_capabilities(), "offset 2057, item 0x80: more than 2048 capabilities"},
    {"TooManyCollections", repeated(hidp::max_collections + 1, {0xA0}, {}),
     "offset 1024, item 0xA0: more than 1024 collections"},
    {"TooLong", Bytes(hidp::max_descriptor_size + 1),
     "offset 0, item 0x00: the descriptor is longer than 4096 bytes"},
};

INSTANTIATE_TEST_SUITE_P(Each, MalformedDescriptor, testing::ValuesIn(malformed_descriptors),
                         [](const auto& test) { return test.param.name; });

}  // namespace
