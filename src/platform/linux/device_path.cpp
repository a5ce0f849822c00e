#include "platform/linux/device_path.h"

#include <charconv>

namespace platform::linux_platform {

namespace {

constexpr char separator = ':';

}  // namespace

std::string DevicePath::to_string() const {
    return collection ? node + separator + std::to_string(*collection + 1) : node;
}

DevicePath DevicePath::parse(const std::string& text) {
    const std::size_t colon = text.rfind(separator);
    if (colon == std::string::npos) {
        return {text};
    }
    std::size_t number = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data() + colon + 1, end, number);
    if (parsed.ec != std::errc() || parsed.ptr != end || number == 0) {
        return {text};
    }
    return {text.substr(0, colon), number - 1};
}

}  // namespace platform::linux_platform
