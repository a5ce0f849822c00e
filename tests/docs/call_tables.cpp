#include "tests/docs/call_tables.h"

#include <algorithm>
#include <array>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "tests/docs/client.h"
#include "tests/docs/markdown_table.h"
#include "tests/docs/words.h"

namespace docs {
namespace {

using namespace plugin_control;

// ---- calls

/// A call, but for its number, with its words.
struct CallKind {
    const char* words;
    std::uint32_t state;
    bool mute = false;
};

constexpr CallKind silent{"silent", CALL_STATE_IDLE};
constexpr CallKind rings{"rings", CALL_STATE_ALERTING};
constexpr CallKind connected{"connected", CALL_STATE_CONNECTED};
constexpr CallKind connected_muted{"connected and muted", CALL_STATE_CONNECTED, true};
constexpr CallKind held{"held", CALL_STATE_HOLD};
constexpr CallKind held_muted{"held and muted", CALL_STATE_HOLD, true};

using Situation = std::vector<CallKind>;

Calls calls_of(const Situation& situation, std::size_t first_number) {
    Calls calls;
    for (const CallKind& kind : situation) {
        calls.push_back({std::to_string(first_number++), kind.state, 0, kind.mute});
    }
    return calls;
}

std::string words_of(const Situation& situation, std::size_t first_number) {
    Cells words;
    for (const CallKind& kind : situation) {
        words.push_back(std::to_string(first_number++) + " " + kind.words);
    }
    return words.empty() ? "none" : joined(words, ", ");
}

// ---- what is shown

using Operation = std::function<void(IPluginCallControlCallback&)>;

constexpr std::array indicators = {Indicator::off_hook, Indicator::mute};
const Cells outcome_header = {"State sent", "Mute sent", "Off-Hook is", "Mute is"};

/// An indicator after an operation that found it dark, and after one that found it lit.
std::string indicator_words(bool from_dark, bool from_lit) {
    if (from_dark != from_lit) {
        return from_lit ? "as it was" : "the other way round";
    }
    return from_lit ? "lit" : "dark";
}

/// What an operation sends and changes while there are these calls, in the columns of `outcome_header`.
Cells outcome(Client& client, const Calls& calls, const Operation& operation) {
    Sent sent;
    std::array<std::array<bool, indicators.size()>, 2> lit_after{};
    for (const bool lit : {false, true}) {
        client.set_calls(calls);
        client.light(lit);
        operation(client.control());
        sent = client.take_sent();
        std::ranges::transform(indicators, lit_after[lit ? 1 : 0].begin(),
                               [&](Indicator indicator) { return client.is_lit(indicator); });
    }
    Cells cells = {sent.state ? state_words(*sent.state) : nothing,
                   sent.muted ? (*sent.muted ? "muted" : "unmuted") : nothing};
    for (std::size_t i = 0; i < indicators.size(); ++i) {
        cells.push_back(indicator_words(lit_after[0][i], lit_after[1][i]));
    }
    return cells;
}

// ---- operations

struct NamedOperation {
    const char* words;
    Operation call;
};

/// The client's operations on call 1.
const NamedOperation operations[] = {
    {"`createCall`", [](auto& control) { control.createCall("", "1", 0); }},
    {"`incomingCall`, ringing", [](auto& control) { control.incomingCall("", "1", true); }},
    {"`incomingCall`, not ringing", [](auto& control) { control.incomingCall("", "1", false); }},
    {"`ringbackCall`", [](auto& control) { control.ringbackCall("", "1"); }},
    {"`connectCall`", [](auto& control) { control.connectCall("", "1"); }},
    {"`resumeCall`", [](auto& control) { control.resumeCall("", "1"); }},
    {"`holdCall`", [](auto& control) { control.holdCall("", "1"); }},
    {"`endCall`", [](auto& control) { control.endCall("", "1"); }},
    {"`mute`", [](auto& control) { control.mute("", "1"); }},
    {"`unmute`", [](auto& control) { control.unmute("", "1"); }},
};

/// What call 1 may be before an operation; none: the plug-in does not know it.
const Situation first_calls[] = {{}, {silent}, {rings}, {connected}, {connected_muted}, {held}, {held_muted}};

/// What other calls there may be.
const Situation other_calls[] = {
    {},           {silent},           {rings},       {connected},       {connected_muted}, {held},
    {held_muted}, {rings, connected}, {rings, held}, {connected, held},
};

using Grid = std::array<std::array<Cells, std::size(other_calls)>, std::size(first_calls)>;

Grid outcomes(Client& client, const Operation& operation) {
    Grid grid;
    for (std::size_t first = 0; first < std::size(first_calls); ++first) {
        for (std::size_t other = 0; other < std::size(other_calls); ++other) {
            Calls calls = calls_of(first_calls[first], 1);
            std::ranges::copy(calls_of(other_calls[other], 2), std::back_inserter(calls));
            grid[first][other] = outcome(client, calls, operation);
        }
    }
    return grid;
}

/// One row for each call 1 and each set of other calls, where these matter.
void add_operation(MarkdownTable& table, const NamedOperation& operation, const Grid& grid) {
    const bool first_matters = std::ranges::any_of(grid, [&](const auto& row) { return row != grid[0]; });
    const bool others_matter = std::ranges::any_of(grid, [](const auto& row) {
        return std::ranges::any_of(row, [&](const Cells& cells) { return cells != row[0]; });
    });
    for (std::size_t first = 0; first < (first_matters ? std::size(first_calls) : 1); ++first) {
        for (std::size_t other = 0; other < (others_matter ? std::size(other_calls) : 1); ++other) {
            const char* const known = first_calls[first].empty() ? "not known" : first_calls[first][0].words;
            table.add(with({operation.words, first_matters ? known : "any",
                            others_matter ? words_of(other_calls[other], 2) : "any"},
                           grid[first][other]));
        }
    }
}

// ---- requests

/// Calls in every state that a key looks for, and several of them.
const Situation request_situations[] = {
    {},
    {silent},
    {rings},
    {connected},
    {connected_muted},
    {held},
    {rings, rings},
    {connected, rings},
    {connected_muted, rings},
    {held, rings},
    {held, connected},
    {connected, connected},
    {held, held},
    {held, connected, rings},
};

/// What listeners are asked for by the user of a headset (orvex/headset_plugin.h).
constexpr const char* request_names[] = {
    "onAnswer",   "onEndCall",    "onHoldCall",    "onResumeCall", "onRejectCall",
    "onMuteCall", "onUnmuteCall", "onFunctionKey", "onConfigKey",
};

/// The keys that lead to a request with some calls or others.
std::vector<KeyName> keys_for(Client& client, const std::string& request) {
    std::vector<KeyName> keys;
    std::ranges::copy_if(key_names, std::back_inserter(keys), [&](const KeyName& key) {
        return std::ranges::any_of(request_situations, [&](const Situation& situation) {
            client.set_calls(calls_of(situation, 1));
            return client.requests_for(key.code).starts_with(code(request));
        });
    });
    return keys;
}

std::string reach_words(const std::vector<KeyName>& keys, const std::map<std::int32_t, KeySource>& sources) {
    const auto is_standard = [&](const KeyName& key) {
        const auto source = sources.find(key.code);
        return source != sources.end() && source->second.is_standard;
    };
    if (keys.empty()) {
        return "never: no key leads to it";
    }
    if (std::ranges::any_of(keys, is_standard)) {
        return "yes";
    }
    return std::ranges::any_of(keys, [&](const KeyName& key) { return sources.contains(key.code); })
               ? "never: only dormant drivers read the key"
               : "never: no driver reads the key";
}

}  // namespace

void print_shown_calls(Client& client) {
    const Situation situations[] = {
        {},
        {silent},
        {rings},
        {connected},
        {connected_muted},
        {held},
        {held_muted},
        {rings, rings},
        {rings, connected},
        {rings, connected_muted},
        {rings, held},
        {connected, held},
        {connected, held_muted},
        {connected_muted, held},
        {connected, connected_muted},
        {connected_muted, connected},
        {held, held},
        {rings, connected, held},
    };
    MarkdownTable table("shown-calls", with({"Calls"}, outcome_header));
    for (const Situation& situation : situations) {
        table.add(with({words_of(situation, 1)}, outcome(client, {}, [&](auto& control) {
                           const Calls calls = calls_of(situation, 1);
                           control.callStateSync("", calls, static_cast<int>(calls.size()));
                       })));
    }
    table.print();
}

void print_operations(Client& client) {
    MarkdownTable table("operations", with({"Operation", "Call 1 before", "Other calls"}, outcome_header));
    for (const NamedOperation& operation : operations) {
        add_operation(table, operation, outcomes(client, operation.call));
    }
    table.print();
}

void print_requests(Client& client) {
    Cells header = {"Calls"};
    for (const KeyName& key : key_names) {
        header.emplace_back(key.words);
    }
    MarkdownTable table("requests", header);
    for (const Situation& situation : request_situations) {
        Cells row = {words_of(situation, 1)};
        for (const KeyName& key : key_names) {
            client.set_calls(calls_of(situation, 1));
            row.push_back(client.requests_for(key.code));
        }
        table.add(row);
    }
    table.print();
}

void print_reach(Client& client, const std::map<std::int32_t, KeySource>& sources) {
    MarkdownTable table("reach", {"Request", "Keys", "Reached today"});
    for (const char* const request : request_names) {
        const std::vector<KeyName> keys = keys_for(client, request);
        Cells words;
        std::ranges::transform(keys, std::back_inserter(words), &KeyName::words);
        table.add({code(request), joined(words, ", "), reach_words(keys, sources)});
    }
    table.print();
}

}  // namespace docs
