#include "tools/headset/explain.h"

#include <algorithm>
#include <array>
#include <set>

#include "tools/headset/collections.h"
#include "tools/headset/table.h"
#include "tools/headset/trial_headset.h"

namespace headset {
namespace {

using platform::HIDP_STATUS_SUCCESS;
using platform::ULONG;
using platform::USAGE;
using platform::hidp::parser;

// HID Usage Tables, sections 11 and 14.
constexpr std::uint16_t led_page = 0x08;
constexpr std::uint16_t telephony_page = 0x0B;
constexpr Usage off_hook_led{led_page, 0x17};
constexpr Usage mute_led{led_page, 0x09};
constexpr Usage ring_led{led_page, 0x18};
constexpr Usage ringer{telephony_page, 0x9E};
constexpr Usage phone_mute{telephony_page, 0x2F};

/// A part of working a call, and the controls that serve it.
struct FunctionRow {
    const char* name;
    HIDP_REPORT_TYPE direction;
    std::array<Usage, 3> usages;
    Usage used_alone{};  ///< another, which counts where the driver uses it: else it serves something else
};
constexpr FunctionRow function_rows[] = {
    {"mute key", platform::HidP_Input, {phone_mute}, {telephony_page, 0xB5}},
    {"answer and end key", platform::HidP_Input, {{{telephony_page, 0x20}}}},
    // Many headsets name their reject key by its number.
    {"reject key", platform::HidP_Input, {{{telephony_page, 0x26}, {telephony_page, 0x07}, {0x09, 0x07}}}},
    {"hold key", platform::HidP_Input, {{{telephony_page, 0x21}, {telephony_page, 0x23}}}},
    {"redial key", platform::HidP_Input, {{{telephony_page, 0x24}}}},
    {"off-hook indicator", platform::HidP_Output, {off_hook_led}},
    {"mute indicator", platform::HidP_Output, {mute_led}},
    {"ring indicator", platform::HidP_Output, {ring_led, ringer}},
};

// ---- finding out

/// The place of the collection that the plug-in opens: the first one of the telephony page that it accepts
/// and can open.
std::optional<std::size_t> open_collection(TrialHeadset& headset, Explanation& explanation) {
    std::optional<std::size_t> opened;
    for (const auto& interface : headset.interfaces()) {
        auto fate = interface.refusal ? CollectionFate::left_alone : CollectionFate::let_in;
        if (!interface.refusal && interface.is_telephony && !opened) {
            fate = headset.open(interface) ? CollectionFate::opened : CollectionFate::not_opened;
            if (fate == CollectionFate::opened)
                opened = explanation.collections.size();
        }
        explanation.collections.push_back({interface.usage, fate, interface.refusal});
    }
    explanation.open_error = headset.open_error();
    return opened;
}

ExplainedIndicator try_indicator(TrialHeadset& headset, Usage usage) {
    ExplainedIndicator indicator{usage};
    indicator.on = headset.set_indicator(usage, true);
    indicator.is_lit = headset.is_lit(usage);
    indicator.off = headset.set_indicator(usage, false);
    indicator.is_dark = !headset.is_lit(usage);
    return indicator;
}

ShownState shown(const TrialHeadset& headset, const char* state, std::optional<Bytes> report) {
    ShownState result{state, std::move(report), {}};
    for (const Usage indicator : {off_hook_led, mute_led, ring_led, ringer})
        if (headset.is_lit(indicator))
            result.lit.push_back(indicator);
    return result;
}

/// The report of the key's id, with this key alone pressed; nothing for one that has no place in it.
std::optional<Bytes> key_report(PHIDP_PREPARSED_DATA data, const Capability& capability,
                                std::optional<USAGE> key) {
    Bytes report(longest_report(data, platform::HidP_Input));
    const auto length = static_cast<ULONG>(report.size());
    parser().HidP_InitializeReportForID(platform::HidP_Input, capability.report_id, data, report.data(),
                                        length);
    ULONG count = 1;
    if (key && parser().HidP_SetUsages(platform::HidP_Input, capability.usage_page, 0, &*key, &count, data,
                                       report.data(), length) != HIDP_STATUS_SUCCESS)
        return std::nullopt;
    report.resize(platform::hidp::report_length(data, platform::HidP_Input, capability.report_id));
    return report;
}

/// Presses and releases a key.
void try_key(const TrialHeadset& headset, PHIDP_PREPARSED_DATA data, const Capability& capability, Usage key,
             Explanation& explanation) {
    const auto pressed = key_report(data, capability, key.id);
    const auto released = key_report(data, capability, std::nullopt);
    if (!pressed || !released)
        return;
    if (headset.reads_as_key(*pressed))
        explanation.keys.push_back(key);
    const bool when_pressed = headset.reads_as_mute(*pressed);
    const bool when_released = headset.reads_as_mute(*released);
    if (when_pressed)
        explanation.mute_keys.push_back({key, *pressed, *released, when_released});
}

void try_keys(const TrialHeadset& headset, PHIDP_PREPARSED_DATA data, Explanation& explanation) {
    for (const Capability& capability : capabilities(data, platform::HidP_Input))
        for (ULONG usage = capability.usage_min; capability.is_button && usage <= capability.usage_max;
             ++usage)
            try_key(headset, data, capability, {capability.usage_page, static_cast<USAGE>(usage)},
                    explanation);
}

/// Whether the driver makes something of a key, or lights an indicator, of the collection that is open.
bool drives(const Explanation& explanation, HIDP_REPORT_TYPE direction, Usage usage) {
    if (direction == platform::HidP_Input)
        return std::ranges::count(explanation.keys, usage) != 0;
    return std::ranges::any_of(explanation.states, [&](const ShownState& state) {
        return std::ranges::count(state.lit, usage) != 0;
    });
}

/// Adds a control of the headset to a function; nothing where the headset does not have it.
void add_control(const Collections& collections, HIDP_REPORT_TYPE direction, Usage usage,
                 CallFunction& function) {
    for (const auto& collection : collections)
        for (const Capability& capability : capabilities(collection.get(), direction))
            if (covers(capability, usage) && std::ranges::count(function.controls, usage) == 0) {
                function.controls.push_back(usage);
                function.is_in_range = function.is_in_range || capability.usage_count() > 1;
            }
}

CallFunction find_function(const FunctionRow& row, const Collections& collections,
                           const Explanation& explanation) {
    constexpr Usage none{};
    CallFunction function{.name = row.name};
    for (const Usage usage : row.usages)
        if (usage != none)
            add_control(collections, row.direction, usage, function);
    if (row.used_alone != none && drives(explanation, row.direction, row.used_alone))
        add_control(collections, row.direction, row.used_alone, function);
    if (!function.controls.empty())
        function.support =
            std::ranges::any_of(function.controls,
                                [&](Usage usage) { return drives(explanation, row.direction, usage); })
                ? Support::works
                : Support::not_used;
    return function;
}

bool is_used(const Explanation& explanation, HIDP_REPORT_TYPE direction, const Capability& capability) {
    const auto is_covered = [&](const auto& used) { return covers(capability, used.usage); };
    return (direction == platform::HidP_Input && std::ranges::any_of(explanation.mute_keys, is_covered)) ||
           (direction == platform::HidP_Output && std::ranges::any_of(explanation.indicators, is_covered));
}

const char* kind_of(HIDP_REPORT_TYPE direction, const Capability& capability) {
    if (!capability.is_button)
        return "value";
    return direction == platform::HidP_Input ? "key" : "indicator";
}

void add_unused(Explanation& explanation, PHIDP_PREPARSED_DATA data, bool is_open) {
    constexpr std::uint16_t unassigned = 0;
    for (const auto direction : {platform::HidP_Input, platform::HidP_Output})
        for (const Capability& capability : capabilities(data, direction)) {
            const bool is_telephony =
                capability.usage_page == telephony_page || capability.usage_page == led_page;
            if ((is_open || is_telephony) && capability.usage_max != unassigned &&
                !(is_open && is_used(explanation, direction, capability)))
                explanation.unused.push_back(
                    {kind_of(direction, capability), first_usage(capability), capability.usage_max});
        }
}

// ---- telling it

constexpr const char* fate_texts[] = {"ignored", "accepted, not opened", "cannot be opened", "opened"};

std::string heading(const Explanation& explanation) {
    std::string text = explanation.name.empty() ? "headset" : tools::printable(explanation.name);
    if (!explanation.ids)
        return text + ": vendor unknown, so this assumes a vendor that the plug-in has a driver for\n";
    text += ", " + tools::to_hex16(explanation.ids->vendor) + ":" + tools::to_hex16(explanation.ids->product);
    return text +
           (explanation.has_driver
                ? ": the plug-in has a driver for this vendor\n"
                : ": the plug-in has no driver for this vendor, so nothing works: it neither lights nor reads "
                  "the headset\n");
}

std::string support_text(const CallFunction& function) {
    const bool is_hidden = function.support == Support::not_used && function.is_in_range;
    return to_string(function.support) + std::string(is_hidden ? ": inside a range of usages" : "");
}

Table functions_table(const Explanation& explanation) {
    Table table;
    for (const auto& function : explanation.functions)
        table.add({function.name, support_text(function), tools::join(function.controls, usage_label)});
    return table;
}

std::string section(const char* title, const Table& table) {
    return std::string("\n") + title + "\n" + table.to_string();
}

Table collections_table(const Explanation& explanation) {
    Table table;
    for (std::size_t i = 0; i < explanation.collections.size(); ++i) {
        const auto& [usage, fate, refusal] = explanation.collections[i];
        std::string text = fate_texts[static_cast<int>(fate)];
        if (fate == CollectionFate::not_opened)
            text += ": " + tools::printable(explanation.open_error);
        if (refusal)
            text += std::string(": ") + refusal->reason;
        table.add({std::to_string(i + 1), usage_label(usage), text});
    }
    return table;
}

std::string indicator_text(const ExplainedIndicator& indicator) {
    if (!indicator.on)
        return "not there";
    return std::string(indicator.is_lit ? "lit by " : "not lit by ") + tools::to_hex(*indicator.on) +
           (indicator.off
                ? (indicator.is_dark ? ", put out by " : ", not put out by ") + tools::to_hex(*indicator.off)
                : "");
}

std::string state_text(const ShownState& state) {
    if (!state.report)
        return "nothing is sent";
    std::string text = tools::to_hex(*state.report) + ", lit:";
    for (std::size_t i = 0; i < state.lit.size(); ++i)
        text += (i == 0 ? " " : ", ") + usage_name(state.lit[i]);
    return text + (state.lit.empty() ? " nothing" : "");
}

Table indicators_table(const Explanation& explanation) {
    Table table;
    for (const auto& indicator : explanation.indicators)
        table.add({usage_label(indicator.usage), indicator_text(indicator)});
    for (const auto& state : explanation.states)
        table.add({state.state, state_text(state)});
    return table;
}

Table keys_table(const Explanation& explanation) {
    Table table;
    for (const auto& key : explanation.mute_keys)
        table.add(
            {usage_label(key.usage),
             "reaches the client as the mute key: " + tools::to_hex(key.pressed) +
                 (key.also_released ? ", and once more when released: " + tools::to_hex(key.released) : "")});
    if (table.is_empty())
        table.add({"none reaches the client"});
    return table;
}

Table missing_table(const Explanation& explanation) {
    Table table;
    if (!explanation.is_open) {
        table.add(
            {"a collection of the Telephony page that can be opened: no indicator is lit, no key is read"});
        return table;
    }
    for (const auto& indicator : explanation.indicators)
        if (!indicator.works())
            table.add({"indicator", usage_label(indicator.usage)});
    if (explanation.mute_keys.empty())
        table.add({"key", usage_label(phone_mute)});
    if (table.is_empty())
        table.add({"nothing"});
    return table;
}

Table unused_table(const Explanation& explanation) {
    Table table;
    std::set<std::string> seen;
    for (const auto& control : explanation.unused) {
        const auto label = range_label(control.first, control.last);
        if (seen.insert(control.kind + label).second)
            table.add({control.kind, label});
    }
    if (table.is_empty())
        table.add({"nothing"});
    return table;
}

}  // namespace

const char* to_string(Support support) {
    static constexpr const char* names[] = {"works", "not used", "not there"};
    return names[static_cast<int>(support)];
}

Explanation explain(const Descriptor& descriptor) {
    const auto collections = parse_collections(descriptor.bytes);
    TrialHeadset headset(descriptor);
    Explanation explanation;
    explanation.name = descriptor.name;
    explanation.ids = descriptor.ids;
    explanation.has_driver = headset.has_driver();
    const auto opened = open_collection(headset, explanation);
    explanation.is_open = opened.has_value();
    if (opened) {
        for (const Usage indicator : {off_hook_led, mute_led})
            explanation.indicators.push_back(try_indicator(headset, indicator));
        explanation.states.push_back(shown(headset, "a connected call", headset.show_call()));
        explanation.states.push_back(shown(headset, "... and muted", headset.show_mute()));
        explanation.states.push_back(shown(headset, "... and a call rings", headset.show_ringing()));
        try_keys(headset, collections[*opened].get(), explanation);
    }
    for (const auto& row : function_rows)
        explanation.functions.push_back(find_function(row, collections, explanation));
    for (std::size_t i = 0; i < collections.size(); ++i)
        add_unused(explanation, collections[i].get(), opened == i);
    return explanation;
}

std::string to_text(const Explanation& explanation) {
    std::string text = heading(explanation) + section("In a call", functions_table(explanation)) +
                       section("Collections", collections_table(explanation));
    if (explanation.is_open)
        text +=
            section("Indicators", indicators_table(explanation)) + section("Keys", keys_table(explanation));
    return text + section("Missing", missing_table(explanation)) +
           section("There, but not used", unused_table(explanation));
}

}  // namespace headset
