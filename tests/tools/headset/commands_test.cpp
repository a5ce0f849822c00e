// The commands that look at the machine, on described ones.
#include "tools/headset/commands.h"

#include <gtest/gtest.h>
#include <sstream>

#include "tests/tools/headset/described_system.h"
#include "tools/common/text.h"
#include "tools/headset/caps_json.h"
#include "tools/headset/errors.h"

namespace headset {
namespace {

class Commands : public testing::Test {
  protected:
    int run(const Options& options) {
        std::istringstream input;
        output_.str("");
        return headset::run(options, system_, input, output_);
    }
    std::string explain(const std::string& argument) {
        run({.command = Command::explain, .descriptor = argument});
        return output_.str();
    }
    bool has_said(const std::string& part) const { return output_.str().find(part) != std::string::npos; }

    DescribedSystem system_;
    std::ostringstream output_;
};

TEST_F(Commands, explain_takes_a_node_or_a_collection_of_it) {
    system_.plug({});
    const auto text = explain("/dev/hidraw0");
    EXPECT_TRUE(has_said("Jabra Link 380c, 0B0E:24C9: the plug-in has a driver"));
    EXPECT_TRUE(has_said("1  Headset (0B:05)           opened"));
    EXPECT_EQ(explain("/dev/hidraw0:3"), text);
}

TEST_F(Commands, explain_tells_of_a_device_without_a_serial_that_it_is_ignored) {
    system_.plug({.serial = {}});
    explain("/dev/hidraw0");
    EXPECT_TRUE(has_said("ignored: the device states no serial number")) << output_.str();
}

TEST_F(Commands, explain_refuses_a_collection_that_the_node_does_not_have) {
    system_.plug({});
    EXPECT_THROW(explain("/dev/hidraw0:4"), Refused);
}

TEST_F(Commands, explain_takes_a_serial_number) {
    using namespace platform::virtual_headsets;
    const auto other =
        descriptor({usage_page(0xFF00), usage(0x01), collection(application), end_collection()});
    system_.plug({.descriptor = other, .serial = L"305075EADF01"});
    system_.plug({.node = "/dev/hidraw1", .serial = L"305075EADF01"});
    const auto text = explain("/dev/hidraw1");
    EXPECT_EQ(explain("305075EADF01"), text) << "the node with the keys, and not hexadecimal text";
}

TEST_F(Commands, explain_says_where_serial_numbers_are_found) {
    system_.plug({});
    try {
        explain("SN-9");
        ADD_FAILURE() << "nothing thrown";
    } catch (const UsageError& error) {
        EXPECT_NE(std::string(error.what()).find("\"headset list\" shows the devices"), std::string::npos)
            << error.what();
    }
}

TEST_F(Commands, explain_needs_no_hidapi_for_a_descriptor) {
    system_.hidapi_failure = "not there";
    explain(tools::to_hex(small_headset()));
    EXPECT_TRUE(has_said("lit by 02 01"));
}

TEST_F(Commands, list_prints_a_line_of_json_per_interface) {
    system_.plug({});
    EXPECT_EQ(run({.command = Command::list, .json = true}), exit_ok);
    std::istringstream lines(output_.str());
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count)
        EXPECT_EQ(Json::parse(line)["product"], "Jabra Link 380c");
    EXPECT_EQ(count, 3);
    EXPECT_EQ(run({.command = Command::list}), exit_ok);
    EXPECT_TRUE(has_said("/dev/hidraw0:3  Consumer Control"));
}

TEST_F(Commands, the_status_of_doctor_tells_whether_calls_will_work) {
    EXPECT_EQ(run({.command = Command::doctor}), exit_refused);
    EXPECT_TRUE(has_said("Calls will not work."));
    system_.plug({});
    EXPECT_EQ(run({.command = Command::doctor, .json = true}), exit_ok);
    EXPECT_EQ(Json::parse(output_.str())["calls_work"], true);
}

}  // namespace
}  // namespace headset
