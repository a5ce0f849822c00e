#include <clocale>
#include <cstdlib>
#include <exception>
#include <unistd.h>

#include "tools/common/output.h"
#include "tools/softphone/commands.h"
#include "tools/softphone/options.h"
#include "tools/softphone/softphone.h"
#include "tools/softphone/terminal.h"

namespace {

using namespace softphone;

bool colour_wanted() {
    const char* no_colour = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) != 0 && (!no_colour || !*no_colour);
}

/// A terminal that understands cursor control.
bool has_screen() {
    const char* type = std::getenv("TERM");
    return type && *type && std::string_view(type) != "dumb";
}

std::unique_ptr<Printer> make_printer(const Options& options, Display& display, Style style) {
    if (options.json)
        return make_json_printer(display);
    return options.narrate ? make_story_printer(display, style) : make_plain_printer(display, style);
}

int run_lines(const Options& options, const PluginLibrary& library, Signals& signals, Style style,
              Input& input) {
    PlainDisplay display;
    const auto printer = make_printer(options, display, style);
    return Softphone(library, signals, display, *printer, options.log).run(input);
}

int run_terminal(const Options& options, const PluginLibrary& library, Signals& signals, Style style) {
    Softphone* completing = nullptr;
    Terminal terminal({options.library, !options.plain && has_screen(), style}, [&](const Words& before) {
        return completing ? complete(*completing, before) : Words{};
    });
    const auto printer = make_printer(options, terminal, style);
    Softphone client(library, signals, terminal, *printer, options.log);
    completing = &client;
    return client.run(terminal);
}

int run(const Options& options) {
    const bool interactive =
        !options.script && !options.json && isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
    // Opened first: the number of a standard input that is closed goes to the next file that is opened.
    std::unique_ptr<Input> input;
    if (!interactive)
        input = options.script ? open_script(*options.script) : open_standard_input();
    // Before the library is loaded: the threads that it starts inherit what is blocked.
    Signals signals(interactive);
    const PluginLibrary library(options.library, options.headsets);
    const Style style(colour_wanted());
    return interactive ? run_terminal(options, library, signals, style)
                       : run_lines(options, library, signals, style, *input);
}

int fail(int status, const std::exception& error) {
    return tools::fail("softphone", status, error);
}

}  // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_CTYPE, "");
    try {
        const auto parsed = parse_options(argc, argv);
        if (const int* status = std::get_if<int>(&parsed))
            return *status;
        return run(std::get<Options>(parsed));
    } catch (const LibraryError& error) {
        return fail(exit_no_library, error);
    } catch (const CommandError& error) {
        return fail(exit_bad_command, error);
    } catch (const std::exception& error) {
        return fail(exit_system_error, error);
    }
}
