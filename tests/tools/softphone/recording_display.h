// A display that keeps its lines.
#pragma once

#include <string>
#include <vector>

#include "tools/softphone/display.h"

namespace softphone {

class RecordingDisplay final : public Display {
  public:
    void line(std::string_view text) override { lines.emplace_back(text); }
    void error(std::string_view text) override { errors.emplace_back(text); }
    void refresh(const State& /*state*/) override {}

    std::vector<std::string> lines;
    std::vector<std::string> errors;
};

}  // namespace softphone
