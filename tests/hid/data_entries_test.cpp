#include <algorithm>
#include <gtest/gtest.h>

#include "tests/hid/hid_fixture.h"

namespace platform::hid_test {
namespace {

using namespace virtual_headsets;
using headset_plugin::hid_last_error;
using headset_plugin::hid_open_handle;
using headset_plugin::HidDataEntry;

class DataEntries : public HidFixture {
  protected:
    /// Opens a headset that must not open; why it did not.
    std::wstring refusal(const Bytes& descriptor) {
        const int headset = plug(bus(), described(descriptor));
        EXPECT_EQ(hid_open_handle(path_of(bus(), headset).c_str()), nullptr);
        return hid_last_error(nullptr);
    }
};

/// What a capability decides of a button's entry.
struct ButtonRow {
    USAGE page;
    std::uint32_t min;
    std::uint32_t max;
    std::uint32_t report_id;
    std::uint32_t max_usage_length;
};

void expect_buttons(const std::vector<HidDataEntry>& entries, const std::vector<ButtonRow>& rows) {
    ASSERT_EQ(entries.size(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_TRUE(entries[i].IsButtonData);
        EXPECT_EQ(entries[i].Status, HIDP_STATUS_SUCCESS);
        EXPECT_EQ(entries[i].UsagePage, rows[i].page);
        EXPECT_EQ(entries[i].UsageMin, rows[i].min);
        EXPECT_EQ(entries[i].UsageMax, rows[i].max);
        EXPECT_EQ(entries[i].ReportID, rows[i].report_id);
        EXPECT_EQ(entries[i].MaxUsageLength, rows[i].max_usage_length);
        EXPECT_EQ(entries[i].Usages, std::vector<USAGE>(rows[i].max_usage_length, 0));
    }
}

struct ValueRow {
    USAGE page;
    USAGE usage;
    std::uint32_t report_id;
};

void expect_values(const std::vector<HidDataEntry>& entries, const std::vector<ValueRow>& rows) {
    ASSERT_EQ(entries.size(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_FALSE(entries[i].IsButtonData);
        EXPECT_EQ(entries[i].Status, HIDP_STATUS_SUCCESS);
        EXPECT_EQ(entries[i].UsagePage, rows[i].page);
        EXPECT_EQ(entries[i].Usage, rows[i].usage);
        EXPECT_EQ(entries[i].UsageMin, rows[i].usage);
        EXPECT_EQ(entries[i].ReportID, rows[i].report_id);
        EXPECT_EQ(entries[i].Value, 0U);
        EXPECT_EQ(entries[i].ScaledValue, 0);
        EXPECT_TRUE(entries[i].Usages.empty());
    }
}

// ---- buttons

TEST_F(DataEntries, follow_the_order_of_the_button_capabilities) {
    // The parser lists the usages of one item from the last to the first.
    const HidHandle handle = open_model("jabra-evolve-link-ms");
    expect_buttons(output_entries(*handle), {{led_page, 0x21, 0x21, 2, 5},
                                             {led_page, 0x20, 0x20, 2, 5},
                                             {led_page, 0x18, 0x18, 2, 5},
                                             {led_page, 0x09, 0x09, 2, 5},
                                             {led_page, 0x17, 0x17, 2, 5},
                                             {telephony_page, 0x9E, 0x9E, 2, 6}});
}

TEST_F(DataEntries, have_room_for_an_output_usage_at_its_own_index) {
    // The ringer takes the first place, so that the seventh entry's index is past the six usages of its page.
    const HidHandle handle = open_model("epos-impact-d");
    const auto entries = output_entries(*handle);
    ASSERT_EQ(entries.size(), 7U);
    EXPECT_EQ(entries[6].UsageMin, 0x17U);
    EXPECT_EQ(entries[6].MaxUsageLength, 7U);
    EXPECT_EQ(entries[5].MaxUsageLength, 6U);
}

TEST_F(DataEntries, of_the_input_side_have_the_length_that_the_parser_gives) {
    // A button of another page comes first, so that the own index of every other entry is past its page's
    // usages.
    const HidHandle handle = open(telephony({
        report_id(3),
        usage_page(0x09),
        usage(0x01),
        input(variable),
        usage_page(telephony_page),
        usage(0x2F),
        input(variable),
        report_count(6),
        input(constant),
    }));
    expect_buttons(input_entries(*handle), {{0x09, 0x01, 0x01, 3, 1}, {telephony_page, 0x2F, 0x2F, 3, 1}});
}

TEST_F(DataEntries, of_a_range_of_buttons_are_one_with_its_bounds) {
    const HidHandle handle = open_model("yealink-wh66");
    const auto entries = input_entries(*handle);
    const auto keypad = std::find_if(entries.begin(), entries.end(),
                                     [](const HidDataEntry& entry) { return entry.UsageMin == 0xB0; });
    ASSERT_NE(keypad, entries.end());
    EXPECT_TRUE(keypad->IsButtonData);
    EXPECT_EQ(keypad->UsageMax, 0xBBU);
    EXPECT_EQ(keypad->MaxUsageLength, 7U);  // six keys and one from the pad
}

TEST_F(DataEntries, may_have_no_room_for_usages_at_all) {
    script_parser().max_usage_list_length = 0;
    const HidHandle handle =
        open(telephony({usage(0x2F), input(variable), report_count(7), input(constant)}));
    expect_buttons(input_entries(*handle), {{telephony_page, 0x2F, 0x2F, 0, 0}});
}

// ---- values

TEST_F(DataEntries, of_a_value_range_are_one_for_each_of_three_usages) {
    const HidHandle handle = open(telephony({
        report_id(2),
        logical_maximum(100),
        report_size(8),
        report_count(3),
        usage_minimum(0x30),
        usage_maximum(0x32),
        input(variable),
        usage_minimum(0x40),
        usage_maximum(0x42),
        output(variable),
    }));
    expect_values(input_entries(*handle),
                  {{telephony_page, 0x30, 2}, {telephony_page, 0x31, 2}, {telephony_page, 0x32, 2}});
    expect_values(output_entries(*handle),
                  {{telephony_page, 0x40, 2}, {telephony_page, 0x41, 2}, {telephony_page, 0x42, 2}});
}

TEST_F(DataEntries, of_values_come_after_all_buttons) {
    const HidHandle handle = open(telephony({
        report_size(8),
        logical_maximum(100),
        usage(0x30),
        input(variable),  //
        report_size(1),
        logical_maximum(1),
        usage(0x2F),
        input(variable),
        report_count(7),
        input(constant),
    }));
    const auto entries = input_entries(*handle);
    ASSERT_EQ(entries.size(), 2U);
    expect_buttons({entries[0]}, {{telephony_page, 0x2F, 0x2F, 0, 1}});
    expect_values({entries[1]}, {{telephony_page, 0x30, 0}});
}

TEST_F(DataEntries, of_a_headset_without_output_buttons_are_values_alone) {
    const HidHandle handle = open(telephony({
        report_id(4),
        usage(0x2F),
        input(variable),
        report_count(7),
        input(constant),
        usage_page(led_page),
        logical_maximum(100),
        report_size(8),
        report_count(1),
        usage(0x34),
        output(variable),
    }));
    expect_values(output_entries(*handle), {{led_page, 0x34, 4}});
}

TEST_F(DataEntries, of_a_single_value_take_the_usage_from_the_upper_bound) {
    script_parser().edit_value_caps = [](std::span<HIDP_VALUE_CAPS> caps) {
        for (HIDP_VALUE_CAPS& cap : caps) {
            cap.NotRange.Usage = 0x77;  // the lower bound of a range
        }
    };
    const HidHandle handle = open(telephony({
        logical_maximum(100),
        report_size(8),
        usage(0x30),
        input(variable),
        usage(0x34),
        output(variable),
    }));
    expect_values(input_entries(*handle), {{telephony_page, 0x30, 0}});
    expect_values(output_entries(*handle), {{telephony_page, 0x34, 0}});
}

// ---- the report buffer, and headsets of every kind

TEST_F(DataEntries, come_with_a_zeroed_report_of_the_output_length) {
    const HidHandle handle = open_model("jabra-link-380c");
    MutexLock lock(handle->output_mutex);
    EXPECT_EQ(handle->output_report, Bytes(3, 0));
}

TEST_F(DataEntries, are_none_where_there_is_nothing_to_enter) {
    const HidHandle handle = open(telephony({report_size(8), input(constant)}));
    EXPECT_TRUE(input_entries(*handle).empty());
    EXPECT_TRUE(output_entries(*handle).empty());
    EXPECT_EQ(headset_plugin::hid_output_report_length(handle.get()), 0U);
}

std::size_t usages_of(const std::vector<HIDP_VALUE_CAPS>& caps) {
    std::size_t count = 0;
    for (const HIDP_VALUE_CAPS& cap : caps) {
        count += static_cast<std::size_t>(cap.Range.UsageMax - cap.Range.UsageMin) + 1;
    }
    return count;
}

TEST_F(DataEntries, of_every_collection_of_every_model_are_as_many_as_buttons_and_value_usages) {
    for (const HeadsetModel* model : models()) {
        plug(bus(), described(*model));
    }
    const auto collections = bus().enumerate(0, 0);
    ASSERT_GT(collections.size(), models().size());
    for (const HidInterfaceInfo& collection : collections) {
        const HidHandle handle = hid_open_handle(collection.path.c_str());
        ASSERT_NE(handle, nullptr) << collection.path;
        EXPECT_EQ(input_entries(*handle).size(),
                  handle->number_input_button_caps + usages_of(handle->input_value_caps));
        EXPECT_EQ(output_entries(*handle).size(),
                  handle->number_output_button_caps + usages_of(handle->output_value_caps));
    }
}

// ---- what a hostile descriptor may cost

TEST_F(DataEntries, are_refused_where_the_usage_lists_would_take_too_much_memory) {
    // 16 capabilities of 1,024 buttons each, and every one of them wants a list of all 16,384.
    Bytes buttons;
    for (std::uint16_t i = 0; i < 16; ++i) {
        const Bytes range = descriptor({usage_minimum(0x400U * i + 1), usage_maximum(0x400U * i + 0x400),
                                        report_count(0x400), input(variable)});
        buttons.insert(buttons.end(), range.begin(), range.end());
    }
    Bytes hostile = telephony({});
    hostile.insert(hostile.end() - 1, buttons.begin(), buttons.end());
    EXPECT_EQ(refusal(hostile), L"Internal error");
}

/// A headset with this many one-bit keys.
Bytes keys(std::uint32_t count) {
    Bytes bytes = telephony({});
    Bytes usages;
    for (std::uint16_t i = 1; i <= count; ++i) {
        const Bytes one = descriptor({usage(i)});
        usages.insert(usages.end(), one.begin(), one.end());
    }
    const Bytes item = descriptor({report_count(count), input(variable)});
    usages.insert(usages.end(), item.begin(), item.end());
    bytes.insert(bytes.end() - 1, usages.begin(), usages.end());
    return bytes;
}

TEST_F(DataEntries, are_refused_past_16384_places_in_the_usage_lists_of_one_direction) {
    // Every key's list has room for all of them.
    EXPECT_NE(open(keys(128)), nullptr);
    EXPECT_EQ(refusal(keys(129)), L"Internal error");
    script_parser().max_usage_list_length = 64;
    EXPECT_NE(open(keys(256)), nullptr);
    parser_.max_usage_list_length = 65;
    EXPECT_EQ(refusal(keys(256)), L"Internal error");
}

TEST_F(DataEntries, are_refused_for_values_that_take_no_room_in_the_report) {
    const auto values = [](std::uint32_t count) {
        return telephony({usage_minimum(1), usage_maximum(count), report_count(count), report_size(0),
                          logical_maximum(100), input(variable)});
    };
    EXPECT_NE(open(values(1024)), nullptr);
    EXPECT_EQ(refusal(values(1025)), L"Internal error");
    EXPECT_EQ(refusal(values(0xFFFF)), L"Internal error");
}

}  // namespace
}  // namespace platform::hid_test
