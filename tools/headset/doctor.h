// What is wrong with the headsets of a machine, and what to do about it.
#pragma once

#include <string>
#include <vector>

#include "tools/headset/caps_json.h"
#include "tools/headset/explain.h"
#include "tools/headset/system.h"

namespace headset {

enum class Severity {
    note,
    warning,  ///< calls work, but not all that belongs to them
    error,    ///< calls do not work
};

struct Finding {
    Severity severity;
    const char* name;
    std::string headset{};  ///< its name and path; empty for a finding about the machine
    std::string text{};
    std::string remedy{};
};

/// A device that counts as a headset: it has a collection of the Telephony page, or is a sound card, too.
struct CheckedHeadset {
    std::string path{};  ///< of the node
    std::string name{};
    bool works = false;
    std::vector<CallFunction> functions{};
};

struct Diagnosis {
    std::vector<Finding> findings{};
    std::vector<CheckedHeadset> headsets{};

    /// Whether calls will work with one headset at least.
    bool calls_work() const;
};

Diagnosis diagnose(System& system);

std::string to_text(const Diagnosis& diagnosis);
Json to_json(const Diagnosis& diagnosis);

}  // namespace headset
