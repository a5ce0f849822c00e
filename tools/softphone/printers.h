// How an event reads: as a line for people, as a step of a story, as a JSON object.
#pragma once

#include <memory>

#include "tools/softphone/display.h"
#include "tools/softphone/event.h"

namespace softphone {

class Printer {
  public:
    virtual ~Printer() = default;
    virtual void print(const Event& event, const HeadsetList& headsets) = 0;
};

/// One line per event, its kind in front.
std::unique_ptr<Printer> make_plain_printer(Display& display, Style style);

/// A story: each command as a step, and under it what went from whom to whom.
std::unique_ptr<Printer> make_story_printer(Display& display, Style style);

/// One JSON object per event and line; its member "event" says which.
std::unique_ptr<Printer> make_json_printer(Display& display);

}  // namespace softphone
