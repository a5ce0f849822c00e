#include "tools/softphone/listeners.h"

namespace softphone {

void Logger::log(const std::string& message, int /*level*/) {
    // A line brings its newline; how lines are separated is the printer's business.
    const auto end = message.find_last_not_of("\r\n");
    events_->post(LogLine{end == std::string::npos ? std::string() : message.substr(0, end + 1)});
}

void CallControlListener::onAnswer(const std::string& device_id, const std::string& cid) {
    events_->post(ActionRequested{Action::answer, device_id, cid});
}

void CallControlListener::onEndCall(const std::string& device_id, const std::string& cid) {
    events_->post(ActionRequested{Action::end_call, device_id, cid});
}

void CallControlListener::onHoldCall(const std::string& device_id, const std::string& cid) {
    events_->post(ActionRequested{Action::hold_call, device_id, cid});
}

void CallControlListener::onResumeCall(const std::string& device_id, const std::string& cid) {
    events_->post(ActionRequested{Action::resume_call, device_id, cid});
}

void CallControlListener::onRejectCall(const std::string& device_id, const std::string& cid) {
    events_->post(ActionRequested{Action::reject_call, device_id, cid});
}

void CallControlListener::onMuteCall(const std::string& device_id, const std::string& cid, bool muted) {
    events_->post(ActionRequested{Action::mute_call, device_id, cid, muted});
}

void CallControlListener::onUnmuteCall(const std::string& device_id, const std::string& cid, bool muted) {
    events_->post(ActionRequested{Action::unmute_call, device_id, cid, muted});
}

void CallControlListener::onListenerAttached(const std::string& /*text*/) {
    events_->post(ListenerAttached{});
}

void CallControlListener::onActiveDeviceNotify(const std::string& host_device_id, int vendor_id,
                                               int product_id, const std::string& vendor_name,
                                               const std::string& device_name, const std::string& serial) {
    events_->post(HeadsetReady{{host_device_id, vendor_id, product_id, vendor_name, device_name, serial}});
}

void CallControlListener::onDeviceRemovedNotify(const std::string& host_device_id, int vendor_id,
                                                int product_id, const std::string& vendor_name,
                                                const std::string& device_name, const std::string& serial) {
    events_->post(HeadsetRemoved{{host_device_id, vendor_id, product_id, vendor_name, device_name, serial}});
}

void CallControlListener::onFunctionKey(const std::string& device_id, const std::string& cid) {
    events_->post(ActionRequested{Action::function_key, device_id, cid});
}

void ConfigListener::onConfigKey(bool pressed) {
    events_->post(ConfigKeyPressed{pressed});
}

}  // namespace softphone
