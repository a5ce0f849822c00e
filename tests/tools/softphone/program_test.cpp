// The program with scripts, pipes and mistakes.
#include "tests/tools/softphone/program.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "tools/softphone/commands.h"
#include "tools/softphone/expectations.h"

namespace softphone {
namespace {

ProgramResult run_commands(const std::string& commands, std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.begin(), {"--library", ORVEX_VIRTUAL_LIBRARY});
    return run_program(arguments, commands);
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

constexpr const char* ready_jabra =
    "plug jabra-link-380c as jabra\n"
    "expect log \"read_thread: Enter\"\n"
    "device jabra\n"
    "expect ready jabra\n";

TEST(Program, help_documents_the_exit_statuses) {
    const auto result = run_program({"--help"});
    EXPECT_EQ(result.status, 0);
    for (const char* part : {"--library", "--real", "--headsets", "--script", "--json", "--log", "--plain",
                             "--narrate", "Exit status", "NO_COLOR"})
        EXPECT_TRUE(contains(result.output, part)) << part;
}

TEST(Program, says_its_version) {
    const auto result = run_program({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output.rfind("softphone ", 0), 0U) << result.output;
}

TEST(Program, a_wrong_option_is_status_2) {
    EXPECT_EQ(run_program({"--bogus"}).status, 2);
    EXPECT_EQ(run_program({"--json", "--narrate"}).status, 2);
    EXPECT_EQ(run_commands("", {"--script", "/no/such.story"}).status, 2);
    EXPECT_EQ(run_commands("", {"--script", "/"}).status, 2);
}

TEST(Program, a_missing_library_is_status_3_and_named) {
    const auto result = run_program({"--library", "/no/such/library.so"});
    EXPECT_EQ(result.status, 3);
    EXPECT_TRUE(contains(result.errors, "/no/such/library.so")) << result.errors;
}

TEST(Program, a_library_that_is_no_plug_in_is_status_3) {
    const auto result = run_program({"--library", "libc.so.6"});
    EXPECT_EQ(result.status, 3);
    EXPECT_TRUE(contains(result.errors, "createPluginControlFacade")) << result.errors;
}

TEST(Program, the_virtual_library_beside_it_is_found_without_an_option) {
    const auto result = run_program({}, "models\n");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(contains(result.output, "jabra-link-380c: Jabra Link 380c"));
}

TEST(Program, the_product_library_has_calls_but_no_virtual_headsets) {
    const std::vector<std::string> product{"--library", ORVEX_PRODUCT_LIBRARY};
    const auto calls =
        run_program(product, "incoming 1\nconnect 1\nexpect call 1 connected\ndevice x\nend 1\n");
    EXPECT_EQ(calls.status, 0) << calls.output << calls.errors;
    const auto plugging = run_program(product, "plug jabra-link-380c\n");
    EXPECT_EQ(plugging.status, 2);
    EXPECT_EQ(plugging.errors, "<stdin>:1: this library has no virtual headsets\n");
}

TEST(Program, the_audio_devices_of_the_headsets_are_listed) {
    const auto result = run_commands(
        "plug jabra-link-380c as jabra\nplug poly-blackwire-3220 S2 as poly\nunplug poly\ndevice\n");
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    EXPECT_TRUE(contains(
        result.output,
        "jabra: \"usb-Jabra_Link_380c_50C2ED83A1F4-00\", \"Jabra Link 380c\", serial \"50C2ED83A1F4\"\n"))
        << result.output;
    EXPECT_FALSE(contains(result.output, "poly: ")) << result.output;
}

TEST(Program, says_so_where_there_is_no_headset_to_list) {
    const std::string none = "no headset is plugged: \"plug MODEL\" plugs one, and \"models\" shows them\n";
    const auto result = run_commands("headsets\ndevice\n");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(contains(result.output, none + none)) << result.output;
    const auto unplugged = run_commands("plug jabra-link-380c\nunplug jabra-link-380c\ndevice\n");
    EXPECT_TRUE(contains(unplugged.output, none)) << unplugged.output;
}

TEST(Program, works_with_the_product_library_by_a_word) {
    const auto result = run_program({"--real"}, "models\n");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "<stdin>:1: this library has no virtual headsets\n");
    EXPECT_EQ(run_program({"--real", "--library", "x"}).status, 2);
}

TEST(Program, takes_virtual_headsets_from_a_library_beside_the_plug_in) {
    const std::vector<std::string> beside{"--real", "--headsets", ORVEX_VIRTUAL_LIBRARY};
    const auto result = run_program(beside, "plug jabra-link-380c\nheadsets\ndevice\n");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(contains(result.output, "jabra-link-380c (1): Jabra Link 380c")) << result.output;
    const auto missing = run_program({"--real", "--headsets", ORVEX_PRODUCT_LIBRARY});
    EXPECT_EQ(missing.status, 3);
    EXPECT_TRUE(contains(missing.errors, "orvex_virtual_model")) << missing.errors;
}

TEST(Program, a_library_without_a_slash_may_be_in_the_current_folder) {
    const std::string in_folder = std::string("cd \"$(dirname \"$0\")\" && exec ") + SOFTPHONE_PROGRAM + " ";
    const auto run_there = [&](const std::string& arguments) {
        return test_support::run_program("/bin/sh", {"-c", in_folder + arguments, ORVEX_VIRTUAL_LIBRARY},
                                         "models\n");
    };
    const std::string name = std::filesystem::path(ORVEX_VIRTUAL_LIBRARY).filename();
    const auto library = run_there("--library " + name);
    EXPECT_EQ(library.status, 0) << library.errors;
    EXPECT_TRUE(contains(library.output, "jabra-link-380c"));
    const auto headsets = run_there("--real --headsets " + name);
    EXPECT_EQ(headsets.status, 0) << headsets.errors;
}

TEST(Program, a_full_disk_is_status_71_in_words) {
    const std::string program = std::string("exec ") + SOFTPHONE_PROGRAM + " ";
    for (const char* arguments : {"--library \"$0\"", "--library \"$0\" --json", "--help", "--version"}) {
        const auto result = test_support::run_program(
            "/bin/sh", {"-c", program + arguments + " >/dev/full", ORVEX_VIRTUAL_LIBRARY}, "calls\n");
        EXPECT_EQ(result.status, 71) << arguments;
        EXPECT_EQ(result.errors, "softphone: cannot write to standard output: No space left on device\n")
            << arguments;
    }
}

TEST(Program, a_failed_expectation_is_status_1_and_does_not_end_the_script) {
    const auto result = run_commands("expect ready within 0\nsay after\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(contains(result.output, "<stdin>:1: wanted ready within 0; found no notice"))
        << result.output;
    EXPECT_TRUE(contains(result.output, "after"));
}

TEST(Program, a_mistake_in_a_script_ends_it_with_its_place) {
    const auto result = run_commands("# comment\n\nsing\nsay after\n");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "<stdin>:3: there is no command \"sing\"; see help\n");
    EXPECT_FALSE(contains(result.output, "after"));
}

TEST(Program, mistakes_are_explained) {
    const std::pair<const char*, const char*> mistakes[] = {
        {"connect", "usage: connect CID"},
        {"auto perhaps", "usage: auto on|off"},
        {"plug no-such-model", "there is no model \"no-such-model\"; there are anker-powerconf "},
        {"mute 42", "there is no call \"42\"; see calls"},
        {"unmute 42", "there is no call \"42\"; see calls"},
        {"hold 42", "there is no call \"42\"; see calls"},
        {"resume 42", "there is no call \"42\"; see calls"},
        {"end 42", "there is no call \"42\"; see calls"},
        {"press mute", "no headset is plugged"},
        {"unplug jabra", "there is no headset \"jabra\""},
        {"wait soon", "\"soon\" is not a number of milliseconds"},
        {"say \"hello", "a quote is not closed"},
        {"help sing", "there is no command \"sing\""},
        {"plug jabra-link-380c A1 is name", "after the serial number"},
        {"expect rain", "\"rain\" cannot be expected"},
    };
    for (const auto& [line, explanation] : mistakes) {
        const auto result = run_commands(std::string(line) + "\n");
        EXPECT_EQ(result.status, 2) << line;
        EXPECT_TRUE(contains(result.errors, explanation)) << line << ": " << result.errors;
    }
}

TEST(Program, a_key_that_the_headset_lacks_is_a_mistake) {
    const auto result = run_commands("plug jabra-link-380c\npress 0B:77\n");
    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(contains(result.errors, "<stdin>:2: ")) << result.errors;
}

TEST(Program, input_ends_at_quit) {
    const auto result = run_commands("say before\nquit\nsay after\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(contains(result.output, "before"));
    EXPECT_FALSE(contains(result.output, "after"));
}

TEST(Program, a_second_headset_of_a_model_gets_a_name_of_its_own) {
    const auto result = run_commands("plug jabra-link-380c A\nplug jabra-link-380c B\nheadsets\n");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(contains(result.output, "jabra-link-380c-2 (2): Jabra Link 380c, serial \"B\""))
        << result.output;
}

TEST(Program, log_lines_are_shown_when_they_are_asked_for) {
    const std::string commands = "incoming 1\n";
    EXPECT_FALSE(contains(run_commands(commands).output, "incomingCall: cid=1"));
    EXPECT_TRUE(contains(run_commands(commands, {"--log"}).output, "incomingCall: cid=1"));
    EXPECT_TRUE(contains(run_commands(commands + "log\n").output, "incomingCall: cid=1"));
}

TEST(Program, a_plain_run_has_no_control_characters) {
    const auto result = run_commands(std::string(ready_jabra) + "incoming 1\nconnect 1\npress mute\nhelp\n");
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_FALSE(contains(result.output, "\x1b"));
}

TEST(Program, every_line_of_json_is_an_object_that_the_manual_names) {
    std::ostringstream manual;
    manual << std::ifstream(SOFTPHONE_MANUAL).rdbuf();
    const auto result =
        run_commands(std::string(ready_jabra) +
                         "incoming 1\nconnect 1\npress mute\nexpect action muteCall 1\nheadsets\n"
                         "models\ncalls\nhelp\nexpect ready within 0\nsay done\nunplug jabra\n"
                         "expect removed\nsync\nsing\n",
                     {"--json", "--log"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "");
    std::set<std::string> events;
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);) {
        const auto object = nlohmann::json::parse(line);
        events.insert(object.at("event").get<std::string>());
    }
    for (const char* event : {"action", "indicator", "report", "ready", "removed", "log", "call", "expect"})
        EXPECT_TRUE(events.contains(event)) << event;
    for (const auto& event : events)
        EXPECT_TRUE(contains(manual.str(), "| `" + event + "` |")) << event;
}

TEST(Program, the_manual_names_every_command_and_condition) {
    std::ostringstream manual;
    manual << std::ifstream(SOFTPHONE_MANUAL).rdbuf();
    for (const auto& command : commands())
        EXPECT_TRUE(contains(manual.str(), std::string("`") + command.name)) << command.name;
    for (const auto& condition : condition_help())
        EXPECT_TRUE(contains(manual.str(), std::string("`expect ") + condition.name)) << condition.name;
}

TEST(Program, help_explains_every_command) {
    std::string script = "help\n";
    for (const auto& command : commands())
        script += std::string("help ") + command.name + "\n";
    const auto result = run_commands(script);
    EXPECT_EQ(result.status, 0) << result.errors;
    for (const auto& command : commands()) {
        EXPECT_TRUE(contains(result.output, command.summary)) << command.name;
        EXPECT_TRUE(contains(result.output, command.help)) << command.name;
    }
    for (const auto& condition : condition_help())
        EXPECT_TRUE(contains(result.output, condition.help)) << condition.name;
}

TEST(Commands, names_are_unique) {
    std::set<std::string> names;
    for (const auto& command : commands())
        EXPECT_TRUE(names.insert(command.name).second) << command.name;
}

}  // namespace
}  // namespace softphone
