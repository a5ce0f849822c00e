#include "tests/docs/words.h"

#include <algorithm>
#include <iterator>

#include "tests/docs/markdown_table.h"
#include "tools/common/text.h"

namespace docs {

using namespace headset_plugin;

std::string key_words(std::int32_t code) {
    const auto* const named = std::ranges::find(key_names, code, &KeyName::code);
    return named == std::end(key_names) ? "no key" : named->words;
}

std::string state_words(std::uint32_t state) {
    struct Flag {
        std::uint32_t bit;
        const char* word;
    };
    constexpr Flag flags[] = {
        {HEADSET_STATE_ALERTING, "ALERTING"}, {HEADSET_STATE_INUSE, "INUSE"}, {HEADSET_STATE_HOLD, "HOLD"}};
    Cells words;
    for (const auto& [bit, word] : flags) {
        if ((state & bit) != 0) {
            words.emplace_back(word);
        }
    }
    return words.empty() ? "IDLE" : joined(words, " + ");
}

std::string report_words(std::span<const std::uint8_t> report) {
    return report.empty() ? nothing : code(tools::to_hex(report));
}

}  // namespace docs
