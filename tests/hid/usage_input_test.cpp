#include "hid/usage_input.h"

#include <gtest/gtest.h>

#include "tests/hid/hid_fixture.h"

namespace platform::hid_test {
namespace {

using namespace virtual_headsets;

constexpr int mute = 1;
constexpr int no_mute = -1;

/// Report 8: Phone Mute, which is relative, and Hook Switch. Report 9: Flash.
Bytes keys() {
    return telephony({report_id(8), usage(0x2F), input(variable | relative), usage(0x20), input(variable),
                      report_count(6), input(constant), report_id(9), usage(0x21), report_count(1),
                      input(variable), report_count(7), input(constant)});
}

/// Report 8: Phone Mute and an eight-bit value.
Bytes key_and_value(MainFlags flags) {
    return telephony({report_id(8), usage(0x2F), input(variable | relative), report_count(7), input(constant),
                      logical_minimum(1), logical_maximum(7), report_size(8), report_count(1), usage(0x50),
                      input(flags)});
}

/// A mute key of its own report without anything beside it, so that its usage list has one place.
Bytes lone_key(MainFlags flags) {
    return telephony({usage(0x2F), input(flags), report_count(7), input(constant)});
}

class UsageInput : public HidFixture {
  protected:
    static int process(const HidHandle& handle, const Bytes& report) {
        return headset_plugin::process_read_for_mute(handle.get(), report);
    }
    /// The lines that `function` logged.
    Lines logged(const std::string& function) { return log_->lines_with(": " + function + ": "); }
};
class MuteRule : public UsageInput {};

// ---- decoding

TEST_F(UsageInput, with_a_mute_key_counts_and_logs_every_step) {
    const HidHandle handle = open(keys());
    EXPECT_EQ(process(handle, {0x08, 0x03}), mute);
    EXPECT_EQ(log_->lines(),
              lines("get_input_data_usages",
                    {"report_id=0x8 input_data_length=3",                                     //
                     "input_data_index=0 max_usage_length=3",                                 //
                     "HidP_GetUsages input_data_index=0 num_usages=2 successfully",           //
                     "usage_index=0 UsageMin=0x2f UsageMax=0x2f Usages[0]=0x2f",              //
                     "usage_index=1 UsageMin=0x2f UsageMax=0x2f Usages[1]=0x20",              //
                     "HidP_GetUsages input_data_index=0 valid_num_usages=1 successfully",     //
                     "input_data_index=1 max_usage_length=3",                                 //
                     "HidP_GetUsages input_data_index=1 num_usages=2 successfully",           //
                     "usage_index=0 UsageMin=0x20 UsageMax=0x20 Usages[0]=0x2f",              //
                     "usage_index=1 UsageMin=0x20 UsageMax=0x20 Usages[1]=0x20",              //
                     "HidP_GetUsages input_data_index=1 valid_num_usages=1 successfully"}) +  //
                  lines("hid_process_read",                                                   //
                        {"input_data_index=0, caps_usage=0x2f, caps_IsAbsolute=0, UsageMin=0x2f, "
                         "UsageMax=0x2f, MaxUsageLength=3",                                      //
                         "usage_index=0, usage=0x2f",                                            //
                         "non-absolute mute cap, mute with usage_index=0, usage=0x2f",           //
                         "usage_index=1, usage=0x0",                                             //
                         "skip: non-absolute mute cap, NOT mute with usage_index=1, usage=0x0",  //
                         "break for invalid USAGE at usage_index=1",                             //
                         "input_data_index=1, caps_usage=0x20, caps_IsAbsolute=1, UsageMin=0x20, "
                         "UsageMax=0x20, MaxUsageLength=3",           //
                         "usage_index=0, usage=0x20",                 //
                         "usage_index=1, usage=0x0",                  //
                         "break for invalid USAGE at usage_index=1",  //
                         "input_data_index=2, caps_usage=0x21, caps_IsAbsolute=1, UsageMin=0x21, "
                         "UsageMax=0x21, MaxUsageLength=3",  //
                         "usage_index=0, usage=0x0",         //
                         "break for invalid USAGE at usage_index=0"}));
}

TEST_F(UsageInput, without_the_mute_key_in_the_next_report_counts_no_longer) {
    const HidHandle handle = open(keys());
    EXPECT_EQ(process(handle, {0x08, 0x01}), mute);
    EXPECT_EQ(process(handle, {0x08, 0x00}), no_mute);
}

TEST_F(UsageInput, of_hook_and_flash_is_no_mute) {
    const HidHandle handle = open(keys());
    EXPECT_EQ(process(handle, {0x08, 0x02}), no_mute);
    EXPECT_EQ(process(handle, {0x09, 0x01}), no_mute);
}

TEST_F(UsageInput, of_another_report_leaves_a_mute_key_as_it_was) {
    const HidHandle handle = open(keys());
    EXPECT_EQ(process(handle, {0x08, 0x01}), mute);
    EXPECT_EQ(process(handle, {0x09, 0x00}), mute);
    EXPECT_EQ(process(handle, {0x09, 0x01}), mute);
    EXPECT_EQ(process(handle, {0x08, 0x00}), no_mute);
    EXPECT_EQ(process(handle, {0x09, 0x01}), no_mute);
}

TEST_F(UsageInput, of_an_unknown_report_decodes_nothing) {
    const HidHandle handle = open(keys());
    EXPECT_EQ(process(handle, {0x77, 0xFF}), no_mute);
    EXPECT_EQ(logged("get_input_data_usages"),
              lines("get_input_data_usages", {"report_id=0x77 input_data_length=3"}));
}

TEST_F(UsageInput, is_the_same_on_every_model_with_a_mute_key) {
    for (const HeadsetModel* model : models()) {
        const int headset = plug(bus(), described(*model));
        if (!bus().set_key(headset, phone_mute, true).empty()) {
            continue;  // no such key
        }
        SCOPED_TRACE(model->key);
        const HidHandle handle = open_plugged(headset);
        for (const auto& [pressed, result] : {std::pair{true, mute}, std::pair{false, no_mute}}) {
            ASSERT_EQ(bus().set_key(headset, phone_mute, pressed), "");
            Bytes report(handle->input_report_length);
            ASSERT_GT(headset_plugin::hid_read_report(handle.get(), report, no_timeout), 0);
            EXPECT_EQ(process(handle, report), result);
        }
    }
}

// ---- reports of other lengths

TEST_F(UsageInput, without_report_ids_begins_with_0) {
    const HidHandle handle = open(lone_key(variable | relative));
    EXPECT_EQ(process(handle, {0x00, 0x01}), mute);
    EXPECT_EQ(process(handle, {0x00}), no_mute) << "and is no key that lost its id";
    EXPECT_EQ(log_->count(line("get_input_data_usages", "report_id=0x0 input_data_length=1")), 2U);
}

TEST_F(UsageInput, that_is_short_is_filled_up_with_zeros) {
    const HidHandle handle = open(keys());
    process(handle, {0x08, 0x01});
    EXPECT_EQ(process(handle, {0x08}), no_mute);
    EXPECT_EQ(log_->count(line("get_input_data_usages", "HidP_GetUsages failed")), 0U);
}

TEST_F(UsageInput, that_is_too_long_fails) {
    const HidHandle handle = open(keys());
    EXPECT_EQ(process(handle, {0x08, 0x01, 0x00}), no_mute);
    EXPECT_EQ(log_->lines().back(), line("get_input_data_usages", "HidP_GetUsages failed"));
    EXPECT_EQ(input_entries(*handle)[0].Status, HIDP_STATUS_INVALID_REPORT_LENGTH);
}

TEST_F(UsageInput, needs_a_device_and_a_report) {
    const HidHandle handle = open(keys());
    EXPECT_EQ(headset_plugin::process_read_for_mute(nullptr, Bytes{0x08, 0x01}), no_mute);
    EXPECT_EQ(process(handle, {}), no_mute);
    EXPECT_TRUE(log_->lines().empty());
}

TEST_F(UsageInput, of_a_headset_without_inputs_fails) {
    const HidHandle handle =
        open(telephony({usage(0x2F), output(variable), report_count(7), output(constant)}));
    EXPECT_EQ(process(handle, {0x00, 0x01}), no_mute);
    EXPECT_TRUE(log_->lines().empty());
}

// ---- values

TEST_F(UsageInput, with_a_value_reads_it_raw_and_scaled) {
    const HidHandle handle = open(key_and_value(variable));
    EXPECT_EQ(process(handle, {0x08, 0x01, 0x05}), mute);
    const headset_plugin::HidDataEntry value = input_entries(*handle)[1];
    EXPECT_EQ(value.Value, 5U);
    EXPECT_EQ(value.ScaledValue, 5);
    EXPECT_EQ(value.Status, HIDP_STATUS_SUCCESS);
    EXPECT_TRUE(test_support::in_order(
        log_->lines(),
        lines("get_input_data_usages", {"HidP_GetUsages input_data_index=0 num_usages=1 successfully",
                                        "HidP_GetUsageValue input_data_index=1 successfully",
                                        "HidP_GetScaledUsageValue input_data_index=1 successfully"})));
}

TEST_F(UsageInput, with_a_value_in_its_null_state_passes) {
    const HidHandle handle = open(key_and_value(variable | null_state));
    EXPECT_EQ(process(handle, {0x08, 0x01, 0x00}), mute);
    EXPECT_EQ(input_entries(*handle)[1].Status, HIDP_STATUS_NULL);
    EXPECT_EQ(log_->count(
                  line("get_input_data_usages", "HidP_GetScaledUsageValue input_data_index=1 successfully")),
              1U);
}

TEST_F(UsageInput, with_a_value_out_of_its_limits_fails) {
    const HidHandle handle = open(key_and_value(variable));
    EXPECT_EQ(process(handle, {0x08, 0x01, 0x09}), no_mute);
    EXPECT_EQ(input_entries(*handle)[1].Status, HIDP_STATUS_VALUE_OUT_OF_RANGE);
    EXPECT_EQ(log_->lines().back(), line("get_input_data_usages", "HidP_GetScaledUsageValue failed"));
}

TEST_F(UsageInput, that_the_parser_refuses_fails_at_once_with_the_status_kept) {
    struct Row {
        std::string_view function;
        std::size_t entry;
    };
    const HidHandle handle = open(key_and_value(variable));
    for (const Row& row :
         {Row{"HidP_GetUsages", 0}, Row{"HidP_GetUsageValue", 1}, Row{"HidP_GetScaledUsageValue", 1}}) {
        SCOPED_TRACE(row.function);
        // HIDP_STATUS_NULL passes for a scaled value alone, so another is taken there.
        const bool scaled = row.function == "HidP_GetScaledUsageValue";
        const NTSTATUS status = scaled ? HIDP_STATUS_BAD_LOG_PHY_VALUES : HIDP_STATUS_NULL;
        script_parser().failing = {.function = row.function, .status = status};
        EXPECT_EQ(process(handle, {0x08, 0x01, 0x05}), no_mute);
        EXPECT_EQ(log_->lines().back(), line("get_input_data_usages", std::string(row.function) + " failed"));
        EXPECT_EQ(input_entries(*handle)[row.entry].Status, status);
        EXPECT_TRUE(logged("hid_process_read").empty());
    }
}

// ---- usage lists

TEST_F(UsageInput, keeps_a_capabilitys_own_usages_in_their_order) {
    script_parser().pressed = {0xB1, 0x2F, 0xB0, 0xBB, 0xBC};
    parser_.max_usage_list_length = 6;
    const HidHandle handle =
        open(telephony({report_id(8), usage_minimum(0xB0), usage_maximum(0xBB), logical_maximum(12),
                        report_size(4), input(array), input(constant)}));
    EXPECT_EQ(process(handle, {0x08, 0x00}), no_mute);
    EXPECT_EQ(input_entries(*handle)[0].Usages, (std::vector<USAGE>{0xB1, 0xB0, 0xBB, 0, 0xBC, 0}));
    EXPECT_EQ(log_->count(line("get_input_data_usages",
                               "HidP_GetUsages input_data_index=0 valid_num_usages=3 successfully")),
              1U);
    EXPECT_EQ(log_->count(
                  line("get_input_data_usages", "usage_index=3 UsageMin=0xb0 UsageMax=0xbb Usages[3]=0xbb")),
              1U);
}

TEST_F(UsageInput, with_a_full_list_has_no_terminator_and_the_walk_ends_with_the_list) {
    const HidHandle handle = open(lone_key(variable | relative));
    EXPECT_EQ(process(handle, {0x00, 0x01}), mute);
    EXPECT_EQ(
        log_->lines(),
        lines("get_input_data_usages",
              {"report_id=0x0 input_data_length=1", "input_data_index=0 max_usage_length=1",
               "HidP_GetUsages input_data_index=0 num_usages=1 successfully",
               "usage_index=0 UsageMin=0x2f UsageMax=0x2f Usages[0]=0x2f"}) +
            lines(
                "hid_process_read",
                {"input_data_index=0, caps_usage=0x2f, caps_IsAbsolute=0, UsageMin=0x2f, UsageMax=0x2f, "
                 "MaxUsageLength=1",
                 "usage_index=0, usage=0x2f", "non-absolute mute cap, mute with usage_index=0, usage=0x2f"}));
}

TEST_F(UsageInput, with_more_usages_than_the_list_has_room_for_keeps_to_the_room) {
    script_parser().pressed = {0x2F, 0x2F, 0x2F};
    const HidHandle handle = open(lone_key(variable | relative));
    EXPECT_EQ(process(handle, {0x00, 0x01}), mute);
    EXPECT_EQ(input_entries(*handle)[0].Usages, std::vector<USAGE>{0x2F});
    EXPECT_EQ(logged("hid_process_read").size(), 3U);
}

TEST_F(UsageInput, without_room_for_a_usage_sees_none) {
    script_parser().max_usage_list_length = 0;
    const HidHandle handle = open(lone_key(variable | relative));
    EXPECT_EQ(process(handle, {0x00, 0x00}), no_mute);
    EXPECT_EQ(logged("hid_process_read").size(), 1U);
}

// ---- what counts as mute

/// A mute capability, the usages that the parser lists, and what becomes of them.
struct Rule {
    const char* name;
    bool absolute;
    USHORT data_index;
    std::vector<USAGE> pressed;
    int result;
    Lines lines;  ///< about mute, in order
};

const Rule rules[] = {
    {"relative, pressed",
     false,
     1,
     {0x2F},
     mute,
     {"non-absolute mute cap, mute with usage_index=0, usage=0x2f",
      "skip: non-absolute mute cap, NOT mute with usage_index=1, usage=0x0"}},
    {"relative, pressed by the second mute usage",
     false,
     1,
     {0xB5},
     mute,
     {"non-absolute mute cap, mute with usage_index=0, usage=0xb5",
      "skip: non-absolute mute cap, NOT mute with usage_index=1, usage=0x0"}},
    {"relative, not pressed, at the index that counts for an absolute one",
     false,
     1,
     {},
     no_mute,
     {"skip: non-absolute mute cap, NOT mute with usage_index=0, usage=0x0"}},
    {"relative, another usage of its range",
     false,
     1,
     {0x30},
     no_mute,
     {"skip: non-absolute mute cap, NOT mute with usage_index=0, usage=0x30",
      "skip: non-absolute mute cap, NOT mute with usage_index=1, usage=0x0"}},
    {"absolute, first data index, pressed",
     true,
     0,
     {0x2F},
     mute,
     {"absolute mute cap, mute with usage_index=0, usage=0x2f",
      "skip: absolute mute cap, NOT mute with usage_index=1, usage=0x0"}},
    {"absolute, first data index, not pressed",
     true,
     0,
     {},
     no_mute,
     {"skip: absolute mute cap, NOT mute with usage_index=0, usage=0x0"}},
    {"absolute, second data index, not pressed",
     true,
     1,
     {},
     mute,
     {"absolute mute cap, mute with usage_index=0, usage=0x0"}},
    {"absolute, second data index, pressed by the second mute usage",
     true,
     1,
     {0xB5},
     mute,
     {"absolute mute cap, mute with usage_index=0, usage=0xb5",
      "skip: absolute mute cap, NOT mute with usage_index=1, usage=0x0"}},
    {"absolute, third data index, not pressed",
     true,
     2,
     {},
     no_mute,
     {"skip: absolute mute cap, NOT mute with usage_index=0, usage=0x0"}},
    {"absolute, third data index, pressed",
     true,
     2,
     {0x2F},
     mute,
     {"absolute mute cap, mute with usage_index=0, usage=0x2f",
      "absolute mute cap, mute with usage_index=1, usage=0x0"}},
    {"absolute, third data index, another usage of its range",
     true,
     2,
     {0x30},
     mute,
     {"skip: absolute mute cap, NOT mute with usage_index=0, usage=0x30",
      "absolute mute cap, mute with usage_index=1, usage=0x0"}},
    {"absolute, third data index, two usages fill the list",
     true,
     2,
     {0x30, 0x31},
     no_mute,
     {"skip: absolute mute cap, NOT mute with usage_index=0, usage=0x30",
      "skip: absolute mute cap, NOT mute with usage_index=1, usage=0x31"}},
};

TEST_F(MuteRule, depends_on_absolute_and_on_the_data_index) {
    for (const Rule& rule : rules) {
        SCOPED_TRACE(rule.name);
        script_parser().edit_button_caps = [&](std::span<HIDP_BUTTON_CAPS> caps) {
            for (HIDP_BUTTON_CAPS& cap : caps) {
                cap.IsAbsolute = rule.absolute ? 1 : 0;
                cap.NotRange.DataIndex = rule.data_index;
            }
        };
        parser_.pressed = rule.pressed;
        parser_.max_usage_list_length = 2;
        // A range whose low bound is the mute usage.
        const HidHandle handle = open(telephony({usage_minimum(0x2F), usage_maximum(0xB5), report_count(0x87),
                                                 input(variable), report_count(1), input(constant)}));
        EXPECT_EQ(process(handle, Bytes(18, 0)), rule.result);
        Lines about_mute = logged("hid_process_read");
        std::erase_if(about_mute,
                      [](const std::string& text) { return text.find("mute cap") == std::string::npos; });
        EXPECT_EQ(about_mute, lines("hid_process_read", rule.lines));
    }
}

TEST_F(MuteRule, holds_for_both_mute_usages_on_any_page) {
    for (const USAGE usage_number : {USAGE{0x2F}, USAGE{0xB5}}) {
        for (const USAGE page : {telephony_page, USAGE{0x0C}}) {
            const HidHandle handle =
                open(telephony({usage_page(page), usage(usage_number), input(variable | relative),
                                report_count(7), input(constant)}));
            EXPECT_EQ(process(handle, {0x00, 0x01}), mute) << page << ", " << usage_number;
            EXPECT_EQ(process(handle, {0x00, 0x00}), no_mute) << page << ", " << usage_number;
        }
    }
}

TEST_F(MuteRule, is_not_applied_to_a_capability_that_has_the_mute_usage_inside_a_range) {
    const HidHandle handle = open(telephony({usage_minimum(0x2E), usage_maximum(0x30), report_count(3),
                                             input(variable), report_count(5), input(constant)}));
    EXPECT_EQ(process(handle, {0x00, 0x07}), no_mute);
    EXPECT_TRUE(log_->lines_with("mute cap").empty());
    EXPECT_EQ(log_->count(line("hid_process_read", "usage_index=1, usage=0x2f")), 1U);
}

TEST_F(MuteRule, counts_one_pressed_key_among_several_capabilities) {
    // The first is pressed, the last is not.
    const HidHandle handle =
        open(telephony({report_id(1), usage(0x2F), input(variable | relative), usage(0xB5),
                        input(variable | relative), report_count(6), input(constant)}));
    EXPECT_EQ(process(handle, {0x01, 0x01}), mute);
    EXPECT_EQ(process(handle, {0x01, 0x02}), mute);
    EXPECT_EQ(process(handle, {0x01, 0x00}), no_mute);
}

TEST_F(MuteRule, of_a_real_absolute_key_counts_the_released_key_after_one_other) {
    const Item hook = usage(0x20);
    const HidHandle handle = open(
        telephony({hook, input(variable), usage(0x2F), input(variable), report_count(6), input(constant)}));
    EXPECT_EQ(process(handle, {0x00, 0x00}), mute);
    EXPECT_EQ(log_->count(line("hid_process_read", "absolute mute cap, mute with usage_index=0, usage=0x0")),
              1U);
    EXPECT_EQ(process(handle, {0x00, 0x02}), mute);
}

}  // namespace
}  // namespace platform::hid_test
