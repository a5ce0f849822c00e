#include "tools/headset/usage_names.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <span>

#include "tools/common/text.h"

namespace headset {
namespace {

struct Name {
    std::uint16_t usage;
    const char* name;
};

// HID Usage Tables, section 4, Generic Desktop page.
constexpr Name generic_desktop[] = {
    {0x01, "Pointer"},
    {0x02, "Mouse"},
    {0x04, "Joystick"},
    {0x05, "Game Pad"},
    {0x06, "Keyboard"},
    {0x07, "Keypad"},
    {0x08, "Multi-axis Controller"},
    {0x30, "X"},
    {0x31, "Y"},
    {0x32, "Z"},
    {0x33, "Rx"},
    {0x34, "Ry"},
    {0x35, "Rz"},
    {0x36, "Slider"},
    {0x37, "Dial"},
    {0x38, "Wheel"},
    {0x39, "Hat switch"},
    {0x3A, "Counted Buffer"},
    {0x80, "System Control"},
    {0x81, "System Power Down"},
    {0x82, "System Sleep"},
    {0x83, "System Wake Up"},
};

// HID Usage Tables, section 11, LED page.
constexpr Name led[] = {
    {0x01, "Num Lock"},
    {0x02, "Caps Lock"},
    {0x03, "Scroll Lock"},
    {0x04, "Compose"},
    {0x05, "Kana"},
    {0x06, "Power"},
    {0x07, "Shift"},
    {0x08, "Do Not Disturb"},
    {0x09, "Mute"},
    {0x0A, "Tone Enable"},
    {0x0B, "High Cut Filter"},
    {0x0C, "Low Cut Filter"},
    {0x0D, "Equalizer Enable"},
    {0x0E, "Sound Field On"},
    {0x0F, "Surround On"},
    {0x10, "Repeat"},
    {0x11, "Stereo"},
    {0x12, "Sampling Rate Detect"},
    {0x13, "Spinning"},
    {0x14, "CAV"},
    {0x15, "CLV"},
    {0x16, "Recording Format Detect"},
    {0x17, "Off-Hook"},
    {0x18, "Ring"},
    {0x19, "Message Waiting"},
    {0x1A, "Data Mode"},
    {0x1B, "Battery Operation"},
    {0x1C, "Battery OK"},
    {0x1D, "Battery Low"},
    {0x1E, "Speaker"},
    {0x1F, "Head Set"},
    {0x20, "Hold"},
    {0x21, "Microphone"},
    {0x22, "Coverage"},
    {0x23, "Night Mode"},
    {0x24, "Send Calls"},
    {0x25, "Call Pickup"},
    {0x26, "Conference"},
    {0x27, "Stand-by"},
    {0x28, "Camera On"},
    {0x29, "Camera Off"},
    {0x2A, "On-Line"},
    {0x2B, "Off-Line"},
    {0x2C, "Busy"},
    {0x2D, "Ready"},
    {0x2E, "Paper-Out"},
    {0x2F, "Paper-Jam"},
    {0x30, "Remote"},
    {0x31, "Forward"},
    {0x32, "Reverse"},
    {0x33, "Stop"},
    {0x34, "Rewind"},
    {0x35, "Fast Forward"},
    {0x36, "Play"},
    {0x37, "Pause"},
    {0x38, "Record"},
    {0x39, "Error"},
    {0x3A, "Usage Selected Indicator"},
    {0x3B, "Usage In Use Indicator"},
    {0x3C, "Usage Multi Mode Indicator"},
    {0x3D, "Indicator On"},
    {0x3E, "Indicator Flash"},
    {0x3F, "Indicator Slow Blink"},
    {0x40, "Indicator Fast Blink"},
    {0x41, "Indicator Off"},
    {0x42, "Flash On Time"},
    {0x43, "Slow Blink On Time"},
    {0x44, "Slow Blink Off Time"},
    {0x45, "Fast Blink On Time"},
    {0x46, "Fast Blink Off Time"},
    {0x47, "Usage Indicator Color"},
    {0x48, "Indicator Red"},
    {0x49, "Indicator Green"},
    {0x4A, "Indicator Amber"},
    {0x4B, "Generic Indicator"},
    {0x4C, "System Suspend"},
    {0x4D, "External Power Connected"},
};

// HID Usage Tables, section 14, Telephony Device page.
constexpr Name telephony[] = {
    {0x01, "Phone"},
    {0x02, "Answering Machine"},
    {0x03, "Message Controls"},
    {0x04, "Handset"},
    {0x05, "Headset"},
    {0x06, "Telephony Key Pad"},
    {0x07, "Programmable Button"},
    {0x20, "Hook Switch"},
    {0x21, "Flash"},
    {0x22, "Feature"},
    {0x23, "Hold"},
    {0x24, "Redial"},
    {0x25, "Transfer"},
    {0x26, "Drop"},
    {0x27, "Park"},
    {0x28, "Forward Calls"},
    {0x29, "Alternate Function"},
    {0x2A, "Line"},
    {0x2B, "Speaker Phone"},
    {0x2C, "Conference"},
    {0x2D, "Ring Enable"},
    {0x2E, "Ring Select"},
    {0x2F, "Phone Mute"},
    {0x30, "Caller ID"},
    {0x31, "Send"},
    {0x50, "Speed Dial"},
    {0x51, "Store Number"},
    {0x52, "Recall Number"},
    {0x53, "Phone Directory"},
    {0x70, "Voice Mail"},
    {0x71, "Screen Calls"},
    {0x72, "Do Not Disturb"},
    {0x73, "Message"},
    {0x74, "Answer On/Off"},
    {0x90, "Inside Dial Tone"},
    {0x91, "Outside Dial Tone"},
    {0x92, "Inside Ring Tone"},
    {0x93, "Outside Ring Tone"},
    {0x94, "Priority Ring Tone"},
    {0x95, "Inside Ringback"},
    {0x96, "Priority Ringback"},
    {0x97, "Line Busy Tone"},
    {0x98, "Reorder Tone"},
    {0x99, "Call Waiting Tone"},
    {0x9A, "Confirmation Tone 1"},
    {0x9B, "Confirmation Tone 2"},
    {0x9C, "Tones Off"},
    {0x9D, "Outside Ringback"},
    {0x9E, "Ringer"},
    {0xB0, "Phone Key 0"},
    {0xB1, "Phone Key 1"},
    {0xB2, "Phone Key 2"},
    {0xB3, "Phone Key 3"},
    {0xB4, "Phone Key 4"},
    {0xB5, "Phone Key 5"},
    {0xB6, "Phone Key 6"},
    {0xB7, "Phone Key 7"},
    {0xB8, "Phone Key 8"},
    {0xB9, "Phone Key 9"},
    {0xBA, "Phone Key Star"},
    {0xBB, "Phone Key Pound"},
    {0xBC, "Phone Key A"},
    {0xBD, "Phone Key B"},
    {0xBE, "Phone Key C"},
    {0xBF, "Phone Key D"},
};

// HID Usage Tables, section 15, Consumer page: what headsets have.
constexpr Name consumer[] = {
    {0x01, "Consumer Control"},
    {0x02, "Numeric Key Pad"},
    {0x03, "Programmable Buttons"},
    {0x04, "Microphone"},
    {0x05, "Headphone"},
    {0x06, "Graphic Equalizer"},
    {0x30, "Power"},
    {0x31, "Reset"},
    {0x32, "Sleep"},
    {0x36, "Function Buttons"},
    {0x40, "Menu"},
    {0x60, "Data On Screen"},
    {0x80, "Selection"},
    {0x8C, "Media Select Telephone"},
    {0xB0, "Play"},
    {0xB1, "Pause"},
    {0xB2, "Record"},
    {0xB3, "Fast Forward"},
    {0xB4, "Rewind"},
    {0xB5, "Scan Next Track"},
    {0xB6, "Scan Previous Track"},
    {0xB7, "Stop"},
    {0xB8, "Eject"},
    {0xB9, "Random Play"},
    {0xBC, "Repeat"},
    {0xCD, "Play/Pause"},
    {0xCF, "Voice Command"},
    {0xE0, "Volume"},
    {0xE1, "Balance"},
    {0xE2, "Mute"},
    {0xE3, "Bass"},
    {0xE4, "Treble"},
    {0xE5, "Bass Boost"},
    {0xE9, "Volume Increment"},
    {0xEA, "Volume Decrement"},
};

struct Page {
    std::uint16_t page;
    std::span<const Name> names;
};

// HID Usage Tables, section 3.
constexpr std::uint16_t button_page = 0x09;
constexpr Page pages[] = {{0x01, generic_desktop}, {0x08, led}, {0x0B, telephony}, {0x0C, consumer}};

std::string two_digits(std::uint16_t number) {
    char digits[8];
    std::snprintf(digits, sizeof digits, "%02X", number);
    return digits;
}

}  // namespace

std::string usage_number(Usage usage) {
    return two_digits(usage.page) + ":" + two_digits(usage.id);
}

std::string usage_name(Usage usage) {
    // HID Usage Tables, section 12: a button's usage is its number, and 0 says that none is pressed.
    if (usage.page == button_page && usage.id > 0)
        return "Button " + std::to_string(usage.id);
    const auto page = std::ranges::find(pages, usage.page, &Page::page);
    if (page == std::end(pages))
        return {};
    const auto found = std::ranges::find(page->names, usage.id, &Name::usage);
    return found == page->names.end() ? "" : found->name;
}

std::string usage_label(Usage usage) {
    return range_label(usage, usage.id);
}

std::vector<Usage> usages_named(std::string_view text) {
    std::vector<Usage> found;
    const auto add = [&](Usage usage) {
        if (tools::same_ignoring_case(text, usage_name(usage)) ||
            tools::same_ignoring_case(text, usage_label(usage)))
            found.push_back(usage);
    };
    for (const Page& page : pages)
        for (const Name& name : page.names)
            add({page.page, name.usage});
    // The name of a button ends with its usage.
    const auto name = text.substr(0, text.find(" ("));
    if (const auto number = tools::parse_number<std::uint16_t>(name.substr(name.rfind(' ') + 1), 10))
        add({button_page, *number});
    return found;
}

std::string range_label(Usage first, std::uint16_t last) {
    std::string number = usage_number(first);
    std::string name = usage_name(first);
    if (last != first.id) {
        const std::string last_name = usage_name({first.page, last});
        number.append("-").append(two_digits(last));
        name = name.empty() || last_name.empty() ? "" : name + " to " + last_name;
    }
    return name.empty() ? number : name + " (" + number + ")";
}

}  // namespace headset
