// The capabilities of a descriptor in JSON, under the names of HIDP_CAPS, HIDP_BUTTON_CAPS, HIDP_VALUE_CAPS
// and HIDP_LINK_COLLECTION_NODE.
#pragma once

#include <istream>
#include <ostream>
#include <string_view>

#include "tools/common/json.h"
#include "tools/headset/collections.h"

namespace headset {

using tools::Json;

/// One object on one line.
std::string to_line(const Json& json);

Json caps_to_json(const Collections& collections);

/// The capabilities of a descriptor in hexadecimal; an object with the member "error" for one that is
/// refused.
Json answer_caps(std::string_view hex);

/// Answers every line of `input` with a line of JSON, at once, so that another program can ask and wait. A
/// line that is longer than any descriptor is answered before its end is read. Throws UsageError for input
/// that cannot be read, and for a line that does not end.
void answer_caps_lines(std::istream& input, std::ostream& output);

}  // namespace headset
