#include "tools/headset/linux_system.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <linux/input-event-codes.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "platform/common/file_descriptor.h"
#include "platform/linux/report_descriptor.h"
#include "platform/linux/udev.h"
#include "platform/platform.h"
#include "platform/text.h"

namespace headset {
namespace {

namespace fs = std::filesystem;

/// The folders of rules, the one that counts most first (udev(7)).
constexpr std::array rules_folders = {"/etc/udev/rules.d", "/run/udev/rules.d", "/usr/local/lib/udev/rules.d",
                                      "/usr/lib/udev/rules.d", "/lib/udev/rules.d"};

/// What a folder holds; nothing where there is none, or it may not be read.
std::vector<fs::path> entries(const fs::path& folder) {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        found.push_back(entry->path());
    std::ranges::sort(found);
    return found;
}

std::string read_text(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string read_line(const fs::path& path) {
    return std::string(tools::trimmed(read_text(path)));
}

bool is_there(const fs::path& path) {
    std::error_code ignored;
    return fs::exists(path, ignored);
}

using FileTime = decltype(std::declval<struct stat>().st_mtim);

Time to_time(const FileTime& time) {
    return Time(std::chrono::duration_cast<Time::duration>(std::chrono::seconds(time.tv_sec) +
                                                           std::chrono::nanoseconds(time.tv_nsec)));
}

/// udev sets the time of a node's last modification when it has applied its rules; nothing else does.
std::optional<Time> rules_ran(const fs::path& node) {
    struct stat status {};
    return stat(node.c_str(), &status) == 0 ? std::optional(to_time(status.st_mtim)) : std::nullopt;
}

/// By opening it: what is refused to a container (device cgroups), no permission bit tells.
int open_error(const fs::path& node) {
    const platform::common::FileDescriptor opened(
        ::open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    return opened.get() < 0 ? errno : 0;
}

/// The USB device that a device belongs to is the first above it that has ids.
std::optional<fs::path> usb_device(fs::path device) {
    for (; device.has_relative_path(); device = device.parent_path())
        if (is_there(device / "idVendor"))
            return device;
    return std::nullopt;
}

bool has_sound(const fs::path& device) {
    const auto usb = usb_device(device);
    return usb && std::ranges::any_of(
                      entries(*usb), [](const fs::path& interface) { return is_there(interface / "sound"); });
}

/// Whether an input device has a key. The kernel shows its keys as a number of many words, in hexadecimal,
/// the highest one first (kernel, drivers/input/input.c: input_print_bitmap).
bool has_key(const fs::path& input, unsigned key) {
    constexpr unsigned word_bits = sizeof(long) * 8;
    std::istringstream stream(read_text(input / "capabilities/key"));
    const std::vector<std::string> words{std::istream_iterator<std::string>(stream), {}};
    const auto index = key / word_bits;
    if (index >= words.size())
        return false;
    const auto word = tools::parse_number<unsigned long>(words[words.size() - 1 - index], 16);
    return word && (*word >> (key % word_bits) & 1) != 0;
}

void add_mute_input(const fs::path& input, NodeState& state) {
    if (!has_key(input, KEY_MICMUTE))  // what the kernel makes of Phone Mute (0B:2F)
        return;
    for (const auto& event : entries(input))
        if (event.filename().string().starts_with("event"))
            state.mute_inputs.push_back("/dev/input/" + event.filename().string());
}

/// The trigger in force stands in brackets (kernel, Documentation/ABI/testing/sysfs-class-led).
std::string active_trigger(const std::string& triggers) {
    const auto begin = triggers.find('[');
    const auto end = triggers.find(']', begin);
    return begin == triggers.npos || end == triggers.npos ? "none"
                                                          : triggers.substr(begin + 1, end - begin - 1);
}

void add_mute_leds(const fs::path& input, NodeState& state) {
    for (const auto& led : entries(input))
        if (const auto name = led.filename().string(); name.ends_with("::mute"))
            state.mute_leds.push_back({name, active_trigger(read_text(led / "trigger"))});
}

/// The process of a folder of /proc, where it has the node open.
std::optional<Process> holder(const fs::path& process, const std::string& node) {
    const auto id = tools::parse_number<int>(process.filename().string(), 10);
    if (!id || *id == getpid())
        return std::nullopt;
    const auto is_node = [&](const fs::path& opened) {
        std::error_code ignored;
        return fs::read_symlink(opened, ignored) == node;
    };
    if (!std::ranges::any_of(entries(process / "fd"), is_node))
        return std::nullopt;
    return Process{read_line(process / "comm"), *id};
}

}  // namespace

fs::path LinuxSystem::below_root(const fs::path& path) const {
    return root_ / path.relative_path();
}

std::string LinuxSystem::hidapi_error() {
    return platform::to_utf8(platform::current().hid().init());
}

std::string LinuxSystem::udev_error() {
    try {
        platform::linux_platform::load_udev();
        return {};
    } catch (const platform::linux_platform::LibraryError& error) {
        return error.what();
    }
}

bool LinuxSystem::udev_daemon_runs() {
    return is_there(below_root("/run/udev/control"));
}

bool LinuxSystem::runs_as_root() {
    return geteuid() == 0;
}

std::optional<RulesFile> LinuxSystem::rules_file(const std::string& name) {
    for (const fs::path folder : rules_folders) {
        const auto path = below_root(folder / name);
        struct stat status {};
        if (stat(path.c_str(), &status) == 0)
            return RulesFile{path, read_text(path), to_time(status.st_ctim)};
    }
    return std::nullopt;
}

std::vector<platform::HidInterfaceInfo> LinuxSystem::interfaces() {
    return platform::current().hid().enumerate(0, 0);
}

tools::Bytes LinuxSystem::report_descriptor(const std::string& node) {
    return fs::path(node).parent_path() == "/dev" ? platform::linux_platform::descriptor_of(node)
                                                  : tools::Bytes();
}

NodeState LinuxSystem::node_state(const std::string& node) {
    const auto device_file = below_root(node);
    NodeState state{.open_error = open_error(device_file), .rules_ran = rules_ran(device_file)};
    std::error_code ignored;
    const auto device =
        fs::canonical(below_root("/sys/class/hidraw") / fs::path(node).filename() / "device", ignored);
    state.has_sound = has_sound(device);
    for (const auto& input : entries(device / "input")) {
        add_mute_input(input, state);
        add_mute_leds(input, state);
    }
    state.holders = holders(node);
    return state;
}

std::vector<Process> LinuxSystem::holders(const std::string& node) const {
    std::vector<Process> found;
    for (const auto& process : entries(below_root("/proc")))
        if (auto holding = holder(process, node))
            found.push_back(*std::move(holding));
    return found;
}

platform::HidBackend::OpenResult LinuxSystem::open(const std::string& path) {
    return platform::current().hid().open(path);
}

}  // namespace headset
