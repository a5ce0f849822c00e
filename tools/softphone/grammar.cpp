#include "tools/softphone/grammar.h"

#include <algorithm>
#include <cctype>

namespace softphone {
Grammar::Grammar(std::string_view description) {
    std::ptrdiff_t depth = 0;
    for (std::string word : split_words(description)) {
        Slot slot;
        depth += std::ranges::count(word, '[');
        slot.optional = depth > 0;
        depth -= std::ranges::count(word, ']');
        slot.repeats = word.find("...") != std::string::npos;
        std::erase_if(word, [](char c) { return c == '[' || c == ']' || c == '.'; });
        std::ranges::replace(word, '|', ' ');
        slot.alternatives = split_words(word);
        slots_.push_back(slot);
    }
}

bool Grammar::stands_for_itself(std::string_view alternative) {
    return std::islower(static_cast<unsigned char>(alternative.front())) != 0;
}

bool Grammar::accepts(std::span<const std::string> words) const {
    const bool open_ended = std::ranges::any_of(slots_, &Slot::repeats);
    if (words.size() < required(0, slots_.size()) || (!open_ended && words.size() > slots_.size()))
        return false;
    for (std::size_t position = 0; position < words.size(); ++position) {
        const Words allowed = alternatives(position, words.size() - position - 1);
        if (std::ranges::all_of(allowed, stands_for_itself) &&
            std::ranges::count(allowed, words[position]) == 0)
            return false;
    }
    return true;
}

Words Grammar::alternatives(std::size_t position) const {
    return alternatives(position, slots_.size());
}

Words Grammar::alternatives(std::size_t position, std::size_t words_after) const {
    Words all;
    for (std::size_t slot = 0; slot < slots_.size(); ++slot) {
        const bool repeated = slots_[slot].repeats && position > slot;
        const bool reached = required(0, slot) <= position && position <= slot;
        if ((repeated || reached) && required(slot + 1, slots_.size()) <= words_after)
            all.insert(all.end(), slots_[slot].alternatives.begin(), slots_[slot].alternatives.end());
    }
    return all;
}

/// How many of these slots must be filled.
std::size_t Grammar::required(std::size_t first, std::size_t last) const {
    const auto slots = std::span(slots_).subspan(first, last - first);
    return static_cast<std::size_t>(
        std::ranges::count_if(slots, [](const Slot& slot) { return !slot.optional; }));
}

}  // namespace softphone
