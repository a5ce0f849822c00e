#include "tools/softphone/hid_names.h"

#include <algorithm>
#include <array>

#include "tools/softphone/text.h"

namespace softphone {
namespace {

// Usage pages (HID Usage Tables, section 3).
constexpr std::uint16_t led_page = 0x08;
constexpr std::uint16_t telephony_page = 0x0B;
constexpr std::uint16_t consumer_page = 0x0C;

// HID Usage Tables, LED page; the ringer is an output of the telephony page.
constexpr std::array indicators{
    NamedUsage{"do-not-disturb", {led_page, 0x08}},  NamedUsage{"mute", {led_page, 0x09}},
    NamedUsage{"off-hook", {led_page, 0x17}},        NamedUsage{"ring", {led_page, 0x18}},
    NamedUsage{"message-waiting", {led_page, 0x19}}, NamedUsage{"speaker", {led_page, 0x1E}},
    NamedUsage{"headset", {led_page, 0x1F}},         NamedUsage{"hold", {led_page, 0x20}},
    NamedUsage{"microphone", {led_page, 0x21}},      NamedUsage{"send-calls", {led_page, 0x24}},
    NamedUsage{"on-line", {led_page, 0x2A}},         NamedUsage{"ringer", {telephony_page, 0x9E}},
};

// HID Usage Tables, telephony page and consumer page.
constexpr std::array keys{
    NamedUsage{"hook", {telephony_page, 0x20}},          NamedUsage{"flash", {telephony_page, 0x21}},
    NamedUsage{"feature", {telephony_page, 0x22}},       NamedUsage{"hold", {telephony_page, 0x23}},
    NamedUsage{"redial", {telephony_page, 0x24}},        NamedUsage{"transfer", {telephony_page, 0x25}},
    NamedUsage{"drop", {telephony_page, 0x26}},          NamedUsage{"line", {telephony_page, 0x2A}},
    NamedUsage{"speaker-phone", {telephony_page, 0x2B}}, NamedUsage{"ring-enable", {telephony_page, 0x2D}},
    NamedUsage{"mute", {telephony_page, 0x2F}},          NamedUsage{"send", {telephony_page, 0x31}},
    NamedUsage{"speed-dial", {telephony_page, 0x50}},    NamedUsage{"voice-mail", {telephony_page, 0x70}},
    NamedUsage{"play-pause", {consumer_page, 0xCD}},     NamedUsage{"consumer-mute", {consumer_page, 0xE2}},
    NamedUsage{"volume-up", {consumer_page, 0xE9}},      NamedUsage{"volume-down", {consumer_page, 0xEA}},
};

}  // namespace

std::span<const NamedUsage> indicator_names() {
    return indicators;
}

std::span<const NamedUsage> key_names() {
    return keys;
}

Usage find_usage(std::span<const NamedUsage> names, std::string_view text) {
    const auto found = std::ranges::find(names, text, &NamedUsage::name);
    if (found != names.end())
        return found->usage;
    const auto usage = tools::parse_usage(text);
    if (!usage)
        throw CommandError(quoted(text) + " is neither a name known here nor PAGE:USAGE in hexadecimal");
    return *usage;
}

std::string usage_name(std::span<const NamedUsage> names, Usage usage) {
    const auto found = std::ranges::find(names, usage, &NamedUsage::usage);
    return found != names.end() ? found->name : to_hex16(usage.page) + ":" + to_hex16(usage.id);
}

}  // namespace softphone
