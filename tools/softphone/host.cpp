#include "tools/softphone/host.h"

#include <array>
#include <utility>

namespace softphone {
namespace {

using plugin_control::IPluginCallControlCallback;

struct StepRow {
    CallStep step;
    const char* function;
    void (IPluginCallControlCallback::*call)(const std::string& unused, const std::string& cid);
};

// One row per step, in the order of the enumeration.
constexpr std::array steps{
    StepRow{CallStep::ringback, "ringbackCall", &IPluginCallControlCallback::ringbackCall},
    StepRow{CallStep::connect, "connectCall", &IPluginCallControlCallback::connectCall},
    StepRow{CallStep::hold, "holdCall", &IPluginCallControlCallback::holdCall},
    StepRow{CallStep::resume, "resumeCall", &IPluginCallControlCallback::resumeCall},
    StepRow{CallStep::end, "endCall", &IPluginCallControlCallback::endCall},
    StepRow{CallStep::mute, "mute", &IPluginCallControlCallback::mute},
    StepRow{CallStep::unmute, "unmute", &IPluginCallControlCallback::unmute},
};

}  // namespace

Host::Host(const PluginLibrary& library, std::shared_ptr<EventQueue> events)
    : library_(library),
      events_(std::move(events)),
      logger_(std::make_shared<Logger>(events_)),
      call_listener_(std::make_shared<CallControlListener>(events_)),
      config_listener_(std::make_shared<ConfigListener>(events_)) {}

Host::~Host() {
    stop();
}

void Host::start() {
    if (running())
        return;
    std::weak_ptr<plugin_control::IPluginLogger> logger = logger_;
    events_->post(HostCall{"createPluginControlFacade", {}});
    control_ = library_.create_control(&logger);
    if (!control_)
        throw LibraryError("the plug-in does not start");
    config_ = library_.create_config(&logger);
    control_->setCallControlListener(call_listener_);
    config_->setConfigListener(config_listener_);
}

void Host::stop() {
    if (!running())
        return;
    // Whatever happens in stop, the pointers are not to be used any more.
    control_ = nullptr;
    config_ = nullptr;
    events_->post(HostCall{"stopPluginControlFacade", {}});
    library_.stop();
}

void Host::set_audio_device(const AudioDevice& device) {
    if (!announce("setAudioDevice", {device.id, device.name, device.serial}))
        return;
    const bool matched = control_->setAudioDevice(device.id, device.name, device.serial);
    events_->post(HostResult{"setAudioDevice", matched});
}

void Host::create_call(const std::string& cid, int direction) {
    if (announce("createCall", {"", cid, direction}))
        control_->createCall("", cid, direction);
}

void Host::incoming_call(const std::string& cid, bool ringing) {
    if (announce("incomingCall", {"", cid, ringing}))
        control_->incomingCall("", cid, ringing);
}

void Host::report(CallStep step, const std::string& cid) {
    const StepRow& row = steps.at(static_cast<std::size_t>(step));
    if (announce(row.function, {"", cid}))
        (control_->*row.call)("", cid);
}

void Host::sync(const std::string& device_id, const std::vector<plugin_control::ICallInfo>& calls) {
    const int count = static_cast<int>(calls.size());
    Words list;
    for (const auto& call : calls)
        list.push_back(call.cid + " state " + std::to_string(call.state) + (call.mute ? " muted" : ""));
    if (announce("callStateSync", {device_id, list, count}))
        control_->callStateSync(device_id, calls, count);
}

void Host::set_do_not_disturb(int value) {
    if (announce("setDoNotDisturb", {"", value}))
        config_->setDoNotDisturb("", value);
}

bool Host::announce(const char* function, std::vector<Argument> arguments) {
    if (running())
        events_->post(HostCall{function, std::move(arguments)});
    else
        events_->post(Text{std::string("the plug-in is stopped; it is not told of ") + function});
    return running();
}

}  // namespace softphone
