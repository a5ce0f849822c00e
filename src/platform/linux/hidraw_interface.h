// One opened top-level collection of a hidraw node.
#pragma once

#include <memory>
#include <vector>

#include "platform/hidp/hidp.h"
#include "platform/linux/device_calls.h"
#include "platform/linux/hidapi.h"
#include "platform/linux/report_reader.h"

namespace platform::linux_platform {

/// A report descriptor with the collection of it that is meant.
class CollectionDescriptor {
  public:
    /// \param collection  counted from 0; absent: the telephony collection, else the first
    /// Throws std::runtime_error where the descriptor is refused or has no such collection.
    CollectionDescriptor(std::vector<std::uint8_t> descriptor, std::optional<std::size_t> collection);

    /// Parses it again. The caller owns the result.
    hidp::PreparsedData parse() const;
    bool has_report_ids() const { return hidp::has_report_ids(parsed_.get()); }
    const std::vector<std::uint8_t>& bytes() const { return descriptor_; }
    /// Which of the descriptor's collections it is, counted from 0.
    std::size_t number() const { return collection_; }
    HIDP_CAPS caps() const;
    /// The length of one report, id byte included, 0 for one that the collection does not have.
    std::size_t report_length(HIDP_REPORT_TYPE type, std::uint8_t report_id) const;

  private:
    std::vector<std::uint8_t> descriptor_;
    std::size_t collection_ = 0;
    hidp::PreparsedData parsed_;
};

/// A hidraw node that is open twice: through hidapi, and for reading. Closed by whoever lets go last.
struct OpenNode {
    using Device = std::unique_ptr<hid_device, decltype(Hidapi::hid_close)>;

    OpenNode(const Hidapi& functions, Device opened, common::FileDescriptor reading)
        : hidapi(functions), device(std::move(opened)), hidraw(std::move(reading)) {}

    const Hidapi& hidapi;
    const Device device;
    const common::FileDescriptor hidraw;
};

class HidrawInterface final : public HidInterface {
  public:
    /// Throws std::system_error where the system has no descriptor left.
    HidrawInterface(std::shared_ptr<const OpenNode> node, CollectionDescriptor collection);
    ~HidrawInterface() override;

    bool HidD_SetNumInputBuffers(ULONG count) override;
    PHIDP_PREPARSED_DATA HidD_GetPreparsedData() override;
    IoResult read(std::span<std::uint8_t> report, std::chrono::milliseconds timeout) override;
    IoResult write(std::span<const std::uint8_t> report, std::chrono::milliseconds timeout) override;
    void cancel() override;
    void end_reading() override;
    bool is_connected() override;
    IoResult HidD_SetFeature(std::span<const std::uint8_t> report) override;
    IoResult HidD_GetFeature(std::span<std::uint8_t> report) override;
    std::optional<std::wstring> string(HidString which) override;
    IoResult HidD_GetInputReport(std::span<std::uint8_t> report) override;
    IoResult HidD_SetOutputReport(std::span<const std::uint8_t> report) override;
    std::optional<std::wstring> HidD_GetIndexedString(ULONG index) override;
    std::optional<HidInterfaceInfo> info() override;
    std::vector<std::uint8_t> report_descriptor() override;

  private:
    using Get = decltype(Hidapi::hid_get_feature_report);
    using Send = decltype(Hidapi::hid_send_feature_report);

    bool is_own_input(std::span<const std::uint8_t> report) const;
    IoResult get_report(Get get, std::span<std::uint8_t> report);
    IoResult send_report(Send send, std::span<const std::uint8_t> report);

    std::shared_ptr<const OpenNode> node_;
    const CollectionDescriptor collection_;
    ReportReader reader_;
    DeviceCalls calls_;
};

}  // namespace platform::linux_platform
