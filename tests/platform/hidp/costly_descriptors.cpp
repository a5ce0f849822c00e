#include "tests/platform/hidp/costly_descriptors.h"

#include "platform/hidp/limits.h"
#include "tests/platform/hidp/descriptor_items.h"

namespace hidp_test {
namespace {

using platform::hidp::Tag;
using Bytes = std::vector<std::uint8_t>;

/// A full descriptor: the frame of a collection, and one piece again and again.
Bytes filled_with(const Bytes& frame, const Bytes& piece, const Bytes& end) {
    Bytes bytes = frame;
    while (bytes.size() + piece.size() + end.size() <= platform::hidp::max_descriptor_size) {
        bytes.insert(bytes.end(), piece.begin(), piece.end());
    }
    bytes.insert(bytes.end(), end.begin(), end.end());
    return bytes;
}

Bytes repeated(std::size_t times, const Bytes& piece) {
    Bytes bytes;
    for (std::size_t i = 0; i < times; ++i) {
        bytes.insert(bytes.end(), piece.begin(), piece.end());
    }
    return bytes;
}

Bytes frame(std::int64_t size, std::int64_t count) {
    return descriptor({{Tag::collection, application}, {Tag::report_size, size}, {Tag::report_count, count}});
}

/// One report id after the other, three fields each.
Bytes many_reports() {
    Bytes bytes = frame(1, 1);
    for (int id = 255; id > 0; --id) {
        const Bytes fields = descriptor({{Tag::report_id, id},
                                         {Tag::input, constant},
                                         {Tag::output, constant},
                                         {Tag::feature, constant}});
        bytes.insert(bytes.end(), fields.begin(), fields.end());
    }
    bytes.push_back(0xC0);
    return bytes;
}

}  // namespace

std::vector<Costly> costly_descriptors() {
    const Bytes end = {0xC0};
    const Bytes bare_usage = {0x08};
    const Bytes usage_and_input = {0x08, 0x80};
    const Bytes empty_collection = {0xA0, 0xC0};
    const Bytes open_collection = {0xA0};
    const Bytes widest_range = {0x1B, 0x00, 0x00, 0x00, 0x00, 0x2B, 0xFF, 0xFF, 0x00, 0x00};
    return {
        {"UsagesWithoutEnd", filled_with(frame(8, 1), bare_usage, {})},
        {"OneCapabilityInTwoBytes", filled_with(frame(8, 1), usage_and_input, end)},
        {"EmptyCollections", filled_with({}, empty_collection, {})},
        {"AsManyCollectionsAsAllowed", repeated(platform::hidp::max_collections, empty_collection)},
        {"NestedCollections", filled_with({}, open_collection, {})},
        {"WidestRanges", filled_with(frame(8, 65535), widest_range, end)},
        {"ManyReports", many_reports()},
    };
}

}  // namespace hidp_test
