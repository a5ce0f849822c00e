// Recorded input reports against an independent decode of theirs.
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/platform/hidp/headset.h"
#include "tests/support/reference_data.h"

using namespace platform;
using hidp_test::Bytes;
using hidp_test::Collection;
using hidp_test::generic_desktop;
using nlohmann::json;

namespace {

/// The axes that the decodes name (HID Usage Tables, Generic Desktop page).
struct Axis {
    const char* name;
    USAGE usage;
};
constexpr Axis axes[] = {{"X", 0x30},  {"Y", 0x31},  {"Z", 0x32},    {"Rx", 0x33},
                         {"Ry", 0x34}, {"Rz", 0x35}, {"Wheel", 0x38}};

using Values = std::vector<std::int64_t>;

/// True for a name that is no other name's end, as X is of "Contact X".
bool begins_name(const std::string& text, std::size_t at) {
    return at < 2 || (text[at - 1] == ' ' && std::isalpha(static_cast<unsigned char>(text[at - 2])) == 0);
}

/// Every "X: 12" in the text; of "X: 12 , 13" the first.
Values decoded_values(const std::string& text, const std::string& name) {
    const std::string label = name + ":";
    Values values;
    for (auto at = text.find(label); at != std::string::npos; at = text.find(label, at + 1)) {
        if (begins_name(text, at)) {
            values.push_back(std::stoll(text.substr(at + label.size())));
        }
    }
    return values;
}

std::int64_t read(const hidp::Capability& cap, const Collection& device, const Bytes& report) {
    ULONG raw = 0;
    hidp::parser().HidP_GetUsageValue(HidP_Input, cap.usage_page, cap.link_collection, cap.usage_min, &raw,
                                      device.data(), report.data(), static_cast<ULONG>(report.size()));
    const std::int64_t modulus = std::int64_t{1} << cap.bit_size;
    return cap.logical_min < 0 && raw >= modulus / 2 ? raw - modulus : raw;
}

/// The values of one usage in the order of their fields.
Values parsed_values(const Collection& device, USAGE usage, const Bytes& report) {
    std::vector<const hidp::Capability*> caps;
    for (const auto& cap : device.direction(HidP_Input).capabilities) {
        if (cap.usage_page == generic_desktop && cap.usage_min == usage && cap.report_id == report[0]) {
            caps.push_back(&cap);
        }
    }
    std::sort(caps.begin(), caps.end(), [](auto a, auto b) { return a->bit_position < b->bit_position; });
    Values values;
    for (const auto* cap : caps) {
        values.push_back(read(*cap, device, report));
    }
    return values;
}

/// The report as the parser takes it: with an id byte, and as long as the direction's longest.
Bytes padded(Bytes report, const Collection& device) {
    if (!hidp::has_report_ids(device.data())) {
        report.insert(report.begin(), 0);
    }
    report.resize(device.caps().InputReportByteLength);
    return report;
}

/// Compares every axis of the collection, and returns how many values that were.
std::size_t compare_axes(const Collection& device, const Bytes& report, const std::string& decoded) {
    std::size_t compared = 0;
    for (const Axis& axis : axes) {
        const Values values = parsed_values(device, axis.usage, report);
        if (!values.empty()) {
            EXPECT_EQ(values, decoded_values(decoded, axis.name)) << axis.name << " of " << decoded;
            compared += values.size();
        }
    }
    return compared;
}

TEST(DecodedReports, AxesHaveTheValuesOfTheIndependentDecode) {
    SKIP_WITHOUT_REFERENCE_DATA();
    std::size_t compared = 0;
    for (const auto& [name, record] : reference::load("other")) {
        SCOPED_TRACE(name);
        const Bytes descriptor = reference::descriptor(record);
        const std::size_t collections = hidp::parse(descriptor).collections.size();
        for (const auto& sample : record.at("sample_input_reports")) {
            const auto decoded = sample.value("decoded_by_hid_tools", json());
            for (std::size_t index = 0; decoded.is_string() && index < collections; ++index) {
                const Collection device(descriptor, index);
                const Bytes report = padded(reference::bytes(sample.at("hex").get<std::string>()), device);
                compared += report.empty() ? 0 : compare_axes(device, report, decoded);
            }
        }
    }
    EXPECT_GT(compared, 4000U);
}

}  // namespace
