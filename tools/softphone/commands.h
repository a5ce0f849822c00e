// The commands of the prompt and of scripts.
#pragma once

#include <span>

#include "tools/softphone/text.h"

namespace softphone {

class Softphone;

struct Command {
    const char* name;
    const char* arguments;  ///< as Grammar reads them
    const char* summary;    ///< one line
    const char* help;       ///< what there is to know besides
    void (*run)(Softphone& softphone, const Words& arguments);
};

/// Every command, by topic.
std::span<const Command> commands();

/// Carries a command out; throws CommandError. `words` is not empty.
void run_command(Softphone& softphone, const Words& words);

/// The words that may come next, after `words`, at the prompt.
Words complete(Softphone& softphone, const Words& words);

}  // namespace softphone
