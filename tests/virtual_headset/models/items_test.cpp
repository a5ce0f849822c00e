#include "virtual_headset/models/items.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace platform::virtual_headsets {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Row {
    const char* name;
    Item item;
    Bytes bytes;
};

void expect_bytes(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        EXPECT_EQ(descriptor({row.item}), row.bytes) << row.name;
    }
}

TEST(Items, EachWordHasItsPrefixByte) {
    expect_bytes({
        {"input", input(variable), {0x81, 0x02}},
        {"output", output(variable), {0x91, 0x02}},
        {"feature", feature(variable), {0xB1, 0x02}},
        {"collection", collection(application), {0xA1, 0x01}},
        {"end collection", end_collection(), {0xC0}},
        {"usage page", usage_page(0x0B), {0x05, 0x0B}},
        {"logical minimum", logical_minimum(1), {0x15, 0x01}},
        {"logical maximum", logical_maximum(1), {0x25, 0x01}},
        {"report size", report_size(1), {0x75, 0x01}},
        {"report id", report_id(2), {0x85, 0x02}},
        {"report count", report_count(3), {0x95, 0x03}},
        {"usage", usage(0x20), {0x09, 0x20}},
        {"usage minimum", usage_minimum(0xB0), {0x19, 0xB0}},
        {"usage maximum", usage_maximum(0xBB), {0x29, 0xBB}},
    });
}

TEST(Items, EachFlagHasItsBit) {
    expect_bytes({
        {"data", input(data), {0x81, 0x00}},
        {"array", input(array), {0x81, 0x00}},
        {"constant", input(constant), {0x81, 0x01}},
        {"variable", input(variable), {0x81, 0x02}},
        {"relative", input(relative), {0x81, 0x04}},
        {"wrap", input(wrap), {0x81, 0x08}},
        {"nonlinear", input(nonlinear), {0x81, 0x10}},
        {"no preferred state", input(no_preferred), {0x81, 0x20}},
        {"null state", input(null_state), {0x81, 0x40}},
        {"volatile", feature(volatile_value), {0xB1, 0x80}},
        {"buffered bytes", input(buffered_bytes), {0x82, 0x00, 0x01}},
    });
}

TEST(Items, FlagsCombine) {
    expect_bytes({
        {"a mute key", input(constant | variable | relative), {0x81, 0x07}},
        {"a block of bytes", output(data | variable | buffered_bytes), {0x92, 0x02, 0x01}},
    });
}

TEST(Items, EachKindOfCollectionHasItsNumber) {
    expect_bytes({
        {"physical", collection(physical), {0xA1, 0x00}},
        {"application", collection(application), {0xA1, 0x01}},
        {"logical", collection(logical), {0xA1, 0x02}},
    });
}

TEST(Items, UnsignedDataTakesAsFewBytesAsHoldIt) {
    expect_bytes({
        {"zero", usage(0), {0x09, 0x00}},
        {"largest in one byte", usage(0xFF), {0x09, 0xFF}},
        {"smallest in two bytes", usage(0x100), {0x0A, 0x00, 0x01}},
        {"largest in two bytes", usage(0xFFFF), {0x0A, 0xFF, 0xFF}},
        {"smallest in four bytes", usage(0x10000), {0x0B, 0x00, 0x00, 0x01, 0x00}},
        {"usage with its page", usage(0x000B'0020), {0x0B, 0x20, 0x00, 0x0B, 0x00}},
        {"largest of all", usage(0xFFFF'FFFF), {0x0B, 0xFF, 0xFF, 0xFF, 0xFF}},
    });
}

TEST(Items, SignedDataTakesAsFewBytesAsHoldIt) {
    expect_bytes({
        {"zero", logical_maximum(0), {0x25, 0x00}},
        {"largest in one byte", logical_maximum(127), {0x25, 0x7F}},
        {"smallest in two bytes", logical_maximum(128), {0x26, 0x80, 0x00}},
        {"largest of an unsigned byte", logical_maximum(255), {0x26, 0xFF, 0x00}},
        {"largest in two bytes", logical_maximum(0x7FFF), {0x26, 0xFF, 0x7F}},
        {"smallest in four bytes", logical_maximum(0x8000), {0x27, 0x00, 0x80, 0x00, 0x00}},
        {"largest of all", logical_maximum(0x7FFF'FFFF), {0x27, 0xFF, 0xFF, 0xFF, 0x7F}},
    });
}

TEST(Items, NegativeDataIsTwosComplement) {
    expect_bytes({
        {"minus one", logical_minimum(-1), {0x15, 0xFF}},
        {"lowest in one byte", logical_minimum(-128), {0x15, 0x80}},
        {"highest in two bytes", logical_minimum(-129), {0x16, 0x7F, 0xFF}},
        {"lowest in two bytes", logical_minimum(-0x8000), {0x16, 0x00, 0x80}},
        {"highest in four bytes", logical_minimum(-0x8001), {0x17, 0xFF, 0x7F, 0xFF, 0xFF}},
        {"lowest of all", logical_minimum(-0x7FFF'FFFF - 1), {0x17, 0x00, 0x00, 0x00, 0x80}},
    });
}

TEST(Items, WideDataIsExtendedToItsSize) {
    expect_bytes({
        {"two bytes", wide<2>(usage_page(0x0B)), {0x06, 0x0B, 0x00}},
        {"four bytes", wide<4>(logical_maximum(255)), {0x27, 0xFF, 0x00, 0x00, 0x00}},
        {"unsigned stays unsigned", wide<2>(usage(0xFF)), {0x0A, 0xFF, 0x00}},
        {"negative stays negative", wide<2>(logical_minimum(-1)), {0x16, 0xFF, 0xFF}},
    });
}

TEST(Items, WideDataIsNeverCut) {
    expect_bytes({{"four bytes", wide<2>(usage(0x000B'0020)), {0x0B, 0x20, 0x00, 0x0B, 0x00}}});
}

TEST(Items, DescriptorHoldsTheItemsInTheirOrder) {
    EXPECT_EQ(descriptor({usage_page(0x0B), usage(0x05), collection(application), end_collection()}),
              (Bytes{0x05, 0x0B, 0x09, 0x05, 0xA1, 0x01, 0xC0}));
    EXPECT_EQ(descriptor({}), Bytes{});
}

}  // namespace
}  // namespace platform::virtual_headsets
