// Reads a report descriptor item by item (HID 1.11, 6.2.2) and cuts it into top-level collections.
#include <string>
#include <utility>
#include <vector>

#include "platform/hidp/collection_builder.h"
#include "platform/hidp/global_items.h"
#include "platform/hidp/hidp.h"
#include "platform/hidp/items.h"
#include "platform/hidp/limits.h"
#include "platform/hidp/local_items.h"

namespace platform::hidp {
namespace {

class DescriptorParser {
  public:
    explicit DescriptorParser(std::span<const std::uint8_t> descriptor) : reader_(descriptor) {}

    void read_items();
    Place place() const { return reader_.place(); }
    std::vector<PreparsedData> take_collections();

  private:
    void read(const Item& item);
    void read_main(const Item& item);
    void open_collection(const Item& item);
    void close_collection();
    void add_fields(const Item& item);
    void check_end() const;

    ItemReader reader_;
    GlobalItems global_;
    LocalItems local_;
    CollectionBuilder builder_;
    std::vector<Place> open_;  ///< the collections that are open, outermost first
    std::size_t collection_count_ = 0;
    bool has_report_ids_ = false;
    std::vector<PreparsedData> collections_;
};

void DescriptorParser::read_items() {
    Item item;
    while (reader_.next(item)) {
        read(item);
    }
    check_end();
}

void DescriptorParser::read(const Item& item) {
    switch (type_of(item.tag)) {
        case ItemType::main:
            return read_main(item);
        case ItemType::global:
            return global_.add(item);
        case ItemType::local:
            return local_.add(item);
        case ItemType::reserved:
            return;
    }
}

void DescriptorParser::read_main(const Item& item) {
    switch (item.tag) {
        case Tag::input:
        case Tag::output:
        case Tag::feature:
            return add_fields(item);
        case Tag::collection:
            return open_collection(item);
        case Tag::end_collection:
            return close_collection();
        default:
            return;  // reserved
    }
}

void DescriptorParser::add_fields(const Item& item) {
    if (open_.empty()) {
        throw Malformed{"a field outside every collection"};
    }
    local_.check_complete();
    builder_.add_fields(item, global_.state(), local_);
    has_report_ids_ = has_report_ids_ || global_.state().report_id != 0;
    local_.clear();
}

void DescriptorParser::open_collection(const Item& item) {
    if (collection_count_ == max_collections) {
        throw Malformed{"more than " + std::to_string(max_collections) + " collections"};
    }
    local_.check_complete();
    builder_.open_collection(item, global_.state(), local_);
    open_.push_back(reader_.place());
    ++collection_count_;
    local_.clear();
}

void DescriptorParser::close_collection() {
    if (open_.empty()) {
        throw Malformed{"the end of a collection that was not begun"};
    }
    local_.check_complete();
    builder_.close_collection();
    open_.pop_back();
    local_.clear();
    if (open_.empty()) {
        collections_.push_back(builder_.take());
    }
}

void DescriptorParser::check_end() const {
    if (!open_.empty()) {
        throw Malformed{"the collection is not closed", open_.back()};
    }
    if (collections_.empty()) {
        throw Malformed{"no collection", Place{}};
    }
}

std::vector<PreparsedData> DescriptorParser::take_collections() {
    for (const PreparsedData& collection : collections_) {
        collection->has_report_ids = has_report_ids_;
    }
    return std::move(collections_);
}

}  // namespace

ParsedDescriptor parse(std::span<const std::uint8_t> descriptor) {
    DescriptorParser parser(descriptor);
    try {
        if (descriptor.size() > max_descriptor_size) {
            throw Malformed{"the descriptor is longer than " + std::to_string(max_descriptor_size) +
                            " bytes"};
        }
        parser.read_items();
        return {parser.take_collections(), std::nullopt};
    } catch (const Malformed& malformed) {
        const Place place = malformed.place.value_or(parser.place());
        return {{}, ParseError{place.offset, place.prefix, malformed.text}};
    }
}

}  // namespace platform::hidp
