#include "tools/headset/options.h"

#include <CLI/CLI.hpp>

#include "tools/headset/errors.h"

namespace headset {
namespace {

using platform::HidP_Feature;
using platform::HidP_Input;
using platform::HidP_Output;

constexpr const char* description =
    "headset: finds out why a headset does not work, shows what it sends, and tells what its report\n"
    "descriptor says and what the plug-in makes of it.";

constexpr const char* footer =
    "A descriptor is given as a file, or as hexadecimal text where no file has that name; `-` is standard\n"
    "input. The content tells which form it has:\n"
    "  hexadecimal text   pairs of digits, with or without blanks, commas, line breaks and 0x; # begins a\n"
    "                     comment\n"
    "  binary             the bytes themselves, as in /sys/class/hidraw/hidraw0/device/report_descriptor\n"
    "  hid-recorder       a recording: lines N:, P:, I:, R: and E:\n"
    "  usbhid-dump        its output: a header line with :DESCRIPTOR, then lines of bytes\n"
    "Of several devices or interfaces in one file it is the first.\n"
    "\n"
    "Exit status:\n"
    "  0   all went well\n"
    "  1   a descriptor or report is refused, or lacks what is asked for; of doctor: calls will not work\n"
    "  2   the command line is wrong, or a file cannot be read\n"
    "  71  the system refused memory or files, or has no hidapi\n"
    "\n"
    "`headset COMMAND --help` explains a command.";

/// What a command's help says.
struct CommandHelp {
    const char* name;
    const char* summary;
    const char* text;
};

constexpr CommandHelp caps_help = {
    "caps", "show the capabilities of a descriptor",
    "For each top-level collection: its usage, the lengths of its reports with the id, and a line per\n"
    "capability with direction, report id, place, bits, kind, usage, a value's logical limits, and flags. A\n"
    "place is the byte in the report, the report id being byte 0, and the bit in that byte.\n"
    "\n"
    "With `-` standard input holds one descriptor in hexadecimal per line, and each is answered at once, with\n"
    "a JSON object on one line; one that is refused with\n"
    "  {\"error\":{\"offset\":12,\"item\":149,\"text\":\"...\"}}\n"
    "where offset is the place of the item's first byte, and item that byte; one that is not hexadecimal with\n"
    "  {\"error\":{\"text\":\"...\"}}\n"
    "The exit status is 0 when every line was answered.\n"
    "\n"
    "Examples:\n"
    "  headset caps /sys/class/hidraw/hidraw0/device/report_descriptor\n"
    "  headset caps --json \"05 0B 09 05 A1 01 09 2F 15 00 25 01 75 01 95 01 81 06 C0\"\n"
    "  headset caps - < descriptors.txt"};

constexpr CommandHelp decode_help = {
    "decode", "show what reports hold",
    "Shows the buttons that are set, and the values, raw and scaled to the physical limits. A report goes to\n"
    "the collection that has its id.\n"
    "\n"
    "A REPORT is hexadecimal text, the id byte first where the descriptor has ids; without ids the leading 0\n"
    "may be left out. It is as long as the reports of its id; more bytes may follow, up to the length of the\n"
    "collection's longest report.\n"
    "\n"
    "Examples:\n"
    "  headset decode jabra.hid \"02 08 00\" \"02 00 00\"\n"
    "  headset decode --output jabra.hid 020100"};

constexpr CommandHelp encode_help = {
    "encode", "make reports that set usages",
    "Makes the reports from empty ones and prints their bytes, the id first: one report per line, in the order\n"
    "of the ids.\n"
    "\n"
    "PAGE and USAGE are hexadecimal, VALUE is decimal, or hexadecimal with 0x; without it, it is 1. A button\n"
    "with 0 is left clear, or cleared if it was set before. A usage that stands in several reports is set in\n"
    "the first.\n"
    "\n"
    "Examples:\n"
    "  headset encode jabra.hid 08:17 08:09      the off-hook and the mute indicator lit\n"
    "  headset encode --input jabra.hid 0B:2F    the mute key pressed"};

constexpr CommandHelp explain_help = {
    "explain", "tell what the plug-in can do with a headset",
    "Tells which collection the plug-in opens, which indicators it lights with which reports, which keys reach\n"
    "the client, what is missing, and what is there but not used.\n"
    "\n"
    "A virtual headset is made from the descriptor, opened, lit and pressed by the plug-in's own functions;\n"
    "what they did is told. A recording of hid-recorder tells the vendor, which decides whether the plug-in\n"
    "has a driver; a headset that does not tell it counts as one that the plug-in has a driver for.\n"
    "\n"
    "PATH is a node, or a node and a collection, as \"headset list\" shows them; the whole node is explained. The\n"
    "device itself is left alone: whether it may be opened does not matter.\n"
    "\n"
    "Examples:\n"
    "  headset explain /dev/hidraw3\n"
    "  headset explain jabra.hid"};

constexpr CommandHelp doctor_help = {
    "doctor", "find out why calls do not work, and what to do about it",
    "Looks at the machine, and at every device that has a collection of the Telephony page or is a sound card as\n"
    "well. Each finding says what is wrong, and names a remedy:\n"
    "  error     calls do not work\n"
    "  warning   calls work, but not all that belongs to them\n"
    "  note      what else is to be known\n"
    "Run it as the user who makes the calls, where he makes them.\n"
    "\n"
    "Exit status: 0 when calls will work with one headset at least, 1 when with none.\n"
    "\n"
    "Example:\n"
    "  headset doctor"};

constexpr CommandHelp list_help = {
    "list", "list the HID interfaces as the plug-in sees them",
    "For each device that has a hidraw node: its names, ids and serial number, and whether this user may open it.\n"
    "For each of its interfaces, which are its top-level collections: the path, the usage, the lengths of its\n"
    "reports with the id, and whether the plug-in lets it in, or which rule keeps it out:\n"
    "  own headset   the client serves the headsets of its own maker itself\n"
    "  usage page    only the Telephony and the Consumer page count\n"
    "  serial        the device states no serial number\n"
    "\n"
    "Examples:\n"
    "  headset list\n"
    "  headset list --json | jq -r 'select(.admitted) | .path'"};

constexpr CommandHelp monitor_help = {
    "monitor", "show the reports of a headset as they come",
    "Shows each input report with the time in seconds, its bytes, and the buttons and values in it, until Ctrl-C\n"
    "or until the headset is unplugged. A headset is opened with all of its interfaces, unless a PATH names one.\n"
    "\n"
    "Output reports are shown when they are its own, those of --set: the kernel shows no program the reports that\n"
    "others send. --set takes usages as \"headset encode\" does; when the monitor ends, it sets them to 0.\n"
    "\n"
    "Exit status: 0 after Ctrl-C, 1 when the headset is gone, or cannot be opened.\n"
    "\n"
    "Examples:\n"
    "  headset monitor\n"
    "  headset monitor /dev/hidraw3:1 --set 08:17 08:09    with the off-hook and the mute indicator lit"};

constexpr CommandHelp udev_rules_help = {
    "udev-rules", "print the udev rules that let people open their headsets",
    "Prints a file of udev rules for devices that are sound cards as well, whoever made them, and for those of vendors\n"
    "that make headsets and no keyboards. With it whoever sits at the machine may open them; without it only root may.\n"
    "The headset is to be plugged in anew then.\n"
    "\n"
    "Example:\n"
    "  headset udev-rules | sudo tee /etc/udev/rules.d/70-orvex-headset.rules\n"
    "  sudo udevadm control --reload"};

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
    void add_directions(CLI::App* command, platform::HIDP_REPORT_TYPE unless_said);

    Options options_;
    CLI::App app_{description, "headset"};
};

CommandLine::CommandLine() {
    app_.footer(footer);
    app_.require_subcommand(1);
    app_.set_version_flag("--version", "headset " HEADSET_VERSION);

    auto* const caps = add_descriptor_command(Command::caps, caps_help);
    add_json(caps,
             "one JSON object for the whole descriptor, under the names of the HidP_ functions' structures");

    auto* const decode = add_descriptor_command(Command::decode, decode_help);
    decode->add_option("REPORT", options_.arguments, "reports in hexadecimal")->required()->type_name(" ");
    add_json(decode, "one JSON object per report and line");
    add_directions(decode, HidP_Input);

    auto* const encode = add_descriptor_command(Command::encode, encode_help);
    encode->add_option("PAGE:USAGE[=VALUE]", options_.arguments, "usages to set")->required()->type_name(" ");
    add_json(encode, "one JSON object per report and line");
    add_directions(encode, HidP_Output);

    auto* const explain = add_command(Command::explain, explain_help);
    explain
        ->add_option(
            "PATH|FILE", options_.descriptor,
            "a device of the list, or a DESCRIPTOR: a file, hexadecimal text, or - for standard input")
        ->required()
        ->type_name(" ");

    auto* const doctor = add_command(Command::doctor, doctor_help);
    add_json(doctor, "one JSON object");

    auto* const list = add_command(Command::list, list_help);
    add_json(list, "one JSON object per interface and line");

    auto* const monitor = add_command(Command::monitor, monitor_help);
    monitor
        ->add_option("PATH|SERIAL", options_.device,
                     "a node, or a node and a collection, or a serial number; without it, the first headset")
        ->type_name(" ");
    monitor
        ->add_option("--set", options_.arguments,
                     "set usages, such as indicators, in output reports: PAGE:USAGE[=VALUE]")
        ->type_name(" ");
    add_json(monitor, "one JSON object per report and line");

    add_command(Command::udev_rules, udev_rules_help);
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

void CommandLine::add_directions(CLI::App* command, platform::HIDP_REPORT_TYPE unless_said) {
    std::vector<CLI::Option*> added;
    command->preparse_callback([this, unless_said](std::size_t) { options_.direction = unless_said; });
    for (const auto& option : direction_options) {
        const std::string end = option.direction == unless_said ? "; so it is unless another is named" : "";
        auto* const flag = command->add_flag_callback(
            option.name, [this, &option] { options_.direction = option.direction; }, option.help + end);
        for (auto* const other : added)
            flag->excludes(other);
        added.push_back(flag);
    }
}

std::variant<Options, int> CommandLine::parse(int argc, const char* const* argv) {
    try {
        app_.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app_.exit(error) == 0 ? exit_ok : exit_usage;
    }
    return options_;
}

}  // namespace

std::variant<Options, int> parse_options(int argc, const char* const* argv) {
    return CommandLine().parse(argc, argv);
}

}  // namespace headset
