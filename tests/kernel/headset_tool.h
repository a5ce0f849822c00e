// The tool `headset`, on the devices of a kernel.
#pragma once

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <vector>

#include "tests/kernel/kernel_headsets.h"
#include "tests/kernel/system_hidapi.h"
#include "tests/support/run_program.h"

namespace test_support {

using Json = nlohmann::json;
using Names = std::vector<std::string>;

inline ProgramResult run_shell(const std::string& command) {
    return run_program("/bin/sh", {"-c", command});
}

inline ProgramResult run_headset(const std::vector<std::string>& arguments) {
    return run_program(ORVEX_HEADSET, arguments);
}

/// The same for the ordinary user of the machine.
inline ProgramResult run_headset_as_user(const std::string& arguments) {
    return run_program("/bin/su", {"user", "-s", "/bin/sh", "-c", ORVEX_HEADSET " " + arguments});
}

inline std::vector<Json> json_lines(const std::string& text) {
    std::vector<Json> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(Json::parse(line));
    }
    return lines;
}

/// What the doctor says.
class Diagnosis {
  public:
    explicit Diagnosis(const ProgramResult& result = run_headset({"doctor", "--json"}))
        : json_(Json::parse(result.output)) {
        EXPECT_EQ(result.status, calls_work() ? 0 : 1) << result.errors;
    }

    bool calls_work() const { return json_["calls_work"]; }
    const Json& headsets() const { return json_["headsets"]; }

    /// The names of its findings, in order.
    Names names() const {
        Names names;
        for (const auto& finding : json_["findings"]) {
            names.push_back(finding["name"]);
        }
        return names;
    }

    std::string text(const std::string& name) const { return find(name)["text"]; }
    std::string remedy(const std::string& name) const { return find(name)["remedy"]; }

  private:
    const Json& find(const std::string& name) const {
        for (const auto& finding : json_["findings"]) {
            if (finding["name"] == name) {
                return finding;
            }
        }
        throw std::runtime_error("the doctor finds no " + name + ": " + json_.dump());
    }

    Json json_;
};

inline Diagnosis diagnose_as_user() {
    return Diagnosis(run_headset_as_user("doctor --json"));
}

/// Whether udev has applied its rules to a node. Last of all it writes its record of the device; an older one
/// is of a device that had the number before.
inline bool is_known_to_udev(const std::string& node) {
    struct stat status {};
    if (stat(node.c_str(), &status) != 0) {
        return false;
    }
    const std::string record = "/run/udev/data/c" + std::to_string(major(status.st_rdev)) + ":" +
                               std::to_string(minor(status.st_rdev));
    std::error_code none_yet;
    const auto recorded = std::filesystem::last_write_time(record, none_yet);
    return !none_yet && recorded >= std::filesystem::last_write_time(node);
}

inline void wait_for_udev(const std::string& node) {
    EXPECT_TRUE(eventually([&] { return is_known_to_udev(node); })) << node;
}

/// The tags that udev's rules have put on a node.
inline std::set<std::string> tags_of(const std::string& node) {
    const ProgramResult result =
        run_shell("udevadm info --query=property --property=CURRENT_TAGS --value " + node);
    EXPECT_EQ(result.status, 0) << result.errors;
    std::istringstream said(result.output);
    std::set<std::string> tags;
    for (std::string tag; std::getline(said >> std::ws, tag, ':');) {
        tags.insert(tag);
    }
    return tags;
}

/// The nodes of a USB headset by its interfaces, when udev is done with them.
inline std::map<int, std::string> wait_for_nodes(const SystemHidapi& hidapi, const std::wstring& serial,
                                                 std::size_t count) {
    std::map<int, std::string> nodes;
    EXPECT_TRUE(eventually([&] {
        for (const ListedDevice& listed : hidapi.list(serial)) {
            nodes.emplace(listed.interface_number, listed.path);
        }
        return nodes.size() == count;
    }));
    for (const auto& [number, node] : nodes) {
        wait_for_udev(node);
    }
    return nodes;
}

class HeadsetTool : public KernelHeadsets {
  protected:
    /// The node of a headset that is plugged.
    std::string node_of(int headset) const {
        const auto listed = hidapi_.wait_for_list(wide_serial(headset));
        return listed.empty() ? "" : listed.front().path;
    }

    /// The same, when udev is done with it.
    std::string settled_node_of(int headset) const {
        const auto node = node_of(headset);
        wait_for_udev(node);
        return node;
    }

    const SystemHidapi hidapi_;
};

}  // namespace test_support
