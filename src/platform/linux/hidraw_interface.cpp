#include "platform/linux/hidraw_interface.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "platform/linux/device_path.h"
#include "platform/linux/interface_info.h"
#include "platform/linux/utf8_locale.h"
#include "platform/text.h"

namespace platform::linux_platform {

using std::chrono::milliseconds;

namespace {

constexpr USAGE telephony_page = 0x0B;  // HID Usage Tables, section 3.1

/// The kernel's queue for an open node, of which it uses all places but one (kernel, include/linux/hidraw.h:
/// HIDRAW_BUFFER_SIZE).
constexpr ULONG most_buffers = 64;

/// How long the kernel gives a device for a control transfer (kernel, include/linux/usb.h:
/// USB_CTRL_GET_TIMEOUT), and the calls before it as much again.
constexpr milliseconds control_timeout{10'000};

/// A USB string has at most 126 characters (USB 2.0, section 9.6.7), a name made through uhid 127 bytes.
constexpr std::size_t longest_string = 255;

/// What hidapi's functions give: bytes, or 0 for a string, or -1 and a text.
IoResult outcome(const OpenNode& node, int result) {
    if (result >= 0) {
        return {.status = IoResult::Status::done, .size = static_cast<std::size_t>(result)};
    }
    const wchar_t* const error = node.hidapi.hid_error(node.device.get());
    return {.status = IoResult::Status::failed, .error = error == nullptr ? L"" : error};
}

std::vector<std::uint8_t> copy(std::span<const std::uint8_t> bytes) {
    return {bytes.begin(), bytes.end()};
}

HIDP_CAPS caps_of(const hidp::PreparsedData& data) {
    HIDP_CAPS caps{};
    hidp::parser().HidP_GetCaps(data.get(), &caps);
    return caps;
}

std::size_t telephony_or_first(const std::vector<hidp::PreparsedData>& collections) {
    const auto found = std::find_if(
        collections.begin(), collections.end(),
        [](const hidp::PreparsedData& data) { return caps_of(data).UsagePage == telephony_page; });
    return found == collections.end() ? 0 : static_cast<std::size_t>(found - collections.begin());
}

}  // namespace

CollectionDescriptor::CollectionDescriptor(std::vector<std::uint8_t> descriptor,
                                           std::optional<std::size_t> collection)
    : descriptor_(std::move(descriptor)) {
    auto parsed = hidp::parse(descriptor_);
    if (parsed.error) {
        throw std::runtime_error("report descriptor: " + parsed.error->to_string());
    }
    collection_ = collection.value_or(telephony_or_first(parsed.collections));
    if (collection_ >= parsed.collections.size()) {
        throw std::runtime_error("the device has no such collection");
    }
    parsed_ = std::move(parsed.collections[collection_]);
}

hidp::PreparsedData CollectionDescriptor::parse() const {
    return std::move(hidp::parse(descriptor_).collections[collection_]);
}

HIDP_CAPS CollectionDescriptor::caps() const {
    return caps_of(parsed_);
}

std::size_t CollectionDescriptor::report_length(HIDP_REPORT_TYPE type, std::uint8_t report_id) const {
    return hidp::report_length(parsed_.get(), type, report_id);
}

HidrawInterface::HidrawInterface(std::shared_ptr<const OpenNode> node, CollectionDescriptor collection)
    : node_(std::move(node)),
      collection_(std::move(collection)),
      reader_(node_->hidraw.get(),
              [this](std::span<const std::uint8_t> report) { return is_own_input(report); }) {}

// The kernel closes a node only when no device holds up a report: that of another headset may take five
// seconds.
HidrawInterface::~HidrawInterface() {
    try {
        calls_.end_with([node = std::move(node_)]() mutable { node.reset(); });
    } catch (const std::exception&) {
        // No memory to have it closed elsewhere: it is closed here.
    }
}

/// Every open handle of a node gets the reports of all its collections.
bool HidrawInterface::is_own_input(std::span<const std::uint8_t> report) const {
    return !collection_.has_report_ids() || collection_.report_length(HidP_Input, report[0]) != 0;
}

bool HidrawInterface::HidD_SetNumInputBuffers(ULONG count) {
    return count <= most_buffers;
}

PHIDP_PREPARSED_DATA HidrawInterface::HidD_GetPreparsedData() {
    return collection_.parse().release();
}

IoResult HidrawInterface::read(std::span<std::uint8_t> report, milliseconds timeout) {
    if (collection_.has_report_ids()) {
        return reader_.read(report, timeout);
    }
    // A report without id comes without the byte, too. A read needs room for one byte, or it takes nothing.
    std::uint8_t scratch = 0;
    const std::span<std::uint8_t> data = report.size() > 1 ? report.subspan(1) : std::span(&scratch, 1);
    IoResult result = reader_.read(data, timeout);
    if (result.status == IoResult::Status::done) {
        report[0] = 0;
        result.size = std::min(result.size + 1, report.size());
    }
    return result;
}

IoResult HidrawInterface::write(std::span<const std::uint8_t> report, milliseconds timeout) {
    // The kernel sends as many bytes as it is given.
    const std::size_t length = collection_.report_length(HidP_Output, report[0]);
    const auto sent = report.first(length == 0 ? report.size() : std::min(length, report.size()));
    IoResult result = calls_.run(
        [node = node_, bytes = copy(sent)] {
            return outcome(*node, node->hidapi.hid_write(node->device.get(), bytes.data(), bytes.size()));
        },
        timeout);
    if (result.status == IoResult::Status::done) {
        result.size = report.size();
    }
    return result;
}

void HidrawInterface::cancel() {
    reader_.cancel();
    calls_.cancel();
}

void HidrawInterface::end_reading() {
    reader_.end();
}

bool HidrawInterface::is_connected() {
    return reader_.is_connected();
}

IoResult HidrawInterface::get_report(Get get, std::span<std::uint8_t> report) {
    const auto bytes = std::make_shared<std::vector<std::uint8_t>>(copy(report));
    IoResult result =
        calls_.run([node = node_, get,
                    bytes] { return outcome(*node, get(node->device.get(), bytes->data(), bytes->size())); },
                   control_timeout);
    if (result.status == IoResult::Status::done) {
        std::copy(bytes->begin(), bytes->end(), report.begin());
    }
    return result;
}

IoResult HidrawInterface::send_report(Send send, std::span<const std::uint8_t> report) {
    return calls_.run(
        [node = node_, send, bytes = copy(report)] {
            return outcome(*node, send(node->device.get(), bytes.data(), bytes.size()));
        },
        control_timeout);
}

IoResult HidrawInterface::HidD_SetFeature(std::span<const std::uint8_t> report) {
    return send_report(node_->hidapi.hid_send_feature_report, report);
}

IoResult HidrawInterface::HidD_GetFeature(std::span<std::uint8_t> report) {
    return get_report(node_->hidapi.hid_get_feature_report, report);
}

IoResult HidrawInterface::HidD_GetInputReport(std::span<std::uint8_t> report) {
    return get_report(node_->hidapi.hid_get_input_report, report);
}

IoResult HidrawInterface::HidD_SetOutputReport(std::span<const std::uint8_t> report) {
    const Hidapi& hidapi = node_->hidapi;
    if (hidapi.hid_send_output_report == nullptr) {
        return {.status = IoResult::Status::failed,
                .error = L"hidapi " + to_wide(hidapi.hid_version_str()) +
                         L" has no hid_send_output_report; 0.15.0 or later is needed"};
    }
    return send_report(hidapi.hid_send_output_report, report);
}

std::optional<std::wstring> HidrawInterface::string(HidString which) {
    const auto listed = info();
    if (!listed) {
        return std::nullopt;
    }
    // hidapi has no failure for a string that the device does not state.
    return (which == HidString::manufacturer ? listed->manufacturer_string
            : which == HidString::product    ? listed->product_string
                                             : listed->serial_number)
        .value_or(L"");
}

std::optional<std::wstring> HidrawInterface::HidD_GetIndexedString(ULONG index) {
    const auto text = std::make_shared<std::array<wchar_t, longest_string + 1>>();
    const IoResult result = calls_.run(
        [node = node_, index, text] {
            const Utf8Locale utf8;
            return outcome(*node,
                           node->hidapi.hid_get_indexed_string(node->device.get(), static_cast<int>(index),
                                                               text->data(), text->size()));
        },
        control_timeout);
    return result.status == IoResult::Status::done ? std::optional<std::wstring>(text->data()) : std::nullopt;
}

std::optional<HidInterfaceInfo> HidrawInterface::info() {
    const auto listed = std::make_shared<HidInterfaceInfo>();
    const IoResult result = calls_.run(
        [node = node_, listed] {
            const Utf8Locale utf8;
            const hid_device_info* const entry = node->hidapi.hid_get_device_info(node->device.get());
            if (entry == nullptr || entry->path == nullptr) {
                return outcome(*node, -1);
            }
            *listed = interface_info(*entry);
            return outcome(*node, 0);
        },
        control_timeout);
    if (result.status != IoResult::Status::done) {
        return std::nullopt;
    }
    const HIDP_CAPS caps = collection_.caps();
    listed->path = DevicePath{listed->hid_interface, collection_.number()}.to_string();
    listed->usage_page = caps.UsagePage;
    listed->usage = caps.Usage;
    return *listed;
}

std::vector<std::uint8_t> HidrawInterface::report_descriptor() {
    return collection_.bytes();
}

}  // namespace platform::linux_platform
