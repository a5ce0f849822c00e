// What the parser gives, in the words of the reference data.
#pragma once

#include <nlohmann/json.hpp>

#include "platform/hidp/preparsed_data.h"

namespace reference {

nlohmann::json to_json(const platform::HIDP_CAPS& caps);
nlohmann::json to_json(const platform::HIDP_LINK_COLLECTION_NODE& node);

/// What all records of a stored capability name alike: its place, and its link collection.
nlohmann::json common_fields(const platform::hidp::Capability& cap,
                             const platform::HIDP_LINK_COLLECTION_NODE& link);

/// Fails for every field that `expected` states, by a value other than null, and that differs in `actual`.
void expect_fields(const nlohmann::json& actual, const nlohmann::json& expected);

}  // namespace reference
