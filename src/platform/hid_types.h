// The types and status codes of the platform's HID parser, under the names that the Windows driver kit
// documents for hidpi.h, so that a platform with a hid.dll of its own can pass its structures through
// unchanged.
//
// Every structure has the layout of the Windows one; the asserts at the end hold the sizes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace platform {

using BOOLEAN = std::uint8_t;
using UCHAR = std::uint8_t;
using USHORT = std::uint16_t;
using ULONG = std::uint32_t;
using LONG = std::int32_t;
using USAGE = std::uint16_t;
using NTSTATUS = std::uint32_t;

// Status codes of the HidP_ functions (Windows driver kit, hidpi.h: facility 0x11, severity in the top bits).
// Guarded: where the system's own header came first, its macros of these names stand.
#ifndef HIDP_STATUS_SUCCESS
inline constexpr NTSTATUS HIDP_STATUS_SUCCESS = 0x00110000;
inline constexpr NTSTATUS HIDP_STATUS_NULL = 0x80110001;
inline constexpr NTSTATUS HIDP_STATUS_INVALID_PREPARSED_DATA = 0xC0110001;
inline constexpr NTSTATUS HIDP_STATUS_INVALID_REPORT_TYPE = 0xC0110002;
inline constexpr NTSTATUS HIDP_STATUS_INVALID_REPORT_LENGTH = 0xC0110003;
inline constexpr NTSTATUS HIDP_STATUS_USAGE_NOT_FOUND = 0xC0110004;
inline constexpr NTSTATUS HIDP_STATUS_VALUE_OUT_OF_RANGE = 0xC0110005;
inline constexpr NTSTATUS HIDP_STATUS_BAD_LOG_PHY_VALUES = 0xC0110006;
inline constexpr NTSTATUS HIDP_STATUS_BUFFER_TOO_SMALL = 0xC0110007;
inline constexpr NTSTATUS HIDP_STATUS_INTERNAL_ERROR = 0xC0110008;
inline constexpr NTSTATUS HIDP_STATUS_INCOMPATIBLE_REPORT_ID = 0xC011000A;
inline constexpr NTSTATUS HIDP_STATUS_NOT_VALUE_ARRAY = 0xC011000B;
inline constexpr NTSTATUS HIDP_STATUS_IS_VALUE_ARRAY = 0xC011000C;
inline constexpr NTSTATUS HIDP_STATUS_DATA_INDEX_NOT_FOUND = 0xC011000D;
inline constexpr NTSTATUS HIDP_STATUS_DATA_INDEX_OUT_OF_RANGE = 0xC011000E;
inline constexpr NTSTATUS HIDP_STATUS_BUTTON_NOT_PRESSED = 0xC011000F;
inline constexpr NTSTATUS HIDP_STATUS_REPORT_DOES_NOT_EXIST = 0xC0110010;
inline constexpr NTSTATUS HIDP_STATUS_NOT_IMPLEMENTED = 0xC0110020;
#endif

enum HIDP_REPORT_TYPE : std::uint32_t { HidP_Input = 0, HidP_Output = 1, HidP_Feature = 2 };

/// One top-level collection's parsed report descriptor. Only the platform that made it knows what is inside.
struct HIDP_PREPARSED_DATA;
using PHIDP_PREPARSED_DATA = HIDP_PREPARSED_DATA*;

/// What a top-level collection holds. Report lengths are in bytes and count the report id byte, always.
struct HIDP_CAPS {
    USAGE Usage;
    USAGE UsagePage;
    USHORT InputReportByteLength;
    USHORT OutputReportByteLength;
    USHORT FeatureReportByteLength;
    USHORT Reserved[17];
    USHORT NumberLinkCollectionNodes;
    USHORT NumberInputButtonCaps;
    USHORT NumberInputValueCaps;
    USHORT NumberInputDataIndices;
    USHORT NumberOutputButtonCaps;
    USHORT NumberOutputValueCaps;
    USHORT NumberOutputDataIndices;
    USHORT NumberFeatureButtonCaps;
    USHORT NumberFeatureValueCaps;
    USHORT NumberFeatureDataIndices;
};

/// The usages, strings, designators and data indices of a capability that covers a range.
struct HIDP_RANGE {
    USAGE UsageMin;
    USAGE UsageMax;
    USHORT StringMin;
    USHORT StringMax;
    USHORT DesignatorMin;
    USHORT DesignatorMax;
    USHORT DataIndexMin;
    USHORT DataIndexMax;
};

/// The same storage for a capability of one usage. The reserved fields repeat the field before them, so that
/// a single usage reads as a range of one.
struct HIDP_NOT_RANGE {
    USAGE Usage;
    USAGE Reserved1;
    USHORT StringIndex;
    USHORT Reserved2;
    USHORT DesignatorIndex;
    USHORT Reserved3;
    USHORT DataIndex;
    USHORT Reserved4;
};

struct HIDP_BUTTON_CAPS {
    USAGE UsagePage;
    UCHAR ReportID;
    BOOLEAN IsAlias;
    USHORT BitField;  ///< the main item's data bits (HID 1.11, 6.2.2.5)
    USHORT LinkCollection;
    USAGE LinkUsage;
    USAGE LinkUsagePage;
    BOOLEAN IsRange;
    BOOLEAN IsStringRange;
    BOOLEAN IsDesignatorRange;
    BOOLEAN IsAbsolute;
    USHORT ReportCount;
    USHORT Reserved2;
    ULONG Reserved[9];
    union {
        HIDP_RANGE Range;
        HIDP_NOT_RANGE NotRange;
    };
};

struct HIDP_VALUE_CAPS {
    USAGE UsagePage;
    UCHAR ReportID;
    BOOLEAN IsAlias;
    USHORT BitField;
    USHORT LinkCollection;
    USAGE LinkUsage;
    USAGE LinkUsagePage;
    BOOLEAN IsRange;
    BOOLEAN IsStringRange;
    BOOLEAN IsDesignatorRange;
    BOOLEAN IsAbsolute;
    BOOLEAN HasNull;
    UCHAR Reserved;
    USHORT BitSize;
    USHORT ReportCount;
    USHORT Reserved2[5];
    ULONG UnitsExp;
    ULONG Units;
    LONG LogicalMin;
    LONG LogicalMax;
    LONG PhysicalMin;
    LONG PhysicalMax;
    union {
        HIDP_RANGE Range;
        HIDP_NOT_RANGE NotRange;
    };
};

/// A button that is set.
struct USAGE_AND_PAGE {
    USAGE Usage;
    USAGE UsagePage;
};

/// The state of one control, which its data index names.
struct HIDP_DATA {
    USHORT DataIndex;
    USHORT Reserved;
    union {
        ULONG RawValue;  ///< of a value, unchanged from the report
        BOOLEAN On;      ///< of a button
    };
};

/// Stands for every link collection where a HidP_ function takes the number of one.
inline constexpr USHORT any_link_collection = 0;

struct HIDP_LINK_COLLECTION_NODE {
    USAGE LinkUsage;
    USAGE LinkUsagePage;
    USHORT Parent;
    USHORT NumberOfChildren;
    USHORT NextSibling;
    USHORT FirstChild;
    ULONG CollectionType : 8;
    ULONG IsAlias : 1;
    ULONG Reserved : 23;
    void* UserContext;
};

static_assert(sizeof(HIDP_CAPS) == 64);
static_assert(sizeof(HIDP_BUTTON_CAPS) == 72);
static_assert(sizeof(HIDP_VALUE_CAPS) == 72);
static_assert(sizeof(USAGE_AND_PAGE) == 4);
static_assert(sizeof(HIDP_DATA) == 8);

}  // namespace platform
