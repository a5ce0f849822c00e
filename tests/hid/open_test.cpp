#include <cstring>
#include <functional>
#include <gtest/gtest.h>

#include "tests/hid/hid_fixture.h"

namespace platform::hid_test {
namespace {

using namespace virtual_headsets;
using headset_plugin::hid_last_error;
using headset_plugin::hid_list;
using headset_plugin::hid_open_handle;
using headset_plugin::HidEnumeration;
using virtual_platform::HeadsetDescription;

/// One input button, one input value, one output button, one output value, each in a report of its own.
Bytes every_kind() {
    return telephony({
        report_id(1),         usage(0x2F),          input(variable), report_count(7), input(constant),   //
        report_id(2),         usage_page(led_page), usage(0x17),     report_count(1), output(variable),  //
        report_count(7),      output(constant),                                                          //
        logical_maximum(100), report_size(8),       report_count(1),                                     //
        report_id(3),         usage(0x33),          input(variable), report_id(4),    usage(0x34),
        output(variable)  //
    });
}

std::vector<const hid_device_info*> entries(const HidEnumeration& list) {
    std::vector<const hid_device_info*> all;
    for (const hid_device_info* entry = list.get(); entry != nullptr; entry = entry->next) {
        all.push_back(entry);
    }
    return all;
}

class HidList : public HidFixture {};
class HidOpen : public HidFixture {};
class HidOpenByIds : public HidFixture {};

// ---- enumeration

TEST_F(HidList, has_an_entry_for_every_top_level_collection) {
    plug_model(bus(), "jabra-link-380c");
    const HidEnumeration list = hid_list(0, 0);
    const auto all = entries(list);
    ASSERT_EQ(all.size(), 3U);
    const std::pair<int, int> usages[] = {{0x0B, 0x05}, {0xFF00, 0x01}, {0x0C, 0x01}};
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ((std::pair<int, int>(all[i]->usage_page, all[i]->usage)), usages[i]);
        EXPECT_NE(std::strstr(all[i]->path, ("col0" + std::to_string(i + 1)).c_str()), nullptr)
            << all[i]->path;
    }
}

TEST_F(HidList, tells_what_the_headset_says_of_itself) {
    plug(bus(), described(every_kind()));
    const HidEnumeration list = hid_list(0, 0);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->vendor_id, 0x0B0E);
    EXPECT_EQ(list->product_id, 0x1234);
    EXPECT_STREQ(list->serial_number, L"SN1");
    EXPECT_EQ(list->release_number, 0x0100);
    EXPECT_STREQ(list->manufacturer_string, L"Maker");
    EXPECT_STREQ(list->product_string, L"Headset");
    EXPECT_EQ(list->interface_number, 0);
    EXPECT_EQ(list->bus_type, HID_API_BUS_USB);
    EXPECT_EQ(list->next, nullptr);
}

TEST_F(HidList, leaves_a_string_null_that_the_headset_does_not_have) {
    HeadsetDescription nameless = described(every_kind());
    nameless.manufacturer.reset();
    nameless.product.reset();
    nameless.serial.reset();
    plug(bus(), nameless);
    const HidEnumeration list = hid_list(0, 0);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->serial_number, nullptr);
    EXPECT_EQ(list->manufacturer_string, nullptr);
    EXPECT_EQ(list->product_string, nullptr);
}

TEST_F(HidList, is_limited_to_the_ids_asked_for_and_zero_is_any) {
    plug_model(bus(), "epos-impact-d");
    plug_model(bus(), "sennheiser-sc-660");
    plug(bus(), described(every_kind()));
    struct Row {
        std::uint16_t vendor_id;
        std::uint16_t product_id;
        std::size_t headsets;
    };
    for (const Row& row : {Row{0, 0, 3}, Row{0x1395, 0, 2}, Row{0x1395, 0x0082, 1}, Row{0, 0x1234, 1},
                           Row{0x0B0E, 0x0082, 0}}) {
        const HidEnumeration list = hid_list(row.vendor_id, row.product_id);
        const auto all = entries(list);
        const auto telephony_entries = std::count_if(
            all.begin(), all.end(), [](const auto* entry) { return entry->usage_page == telephony_page; });
        EXPECT_EQ(static_cast<std::size_t>(telephony_entries), row.headsets)
            << row.vendor_id << ", " << row.product_id;
    }
}

TEST_F(HidList, is_empty_with_a_reason_when_there_is_no_headset) {
    EXPECT_EQ(hid_list(0, 0), nullptr);
    EXPECT_EQ(hid_last_error(nullptr), L"No HID devices found in the system.");
}

TEST_F(HidList, is_empty_with_the_systems_reason_when_access_cannot_be_had) {
    plug(bus(), described(every_kind()));
    platform_.script.init_error = L"no library";
    EXPECT_EQ(hid_list(0, 0), nullptr);
    EXPECT_EQ(hid_last_error(nullptr), L"no library");
}

TEST_F(HidList, passes_begin_and_end_of_access_on_to_the_platform) {
    EXPECT_TRUE(headset_plugin::hid_access_init());
    EXPECT_EQ(platform_.asked.initialised, 1);
    headset_plugin::hid_access_exit();
    EXPECT_EQ(platform_.asked.exited, 1);
}

// ---- opening a path

TEST_F(HidOpen, logs_every_step_in_order) {
    const int headset = plug(bus(), described(every_kind()));
    const HidHandle handle = hid_open_handle(path_of(bus(), headset).c_str());
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(log_->lines(),
              lines("hid_open_path",
                    {"pp_data fetched successfully",
                     "caps fetched successfully, OutputReportByteLength=2, InputReportByteLength=2, "
                     "NumberOutputButtonCaps=1, NumberInputButtonCaps=1, NumberOutputValueCaps=1, "
                     "NumberInputValueCaps=1",
                     "query_device_info start", "query_device_info end"}));
}

TEST_F(HidOpen, logs_each_number_in_its_own_place) {
    // Report lengths 2 and 3; 1 and 2 output, 3 and 4 input capabilities.
    const Bytes unlike = telephony({
        usage(0x20),      usage(0x21),
        usage(0x2F),      report_count(3),
        input(variable),  report_count(5),
        input(constant),  usage_page(led_page),
        usage(0x17),      report_count(1),
        output(variable), report_count(7),
        output(constant), logical_maximum(15),
        report_size(2),   usage(1),
        usage(2),         usage(3),
        usage(4),         report_count(4),
        input(variable),  report_size(4),
        usage(5),         usage(6),
        report_count(2),  output(variable),
        report_size(8),   report_count(1),
        output(constant),
    });
    const int headset = plug(bus(), described(unlike));
    const HidHandle handle = hid_open_handle(path_of(bus(), headset).c_str());
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(
        log_->count(line("hid_open_path",
                         "caps fetched successfully, OutputReportByteLength=4, InputReportByteLength=3, "
                         "NumberOutputButtonCaps=1, NumberInputButtonCaps=3, NumberOutputValueCaps=2, "
                         "NumberInputValueCaps=4")),
        1U);
    EXPECT_EQ(handle->output_report_length, 4);
    EXPECT_EQ(handle->input_report_length, 3);
    EXPECT_EQ(handle->number_output_button_caps, 1);
    EXPECT_EQ(handle->number_input_button_caps, 3);
    EXPECT_EQ(handle->number_output_value_caps, 2);
    EXPECT_EQ(handle->number_input_value_caps, 4);
    EXPECT_EQ(handle->caps.UsagePage, telephony_page);
    EXPECT_EQ(headset_plugin::hid_output_report_length(handle.get()), 4U);
}

TEST_F(HidOpen, keeps_the_parsed_descriptor_until_the_last_owner_lets_go) {
    HidHandle handle = open(every_kind());
    const HidHandle share = handle;
    EXPECT_EQ(platform_.asked.preparsed_data_held, 1);
    handle.reset();
    EXPECT_EQ(platform_.asked.interfaces_open, 1);
    EXPECT_EQ(platform_.asked.preparsed_data_held, 1);
}

TEST_F(HidOpen, asks_for_sixty_four_input_buffers) {
    const HidHandle handle = open(every_kind());
    EXPECT_EQ(platform_.asked.input_buffers, 64U);
}

TEST_F(HidOpen, starts_in_blocking_mode) {
    EXPECT_EQ(headset_plugin::hid_read_mode_timeout(open(every_kind()).get()), no_timeout);
}

TEST_F(HidOpen, numbers_handles_and_no_handle_is_zero) {
    const HidHandle first = open(every_kind());
    const HidHandle second = open_plugged(headset_);
    EXPECT_GT(headset_plugin::hid_handle_number(first.get()), 0);
    EXPECT_GT(headset_plugin::hid_handle_number(second.get()),
              headset_plugin::hid_handle_number(first.get()));
    EXPECT_EQ(headset_plugin::hid_handle_number(nullptr), 0);
}

TEST_F(HidOpen, fails_for_a_path_that_does_not_exist) {
    EXPECT_EQ(hid_open_handle("virtual-0#col01"), nullptr);
    EXPECT_EQ(hid_last_error(nullptr), L"CreateFile: The system cannot find the device specified.");
    EXPECT_TRUE(log_->lines().empty());
}

/// A step that fails, the last error that it leaves and the lines that were logged before.
struct FailingStep {
    const char* name;
    std::function<void(Script&, ScriptedParser&)> prepare;
    const wchar_t* error;
    std::size_t lines_before;
};

std::function<void(Script&, ScriptedParser&)> parser_fails(std::string_view function, HIDP_REPORT_TYPE type) {
    return [=](Script&, ScriptedParser& parser) { parser.failing = {.function = function, .type = type}; };
}

/// The value capabilities of one usage become ranges that run backwards.
std::function<void(Script&, ScriptedParser&)> range_reversed(USAGE usage) {
    return [=](Script&, ScriptedParser& parser) {
        parser.edit_value_caps = [=](std::span<HIDP_VALUE_CAPS> caps) {
            for (HIDP_VALUE_CAPS& cap : caps) {
                if (cap.NotRange.Usage == usage) {
                    cap.IsRange = 1;
                    cap.Range.UsageMin = static_cast<USAGE>(usage + 1);
                }
            }
        };
    };
}

const FailingStep failing_steps[] = {
    {"access", [](Script& script, ScriptedParser&) { script.init_error = L"no library"; }, L"no library", 0},
    {"device refuses", [](Script& script, ScriptedParser&) { script.open_error = L"Access is denied."; },
     L"CreateFile: Access is denied.", 0},
    {"device refuses without a reason", [](Script& script, ScriptedParser&) { script.open_error = L""; },
     L"CreateFile", 0},
    {"input buffers", [](Script& script, ScriptedParser&) { script.refuse_input_buffers = true; },
     L"HidD_SetNumInputBuffers", 0},
    {"preparsed data", [](Script& script, ScriptedParser&) { script.refuse_preparsed_data = true; },
     L"HidD_GetPreparsedData", 0},
    {"capabilities", parser_fails("HidP_GetCaps", HidP_Input), L"HidP_GetCaps", 1},
    {"input buttons", parser_fails("HidP_GetButtonCaps", HidP_Input), L"HidP_GetButtonCaps for input", 3},
    {"input values", parser_fails("HidP_GetValueCaps", HidP_Input), L"HidP_GetValueCaps for input", 3},
    {"input range", range_reversed(0x33),
     L"Range.UsageMin > Range.UsageMax after HidP_GetValueCaps for input", 3},
    {"output buttons", parser_fails("HidP_GetButtonCaps", HidP_Output), L"HidP_GetButtonCaps for output", 3},
    {"output values", parser_fails("HidP_GetValueCaps", HidP_Output), L"HidP_GetValueCaps for output", 3},
    {"output range", range_reversed(0x34),
     L"Range.UsageMin > Range.UsageMax after HidP_GetValueCaps for output", 3},
};

TEST_F(HidOpen, that_fails_at_any_step_tells_which_and_leaves_nothing_open) {
    const std::string path = path_of(bus(), plug(bus(), described(every_kind())));
    for (const FailingStep& step : failing_steps) {
        SCOPED_TRACE(step.name);
        parser_ = {};
        platform_.script = {};
        step.prepare(platform_.script, script_parser());
        log_->clear();
        EXPECT_EQ(hid_open_handle(path.c_str()), nullptr);
        EXPECT_EQ(hid_last_error(nullptr), step.error);
        EXPECT_EQ(log_->lines().size(), step.lines_before);
        EXPECT_EQ(platform_.asked.interfaces_open, 0);
        EXPECT_EQ(platform_.asked.preparsed_data_held, 0);
    }
}

TEST_F(HidOpen, works_again_once_the_failure_is_over) {
    platform_.script.refuse_preparsed_data = true;
    const int headset = plug(bus(), described(every_kind()));
    ASSERT_EQ(hid_open_handle(path_of(bus(), headset).c_str()), nullptr);
    platform_.script = {};
    EXPECT_NE(open_plugged(headset), nullptr);
}

TEST_F(HidOpen, says_what_the_device_is_once_it_answers) {
    const HidHandle handle = open(every_kind());
    platform_.script.refuse_info = true;
    EXPECT_EQ(headset_plugin::hid_info(handle.get()), nullptr);
    EXPECT_EQ(hid_last_error(handle.get()), L"The device does not say what it is.");
    platform_.script.refuse_info = false;
    EXPECT_NE(headset_plugin::hid_info(handle.get()), nullptr);
}

TEST_F(HidOpen, needs_hidapi_whose_version_can_be_asked_for) {
    EXPECT_EQ(headset_plugin::hid_access_version().text, "1.2.3");
    platform_.script.init_error = L"no library";
    EXPECT_EQ(headset_plugin::hid_access_version().text, HID_API_VERSION_STR);
}

// ---- opening by ids

TEST_F(HidOpenByIds, prefers_the_telephony_collection_wherever_it_stands) {
    plug_model(bus(), "logitech-mx-brio");  // there it is the last of six
    const HidHandle handle = hid_open_handle(0x046D, 0x0944, std::nullopt);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(handle->caps.UsagePage, telephony_page);
}

TEST_F(HidOpenByIds, takes_the_first_collection_where_there_is_no_telephony) {
    plug_model(bus(), "logitech-g535");
    const HidHandle handle = hid_open_handle(0x046D, 0x0AC4, std::nullopt);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(handle->caps.UsagePage, 0x0C);
}

TEST_F(HidOpenByIds, takes_the_first_headset_also_where_a_later_one_has_telephony) {
    HeadsetDescription first = described(*find_model("logitech-g535"));  // without telephony
    HeadsetDescription later = described(every_kind());
    later.vendor_id = first.vendor_id;
    later.product_id = first.product_id;
    for (const bool with_serial_numbers : {true, false}) {
        bus().reset();
        if (!with_serial_numbers) {
            first.serial.reset();
            later.serial.reset();
        }
        plug(bus(), first);
        plug(bus(), later);
        const HidHandle handle = hid_open_handle(first.vendor_id, first.product_id, std::nullopt);
        ASSERT_NE(handle, nullptr);
        EXPECT_EQ(handle->caps.UsagePage, 0x0C);
    }
}

TEST_F(HidOpenByIds, takes_a_telephony_collection_that_another_interface_of_the_headset_has) {
    HeadsetDescription consumer = described(*find_model("logitech-g535"));
    HeadsetDescription telephony_interface = described(every_kind());
    telephony_interface.vendor_id = consumer.vendor_id;
    telephony_interface.product_id = consumer.product_id;
    telephony_interface.serial = consumer.serial;
    plug(bus(), consumer);
    plug(bus(), telephony_interface);
    const HidHandle handle = hid_open_handle(consumer.vendor_id, consumer.product_id, std::nullopt);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(handle->caps.UsagePage, telephony_page);
}

TEST_F(HidOpenByIds, takes_any_product_of_the_first_vendor_where_no_ids_are_given) {
    plug_model(bus(), "logitech-g535");
    plug_model(bus(), "jabra-link-380c");
    const HidHandle handle = hid_open_handle(0, 0, std::nullopt);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(handle->caps.UsagePage, 0x0C);
}

TEST_F(HidOpenByIds, tells_headsets_of_one_model_apart_by_serial_number) {
    HeadsetDescription description = described(every_kind());
    plug(bus(), description);
    description.serial = "SN2";
    const int second = plug(bus(), description);
    const HidHandle handle = hid_open_handle(0x0B0E, 0x1234, L"SN2");
    ASSERT_NE(handle, nullptr);
    ASSERT_EQ(bus().press(second, phone_mute), "");
    Bytes report(2);
    EXPECT_EQ(headset_plugin::hid_read_report(handle.get(), report, std::chrono::milliseconds{0}), 2);
}

TEST_F(HidOpenByIds, fails_where_no_headset_matches) {
    HeadsetDescription without_serial = described(every_kind());
    without_serial.serial.reset();
    plug(bus(), without_serial);
    struct Row {
        std::uint16_t vendor_id;
        std::optional<std::wstring_view> serial;
    };
    for (const Row& row : {Row{0x0B0F, std::nullopt}, Row{0x0B0E, L"SN1"}, Row{0x0B0E, L""}}) {
        headset_plugin::hid_set_error(nullptr, L"");
        EXPECT_EQ(hid_open_handle(row.vendor_id, 0x1234, row.serial), nullptr);
        EXPECT_EQ(hid_last_error(nullptr), L"Device with requested VID/PID/(SerialNumber) not found");
    }
    EXPECT_NE(hid_open_handle(0x0B0E, 0x1234, std::nullopt), nullptr);
}

}  // namespace
}  // namespace platform::hid_test
