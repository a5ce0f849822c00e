#include "tools/softphone/display.h"

#include <array>
#include <cstdio>

namespace softphone {
namespace {

// Select Graphic Rendition (ECMA-48, 8.3.117), one parameter per colour in the order of the enumeration.
constexpr std::array renditions{"0", "1", "2", "31", "32", "33", "34", "35", "36"};

void write_line(std::FILE* stream, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fputc('\n', stream);
    // Whoever reads the other end of a pipe waits for this line.
    std::fflush(stream);
}

}  // namespace

std::string Style::paint(Colour colour, std::string_view text) const {
    if (!coloured_ || colour == Colour::none)
        return std::string(text);
    return std::string("\x1b[") + renditions.at(static_cast<std::size_t>(colour)) + "m" + std::string(text) +
           "\x1b[0m";
}

void PlainDisplay::line(std::string_view text) {
    write_line(stdout, text);
}

void PlainDisplay::error(std::string_view text) {
    write_line(stderr, text);
}

}  // namespace softphone
