// What `headset list` and `headset explain` say of the devices of a kernel.

#include <array>
#include <cstdio>

#include "device/vendor_names.h"
#include "tests/kernel/headset_tool.h"
#include "tests/kernel/plugin_on_kernel.h"
#include "virtual_headset/models/model.h"

namespace {

using namespace test_support;

const Report& descriptor_of(const char* model) {
    return platform::virtual_headsets::find_model(model)->descriptor;
}

std::vector<Json> list() {
    const ProgramResult result = run_headset({"list", "--json"});
    EXPECT_EQ(result.status, 0) << result.errors;
    return json_lines(result.output);
}

/// Waits until that many collections are listed.
std::vector<Json> wait_for_list(std::size_t count) {
    std::vector<Json> listed;
    EXPECT_TRUE(eventually([&] { return (listed = list()).size() == count; })) << listed.size();
    return listed;
}

using HeadsetList = HeadsetTool;

TEST_F(HeadsetList, says_that_there_is_no_device) {
    const ProgramResult result = run_headset({"list"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "There is no HID device.\n");
    EXPECT_TRUE(list().empty());
}

TEST_F(HeadsetList, has_an_entry_for_each_collection_with_all_that_the_device_states) {
    plug_device(descriptor_of("poly-blackwire-3220"), {.vendor_id = 0x047F,
                                                       .product_id = 0xC056,
                                                       .product = "H\u00F6rer \u4E2D",
                                                       .serial = "S\u00E9rie-1"});
    const auto listed = wait_for_list(3);
    const std::string first_path = listed.at(0)["path"];
    const std::string node = first_path.substr(0, first_path.find(':'));
    EXPECT_TRUE(node.starts_with("/dev/hidraw")) << node;
    const Json common{{"vendor_id", 0x047F},      {"product_id", 0xC056},
                      {"manufacturer", nullptr},  {"product", "H\u00F6rer \u4E2D"},
                      {"serial", "S\u00E9rie-1"}, {"can_open", true},
                      {"open_error", nullptr}};
    std::array<Json, 3> wanted{Json{{"UsagePage", 0x0C},
                                    {"Usage", 0x01},
                                    {"name", "Consumer Control"},
                                    {"InputReportByteLength", 33},
                                    {"OutputReportByteLength", 37},
                                    {"FeatureReportByteLength", 0},
                                    {"admitted", true},
                                    {"rule", nullptr},
                                    {"reason", nullptr}},
                               Json{{"UsagePage", 0x0B},
                                    {"Usage", 0x05},
                                    {"name", "Headset"},
                                    {"InputReportByteLength", 2},
                                    {"OutputReportByteLength", 2},
                                    {"FeatureReportByteLength", 0},
                                    {"admitted", true},
                                    {"rule", nullptr},
                                    {"reason", nullptr}},
                               Json{{"UsagePage", 0xFFA0},
                                    {"Usage", 0x03},
                                    {"name", ""},
                                    {"InputReportByteLength", 33},
                                    {"OutputReportByteLength", 33},
                                    {"FeatureReportByteLength", 3},
                                    {"admitted", false},
                                    {"rule", "usage page"},
                                    {"reason", "only the Telephony and the Consumer page count"}}};
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        wanted[i].update(common);
        wanted[i]["path"] = node + ":" + std::to_string(i + 1);
        EXPECT_EQ(listed[i], wanted[i]);
    }
}

TEST_F(HeadsetList, shows_the_same_for_people) {
    const std::string node = node_of(plug_headset());
    const ProgramResult result = run_headset({"list"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(
        result.output,
        "Jabra Link 380c, 0B0E:24C9, serial number 50C2ED83A1F4\n"
        "  " +
            node +
            " can be opened by this user\n"
            "  " +
            node +
            ":1  Headset (0B:05)           Input 3, Output 3, Feature none     accepted\n"
            "  " +
            node +
            ":2  FF00:01                   Input 63, Output 63, Feature 2      ignored: usage page: only the Telephony and the Consumer page count\n"
            "  " +
            node + ":3  Consumer Control (0C:01)  Input 3, Output none, Feature none  accepted\n");
}

TEST_F(HeadsetList, says_what_a_device_does_not_state) {
    plug_device(plain_descriptor(), {.product = nullptr, .serial = nullptr});
    const auto listed = wait_for_list(1);
    for (const char* text : {"manufacturer", "product", "serial"}) {
        EXPECT_TRUE(listed[0][text].is_null()) << text;
    }
    EXPECT_TRUE(run_headset({"list"}).output.starts_with("unnamed device, 0B0E:0001, no serial number\n"));
}

TEST_F(HeadsetList, takes_texts_that_are_no_utf_8_for_none) {
    plug_device(plain_descriptor(), {.product = "Pl\xFFin", .serial = "\xFF"});
    const auto listed = wait_for_list(1);
    EXPECT_TRUE(listed[0]["product"].is_null());
    EXPECT_TRUE(listed[0]["serial"].is_null());
    EXPECT_EQ(listed[0]["rule"], "serial");
}

TEST_F(HeadsetList, says_who_may_not_open_a_node) {
    plug_headset();
    wait_for_list(3);
    const auto listed = json_lines(run_headset_as_user("list --json").output);
    ASSERT_EQ(listed.size(), 3U);
    for (const auto& entry : listed) {
        EXPECT_EQ(entry["can_open"], false);
        EXPECT_EQ(entry["open_error"], "Permission denied");
    }
    EXPECT_EQ(listed[0]["admitted"], true) << "which is another matter";
}

// ---- the list and the plug-in

/// A line of the log that says whether an interface is accepted.
struct Verdict {
    const char* rule;  ///< empty for an interface that is accepted
    const char* phrase;
    std::string (*line)(const Json& entry);
};

template <typename... Numbers>
std::string formatted(const char* format, Numbers... numbers) {
    std::array<char, 256> text{};
    std::snprintf(text.data(), text.size(), format, numbers...);
    return text.data();
}

constexpr Verdict verdicts[] = {
    {"own headset", "orvex headset is plugged in",
     [](const Json& entry) {
         return formatted("orvex headset is plugged in,vendor_id: %d, product_id: %d, serial: unknown. \n",
                          entry["vendor_id"].get<int>(), entry["product_id"].get<int>());
     }},
    {"usage page", "ignore non-accessary device",
     [](const Json& entry) {
         return formatted(
             "ignore non-accessary device vendor_id: 0x%04x, product_id: 0x%04x, page: 0x%02x. \n",
             entry["vendor_id"].get<unsigned>(), entry["product_id"].get<unsigned>(),
             // The log shows the page as a signed 16-bit number.
             static_cast<unsigned>(static_cast<std::int16_t>(entry["UsagePage"].get<int>())));
     }},
    {"serial", "no serial info",
     [](const Json& /*entry*/) { return std::string("no serial info, sn = unknown, ignored\n"); }},
    {"", "supported!",
     [](const Json& entry) {
         return formatted("3rd product vendor_id:[0x%4x], product_id:[0x%4x], product_name:[",
                          entry["vendor_id"].get<unsigned>(), entry["product_id"].get<unsigned>()) +
                entry["product"].get<std::string>() + "] supported!\n";
     }},
};

std::string log_line(const Json& entry) {
    const std::string rule = entry["admitted"] ? "" : entry["rule"];
    for (const Verdict& verdict : verdicts) {
        if (verdict.rule == rule) {
            return "3rdPartyHeadsetPlugin: plugin_control::device_mgr::enumerate_hid_device: " +
                   verdict.line(entry);
        }
    }
    return "there is no rule " + rule;
}

bool is_verdict(const std::string& line) {
    return std::any_of(std::begin(verdicts), std::end(verdicts), [&](const Verdict& verdict) {
        return line.find(verdict.phrase) != std::string::npos;
    });
}

class HeadsetListAndPlugin : public PluginOnKernel {
  protected:
    /// The first lines of the log that say whether an interface is accepted.
    Names wait_for_verdicts(std::size_t count) const {
        Names lines;
        EXPECT_TRUE(eventually([&] {
            lines = logger_->lines();
            std::erase_if(lines, [](const std::string& line) { return !is_verdict(line); });
            return lines.size() >= count;
        }));
        lines.resize(std::min(lines.size(), count));
        return lines;
    }
};

TEST_F(HeadsetListAndPlugin, agree_on_what_is_let_in_and_on_the_rule_that_keeps_the_rest_out) {
    plug_headset("jabra-link-380c");
    plug_headset("razer-blackshark-v2");
    plug_device(descriptor_of("jabra-link-380c"),
                {.vendor_id = headset_plugin::ORVEX_VENDOR_ID, .product = "Own", .serial = "OWN"});
    plug_device(descriptor_of("poly-blackwire-3220"), {.product = "No serial", .serial = nullptr});
    const auto listed = wait_for_list(3 + 4 + 3 + 3);
    std::map<std::string, int> by_rule;
    Names wanted;
    for (const auto& entry : listed) {
        ++by_rule[entry["admitted"] ? "" : entry["rule"]];
        wanted.push_back(log_line(entry));
    }
    EXPECT_EQ(by_rule,
              (std::map<std::string, int>{{"", 4}, {"own headset", 3}, {"serial", 2}, {"usage page", 4}}));
    start();
    EXPECT_EQ(wait_for_verdicts(wanted.size()), wanted);
}

// ---- explain

class HeadsetExplain : public HeadsetTool {
  protected:
    static std::string explain(const std::string& path) {
        const ProgramResult result = run_headset({"explain", path});
        EXPECT_EQ(result.status, 0) << result.errors;
        return result.output;
    }
};

TEST_F(HeadsetExplain, says_the_same_of_a_node_and_of_each_of_its_collections) {
    const std::string node = node_of(plug_headset("poly-blackwire-3220"));
    const std::string explained = explain(node);
    EXPECT_TRUE(
        explained.starts_with("Plantronics Blackwire 3220 Series, 047F:C056: the plug-in has a driver"))
        << explained;
    for (const char* part : {"2  Headset (0B:05)           opened",
                             "Phone Mute (0B:2F)  reaches the client as the mute key: 08 01",
                             "a connected call      17 01, lit: Off-Hook"}) {
        EXPECT_NE(explained.find(part), std::string::npos) << part << " in " << explained;
    }
    for (const char* collection : {":1", ":2", ":3"}) {
        EXPECT_EQ(explain(node + collection), explained);
    }
}

TEST_F(HeadsetExplain, says_that_a_device_without_a_serial_number_is_not_let_in) {
    plug_device(plain_descriptor(), {.serial = nullptr});
    const auto listed = wait_for_list(1);
    EXPECT_NE(explain(listed[0]["path"]).find("ignored: the device states no serial number"),
              std::string::npos);
}

TEST_F(HeadsetExplain, leaves_the_device_alone_and_needs_no_permission_for_it) {
    const int headset = plug_headset();
    const std::string node = node_of(headset);
    const auto by_root = explain(node);
    EXPECT_EQ(run_headset_as_user("explain " + node).output, by_root);
    const OpenedDevice device(hidapi_, node);
    const Report own{0x02, 0x01, 0x00};
    device.write(own);
    EXPECT_EQ(orvex_virtual_wait_outputs(headset, 1, patience_ms), 1);
    EXPECT_EQ(outputs(headset), Reports{own}) << "reports arrive in their order";
}

TEST_F(HeadsetExplain, refuses_a_collection_that_the_node_does_not_have) {
    const std::string path = node_of(plug_headset()) + ":4";
    const ProgramResult result = run_headset({"explain", path});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.errors.starts_with("headset: " + path + " is no HID device")) << result.errors;
}

}  // namespace
