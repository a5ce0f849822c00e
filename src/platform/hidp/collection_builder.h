// Turns the main items of one top-level collection into its preparsed data.
#pragma once

#include "platform/hidp/global_items.h"
#include "platform/hidp/hidp.h"
#include "platform/hidp/local_items.h"
#include "platform/hidp/preparsed_data.h"

namespace platform::hidp {

/// Throws Malformed where the collection exceeds a limit, and is of no use then.
class CollectionBuilder {
  public:
    CollectionBuilder();

    /// Adds a link collection, behind one for each other usage that a delimited set gives it.
    void open_collection(const Item& item, const GlobalState& global, const LocalItems& local);
    void close_collection();

    /// Adds the fields of an Input, Output or Feature item.
    void add_fields(const Item& item, const GlobalState& global, const LocalItems& local);

    /// The collection, when its last link collection is closed. The builder is ready for the next one.
    PreparsedData take();

  private:
    void add_link_collection(HIDP_LINK_COLLECTION_NODE node);
    ULONG take_bits(HIDP_REPORT_TYPE type, UCHAR id, ULONG bits);

    HIDP_PREPARSED_DATA data_;  ///< its memory serves one collection after the other
    USHORT current_ = 0;        ///< the innermost open link collection
};

}  // namespace platform::hidp
