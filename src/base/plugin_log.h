// The one road to the host's log. Every layer uses it.
#pragma once

#include <memory>

namespace plugin_control {
class IPluginLogger;
}

/// The longest line that reaches the host, in bytes, its newline included.
inline constexpr int longest_log_line = 1023;

/// Formats one line, printf-style, and hands it to the host's logger with level 2. The first conversion is
/// the calling function's qualified name. Does nothing, and allocates nothing, without a logger. A line
/// longer than `longest_log_line` is not delivered: it is reported to the invalid-parameter handler instead.
/// What the logger throws leaves this function. Takes no lock. Always returns 0. Thread: any.
int plugin_log(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// The host's logger, empty while there is no plug-in or the host has let go of it. Defined by the plug-in
/// boundary.
std::shared_ptr<plugin_control::IPluginLogger> getPluginLogger();

/// What happens to a line that does not fit, once per line. Process-wide; null, the initial value, ignores
/// it.
using InvalidParameterHandler = void (*)();
void set_invalid_parameter_handler(InvalidParameterHandler handler);

/// A bool as log lines print it.
constexpr const char* true_or_false(bool value) {
    return value ? "true" : "false";
}
