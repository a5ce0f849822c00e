// Commands and conditions describe their arguments by a line of text, such as "MODEL [SERIAL] [as NAME]". The
// user reads it as help; how many words there may be and what the Tab key offers is taken from the same text.
//
// WORD in capitals stands for something, word in small letters for itself, `a|b` for one of them, `[...]` may
// be left out, `...` at the end of a word may be repeated.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/softphone/text.h"

namespace softphone {

class Grammar {
  public:
    explicit Grammar(std::string_view description);

    /// True when these words are as many as there may be, and every one that stands for itself is one of its
    /// kind.
    bool accepts(std::span<const std::string> words) const;

    /// What may stand at this position (0: the first argument), optional words in front of it being there or
    /// not.
    Words alternatives(std::size_t position) const;

    /// True for a word in small letters.
    static bool stands_for_itself(std::string_view alternative);

  private:
    struct Slot {
        Words alternatives;
        bool optional = false;
        bool repeats = false;
    };
    Words alternatives(std::size_t position, std::size_t words_after) const;
    std::size_t required(std::size_t first, std::size_t last) const;

    std::vector<Slot> slots_;
};

}  // namespace softphone
