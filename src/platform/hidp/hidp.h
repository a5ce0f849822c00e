// The report-descriptor parser that gives HidP_ its meaning where the system has no hid.dll.
//
// A descriptor (HID 1.11, 6.2.2) is untrusted input: what it can cost is bounded, and what is malformed is
// refused with the place and the reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/hid_parser.h"

namespace platform::hidp {

struct PreparsedDataDeleter {
    void operator()(PHIDP_PREPARSED_DATA data) const;
};
/// The parsed descriptor of one top-level collection.
using PreparsedData = std::unique_ptr<HIDP_PREPARSED_DATA, PreparsedDataDeleter>;

/// Why a descriptor was refused.
struct ParseError {
    std::size_t offset = 0;  ///< of the item's first byte
    std::uint8_t item = 0;   ///< the item's prefix byte (HID 1.11, 6.2.2.2)
    std::string text;        ///< what is wrong, without place

    /// "offset 12, item 0x95: ..."
    std::string to_string() const;
};

/// The top-level collections of a descriptor in their order; none, and an error, when it was refused.
struct ParsedDescriptor {
    std::vector<PreparsedData> collections;
    std::optional<ParseError> error;
};

ParsedDescriptor parse(std::span<const std::uint8_t> descriptor);

/// The length in bytes, id byte included, of the report with this id (0 where the descriptor has no ids); 0
/// if this collection has no such report. HidP_GetCaps gives the longest of a direction; a device sends each
/// in its own length.
std::size_t report_length(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE type, std::uint8_t report_id);

/// True when the descriptor numbers its reports.
bool has_report_ids(PHIDP_PREPARSED_DATA data);

/// HidP_ on data of this parser. Preparsed data that is none of its own gives
/// HIDP_STATUS_INVALID_PREPARSED_DATA.
class Parser final : public HidParser {
  public:
    NTSTATUS HidP_GetCaps(PHIDP_PREPARSED_DATA data, HIDP_CAPS* caps) const override;
    NTSTATUS HidP_GetButtonCaps(HIDP_REPORT_TYPE type, HIDP_BUTTON_CAPS* caps, USHORT* length,
                                PHIDP_PREPARSED_DATA data) const override;
    NTSTATUS HidP_GetValueCaps(HIDP_REPORT_TYPE type, HIDP_VALUE_CAPS* caps, USHORT* length,
                               PHIDP_PREPARSED_DATA data) const override;
    ULONG HidP_MaxUsageListLength(HIDP_REPORT_TYPE type, USAGE page,
                                  PHIDP_PREPARSED_DATA data) const override;
    NTSTATUS HidP_SetUsages(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE* usages,
                            ULONG* length, PHIDP_PREPARSED_DATA data, UCHAR* report,
                            ULONG report_length) const override;
    NTSTATUS HidP_UnsetUsages(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE* usages,
                              ULONG* length, PHIDP_PREPARSED_DATA data, UCHAR* report,
                              ULONG report_length) const override;
    NTSTATUS HidP_GetUsages(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE* usages,
                            ULONG* length, PHIDP_PREPARSED_DATA data, const UCHAR* report,
                            ULONG report_length) const override;
    NTSTATUS HidP_SetUsageValue(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE usage,
                                ULONG value, PHIDP_PREPARSED_DATA data, UCHAR* report,
                                ULONG report_length) const override;
    NTSTATUS HidP_GetUsageValue(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE usage,
                                ULONG* value, PHIDP_PREPARSED_DATA data, const UCHAR* report,
                                ULONG report_length) const override;
    NTSTATUS HidP_GetScaledUsageValue(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE usage,
                                      LONG* value, PHIDP_PREPARSED_DATA data, const UCHAR* report,
                                      ULONG report_length) const override;

    // What the plug-in has no need of, for tools and tests. Meanings and status codes are those of the
    // Windows driver kit's functions of the same names here, too.

    /// Copies the collection's link collections, the top-level collection first. `*length` is the room in and
    /// the number out; too little room copies nothing: HIDP_STATUS_BUFFER_TOO_SMALL.
    NTSTATUS HidP_GetLinkCollectionNodes(HIDP_LINK_COLLECTION_NODE* nodes, ULONG* length,
                                         PHIDP_PREPARSED_DATA data) const;

    /// HidP_GetButtonCaps and HidP_GetValueCaps of one page, link collection and usage alone, where 0 stands
    /// for any; a range is listed whole where the usage is in it. HIDP_STATUS_USAGE_NOT_FOUND, and a length
    /// of 0, where nothing matches.
    NTSTATUS HidP_GetSpecificButtonCaps(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection,
                                        USAGE usage, HIDP_BUTTON_CAPS* caps, USHORT* length,
                                        PHIDP_PREPARSED_DATA data) const;
    NTSTATUS HidP_GetSpecificValueCaps(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE usage,
                                       HIDP_VALUE_CAPS* caps, USHORT* length,
                                       PHIDP_PREPARSED_DATA data) const;

    /// Lists the buttons of every page that are set in `report`, as HidP_GetUsages does those of one;
    /// HidP_MaxUsageListLength of page 0 is the most that it gives.
    NTSTATUS HidP_GetUsagesEx(HIDP_REPORT_TYPE type, USHORT link_collection, USAGE_AND_PAGE* usages,
                              ULONG* length, PHIDP_PREPARSED_DATA data, const UCHAR* report,
                              ULONG report_length) const;

    /// Writes one value, scaled from the physical to the logical range in 32 bits, which overflow without
    /// notice, as on Windows. HIDP_STATUS_VALUE_OUT_OF_RANGE for a value outside the physical range, also
    /// where there is a null state; HIDP_STATUS_BAD_LOG_PHY_VALUES where one of the ranges is none.
    NTSTATUS HidP_SetScaledUsageValue(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE usage,
                                      LONG value, PHIDP_PREPARSED_DATA data, UCHAR* report,
                                      ULONG report_length) const;

    /// The most that HidP_GetData gives for one report of this direction; 0 for wrong arguments.
    ULONG HidP_MaxDataListLength(HIDP_REPORT_TYPE type, PHIDP_PREPARSED_DATA data) const;

    /// Lists the controls of the report with their data indices: the buttons that are set, and every value
    /// that is no value array and has bits. Aliases are left out, their control has data under its first
    /// name. `*length` is the room in and the number out; HIDP_STATUS_BUFFER_TOO_SMALL sets it to the room
    /// needed.
    NTSTATUS HidP_GetData(HIDP_REPORT_TYPE type, HIDP_DATA* list, ULONG* length, PHIDP_PREPARSED_DATA data,
                          const UCHAR* report, ULONG report_length) const;

    /// Sets buttons (On), clears them and writes values (RawValue), one after the other. On failure `*length`
    /// is the index of the entry that could not be applied; those before it were. The first entry decides
    /// which report a report of id 0 becomes; an empty list is for none, HIDP_STATUS_REPORT_DOES_NOT_EXIST.
    ///
    /// HIDP_STATUS_DATA_INDEX_OUT_OF_RANGE behind the last index of the direction,
    /// HIDP_STATUS_DATA_INDEX_NOT_FOUND for an index without a place in the report,
    /// HIDP_STATUS_INCOMPATIBLE_REPORT_ID for a control of another report, HIDP_STATUS_IS_VALUE_ARRAY for one
    /// usage with several fields, be they values or buttons, HIDP_STATUS_BUTTON_NOT_PRESSED where a button to
    /// clear is not set, HIDP_STATUS_BUFFER_TOO_SMALL for an array whose fields are all taken.
    NTSTATUS HidP_SetData(HIDP_REPORT_TYPE type, const HIDP_DATA* list, ULONG* length,
                          PHIDP_PREPARSED_DATA data, UCHAR* report, ULONG report_length) const;

    /// Writes all fields of a usage that has several, packed without gaps from bit 0 of `value`'s first byte;
    /// bytes behind them are not looked at. HIDP_STATUS_NOT_VALUE_ARRAY for a usage of one field, or one in a
    /// range; HIDP_STATUS_BUFFER_TOO_SMALL where `value` is shorter than the fields.
    NTSTATUS HidP_SetUsageValueArray(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE usage,
                                     const UCHAR* value, USHORT value_byte_length, PHIDP_PREPARSED_DATA data,
                                     UCHAR* report, ULONG report_length) const;

    /// Reads them the same way; bits behind the fields, in the last byte that they reach, become 0.
    NTSTATUS HidP_GetUsageValueArray(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE usage,
                                     UCHAR* value, USHORT value_byte_length, PHIDP_PREPARSED_DATA data,
                                     const UCHAR* report, ULONG report_length) const;

    /// Makes an empty report of this id: buttons off, values 0, or null where they have a null state.
    /// HIDP_STATUS_REPORT_DOES_NOT_EXIST where nothing in the collection has the id.
    NTSTATUS HidP_InitializeReportForID(HIDP_REPORT_TYPE type, UCHAR report_id, PHIDP_PREPARSED_DATA data,
                                        UCHAR* report, ULONG report_length) const;
};

/// The one parser; it has no state.
const Parser& parser();

}  // namespace platform::hidp
