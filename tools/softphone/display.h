// Where text appears.
#pragma once

#include <string_view>

#include "tools/softphone/state.h"

namespace softphone {

enum class Colour { none, bold, dim, red, green, yellow, blue, magenta, cyan };

/// Colours text with ANSI sequences, or leaves it as it is.
class Style {
  public:
    explicit Style(bool coloured = false) : coloured_(coloured) {}
    std::string paint(Colour colour, std::string_view text) const;

  private:
    bool coloured_;
};

/// Takes finished lines. The plain one writes them to standard output.
class Display {
  public:
    virtual ~Display() = default;

    virtual void line(std::string_view text) = 0;
    /// A line about something that went wrong.
    virtual void error(std::string_view text) = 0;
    /// The state may have changed.
    virtual void refresh(const State& state) = 0;
};

class PlainDisplay final : public Display {
  public:
    /// Throws tools::WriteError.
    void line(std::string_view text) override;
    void error(std::string_view text) override;
    void refresh(const State& /*state*/) override {}
};

}  // namespace softphone
