#include "tools/softphone/expectations.h"

#include <algorithm>
#include <array>
#include <optional>

#include "tools/softphone/grammar.h"

namespace softphone {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds default_time{2000};
// Long enough for a report or a request that is under way to arrive.
constexpr milliseconds default_quiet_time{300};

std::optional<std::string> word_at(const Words& words, std::size_t position) {
    return position < words.size() ? std::optional(words[position]) : std::nullopt;
}

/// Claims the first element of a queue, if there is one.
template <class Element>
std::optional<Element> claim(std::deque<Element>& queue) {
    if (queue.empty())
        return std::nullopt;
    Element first = std::move(queue.front());
    queue.pop_front();
    return first;
}

Finding decide(bool met, std::string found) {
    return {met ? Outcome::met : Outcome::failed, std::move(found)};
}

Check expect_indicator(State& state, const Words& words) {
    const Usage usage = find_usage(indicator_names(), words[0]);
    const bool lit = words[1] == "on";
    const Headset& headset = state.headsets.choose(word_at(words, 2));
    return [&headset, usage, lit]() -> Finding {
        const Indicator* indicator = headset.indicator(usage);
        if (!indicator)
            return {Outcome::failed, headset.name + " has no such indicator"};
        return {indicator->lit == lit ? Outcome::met : Outcome::waiting, lit_names(headset.indicators)};
    };
}

Check expect_action(State& state, const Words& words) {
    const Action wanted = find_action(words[0]);
    return [&state, wanted, cid = word_at(words, 1)]() -> Finding {
        const auto action = claim(state.unclaimed.actions);
        if (!action)
            return {Outcome::waiting, "no action"};
        return decide(action->action == wanted && cid.value_or(action->cid) == action->cid,
                      std::string(to_string(action->action)) + " " + action->cid);
    };
}

Check expect_report(State& state, const Words& words) {
    const Bytes wanted = parse_bytes(words[0]);
    const int headset = state.headsets.choose(word_at(words, 1)).number;
    return [&state, wanted, headset]() -> Finding {
        const auto report = claim(state.unclaimed.reports[headset]);
        if (!report)
            return {Outcome::waiting, "no report"};
        return decide(*report == wanted, to_hex(*report));
    };
}

Check expect_call(State& state, const Words& words) {
    return [&state, cid = words[0], wanted = words[1]]() -> Finding {
        const Call* call = state.calls.find(cid);
        const Call now = call ? *call : Call{.cid = cid, .phase = CallPhase::ended};
        const bool met = wanted == to_string(now.phase) || wanted == (now.muted ? "muted" : "unmuted");
        return {met ? Outcome::met : Outcome::waiting, to_string(now)};
    };
}

Check expect_log(State& state, const Words& words) {
    return [&state, text = join(words)]() -> Finding {
        const auto line = state.log.find_next(text);
        if (!line)
            return {Outcome::waiting, "no such line"};
        return {Outcome::met, *line};
    };
}

Check expect_notice(State& state, std::deque<DeviceNotice>& notices, const Words& words) {
    std::optional<std::string> wanted;
    if (const auto name = word_at(words, 0))
        wanted = state.headsets.choose(name).serial;
    return [&notices, wanted]() -> Finding {
        const auto notice = claim(notices);
        if (!notice)
            return {Outcome::waiting, "no notice"};
        return decide(wanted.value_or(notice->serial) == notice->serial,
                      notice->device_name + ", serial " + quoted(notice->serial));
    };
}

Check expect_ready(State& state, const Words& words) {
    return expect_notice(state, state.unclaimed.ready, words);
}

Check expect_removed(State& state, const Words& words) {
    return expect_notice(state, state.unclaimed.removed, words);
}

/// What is there of a kind and was expected by nobody; empty if nothing.
struct QuietRow {
    const char* kind;
    std::string (*unclaimed)(const Unclaimed& unclaimed);
};

std::string first_name(const std::deque<DeviceNotice>& notices) {
    return notices.empty() ? "" : notices.front().device_name;
}

constexpr std::array quiet_rows{
    QuietRow{"action",
             [](const Unclaimed& unclaimed) {
                 return unclaimed.actions.empty() ? ""
                                                  : std::string(to_string(unclaimed.actions.front().action));
             }},
    QuietRow{"report",
             [](const Unclaimed& unclaimed) {
                 for (const auto& [headset, reports] : unclaimed.reports)
                     if (!reports.empty())
                         return to_hex(reports.front());
                 return std::string();
             }},
    QuietRow{"ready", [](const Unclaimed& unclaimed) { return first_name(unclaimed.ready); }},
    QuietRow{"removed", [](const Unclaimed& unclaimed) { return first_name(unclaimed.removed); }},
};

Check expect_none(State& state, const Words& words) {
    const auto* row = std::ranges::find(quiet_rows, words[0], &QuietRow::kind);
    return [&state, unclaimed = row->unclaimed]() -> Finding {
        const std::string found = unclaimed(state.unclaimed);
        return {found.empty() ? Outcome::waiting : Outcome::failed, found.empty() ? "none" : found};
    };
}

struct Condition {
    ConditionHelp help;
    Check (*make)(State& state, const Words& words);
    milliseconds time = default_time;
    Outcome at_deadline = Outcome::failed;
};

constexpr std::array conditions{
    Condition{{"indicator", "INDICATOR on|off [HEADSET]", "the indicator is lit or dark"}, expect_indicator},
    Condition{{"action", "ACTION [CID]", "the next request from the headset is this one"}, expect_action},
    Condition{{"report", "BYTES [HEADSET]", "the next output report is this one, as in 02:01:00"},
              expect_report},
    Condition{{"call", "CID created|ringing|silent|ringback|connected|held|ended|muted|unmuted",
               "the softphone's call is in this state"},
              expect_call},
    Condition{{"log", "TEXT...", "a later line of the plug-in's log contains the text"}, expect_log},
    Condition{{"ready", "[HEADSET]", "the next headset that the plug-in reports ready"}, expect_ready},
    Condition{{"removed", "[HEADSET]", "the next headset that the plug-in reports removed"}, expect_removed},
    Condition{
        {"no", "action|report|ready|removed",
         "nothing of this kind is left, and nothing comes within 300 milliseconds, or MS with `for MS`"},
        expect_none,
        default_quiet_time,
        Outcome::met},
};

/// Takes "within MS", or "for MS" of an absence, off the end of the words.
std::optional<milliseconds> take_time(Words& words) {
    if (words.size() < 3)
        return std::nullopt;
    const std::string& preposition = words[words.size() - 2];
    if (preposition != "within" && preposition != "for")
        return std::nullopt;
    const milliseconds time = parse_milliseconds(words.back());
    words.resize(words.size() - 2);
    return time;
}

}  // namespace

std::span<const ConditionHelp> condition_help() {
    static const auto helps = [] {
        std::array<ConditionHelp, conditions.size()> all{};
        std::ranges::transform(conditions, all.begin(), &Condition::help);
        return all;
    }();
    return helps;
}

Expectation make_expectation(State& state, Words words) {
    const std::string wanted = join(words);
    const auto time = take_time(words);
    const auto condition = std::ranges::find_if(
        conditions, [&](const Condition& candidate) { return candidate.help.name == words.front(); });
    if (condition == conditions.end())
        throw CommandError(quoted(words.front()) + " cannot be expected; see help expect");
    words.erase(words.begin());
    if (!Grammar(condition->help.arguments).accepts(words))
        throw CommandError(std::string("usage: expect ") + condition->help.name + " " +
                           condition->help.arguments + " [within MS]");
    return {wanted, time.value_or(condition->time), condition->at_deadline, condition->make(state, words)};
}

}  // namespace softphone
