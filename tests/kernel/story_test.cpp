// One story, two platforms: what it makes of headsets within the process it makes of headsets of the kernel,
// too, through the product library.

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/kernel/kernel_headsets.h"
#include "tests/support/run_program.h"

namespace {

using namespace test_support;

using Lines = std::vector<std::string>;

/// What the user asked for at the headsets, and what each of these was shown.
struct Told {
    Lines actions;
    std::map<std::string, Lines> reports;
};

Told told_by(const std::string& output) {
    Told told;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        const auto event = nlohmann::json::parse(line);
        if (event["event"] == "action") {
            told.actions.push_back(line);
        } else if (event["event"] == "report") {
            told.reports[event["headset"]].push_back(line);
        }
    }
    return told;
}

Told run_story(const std::string& name, Lines platform) {
    platform.insert(platform.end(),
                    {"--json", "--script", std::string(ORVEX_STORIES) + "/" + name + ".story"});
    const ProgramResult result = run_program(ORVEX_SOFTPHONE, platform);
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    return told_by(result.output);
}

const Lines in_process{"--library", ORVEX_VIRTUAL_LIBRARY};
const Lines in_kernel{"--library", ORVEX_PRODUCT_LIBRARY, "--headsets", ORVEX_UHID_LIBRARY};

TEST(Stories, make_the_same_actions_and_reports_in_the_process_and_in_the_kernel) {
    const Told process = run_story("step_by_step", in_process);
    const Told kernel = run_story("step_by_step", in_kernel);
    EXPECT_EQ(process.actions.size(), 2U);
    EXPECT_EQ(process.reports.size(), 2U);
    EXPECT_EQ(kernel.actions, process.actions);
    EXPECT_EQ(kernel.reports, process.reports);
}

class Story : public testing::TestWithParam<const char*> {};

TEST_P(Story, is_told_in_the_kernel) {
    run_story(GetParam(), in_kernel);
}

// All others but those of faults, which a kernel does not show.
INSTANTIATE_TEST_SUITE_P(Stories, Story,
                         testing::Values("by_hand", "guided", "keys", "no_driver", "report_per_indicator",
                                         "reports", "restart", "two_headsets"),
                         [](const auto& row) { return std::string(row.param); });

}  // namespace
