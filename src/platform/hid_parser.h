// The seam to the report-descriptor parser: what hid.dll's HidP_ functions do on Windows.
#pragma once

#include "platform/hid_types.h"

namespace platform {

/// The HidP_ functions that the plug-in needs. Meanings, arguments and status codes are those of the Windows
/// driver kit's functions of the same names; buffers belong to the caller, nothing is kept, nothing blocks.
///
/// Thread: any. The functions only read the preparsed data, so that several threads may share it.
class HidParser {
  public:
    virtual ~HidParser() = default;

    /// Fills `caps`. HIDP_STATUS_SUCCESS or HIDP_STATUS_INVALID_PREPARSED_DATA.
    virtual NTSTATUS HidP_GetCaps(PHIDP_PREPARSED_DATA data, HIDP_CAPS* caps) const = 0;

    /// Copies at most `*length` button capabilities of one direction and sets `*length` to the number copied.
    virtual NTSTATUS HidP_GetButtonCaps(HIDP_REPORT_TYPE type, HIDP_BUTTON_CAPS* caps, USHORT* length,
                                        PHIDP_PREPARSED_DATA data) const = 0;

    /// The same for value capabilities.
    virtual NTSTATUS HidP_GetValueCaps(HIDP_REPORT_TYPE type, HIDP_VALUE_CAPS* caps, USHORT* length,
                                       PHIDP_PREPARSED_DATA data) const = 0;

    /// The largest number of usages of `page` (0: of any page) that one report of this direction can report
    /// at once; 0 for wrong arguments.
    virtual ULONG HidP_MaxUsageListLength(HIDP_REPORT_TYPE type, USAGE page,
                                          PHIDP_PREPARSED_DATA data) const = 0;

    /// Sets the buttons in `usages` in `report`. Entries of 0 are skipped. The list is applied
    /// completely or not at all, with one exception: an array whose fields run out keeps the usages that went
    /// in, with HIDP_STATUS_BUFFER_TOO_SMALL. On failure `*length` is the index of the usage that could not
    /// be set. A report whose id byte is 0 takes the id of the first usage set; one with another id gives
    /// HIDP_STATUS_INCOMPATIBLE_REPORT_ID.
    virtual NTSTATUS HidP_SetUsages(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE* usages,
                                    ULONG* length, PHIDP_PREPARSED_DATA data, UCHAR* report,
                                    ULONG report_length) const = 0;

    /// Clears the buttons in `usages`; HIDP_STATUS_BUTTON_NOT_PRESSED where one is not set.
    virtual NTSTATUS HidP_UnsetUsages(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection,
                                      USAGE* usages, ULONG* length, PHIDP_PREPARSED_DATA data, UCHAR* report,
                                      ULONG report_length) const = 0;

    /// Lists the buttons of `page` that are set in `report`. `*length` is the room in and the number out;
    /// HIDP_STATUS_BUFFER_TOO_SMALL sets it to the room needed.
    virtual NTSTATUS HidP_GetUsages(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE* usages,
                                    ULONG* length, PHIDP_PREPARSED_DATA data, const UCHAR* report,
                                    ULONG report_length) const = 0;

    /// Writes one value, as it stands, truncated to the field's bits.
    virtual NTSTATUS HidP_SetUsageValue(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection,
                                        USAGE usage, ULONG value, PHIDP_PREPARSED_DATA data, UCHAR* report,
                                        ULONG report_length) const = 0;

    /// Reads one value, not sign-extended.
    virtual NTSTATUS HidP_GetUsageValue(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection,
                                        USAGE usage, ULONG* value, PHIDP_PREPARSED_DATA data,
                                        const UCHAR* report, ULONG report_length) const = 0;

    /// Reads one value, sign-extended and scaled from the logical to the physical range. HIDP_STATUS_NULL for
    /// a value outside the logical range of a field with a null state.
    virtual NTSTATUS HidP_GetScaledUsageValue(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection,
                                              USAGE usage, LONG* value, PHIDP_PREPARSED_DATA data,
                                              const UCHAR* report, ULONG report_length) const = 0;
};

}  // namespace platform
