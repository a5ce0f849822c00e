#include "tests/kernel/usb_gadget.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

#include "tests/support/recording.h"

namespace test_support {

namespace {

namespace fs = std::filesystem;

// The layout of configfs is the kernel's (Documentation/ABI/testing/configfs-usb-gadget*).
const fs::path gadgets = "/sys/kernel/config/usb_gadget";
constexpr const char* controller = "dummy_udc.0";
constexpr const char* english = "strings/0x409";  // USB language id
constexpr const char* configuration = "configs/c.1";
/// Longer than every report: f_hid has buffers of this size and sends what it is given.
constexpr const char* longest_report = "64";

void write_attribute(const fs::path& path, const std::string& value) {
    std::ofstream file(path, std::ios::binary);
    if (!(file << value << std::flush)) {
        throw std::runtime_error(path.string() + ": " + std::strerror(errno));
    }
}

std::string text(const std::vector<std::uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
}

std::string hexadecimal(std::uint16_t number) {
    char digits[8];
    std::snprintf(digits, sizeof digits, "0x%04x", static_cast<unsigned>(number));
    return digits;
}

}  // namespace

UsbGadget::UsbGadget(const UsbGadgetDescription& description) : folder_(gadgets / description.serial) {
    fs::create_directories(folder_ / english);
    fs::create_directories(folder_ / configuration);
    write_attribute(folder_ / "idVendor", hexadecimal(description.vendor_id));
    write_attribute(folder_ / "idProduct", hexadecimal(description.product_id));
    write_attribute(folder_ / english / "manufacturer", description.manufacturer);
    write_attribute(folder_ / english / "product", description.product);
    write_attribute(folder_ / english / "serialnumber", description.serial);
    for (const auto& descriptor : description.interfaces) {
        add_interface(descriptor);
    }
    if (description.has_sound) {
        link(add_function("midi"));
    }
    plug();
    open_interfaces(description.interfaces.size());
}

UsbGadget::~UsbGadget() {
    try {
        if (is_plugged_) {
            unplug();
        }
        remove();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "the USB gadget cannot be removed: %s\n", error.what());
    }
}

fs::path UsbGadget::add_function(const std::string& kind) {
    const std::string number = std::to_string(functions_.size());
    functions_.push_back(folder_ / "functions" / (kind + "." + folder_.filename().string() + "-" + number));
    fs::create_directory(functions_.back());
    return functions_.back();
}

void UsbGadget::link(const fs::path& function) {
    fs::create_directory_symlink(function, folder_ / configuration / function.filename());
}

void UsbGadget::add_interface(const std::vector<std::uint8_t>& descriptor) {
    const fs::path function = add_function("hid");
    write_attribute(function / "report_desc", text(descriptor));
    write_attribute(function / "report_length", longest_report);
    link(function);
}

void UsbGadget::open_interfaces(std::size_t count) {
    for (std::size_t interface = 0; interface < count; ++interface) {
        std::string number;  // "236:0"
        std::getline(std::ifstream(functions_[interface] / "dev"), number);
        const std::string device = "/dev/hidg" + number.substr(number.find(':') + 1);
        devices_.emplace_back(open(device.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
        if (devices_.back().get() < 0) {
            throw std::runtime_error(device + ": " + std::strerror(errno));
        }
    }
}

void UsbGadget::plug() {
    write_attribute(folder_ / "UDC", controller);
    is_plugged_ = true;
}

void UsbGadget::unplug() {
    write_attribute(folder_ / "UDC", "\n");
    is_plugged_ = false;
}

void UsbGadget::remove() {
    devices_.clear();
    for (const fs::path& function : functions_) {
        fs::remove(folder_ / configuration / function.filename());
        fs::remove(function);
    }
    for (const char* part : {configuration, english, ""}) {
        fs::remove(folder_ / part);
    }
}

void UsbGadget::send(int interface, const std::vector<std::uint8_t>& report) {
    if (write(device(interface), report.data(), report.size()) != static_cast<ssize_t>(report.size())) {
        throw std::runtime_error(std::string("the gadget cannot send a report: ") + std::strerror(errno));
    }
}

std::vector<std::uint8_t> UsbGadget::receive(int interface) {
    pollfd polled{device(interface), POLLIN, 0};
    constexpr auto limit = std::chrono::milliseconds(patience);
    std::vector<std::uint8_t> report(64);
    const ssize_t size = poll(&polled, 1, static_cast<int>(limit.count())) == 1
                             ? read(polled.fd, report.data(), report.size())
                             : 0;
    report.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return report;
}

}  // namespace test_support
