#include "tests/support/recording_host.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <initializer_list>

namespace test_support {

namespace {

std::string call(const char* name, std::initializer_list<std::string> arguments) {
    std::string text = name;
    text += '(';
    const char* separator = "";
    for (const std::string& argument : arguments) {
        text += separator + argument;
        separator = ", ";
    }
    return text + ')';
}

std::string id(int number) {
    std::array<char, 16> digits;
    std::snprintf(digits.data(), digits.size(), "%04x", static_cast<unsigned>(number));
    return digits.data();
}

std::string flag(bool value) {
    return value ? "true" : "false";
}

}  // namespace

void RecordingListener::onAnswer(const std::string& device_id, const std::string& cid) {
    record(call("onAnswer", {device_id, cid}));
}
void RecordingListener::onEndCall(const std::string& device_id, const std::string& cid) {
    record(call("onEndCall", {device_id, cid}));
}
void RecordingListener::onHoldCall(const std::string& device_id, const std::string& cid) {
    record(call("onHoldCall", {device_id, cid}));
}
void RecordingListener::onResumeCall(const std::string& device_id, const std::string& cid) {
    record(call("onResumeCall", {device_id, cid}));
}
void RecordingListener::onRejectCall(const std::string& device_id, const std::string& cid) {
    record(call("onRejectCall", {device_id, cid}));
}
void RecordingListener::onMuteCall(const std::string& device_id, const std::string& cid, bool muted) {
    record(call("onMuteCall", {device_id, cid, flag(muted)}));
}
void RecordingListener::onUnmuteCall(const std::string& device_id, const std::string& cid, bool muted) {
    record(call("onUnmuteCall", {device_id, cid, flag(muted)}));
}
void RecordingListener::onListenerAttached(const std::string& text) {
    record(call("onListenerAttached", {text}));
}
void RecordingListener::onActiveDeviceNotify(const std::string& host_device_id, int vendor_id, int product_id,
                                             const std::string& vendor_name, const std::string& device_name,
                                             const std::string& serial) {
    record(call("onActiveDeviceNotify",
                {host_device_id, id(vendor_id), id(product_id), vendor_name, device_name, serial}));
}
void RecordingListener::onDeviceRemovedNotify(const std::string& host_device_id, int vendor_id,
                                              int product_id, const std::string& vendor_name,
                                              const std::string& device_name, const std::string& serial) {
    record(call("onDeviceRemovedNotify",
                {host_device_id, id(vendor_id), id(product_id), vendor_name, device_name, serial}));
}
void RecordingListener::reservedListener11(const std::string& argument) {
    record(call("reservedListener11", {argument}));
}
void RecordingListener::reservedListener12(const std::string& argument) {
    record(call("reservedListener12", {argument}));
}
void RecordingListener::reservedListener13(const std::string& argument) {
    record(call("reservedListener13", {argument}));
}
void RecordingListener::onFunctionKey(const std::string& device_id, const std::string& cid) {
    record(call("onFunctionKey", {device_id, cid}));
}
void RecordingListener::onConfigKey(bool pressed) {
    record(call("onConfigKey", {flag(pressed)}));
}

std::vector<std::string> RecordingListener::calls() const {
    std::lock_guard lock(mutex_);
    return calls_;
}

void RecordingListener::clear() {
    std::lock_guard lock(mutex_);
    calls_.clear();
}

bool RecordingListener::wait_for(const std::string& wanted) const {
    return wait_for_count(wanted, 1);
}

bool RecordingListener::wait_for_count(const std::string& wanted, std::size_t count) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, patience, [&] {
        return static_cast<std::size_t>(std::count(calls_.begin(), calls_.end(), wanted)) >= count;
    });
}

void RecordingListener::on_call(std::function<void(const std::string&)> action) {
    std::lock_guard lock(mutex_);
    action_ = std::move(action);
}

void RecordingListener::record(const std::string& text) {
    std::function<void(const std::string&)> action;
    {
        std::lock_guard lock(mutex_);
        calls_.push_back(text);
        action = action_;
    }
    changed_.notify_all();
    if (action) {
        action(text);
    }
}

}  // namespace test_support
