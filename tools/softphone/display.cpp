#include "tools/softphone/display.h"

#include <array>
#include <cstdio>

#include "tools/common/output.h"

namespace softphone {
namespace {

// Select Graphic Rendition (ECMA-48, 8.3.117), one parameter per colour in the order of the enumeration.
constexpr std::array renditions{"0", "1", "2", "31", "32", "33", "34", "35", "36"};

}  // namespace

std::string Style::paint(Colour colour, std::string_view text) const {
    if (!coloured_ || colour == Colour::none)
        return std::string(text);
    return std::string("\x1b[") + renditions.at(static_cast<std::size_t>(colour)) + "m" + std::string(text) +
           "\x1b[0m";
}

void PlainDisplay::line(std::string_view text) {
    tools::write_output(text);
    tools::write_output("\n");
    // Whoever reads the other end of a pipe waits for this line.
    tools::flush_output();
}

void PlainDisplay::error(std::string_view text) {
    std::fprintf(stderr, "%.*s\n", static_cast<int>(text.size()), text.data());
}

}  // namespace softphone
