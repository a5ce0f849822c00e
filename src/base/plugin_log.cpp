#include "base/plugin_log.h"

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "orvex/headset_plugin.h"

namespace {

constexpr int log_level = 2;
std::atomic<InvalidParameterHandler> g_invalid_parameter_handler{nullptr};

}  // namespace

int plugin_log(const char* format, ...) {
    const auto logger = getPluginLogger();
    if (!logger) {
        return 0;
    }
    std::array<char, longest_log_line + 1> line;
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line.data(), line.size(), format, arguments);
    va_end(arguments);
    if (length < 0 || length > longest_log_line) {
        if (const auto handler = g_invalid_parameter_handler.load()) {
            handler();
        }
        return 0;
    }
    logger->log(std::string(line.data()), log_level);
    return 0;
}

void set_invalid_parameter_handler(InvalidParameterHandler handler) {
    g_invalid_parameter_handler = handler;
}
