#include "tools/softphone/printers.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/tools/softphone/recording_display.h"

namespace softphone {
namespace {

using Lines = std::vector<std::string>;

class PrinterTest : public testing::Test {
  protected:
    PrinterTest() { headsets.add(1, "jabra").serial = "A1"; }

    Lines plain(const Event& event) { return lines(*make_plain_printer(display, Style()), event); }
    Lines story(const Event& event) { return lines(*make_story_printer(display, Style()), event); }
    nlohmann::json json(const Event& event) {
        return nlohmann::json::parse(lines(*make_json_printer(display), event).at(0));
    }

    Lines lines(Printer& printer, const Event& event) {
        display = {};
        printer.print(event, headsets);
        return display.lines;
    }

    RecordingDisplay display;
    HeadsetList headsets;
    const ReportReceived report{1, {2, 1, 0}, {{{0x08, 0x17}, true}, {{0x08, 0x09}, false}}};
};

TEST_F(PrinterTest, a_report_is_shown_in_bytes_and_in_words) {
    EXPECT_EQ(plain(report), Lines{"report     jabra  02 01 00  off-hook lit"});
    EXPECT_EQ(story(report), Lines{"      plug-in > headset  jabra  02 01 00  off-hook lit"});
    const auto object = json(report);
    EXPECT_EQ(object["event"], "report");
    EXPECT_EQ(object["headset"], "jabra");
    EXPECT_EQ(object["bytes"], "02 01 00");
    EXPECT_EQ(object["lit"], nlohmann::json::array({"off-hook"}));
}

TEST_F(PrinterTest, texts_from_outside_steer_no_terminal) {
    const std::string evil = "\x1B[2J\xC2\x9B\n\xFF";
    const std::string shown = "?[2J??\xEF\xBF\xBD";
    Headset headset;
    headset.product = evil;
    const Event events[] = {LogLine{evil},
                            HeadsetReady{{"", 1, 2, "V", evil, "A1"}},
                            HeadsetRemoved{{"", 1, 2, "V", "N", evil}},
                            Plugged{1, evil, "A1", {}},
                            DeviceListed{"jabra", evil, "", ""},
                            HeadsetListed{headset},
                            Said{evil},
                            Text{evil},
                            CallListed{{.cid = evil}},
                            HostResult{evil},
                            ExpectationChecked{false, evil, evil, evil},
                            CommandFailed{evil, ""}};
    for (const auto& event : events)
        for (const auto make : {make_plain_printer, make_story_printer}) {
            std::string text;
            display = {};
            make(display, Style())->print(event, headsets);
            for (const auto& line : display.lines)
                text += line;
            for (const auto& line : display.errors)
                text += line;
            EXPECT_NE(text.find(shown), std::string::npos) << event.index() << ": " << text;
            EXPECT_EQ(text.find_first_of("\x1B\n\xFF"), std::string::npos) << event.index();
        }
    EXPECT_EQ(json(LogLine{evil})["line"], "\x1B[2J\xC2\x9B\n\xEF\xBF\xBD");
    EXPECT_EQ(lines(*make_json_printer(display), LogLine{evil}).at(0).find("\xC2\x9B"), std::string::npos);
    EXPECT_NE(story(CommandGiven{"plug", evil}).at(0).find(shown), std::string::npos);
}

TEST_F(PrinterTest, a_call_to_the_plug_in_is_shown_as_it_is_made) {
    const HostCall call{"incomingCall", {"", "42", true}};
    EXPECT_EQ(plain(call), Lines{"host       incomingCall(\"\", \"42\", true)"});
    EXPECT_EQ(json(call)["arguments"], nlohmann::json::array({"", "42", true}));
    EXPECT_EQ(plain(HostCall{"callStateSync", {"id", Words{"1", "2"}, 2}}),
              Lines{"host       callStateSync(\"id\", {\"1\", \"2\"}, 2)"});
}

TEST_F(PrinterTest, a_request_has_the_name_of_the_listener_s_operation) {
    const ActionRequested request{Action::mute_call, "usb-A1", "42", true};
    EXPECT_EQ(plain(request), Lines{"action     onMuteCall(\"usb-A1\", \"42\", true)"});
    EXPECT_EQ(json(request)["action"], "muteCall");
    EXPECT_EQ(json(request)["cid"], "42");
}

TEST_F(PrinterTest, a_notice_names_the_headset_that_it_is_about) {
    const HeadsetReady ready{{"usb-A1", 0x0B0E, 0x24C9, "Jabra", "Link", "A1"}};
    EXPECT_EQ(
        plain(ready),
        Lines{"ready      onActiveDeviceNotify(\"usb-A1\", 0x0B0E, 0x24C9, \"Jabra\", \"Link\", \"A1\")"});
    EXPECT_EQ(json(ready)["headset"], "jabra");
    EXPECT_EQ(json(ready)["vendor_id"], 0x0B0E);
    EXPECT_EQ(json(ready)["permission"], true);
    headsets.take_log_line("enumerate_hid_device: cannot open \\\\?\\hid, sn = A1: Access is denied.");
    EXPECT_EQ(
        plain(ready),
        Lines{
            "refused    onActiveDeviceNotify(\"usb-A1\", 0x0B0E, 0x24C9, \"Jabra\", \"Link\", \"A1\"), no permission"});
    EXPECT_EQ(json(ready)["permission"], false);
    ASSERT_EQ(story(ready).size(), 1U);
    EXPECT_TRUE(story(ready)[0].ends_with("\"A1\"), no permission")) << story(ready)[0];
}

TEST_F(PrinterTest, a_failure_says_where_what_was_wanted_and_what_was_found) {
    const ExpectationChecked failed{false, "ready", "no notice", "a.story:3"};
    EXPECT_EQ(plain(failed), Lines{"FAILED     a.story:3: wanted ready; found no notice"});
    EXPECT_EQ(json(failed)["ok"], false);
    EXPECT_EQ(plain(ExpectationChecked{true, "ready", "", ""}), Lines{"ok         ready"});
}

TEST_F(PrinterTest, a_story_shows_commands_as_steps_but_not_those_that_show_themselves) {
    EXPECT_EQ(story(CommandGiven{"hold", "hold 42"}), Lines{"  $ hold 42"});
    EXPECT_EQ(story(CommandGiven{"expect", "expect ready"}), Lines{});
    EXPECT_EQ(story(CommandGiven{"say", "say hello"}), Lines{});
    EXPECT_EQ(story(Said{"hello"}), (Lines{"", "hello"}));
    EXPECT_EQ(plain(CommandGiven{"hold", "hold 42"}), Lines{});
}

TEST_F(PrinterTest, a_story_leaves_out_what_another_line_says) {
    EXPECT_EQ(story(IndicatorChanged{1, {{0x08, 0x17}, true}}), Lines{});
    EXPECT_EQ(plain(IndicatorChanged{1, {{0x08, 0x17}, true}}), Lines{"indicator  jabra  off-hook on"});
}

TEST_F(PrinterTest, mistakes_go_where_errors_go) {
    EXPECT_EQ(plain(CommandFailed{"no such command", "a.story:1"}), Lines{});
    EXPECT_EQ(display.errors, Lines{"a.story:1: no such command"});
    EXPECT_EQ(json(CommandFailed{"no such command", "a.story:1"})["event"], "error");
}

TEST_F(PrinterTest, json_survives_text_that_is_not_utf_8) {
    EXPECT_EQ(json(LogLine{"a\xFF"})["line"], "a\xEF\xBF\xBD");
}

TEST_F(PrinterTest, colour_is_put_around_the_label_only_when_it_is_wanted) {
    EXPECT_EQ(Style(false).paint(Colour::red, "x"), "x");
    EXPECT_EQ(Style(true).paint(Colour::red, "x"), "\x1b[31mx\x1b[0m");
    EXPECT_EQ(Style(true).paint(Colour::none, "x"), "x");
    EXPECT_EQ(lines(*make_plain_printer(display, Style(true)), Text{"x"}), Lines{"x"});
}

}  // namespace
}  // namespace softphone
