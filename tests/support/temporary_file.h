// A file for the length of a test.
#pragma once

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace test_support {

class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& content) {
        const int file = mkstemp(path_.data());
        EXPECT_EQ(write(file, content.data(), content.size()), static_cast<ssize_t>(content.size()));
        close(file);
    }
    ~TemporaryFile() { unlink(path_.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& path() const { return path_; }

  private:
    std::string path_ = testing::TempDir() + "orvex-XXXXXX";
};

}  // namespace test_support
