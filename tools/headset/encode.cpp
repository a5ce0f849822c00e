#include "tools/headset/encode.h"

#include <algorithm>
#include <map>
#include <optional>

#include "tools/headset/errors.h"

namespace headset {
namespace {

using platform::any_link_collection;
using platform::HIDP_STATUS_BUTTON_NOT_PRESSED;
using platform::HIDP_STATUS_SUCCESS;
using platform::ULONG;
using platform::USAGE;
using platform::hidp::parser;
using tools::Bytes;

std::optional<std::int64_t> parse_value(std::string_view text) {
    if (text.starts_with("0x") || text.starts_with("0X"))
        return tools::parse_number<std::uint32_t>(text.substr(2), 16);
    return tools::parse_number<std::int64_t>(text, 10);
}

/// A report that is being made, in the length that the parser wants.
struct NewReport {
    PHIDP_PREPARSED_DATA data;
    HIDP_REPORT_TYPE direction;
    Bytes bytes;

    ULONG length() const { return static_cast<ULONG>(bytes.size()); }
};

struct Place {
    PHIDP_PREPARSED_DATA data;
    const Capability& capability;
    Usage usage;
};

/// The first capability that has a place for the usage; else the first that names it.
std::optional<Place> find_place(const Collections& collections, HIDP_REPORT_TYPE direction, Usage usage) {
    std::optional<Place> named;
    for (const auto& collection : collections)
        for (const Capability& capability : capabilities(collection.get(), direction)) {
            if (!covers(capability, usage))
                continue;
            const Place place{collection.get(), capability, usage};
            if (capability.holds(usage.id))
                return place;
            if (!named)
                named.emplace(place);
        }
    return named;
}

std::string labels(const std::vector<Usage>& usages) {
    return tools::join(usages, usage_label, " or ");
}

/// The place of the only one of the usages that the descriptor has.
Place find_place(const Collections& collections, HIDP_REPORT_TYPE direction,
                 const std::vector<Usage>& usages) {
    std::vector<Place> places;
    std::vector<Usage> found;
    for (const Usage usage : usages)
        if (const auto place = find_place(collections, direction, usage)) {
            places.push_back(*place);
            found.push_back(usage);
        }
    if (places.empty())
        throw Refused("the descriptor has no " + labels(usages) + " in its " + to_string(direction) +
                      " reports");
    if (places.size() > 1)
        throw Refused("the name stands for " + labels(found) + ": use the number");
    return places.front();
}

NewReport empty_report(const Place& place, HIDP_REPORT_TYPE direction) {
    NewReport report{place.data, direction, Bytes(longest_report(place.data, direction))};
    parser().HidP_InitializeReportForID(direction, place.capability.report_id, place.data,
                                        report.bytes.data(), report.length());
    return report;
}

void set_button(NewReport& report, Usage button, std::int64_t value) {
    if (value != 0 && value != 1)
        throw Refused(usage_label(button) + " is a button: it can be 0 or 1, not " + std::to_string(value));
    USAGE usage = button.id;
    ULONG count = 1;
    const auto change =
        value != 0 ? &platform::hidp::Parser::HidP_SetUsages : &platform::hidp::Parser::HidP_UnsetUsages;
    const auto status = (parser().*change)(report.direction, button.page, any_link_collection, &usage, &count,
                                           report.data, report.bytes.data(), report.length());
    if (status != HIDP_STATUS_SUCCESS && status != HIDP_STATUS_BUTTON_NOT_PRESSED)
        throw Refused("the report has no room for " + usage_label(button));
}

void set_value(NewReport& report, const Capability& capability, Usage usage, std::int64_t value) {
    const auto bits = capability.field_bits();
    const std::int64_t room = std::int64_t{1} << bits;
    const std::int64_t least = capability.logical_min < 0 && bits > 0 ? -room / 2 : 0;
    if (value < least || value >= room)
        throw Refused(usage_label(usage) + " has " + std::to_string(bits) +
                      " bits: " + std::to_string(value) + " does not fit");
    parser().HidP_SetUsageValue(report.direction, usage.page, any_link_collection, usage.id,
                                static_cast<ULONG>(value), report.data, report.bytes.data(), report.length());
}

}  // namespace

Assignment parse_assignment(std::string_view text) {
    const auto equals = text.find('=');
    const auto name = text.substr(0, equals);
    const auto number = tools::parse_usage(name);
    auto usages = number ? std::vector{*number} : usages_named(name);
    const auto value =
        equals == text.npos ? std::optional<std::int64_t>(1) : parse_value(text.substr(equals + 1));
    if (usages.empty() || !value)
        throw UsageError(
            tools::quoted(text) +
            " is not USAGE[=VALUE], such as Off-Hook, 08:17 or 08:17=0: a usage is a number or a "
            "name that \"headset decode\" prints");
    return {std::move(usages), *value};
}

std::vector<EncodedReport> encode(const Collections& collections, HIDP_REPORT_TYPE direction,
                                  std::span<const Assignment> assignments) {
    std::map<std::uint8_t, NewReport> reports;
    for (const Assignment& assignment : assignments) {
        const Place place = find_place(collections, direction, assignment.usages);
        auto& report =
            reports.try_emplace(place.capability.report_id, empty_report(place, direction)).first->second;
        if (place.capability.is_button)
            set_button(report, place.usage, assignment.value);
        else
            set_value(report, place.capability, place.usage, assignment.value);
    }
    std::vector<EncodedReport> encoded;
    for (auto& [id, report] : reports) {
        report.bytes.resize(platform::hidp::report_length(report.data, direction, id));
        encoded.push_back({direction, std::move(report.bytes)});
    }
    return encoded;
}

std::string to_text(const EncodedReport& report) {
    return tools::to_hex(report.bytes) + '\n';
}

Json to_json(const EncodedReport& report) {
    return {{"report_id", report.bytes.front()},
            {"direction", to_string(report.direction)},
            {"bytes", tools::to_hex(report.bytes)}};
}

}  // namespace headset
