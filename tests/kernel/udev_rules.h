// Rules of udev, for the time of a test.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/kernel/headset_tool.h"

namespace test_support {

inline void reload_udev_rules() {
    EXPECT_EQ(run_shell("udevadm control --reload").status, 0);
}

/// A file of rules that is there as long as this lives. Needs root.
class UdevRulesFile {
  public:
    /// \param path  with nothing in it, it takes the place of a file of this name in a folder that counts
    /// less
    UdevRulesFile(std::filesystem::path path, const std::string& rules) : path_(std::move(path)) {
        std::filesystem::create_directories(path_.parent_path());
        std::ofstream(path_) << rules;
        reload_udev_rules();
    }
    ~UdevRulesFile() {
        std::filesystem::remove(path_);
        reload_udev_rules();
    }
    UdevRulesFile(const UdevRulesFile&) = delete;
    UdevRulesFile& operator=(const UdevRulesFile&) = delete;

  private:
    const std::filesystem::path path_;
};

}  // namespace test_support
