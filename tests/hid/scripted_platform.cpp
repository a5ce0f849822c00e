#include "tests/hid/scripted_platform.h"

#include <stdexcept>

namespace platform::hid_test {
namespace {

/// An opened collection of a virtual headset, with the script between.
class ScriptedInterface final : public HidInterface {
  public:
    ScriptedInterface(ScriptedPlatform& platform, std::unique_ptr<HidInterface> real)
        : script_(platform.script), asked_(platform.asked), real_(std::move(real)) {
        ++asked_.interfaces_open;
    }
    ~ScriptedInterface() override { --asked_.interfaces_open; }

    bool HidD_SetNumInputBuffers(ULONG count) override {
        asked_.input_buffers = count;
        return !script_.refuse_input_buffers && real_->HidD_SetNumInputBuffers(count);
    }

    PHIDP_PREPARSED_DATA HidD_GetPreparsedData() override {
        if (script_.refuse_preparsed_data) {
            return nullptr;
        }
        ++asked_.preparsed_data_held;
        return real_->HidD_GetPreparsedData();
    }

    IoResult read(std::span<std::uint8_t> report, std::chrono::milliseconds timeout) override {
        ++asked_.reads_begun;
        return script_.read ? script_.read(report) : real_->read(report, timeout);
    }

    IoResult write(std::span<const std::uint8_t> report, std::chrono::milliseconds timeout) override {
        asked_.write_timeout = timeout;
        return script_.write ? script_.write(report) : real_->write(report, timeout);
    }

    void cancel() override { real_->cancel(); }
    void end_reading() override { real_->end_reading(); }
    bool is_connected() override { return real_->is_connected(); }

    IoResult HidD_SetFeature(std::span<const std::uint8_t> report) override {
        return script_.set_feature ? script_.set_feature(report) : real_->HidD_SetFeature(report);
    }
    IoResult HidD_GetFeature(std::span<std::uint8_t> report) override {
        return script_.get_feature ? script_.get_feature(report) : real_->HidD_GetFeature(report);
    }

    IoResult HidD_GetInputReport(std::span<std::uint8_t> report) override {
        return real_->HidD_GetInputReport(report);
    }
    IoResult HidD_SetOutputReport(std::span<const std::uint8_t> report) override {
        return real_->HidD_SetOutputReport(report);
    }

    std::optional<std::wstring> string(HidString which) override { return real_->string(which); }
    std::optional<std::wstring> HidD_GetIndexedString(ULONG index) override {
        return real_->HidD_GetIndexedString(index);
    }

    std::optional<HidInterfaceInfo> info() override {
        return script_.refuse_info ? std::nullopt : real_->info();
    }
    std::vector<std::uint8_t> report_descriptor() override { return real_->report_descriptor(); }

  private:
    const Script& script_;
    Asked& asked_;
    const std::unique_ptr<HidInterface> real_;
};

}  // namespace

ScriptedPlatform::ScriptedPlatform() : bus_([](bool) {}, [this] { return clock_.make_sleeper(); }) {}

void ScriptedPlatform::reset() {
    bus_.reset();
    clock_.go();
    set_parser(nullptr);
    script = {};
    asked.initialised = 0;
    asked.exited = 0;
    asked.input_buffers = 0;
    asked.write_timeout = std::chrono::milliseconds{0};
    asked.reads_begun = 0;
}

const HidParser& ScriptedPlatform::parser() {
    const HidParser* const replacement = parser_;
    return replacement == nullptr ? hidp::parser() : *replacement;
}

MessageWindows& ScriptedPlatform::windows() {
    throw std::logic_error("the HID layer has no windows");
}

std::wstring ScriptedPlatform::init() {
    ++asked.initialised;
    return script.init_error;
}

std::vector<HidInterfaceInfo> ScriptedPlatform::enumerate(std::uint16_t vendor_id, std::uint16_t product_id) {
    return bus_.enumerate(vendor_id, product_id);
}

HidBackend::OpenResult ScriptedPlatform::open(const std::string& path) {
    if (script.open_error) {
        return {nullptr, *script.open_error};
    }
    OpenResult opened = bus_.open(path);
    if (opened.interface) {
        opened.interface = std::make_unique<ScriptedInterface>(*this, std::move(opened.interface));
    }
    return opened;
}

void ScriptedPlatform::HidD_FreePreparsedData(PHIDP_PREPARSED_DATA data) {
    --asked.preparsed_data_held;
    hidp::PreparsedDataDeleter{}(data);
}

ScriptedPlatform& scripted_platform() {
    static auto* const platform = new ScriptedPlatform;  // outlives every thread
    return *platform;
}

}  // namespace platform::hid_test

platform::Platform& platform::current() {
    return hid_test::scripted_platform();
}
