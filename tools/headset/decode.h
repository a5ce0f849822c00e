// Reports, taken apart into usages.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/headset/caps_json.h"
#include "tools/headset/collections.h"

namespace headset {

struct DecodedValue {
    Usage usage;
    std::uint32_t value = 0;
    std::optional<std::int32_t> scaled{};  ///< nothing where the parser gives none: null state, or no range
};

struct DecodedReport {
    HIDP_REPORT_TYPE direction = platform::HidP_Input;
    std::uint8_t report_id = 0;
    Usage collection{};
    std::vector<Usage> buttons{};        ///< the ones that are set
    std::vector<DecodedValue> values{};  ///< one for each field
};

/// Decodes a report with the collection that has its id. Byte 0 is the id; in a descriptor without ids it may
/// be left out. A report may be as long as its id's, or as the collection's longest. Throws Refused.
DecodedReport decode(const Collections& collections, HIDP_REPORT_TYPE direction,
                     std::span<const std::uint8_t> report);

std::string to_text(const DecodedReport& report);
Json to_json(const DecodedReport& report);

}  // namespace headset
