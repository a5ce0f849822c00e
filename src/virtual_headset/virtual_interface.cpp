#include "virtual_headset/virtual_interface.h"

#include <algorithm>

#include "platform/text.h"

namespace platform::virtual_platform {

namespace {

constexpr const wchar_t* not_connected = L"The device is not connected.";
constexpr const wchar_t* io_error = L"The request could not be performed because of an I/O device error.";

// What Windows accepts.
constexpr ULONG fewest_buffers = 2;
constexpr ULONG most_buffers = 512;

IoResult failed(const wchar_t* why) {
    return {.status = IoResult::Status::failed, .error = why};
}

}  // namespace

VirtualInterface::VirtualInterface(VirtualBus& bus, std::shared_ptr<VirtualHeadset> headset,
                                   std::size_t collection)
    : bus_(bus), headset_(std::move(headset)), collection_(collection) {
    headset_->open.push_back(this);
}

VirtualInterface::~VirtualInterface() {
    MutexLock lock(bus_.mutex_);
    std::erase(headset_->open, this);
}

bool VirtualInterface::HidD_SetNumInputBuffers(ULONG count) {
    MutexLock lock(bus_.mutex_);
    if (!connected_ || count < fewest_buffers || count > most_buffers) {
        return false;
    }
    buffers_ = count;
    return true;
}

PHIDP_PREPARSED_DATA VirtualInterface::HidD_GetPreparsedData() {
    // The descriptor parsed before, when the headset was plugged in.
    auto parsed = hidp::parse(headset_->description.descriptor);
    return parsed.collections[collection_].release();
}

IoResult VirtualInterface::read(std::span<std::uint8_t> report, std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    MutexLock lock(bus_.mutex_);
    const unsigned cancellations = cancellations_;
    while (arrivals_.empty() && connected_ && !reading_ended_ && cancellations == cancellations_) {
        if (timeout == no_timeout) {
            arrived_.wait(bus_.mutex_);
        } else if (std::chrono::steady_clock::now() < deadline) {
            arrived_.wait_until(bus_.mutex_, deadline);
        } else {
            return {.status = IoResult::Status::timed_out};
        }
    }
    if (!connected_) {
        return failed(not_connected);
    }
    if (reading_ended_ || cancellations != cancellations_) {
        return {.status = IoResult::Status::cancelled};
    }
    const Arrival arrival = std::move(arrivals_.front());
    arrivals_.pop_front();
    if (arrival.failed) {
        return failed(io_error);
    }
    const std::size_t size = std::min(report.size(), arrival.report.size());
    std::copy_n(arrival.report.begin(), size, report.begin());
    return {.status = IoResult::Status::done, .size = size};
}

IoResult VirtualInterface::write(std::span<const std::uint8_t> report, std::chrono::milliseconds timeout) {
    std::size_t left = 0;
    std::unique_ptr<Sleeper> hanging;
    IoResult result;
    {
        MutexLock lock(bus_.mutex_);
        if (connected_ && headset_->fault == Fault::unplug_in_write) {
            bus_.pull_out(*headset_);
            left = headset_->collections.size();
        }
        if (!connected_) {
            result = failed(not_connected);
        } else if (headset_->fault == Fault::write_fails) {
            result = failed(io_error);
        } else if (headset_->fault == Fault::write_hangs) {
            // Known before the lock is released, so that a cancel or an unplug does not miss it.
            hanging = bus_.make_sleeper_();
            hanging_writes_.push_back(hanging.get());
        } else {
            result = bus_.take_output(*headset_, collection_, report);
        }
    }
    bus_.announce(left, false);
    return hanging ? hang(*hanging, timeout) : result;
}

IoResult VirtualInterface::hang(Sleeper& write, std::chrono::milliseconds timeout) {
    const bool timed_out = write.sleep(timeout);
    MutexLock lock(bus_.mutex_);
    std::erase(hanging_writes_, &write);
    if (!connected_) {
        return failed(not_connected);
    }
    return {.status = timed_out ? IoResult::Status::timed_out : IoResult::Status::cancelled};
}

void VirtualInterface::wake_writes() {
    for (Sleeper* const write : hanging_writes_) {
        write->wake();
    }
}

void VirtualInterface::cancel() {
    MutexLock lock(bus_.mutex_);
    ++cancellations_;
    arrived_.notify_all();
    wake_writes();
}

void VirtualInterface::end_reading() {
    MutexLock lock(bus_.mutex_);
    reading_ended_ = true;
    arrived_.notify_all();
}

bool VirtualInterface::is_connected() {
    MutexLock lock(bus_.mutex_);
    return connected_;
}

IoResult VirtualInterface::HidD_SetFeature(std::span<const std::uint8_t> /*report*/) {
    return failed(L"The device has no feature reports.");
}

IoResult VirtualInterface::HidD_GetFeature(std::span<std::uint8_t> /*report*/) {
    return failed(L"The device has no feature reports.");
}

IoResult VirtualInterface::HidD_GetInputReport(std::span<std::uint8_t> report) {
    MutexLock lock(bus_.mutex_);
    if (!connected_) {
        return failed(not_connected);
    }
    const auto current = headset_->current_input_report({collection_, report[0]});
    if (current.empty()) {
        return failed(L"The device has no such input report.");
    }
    const std::size_t size = std::min(report.size(), current.size());
    std::copy_n(current.begin(), size, report.begin());
    return {.status = IoResult::Status::done, .size = size};
}

// A control transfer fares like a report on the interrupt pipe, but for the time that it is given.
IoResult VirtualInterface::HidD_SetOutputReport(std::span<const std::uint8_t> report) {
    constexpr std::chrono::milliseconds control_timeout{5000};  // as the kernel gives a device
    return write(report, control_timeout);
}

std::optional<std::wstring> VirtualInterface::string(HidString which) {
    const HeadsetDescription& description = headset_->description;
    const std::optional<std::string>& text = which == HidString::manufacturer ? description.manufacturer
                                             : which == HidString::product    ? description.product
                                                                              : description.serial;
    return text ? std::optional(to_wide(*text)) : std::nullopt;
}

std::optional<std::wstring> VirtualInterface::HidD_GetIndexedString(ULONG index) {
    // Numbered as in most USB device descriptors.
    switch (index) {
        case 1:
            return string(HidString::manufacturer);
        case 2:
            return string(HidString::product);
        case 3:
            return string(HidString::serial_number);
        default:
            return std::nullopt;
    }
}

std::optional<HidInterfaceInfo> VirtualInterface::info() {
    MutexLock lock(bus_.mutex_);
    return headset_->info(collection_);
}

std::vector<std::uint8_t> VirtualInterface::report_descriptor() {
    return headset_->description.descriptor;
}

void VirtualInterface::push(std::vector<std::uint8_t> report) {
    while (arrivals_.size() >= buffers_) {
        arrivals_.pop_front();
    }
    arrivals_.push_back({.report = std::move(report)});
    arrived_.notify_all();
}

void VirtualInterface::fail_read() {
    arrivals_.push_back({.failed = true});
    arrived_.notify_all();
}

void VirtualInterface::disconnect() {
    connected_ = false;
    arrived_.notify_all();
    wake_writes();
}

}  // namespace platform::virtual_platform
