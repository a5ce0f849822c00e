#include "base/plugin_log.h"

#include <atomic>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/support/layer_log.h"

namespace {

using test_support::install_layer_logger;
using Lines = std::vector<std::string>;

std::atomic<int> g_lines_that_did_not_fit = 0;

class PluginLog : public testing::Test {
  protected:
    void SetUp() override {
        g_lines_that_did_not_fit = 0;
        set_invalid_parameter_handler([] { ++g_lines_that_did_not_fit; });
    }
    void TearDown() override { set_invalid_parameter_handler(nullptr); }

    std::shared_ptr<test_support::RecordingLogger> logger_ = install_layer_logger();
};

TEST_F(PluginLog, formats_a_line_and_returns_0) {
    EXPECT_EQ(plugin_log("HeadsetPlugin: %s: cid = %s, state = %d \n", "function", "7", -2), 0);
    EXPECT_EQ(logger_->lines(), Lines{"HeadsetPlugin: function: cid = 7, state = -2 \n"});
}

TEST_F(PluginLog, takes_arguments_as_text_and_not_as_formats) {
    plugin_log("%s", "100 %s %n %%\n");
    EXPECT_EQ(logger_->lines(), Lines{"100 %s %n %%\n"});
}

TEST_F(PluginLog, delivers_every_line_with_level_2_whatever_it_says) {
    std::vector<std::string> lines;
    for (const char* const text : {"Warning", "exception caught", "error", "debug", "enter", ""}) {
        plugin_log("%s\n", text);
        lines.push_back(std::string(text) + "\n");
    }
    EXPECT_EQ(logger_->lines(), lines);
    EXPECT_EQ(logger_->odd_levels(), std::vector<int>());
}

TEST_F(PluginLog, delivers_an_empty_line) {
    plugin_log("%s", "");
    EXPECT_EQ(logger_->lines(), Lines{""});
}

TEST_F(PluginLog, delivers_a_line_of_1023_bytes_whole) {
    const std::string line = std::string(1022, 'x') + "\n";
    plugin_log("%s\n", std::string(1022, 'x').c_str());
    EXPECT_EQ(logger_->lines(), Lines{line});
    EXPECT_EQ(g_lines_that_did_not_fit, 0);
    EXPECT_EQ(longest_log_line, 1023);
}

TEST_F(PluginLog, delivers_nothing_of_a_longer_line_and_tells_the_handler) {
    for (const std::size_t length : {1024U, 1025U, 100000U}) {
        g_lines_that_did_not_fit = 0;
        EXPECT_EQ(plugin_log("%s", std::string(length, 'x').c_str()), 0);
        EXPECT_EQ(g_lines_that_did_not_fit, 1) << length;
    }
    EXPECT_EQ(logger_->lines(), Lines());
}

TEST_F(PluginLog, drops_a_longer_line_without_a_word_when_there_is_no_handler) {
    set_invalid_parameter_handler(nullptr);
    EXPECT_EQ(plugin_log("%s", std::string(1024, 'x').c_str()), 0);
    plugin_log("next\n");
    EXPECT_EQ(logger_->lines(), Lines{"next\n"});
}

TEST_F(PluginLog, treats_a_line_that_cannot_be_formatted_as_one_that_does_not_fit) {
    static constexpr wchar_t no_character[] = {static_cast<wchar_t>(0x110000), L'\0'};
    EXPECT_EQ(plugin_log("%ls", no_character), 0);
    EXPECT_EQ(logger_->lines(), Lines());
    EXPECT_EQ(g_lines_that_did_not_fit, 1);
}

TEST_F(PluginLog, loses_lines_without_a_logger) {
    const std::weak_ptr<test_support::RecordingLogger> gone = logger_;
    logger_.reset();
    EXPECT_TRUE(gone.expired()) << "nobody else keeps the host's logger";
    EXPECT_EQ(plugin_log("HeadsetPlugin: %s:\n", "function"), 0);

    logger_ = install_layer_logger();
    EXPECT_EQ(logger_->lines(), Lines());
    plugin_log("HeadsetPlugin: %s:\n", "function");
    EXPECT_EQ(logger_->lines(), Lines{"HeadsetPlugin: function:\n"});
}

TEST_F(PluginLog, formats_nothing_without_a_logger) {
    logger_.reset();
    plugin_log("%s", std::string(2000, 'x').c_str());
    EXPECT_EQ(g_lines_that_did_not_fit, 0);
}

TEST_F(PluginLog, lets_what_the_logger_throws_reach_the_caller) {
    logger_->on_line([](const std::string& line) { throw std::runtime_error(line); });
    EXPECT_THROW(plugin_log("disk full\n"), std::runtime_error);
    logger_->on_line({});
    plugin_log("next\n");
    EXPECT_EQ(logger_->lines(), (Lines{"disk full\n", "next\n"}));
}

TEST_F(PluginLog, keeps_lines_of_several_threads_whole) {
    constexpr std::size_t threads = 4;
    constexpr std::size_t lines_each = 100;
    std::vector<std::thread> writers;
    for (std::size_t number = 0; number < threads; ++number) {
        writers.emplace_back([number] {
            const std::string text(900, static_cast<char>('a' + number));
            for (std::size_t i = 0; i < lines_each; ++i) {
                plugin_log("%s\n", text.c_str());
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    for (std::size_t number = 0; number < threads; ++number) {
        EXPECT_EQ(logger_->count(std::string(900, static_cast<char>('a' + number)) + "\n"), lines_each);
    }
    EXPECT_EQ(logger_->lines().size(), threads * lines_each);
}

TEST_F(PluginLog, goes_on_while_the_host_lets_go_of_one_logger_after_another) {
    std::atomic<bool> done = false;
    std::thread writer([&] {
        while (!done) {
            plugin_log("%s\n", "line");
        }
    });
    for (int i = 0; i < 20; ++i) {
        logger_ = install_layer_logger();
        EXPECT_TRUE(logger_->wait_for("line\n"));
    }
    done = true;
    writer.join();
}

TEST(TrueOrFalse, is_what_the_log_prints_for_a_flag) {
    EXPECT_STREQ(true_or_false(true), "true");
    EXPECT_STREQ(true_or_false(false), "false");
}

}  // namespace
