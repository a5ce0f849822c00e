// Reports, put together from usages.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/common/text.h"
#include "tools/headset/caps_json.h"
#include "tools/headset/collections.h"

namespace headset {

/// What a usage is to be in its report.
struct Assignment {
    /// At least one; of several, which share a name, the one that the descriptor has.
    std::vector<Usage> usages;
    std::int64_t value = 1;
};

/// USAGE or USAGE=VALUE: the usage is PAGE:USAGE in hexadecimal, or a name of the HID Usage Tables; the value
/// is decimal, or hexadecimal with 0x. Throws UsageError.
Assignment parse_assignment(std::string_view text);

struct EncodedReport {
    HIDP_REPORT_TYPE direction = platform::HidP_Output;
    tools::Bytes bytes{};  ///< byte 0 is the id; as long as the reports of this id
};

/// The reports that the assignments make of empty ones, in the order of their ids. A usage that stands in
/// several reports is set in the first. Throws Refused.
std::vector<EncodedReport> encode(const Collections& collections, HIDP_REPORT_TYPE direction,
                                  std::span<const Assignment> assignments);

std::string to_text(const EncodedReport& report);
Json to_json(const EncodedReport& report);

}  // namespace headset
