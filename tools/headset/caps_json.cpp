#include "tools/headset/caps_json.h"

#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <optional>
#include <set>
#include <string>

#include "tools/headset/errors.h"
#include "tools/headset/hex.h"

namespace headset {
namespace {

struct Field {
    const char* name;
    std::int64_t number;
};

/// Adds members to an object. Not through initializer lists of JSON or operator[]: these copy every member
/// some times and compare it with those before, which is most of the time that a large descriptor takes.
void add(Json& json, std::initializer_list<Field> fields) {
    auto& members = json.get_ref<Json::object_t&>();
    members.reserve(members.size() + fields.size());
    for (const Field& field : fields)
        members.emplace_back(field.name, field.number);
}

Json node_to_json(const HIDP_LINK_COLLECTION_NODE& node) {
    Json json = Json::object();
    add(json, {{"LinkUsage", node.LinkUsage},
               {"LinkUsagePage", node.LinkUsagePage},
               {"Parent", node.Parent},
               {"NumberOfChildren", node.NumberOfChildren},
               {"NextSibling", node.NextSibling},
               {"FirstChild", node.FirstChild},
               {"CollectionType", node.CollectionType},
               {"IsAlias", node.IsAlias}});
    return json;
}

/// The fields that only one kind of capability has.
void add_own(Json& json, const HIDP_BUTTON_CAPS& cap) {
    add(json, {{"ReportCount", cap.ReportCount}});
}

void add_own(Json& json, const HIDP_VALUE_CAPS& cap) {
    add(json, {{"HasNull", cap.HasNull},
               {"BitSize", cap.BitSize},
               {"ReportCount", cap.ReportCount},
               {"UnitsExp", static_cast<platform::LONG>(cap.UnitsExp)},
               {"Units", cap.Units},
               {"LogicalMin", cap.LogicalMin},
               {"LogicalMax", cap.LogicalMax},
               {"PhysicalMin", cap.PhysicalMin},
               {"PhysicalMax", cap.PhysicalMax}});
}

template <class Caps>
Json cap_to_json(const Caps& cap) {
    Json json = Json::object();
    add(json, {{"UsagePage", cap.UsagePage},
               {"ReportID", cap.ReportID},
               {"IsAlias", cap.IsAlias},
               {"BitField", cap.BitField},
               {"LinkCollection", cap.LinkCollection},
               {"LinkUsage", cap.LinkUsage},
               {"LinkUsagePage", cap.LinkUsagePage},
               {"IsRange", cap.IsRange},
               {"IsStringRange", cap.IsStringRange},
               {"IsDesignatorRange", cap.IsDesignatorRange},
               {"IsAbsolute", cap.IsAbsolute}});
    add_own(json, cap);
    // A single usage is stored as a range of one.
    add(json, {{"UsageMin", cap.Range.UsageMin},
               {"UsageMax", cap.Range.UsageMax},
               {"StringMin", cap.Range.StringMin},
               {"StringMax", cap.Range.StringMax},
               {"DesignatorMin", cap.Range.DesignatorMin},
               {"DesignatorMax", cap.Range.DesignatorMax},
               {"DataIndexMin", cap.Range.DataIndexMin},
               {"DataIndexMax", cap.Range.DataIndexMax}});
    return json;
}

template <class Row, class ToJson>
Json to_array(const std::vector<Row>& rows, ToJson to_json) {
    Json array = Json::array();
    for (const Row& row : rows)
        array.push_back(to_json(row));
    return array;
}

/// One member per direction.
template <class ToJson>
Json per_direction(ToJson to_json) {
    Json json;
    for (const auto direction : directions)
        json[to_string(direction)] = to_json(direction);
    return json;
}

Json list_lengths(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE direction) {
    std::set<platform::USAGE> pages;
    for (const HIDP_BUTTON_CAPS& cap : get_button_caps(data, direction))
        pages.insert(cap.UsagePage);
    Json lengths = Json::object();
    for (const platform::USAGE page : pages) {
        char key[8];
        std::snprintf(key, sizeof key, "0x%02X", page);
        lengths[key] = platform::hidp::parser().HidP_MaxUsageListLength(direction, page, data);
    }
    return lengths;
}

Json collection_to_json(PHIDP_PREPARSED_DATA data) {
    const HIDP_CAPS caps = get_caps(data);
    Json json = Json::object();
    add(json, {{"UsagePage", caps.UsagePage},
               {"Usage", caps.Usage},
               {"InputReportByteLength", caps.InputReportByteLength},
               {"OutputReportByteLength", caps.OutputReportByteLength},
               {"FeatureReportByteLength", caps.FeatureReportByteLength},
               {"NumberLinkCollectionNodes", caps.NumberLinkCollectionNodes},
               {"NumberInputButtonCaps", caps.NumberInputButtonCaps},
               {"NumberInputValueCaps", caps.NumberInputValueCaps},
               {"NumberInputDataIndices", caps.NumberInputDataIndices},
               {"NumberOutputButtonCaps", caps.NumberOutputButtonCaps},
               {"NumberOutputValueCaps", caps.NumberOutputValueCaps},
               {"NumberOutputDataIndices", caps.NumberOutputDataIndices},
               {"NumberFeatureButtonCaps", caps.NumberFeatureButtonCaps},
               {"NumberFeatureValueCaps", caps.NumberFeatureValueCaps},
               {"NumberFeatureDataIndices", caps.NumberFeatureDataIndices}});
    json["LinkCollectionNodes"] = to_array(get_link_collections(data), node_to_json);
    json["ButtonCaps"] = per_direction([&](auto direction) {
        return to_array(get_button_caps(data, direction), cap_to_json<HIDP_BUTTON_CAPS>);
    });
    json["ValueCaps"] = per_direction([&](auto direction) {
        return to_array(get_value_caps(data, direction), cap_to_json<HIDP_VALUE_CAPS>);
    });
    json["MaxUsageListLength"] = per_direction([&](auto direction) { return list_lengths(data, direction); });
    return json;
}

/// How much of a line that is too long is passed over in the search for its end.
constexpr std::size_t most_passed_over = 16U << 20U;

/// The next character of the line; nothing at its end, which is taken, too. Reads from the buffer: a stream
/// catches what its buffer throws, which would then look like the end.
std::optional<char> next_of_line(std::streambuf& input) {
    using Traits = std::streambuf::traits_type;
    const auto character = input.sbumpc();
    if (Traits::eq_int_type(character, Traits::eof()) || character == '\n')
        return std::nullopt;
    return Traits::to_char_type(character);
}

/// Takes the next line; false at the end. A line that is longer than most_text is taken as far as that shows.
bool read_line(std::streambuf& input, std::string& line) {
    using Traits = std::streambuf::traits_type;
    line.clear();
    if (Traits::eq_int_type(input.sgetc(), Traits::eof()))
        return false;
    while (line.size() <= most_text) {
        const auto character = next_of_line(input);
        if (!character)
            break;
        line += *character;
    }
    return true;
}

/// Throws UsageError for a line that does not end.
void pass_over_line(std::streambuf& input) {
    for (std::size_t passed_over = 0; next_of_line(input); ++passed_over)
        if (passed_over > most_passed_over)
            throw UsageError("standard input: a line does not end");
}

}  // namespace

std::string to_line(const Json& json) {
    return tools::to_text(json) + '\n';
}

Json caps_to_json(const Collections& collections) {
    Json array = Json::array();
    for (const auto& collection : collections)
        array.push_back(collection_to_json(collection.get()));
    return {{"collections", std::move(array)}};
}

Json answer_caps(std::string_view hex) {
    try {
        check_text_size(hex);
        const auto parsed = platform::hidp::parse(parse_hex(hex));
        if (!parsed.error)
            return caps_to_json(parsed.collections);
        return {
            {"error",
             {{"offset", parsed.error->offset}, {"item", parsed.error->item}, {"text", parsed.error->text}}}};
    } catch (const Refused& error) {
        return {{"error", {{"text", error.what()}}}};
    }
}

void answer_caps_lines(std::istream& input, std::ostream& output) {
    try {
        for (std::string line; read_line(*input.rdbuf(), line);) {
            output << to_line(answer_caps(line)) << std::flush;
            if (line.size() > most_text)
                pass_over_line(*input.rdbuf());
        }
    } catch (const std::ios_base::failure& error) {
        throw UsageError("standard input: " + error.code().message());
    }
}

}  // namespace headset
