#include "hid/usage_output.h"

#include <future>
#include <gtest/gtest.h>

#include "hid/usage_input.h"
#include "tests/hid/hid_fixture.h"

namespace platform::hid_test {
namespace {

using namespace virtual_headsets;

constexpr USAGE off_hook = 0x17;
constexpr USAGE mute_indicator = 0x09;
constexpr USAGE ring = 0x18;     // the low bound of a range
constexpr USAGE unknown = 0x4B;  // an LED that no headset here has
constexpr std::uint32_t untouched = 0xABCD;

/// Report 2: Off-Hook, Mute and an eight-bit value. Report 3: a range of three LEDs. A telephony usage with
/// the number of Mute stands before them.
Bytes leds() {
    return telephony({
        report_id(2),         usage(0x09),          output(variable),  //
        usage_page(led_page), usage(0x17),          output(variable), usage(0x09),
        output(variable),  //
        report_count(5),      output(constant),     report_id(3),     usage_minimum(0x18),
        usage_maximum(0x1A),                                                             //
        report_count(3),      output(variable),     report_count(5),  output(constant),  //
        report_id(2),         logical_maximum(100), report_size(8),   report_count(1),
        usage(0x33),          output(variable),
    });
}

Bytes one_led() {
    return telephony({report_id(5), usage_page(led_page), usage(0x17), output(variable), report_count(7),
                      output(constant)});
}

/// What a building function gave.
struct Built {
    int result;
    std::uint32_t length;
    Bytes report;

    bool operator==(const Built&) const = default;
};
void PrintTo(const Built& built, std::ostream* stream) {
    *stream << "result " << built.result << ", length " << built.length << ", report "
            << testing::PrintToString(built.report);
}

/// A report that was built; one that was not leaves length and buffer alone.
Built report(Bytes bytes) {
    const auto length = static_cast<std::uint32_t>(bytes.size());
    return {0, length, std::move(bytes)};
}
Built nothing(int result) {
    return {result, untouched, Bytes{}};
}

constexpr std::size_t room = 32;
constexpr std::uint8_t unwritten = 0xEE;

/// The bytes that were written into a buffer.
Bytes written(const Bytes& buffer) {
    const auto end =
        std::find_if(buffer.rbegin(), buffer.rend(), [](auto byte) { return byte != unwritten; });
    return {buffer.begin(), end.base()};
}

class UsageOutput : public HidFixture {
  protected:
    static Built set(const HidHandle& handle, USAGE usage, std::uint32_t value) {
        Bytes buffer(room, unwritten);
        std::uint32_t length = untouched;
        const int result = headset_plugin::gen_led_event_for_usage(handle.get(), led_page, usage, value,
                                                                   buffer.data(), &length);
        return {result, length, written(buffer)};
    }

    static Built set_all(const HidHandle& handle, std::vector<USAGE> usages,
                         std::vector<std::uint32_t> values, int count) {
        Bytes buffer(room, unwritten);
        std::uint32_t length = untouched;
        const int result = headset_plugin::gen_led_events_for_usages(
            handle.get(), led_page, usages.data(), values.data(), count, buffer.data(), &length);
        return {result, length, written(buffer)};
    }

    static std::vector<USAGE> recorded(const HidHandle& handle, std::size_t index) {
        return output_entries(*handle)[index].Usages;
    }
};
class UsagesOutput : public UsageOutput {};

/// The lines of a report that is built from the entries of report 2 in `leds`.
const Lines report_2_built =
    lines("gen_led_event",
          {"output_report_length=3", "max_usage_length=1", "HidP_SetUsages index=0 num_usages=1 successfully",
           "max_usage_length=5", "HidP_SetUsages index=1 num_usages=5 successfully", "max_usage_length=5",
           "HidP_SetUsages index=2 num_usages=5 successfully", "HidP_SetUsageValue index=4 successfully"});

// ---- one usage

TEST_F(UsageOutput, builds_the_report_of_the_usage_and_logs_every_step) {
    const HidHandle handle = open(leds());
    EXPECT_EQ(set(handle, mute_indicator, 1), report({0x02, 0x04, 0x00}));
    EXPECT_EQ(log_->lines(), lines("hid_gen_led_event", {"[Enter]", "ReportID=0x2"}) +
                                 lines("set_output_data_usages", {"index=1 IsButtonData=true UsageMin=0x17",
                                                                  "index=2 IsButtonData=true UsageMin=0x9",
                                                                  "index=2 set usage=0x9 successfully"}) +
                                 lines("hid_gen_led_event", {"set_output_data_usages successfully"}) +
                                 report_2_built + lines("hid_gen_led_event", {"gen_led_event successfully"}));
}

TEST_F(UsageOutput, takes_any_value_but_0_as_on) {
    const HidHandle handle = open(leds());
    EXPECT_EQ(set(handle, off_hook, 0xFFFFFFFF), report({0x02, 0x02, 0x00}));
    EXPECT_EQ(recorded(handle, 1)[1], off_hook);
}

TEST_F(UsageOutput, with_0_puts_the_usage_out_and_logs_usage_0) {
    const HidHandle handle = open(leds());
    set(handle, off_hook, 1);
    EXPECT_EQ(set(handle, off_hook, 0), report({0x02, 0x00, 0x00}));
    EXPECT_EQ(log_->count(line("set_output_data_usages", "index=1 set usage=0x0 successfully")), 1U);
}

TEST_F(UsageOutput, keeps_what_was_set_before_on) {
    const HidHandle handle = open(leds());
    EXPECT_EQ(set(handle, mute_indicator, 1), report({0x02, 0x04, 0x00}));
    EXPECT_EQ(set(handle, off_hook, 1), report({0x02, 0x06, 0x00}));
    EXPECT_EQ(set(handle, mute_indicator, 0), report({0x02, 0x02, 0x00}));
}

TEST_F(UsageOutput, records_a_usage_at_the_own_index_of_its_entry) {
    const HidHandle handle = open_model("epos-impact-d");  // Off-Hook is the last of seven
    EXPECT_EQ(set(handle, off_hook, 1), report({0x03, 0x02}));
    EXPECT_EQ(recorded(handle, 6), (std::vector<USAGE>{0, 0, 0, 0, 0, 0, off_hook}));
    EXPECT_EQ(log_->count(line("set_output_data_usages", "index=6 set usage=0x17 successfully")), 1U);
    EXPECT_EQ(log_->count(line("gen_led_event", "HidP_SetUsages index=6 num_usages=7 successfully")), 1U);
}

TEST_F(UsageOutput, that_stands_in_two_reports_belongs_to_the_first) {
    const HidHandle handle = open(telephony({
        report_id(4),
        usage_page(led_page),
        usage(0x17),
        output(variable),  //
        report_count(7),
        output(constant),
        report_count(1),  //
        report_id(5),
        usage(0x17),
        output(variable),  //
        report_count(7),
        output(constant),
    }));
    ASSERT_EQ(handle->output_button_caps.size(), 2U);
    EXPECT_EQ(set(handle, off_hook, 1), report({0x04, 0x01}));
    EXPECT_EQ(recorded(handle, 0)[0], off_hook);
    EXPECT_EQ(recorded(handle, 1), std::vector<USAGE>(recorded(handle, 1).size(), 0));
}

TEST_F(UsageOutput, gives_a_report_that_would_begin_with_0_its_id) {
    const HidHandle handle = open(one_led());
    EXPECT_EQ(set(handle, off_hook, 0), report({0x05, 0x00}));
}

TEST_F(UsageOutput, leaves_another_first_byte_alone) {
    script_parser().first_report_byte = 0x55;
    const HidHandle handle = open(one_led());
    EXPECT_EQ(set(handle, off_hook, 1), report({0x55, 0x01}));
}

TEST_F(UsageOutput, of_a_headset_without_report_ids_begins_with_0) {
    const HidHandle handle = open(
        telephony({usage_page(led_page), usage(0x17), output(variable), report_count(7), output(constant)}));
    EXPECT_EQ(set(handle, off_hook, 1), report({0x00, 0x01}));
    EXPECT_EQ(log_->count(line("hid_gen_led_event", "ReportID=0x0")), 1U);
}

TEST_F(UsageOutput, of_a_long_report_is_given_whole) {
    const HidHandle handle =
        open(telephony({report_id(5), usage_page(led_page), report_count(100), output(constant),
                        report_count(1), usage(0x17), output(variable), report_count(3), output(constant)}));
    Bytes expected(14, 0);
    expected[0] = 0x05;
    expected[13] = 0x10;
    EXPECT_EQ(set(handle, off_hook, 1), report(expected));
}

TEST_F(UsageOutput, that_the_headset_does_not_have_fails_after_looking_at_the_whole_page) {
    const HidHandle handle = open(leds());
    EXPECT_EQ(set(handle, unknown, 1), nothing(-1));
    EXPECT_EQ(
        log_->lines(),
        lines("hid_gen_led_event", {"[Enter]", "ReportID=0x0"}) +
            lines("set_output_data_usages",
                  {"index=1 IsButtonData=true UsageMin=0x17", "index=2 IsButtonData=true UsageMin=0x9",
                   "index=3 IsButtonData=true UsageMin=0x18", "index=4 IsButtonData=false UsageMin=0x33"}));
}

TEST_F(UsageOutput, that_is_a_value_is_no_button) {
    const HidHandle handle = open(leds());
    EXPECT_EQ(set(handle, 0x33, 1), nothing(-1));
}

TEST_F(UsageOutput, at_the_low_bound_of_a_range_has_no_report) {
    // Its report id is not found, and report 0 has no entries.
    const HidHandle handle = open(leds());
    EXPECT_EQ(set(handle, ring, 1), report({0x00, 0x00, 0x00}));
    EXPECT_EQ(log_->lines().back(), line("hid_gen_led_event", "gen_led_event successfully"));
    EXPECT_EQ(log_->count(line("hid_gen_led_event", "ReportID=0x0")), 1U);
    EXPECT_EQ(recorded(handle, 3)[3], ring);
}

TEST_F(UsageOutput, inside_a_range_is_never_found) {
    const HidHandle handle = open(leds());
    EXPECT_EQ(set(handle, ring + 1, 1), nothing(-1));
}

TEST_F(UsageOutput, fails_for_a_headset_without_outputs) {
    const HidHandle handle =
        open(telephony({usage(0x2F), input(variable), report_count(7), input(constant)}));
    EXPECT_EQ(set(handle, off_hook, 1), nothing(-1));
    EXPECT_EQ(log_->lines(), lines("hid_gen_led_event", {"[Enter]", "ReportID=0x0"}));
}

TEST_F(UsageOutput, fails_silently_without_device_buffer_or_length) {
    const HidHandle handle = open(leds());
    std::uint32_t length = untouched;
    Bytes buffer(room, unwritten);
    const auto gen = headset_plugin::gen_led_event_for_usage;
    EXPECT_EQ(gen(nullptr, led_page, mute_indicator, 1, buffer.data(), &length), -1);
    EXPECT_EQ(gen(handle.get(), led_page, mute_indicator, 1, nullptr, &length), -1);
    EXPECT_EQ(gen(handle.get(), led_page, mute_indicator, 1, buffer.data(), nullptr), -1);
    EXPECT_EQ(length, untouched);
    EXPECT_TRUE(log_->lines().empty());
}

struct FailingParser {
    std::string_view function;
    std::size_t entry;  ///< in `leds`
    const char* last_line;
};

constexpr FailingParser failing_parsers[] = {
    {"HidP_SetUsages", 0, "HidP_SetUsages failed"},
    {"HidP_SetUsageValue", 4, "HidP_SetUsageValue failed"},
};

TEST_F(UsageOutput, that_the_parser_refuses_gives_no_report_but_stays_recorded) {
    const HidHandle handle = open(leds());
    for (const FailingParser& row : failing_parsers) {
        SCOPED_TRACE(row.function);
        script_parser().failing = {.function = row.function, .status = HIDP_STATUS_USAGE_NOT_FOUND};
        log_->clear();
        EXPECT_EQ(set(handle, mute_indicator, 1), nothing(-1));
        EXPECT_EQ(log_->lines().back(), line("gen_led_event", row.last_line));
        EXPECT_EQ(output_entries(*handle)[row.entry].Status, HIDP_STATUS_USAGE_NOT_FOUND);

        parser_.failing = {};
        EXPECT_EQ(set(handle, off_hook, 0), report({0x02, 0x04, 0x00}));
        EXPECT_EQ(output_entries(*handle)[row.entry].Status, HIDP_STATUS_SUCCESS);
    }
}

// ---- several usages

TEST_F(UsagesOutput, go_into_one_report_and_log_every_step) {
    const HidHandle handle = open(leds());
    EXPECT_EQ(set_all(handle, {off_hook, mute_indicator}, {1, 1}, 2), report({0x02, 0x06, 0x00}));
    EXPECT_EQ(log_->lines(),
              lines("hid_gen_led_events", {"[Enter]", "ReportID=0x2"}) +
                  lines("set_output_data_usages",
                        {"index=1 IsButtonData=true UsageMin=0x17", "index=1 set usage=0x17 successfully",
                         "index=1 IsButtonData=true UsageMin=0x17", "index=2 IsButtonData=true UsageMin=0x9",
                         "index=2 set usage=0x9 successfully"}) +
                  lines("hid_gen_led_events", {"set_output_data_usages successfully"}) + report_2_built +
                  lines("hid_gen_led_events", {"gen_led_event successfully"}));
}

TEST_F(UsagesOutput, take_the_report_of_the_first_and_the_others_wait_for_theirs) {
    const HidHandle handle = open_model("poly-blackwire-3220");  // each LED has a report of its own
    EXPECT_EQ(set_all(handle, {off_hook, mute_indicator}, {1, 1}, 2), report({off_hook, 0x01}));
    EXPECT_EQ(set_all(handle, {mute_indicator}, {}, 0), report({mute_indicator, 0x01}));
}

TEST_F(UsagesOutput, end_with_success_and_nothing_written_at_one_that_the_headset_does_not_have) {
    const HidHandle handle = open(leds());
    EXPECT_EQ(set_all(handle, {mute_indicator, unknown, off_hook}, {1, 1, 1}, 3), nothing(0));
    EXPECT_EQ(log_->lines().back(),
              line("hid_gen_led_events", "set_output_data_usages failed for usage=0x4b"));
    // What was recorded before it stays, what stands after it is not looked at.
    EXPECT_EQ(set_all(handle, {mute_indicator}, {}, 0), report({0x02, 0x04, 0x00}));
}

TEST_F(UsagesOutput, of_count_0_rebuild_the_report_from_what_was_recorded) {
    const HidHandle handle = open(leds());
    set(handle, off_hook, 1);
    log_->clear();
    for (const int count : {0, -1}) {
        EXPECT_EQ(set_all(handle, {off_hook}, {0}, count), report({0x02, 0x02, 0x00}));
    }
    EXPECT_TRUE(log_->lines_with("index=1 IsButtonData").empty());
    EXPECT_EQ(log_->count(line("hid_gen_led_events", "set_output_data_usages successfully")), 2U);
}

TEST_F(UsagesOutput, that_the_parser_refuses_give_the_last_recordings_result) {
    const HidHandle handle = open(leds());
    for (const FailingParser& row : failing_parsers) {
        SCOPED_TRACE(row.function);
        script_parser().failing = {.function = row.function};
        EXPECT_EQ(set_all(handle, {off_hook, mute_indicator}, {1, 1}, 2), nothing(1));
        EXPECT_EQ(set_all(handle, {off_hook}, {}, 0), nothing(-1));
        EXPECT_EQ(log_->lines().back(), line("gen_led_event", row.last_line));
        EXPECT_EQ(output_entries(*handle)[row.entry].Status, HIDP_STATUS_INTERNAL_ERROR);
    }
    EXPECT_EQ(log_->count(line("hid_gen_led_events", "gen_led_event successfully")), 0U);
}

TEST_F(UsagesOutput, of_a_headset_without_outputs_are_not_found) {
    const HidHandle handle =
        open(telephony({usage(0x2F), input(variable), report_count(7), input(constant)}));
    EXPECT_EQ(set_all(handle, {off_hook}, {1}, 1), nothing(0));
    EXPECT_EQ(set_all(handle, {off_hook}, {}, 0), nothing(-1));
}

TEST_F(UsagesOutput, fail_silently_where_an_argument_is_missing) {
    const HidHandle handle = open(leds());
    std::uint32_t length = untouched;
    Bytes buffer(room, unwritten);
    const USAGE usages[] = {mute_indicator};
    const std::uint32_t values[] = {1};
    const auto gen = headset_plugin::gen_led_events_for_usages;
    EXPECT_EQ(gen(nullptr, led_page, usages, values, 1, buffer.data(), &length), -1);
    EXPECT_EQ(gen(handle.get(), led_page, nullptr, values, 1, buffer.data(), &length), -1);
    EXPECT_EQ(gen(handle.get(), led_page, usages, nullptr, 1, buffer.data(), &length), -1);
    EXPECT_EQ(gen(handle.get(), led_page, usages, values, 1, nullptr, &length), -1);
    EXPECT_EQ(gen(handle.get(), led_page, usages, values, 1, buffer.data(), nullptr), -1);
    EXPECT_EQ(length, untouched);
    EXPECT_TRUE(log_->lines().empty());
    EXPECT_EQ(gen(handle.get(), led_page, usages, nullptr, 0, buffer.data(), &length), 0);
}

// ---- threads

TEST_F(UsagesOutput, may_be_set_by_two_threads_while_a_third_reads_keys) {
    const HidHandle handle = open_model("jabra-link-380c");
    constexpr int rounds = 50;
    const auto toggle = [&](USAGE usage) {
        int built = 0;
        for (int i = 0; i < rounds; ++i) {
            built += set(handle, usage, static_cast<std::uint32_t>(i % 2)).result == 0 ? 1 : 0;
        }
        return built;
    };
    const auto read_keys = [&] {
        int pressed = 0;
        for (int i = 0; i < rounds; ++i) {
            pressed +=
                headset_plugin::process_read_for_mute(handle.get(), Bytes{0x02, 0x08, 0x00}) == 1 ? 1 : 0;
        }
        return pressed;
    };
    auto off_hooks = std::async(std::launch::async, toggle, off_hook);
    auto mutes = std::async(std::launch::async, toggle, mute_indicator);
    EXPECT_EQ(read_keys(), rounds);
    EXPECT_EQ(off_hooks.get(), rounds);
    EXPECT_EQ(mutes.get(), rounds);
    EXPECT_EQ(set(handle, off_hook, 0), report({0x02, 0x04, 0x00}));
}

}  // namespace
}  // namespace platform::hid_test
