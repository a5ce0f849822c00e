// The parser against the results of single HidP_ calls that Wine's tests check and that hold on Windows, all
// of them: a call, an argument or a result that this file does not know is a failure.
#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <utility>

#include "tests/platform/hidp/wine_steps.h"
#include "tests/support/reference_data.h"

using namespace platform;
using hidp_test::Bytes;
using hidp_test::Collection;
using hidp_test::Usages;
using nlohmann::json;
using reference::Step;

namespace {

const std::map<std::string, NTSTATUS> statuses = {
    {"SUCCESS", HIDP_STATUS_SUCCESS},
    {"INVALID_PREPARSED_DATA", HIDP_STATUS_INVALID_PREPARSED_DATA},
    {"INVALID_REPORT_TYPE", HIDP_STATUS_INVALID_REPORT_TYPE},
    {"INVALID_REPORT_LENGTH", HIDP_STATUS_INVALID_REPORT_LENGTH},
    {"USAGE_NOT_FOUND", HIDP_STATUS_USAGE_NOT_FOUND},
    {"VALUE_OUT_OF_RANGE", HIDP_STATUS_VALUE_OUT_OF_RANGE},
    {"BAD_LOG_PHY_VALUES", HIDP_STATUS_BAD_LOG_PHY_VALUES},
    {"BUFFER_TOO_SMALL", HIDP_STATUS_BUFFER_TOO_SMALL},
    {"INCOMPATIBLE_REPORT_ID", HIDP_STATUS_INCOMPATIBLE_REPORT_ID},
    {"NOT_VALUE_ARRAY", HIDP_STATUS_NOT_VALUE_ARRAY},
    {"IS_VALUE_ARRAY", HIDP_STATUS_IS_VALUE_ARRAY},
    {"BUTTON_NOT_PRESSED", HIDP_STATUS_BUTTON_NOT_PRESSED},
    {"REPORT_DOES_NOT_EXIST", HIDP_STATUS_REPORT_DOES_NOT_EXIST},
};

const std::map<std::string, HIDP_REPORT_TYPE> report_types = {
    {"Input", HidP_Input},
    {"Output", HidP_Output},
    {"Feature", HidP_Feature},
    {"Feature+1", static_cast<HIDP_REPORT_TYPE>(HidP_Feature + 1)},
};

/// The arguments of a step, and which of them were asked for.
class Arguments {
  public:
    explicit Arguments(const Step& step) : step_(step) {}

    bool has(const char* name) const { return step_.arguments.contains(name); }

    template <typename Value>
    Value get(const char* name) {
        used_.insert(name);
        return step_.arguments.at(name).get<Value>();
    }
    template <typename Value>
    Value get(const char* name, const Value& otherwise) {
        return has(name) ? get<Value>(name) : otherwise;
    }

    std::vector<std::string> unused() const {
        std::vector<std::string> names;
        std::set_difference(step_.stated.begin(), step_.stated.end(), used_.begin(), used_.end(),
                            std::back_inserter(names));
        return names;
    }

  private:
    const Step& step_;
    std::set<std::string> used_;
};

struct Outcome {
    std::optional<NTSTATUS> status;  ///< none where the function has none
    json results = json::object();
};

json pairs(const std::vector<HIDP_DATA>& list) {
    json result = json::array();
    for (const HIDP_DATA& control : list) {
        result.push_back({control.DataIndex, control.RawValue});
    }
    return result;
}

/// The collection of the record, with one report of each type.
class Device {
  public:
    explicit Device(const json& record)
        : collection_(reference::descriptor(record)), report_id_(record.at("report_id").get<UCHAR>()) {
        for (const auto type : {HidP_Input, HidP_Output, HidP_Feature}) {
            reports_[type] = empty_report(type);
        }
    }

    void make(const Step& step);

  private:
    using Call = Outcome (Device::*)(Arguments&);
    static const std::map<std::string, Call>& calls();

    Bytes empty_report(HIDP_REPORT_TYPE type) const {
        Bytes report = collection_.empty_report(type);
        report.at(0) = report_id_;
        return report;
    }
    /// That of a type; one that is none works on features.
    Bytes& report_of(HIDP_REPORT_TYPE type) { return reports_[std::min<std::size_t>(type, HidP_Feature)]; }

    static HIDP_REPORT_TYPE type(Arguments& arguments) {
        return report_types.at(arguments.get<std::string>("type", "Input"));
    }
    static USAGE page(Arguments& arguments) { return arguments.get<USAGE>("page"); }
    static USAGE usage(Arguments& arguments) { return arguments.get<USAGE>("usage"); }
    USHORT link_collection(Arguments& arguments) const;

    /// The status of `function`, which takes the report and its length, on the report as the arguments want
    /// it.
    template <typename Function>
    NTSTATUS on_report(Arguments& arguments, Function function);
    std::vector<HIDP_DATA> data_of(HIDP_REPORT_TYPE type);

    Outcome get_caps(Arguments& arguments);
    Outcome get_link_collection_nodes(Arguments& arguments);
    Outcome get_button_caps(Arguments& arguments);
    Outcome get_value_caps(Arguments& arguments);
    Outcome get_specific_button_caps(Arguments& arguments);
    Outcome get_specific_value_caps(Arguments& arguments);
    Outcome initialize_report(Arguments& arguments);
    Outcome max_usage_list_length(Arguments& arguments);
    Outcome max_data_list_length(Arguments& arguments);
    Outcome set_usages(Arguments& arguments);
    Outcome unset_usages(Arguments& arguments);
    Outcome get_usages(Arguments& arguments);
    Outcome get_usages_ex(Arguments& arguments);
    Outcome set_usage_value(Arguments& arguments);
    Outcome get_usage_value(Arguments& arguments);
    Outcome set_usage_value_array(Arguments& arguments);
    Outcome set_scaled_usage_value(Arguments& arguments);
    Outcome get_scaled_usage_value(Arguments& arguments);
    Outcome get_data(Arguments& arguments);
    Outcome set_data(Arguments& arguments);

    const hidp::Parser& parser_ = hidp::parser();
    Collection collection_;
    PHIDP_PREPARSED_DATA data_ = collection_.data();
    UCHAR report_id_;
    std::array<Bytes, hidp::report_type_count> reports_;
};

const std::map<std::string, Device::Call>& Device::calls() {
    static const std::map<std::string, Call> table = {
        {"HidP_GetCaps", &Device::get_caps},
        {"HidP_GetLinkCollectionNodes", &Device::get_link_collection_nodes},
        {"HidP_GetButtonCaps", &Device::get_button_caps},
        {"HidP_GetValueCaps", &Device::get_value_caps},
        {"HidP_GetSpecificButtonCaps", &Device::get_specific_button_caps},
        {"HidP_GetSpecificValueCaps", &Device::get_specific_value_caps},
        {"HidP_InitializeReportForID", &Device::initialize_report},
        {"HidP_MaxUsageListLength", &Device::max_usage_list_length},
        {"HidP_MaxDataListLength", &Device::max_data_list_length},
        {"HidP_SetUsages", &Device::set_usages},
        {"HidP_UnsetUsages", &Device::unset_usages},
        {"HidP_GetUsages", &Device::get_usages},
        {"HidP_GetUsagesEx", &Device::get_usages_ex},
        {"HidP_SetUsageValue", &Device::set_usage_value},
        {"HidP_GetUsageValue", &Device::get_usage_value},
        {"HidP_SetUsageValueArray", &Device::set_usage_value_array},
        {"HidP_SetScaledUsageValue", &Device::set_scaled_usage_value},
        {"HidP_SetScaledUsageValue/GetUsageValue/GetScaledUsageValue", &Device::set_scaled_usage_value},
        {"HidP_GetScaledUsageValue", &Device::get_scaled_usage_value},
        {"HidP_GetData", &Device::get_data},
        {"HidP_SetData", &Device::set_data},
    };
    return table;
}

void Device::make(const Step& step) {
    const auto call = calls().find(step.call);
    ASSERT_NE(call, calls().end()) << "a call that this test does not know";
    Arguments arguments(step);
    Bytes& report = report_of(type(arguments));
    if (step.begins_empty) {
        report = empty_report(type(arguments));
    }
    Bytes changed = report;
    for (const auto& [offset, bytes] : step.changes) {
        std::copy(bytes.begin(), bytes.end(), offset < 0 ? changed.end() + offset : changed.begin() + offset);
    }

    const auto [status, results] = (this->*call->second)(arguments);
    EXPECT_EQ(arguments.unused(), std::vector<std::string>()) << "arguments that this test does not know";
    for (const auto& [name, value] : step.expected.items()) {
        if (name != "status") {
            EXPECT_EQ(results.value(name, json()), value) << name;
        } else if (status) {
            EXPECT_EQ(*status, statuses.at(value.get<std::string>()));
        } else {
            EXPECT_TRUE(value.is_null());
        }
    }
    if (!step.changes.empty()) {
        EXPECT_EQ(report, changed);
    }
}

/// A number, or page and usage of the link collection.
USHORT Device::link_collection(Arguments& arguments) const {
    const json wanted = arguments.get<json>("collection", 0);
    if (wanted.is_number()) {
        return wanted.get<USHORT>();
    }
    const auto& nodes = data_->link_collections;
    const auto found = std::find_if(nodes.begin(), nodes.end(), [&](const HIDP_LINK_COLLECTION_NODE& node) {
        return node.LinkUsagePage == wanted.at(0) && node.LinkUsage == wanted.at(1);
    });
    return static_cast<USHORT>(found - nodes.begin());
}

template <typename Function>
NTSTATUS Device::on_report(Arguments& arguments, Function function) {
    Bytes& report = report_of(type(arguments));
    const std::size_t size = report.size();
    const int more = arguments.get("report_length", 0);
    report[0] = arguments.get("report[0]", report[0]);
    report.resize(size + 1);
    const NTSTATUS status = function(report.data(), static_cast<ULONG>(static_cast<int>(size) + more));
    report.resize(size);
    report[0] = report_id_;
    return status;
}

Outcome Device::get_caps(Arguments& arguments) {
    EXPECT_EQ(arguments.get<std::string>("text"), "a zeroed preparsed buffer");
    HIDP_PREPARSED_DATA zeroed{};
    zeroed.magic = 0;
    HIDP_CAPS caps{};
    return {parser_.HidP_GetCaps(&zeroed, &caps)};
}

Outcome Device::get_link_collection_nodes(Arguments& arguments) {
    auto count = arguments.get<ULONG>("count_in");
    std::vector<HIDP_LINK_COLLECTION_NODE> nodes(count);
    const NTSTATUS status = parser_.HidP_GetLinkCollectionNodes(nodes.data(), &count, data_);
    return {status, {{"count_out", count}}};
}

constexpr USHORT enough_caps = 64;

Outcome Device::get_button_caps(Arguments& arguments) {
    auto count = arguments.get("count_in", enough_caps);
    std::vector<HIDP_BUTTON_CAPS> caps(count);
    const NTSTATUS status = parser_.HidP_GetButtonCaps(type(arguments), caps.data(), &count, data_);
    return {status, {{"count_out", count}}};
}

Outcome Device::get_value_caps(Arguments& arguments) {
    auto count = arguments.get("count_in", enough_caps);
    std::vector<HIDP_VALUE_CAPS> caps(count);
    const NTSTATUS status = parser_.HidP_GetValueCaps(type(arguments), caps.data(), &count, data_);
    return {status, {{"count_out", count}}};
}

/// The result "capability" is the place of the first one among all of its kind.
Outcome Device::get_specific_button_caps(Arguments& arguments) {
    USHORT count = enough_caps;
    std::vector<HIDP_BUTTON_CAPS> caps(count);
    const NTSTATUS status =
        parser_.HidP_GetSpecificButtonCaps(type(arguments), page(arguments), link_collection(arguments),
                                           usage(arguments), caps.data(), &count, data_);
    const auto all = collection_.buttons(type(arguments));
    const auto place = std::find_if(all.begin(), all.end(), [&](const HIDP_BUTTON_CAPS& button) {
        return button.Range.DataIndexMin == caps.at(0).Range.DataIndexMin;
    });
    return {status, {{"count_out", count}, {"capability", place - all.begin()}}};
}

Outcome Device::get_specific_value_caps(Arguments& arguments) {
    USHORT count = enough_caps;
    std::vector<HIDP_VALUE_CAPS> caps(count);
    const NTSTATUS status =
        parser_.HidP_GetSpecificValueCaps(type(arguments), page(arguments), link_collection(arguments),
                                          usage(arguments), caps.data(), &count, data_);
    return {status, {{"count_out", count}}};
}

/// Works on a copy, which is full of other bytes.
Outcome Device::initialize_report(Arguments& arguments) {
    const HIDP_REPORT_TYPE wanted = type(arguments);
    Bytes expected = empty_report(wanted);
    Bytes report(expected.size() + 1, 0xCD);
    expected.push_back(0xCD);
    const int length = static_cast<int>(report.size() - 1) + arguments.get("report_length", 0);
    const NTSTATUS status = parser_.HidP_InitializeReportForID(wanted, arguments.get("id", report_id_), data_,
                                                               report.data(), static_cast<ULONG>(length));
    return {status, {{"is_empty", report == expected}}};
}

Outcome Device::max_usage_list_length(Arguments& arguments) {
    return {std::nullopt,
            {{"value", parser_.HidP_MaxUsageListLength(type(arguments), page(arguments), data_)}}};
}

Outcome Device::max_data_list_length(Arguments& arguments) {
    return {std::nullopt, {{"value", parser_.HidP_MaxDataListLength(type(arguments), data_)}}};
}

Outcome Device::set_usages(Arguments& arguments) {
    auto usages = arguments.get<Usages>("usages");
    auto count = static_cast<ULONG>(usages.size());
    return {on_report(arguments, [&](UCHAR* report, ULONG length) {
        return parser_.HidP_SetUsages(type(arguments), page(arguments), link_collection(arguments),
                                      usages.data(), &count, data_, report, length);
    })};
}

Outcome Device::unset_usages(Arguments& arguments) {
    auto usages = arguments.get<Usages>("usages");
    auto count = static_cast<ULONG>(usages.size());
    return {on_report(arguments, [&](UCHAR* report, ULONG length) {
        return parser_.HidP_UnsetUsages(type(arguments), page(arguments), link_collection(arguments),
                                        usages.data(), &count, data_, report, length);
    })};
}

Outcome Device::get_usages(Arguments& arguments) {
    auto count =
        arguments.get("room", parser_.HidP_MaxUsageListLength(type(arguments), page(arguments), data_));
    Usages usages(count);
    const NTSTATUS status = on_report(arguments, [&](UCHAR* report, ULONG length) {
        return parser_.HidP_GetUsages(type(arguments), page(arguments), link_collection(arguments),
                                      usages.data(), &count, data_, report, length);
    });
    usages.resize(count);
    return {status, {{"count_out", count}, {"usages", usages}}};
}

Outcome Device::get_usages_ex(Arguments& arguments) {
    ULONG count = parser_.HidP_MaxUsageListLength(type(arguments), 0, data_);
    std::vector<USAGE_AND_PAGE> usages(count);
    const NTSTATUS status = on_report(arguments, [&](UCHAR* report, ULONG length) {
        return parser_.HidP_GetUsagesEx(type(arguments), link_collection(arguments), usages.data(), &count,
                                        data_, report, length);
    });
    json listed = json::array();
    for (ULONG i = 0; i < count; ++i) {
        listed.push_back({usages[i].UsagePage, usages[i].Usage});
    }
    return {status, {{"usages_ex", listed}}};
}

Outcome Device::set_usage_value(Arguments& arguments) {
    const auto value = arguments.get<ULONG>("value", 1);
    return {on_report(arguments, [&](UCHAR* report, ULONG length) {
        return parser_.HidP_SetUsageValue(type(arguments), page(arguments), link_collection(arguments),
                                          usage(arguments), value, data_, report, length);
    })};
}

Outcome Device::get_usage_value(Arguments& arguments) {
    ULONG value = 0;
    if (arguments.has("report[16..17]")) {
        EXPECT_EQ(arguments.get<std::string>("report[16..17]"), "ff ff");
        std::fill_n(report_of(type(arguments)).begin() + 16, 2, UCHAR{0xFF});
    }
    const NTSTATUS status = on_report(arguments, [&](UCHAR* report, ULONG length) {
        return parser_.HidP_GetUsageValue(type(arguments), page(arguments), link_collection(arguments),
                                          usage(arguments), &value, data_, report, length);
    });
    if (status == HIDP_STATUS_SUCCESS) {
        EXPECT_EQ(value, arguments.get("value", value));
    }
    return {status, {{"value", value}}};
}

Outcome Device::set_usage_value_array(Arguments& arguments) {
    const Bytes values = reference::counted(arguments.get<std::size_t>("length", 8));
    return {on_report(arguments, [&](UCHAR* report, ULONG length) {
        return parser_.HidP_SetUsageValueArray(type(arguments), page(arguments), link_collection(arguments),
                                               usage(arguments), values.data(),
                                               static_cast<USHORT>(values.size()), data_, report, length);
    })};
}

/// The results are what then reads back.
Outcome Device::set_scaled_usage_value(Arguments& arguments) {
    const HIDP_REPORT_TYPE of_type = type(arguments);
    const USAGE of_page = page(arguments);
    const USHORT link = link_collection(arguments);
    const USAGE which = usage(arguments);
    const auto value = arguments.get<LONG>("scaled");
    ULONG raw = 0;
    LONG scaled = 0;
    const NTSTATUS status = on_report(arguments, [&](UCHAR* report, ULONG length) {
        const NTSTATUS set =
            parser_.HidP_SetScaledUsageValue(of_type, of_page, link, which, value, data_, report, length);
        parser_.HidP_GetUsageValue(of_type, of_page, link, which, &raw, data_, report, length);
        parser_.HidP_GetScaledUsageValue(of_type, of_page, link, which, &scaled, data_, report, length);
        return set;
    });
    return {status, {{"raw", raw}, {"scaled", scaled}}};
}

Outcome Device::get_scaled_usage_value(Arguments& arguments) {
    const auto raw = arguments.get<ULONG>("raw");
    LONG scaled = 0;
    const NTSTATUS status = on_report(arguments, [&](UCHAR* report, ULONG length) {
        EXPECT_EQ(parser_.HidP_SetUsageValue(type(arguments), page(arguments), link_collection(arguments),
                                             usage(arguments), raw, data_, report, length),
                  HIDP_STATUS_SUCCESS);
        return parser_.HidP_GetScaledUsageValue(type(arguments), page(arguments), link_collection(arguments),
                                                usage(arguments), &scaled, data_, report, length);
    });
    return {status, {{"scaled", scaled}}};
}

std::vector<HIDP_DATA> Device::data_of(HIDP_REPORT_TYPE type) {
    ULONG count = parser_.HidP_MaxDataListLength(type, data_);
    std::vector<HIDP_DATA> list(count);
    const Bytes& report = report_of(type);
    EXPECT_EQ(parser_.HidP_GetData(type, list.data(), &count, data_, report.data(),
                                   static_cast<ULONG>(report.size())),
              HIDP_STATUS_SUCCESS);
    list.resize(count);
    return list;
}

Outcome Device::get_data(Arguments& arguments) {
    auto count = arguments.get<ULONG>("room");
    std::vector<HIDP_DATA> list(count);
    const NTSTATUS status = on_report(arguments, [&](UCHAR* report, ULONG length) {
        return parser_.HidP_GetData(type(arguments), list.data(), &count, data_, report, length);
    });
    list.resize(std::min<std::size_t>(count, list.size()));
    return {status, {{"count_out", count}, {"data", pairs(list)}}};
}

Outcome Device::set_data(Arguments& arguments) {
    std::vector<HIDP_DATA> list(arguments.get<std::size_t>("count", 0));
    for (const json& control : arguments.get<json>("data", json::array())) {
        list.push_back({control.at(0).get<USHORT>(), 0, {control.at(1).get<ULONG>()}});
    }
    auto count = static_cast<ULONG>(list.size());
    const NTSTATUS status = on_report(arguments, [&](UCHAR* report, ULONG length) {
        return parser_.HidP_SetData(type(arguments), list.data(), &count, data_, report, length);
    });
    const bool is_listed_again = pairs(data_of(type(arguments))) == pairs(list);
    return {status, {{"count_out", count}, {"is_listed_again", is_listed_again}}};
}

/// Without and with report ids.
class WineExpectations : public testing::TestWithParam<int> {};

TEST_P(WineExpectations, Hold) {
    SKIP_WITHOUT_REFERENCE_DATA();
    const json record = reference::load_one("wine/wine_A_report_id_" + std::to_string(GetParam()));
    Device device(record);
    for (const Step& step : reference::steps(record)) {
        SCOPED_TRACE("expectation " + std::to_string(step.number) + ": " + step.call + " " +
                     step.arguments.dump());
        device.make(step);
    }
}

INSTANTIATE_TEST_SUITE_P(ReportId, WineExpectations, testing::Values(0, 1),
                         testing::PrintToStringParamName());

TEST(WineRecords, WithExpectationsAreTheseTwo) {
    SKIP_WITHOUT_REFERENCE_DATA();
    std::vector<std::string> names;
    for (const auto& record : reference::load("wine")) {
        if (record.data.contains("expectations")) {
            names.push_back(record.name);
        }
    }
    EXPECT_EQ(names, (std::vector<std::string>{"wine/wine_A_report_id_0", "wine/wine_A_report_id_1"}));
}

}  // namespace
