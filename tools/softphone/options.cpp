#include "tools/softphone/options.h"

#include <CLI/CLI.hpp>

#include "tools/softphone/plugin_library.h"
#include "tools/softphone/softphone.h"

namespace softphone {
namespace {

constexpr const char* description =
    "softphone: a calling client for the console, which loads the headset plug-in as any client does.\n"
    "Commands come from a prompt, a script or standard input; `help` at the prompt shows them.";

constexpr const char* footer =
    "Exit status:\n"
    "  0    all went well\n"
    "  1    something that was expected did not happen\n"
    "  2    the command line or a line of a script is wrong, or cannot be carried out\n"
    "  3    the library cannot be loaded, or does not start\n"
    "  71   the system refused memory, threads or files\n"
    "  128+N  ended by signal N\n"
    "Environment:\n"
    "  NO_COLOR  no colour when it is set and not empty";

}  // namespace

std::variant<Options, int> parse_options(int argc, const char* const* argv) {
    Options options;
    options.library = virtual_library_path();
    bool real = false;
    CLI::App app(description, "softphone");
    app.footer(footer);
    app.add_option("--library", options.library, "the plug-in library to load")
        ->type_name("PATH")
        ->capture_default_str();
    app.add_flag("--real", real,
                 "load the product library, which works with the headsets that are plugged in")
        ->excludes(app.get_option("--library"));
    app.add_option("--headsets", options.headsets,
                   "a library of virtual headsets to plug beside the plug-in's")
        ->type_name("PATH");
    app.add_option("--script", options.script, "carry out the commands of a file, then end")
        ->type_name("FILE");
    app.add_flag("--json", options.json, "show every event as a JSON object on a line of its own");
    app.add_flag("--log", options.log, "show the plug-in's log lines as they come");
    app.add_flag("--plain", options.plain, "no panel on a terminal, lines only");
    app.add_flag("--narrate", options.narrate, "show a script as a story, step by step")
        ->excludes(app.get_option("--json"));
    app.set_version_flag("--version", "softphone " SOFTPHONE_VERSION);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? exit_ok : exit_bad_command;
    }
    if (real)
        options.library = product_library_path();
    return options;
}

}  // namespace softphone
