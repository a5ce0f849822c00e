// The record of single HidP_ calls, which was written by hand and partly in words, as steps that a test can
// make. Nothing in it is passed over: words that are not known here throw std::out_of_range, with them.
#pragma once

#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "tests/platform/hidp/collection.h"

namespace reference {

/// Bytes that count up from 1: what value arrays are written with.
hidp_test::Bytes counted(std::size_t size);

struct Change {
    int offset;  ///< counted from the end where negative
    hidp_test::Bytes bytes;
};

/// One call. They are made in the order of the record, on one report of each type.
struct Step {
    std::size_t number = 0;  ///< of the expectation in the record
    std::string call;
    nlohmann::json arguments{};      ///< numbers where the record has words
    std::set<std::string> stated{};  ///< the arguments that are this call's own, and no repetition
    nlohmann::json expected{};       ///< the status' name, and results
    bool begins_empty = false;       ///< the report is empty before the call
    std::vector<Change> changes{};   ///< where there are some, the report is as before but for them
};

std::vector<Step> steps(const nlohmann::json& record);

}  // namespace reference
