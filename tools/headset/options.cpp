#include "tools/headset/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <span>

#include "tools/common/output.h"
#include "tools/common/text.h"
#include "tools/headset/errors.h"

namespace headset {
namespace {

using platform::HidP_Feature;
using platform::HidP_Input;
using platform::HidP_Output;

constexpr const char* description =
    "headset: finds out why a USB headset does not work, and shows what it has and what it sends.";

constexpr const char* footer =
    "A DESCRIPTOR is a file, or hexadecimal text if no file has that name. `-` is standard input. The content\n"
    "of a file can have one of these forms:\n"
    "  hexadecimal text   pairs of digits. Spaces, commas, colons, line breaks and 0x are allowed; # begins a comment\n"
    "  binary             the bytes themselves, as in /sys/class/hidraw/hidraw0/device/report_descriptor\n"
    "  hid-recorder       a recording: lines N:, P:, I:, R: and E:\n"
    "  usbhid-dump        its output: a header line with :DESCRIPTOR, then lines of bytes\n"
    "If a file has several devices or interfaces, the first one is used.\n"
    "\n"
    "Exit status:\n"
    "  0   success\n"
    "  1   a descriptor or report is refused, or does not have what you asked for; doctor: calls will not work\n"
    "  2   the command line is wrong, or a file cannot be read\n"
    "  71  a system error: no memory, no hidapi, or the output cannot be written\n"
    "\n"
    "`headset COMMAND --help` explains a command.";

/// What a command's help says.
struct CommandHelp {
    const char* name;
    const char* summary;
    const char* text;
};

constexpr CommandHelp doctor_help = {
    "doctor", "find out why calls do not work, and what to do about it",
    "Checks the machine, and every device that has a collection of the Telephony page or is also a sound card.\n"
    "Each finding says what is wrong and what you can do about it:\n"
    "  error     calls do not work\n"
    "  warning   calls work, but a part of them does not\n"
    "  note      something else that you should know\n"
    "At the end it says which keys and indicators of each headset work in a call, and which do not.\n"
    "\n"
    "Run it as the user who makes the calls, in the same session or container as the client.\n"
    "\n"
    "Exit status: 0 if calls work with at least one headset, 1 if they work with none.\n"
    "\n"
    "Example:\n"
    "  headset doctor"};

constexpr CommandHelp list_help = {
    "list", "list the HID interfaces as the plug-in sees them",
    "For each device that has a hidraw node: its names, ids and serial number, and whether you may open it. For\n"
    "each of its interfaces, which are its top-level collections: the path, the usage, the lengths of the reports\n"
    "with the id, and whether the plug-in accepts the interface. It ignores an interface by these rules:\n"
    "  own headset   the client handles the headsets of its own maker itself\n"
    "  usage page    the plug-in uses the Telephony and the Consumer page only\n"
    "  serial        the device has no serial number\n"
    "\n"
    "Examples:\n"
    "  headset list\n"
    "  headset list --json | jq -r 'select(.admitted) | .path'"};

constexpr CommandHelp explain_help = {
    "explain", "show what works with a headset, and what does not",
    "Shows which keys and indicators of the headset work in a call, and which do not. Then the details: which\n"
    "collection the plug-in opens, which reports light the indicators, which keys reach the client, what is\n"
    "missing, and which controls the plug-in does not use.\n"
    "\n"
    "The command makes a virtual headset from the descriptor, and runs the plug-in's own functions on it. Your\n"
    "headset is not opened, so you do not need permission. The vendor decides whether the plug-in has a driver. A\n"
    "descriptor without a vendor is treated as one of a vendor with a driver.\n"
    "\n"
    "PATH is a node, or a node and a collection, as \"headset list\" shows them. SERIAL is a serial number. If a\n"
    "file has the same name, the file is used.\n"
    "\n"
    "Examples:\n"
    "  headset explain /dev/hidraw3\n"
    "  headset explain 50C2ED83A1F4\n"
    "  headset explain jabra.hid"};

constexpr CommandHelp monitor_help = {
    "monitor", "show the reports of a headset as they arrive",
    "Shows each input report: the time in seconds, the bytes, and the buttons and values in it. It ends when you\n"
    "press Ctrl-C or unplug the headset. Without a collection in PATH it opens all interfaces of the headset.\n"
    "\n"
    "You see the output reports of --set, but not those of other programs: the kernel does not show them. --set\n"
    "takes usages as \"headset encode\" does, and sets them to 0 when the monitor ends.\n"
    "\n"
    "Exit status: 0 after Ctrl-C, 1 if the headset is unplugged or cannot be opened.\n"
    "\n"
    "Examples:\n"
    "  headset monitor\n"
    "  headset monitor /dev/hidraw3:1 --set Off-Hook Mute    with the off-hook and the mute indicator lit"};

constexpr CommandHelp udev_rules_help = {
    "udev-rules", "print the udev rules that let people open their headsets",
    "Prints a file of udev rules for devices that are also sound cards, of any vendor, and for all devices of\n"
    "vendors that make headsets and no keyboards. With these rules, the person who sits at the machine may open\n"
    "these devices. Without them, only root may. After you install the rules, unplug the headset and plug it in\n"
    "again.\n"
    "\n"
    "Example:\n"
    "  headset udev-rules | sudo tee /etc/udev/rules.d/70-orvex-headset.rules\n"
    "  sudo udevadm control --reload"};

constexpr CommandHelp caps_help = {
    "caps", "show the capabilities of a descriptor",
    "For each top-level collection: its usage, the lengths of its reports with the id, and a line per capability.\n"
    "A line has the direction, report id, place, bits, kind, usage, logical limits of a value, and flags. A place\n"
    "is the byte in the report, where byte 0 is the report id, and the bit in that byte.\n"
    "\n"
    "With `-`, standard input has one descriptor in hexadecimal per line. Each line is answered at once with a\n"
    "JSON object on one line. If a descriptor is refused, the answer is\n"
    "  {\"error\":{\"offset\":12,\"item\":149,\"text\":\"...\"}}\n"
    "where offset is the position of the item's first byte, and item is that byte. If a line is not hexadecimal,\n"
    "or is too long, the answer is\n"
    "  {\"error\":{\"text\":\"...\"}}\n"
    "The exit status is 0 if every line was answered.\n"
    "\n"
    "Examples:\n"
    "  headset caps /sys/class/hidraw/hidraw0/device/report_descriptor\n"
    "  headset caps --json \"05 0B 09 05 A1 01 09 2F 15 00 25 01 75 01 95 01 81 06 C0\"\n"
    "  headset caps - < descriptors.txt"};

constexpr CommandHelp decode_help = {
    "decode", "show what reports contain",
    "Shows the buttons that are set, and the values, raw and scaled to the physical limits. The report id selects\n"
    "the collection.\n"
    "\n"
    "A REPORT is hexadecimal text. It begins with the id byte if the descriptor has ids; without ids you can omit\n"
    "the leading 0. It is as long as the reports of its id. More bytes may follow, up to the length of the\n"
    "collection's longest report.\n"
    "\n"
    "Examples:\n"
    "  headset decode jabra.hid \"02 08 00\" \"02 00 00\"\n"
    "  headset decode --output jabra.hid 020100"};

constexpr CommandHelp encode_help = {
    "encode", "make reports that set usages",
    "Makes reports in which only these usages are set, and prints their bytes, the id first: one report per line,\n"
    "in the order of the ids.\n"
    "\n"
    "USAGE is PAGE:USAGE in hexadecimal, or a name as \"headset decode\" prints it, such as \"Phone Mute\". VALUE is\n"
    "decimal, or hexadecimal with 0x; the default is 1. For a button, 0 clears it. If a usage is in several\n"
    "reports, it is set in the first one.\n"
    "\n"
    "Examples:\n"
    "  headset encode jabra.hid Off-Hook 08:09             the off-hook and the mute indicator lit\n"
    "  headset encode --input jabra.hid \"Phone Mute\"       the mute key pressed"};

struct DirectionOption {
    const char* name;
    platform::HIDP_REPORT_TYPE direction;
    const char* help;
};
constexpr DirectionOption direction_options[] = {
    {"--input", HidP_Input, "input reports, from the headset"},
    {"--output", HidP_Output, "output reports, to the headset"},
    {"--feature", HidP_Feature, "feature reports"},
};

class CommandLine {
  public:
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    std::variant<Options, int> parse(int argc, const char* const* argv);

  private:
    CLI::App* add_command(Command command, const CommandHelp& help);
    CLI::App* add_descriptor_command(Command command, const CommandHelp& help);
    void add_json(CLI::App* command, const char* text);
    void add_directions(CLI::App* command, platform::HIDP_REPORT_TYPE preset);
    void check_command(int argc, const char* const* argv) const;

    Options options_;
    CLI::App app_{description, "headset"};
};

CommandLine::CommandLine() {
    app_.footer(footer);
    app_.require_subcommand(1);
    app_.set_version_flag("--version", "headset " HEADSET_VERSION);

    auto* const doctor = add_command(Command::doctor, doctor_help);
    add_json(doctor, "one JSON object");

    auto* const list = add_command(Command::list, list_help);
    add_json(list, "one JSON object per interface and line");

    auto* const explain = add_command(Command::explain, explain_help);
    explain
        ->add_option("PATH|SERIAL|DESCRIPTOR", options_.descriptor,
                     "a device of the list, or a file, hexadecimal text, or - for standard input")
        ->required()
        ->type_name(" ");

    auto* const monitor = add_command(Command::monitor, monitor_help);
    monitor
        ->add_option("PATH|SERIAL", options_.device,
                     "a node, a node and a collection, or a serial number; the default is the first headset")
        ->type_name(" ");
    monitor
        ->add_option("--set", options_.arguments,
                     "set usages, such as indicators, in output reports: USAGE[=VALUE]")
        ->type_name(" ");
    add_json(monitor, "one JSON object per report and line");

    add_command(Command::udev_rules, udev_rules_help);

    auto* const caps = add_descriptor_command(Command::caps, caps_help);
    add_json(caps, "one JSON object for the descriptor, with the names of the HidP_ functions' structures");

    auto* const decode = add_descriptor_command(Command::decode, decode_help);
    decode->add_option("REPORT", options_.arguments, "reports in hexadecimal")->required()->type_name(" ");
    add_json(decode, "one JSON object per report and line");
    add_directions(decode, HidP_Input);

    auto* const encode = add_descriptor_command(Command::encode, encode_help);
    encode->add_option("USAGE[=VALUE]", options_.arguments, "usages to set")->required()->type_name(" ");
    add_json(encode, "one JSON object per report and line");
    add_directions(encode, HidP_Output);
}

CLI::App* CommandLine::add_command(Command command, const CommandHelp& help) {
    auto* const added = app_.add_subcommand(help.name, help.summary);
    added->footer(help.text);
    added->callback([this, command] { options_.command = command; });
    return added;
}

CLI::App* CommandLine::add_descriptor_command(Command command, const CommandHelp& help) {
    auto* const added = add_command(command, help);
    added->add_option("DESCRIPTOR", options_.descriptor, "a file, hexadecimal text, or - for standard input")
        ->required()
        ->type_name(" ");
    return added;
}

void CommandLine::add_json(CLI::App* command, const char* text) {
    command->add_flag("--json", options_.json, text);
}

void CommandLine::add_directions(CLI::App* command, platform::HIDP_REPORT_TYPE preset) {
    std::vector<CLI::Option*> added;
    command->preparse_callback([this, preset](std::size_t) { options_.direction = preset; });
    for (const auto& option : direction_options) {
        const std::string end = option.direction == preset ? " (the default)" : "";
        auto* const flag = command->add_flag_callback(
            option.name, [this, &option] { options_.direction = option.direction; }, option.help + end);
        for (auto* const other : added)
            flag->excludes(other);
        added.push_back(flag);
    }
}

/// Throws UsageError for an unknown command. No option before the command takes a value, so it is
/// the first word that is not an option.
void CommandLine::check_command(int argc, const char* const* argv) const {
    const std::span words(argv + 1, argv + std::max(argc, 1));
    const auto word =
        std::ranges::find_if(words, [](std::string_view text) { return !text.starts_with('-'); });
    std::vector<std::string> names;
    for (const auto* const command : app_.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    if (word == words.end() || std::ranges::count(names, *word) != 0)
        return;
    const auto near = tools::nearest(*word, names);
    throw UsageError("there is no command " + tools::quoted(*word) +
                     (near ? "; did you mean " + tools::quoted(*near) + "?"
                           : "; the commands are " + tools::join(names, std::identity{})));
}

std::variant<Options, int> CommandLine::parse(int argc, const char* const* argv) {
    try {
        app_.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0)
            check_command(argc, argv);
        return tools::show(app_, error, exit_usage);
    }
    return options_;
}

}  // namespace

std::variant<Options, int> parse_options(int argc, const char* const* argv) {
    return CommandLine().parse(argc, argv);
}

}  // namespace headset
