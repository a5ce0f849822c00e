#include "tools/headset/descriptor_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tools/headset/errors.h"

namespace headset {
namespace {

using tools::parse_number;
using tools::quoted;
using tools::trimmed;

constexpr const char* standard_input = "standard input";

/// Takes the first line off a text.
std::string_view take_line(std::string_view& text) {
    const auto line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line;
}

/// Takes the first word off a line.
std::string_view take_word(std::string_view& line) {
    line = trimmed(line);
    const auto word = line.substr(0, line.find_first_of(tools::white_space));
    line.remove_prefix(word.size());
    return word;
}

/// What follows a label such as "R:" in the first line that begins with it.
std::optional<std::string_view> labelled(std::string_view content, std::string_view label) {
    while (!content.empty()) {
        auto line = take_line(content);
        if (line.starts_with(label)) {
            line.remove_prefix(label.size());
            return trimmed(line);
        }
    }
    return std::nullopt;
}

// ---- hid-recorder

std::optional<DeviceIds> parse_ids(std::string_view line) {
    take_word(line);  // the bus
    const auto vendor = parse_number<std::uint16_t>(take_word(line), 16);
    const auto product = parse_number<std::uint16_t>(take_word(line), 16);
    return vendor && product ? std::optional(DeviceIds{*vendor, *product}) : std::nullopt;
}

Bytes parse_counted(std::string_view line) {
    const auto first = take_word(line);
    const auto count = parse_number<std::size_t>(first, 10);
    if (!count)
        throw Refused("the line \"R:\" begins with " + quoted(first) + ", not with the descriptor's length");
    auto bytes = parse_hex(line);
    if (bytes.size() != *count)
        throw Refused("the line \"R:\" announces " + std::to_string(*count) + " bytes and has " +
                      std::to_string(bytes.size()));
    return bytes;
}

std::optional<Descriptor> read_recording(std::string_view content) {
    const auto line = labelled(content, "R: ");
    if (!line)
        return std::nullopt;
    Descriptor descriptor{parse_counted(*line), std::string(labelled(content, "N:").value_or(""))};
    if (const auto ids = labelled(content, "I:"))
        descriptor.ids = parse_ids(*ids);
    return descriptor;
}

// ---- usbhid-dump

/// True for a header line: bus, device and interface in three digits each, what follows, and when it was
/// taken.
bool is_dump_header(std::string_view line) {
    constexpr std::string_view pattern = "ddd:ddd:ddd:";
    return line.size() > pattern.size() &&
           std::equal(pattern.begin(), pattern.end(), line.begin(), [](char wanted, char found) {
               return wanted == 'd' ? '0' <= found && found <= '9' : wanted == found;
           });
}

std::optional<Descriptor> read_dump(std::string_view content) {
    std::string_view line;
    do {
        if (content.empty())
            return std::nullopt;
        line = take_line(content);
    } while (!is_dump_header(line) || line.find(":DESCRIPTOR") == line.npos);
    const auto* const begin = content.data();
    const auto* end = begin;
    while (!content.empty() && !is_dump_header(take_line(content)))
        end = content.data();
    return Descriptor{parse_hex({begin, end})};
}

// ---- text and bytes

/// True when everything but comments is ASCII that can be printed. A descriptor has items whose data are not.
bool is_text(std::string_view content) {
    const auto is_printable = [](char c) {
        return (' ' <= c && c <= '~') || std::string_view("\t\r\n\f\v").find(c) != std::string_view::npos;
    };
    while (!content.empty()) {
        const auto line = take_line(content);
        if (!std::ranges::all_of(line.substr(0, line.find('#')), is_printable))
            return false;
    }
    return true;
}

/// What a stream holds, and no more than shows that it is too long.
std::string read_bounded(std::istream& stream, const std::string& name) {
    std::string content(most_text + 1, '\0');
    stream.read(content.data(), static_cast<std::streamsize>(content.size()));
    if (stream.bad())
        throw UsageError(name + ": " + std::strerror(errno));
    content.resize(static_cast<std::size_t>(stream.gcount()));
    return content;
}

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file || std::filesystem::is_directory(path))
        throw UsageError(path + ": " + (file ? "is a directory" : std::strerror(errno)));
    return read_bounded(file, path);
}

Descriptor read_named(const std::string& name, const std::string& content) {
    try {
        return read_descriptor(content);
    } catch (const Refused& error) {
        throw Refused(name + ": " + error.what());
    }
}

}  // namespace

Descriptor read_descriptor(std::string_view content) {
    if (auto recording = read_recording(content))
        return *std::move(recording);
    if (auto dump = read_dump(content))
        return *std::move(dump);
    check_text_size(content);
    if (is_text(content))
        return {parse_hex(content)};
    return {Bytes(content.begin(), content.end())};
}

bool names_file(const std::string& argument) {
    std::error_code ignored;
    return argument == "-" || std::filesystem::exists(argument, ignored);
}

Descriptor load_descriptor(const std::string& argument, std::istream& input) {
    if (argument == "-")
        return read_named(standard_input, read_bounded(input, standard_input));
    if (names_file(argument))
        return read_named(argument, read_file(argument));
    if (argument.find('/') != std::string::npos)
        throw UsageError("there is no file or device \"" + argument + "\"");
    try {
        return {parse_hex(argument)};
    } catch (const Refused& error) {
        throw UsageError("there is no file of this name, and " + std::string(error.what()));
    }
}

}  // namespace headset
