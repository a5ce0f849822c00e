#include "virtual_headset/uhid/uhid_device.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/uhid.h>
#include <string>
#include <unistd.h>

#include "virtual_headset/virtual_headset.h"

namespace platform::virtual_platform {

namespace {

constexpr const char* uhid_path = "/dev/uhid";

Failure why_not_opened(int error) {
    switch (error) {
        case ENOENT:
        case ENODEV:
            return "there is no /dev/uhid: load the kernel's module uhid (modprobe uhid)";
        case EACCES:
        case EPERM:
            return "no permission to open /dev/uhid: run as root, or have an udev rule give this user access";
        default:
            return std::string("/dev/uhid cannot be opened: ") + std::strerror(error);
    }
}

/// Copies as much of a text as fits before the terminating zero, which is there already. Bytes that are no
/// UTF-8 go through: a headset may state any.
template <std::size_t size>
void copy_text(const std::string& text, std::uint8_t (&field)[size]) {
    std::copy_n(text.begin(), std::min(text.size(), size - 1), field);
}

/// True when an input report of some collection is longer than an event of the kernel holds.
bool sends_too_much(const HeadsetDescription& description) {
    Failure failure;
    const auto collections = parse_collections(description.descriptor, failure);
    return std::any_of(collections.begin(), collections.end(), [](const Collection& collection) {
        return collection.caps.InputReportByteLength > UHID_DATA_MAX;
    });
}

uhid_event creation(int headset, const HeadsetDescription& description) {
    uhid_event event{};
    event.type = UHID_CREATE2;
    uhid_create2_req& create = event.u.create2;
    copy_text(description.product.value_or(""), create.name);
    copy_text(description.serial.value_or(""), create.uniq);
    copy_text("virtual-" + std::to_string(headset), create.phys);
    // hidapi lists devices of the buses that it knows, and takes their ids from there.
    create.bus = BUS_USB;
    create.vendor = description.vendor_id;
    create.product = description.product_id;
    create.rd_size = static_cast<std::uint16_t>(description.descriptor.size());
    std::copy(description.descriptor.begin(), description.descriptor.end(), create.rd_data);
    return event;
}

}  // namespace

std::shared_ptr<UhidDevice> UhidDevice::create(int headset, const HeadsetDescription& description,
                                               Failure& failure) {
    if (description.descriptor.size() > HID_MAX_DESCRIPTOR_SIZE) {
        failure = "the descriptor is longer than the kernel takes";
        return nullptr;
    }
    if (sends_too_much(description)) {
        failure = "the headset's input reports are longer than the kernel takes";
        return nullptr;
    }
    const int descriptor = open(uhid_path, O_RDWR | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        failure = why_not_opened(errno);
        return nullptr;
    }
    auto device = std::make_shared<UhidDevice>(descriptor);
    if (!device->write_event(creation(headset, description))) {
        failure = std::string("the kernel refuses the headset: ") + std::strerror(errno);
        return nullptr;
    }
    return device;
}

UhidDevice::~UhidDevice() {
    close(descriptor_);
}

bool UhidDevice::next_event(uhid_event& event) const {
    return read(descriptor_, &event, sizeof event) > 0;
}

void UhidDevice::send_input(std::span<const std::uint8_t> report) const {
    // On the wire a device without report ids sends none.
    const auto sent = report[0] == 0 ? report.subspan(1) : report;
    uhid_event event{};
    event.type = UHID_INPUT2;
    event.u.input2.size = static_cast<std::uint16_t>(sent.size());
    std::copy(sent.begin(), sent.end(), event.u.input2.data);
    write_event(event);
}

// Byte 0 is there without report ids, too, as in what a USB headset's answer becomes.
void UhidDevice::answer_request(const uhid_event& request, std::span<const std::uint8_t> report) const {
    uhid_event event{};
    event.type = UHID_GET_REPORT_REPLY;
    event.u.get_report_reply.id = request.u.get_report.id;
    event.u.get_report_reply.size = static_cast<std::uint16_t>(report.size());
    std::copy(report.begin(), report.end(), event.u.get_report_reply.data);
    write_event(event);
}

void UhidDevice::refuse_request(const uhid_event& request) const {
    uhid_event event{};
    if (request.type == UHID_GET_REPORT) {
        event.type = UHID_GET_REPORT_REPLY;
        event.u.get_report_reply.id = request.u.get_report.id;
        event.u.get_report_reply.err = EIO;
    } else {
        event.type = UHID_SET_REPORT_REPLY;
        event.u.set_report_reply.id = request.u.set_report.id;
        event.u.set_report_reply.err = EIO;
    }
    write_event(event);
}

void UhidDevice::destroy() const {
    uhid_event event{};
    event.type = UHID_DESTROY;
    write_event(event);
}

// Once the device exists, a write fails only when the kernel has let go of it, and then nobody is left to
// tell.
bool UhidDevice::write_event(const uhid_event& event) const {
    return write(descriptor_, &event, sizeof event) == sizeof event;
}

}  // namespace platform::virtual_platform
