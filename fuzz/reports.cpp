// Reports of any descriptor, encoded and decoded: what is set reads back, what is read is bounded.
#include <algorithm>
#include <array>

#include "fuzz/check.h"
#include "fuzz/input.h"
#include "platform/hidp/hidp.h"

using namespace platform;
using fuzz::Bytes;
using fuzz::check;
using fuzz::Input;

namespace {

constexpr std::size_t most_collections = 8;
constexpr int most_operations = 64;

/// One direction of one collection, with a report that the operations work on.
struct Reports {
    PHIDP_PREPARSED_DATA data;
    HIDP_REPORT_TYPE type;
    Bytes report;

    ULONG length() const { return static_cast<ULONG>(report.size()); }
};

/// A control that the collection has, or the page and usage that come next.
struct Control {
    USAGE page;
    USAGE usage;
    USHORT link_collection;
};

template <typename Caps, typename List>
std::vector<Caps> all_caps(const Reports& reports, const List& list) {
    USHORT count = 0;
    list(reports.type, nullptr, &count, reports.data);
    std::vector<Caps> caps(count);
    const NTSTATUS status = list(reports.type, caps.data(), &count, reports.data);
    check(caps.empty() || status == HIDP_STATUS_SUCCESS, "what was counted is listed");
    return caps;
}

std::vector<HIDP_BUTTON_CAPS> buttons(const Reports& reports) {
    return all_caps<HIDP_BUTTON_CAPS>(
        reports, [](auto... arguments) { return hidp::parser().HidP_GetButtonCaps(arguments...); });
}

std::vector<HIDP_VALUE_CAPS> values(const Reports& reports) {
    return all_caps<HIDP_VALUE_CAPS>(
        reports, [](auto... arguments) { return hidp::parser().HidP_GetValueCaps(arguments...); });
}

template <typename Caps>
Control choose(Input& input, const std::vector<Caps>& caps) {
    const std::uint8_t choice = input.byte();
    if (caps.empty() || choice == 0xFF) {
        return {input.word(), input.word(), input.word()};
    }
    const Caps& cap = caps[choice % caps.size()];
    const unsigned usages = cap.Range.UsageMax - cap.Range.UsageMin + 1U;
    const auto usage = static_cast<USAGE>(cap.Range.UsageMin + input.byte() % usages);
    return {cap.UsagePage, usage, input.byte() % 4 == 0 ? cap.LinkCollection : USHORT{0}};
}

bool contains(std::span<const USAGE> usages, USAGE usage) {
    return std::find(usages.begin(), usages.end(), usage) != usages.end();
}

/// The usages of a page that are set. A list of the longest length always has room.
std::vector<USAGE> pressed(const Reports& reports, USAGE page, USHORT link_collection) {
    ULONG count = hidp::parser().HidP_MaxUsageListLength(reports.type, page, reports.data);
    std::vector<USAGE> usages(count);
    const NTSTATUS status =
        hidp::parser().HidP_GetUsages(reports.type, page, link_collection, usages.data(), &count,
                                      reports.data, reports.report.data(), reports.length());
    check(status != HIDP_STATUS_BUFFER_TOO_SMALL, "the longest list has room for every usage");
    usages.resize(status == HIDP_STATUS_SUCCESS ? count : 0);
    return usages;
}

void set_button(Reports& reports, Input& input) {
    Control control = choose(input, buttons(reports));
    const Bytes before = reports.report;
    ULONG count = 1;
    const NTSTATUS status =
        hidp::parser().HidP_SetUsages(reports.type, control.page, control.link_collection, &control.usage,
                                      &count, reports.data, reports.report.data(), reports.length());
    if (status != HIDP_STATUS_SUCCESS) {
        const bool is_about_report =
            status == HIDP_STATUS_INVALID_REPORT_LENGTH || status == HIDP_STATUS_REPORT_DOES_NOT_EXIST;
        check(is_about_report || count == 0, "the usage that failed is named");
        check(reports.report == before || status == HIDP_STATUS_BUFFER_TOO_SMALL,
              "a report that could not be changed is as it was");
    } else if (control.usage != 0) {
        check(contains(pressed(reports, control.page, control.link_collection), control.usage),
              "a button that was set is listed");
    }
}

void unset_button(Reports& reports, Input& input) {
    Control control = choose(input, buttons(reports));
    ULONG count = 1;
    hidp::parser().HidP_UnsetUsages(reports.type, control.page, control.link_collection, &control.usage,
                                    &count, reports.data, reports.report.data(), reports.length());
}

void set_several(Reports& reports, Input& input) {
    const Control control = choose(input, buttons(reports));
    std::array<USAGE, 4> usages{control.usage, static_cast<USAGE>(control.usage + 1), 0, input.word()};
    auto count = static_cast<ULONG>(usages.size());
    const bool set = input.byte() % 2 == 0;
    const Bytes before = reports.report;
    const auto& parser = hidp::parser();
    const NTSTATUS status =
        set ? parser.HidP_SetUsages(reports.type, control.page, control.link_collection, usages.data(),
                                    &count, reports.data, reports.report.data(), reports.length())
            : parser.HidP_UnsetUsages(reports.type, control.page, control.link_collection, usages.data(),
                                      &count, reports.data, reports.report.data(), reports.length());
    check(count <= usages.size(), "the place of a failure is in the list");
    check(status == HIDP_STATUS_SUCCESS || status == HIDP_STATUS_BUFFER_TOO_SMALL ||
              status == HIDP_STATUS_BUTTON_NOT_PRESSED || reports.report == before,
          "a list is applied whole or not at all");
}

void use_value(Reports& reports, Input& input) {
    const Control control = choose(input, values(reports));
    const ULONG wanted = input.word() | ULONG{input.word()} << 16;
    const auto& parser = hidp::parser();
    const NTSTATUS status =
        parser.HidP_SetUsageValue(reports.type, control.page, control.link_collection, control.usage, wanted,
                                  reports.data, reports.report.data(), reports.length());
    ULONG value = 0;
    const NTSTATUS read =
        parser.HidP_GetUsageValue(reports.type, control.page, control.link_collection, control.usage, &value,
                                  reports.data, reports.report.data(), reports.length());
    check(status == read, "what can be written can be read");
    check(read != HIDP_STATUS_SUCCESS || (value & wanted) == value, "a value reads back, cut to its field");
    LONG scaled = 0;
    parser.HidP_GetScaledUsageValue(reports.type, control.page, control.link_collection, control.usage,
                                    &scaled, reports.data, reports.report.data(), reports.length());
}

void use_value_array(Reports& reports, Input& input) {
    const Control control = choose(input, values(reports));
    Bytes values = input.bytes(input.byte());
    const auto size = static_cast<USHORT>(values.size());
    const auto& parser = hidp::parser();
    const NTSTATUS status = parser.HidP_SetUsageValueArray(
        reports.type, control.page, control.link_collection, control.usage, values.data(), size, reports.data,
        reports.report.data(), reports.length());
    Bytes read(size);
    const NTSTATUS read_status = parser.HidP_GetUsageValueArray(
        reports.type, control.page, control.link_collection, control.usage, read.data(), size, reports.data,
        reports.report.data(), reports.length());
    check(status == read_status, "an array that can be written can be read");
    if (status == HIDP_STATUS_SUCCESS) {
        const Bytes before = reports.report;
        parser.HidP_SetUsageValueArray(reports.type, control.page, control.link_collection, control.usage,
                                       read.data(), size, reports.data, reports.report.data(),
                                       reports.length());
        check(reports.report == before, "writing what was read changes nothing");
    }
}

void set_scaled_value(Reports& reports, Input& input) {
    const Control control = choose(input, values(reports));
    const auto wanted = static_cast<LONG>(input.word() | ULONG{input.word()} << 16);
    const Bytes before = reports.report;
    const NTSTATUS status = hidp::parser().HidP_SetScaledUsageValue(
        reports.type, control.page, control.link_collection, control.usage, wanted, reports.data,
        reports.report.data(), reports.length());
    check(status == HIDP_STATUS_SUCCESS || reports.report == before,
          "a report that a scaled value does not go into is as it was");
}

/// What the report holds; a list of the longest length always has room.
std::vector<HIDP_DATA> data_of(const Reports& reports) {
    ULONG count = hidp::parser().HidP_MaxDataListLength(reports.type, reports.data);
    std::vector<HIDP_DATA> list(count);
    const NTSTATUS status = hidp::parser().HidP_GetData(reports.type, list.data(), &count, reports.data,
                                                        reports.report.data(), reports.length());
    check(status != HIDP_STATUS_BUFFER_TOO_SMALL, "the longest list has room for all data");
    list.resize(status == HIDP_STATUS_SUCCESS ? count : 0);
    return list;
}

NTSTATUS set_data(Reports& reports, const HIDP_DATA& control) {
    ULONG count = 1;
    return hidp::parser().HidP_SetData(reports.type, &control, &count, reports.data, reports.report.data(),
                                       reports.length());
}

bool is_same(const HIDP_DATA& left, const HIDP_DATA& right) {
    return left.DataIndex == right.DataIndex && left.RawValue == right.RawValue;
}

template <typename Caps>
const Caps* find_index(const std::vector<Caps>& all, USHORT index) {
    const auto found = std::find_if(all.begin(), all.end(), [&](const Caps& caps) {
        return !caps.IsAlias && caps.Range.DataIndexMin <= index && index <= caps.Range.DataIndexMax;
    });
    return found == all.end() ? nullptr : &*found;
}

void check_is_listed(const Reports& reports, const HIDP_DATA& control) {
    const auto data = data_of(reports);
    const auto lists = [&](const HIDP_DATA& wanted) {
        return std::any_of(data.begin(), data.end(),
                           [&](const HIDP_DATA& each) { return is_same(each, wanted); });
    };
    const auto all_values = values(reports);
    if (const HIDP_VALUE_CAPS* value = find_index(all_values, control.DataIndex)) {
        const unsigned bits = std::min<unsigned>(value->BitSize, 32);
        const ULONG mask = bits == 0 ? 0 : 0xFFFFFFFF >> (32 - bits);
        check(bits == 0 || lists({control.DataIndex, 0, {control.RawValue & mask}}),
              "a value that was set is listed, cut to its field");
    } else {
        check(control.On == 0 || lists({control.DataIndex, 0, {1}}), "a button that was set is listed");
    }
}

void set_control(Reports& reports, Input& input) {
    HIDP_DATA control{};
    control.DataIndex = static_cast<USHORT>(input.byte() == 0 ? input.word() : input.byte());
    control.RawValue = input.word() * 0x10001U;
    const Bytes before = reports.report;
    if (set_data(reports, control) == HIDP_STATUS_SUCCESS) {
        check_is_listed(reports, control);
    } else {
        check(reports.report == before, "a report that a control could not be set in is as it was");
    }
}

/// Writes what the report holds into an empty one, unless it may still become any report, whose controls
/// would exclude each other.
void copy_data(Reports& reports, Input&) {
    auto data = data_of(reports);
    if (data.empty() || (hidp::has_report_ids(reports.data) && reports.report[0] == 0)) {
        return;
    }
    Reports copy{reports.data, reports.type, Bytes(reports.report.size())};
    copy.report[0] = reports.report[0];
    const auto cannot_be_set = [&](const HIDP_DATA& control) {
        const NTSTATUS status = set_data(copy, control);
        check(status == HIDP_STATUS_SUCCESS || status == HIDP_STATUS_IS_VALUE_ARRAY,
              "what is listed can be set");
        return status != HIDP_STATUS_SUCCESS;
    };
    data.erase(std::remove_if(data.begin(), data.end(), cannot_be_set), data.end());
    const auto copied = data_of(copy);
    check(std::equal(copied.begin(), copied.end(), data.begin(), data.end(), is_same),
          "what was set is listed, and nothing else");
}

/// The buttons of every page are those of each page, in the same order.
void list_pressed_of_all_pages(Reports& reports, Input& input) {
    ULONG count = hidp::parser().HidP_MaxUsageListLength(reports.type, 0, reports.data);
    std::vector<USAGE_AND_PAGE> all(count);
    const NTSTATUS status = hidp::parser().HidP_GetUsagesEx(reports.type, 0, all.data(), &count, reports.data,
                                                            reports.report.data(), reports.length());
    check(status != HIDP_STATUS_BUFFER_TOO_SMALL, "the longest list has room for the usages of all pages");
    all.resize(status == HIDP_STATUS_SUCCESS ? count : 0);
    const USAGE page = choose(input, buttons(reports)).page;
    std::vector<USAGE> of_page;
    for (const USAGE_AND_PAGE& each : all) {
        if (each.UsagePage == page) {
            of_page.push_back(each.Usage);
        }
    }
    check(of_page == pressed(reports, page, 0), "every page lists the same alone and with the others");
}

template <typename Caps>
bool is_wanted(const Caps& caps, const Control& control) {
    return caps.UsagePage == control.page && caps.Range.UsageMin <= control.usage &&
           control.usage <= caps.Range.UsageMax &&
           (control.link_collection == 0 || caps.LinkCollection == control.link_collection);
}

template <typename Caps, typename List>
void check_specific_caps(const std::vector<Caps>& all, const Control& control, const List& list) {
    const bool is_any_or_root = control.page == 0 || control.usage == 0 || control.link_collection == 0xFFFF;
    if (is_any_or_root) {
        return;
    }
    std::vector<Caps> found(all.size());
    auto count = static_cast<USHORT>(found.size());
    list(control, found.data(), &count);
    const auto wanted =
        std::count_if(all.begin(), all.end(), [&](const Caps& caps) { return is_wanted(caps, control); });
    check(count == wanted, "all capabilities that are asked for are listed");
    for (USHORT i = 0; i < count; ++i) {
        check(is_wanted(found[i], control), "no other capability is listed");
    }
}

void list_specific_caps(Reports& reports, Input& input) {
    const auto& parser = hidp::parser();
    const auto all_buttons = buttons(reports);
    check_specific_caps(all_buttons, choose(input, all_buttons),
                        [&](const Control& control, HIDP_BUTTON_CAPS* caps, USHORT* count) {
                            parser.HidP_GetSpecificButtonCaps(reports.type, control.page,
                                                              control.link_collection, control.usage, caps,
                                                              count, reports.data);
                        });
    const auto all_values = values(reports);
    check_specific_caps(all_values, choose(input, all_values),
                        [&](const Control& control, HIDP_VALUE_CAPS* caps, USHORT* count) {
                            parser.HidP_GetSpecificValueCaps(reports.type, control.page,
                                                             control.link_collection, control.usage, caps,
                                                             count, reports.data);
                        });
}

void replace_report(Reports& reports, Input& input) {
    const std::size_t size = reports.report.size() + (input.byte() == 0xFF ? 1 : 0);
    reports.report = input.bytes(size);
}

void initialize(Reports& reports, Input& input) {
    hidp::parser().HidP_InitializeReportForID(reports.type, input.byte(), reports.data, reports.report.data(),
                                              reports.length());
}

void list_pressed(Reports& reports, Input& input) {
    const Control control = choose(input, buttons(reports));
    pressed(reports, control.page, control.link_collection);
}

constexpr std::array operations = {set_button,        unset_button,   set_several, use_value,
                                   use_value_array,   replace_report, initialize,  list_pressed,
                                   set_scaled_value,  set_control,    copy_data,   list_pressed_of_all_pages,
                                   list_specific_caps};

void use(PHIDP_PREPARSED_DATA data, Input input) {
    HIDP_CAPS caps{};
    check(hidp::parser().HidP_GetCaps(data, &caps) == HIDP_STATUS_SUCCESS, "a parsed collection has caps");
    std::array reports{Reports{data, HidP_Input, Bytes(caps.InputReportByteLength)},
                       Reports{data, HidP_Output, Bytes(caps.OutputReportByteLength)},
                       Reports{data, HidP_Feature, Bytes(caps.FeatureReportByteLength)}};
    for (int i = 0; i < most_operations && !input.is_empty(); ++i) {
        const std::uint8_t choice = input.byte();
        operations[choice % operations.size()](reports[choice / operations.size() % reports.size()], input);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input({data, size});
    const Bytes descriptor = input.block();
    const auto parsed = hidp::parse(descriptor);
    for (std::size_t i = 0; i < std::min(parsed.collections.size(), most_collections); ++i) {
        use(parsed.collections[i].get(), input);
    }
    return 0;
}
