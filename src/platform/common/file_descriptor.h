// A file descriptor with an owner.
#pragma once

#include <unistd.h>
#include <utility>

namespace platform::common {

/// Owns a file descriptor; -1 is none.
class FileDescriptor {
  public:
    explicit FileDescriptor(int descriptor = -1) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }

    int get() const { return descriptor_; }

  private:
    int descriptor_;
};

}  // namespace platform::common
