// The platform that the tests of this folder run on: a bus of virtual headsets, with every step on the way to
// one open to failing.
#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>

#include "platform/platform.h"
#include "tests/hid/scripted_parser.h"
#include "virtual_headset/platform/virtual_clock.h"
#include "virtual_headset/virtual_bus.h"

namespace platform::hid_test {

/// What goes wrong, and what is answered in the headset's stead. Set before the calls that it is for.
struct Script {
    std::wstring init_error{};
    std::optional<std::wstring> open_error{};
    bool refuse_input_buffers = false;
    bool refuse_preparsed_data = false;
    std::function<IoResult(std::span<const std::uint8_t>)> write{};
    std::function<IoResult(std::span<std::uint8_t>)> read{};
    std::function<IoResult(std::span<const std::uint8_t>)> set_feature{};
    std::function<IoResult(std::span<std::uint8_t>)> get_feature{};
    bool refuse_info = false;
};

/// What was asked of the platform.
struct Asked {
    std::atomic<int> initialised = 0;
    std::atomic<int> exited = 0;
    std::atomic<ULONG> input_buffers = 0;
    std::atomic<std::chrono::milliseconds> write_timeout{};
    std::atomic<int> reads_begun = 0;
    std::atomic<int> preparsed_data_held = 0;  ///< handed out and not given back
    std::atomic<int> interfaces_open = 0;
};

class ScriptedPlatform final : public Platform, private HidBackend {
  public:
    ScriptedPlatform();

    HidBackend& hid() override { return *this; }
    const HidParser& parser() override;
    MessageWindows& windows() override;
    Clock& clock() override { return clock_; }

    virtual_platform::VirtualBus& bus() { return bus_; }
    virtual_platform::VirtualClock& virtual_clock() { return clock_; }
    void set_parser(const HidParser* parser) { parser_ = parser; }

    /// No headset, no script, real time, and nothing asked yet.
    void reset();

    Script script{};
    Asked asked{};

  private:
    std::wstring init() override;
    void exit() override { ++asked.exited; }
    HidapiVersion hidapi_version() override { return {1, 2, 3, "1.2.3"}; }
    std::vector<HidInterfaceInfo> enumerate(std::uint16_t vendor_id, std::uint16_t product_id) override;
    OpenResult open(const std::string& path) override;
    void HidD_FreePreparsedData(PHIDP_PREPARSED_DATA data) override;

    virtual_platform::VirtualClock clock_;
    virtual_platform::VirtualBus bus_;
    std::atomic<const HidParser*> parser_ = nullptr;
};

ScriptedPlatform& scripted_platform();

}  // namespace platform::hid_test
