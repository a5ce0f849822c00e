#include "platform/linux/report_descriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/hidraw.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/common/file_descriptor.h"

namespace platform::linux_platform {

std::vector<std::uint8_t> descriptor_of(int hidraw) {
    int size = 0;
    hidraw_report_descriptor descriptor{};
    if (ioctl(hidraw, HIDIOCGRDESCSIZE, &size) < 0) {
        return {};
    }
    if (size <= 0 || size > HID_MAX_DESCRIPTOR_SIZE) {
        errno = EPROTO;
        return {};
    }
    descriptor.size = static_cast<std::uint32_t>(size);
    if (ioctl(hidraw, HIDIOCGRDESC, &descriptor) < 0) {
        return {};
    }
    return {descriptor.value, descriptor.value + size};
}

std::vector<std::uint8_t> descriptor_of(const std::string& node) {
    const std::string name = node.substr(node.rfind('/') + 1);
    const std::string attribute = "/sys/class/hidraw/" + name + "/device/report_descriptor";
    const common::FileDescriptor file(open(attribute.c_str(), O_RDONLY | O_CLOEXEC));
    std::vector<std::uint8_t> descriptor(HID_MAX_DESCRIPTOR_SIZE);
    std::size_t size = 0;
    while (file.get() >= 0 && size < descriptor.size()) {
        const ssize_t read_now = read(file.get(), descriptor.data() + size, descriptor.size() - size);
        if (read_now > 0) {
            size += static_cast<std::size_t>(read_now);
        } else if (read_now == 0 || errno != EINTR) {
            break;
        }
    }
    descriptor.resize(size);
    return descriptor;
}

}  // namespace platform::linux_platform
