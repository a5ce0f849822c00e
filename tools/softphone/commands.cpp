#include "tools/softphone/commands.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>

#include "tools/softphone/grammar.h"
#include "tools/softphone/softphone.h"

namespace softphone {
namespace {

constexpr std::size_t name_width = 11;
constexpr const char* default_log_lines = "20";

void incoming(Softphone& softphone, const Words& words) {
    softphone.phone().incoming(words[0], words.size() == 1);
}

template <CallStep step>
void perform(Softphone& softphone, const Words& words) {
    softphone.phone().perform(step, words[0]);
}

void create(Softphone& softphone, const Words& words) {
    softphone.phone().create(words[0],
                             words.size() > 1 ? parse_integer(words[1], "a direction, a number") : 0);
}

void sync(Softphone& softphone, const Words& /*words*/) {
    softphone.phone().sync();
}

void calls(Softphone& softphone, const Words& /*words*/) {
    for (const auto& call : softphone.state().calls.all())
        softphone.print(CallListed{call});
}

/// The audio device of a headset, named as desktops do: by bus, product and serial number.
AudioDevice audio_device_of(const Headset& headset) {
    std::string id = "usb-" + headset.product + "_" + headset.serial + "-00";
    std::ranges::replace(id, ' ', '_');
    return {id, headset.product, headset.serial};
}

AudioDevice audio_device(const Words& words, const Headset* headset) {
    if (words.size() == 1 && words[0] == "none")
        return {};
    if (words.size() == 1 && headset)
        return audio_device_of(*headset);
    return {words[0], words.size() > 1 ? words[1] : "", words.size() > 2 ? words[2] : ""};
}

/// In place of a list that would be empty.
void say_why_there_is_none(Softphone& softphone) {
    softphone.print(Text{softphone.virtual_headsets().available()
                             ? "no headset is plugged: \"plug MODEL\" plugs one, and \"models\" shows them"
                             : "no headset is found; \"headset doctor\" tells what to do. The reason: " +
                                   softphone.why_no_headset()});
}

/// The audio devices of the headsets that can be chosen now.
void list_devices(Softphone& softphone) {
    const auto& headsets = softphone.state().headsets.all();
    for (const auto& headset : headsets) {
        if (headset.plugged) {
            const AudioDevice device = audio_device_of(headset);
            softphone.print(DeviceListed{headset.name, device.id, device.name, device.serial});
        }
    }
    if (std::ranges::none_of(headsets, &Headset::plugged))
        say_why_there_is_none(softphone);
}

void device(Softphone& softphone, const Words& words) {
    softphone.look_for_headsets();
    if (words.empty()) {
        list_devices(softphone);
        return;
    }
    HeadsetList& headsets = softphone.state().headsets;
    const AudioDevice device = audio_device(words, headsets.find(words[0]));
    // No device at all changes nothing; any other one puts the active headset out of use until a notice says
    // "ready".
    if (!device.id.empty())
        headsets.set_ready(nullptr);
    softphone.phone().choose(device);
}

void headsets(Softphone& softphone, const Words& /*words*/) {
    softphone.look_for_headsets();
    for (const auto& headset : softphone.state().headsets.all())
        softphone.print(HeadsetListed{headset});
    if (softphone.state().headsets.all().empty())
        say_why_there_is_none(softphone);
}

void do_not_disturb(Softphone& softphone, const Words& words) {
    softphone.host().set_do_not_disturb(parse_integer(words[0], "a number"));
}

void automatic(Softphone& softphone, const Words& words) {
    softphone.set_automatic(words[0] == "on");
}

void stop(Softphone& softphone, const Words& /*words*/) {
    softphone.host().stop();
    softphone.state().headsets.set_ready(nullptr);
}

void start(Softphone& softphone, const Words& /*words*/) {
    softphone.host().start();
}

void models(Softphone& softphone, const Words& /*words*/) {
    for (const auto& model : softphone.virtual_headsets().models())
        softphone.print(model);
}

void plug(Softphone& softphone, const Words& words) {
    Words rest(words.begin() + 1, words.end());
    std::string name = words[0];
    if (rest.size() >= 2 && rest[rest.size() - 2] == "as") {
        name = rest.back();
        rest.resize(rest.size() - 2);
    }
    if (rest.size() > 1)
        throw CommandError("after the serial number there can only be: as NAME");
    const int number =
        softphone.virtual_headsets().plug(words[0], rest.empty() ? std::nullopt : std::optional(rest[0]));
    softphone.state().headsets.add(number, name);
}

void unplug(Softphone& softphone, const Words& words) {
    const int headset = softphone.state().headsets.choose(words[0]).number;
    softphone.virtual_headsets().unplug(headset);
}

void replug(Softphone& softphone, const Words& words) {
    const int headset = softphone.state().headsets.choose(words[0]).number;
    softphone.virtual_headsets().replug(headset);
}

/// The headset that the first argument names, when there are more arguments than a command needs without one.
Headset& optional_headset(Softphone& softphone, const Words& words, std::size_t needed) {
    return softphone.state().headsets.choose(words.size() > needed ? std::optional(words[0]) : std::nullopt);
}

void press(Softphone& softphone, const Words& words) {
    const int headset = optional_headset(softphone, words, 1).number;
    const Usage key = find_usage(key_names(), words.back());
    softphone.post(KeyWorked{headset, usage_name(key_names(), key), "pressed"});
    softphone.virtual_headsets().press(headset, key);
}

void key(Softphone& softphone, const Words& words) {
    const int headset = optional_headset(softphone, words, 2).number;
    const Usage key = find_usage(key_names(), words[words.size() - 2]);
    softphone.post(KeyWorked{headset, usage_name(key_names(), key), words.back()});
    softphone.virtual_headsets().set_key(headset, key, words.back() == "down");
}

void send(Softphone& softphone, const Words& words) {
    const int headset = optional_headset(softphone, words, 1).number;
    softphone.virtual_headsets().send_report(headset, parse_bytes(words.back()));
}

void fault(Softphone& softphone, const Words& words) {
    const int headset = softphone.state().headsets.choose(words[0]).number;
    softphone.virtual_headsets().misbehave(headset, words[1]);
}

void expect(Softphone& softphone, const Words& words) {
    softphone.check(make_expectation(softphone.state(), words));
}

void forget(Softphone& softphone, const Words& /*words*/) {
    softphone.state().unclaimed = {};
    softphone.state().log.skip_all();
}

void wait(Softphone& softphone, const Words& words) {
    softphone.wait(parse_milliseconds(words[0]));
}

void say(Softphone& softphone, const Words& words) {
    softphone.print(Said{join(words)});
}

void log(Softphone& softphone, const Words& words) {
    const auto count = parse_integer(words.empty() ? default_log_lines : words[0], "a number of lines");
    for (const auto& line : softphone.state().log.tail(static_cast<std::size_t>(std::max(count, 0))))
        softphone.print(LogLine{line});
}

void help(Softphone& softphone, const Words& words);

void quit(Softphone& softphone, const Words& /*words*/) {
    softphone.quit();
}

constexpr std::array table{
    Command{"incoming", "CID [silent]", "a call comes in and rings",
            "With `silent` the call does not ring, and the headset does not change.", incoming},
    Command{"ringback", "CID", "the far end of an outgoing call rings",
            "The headset shows that it is in use.", perform<CallStep::ringback>},
    Command{"connect", "CID", "a call is connected", "", perform<CallStep::connect>},
    Command{"hold", "CID", "a call is held", "", perform<CallStep::hold>},
    Command{"resume", "CID", "a held call is resumed", "", perform<CallStep::resume>},
    Command{"end", "CID", "a call ends", "", perform<CallStep::end>},
    Command{"mute", "CID", "a call is muted", "", perform<CallStep::mute>},
    Command{"unmute", "CID", "a call is unmuted", "", perform<CallStep::unmute>},
    Command{
        "create", "CID [DIRECTION]", "a call is created",
        "The headset shows nothing until the call rings, rings back or connects. DIRECTION is a number for the plug-in.",
        create},
    Command{"sync", "", "sends the softphone's list of calls",
            "The list replaces all calls that the plug-in knows. Use it after `start`.", sync},
    Command{"calls", "", "shows the calls", "", calls},
    Command{
        "device", "[HEADSET|ID|none [NAME [SERIAL]]]", "chooses the audio device for calls",
        "Without arguments it shows the audio devices of the headsets. HEADSET chooses the audio device of this "
        "headset; its id contains the product and the serial number, as on a desktop. ID, NAME and SERIAL are "
        "passed to the plug-in unchanged. `none` passes an empty id, which changes nothing. If you "
        "unplug a headset and plug it in again, choose it again.",
        device},
    Command{"headsets", "", "shows the headsets",
            "Virtual ones, and real ones with telephony. If there is none, it says why.", headsets},
    Command{"dnd", "VALUE", "sets do-not-disturb to a number", "The plug-in only logs it.", do_not_disturb},
    Command{
        "auto", "on|off", "does what the headset asks for, or leaves it to you",
        "With `on`, the default, a request leads to a command at once: Answer to connect, EndCall and RejectCall "
        "to end, HoldCall to hold of the connected call, ResumeCall to resume, muteCall to mute, unmuteCall to "
        "unmute.",
        automatic},
    Command{"stop", "", "stops the plug-in", "The calls continue, but they are not reported to the plug-in.",
            stop},
    Command{
        "start", "", "starts the plug-in again",
        "It knows no calls and no audio device. Send the calls with `sync` and the audio device with `device`.",
        start},
    Command{"models", "", "shows the models that you can plug in", "", models},
    Command{
        "plug", "MODEL [SERIAL] [as NAME]", "plugs in a virtual headset",
        "SERIAL replaces the serial number of the model. NAME is the name of the headset in other commands; the "
        "default is the name of the model.",
        plug},
    Command{"unplug", "HEADSET", "unplugs a virtual headset", "", unplug},
    Command{"replug", "HEADSET", "plugs in an unplugged headset again",
            "Its indicators are dark. Choose it again with `device`.", replug},
    Command{
        "press", "[HEADSET] KEY", "presses and releases a key",
        "KEY is a name, such as mute, hook or flash, or PAGE:USAGE in hexadecimal, such as 0B:2F. You can omit "
        "HEADSET if only one is plugged in.",
        press},
    Command{"key", "[HEADSET] KEY up|down", "moves a key and leaves it there", "For example a hook switch.",
            key},
    Command{"send", "[HEADSET] BYTES", "sends an input report unchanged",
            "BYTES begin with the report id, such as 01:00. The id is 0 if the headset has no report ids.",
            send},
    Command{
        "fault", "HEADSET FAULT", "makes a headset misbehave",
        "FAULT is none, open-refused, write-hangs, write-fails, read-fails, read-one-byte, unplug-in-open or "
        "unplug-in-write.",
        fault},
    Command{
        "expect", "CONDITION...", "waits for something, and fails if it does not happen",
        "It waits 2 seconds at most, or MS milliseconds with `within MS` at the end. Requests, reports, notices and "
        "log lines are claimed in the order of their arrival, each once. The conditions:",
        expect},
    Command{
        "forget", "", "ignores the events that have arrived so far",
        "The next `expect action`, `report`, `ready`, `removed`, `log` or `no` only considers what comes after this.",
        forget},
    Command{"wait", "MS", "waits for some milliseconds", "", wait},
    Command{"say", "TEXT...", "prints a line", "", say},
    Command{"log", "[N]", "shows the last lines of the plug-in's log", "The default is 20 lines.", log},
    Command{"help", "[COMMAND]", "shows the commands, or one of them", "", help},
    Command{"quit", "", "stops the plug-in and ends the program", "The end of the input does the same.",
            quit},
};

const Command& find_command(const std::string& name) {
    const auto* found = std::ranges::find(table, name, &Command::name);
    if (found == table.end())
        throw CommandError("there is no command " + quoted(name) + "; see help");
    return *found;
}

std::string usage(const Command& command) {
    return command.name + std::string(*command.arguments ? " " : "") + command.arguments;
}

std::string two_columns(std::string text, std::size_t width, std::string_view explanation) {
    text.resize(std::max(width, text.size() + 2), ' ');
    return text + std::string(explanation);
}

void help(Softphone& softphone, const Words& words) {
    if (words.empty()) {
        for (const auto& command : table)
            softphone.print(Text{two_columns(command.name, name_width, command.summary)});
        return;
    }
    const Command& command = find_command(words[0]);
    softphone.print(Text{usage(command) + ": " + command.summary + "."});
    if (*command.help)
        softphone.print(Text{command.help});
    if (command.run == expect)
        for (const auto& condition : condition_help())
            softphone.print(Text{"  " + two_columns(condition.name, name_width, condition.arguments) + ": " +
                                 condition.help});
}

Words names_of(std::span<const NamedUsage> usages) {
    Words names;
    std::ranges::transform(usages, std::back_inserter(names), &NamedUsage::name);
    return names;
}

/// What the user may type where a description of arguments has a word in capitals.
struct CandidateRow {
    const char* word;
    Words (*candidates)(Softphone& softphone);
};

constexpr std::array candidate_rows{
    CandidateRow{"ACTION", [](Softphone&) { return action_names(); }},
    CandidateRow{"CID",
                 [](Softphone& softphone) {
                     Words cids;
                     std::ranges::transform(softphone.state().calls.all(), std::back_inserter(cids),
                                            &Call::cid);
                     return cids;
                 }},
    CandidateRow{"COMMAND",
                 [](Softphone&) {
                     Words names;
                     std::ranges::transform(table, std::back_inserter(names), &Command::name);
                     return names;
                 }},
    CandidateRow{"CONDITION",
                 [](Softphone&) {
                     Words names;
                     std::ranges::transform(condition_help(), std::back_inserter(names),
                                            &ConditionHelp::name);
                     return names;
                 }},
    CandidateRow{"FAULT", [](Softphone&) { return VirtualHeadsets::faults(); }},
    CandidateRow{"HEADSET",
                 [](Softphone& softphone) {
                     softphone.look_for_headsets();
                     return softphone.state().headsets.names();
                 }},
    CandidateRow{"INDICATOR", [](Softphone&) { return names_of(indicator_names()); }},
    CandidateRow{"KEY", [](Softphone&) { return names_of(key_names()); }},
    CandidateRow{"MODEL",
                 [](Softphone& softphone) {
                     Words names;
                     if (softphone.virtual_headsets().available())
                         std::ranges::transform(softphone.virtual_headsets().models(),
                                                std::back_inserter(names), &ModelListed::name);
                     return names;
                 }},
};

Words candidates(Softphone& softphone, const Words& alternatives) {
    Words all;
    for (const auto& alternative : alternatives) {
        const auto* row = std::ranges::find(candidate_rows, alternative, &CandidateRow::word);
        if (row != candidate_rows.end())
            std::ranges::copy(row->candidates(softphone), std::back_inserter(all));
        else if (Grammar::stands_for_itself(alternative))
            all.push_back(alternative);
    }
    return all;
}

}  // namespace

std::span<const Command> commands() {
    return table;
}

void run_command(Softphone& softphone, const Words& words) {
    const Command& command = find_command(words.front());
    const Words arguments(words.begin() + 1, words.end());
    if (!Grammar(command.arguments).accepts(arguments))
        throw CommandError("usage: " + usage(command));
    command.run(softphone, arguments);
}

Words complete(Softphone& softphone, const Words& words) {
    if (words.empty())
        return candidates(softphone, {"COMMAND"});
    const auto* command = std::ranges::find(table, words.front(), &Command::name);
    if (command == table.end())
        return {};
    if (command->run != expect || words.size() == 1)
        return candidates(softphone, Grammar(command->arguments).alternatives(words.size() - 1));
    const auto condition = std::ranges::find(condition_help(), words[1], &ConditionHelp::name);
    if (condition == condition_help().end())
        return {};
    return candidates(softphone, Grammar(condition->arguments).alternatives(words.size() - 2));
}

}  // namespace softphone
