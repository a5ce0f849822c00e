#include "tests/docs/client.h"

#include <chrono>
#include <future>
#include <stdexcept>

#include "base/headset_types.h"
#include "device/device_events.h"
#include "devicemgr/device_mgr_api.h"
#include "drivers/driver_factory.h"
#include "orvex/virtual_headset.h"
#include "plugin/plugin_manager.h"
#include "tests/docs/markdown_table.h"
#include "virtual_headset/models/model.h"

namespace docs {
namespace {

using test_support::patience;

constexpr const char* model = "jabra-link-380c";
constexpr std::uint16_t led_page = 0x08;

void demand(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

template <typename Result>
void wait_for(std::future<Result> future, const char* what) {
    demand(future.wait_for(patience) == std::future_status::ready, what);
}

/// "onAnswer(device, 1)" as "`onAnswer` 1".
std::string request(const std::string& call) {
    std::string name = code(call.substr(0, call.find('(')));
    const auto comma = call.find(", ");
    if (comma == std::string::npos) {
        return name;
    }
    const auto cid = call.substr(comma + 2, call.find_first_of(",)", comma + 2) - comma - 2);
    return name + (cid.empty() ? ", no call" : " " + cid);
}

}  // namespace

RecordingStandardDriver::RecordingStandardDriver(std::uint32_t product_id)
    : call_control_generic(product_id), driver_(product_id) {}

headset_plugin::stdhid_cc& RecordingStandardDriver::driver() {
    driver_.set_hid_device(hid_device());
    return driver_;
}

std::int32_t RecordingStandardDriver::set_led_event_data(std::uint32_t state,
                                                         std::span<std::uint8_t> output) {
    announces_state_ = false;
    sent_.state = state;
    return driver().set_led_event_data(state, output);
}

std::int32_t RecordingStandardDriver::process_read(std::span<const std::uint8_t> report) {
    return driver().process_read(report);
}

std::int32_t RecordingStandardDriver::set_mute_data(bool mute, std::span<std::uint8_t> output) {
    if (!announces_state_) {
        sent_.muted = mute;
    }
    return driver().set_mute_data(mute, output);
}

std::uint32_t RecordingStandardDriver::query_state_follow_up(std::uint32_t state) {
    announces_state_ = true;
    return driver().query_state_follow_up(state);
}

Client::Client()
    : driver_(std::make_shared<RecordingStandardDriver>(
          platform::virtual_headsets::find_model(model)->product_id)) {
    headset_plugin::set_driver_factory([driver = driver_](std::uint32_t, std::uint32_t) { return driver; });
    headset_ = orvex_virtual_plug(model, nullptr);
    const auto ready = std::make_shared<std::promise<void>>();
    listener_->on_call([ready](const std::string& call) {
        if (call.starts_with("onActiveDeviceNotify")) {
            ready->set_value();
        }
    });
    control_ = plugin_control::createPluginControl({});
    control_->setCallControlListener(listener_);
    plugin_control::createPluginConfig({})->setConfigListener(listener_);

    constexpr int idle_reports = 2;  // a headset that is opened is unmuted and put to rest
    constexpr auto limit_ms = static_cast<int>(std::chrono::milliseconds(patience).count());
    demand(orvex_virtual_wait_outputs(headset_, idle_reports, limit_ms) == 1, "the headset is not opened");
    control_->setAudioDevice(orvex_virtual_serial(headset_), "", "");
    wait_for(ready->get_future(), "the headset does not become ready");
    const auto shown = std::make_shared<std::promise<void>>();
    post_device_mgr_task({"docs::Client", [shown] { shown->set_value(); }});
    wait_for(shown->get_future(), "the worker is stuck");
}

Client::~Client() {
    plugin_control::stopPluginControl();
    headset_plugin::set_driver_factory({});
    orvex_virtual_reset();
}

void Client::set_calls(const Calls& calls) {
    control_->callStateSync("", calls, static_cast<int>(calls.size()));
}

void Client::light(bool lit) {
    update_headset_state(headset_plugin::HEADSET_STATE_IDLE);
    if (lit) {
        update_headset_state(headset_plugin::HEADSET_STATE_INUSE);
        hid_headset_set_mute(1);
    }
    for (const Indicator indicator : {Indicator::off_hook, Indicator::mute}) {
        demand(is_lit(indicator) == lit, "the headset cannot be lit or darkened");
    }
    take_sent();
}

bool Client::is_lit(Indicator indicator) const {
    return orvex_virtual_indicator(headset_, led_page, static_cast<std::uint16_t>(indicator)) == 1;
}

std::string Client::requests_for(std::int32_t key) {
    listener_->clear();
    plugin_control::onHeadsetKeyEvent(static_cast<std::uint16_t>(key), "");
    Cells requests;
    for (const std::string& call : listener_->calls()) {
        requests.push_back(request(call));
    }
    return joined(requests, ", ");
}

}  // namespace docs
