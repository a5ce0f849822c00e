#include "tools/headset/decode.h"

#include <algorithm>

#include "platform/hidp/bits.h"
#include "tools/common/text.h"
#include "tools/headset/errors.h"
#include "tools/headset/table.h"

namespace headset {
namespace {

using platform::any_link_collection;
using platform::HIDP_STATUS_SUCCESS;
using platform::PHIDP_PREPARSED_DATA;
using platform::ULONG;
using platform::USAGE;
using platform::USHORT;
using platform::hidp::parser;
using tools::Bytes;

/// A link collection as the parser's functions take it, to whom 0 is any.
USHORT link_argument(const Capability& capability) {
    return capability.link_collection == 0 ? platform::hidp::link_collection_root
                                           : capability.link_collection;
}

/// A report in the length that the parser wants, and the collection that has it.
struct Report {
    PHIDP_PREPARSED_DATA data;
    HIDP_REPORT_TYPE direction;
    Bytes bytes;

    ULONG length() const { return static_cast<ULONG>(bytes.size()); }
    bool holds(const Capability& capability) const { return capability.report_id == bytes[0]; }
};

std::string describe(HIDP_REPORT_TYPE direction, std::span<const std::uint8_t> report) {
    return std::string("the ") + to_string(direction) + " report \"" + tools::to_hex(report) + "\"";
}

/// The lengths, in bytes and with the id, that a report of a collection may have; `most` is 0 for one that
/// the collection does not have.
struct Lengths {
    std::size_t least = 0;
    std::size_t most = 0;
};

Lengths report_lengths(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE direction, std::uint8_t report_id) {
    const auto own = platform::hidp::report_length(data, direction, report_id);
    return {own, own == 0 ? 0 : longest_report(data, direction)};
}

std::string length_text(Lengths lengths, bool without_id) {
    const auto text = [](std::size_t length) { return std::to_string(length); };
    std::string allowed = text(lengths.least);
    if (lengths.most > lengths.least)
        allowed += " to " + text(lengths.most);
    return allowed + " bytes" + (without_id ? " with the id 0" : "");
}

/// The report with its id in byte 0, where the descriptor has no ids and it was left out.
Bytes with_id(const Collections& collections, HIDP_REPORT_TYPE direction,
              std::span<const std::uint8_t> report) {
    Bytes bytes(report.begin(), report.end());
    if (platform::hidp::has_report_ids(collections.front().get()))
        return bytes;
    const bool is_left_out = std::ranges::any_of(collections, [&](const auto& collection) {
        return report.size() + 1 == platform::hidp::report_length(collection.get(), direction, 0);
    });
    if (is_left_out)
        bytes.insert(bytes.begin(), 0);
    return bytes;
}

Report find_report(const Collections& collections, HIDP_REPORT_TYPE direction,
                   std::span<const std::uint8_t> given) {
    if (given.empty())
        throw Refused("a report has at least one byte");
    Bytes bytes = with_id(collections, direction, given);
    const bool without_ids = !platform::hidp::has_report_ids(collections.front().get());
    std::string allowed;
    for (const auto& collection : collections) {
        const auto lengths = report_lengths(collection.get(), direction, bytes[0]);
        if (lengths.most == 0)
            continue;
        if (lengths.least <= bytes.size() && bytes.size() <= lengths.most) {
            bytes.resize(lengths.most);
            return {collection.get(), direction, std::move(bytes)};
        }
        allowed += (allowed.empty() ? "" : ", or ") + length_text(lengths, without_ids);
    }
    if (!allowed.empty())
        throw Refused(describe(direction, given) + " has " + std::to_string(given.size()) +
                      (given.size() == 1 ? " byte" : " bytes") + "; it is to have " + allowed);
    const std::string id = tools::to_hex(std::span(bytes).first(1));
    throw Refused(describe(direction, given) + ": the descriptor has no " + to_string(direction) +
                  " report " + (without_ids ? "that begins with " : "of the id ") + id);
}

/// The pages that have buttons in the report, in the order of the capabilities.
std::vector<USAGE> button_pages(const Report& report) {
    std::vector<USAGE> pages;
    for (const Capability& capability : capabilities(report.data, report.direction))
        if (capability.is_button && report.holds(capability) &&
            std::ranges::find(pages, capability.usage_page) == pages.end())
            pages.push_back(capability.usage_page);
    return pages;
}

void add_buttons(const Report& report, USAGE page, std::vector<Usage>& buttons) {
    ULONG count = parser().HidP_MaxUsageListLength(report.direction, page, report.data);
    std::vector<USAGE> usages(count);
    const auto status = parser().HidP_GetUsages(report.direction, page, any_link_collection, usages.data(),
                                                &count, report.data, report.bytes.data(), report.length());
    usages.resize(status == HIDP_STATUS_SUCCESS ? count : 0);
    for (const USAGE usage : usages)
        buttons.push_back({page, usage});
}

/// A value of the usage, scaled. The parser scales what stands in the usage's first field, so it goes there.
std::optional<std::int32_t> scale(const Report& report, Bytes& scratch, const Capability& capability,
                                  USAGE usage, ULONG value) {
    const auto link = link_argument(capability);
    platform::LONG scaled = 0;
    parser().HidP_SetUsageValue(report.direction, capability.usage_page, link, usage, value, report.data,
                                scratch.data(), report.length());
    const auto status =
        parser().HidP_GetScaledUsageValue(report.direction, capability.usage_page, link, usage, &scaled,
                                          report.data, scratch.data(), report.length());
    return status == HIDP_STATUS_SUCCESS ? std::optional(scaled) : std::nullopt;
}

/// Field by field: the parser's functions give a usage's first one only.
void add_values(const Report& report, const Capability& capability, std::vector<DecodedValue>& values) {
    Bytes scratch = report.bytes;
    for (ULONG field = 0; field < capability.report_count; ++field) {
        // What is left over belongs to the last usage.
        const auto usage =
            static_cast<USAGE>(capability.usage_min + std::min(field, capability.usage_count() - 1));
        const ULONG value = platform::hidp::read_bits(report.bytes, capability.field_position(field),
                                                      capability.field_bits());
        values.push_back(
            {{capability.usage_page, usage}, value, scale(report, scratch, capability, usage, value)});
    }
}

}  // namespace

DecodedReport decode(const Collections& collections, HIDP_REPORT_TYPE direction,
                     std::span<const std::uint8_t> given) {
    const Report report = find_report(collections, direction, given);
    DecodedReport decoded{direction, report.bytes[0], collection_usage(report.data), {}, {}};
    for (const USAGE page : button_pages(report))
        add_buttons(report, page, decoded.buttons);
    for (const Capability& capability : capabilities(report.data, direction))
        if (!capability.is_button && report.holds(capability))
            add_values(report, capability, decoded.values);
    return decoded;
}

std::string to_text(const DecodedReport& report) {
    std::string text = std::string(to_string(report.direction)) + " report";
    if (report.report_id != 0)
        text.append(" ").append(tools::to_hex(std::span(&report.report_id, 1)));
    Table table;
    for (const Usage usage : report.buttons)
        table.add({"button", usage_label(usage)});
    for (const DecodedValue& value : report.values)
        table.add(
            {"value", usage_label(value.usage), "raw " + std::to_string(value.value),
             value.scaled ? "scaled " + std::to_string(*value.scaled) : "not scaled: null or out of range"});
    if (table.is_empty())
        table.add({"no button is set"});
    return text + " of " + usage_label(report.collection) + '\n' + table.to_string();
}

Json to_json(const DecodedReport& report) {
    const auto usage_json = [](Usage usage) { return Json{{"UsagePage", usage.page}, {"Usage", usage.id}}; };
    Json buttons = Json::array();
    for (const Usage usage : report.buttons)
        buttons.push_back(usage_json(usage));
    Json values = Json::array();
    for (const DecodedValue& value : report.values) {
        Json json = usage_json(value.usage);
        json["Value"] = value.value;
        json["Scaled"] = value.scaled ? Json(*value.scaled) : Json();
        values.push_back(std::move(json));
    }
    return {{"report_id", report.report_id},
            {"direction", to_string(report.direction)},
            {"buttons", std::move(buttons)},
            {"values", std::move(values)}};
}

}  // namespace headset
