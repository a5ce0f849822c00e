#include "tools/headset/trial_headset.h"

#include "base/headset_types.h"
#include "base/plugin_log.h"
#include "hid/usage_input.h"
#include "hid/usage_output.h"
#include "platform/common/steady_clock.h"
#include "platform/hidp/hidp.h"
#include "platform/text.h"
#include "tools/headset/errors.h"
#include "tools/headset/interfaces.h"

/// No log: the commands tell what the functions did.
std::shared_ptr<plugin_control::IPluginLogger> getPluginLogger() {
    return nullptr;
}

namespace headset {
namespace {

// A vendor that the plug-in has a driver for (Jabra), for a headset that does not tell its own.
constexpr DeviceIds driven_device{0x0B0E, 0x0001};

using platform::virtual_platform::VirtualBus;

std::unique_ptr<platform::Sleeper> make_sleeper() {
    return platform::common::SteadyClock().make_sleeper();
}

int plug(VirtualBus& bus, const Descriptor& descriptor, DeviceIds ids) {
    std::string failure;
    const auto serial = descriptor.has_serial ? std::optional<std::string>("trial") : std::nullopt;
    const auto number = bus.plug({.descriptor = descriptor.bytes,
                                  .vendor_id = ids.vendor,
                                  .product_id = ids.product,
                                  .manufacturer = "virtual",
                                  .product = descriptor.name,
                                  .serial = serial},
                                 failure);
    if (!number)
        throw Refused("the descriptor is refused: " + failure);
    return *number;
}

}  // namespace

TrialHeadset::TrialHeadset(const Descriptor& descriptor)
    : bus_([](bool) {}, make_sleeper),
      number_(plug(bus_, descriptor, descriptor.ids.value_or(driven_device))),
      driver_(headset_plugin::create_driver(descriptor.ids.value_or(driven_device).vendor,
                                            descriptor.ids.value_or(driven_device).product)) {}

std::vector<TrialHeadset::Interface> TrialHeadset::interfaces() const {
    std::vector<Interface> interfaces;
    for (const auto& info : bus_.enumerate(0, 0))
        interfaces.push_back({info.path,
                              {info.usage_page, info.usage},
                              find_refusal(info),
                              info.usage_page == plugin_control::telephony_usage_page});
    return interfaces;
}

bool TrialHeadset::open(const Interface& interface) {
    handle_ = headset_plugin::hid_open_handle(bus_.open(interface.path).interface);
    if (!handle_)
        open_error_ = platform::to_utf8(headset_plugin::hid_last_error(nullptr));
    else if (driver_)
        driver_->set_hid_device(handle_);
    return handle_ != nullptr;
}

std::optional<Bytes> TrialHeadset::set_indicator(Usage indicator, bool on) {
    Bytes report(headset_plugin::hid_output_report_length(handle_.get()));
    std::uint32_t length = 0;
    const int result = headset_plugin::gen_led_event_for_usage(handle_.get(), indicator.page, indicator.id,
                                                               on ? 1 : 0, report.data(), &length);
    return write(std::move(report), result == 0);
}

std::optional<Bytes> TrialHeadset::show_call() {
    return show_state(headset_plugin::HEADSET_STATE_INUSE);
}

std::optional<Bytes> TrialHeadset::show_ringing() {
    return show_state(headset_plugin::HEADSET_STATE_ALERTING);
}

std::optional<Bytes> TrialHeadset::show_state(std::uint32_t state) {
    Bytes report(headset_plugin::hid_output_report_length(handle_.get()));
    const auto length = driver_ ? driver_->set_led_event_data(state, report) : 0;
    return write(std::move(report), length > 0);
}

std::optional<Bytes> TrialHeadset::show_mute() {
    Bytes report(headset_plugin::hid_output_report_length(handle_.get()));
    const auto length = driver_ ? driver_->set_mute_data(true, report) : 0;
    return write(std::move(report), length > 0);
}

std::optional<Bytes> TrialHeadset::write(Bytes report, bool is_built) {
    if (!is_built || headset_plugin::hid_write_report(handle_.get(), report) < 0)
        return std::nullopt;
    // What arrives is as long as the reports of this id.
    if (const auto own =
            platform::hidp::report_length(handle_->pp_data.get(), platform::HidP_Output, report[0]))
        report.resize(own);
    return report;
}

bool TrialHeadset::is_lit(Usage indicator) const {
    return bus_.indicator(number_, {indicator.page, indicator.id}).value_or(false);
}

bool TrialHeadset::reads_as_mute(const Bytes& report) const {
    return headset_plugin::process_read_for_mute(handle_.get(), report) == 1;
}

bool TrialHeadset::reads_as_key(const Bytes& report) const {
    return driver_ && driver_->process_read(report) != headset_plugin::HEADSET_KEY_INVALID;
}

}  // namespace headset
