// Watching headsets of a described machine.
#include "tools/headset/monitor.h"

#include <csignal>
#include <gtest/gtest.h>
#include <mutex>
#include <sstream>
#include <unistd.h>

#include "platform/thread.h"
#include "tests/tools/headset/described_system.h"
#include "tools/common/output.h"
#include "tools/common/text.h"
#include "tools/headset/commands.h"
#include "tools/headset/errors.h"

namespace headset::monitor_test {
namespace {

using platform::virtual_platform::FullUsage;
using std::chrono::milliseconds;

constexpr milliseconds limit{10'000};
constexpr FullUsage phone_mute{0x0B, 0x2F};
constexpr FullUsage volume_increment{0x0C, 0xE9};
const Assignment off_hook{{Usage{0x08, 0x17}}};
const Assignment mute{{Usage{0x08, 0x09}}};

/// The reports that a monitor has told of.
class Seen {
  public:
    Monitor::Handler handler() {
        return [this](const SeenReport& report) {
            platform::MutexLock lock(mutex_);
            reports_.push_back(report);
            changed_.notify_all();
        };
    }
    /// Waits for this many.
    std::vector<SeenReport> wait(std::size_t count) {
        platform::MutexLock lock(mutex_);
        const auto deadline = std::chrono::steady_clock::now() + limit;
        while (reports_.size() < count && std::chrono::steady_clock::now() < deadline)
            changed_.wait_until(mutex_, deadline);
        EXPECT_GE(reports_.size(), count);
        return reports_;
    }

  private:
    platform::Mutex mutex_;
    platform::Condition changed_;
    std::vector<SeenReport> reports_ GUARDED_BY(mutex_);
};

/// Joins a thread at the end of a scope, also when something is thrown.
struct Joined {
    std::thread& thread;
    ~Joined() { thread.join(); }
};

class Monitoring : public testing::Test {
  protected:
    Monitoring() : number_(system_.plug({})) {}

    std::unique_ptr<Monitor> open(const std::string& path_or_serial = "") {
        return std::make_unique<Monitor>(system_, find_headset(system_, path_or_serial), seen_.handler());
    }

    /// Runs a monitor while something happens to the headset; its result.
    template <class Happening>
    std::string run(Monitor& monitor, Happening happening) {
        std::thread other = platform::start_thread("happening", happening);
        const Joined joined{other};
        return monitor.run();
    }

    DescribedSystem system_;
    int number_;
    Seen seen_;
};

TEST_F(Monitoring, shows_what_is_pressed_in_every_interface) {
    const auto monitor = open();
    const auto loss = run(*monitor, [&] {
        system_.bus().press(number_, phone_mute);
        seen_.wait(2);
        system_.bus().set_key(number_, volume_increment, true);
        seen_.wait(3);
        monitor->end();
    });
    EXPECT_EQ(loss, "");
    const auto reports = seen_.wait(3);
    EXPECT_EQ(reports[0].path, "/dev/hidraw0:1");
    EXPECT_EQ(tools::to_hex(reports[0].bytes), "02 08 00");
    ASSERT_TRUE(reports[0].decoded);
    EXPECT_EQ(reports[0].decoded->buttons, (std::vector<Usage>{{0x0B, 0x2F}}));
    ASSERT_TRUE(reports[1].decoded);
    EXPECT_TRUE(reports[1].decoded->buttons.empty());
    EXPECT_EQ(reports[2].path, "/dev/hidraw0:3");
    EXPECT_LE(reports[0].time, reports[2].time);
}

TEST_F(Monitoring, resets_what_was_set_and_tells_nobody) {
    const auto monitor = open();
    monitor->set(std::vector{off_hook, mute});
    EXPECT_EQ(system_.bus().indicator(number_, {0x08, 0x17}), true);
    const std::size_t told = seen_.wait(1).size();
    monitor->reset(std::vector{off_hook, mute});
    EXPECT_EQ(system_.bus().indicator(number_, {0x08, 0x17}), false);
    EXPECT_EQ(system_.bus().indicator(number_, {0x08, 0x09}), false);
    EXPECT_EQ(seen_.wait(0).size(), told);
    monitor->reset(std::vector{Assignment{{Usage{0x08, 0xFF}}}});  // which it does not have
}

TEST_F(Monitoring, a_path_with_a_collection_leaves_the_others_out) {
    const auto monitor = open("/dev/hidraw0:3");
    run(*monitor, [&] {
        system_.bus().press(number_, phone_mute);
        system_.bus().set_key(number_, volume_increment, true);
        seen_.wait(1);
        monitor->end();
    });
    EXPECT_EQ(seen_.wait(1).at(0).path, "/dev/hidraw0:3");
}

TEST_F(Monitoring, shows_values_and_reports_without_id) {
    const int small = system_.plug({.node = "/dev/hidraw1", .descriptor = small_headset()});
    const int without_ids = system_.plug({.node = "/dev/hidraw2", .descriptor = headset_without_ids()});
    const auto monitor = open("SN-1");
    run(*monitor, [&] {
        system_.bus().send_report(small, Bytes{0x01, 0x00, 0xFB});
        seen_.wait(1);
        system_.bus().set_key(without_ids, phone_mute, true);
        seen_.wait(2);
        monitor->end();
    });
    const auto reports = seen_.wait(2);
    EXPECT_NE(to_text(reports[0]).find("  in   01 00 FB  Headset (0B:05): 0B:E0 = -5\n"), std::string::npos)
        << to_text(reports[0]);
    EXPECT_NE(to_text(reports[1]).find("  in   00 01  Headset (0B:05): Phone Mute (0B:2F)\n"),
              std::string::npos)
        << to_text(reports[1]);
}

TEST_F(Monitoring, ends_when_the_headset_is_unplugged) {
    const auto monitor = open();
    EXPECT_EQ(run(*monitor, [&] { system_.bus().unplug(number_); }), "The device is not connected.");
}

TEST_F(Monitoring, an_end_that_comes_before_the_run_counts) {
    const auto monitor = open();
    monitor->end();
    EXPECT_EQ(monitor->run(), "");
}

TEST_F(Monitoring, what_the_handler_throws_ends_it) {
    Monitor monitor(system_, find_headset(system_, ""),
                    [](const SeenReport&) { throw std::ios_base::failure("the pipe is closed"); });
    EXPECT_THROW(run(monitor, [&] { system_.bus().press(number_, phone_mute); }), std::ios_base::failure);
}

TEST_F(Monitoring, sets_indicators_and_shows_the_report) {
    const auto monitor = open();
    monitor->set(std::vector{off_hook, mute});
    EXPECT_EQ(system_.bus().indicator(number_, {0x08, 0x17}), true);
    EXPECT_EQ(system_.bus().indicator(number_, {0x08, 0x09}), true);
    const auto report = seen_.wait(1).at(0);
    EXPECT_EQ(report.direction, platform::HidP_Output);
    EXPECT_NE(to_text(report).find("  out  02 05 00  Headset (0B:05): "), std::string::npos)
        << to_text(report);
}

TEST_F(Monitoring, refuses_to_set_what_the_headset_does_not_have) {
    const auto monitor = open();
    EXPECT_THROW(monitor->set(std::vector{Assignment{{Usage{0x08, 0x4C}}}}), Refused);
    EXPECT_EQ(system_.bus().outputs(number_)->size(), 0U);
}

TEST_F(Monitoring, says_that_a_report_was_not_taken) {
    const auto monitor = open();
    system_.bus().misbehave(number_, platform::virtual_platform::Fault::write_fails);
    EXPECT_THROW(monitor->set(std::vector{off_hook}), Refused);
}

TEST_F(Monitoring, an_interface_that_cannot_be_opened_is_refused_with_the_reason) {
    system_.refused_path = "/dev/hidraw0:2";
    try {
        open();
        FAIL() << "it was opened";
    } catch (const Refused& error) {
        EXPECT_STREQ(error.what(), "/dev/hidraw0:2: Permission denied; \"headset doctor\" tells what to do");
    }
}

TEST_F(Monitoring, finds_a_headset_by_node_collection_and_serial) {
    system_.plug({.node = "/dev/hidraw1", .serial = L"SN-2"});
    const auto paths = [&](const std::string& argument) {
        std::vector<std::string> found;
        for (const auto& node : find_headset(system_, argument))
            for (const auto& info : node.interfaces)
                found.push_back(info.path);
        return found;
    };
    using Paths = std::vector<std::string>;
    EXPECT_EQ(paths(""), (Paths{"/dev/hidraw0:1", "/dev/hidraw0:2", "/dev/hidraw0:3"}));
    EXPECT_EQ(paths("/dev/hidraw1").size(), 3U);
    EXPECT_EQ(paths("/dev/hidraw1:2"), Paths{"/dev/hidraw1:2"});
    EXPECT_EQ(paths("SN-2"), (Paths{"/dev/hidraw1:1", "/dev/hidraw1:2", "/dev/hidraw1:3"}));
    EXPECT_THROW(find_headset(system_, "SN-3"), Refused);
    EXPECT_THROW(find_headset(system_, "/dev/hidraw"), Refused);
}

TEST(MonitoringNothing, there_is_no_headset_among_other_devices) {
    DescribedSystem system;
    system.plug({.descriptor = model_descriptor("logitech-g535")});
    EXPECT_THROW(find_headset(system, ""), Refused);
}

TEST(SeenReportJson, has_what_was_decoded_or_why_it_was_not) {
    SeenReport report{milliseconds{1500}, "/dev/hidraw0:1", platform::HidP_Input, {0x09}, {}, "no such id"};
    EXPECT_EQ(to_line(to_json(report)),
              "{\"time_ms\":1500,\"path\":\"/dev/hidraw0:1\",\"direction\":\"Input\",\"bytes\":\"09\","
              "\"error\":\"no such id\"}\n");
    EXPECT_EQ(to_text(report), "    1.500  in   09  not decoded: no such id\n");
    report.bytes = {0x01, 0x01, 0x05};
    report.decoded = decode(parse_collections(small_headset()), platform::HidP_Input, report.bytes);
    EXPECT_EQ(to_line(to_json(report)),
              "{\"time_ms\":1500,\"path\":\"/dev/hidraw0:1\",\"direction\":\"Input\",\"bytes\":\"01 01 05\","
              "\"report_id\":1,\"buttons\":[{\"UsagePage\":11,\"Usage\":47}],"
              "\"values\":[{\"UsagePage\":11,\"Usage\":224,\"Value\":5,\"Scaled\":5}]}\n");
}

// ---- the command

class MonitorCommand : public Monitoring {
  protected:
    /// Runs the command, with the off-hook indicator set, while something happens after it was lit.
    template <class Happening>
    int run_command(Happening happening) {
        std::thread other = platform::start_thread("happening", [&] {
            EXPECT_EQ(system_.bus().wait_outputs(number_, 1, limit), true);
            happening();
        });
        const Joined joined{other};
        std::istringstream input;
        return headset::run({.command = Command::monitor, .arguments = {"08:17"}}, system_, input, output_);
    }

    std::ostringstream output_;
};

TEST_F(MonitorCommand, ctrl_c_ends_it_and_puts_the_indicators_out) {
    EXPECT_EQ(run_command([] { kill(getpid(), SIGINT); }), exit_ok);
    EXPECT_EQ(system_.bus().outputs(number_)->size(), 2U);
    EXPECT_EQ(system_.bus().indicator(number_, {0x08, 0x17}), false);
    const auto text = output_.str();
    EXPECT_EQ(text.rfind("Reports of Jabra Link 380c, until Ctrl-C:\n"
                         "  /dev/hidraw0:1  Headset (0B:05)\n",
                         0),
              0U)
        << text;
    EXPECT_NE(text.find("  out  02 01 00  Headset (0B:05): Off-Hook (08:17)\n"), std::string::npos) << text;
    EXPECT_NE(text.find("  out  02 00 00  Headset (0B:05): nothing is set\n"), std::string::npos) << text;
}

TEST_F(MonitorCommand, an_unplugged_headset_is_told) {
    try {
        run_command([&] { system_.bus().unplug(number_); });
        FAIL() << "it went on";
    } catch (const Refused& error) {
        EXPECT_STREQ(error.what(), "the headset is gone: The device is not connected.");
    }
}

/// Takes nothing.
class FullDisk : public std::streambuf {
    int_type overflow(int_type /*character*/) override { throw tools::WriteError("no space is left"); }
};

TEST_F(MonitorCommand, output_that_fails_leaves_no_indicator_lit) {
    FullDisk disk;
    std::ostream output(&disk);
    output.exceptions(std::ios::badbit);
    std::istringstream input;
    EXPECT_THROW(headset::run({.command = Command::monitor, .arguments = {"08:17"}, .json = true}, system_,
                              input, output),
                 tools::WriteError);
    EXPECT_EQ(system_.bus().outputs(number_)->size(), 2U);
    EXPECT_EQ(system_.bus().indicator(number_, {0x08, 0x17}), false);
}

TEST_F(MonitorCommand, wrong_usages_are_told_before_anything_is_opened) {
    system_.hidapi_failure = "not asked";
    std::istringstream input;
    EXPECT_THROW(
        headset::run({.command = Command::monitor, .arguments = {"mumble"}}, system_, input, output_),
        UsageError);
}

}  // namespace
}  // namespace headset::monitor_test
