#include "tools/headset/caps_table.h"

#include <cstdio>
#include <string_view>

#include "tools/headset/table.h"

namespace headset {
namespace {

/// A bit of a main item's data: what it says when it is clear, empty where that goes without saying, and when
/// set.
struct Flag {
    std::uint16_t bit;
    const char* clear;
    const char* set;
};

// HID 1.11, 6.2.2.5.
constexpr Flag flags[] = {
    {0x001, "data", "constant"}, {0x002, "array", "variable"}, {0x004, "absolute", "relative"},
    {0x008, "", "wrap"},         {0x010, "", "nonlinear"},     {0x020, "", "no-preferred"},
    {0x040, "", "null-state"},   {0x080, "", "volatile"},      {0x100, "", "buffered-bytes"},
};

std::string flag_text(const Capability& capability) {
    std::string text;
    const auto add = [&](std::string_view word) {
        if (!word.empty())
            text.append(text.empty() ? "" : " ").append(word);
    };
    for (const Flag& flag : flags)
        add((capability.bit_field & flag.bit) != 0 ? flag.set : flag.clear);
    add(capability.is_alias ? "alias" : "");
    return text;
}

std::string id_text(const Capability& capability) {
    char text[8];
    std::snprintf(text, sizeof text, "id %02X", capability.report_id);
    return capability.report_id == 0 ? "" : text;
}

/// Byte and bit of the first field; byte 0 is the report id.
std::string place_text(const Capability& capability) {
    return std::to_string(capability.bit_position / 8) + "." + std::to_string(capability.bit_position % 8);
}

std::string bits_text(const Capability& capability) {
    const std::string size = std::to_string(capability.bit_size);
    return capability.report_count == 1 ? size : std::to_string(capability.report_count) + " x " + size;
}

std::string logical_text(const Capability& capability) {
    return capability.is_button
               ? ""
               : std::to_string(capability.logical_min) + ".." + std::to_string(capability.logical_max);
}

std::string heading(PHIDP_PREPARSED_DATA data) {
    std::string text = usage_label(collection_usage(data)) + '\n';
    for (const auto direction : directions) {
        const auto length = longest_report(data, direction);
        text += std::string(direction == platform::HidP_Input ? "  " : ", ") + to_string(direction) + " " +
                (length == 0 ? "none" : std::to_string(length) + " bytes");
    }
    return text + "; link collections: " + std::to_string(get_caps(data).NumberLinkCollectionNodes) + '\n';
}

std::string collection_text(PHIDP_PREPARSED_DATA data) {
    Table table;
    for (const auto direction : directions)
        for (const Capability& capability : capabilities(data, direction))
            table.add({to_string(direction), id_text(capability), place_text(capability),
                       bits_text(capability), capability.is_button ? "button" : "value",
                       range_label(first_usage(capability), capability.usage_max), logical_text(capability),
                       flag_text(capability)});
    std::string text = heading(data);
    if (!table.is_empty())
        text.append("\n").append(table.to_string());
    return text;
}

}  // namespace

std::string caps_table(const Collections& collections) {
    std::string text;
    for (const auto& collection : collections)
        text.append(text.empty() ? "" : "\n").append(collection_text(collection.get()));
    return text;
}

}  // namespace headset
