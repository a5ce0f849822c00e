#include "tests/support/recording_host.h"

#include <array>
#include <cstdio>

namespace test_support {

namespace {

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
    calls_.add(call_text("onAnswer", {device_id, cid}));
}
void RecordingListener::onEndCall(const std::string& device_id, const std::string& cid) {
    calls_.add(call_text("onEndCall", {device_id, cid}));
}
void RecordingListener::onHoldCall(const std::string& device_id, const std::string& cid) {
    calls_.add(call_text("onHoldCall", {device_id, cid}));
}
void RecordingListener::onResumeCall(const std::string& device_id, const std::string& cid) {
    calls_.add(call_text("onResumeCall", {device_id, cid}));
}
void RecordingListener::onRejectCall(const std::string& device_id, const std::string& cid) {
    calls_.add(call_text("onRejectCall", {device_id, cid}));
}
void RecordingListener::onMuteCall(const std::string& device_id, const std::string& cid, bool muted) {
    calls_.add(call_text("onMuteCall", {device_id, cid, flag(muted)}));
}
void RecordingListener::onUnmuteCall(const std::string& device_id, const std::string& cid, bool muted) {
    calls_.add(call_text("onUnmuteCall", {device_id, cid, flag(muted)}));
}
void RecordingListener::onListenerAttached(const std::string& text) {
    calls_.add(call_text("onListenerAttached", {text}));
}
void RecordingListener::onActiveDeviceNotify(const std::string& host_device_id, int vendor_id, int product_id,
                                             const std::string& vendor_name, const std::string& device_name,
                                             const std::string& serial) {
    calls_.add(call_text("onActiveDeviceNotify",
                         {host_device_id, id(vendor_id), id(product_id), vendor_name, device_name, serial}));
}
void RecordingListener::onDeviceRemovedNotify(const std::string& host_device_id, int vendor_id,
                                              int product_id, const std::string& vendor_name,
                                              const std::string& device_name, const std::string& serial) {
    calls_.add(call_text("onDeviceRemovedNotify",
                         {host_device_id, id(vendor_id), id(product_id), vendor_name, device_name, serial}));
}
void RecordingListener::reservedListener11(const std::string& argument) {
    calls_.add(call_text("reservedListener11", {argument}));
}
void RecordingListener::reservedListener12(const std::string& argument) {
    calls_.add(call_text("reservedListener12", {argument}));
}
void RecordingListener::reservedListener13(const std::string& argument) {
    calls_.add(call_text("reservedListener13", {argument}));
}
void RecordingListener::onFunctionKey(const std::string& device_id, const std::string& cid) {
    calls_.add(call_text("onFunctionKey", {device_id, cid}));
}
void RecordingListener::onConfigKey(bool pressed) {
    calls_.add(call_text("onConfigKey", {flag(pressed)}));
}

}  // namespace test_support
