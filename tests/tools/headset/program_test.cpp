// The program as people run it.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/support/reference_data.h"
#include "tests/support/run_program.h"
#include "tests/support/temporary_file.h"
#include "tests/tools/headset/small_headset.h"
#include "tools/common/text.h"
#include "tools/headset/udev_rules.h"

namespace headset::program_test {
namespace {

using test_support::ProgramResult;
using test_support::TemporaryFile;
using Json = nlohmann::json;

ProgramResult run(const std::vector<std::string>& arguments, const std::string& input = "") {
    return test_support::run_program(HEADSET_PROGRAM, arguments, input);
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

std::vector<Json> json_lines(const std::string& text) {
    std::vector<Json> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(Json::parse(line));
    return lines;
}

const std::string small = tools::to_hex(small_headset());
const std::string jabra = tools::to_hex(model_descriptor("jabra-link-380c"));

TEST(Program, help_names_the_commands_forms_and_exit_statuses) {
    const auto result = run({"--help"});
    EXPECT_EQ(result.status, 0);
    for (const char* part : {"caps", "decode", "encode", "explain", "doctor", "list", "monitor", "udev-rules",
                             "hid-recorder", "usbhid-dump", "binary", "Exit status", "--version"})
        EXPECT_TRUE(contains(result.output, part)) << part;
}

TEST(Program, every_command_has_help_with_examples) {
    for (const char* command : {"caps", "decode", "encode", "explain"}) {
        const auto result = run({command, "--help"});
        EXPECT_EQ(result.status, 0) << command;
        EXPECT_TRUE(contains(result.output, "DESCRIPTOR")) << command;
        EXPECT_TRUE(contains(result.output, "Example")) << command;
        EXPECT_TRUE(contains(result.output, std::string("  headset ") + command)) << command;
    }
}

TEST(Program, commands_without_a_descriptor_have_help_with_examples) {
    for (const char* command : {"doctor", "list", "monitor", "udev-rules"}) {
        const auto result = run({command, "--help"});
        EXPECT_EQ(result.status, 0) << command;
        EXPECT_TRUE(contains(result.output, "Example")) << command;
        EXPECT_TRUE(contains(result.output, std::string("  headset ") + command)) << command;
    }
}

TEST(Program, prints_the_udev_rules) {
    const auto result = run({"udev-rules"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output, udev_rules());
}

TEST(Program, says_its_version) {
    const auto result = run({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output.rfind("headset ", 0), 0U) << result.output;
}

TEST(Program, wrong_usage_is_status_2) {
    const std::vector<std::vector<std::string>> mistakes = {
        {},
        {"sing"},
        {"--bogus"},
        {"caps"},
        {"caps", small, small},
        {"decode", small},
        {"encode", small},
        {"explain"},
        {"list", small},
        {"doctor", small},
        {"udev-rules", "--json"},
        {"monitor", "SN-1", "SN-2"},
        {"monitor", "--set"},
        {"monitor", "--set", "mumble"},
        {"decode", "--output", "--feature", small, "02 01"},
        {"decode", small, "zz"},
        {"encode", small, "mumble"},
        {"caps", "/no/such.hid"},
        {"caps", "/"},
    };
    for (const auto& arguments : mistakes) {
        const auto result = run(arguments);
        EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(result.output, "") << testing::PrintToString(arguments);
        EXPECT_NE(result.errors, "") << testing::PrintToString(arguments);
    }
}

TEST(Program, what_is_refused_is_status_1_with_the_reason) {
    const std::pair<std::vector<std::string>, const char*> refusals[] = {
        {{"caps", "05 0B 09"}, "headset: the descriptor is refused: offset 2, item 0x09: "},
        {{"explain", "05 0B"}, "headset: the descriptor is refused: offset 0, item 0x00: no collection\n"},
        {{"decode", small, "09 00"},
         "headset: the Input report \"09 00\": the descriptor has no Input report of the id 09\n"},
        {{"decode", small, "01"}, "headset: the Input report \"01\" has 1 byte; it is to have 3 bytes\n"},
        {{"encode", small, "08:1E"},
         "headset: the descriptor has no Speaker (08:1E) in its Output reports\n"},
    };
    for (const auto& [arguments, text] : refusals) {
        const auto result = run(arguments);
        EXPECT_EQ(result.status, 1) << text;
        EXPECT_EQ(result.output, "") << text;
        EXPECT_EQ(result.errors.rfind(text, 0), 0U) << result.errors;
    }
}

TEST(Program, caps_shows_a_table) {
    const auto result = run({"caps", jabra});
    EXPECT_EQ(result.status, 0) << result.errors;
    for (const char* part :
         {"Headset (0B:05)", "Hook Switch (0B:20)", "Off-Hook (08:17)", "Consumer Control (0C:01)"})
        EXPECT_TRUE(contains(result.output, part)) << part;
}

TEST(Program, caps_takes_every_form_of_file) {
    const auto expected = run({"caps", jabra}).output;
    const auto bytes = model_descriptor("jabra-link-380c");
    const std::string count = std::to_string(bytes.size());
    for (const auto& content : {jabra + "\n", std::string(bytes.begin(), bytes.end()),
                                "N: Jabra\nI: 3 0b0e 24c9\nR: " + count + " " + jabra + "\n",
                                "001:004:003:DESCRIPTOR         1490000000.123456\n " + jabra + "\n"}) {
        const TemporaryFile file(content);
        const auto result = run({"caps", file.path()});
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(result.output, expected) << content;
    }
}

TEST(Program, caps_in_json_is_one_object) {
    const auto lines = json_lines(run({"caps", "--json", jabra}).output);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0]["collections"].size(), 3U);
    EXPECT_EQ(lines[0]["collections"][0]["NumberOutputButtonCaps"], 8);
}

TEST(Program, caps_of_standard_input_answers_line_by_line) {
    const auto result = run({"caps", "-"}, jabra + "\nzz\n05 0B 09\n\n" + small + "\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    const auto lines = json_lines(result.output);
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0].dump(), json_lines(run({"caps", "--json", jabra}).output).at(0).dump());
    EXPECT_EQ(lines[1]["error"].size(), 1U);
    EXPECT_EQ(lines[2]["error"]["offset"], 2);
    EXPECT_TRUE(lines[3].contains("error"));
    EXPECT_EQ(lines[4]["collections"].size(), 1U);
    EXPECT_EQ(run({"caps", "--json", "-"}, jabra + "\nzz\n05 0B 09\n\n" + small).output, result.output);
}

TEST(Program, caps_of_empty_standard_input_is_nothing) {
    const auto result = run({"caps", "-"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
}

TEST(Program, caps_answers_for_every_descriptor_of_the_reference_data) {
    SKIP_WITHOUT_REFERENCE_DATA();
    std::vector<std::string> descriptors;
    for (const char* folder : {"real", "other", "bad"})
        for (const auto& record : reference::load(folder))
            descriptors.push_back(record.data.at("descriptor_hex"));
    std::string input;
    for (const auto& hex : descriptors)
        input += hex + "\n";
    const auto result = run({"caps", "-"}, input);
    EXPECT_EQ(result.status, 0) << result.errors;
    const auto answers = json_lines(result.output);
    ASSERT_EQ(answers.size(), descriptors.size());
    for (std::size_t i = 0; i < answers.size(); ++i) {
        const auto parsed = platform::hidp::parse(reference::bytes(descriptors[i]));
        if (parsed.error)
            EXPECT_EQ(answers[i]["error"]["text"], parsed.error->text) << descriptors[i];
        else
            EXPECT_EQ(answers[i]["collections"].size(), parsed.collections.size()) << descriptors[i];
    }
}

TEST(Program, decode_shows_each_report) {
    const auto result = run({"decode", jabra, "02 08 00", "01:01:00"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output,
              "Input report 02 of Headset (0B:05)\n  button  Phone Mute (0B:2F)\n"
              "Input report 01 of Consumer Control (0C:01)\n  button  Volume Decrement (0C:EA)\n");
}

TEST(Program, decode_in_json_has_an_object_per_report) {
    const auto result = run({"decode", "--json", small, "010105", "01 00 0B"});
    EXPECT_EQ(result.output,
              "{\"report_id\":1,\"direction\":\"Input\",\"buttons\":[{\"UsagePage\":11,\"Usage\":47}],"
              "\"values\":[{\"UsagePage\":11,\"Usage\":224,\"Value\":5,\"Scaled\":5}]}\n"
              "{\"report_id\":1,\"direction\":\"Input\",\"buttons\":[],"
              "\"values\":[{\"UsagePage\":11,\"Usage\":224,\"Value\":11,\"Scaled\":null}]}\n");
}

TEST(Program, decode_takes_the_other_directions) {
    EXPECT_TRUE(contains(run({"decode", "--output", small, "02 01"}).output, "Off-Hook (08:17)"));
    EXPECT_TRUE(contains(run({"decode", small, "04 07", "--feature"}).output, "raw 7"));
}

TEST(Program, encode_prints_a_report_per_line) {
    EXPECT_EQ(run({"encode", small, "08:18", "0x08:0x17=1"}).output, "02 01\n03 01 00\n");
    EXPECT_EQ(run({"encode", "--input", small, "0B:E0=0x0A"}).output, "01 00 0A\n");
    EXPECT_EQ(run({"encode", "--feature", small, "08:4B=10"}).output, "04 0A\n");
}

TEST(Program, encode_in_json_has_an_object_per_report) {
    EXPECT_EQ(run({"encode", "--json", small, "08:18", "08:17"}).output,
              "{\"report_id\":2,\"direction\":\"Output\",\"bytes\":\"02 01\"}\n"
              "{\"report_id\":3,\"direction\":\"Output\",\"bytes\":\"03 01 00\"}\n");
}

TEST(Program, commands_take_their_descriptor_from_standard_input) {
    const auto bytes = small_headset();
    EXPECT_EQ(run({"encode", "-", "08:17"}, std::string(bytes.begin(), bytes.end())).output, "02 01\n");
    EXPECT_TRUE(contains(run({"explain", "-"}, jabra).output, "lit by 02 01 00"));
    EXPECT_TRUE(contains(run({"decode", "-", "02 08 00"}, jabra).output, "Phone Mute"));
}

TEST(Program, explain_takes_name_and_vendor_from_a_recording) {
    const auto bytes = model_descriptor("jabra-link-380c");
    const TemporaryFile file("R: " + std::to_string(bytes.size()) + " " + jabra +
                             "\nN: GN Jabra Link 380c\nI: 3 0b0e 24c9\n");
    const auto result = run({"explain", file.path()});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output.rfind("GN Jabra Link 380c, 0B0E:24C9: the plug-in has a driver", 0), 0U)
        << result.output;
}

/// Runs the program with arguments and redirections as a shell reads them.
ProgramResult run_in_shell(const std::string& arguments) {
    return test_support::run_program("/bin/sh",
                                     {"-c", std::string("exec ") + HEADSET_PROGRAM + " " + arguments, jabra});
}

TEST(Program, a_full_disk_is_a_system_error_in_words) {
    for (const char* arguments :
         {"caps \"$0\"", "encode \"$0\" 08:17", "udev-rules", "--help", "caps --help", "--version"}) {
        const auto result = run_in_shell(std::string(arguments) + " >/dev/full");
        EXPECT_EQ(result.status, 71) << arguments;
        EXPECT_EQ(result.errors, "headset: cannot write to standard output: No space left on device\n")
            << arguments;
    }
    const auto lines = run_in_shell("caps - >/dev/full <<end\n" + jabra + "\nend\n");
    EXPECT_EQ(lines.status, 71);
    EXPECT_TRUE(contains(lines.errors, "No space left on device")) << lines.errors;
}

TEST(Program, the_first_command_of_the_help_is_doctor) {
    const auto help = run({"--help"}).output;
    const auto doctor = help.find("\n  doctor ");
    ASSERT_NE(doctor, std::string::npos);
    EXPECT_EQ(help.find("\n  "), help.find("\n  -h,--help"));
    for (const char* other : {"list", "explain", "monitor", "udev-rules", "caps", "decode", "encode"})
        EXPECT_LT(doctor, help.find(std::string("\n  ") + other + " ")) << other;
}

TEST(Program, a_command_that_there_is_not_is_named_with_the_nearest) {
    EXPECT_EQ(run({"docter"}).errors, "headset: there is no command \"docter\"; did you mean \"doctor\"?\n");
    EXPECT_EQ(run({"udev", "--json"}).errors,
              "headset: there is no command \"udev\"; did you mean \"udev-rules\"?\n");
    const auto other = run({"sing"});
    EXPECT_EQ(other.status, 2);
    EXPECT_TRUE(contains(other.errors, "there is no command \"sing\"; the commands are doctor, list"))
        << other.errors;
}

TEST(Program, what_is_too_long_for_a_descriptor_is_refused_and_not_read) {
    const std::string too_long = "it is too long: a report descriptor has at most 4096 bytes";
    const auto endless = run({"caps", "/dev/zero"});
    EXPECT_EQ(endless.status, 1);
    EXPECT_EQ(endless.errors, "headset: /dev/zero: " + too_long + "\n");
    const TemporaryFile file("");
    std::filesystem::resize_file(file.path(), 3'000'000'000);  // without blocks on the disk
    EXPECT_EQ(run({"caps", file.path()}).errors, "headset: " + file.path() + ": " + too_long + "\n");
    EXPECT_EQ(run_in_shell("decode - 00 </dev/zero").errors, "headset: standard input: " + too_long + "\n");
}

TEST(Program, caps_answers_a_line_that_is_too_long_and_goes_on) {
    const auto result = run({"caps", "-"}, std::string(1'000'000, 'A') + "\n" + small);
    EXPECT_EQ(result.status, 0) << result.errors;
    const auto lines = json_lines(result.output);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0]["error"]["text"], "it is too long: a report descriptor has at most 4096 bytes");
    EXPECT_EQ(lines[1]["collections"].size(), 1U);
}

TEST(Program, caps_ends_with_a_line_that_does_not_end) {
    const auto result = run_in_shell("caps - </dev/zero");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "headset: standard input: a line does not end\n");
    ASSERT_EQ(json_lines(result.output).size(), 1U);
    EXPECT_TRUE(json_lines(result.output)[0].contains("error"));
}

TEST(Program, standard_input_that_cannot_be_read_is_no_success) {
    const auto result = run_in_shell("caps - </");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "headset: standard input: Is a directory\n");
}

TEST(Program, explain_shows_a_name_that_steers_no_terminal) {
    const auto bytes = model_descriptor("jabra-link-380c");
    const TemporaryFile file("R: " + std::to_string(bytes.size()) + " " + jabra +
                             "\nN: Evil\x1B[2J\xC2\x9B\xFF\nI: 3 0b0e 24c9\n");
    EXPECT_EQ(run({"explain", file.path()}).output.rfind("Evil?[2J?\xEF\xBF\xBD, 0B0E:24C9", 0), 0U);
    const TemporaryFile words("R: \x1B[2J");
    EXPECT_TRUE(contains(run({"caps", words.path()}).errors, "begins with \"?[2J\""));
}

TEST(Program, the_manual_names_every_command_and_option) {
    std::ostringstream manual;
    manual << std::ifstream(HEADSET_MANUAL).rdbuf();
    for (const char* part :
         {"headset caps", "headset decode", "headset encode", "headset explain", "headset doctor",
          "headset list", "headset monitor", "--set", "headset udev-rules", "--json", "--input", "--output",
          "--feature", "--version", "--help", "MaxUsageListLength", "report_id"})
        EXPECT_TRUE(contains(manual.str(), part)) << part;
}

}  // namespace
}  // namespace headset::program_test
