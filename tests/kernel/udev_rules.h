// Rules of udev, for the time of a test.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/kernel/headset_tool.h"

namespace test_support {

/// Has udev's daemon read its rules. It is restarted, because after two reloads in quick succession it has
/// been seen to apply the old rules to the next device.
inline void restart_udev() {
    EXPECT_EQ(run_shell("udevadm settle && udevadm control --exit").status, 0);
    EXPECT_TRUE(eventually([] { return run_shell("pidof systemd-udevd").status != 0; }));
    EXPECT_EQ(run_shell("/lib/systemd/systemd-udevd --daemon").status, 0);
}

/// A file of rules that is there until this is gone. Needs root.
class UdevRulesFile {
  public:
    /// A file that the test is about to make.
    explicit UdevRulesFile(std::filesystem::path path) : path_(std::move(path)) {
        std::filesystem::create_directories(path_.parent_path());
    }
    /// A file with these rules. With none, it takes the place of a file of this name in a folder that counts
    /// less.
    UdevRulesFile(std::filesystem::path path, const std::string& rules) : UdevRulesFile(std::move(path)) {
        std::ofstream(path_) << rules;
        restart_udev();
    }
    ~UdevRulesFile() {
        std::filesystem::remove(path_);
        restart_udev();
    }
    UdevRulesFile(const UdevRulesFile&) = delete;
    UdevRulesFile& operator=(const UdevRulesFile&) = delete;

  private:
    const std::filesystem::path path_;
};

}  // namespace test_support
