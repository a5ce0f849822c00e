// The command line of the program.
#pragma once

#include <optional>
#include <string>
#include <variant>

namespace softphone {

struct Options {
    std::string library;   ///< path or name of the plug-in library
    std::string headsets;  ///< path or name of a library of virtual headsets, empty for the plug-in's own
    std::optional<std::string> script;
    bool json = false;
    bool log = false;
    bool plain = false;
    bool narrate = false;
};

/// The options; or the exit status of a program that has said all there is to say: its help, its version, or
/// what is wrong with its command line.
std::variant<Options, int> parse_options(int argc, const char* const* argv);

}  // namespace softphone
