// The machine, as the kernel's and udev's files show it.
#pragma once

#include <filesystem>

#include "tools/headset/system.h"

namespace headset {

class LinuxSystem final : public System {
  public:
    /// \param root  the folder that holds dev, etc, proc, run and sys
    explicit LinuxSystem(std::filesystem::path root = "/") : root_(std::move(root)) {}

    std::string hidapi_error() override;
    std::string udev_error() override;
    bool udev_daemon_runs() override;
    bool runs_as_root() override;
    std::optional<RulesFile> rules_file(const std::string& name) override;
    std::vector<platform::HidInterfaceInfo> interfaces() override;
    tools::Bytes report_descriptor(const std::string& node) override;
    NodeState node_state(const std::string& node) override;
    platform::HidBackend::OpenResult open(const std::string& path) override;

  private:
    /// A file by its absolute path, below the root.
    std::filesystem::path below_root(const std::filesystem::path& path) const;
    std::vector<Process> holders(const std::string& node) const;

    const std::filesystem::path root_;
};

}  // namespace headset
