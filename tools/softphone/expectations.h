// What a script can expect to happen.
#pragma once

#include <chrono>
#include <functional>
#include <span>
#include <string>

#include "tools/softphone/state.h"

namespace softphone {

enum class Outcome { waiting, met, failed };

/// How things stand with an expectation.
struct Finding {
    Outcome outcome = Outcome::waiting;
    std::string found;  ///< for the reader of a failure
};

/// Looks at the state again. What it looks at is claimed, so that the next expectation of the kind gets the
/// next one.
using Check = std::function<Finding()>;

struct Expectation {
    std::string wanted;
    std::chrono::milliseconds time;  ///< how long it may take
    Outcome at_deadline;             ///< what it comes to when the check is still waiting then
    Check check;                     ///< called after every event, and no more once it is met or failed
};

/// A kind of expectation, for help and completion.
struct ConditionHelp {
    const char* name;
    const char* arguments;
    const char* help;
};
std::span<const ConditionHelp> condition_help();

/// The expectation that the words after `expect` describe; throws CommandError. It refers to `state`.
Expectation make_expectation(State& state, Words words);

}  // namespace softphone
