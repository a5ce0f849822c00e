#include "tools/softphone/options.h"

#include <CLI/CLI.hpp>

#include "tools/common/output.h"
#include "tools/softphone/plugin_library.h"
#include "tools/softphone/softphone.h"

namespace softphone {
namespace {

constexpr const char* description =
    "softphone: a calling client for the console. It loads the headset plug-in as any client does.\n"
    "You type commands at a prompt, or put them into a script or standard input. `help` shows the commands.";

constexpr const char* footer =
    "Exit status:\n"
    "  0      success\n"
    "  1      an `expect` failed\n"
    "  2      the command line is wrong, or a line of a script is wrong or cannot be run\n"
    "  3      the library cannot be loaded, or does not start\n"
    "  71     a system error: no memory, no threads, or the output cannot be written\n"
    "  128+N  ended by signal N\n"
    "Environment:\n"
    "  NO_COLOR        no colour if it is set and not empty\n"
    "  XDG_STATE_HOME  the folder for the history of the prompt, softphone/history; the default is\n"
    "                  ~/.local/state";

}  // namespace

std::variant<Options, int> parse_options(int argc, const char* const* argv) {
    Options options;
    options.library = virtual_library_path();
    bool real = false;
    CLI::App app(description, "softphone");
    app.footer(footer);
    app.add_option("--library", options.library,
                   "the plug-in library to load; without a slash, the current folder is searched first")
        ->type_name("PATH")
        ->capture_default_str();
    app.add_flag("--real", real, "load the product library, which uses the headsets that are plugged in")
        ->excludes(app.get_option("--library"));
    app.add_option("--headsets", options.headsets,
                   "a library of virtual headsets, for a plug-in that has none")
        ->type_name("PATH");
    app.add_option("--script", options.script, "run the commands of a file, then end")->type_name("FILE");
    app.add_flag("--json", options.json, "print every event as a JSON object on one line");
    app.add_flag("--log", options.log, "print the plug-in's log lines as they arrive");
    app.add_flag("--plain", options.plain, "no panel on a terminal, only lines");
    app.add_flag("--narrate", options.narrate, "print a script as a story, step by step")
        ->excludes(app.get_option("--json"));
    app.set_version_flag("--version", "softphone " SOFTPHONE_VERSION);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return tools::show(app, error, exit_bad_command);
    }
    if (real)
        options.library = product_library_path();
    else if (app.count("--library") > 0)
        options.library = given_library_path(options.library);
    options.headsets = given_library_path(options.headsets);
    return options;
}

}  // namespace softphone
