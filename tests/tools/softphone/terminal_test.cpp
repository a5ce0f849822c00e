// The program at a terminal: editing, completion, the panel, and the terminal as it is left behind.
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/tools/softphone/program.h"
#include "tools/softphone/history.h"

namespace softphone {
namespace {

constexpr const char* prompt = "softphone> ";
constexpr const char* rest_of_screen_scrolls = "\x1b[17;30r";  // a panel of 16 rows on a screen of 30
constexpr const char* whole_screen_scrolls = "\x1b[r";
constexpr const char* end_of_input = "\x04";  // Control-D
constexpr const char* redraw = "\x0C";        // Control-L
constexpr const char* suspend = "\x1A";       // Control-Z

class TerminalTest : public testing::Test {
  protected:
    TerminalProgram program{{"--library", ORVEX_VIRTUAL_LIBRARY}};

    void SetUp() override {
        ASSERT_TRUE(program.shows("onListenerAttached"));
        ASSERT_TRUE(program.shows(prompt));
    }

    void expect_restored_terminal() {
        EXPECT_TRUE(program.in_line_mode());
        const auto restored = program.output().rfind(whole_screen_scrolls);
        ASSERT_NE(restored, std::string::npos);
        EXPECT_GT(restored, program.output().rfind(rest_of_screen_scrolls));
    }
};

TEST_F(TerminalTest, the_panel_has_the_top_of_the_screen) {
    EXPECT_NE(program.output().find(rest_of_screen_scrolls), std::string::npos);
    EXPECT_FALSE(program.in_line_mode());
    program.type("incoming 42\r");
    EXPECT_TRUE(program.shows("incomingCall(\"\", \"42\", true)"));
    EXPECT_TRUE(program.paints("42  ringing"));
}

TEST_F(TerminalTest, tab_completes_commands_models_and_headsets) {
    program.type("plu\tjabra-l\tas my-jabra\r");
    EXPECT_TRUE(program.shows("my-jabra plugged: Jabra Link 380c"));
    program.type("device my\t\r");
    EXPECT_TRUE(program.shows("setAudioDevice(\"usb-Jabra_Link_380c_"));
    program.type("expect ind\toff-\toff\r");
    EXPECT_TRUE(program.shows("ok         indicator off-hook off"));
}

TEST_F(TerminalTest, the_arrow_key_brings_the_last_command_back) {
    program.type("say hello\r");
    EXPECT_TRUE(program.shows("\r\nhello"));
    program.type("\x1b[A\r");
    EXPECT_TRUE(program.shows("\r\nhello"));
}

TEST_F(TerminalTest, what_is_being_typed_stays_when_something_happens) {
    program.type("plug jabra-link-380c as jabra\r");
    ASSERT_TRUE(program.shows("jabra plugged"));
    program.type("device jabra\rconnect 4");
    // The headset becomes ready while the line is being typed; the prompt comes back below with the line.
    ASSERT_TRUE(program.shows("onActiveDeviceNotify"));
    ASSERT_TRUE(program.shows("softphone> connect 4"));
    program.type("2\r");
    EXPECT_TRUE(program.shows("connectCall(\"\", \"42\")"));
}

TEST_F(TerminalTest, a_mistake_is_explained_and_the_prompt_goes_on) {
    program.type("sing\r");
    EXPECT_TRUE(program.shows("there is no command \"sing\""));
    program.type("say still here\r");
    EXPECT_TRUE(program.shows("\r\nstill here"));
    program.type("quit\r");
    const int status = program.wait_for_end();
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(TerminalTest, the_screen_is_drawn_again_at_another_size) {
    program.resize(40, 90);
    EXPECT_TRUE(program.shows("\x1b[19;40r"));
    program.resize(10, 90);
    EXPECT_TRUE(program.shows(whole_screen_scrolls)) << "too small for a panel";
    program.type("say hello\r");
    EXPECT_TRUE(program.shows("\r\nhello"));
}

TEST_F(TerminalTest, control_l_draws_the_screen_again) {
    program.type("say one line\rsay ha");
    ASSERT_TRUE(program.shows("\r\none line"));
    ASSERT_TRUE(program.shows("say ha"));
    program.type(redraw);
    EXPECT_TRUE(program.shows(rest_of_screen_scrolls));
    EXPECT_TRUE(program.shows("one line"));
    EXPECT_TRUE(program.shows("softphone> say ha"));
}

TEST_F(TerminalTest, control_d_ends_it_and_leaves_the_terminal_in_order) {
    program.type(end_of_input);
    const int status = program.wait_for_end();
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_NE(program.output().find("stopPluginControlFacade"), std::string::npos);
    expect_restored_terminal();
}

TEST_F(TerminalTest, a_signal_ends_it_and_leaves_the_terminal_in_order) {
    program.type("expect ready within 100000\r");
    ASSERT_TRUE(program.shows("within 100000\r\n"));
    program.send_signal(SIGTERM);
    const int status = program.wait_for_end();
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 128 + SIGTERM);
    expect_restored_terminal();
}

TEST_F(TerminalTest, a_terminal_that_goes_away_ends_it) {
    program.hang_up();
    const int status = program.wait_for_end();
    EXPECT_TRUE(WIFEXITED(status)) << status;
}

TEST_F(TerminalTest, a_crash_leaves_the_terminal_in_order) {
#ifdef ORVEX_THREAD_SANITIZER
    GTEST_SKIP() << "ThreadSanitizer takes locks for what a signal handler calls, and may hold them already";
#endif
    program.send_signal(SIGABRT);
    const int status = program.wait_for_end();
    ASSERT_NE(status, -1);
    EXPECT_FALSE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    expect_restored_terminal();
}

TEST_F(TerminalTest, it_is_suspended_and_goes_on) {
    program.type("say ha");
    ASSERT_TRUE(program.shows("say ha"));
    program.type(suspend);
    ASSERT_TRUE(program.shows(whole_screen_scrolls));
    ASSERT_TRUE(program.waits_stopped());
    EXPECT_TRUE(program.in_line_mode());
    program.send_signal(SIGCONT);
    EXPECT_TRUE(program.shows(rest_of_screen_scrolls));
    EXPECT_TRUE(program.shows("softphone> say ha"));
    EXPECT_FALSE(program.in_line_mode());
}

/// Runs the program with a state folder until it has ended.
void run_with_state(const std::string& folder, const std::string& typed, const std::string& shown) {
    TerminalProgram program({"--library", ORVEX_VIRTUAL_LIBRARY}, 30, 100, folder);
    ASSERT_TRUE(program.shows(prompt));
    program.type(typed);
    EXPECT_TRUE(program.shows(shown));
    program.type("quit\r");
    EXPECT_EQ(program.wait_for_end(), 0);
}

class HistoryTest : public testing::Test {
  protected:
    void TearDown() override { std::filesystem::remove_all(base_); }

    std::filesystem::perms mode(const std::filesystem::path& path) const {
        return std::filesystem::status(path).permissions();
    }

    const std::filesystem::path base_ = testing::TempDir() + "orvex-state-" + std::to_string(::getpid());
    const std::filesystem::path folder_ = base_ / "state";
    const std::filesystem::path file_ = folder_ / "softphone/history";
};

TEST_F(HistoryTest, is_kept_between_runs_for_this_user_alone) {
    run_with_state(folder_, "say hello\r", "\r\nhello");
    using std::filesystem::perms;
    EXPECT_EQ(mode(folder_), perms::owner_all);
    EXPECT_EQ(mode(folder_ / "softphone"), perms::owner_all);
    EXPECT_EQ(mode(file_), perms::owner_read | perms::owner_write);
    // The last line is "quit", the one before it "say hello".
    run_with_state(folder_, "\x1b[A\x1b[A\r", "\r\nhello");
}

TEST_F(HistoryTest, keeps_the_lines_of_two_that_run_at_once) {
    TerminalProgram one({"--library", ORVEX_VIRTUAL_LIBRARY}, 30, 100, folder_);
    TerminalProgram other({"--library", ORVEX_VIRTUAL_LIBRARY}, 30, 100, folder_);
    ASSERT_TRUE(one.shows(prompt));
    ASSERT_TRUE(other.shows(prompt));
    one.type("say one\r");
    EXPECT_TRUE(one.shows("\r\none"));
    other.type("say other\r");
    EXPECT_TRUE(other.shows("\r\nother"));
    one.type("quit\r");
    EXPECT_EQ(one.wait_for_end(), 0);
    other.type("quit\r");
    EXPECT_EQ(other.wait_for_end(), 0);
    // Of both the last line is "quit".
    run_with_state(folder_, "\x1b[A\x1b[A\r", "\r\nother");
    run_with_state(folder_, "\x1b[A\x1b[A\x1b[A\x1b[A\x1b[A\x1b[A\r", "\r\none");
}

TEST_F(HistoryTest, is_not_kept_where_the_folder_cannot_be_made) {
    std::filesystem::create_directories(base_);
    std::ofstream(base_ / "file") << "";
    run_with_state(base_ / "file/state", "say hello\r", "\r\nhello");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(base_), {}), 1);
}

TEST_F(HistoryTest, is_not_kept_of_scripts) {
    setenv("XDG_STATE_HOME", folder_.c_str(), 1);
    EXPECT_EQ(run_program({"--library", ORVEX_VIRTUAL_LIBRARY}, "say hello\n").status, 0);
    unsetenv("XDG_STATE_HOME");
    EXPECT_FALSE(std::filesystem::exists(folder_));
}

TEST(HistoryFile, is_where_the_xdg_directories_have_it) {
    const auto with = [](const char* state, const char* home) {
        const std::pair<const char*, const char*> variables[] = {{"XDG_STATE_HOME", state}, {"HOME", home}};
        for (const auto& [name, value] : variables)
            value ? setenv(name, value, 1) : unsetenv(name);
        return history_file().string();
    };
    const std::string home = std::getenv("HOME") ? std::getenv("HOME") : "";
    EXPECT_EQ(with("/state", "/home/me"), "/state/softphone/history");
    EXPECT_EQ(with(nullptr, "/home/me"), "/home/me/.local/state/softphone/history");
    EXPECT_EQ(with("", "/home/me"), "/home/me/.local/state/softphone/history");
    EXPECT_EQ(with("not/absolute", "/home/me"), "/home/me/.local/state/softphone/history");
    EXPECT_EQ(with(nullptr, nullptr), "");
    with(nullptr, home.c_str());
}

TEST(PlainTerminal, has_a_prompt_and_no_panel) {
    TerminalProgram program{{"--plain", "--library", ORVEX_VIRTUAL_LIBRARY}};
    ASSERT_TRUE(program.shows(prompt));
    program.type("incoming 42\r");
    EXPECT_TRUE(program.shows("incomingCall(\"\", \"42\", true)"));
    program.type("quit\r");
    EXPECT_NE(program.wait_for_end(), -1);
    EXPECT_EQ(program.output().find("42  ringing"), std::string::npos);
    EXPECT_EQ(program.output().find("r\x1b["), std::string::npos);
    EXPECT_TRUE(program.in_line_mode());
}

TEST(JsonTerminal, has_no_prompt) {
    TerminalProgram program{{"--json", "--library", ORVEX_VIRTUAL_LIBRARY}};
    ASSERT_TRUE(program.shows("{\"event\":\"attached\"}"));
    program.type("calls\nquit\n");
    EXPECT_NE(program.wait_for_end(), -1);
    EXPECT_EQ(program.output().find(prompt), std::string::npos);
}

}  // namespace
}  // namespace softphone
