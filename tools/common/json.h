// JSON, as the programs print it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace tools {

using Json = nlohmann::ordered_json;

/// The value on one line, without the end of the line. What is not UTF-8 in its texts becomes U+FFFD, and
/// what would steer a terminal is escaped.
std::string to_text(const Json& json);

}  // namespace tools
