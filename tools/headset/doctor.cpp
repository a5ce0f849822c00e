#include "tools/headset/doctor.h"

#include <algorithm>
#include <tuple>

#include "tools/headset/doctor_checks.h"
#include "tools/headset/errors.h"
#include "tools/headset/table.h"

namespace headset {
namespace {

// ---- looking

Headset examine(System& system, const Node& node, const NodeState& state) {
    Headset headset{.node = node,
                    .state = state,
                    .rules = find_rules(system, node.interfaces.front().vendor_id, state.has_sound),
                    .has_udev_daemon = system.udev_daemon_runs()};
    Descriptor descriptor = describe(system, node);
    descriptor.has_serial = true;  // the lack of one has a check of its own
    try {
        headset.explanation = explain(descriptor);
    } catch (const Refused& error) {
        headset.descriptor_error = error.what();
    }
    return headset;
}

bool is_same_device(const Node& node, const Node& other) {
    const auto identity = [](const Node& of) {
        const auto& info = of.interfaces.front();
        return std::tie(info.vendor_id, info.product_id, info.serial_number);
    };
    return identity(node) == identity(other);
}

/// A headset has its keys in one node and may have others beside, for its firmware, say.
bool is_beside_telephony(const Node& node, const std::vector<Node>& nodes) {
    return !has_telephony(node) && std::ranges::any_of(nodes, [&](const Node& other) {
        return has_telephony(other) && is_same_device(node, other);
    });
}

std::vector<Headset> find_headsets(System& system) {
    std::vector<Headset> headsets;
    const auto nodes = list_nodes(system);
    for (const auto& node : nodes) {
        const auto state = system.node_state(node.path);
        if ((has_telephony(node) || state.has_sound) && !is_beside_telephony(node, nodes))
            headsets.push_back(examine(system, node, state));
    }
    return headsets;
}

// ---- checking

/// Applies checks to a subject; whether it passed those that make an error.
template <class Subject>
bool apply(std::span<const Check<Subject>> checks, const Subject& subject, const std::string& label,
           std::vector<Finding>& findings) {
    bool is_well = true;
    for (const auto& check : checks)
        if (auto problem = check.problem(subject); !problem.empty()) {
            findings.push_back(
                {check.severity, check.name, label, std::move(problem), check.remedy(subject)});
            is_well = is_well && check.severity != Severity::error;
        }
    return is_well;
}

// ---- telling it

const char* name_of(Severity severity) {
    static constexpr const char* names[] = {"note", "warning", "error"};
    return names[static_cast<int>(severity)];
}

std::string finding_text(const Finding& finding) {
    return std::string(name_of(finding.severity)) + ", " + finding.name +
           (finding.headset.empty() ? "" : ": " + finding.headset) + "\n  " + tools::printable(finding.text) +
           "\n  Remedy: " + tools::printable(finding.remedy) + "\n\n";
}

std::string summary(const CheckedHeadset& headset) {
    Table table;
    for (const auto support : {Support::works, Support::not_used, Support::not_there}) {
        auto functions = headset.functions;
        std::erase_if(functions, [&](const CallFunction& function) { return function.support != support; });
        if (!functions.empty())
            table.add({to_string(support), tools::join(functions, [](const CallFunction& function) {
                           return std::string(function.name);
                       })});
    }
    return "Calls will work with " + headset.name + " (" + headset.path + "):\n" + table.to_string();
}

std::string summary(const Diagnosis& diagnosis) {
    std::string text;
    for (const auto& headset : diagnosis.headsets)
        if (headset.works)
            text += summary(headset);
    return text.empty() ? "Calls will not work.\n" : text;
}

Json to_json(const CallFunction& function) {
    Json controls = Json::array();
    for (const Usage usage : function.controls)
        controls.push_back(usage_label(usage));
    return {
        {"name", function.name}, {"support", to_string(function.support)}, {"controls", std::move(controls)}};
}

Json to_json(const CheckedHeadset& headset) {
    Json functions = Json::array();
    for (const auto& function : headset.functions)
        functions.push_back(to_json(function));
    return {{"path", headset.path},
            {"name", headset.name},
            {"works", headset.works},
            {"functions", std::move(functions)}};
}

}  // namespace

bool Diagnosis::calls_work() const {
    return std::ranges::any_of(headsets, &CheckedHeadset::works);
}

Diagnosis diagnose(System& system) {
    Machine machine{system.hidapi_error(), system.udev_error(), system.udev_daemon_runs(),
                    system.runs_as_root()};
    const auto headsets = machine.hidapi_error.empty() ? find_headsets(system) : std::vector<Headset>();
    machine.has_headset = !headsets.empty();
    Diagnosis diagnosis;
    apply(machine_checks(), machine, "", diagnosis.findings);
    for (const auto& headset : headsets) {
        const bool is_well = apply(headset_checks(), headset, headset.label(), diagnosis.findings);
        diagnosis.headsets.push_back(
            {headset.node.path, device_name(headset.info()), is_well, headset.explanation.functions});
    }
    return diagnosis;
}

std::string to_text(const Diagnosis& diagnosis) {
    std::string text;
    for (const auto& finding : diagnosis.findings)
        text += finding_text(finding);
    return text + summary(diagnosis);
}

Json to_json(const Diagnosis& diagnosis) {
    Json findings = Json::array();
    for (const auto& finding : diagnosis.findings)
        findings.push_back({{"severity", name_of(finding.severity)},
                            {"name", finding.name},
                            {"headset", finding.headset.empty() ? Json() : Json(finding.headset)},
                            {"text", finding.text},
                            {"remedy", finding.remedy}});
    Json headsets = Json::array();
    for (const auto& headset : diagnosis.headsets)
        headsets.push_back(to_json(headset));
    return {{"calls_work", diagnosis.calls_work()},
            {"headsets", std::move(headsets)},
            {"findings", std::move(findings)}};
}

}  // namespace headset
