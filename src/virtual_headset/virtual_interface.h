// One opened collection of a virtual headset.
#pragma once

#include <deque>
#include <memory>
#include <vector>

#include "virtual_headset/virtual_headset.h"

namespace platform::virtual_platform {

class VirtualInterface final : public HidInterface {
  public:
    /// The caller holds the bus's mutex.
    VirtualInterface(VirtualBus& bus, std::shared_ptr<VirtualHeadset> headset, std::size_t collection);
    ~VirtualInterface() override;

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

    // What the bus does to it, holding its mutex.

    std::size_t collection() const { return collection_; }
    /// Puts an input report into the queue; the oldest goes when it is full.
    void push(std::vector<std::uint8_t> report);
    /// Fails the next read.
    void fail_read();
    /// The headset was pulled out.
    void disconnect();

  private:
    /// What a read finds in the queue: a report, or a failure.
    struct Arrival {
        std::vector<std::uint8_t> report{};
        bool failed = false;
    };

    IoResult hang(Sleeper& write, std::chrono::milliseconds timeout);
    void wake_writes();

    VirtualBus& bus_;
    const std::shared_ptr<VirtualHeadset> headset_;
    const std::size_t collection_;

    // Guarded by the bus's mutex.
    Condition arrived_;
    std::deque<Arrival> arrivals_;
    std::size_t buffers_ = 32;  ///< what Windows keeps by default
    unsigned cancellations_ = 0;
    bool connected_ = true;
    bool reading_ended_ = false;
    std::vector<Sleeper*> hanging_writes_;
};

}  // namespace platform::virtual_platform
