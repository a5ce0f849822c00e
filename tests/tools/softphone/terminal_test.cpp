// The program at a terminal: editing, completion, the panel, and the terminal as it is left behind.
#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include "tests/tools/softphone/program.h"

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
