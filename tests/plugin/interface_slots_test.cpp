// The places of the operations in the interfaces between host and plug-in, which are compiled apart: an
// operation that moves would have the other side call its neighbour.

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "orvex/headset_plugin.h"
#include "tests/support/virtual_slots.h"

namespace {

using namespace plugin_control;
using test_support::slot_of;

struct Row {
    std::uintptr_t slot;
    std::uintptr_t expected;
    const char* name;
};

using Logger = IPluginLogger;
using CallListener = IPluginCallControlListener;
using ConfigListener = IPluginConfigListener;
using CallControlOperations = IPluginCallControlCallback;
using Config = IPluginConfigCallback;

const Row rows[] = {
    {slot_of(&Logger::log), 2, "log"},

    {slot_of(&CallListener::onAnswer), 2, "onAnswer"},
    {slot_of(&CallListener::onEndCall), 3, "onEndCall"},
    {slot_of(&CallListener::onHoldCall), 4, "onHoldCall"},
    {slot_of(&CallListener::onResumeCall), 5, "onResumeCall"},
    {slot_of(&CallListener::onRejectCall), 6, "onRejectCall"},
    {slot_of(&CallListener::onMuteCall), 7, "onMuteCall"},
    {slot_of(&CallListener::onUnmuteCall), 8, "onUnmuteCall"},
    {slot_of(&CallListener::onListenerAttached), 9, "onListenerAttached"},
    {slot_of(&CallListener::onActiveDeviceNotify), 10, "onActiveDeviceNotify"},
    {slot_of(&CallListener::onDeviceRemovedNotify), 11, "onDeviceRemovedNotify"},
    {slot_of(&CallListener::reservedListener11), 12, "reservedListener11"},
    {slot_of(&CallListener::reservedListener12), 13, "reservedListener12"},
    {slot_of(&CallListener::reservedListener13), 14, "reservedListener13"},
    {slot_of(&CallListener::onFunctionKey), 15, "onFunctionKey"},

    {slot_of(&ConfigListener::onConfigKey), 2, "onConfigKey"},

    {slot_of(&CallControlOperations::setAudioDevice), 2, "setAudioDevice"},
    {slot_of(&CallControlOperations::reservedCallControl2), 3, "reservedCallControl2"},
    {slot_of(&CallControlOperations::reservedCallControl3), 4, "reservedCallControl3"},
    {slot_of(&CallControlOperations::mute), 5, "mute"},
    {slot_of(&CallControlOperations::unmute), 6, "unmute"},
    {slot_of(&CallControlOperations::createCall), 7, "createCall"},
    {slot_of(&CallControlOperations::incomingCall), 8, "incomingCall"},
    {slot_of(&CallControlOperations::ringbackCall), 9, "ringbackCall"},
    {slot_of(&CallControlOperations::connectCall), 10, "connectCall"},
    {slot_of(&CallControlOperations::holdCall), 11, "holdCall"},
    {slot_of(&CallControlOperations::resumeCall), 12, "resumeCall"},
    {slot_of(&CallControlOperations::endCall), 13, "endCall"},
    {slot_of(&CallControlOperations::reservedCallControl13), 14, "reservedCallControl13"},
    {slot_of(&CallControlOperations::callStateSync), 15, "callStateSync"},
    {slot_of(&CallControlOperations::setCallControlListener), 16, "setCallControlListener"},
    {slot_of(&CallControlOperations::getCallControlListener), 17, "getCallControlListener"},

    {slot_of(&Config::reservedConfig1), 2, "reservedConfig1"},
    {slot_of(&Config::reservedConfig2), 3, "reservedConfig2"},
    {slot_of(&Config::reservedConfig3), 4, "reservedConfig3"},
    {slot_of(&Config::reservedConfig4), 5, "reservedConfig4"},
    {slot_of(&Config::getHeadsetModel), 6, "getHeadsetModel"},
    {slot_of(&Config::reservedConfig6), 7, "reservedConfig6"},
    {slot_of(&Config::reservedConfig7), 8, "reservedConfig7"},
    {slot_of(&Config::setDoNotDisturb), 9, "setDoNotDisturb"},
    {slot_of(&Config::reservedConfig9), 10, "reservedConfig9"},
    {slot_of(&Config::reservedConfig10), 11, "reservedConfig10"},
    {slot_of(&Config::reservedConfig11), 12, "reservedConfig11"},
    {slot_of(&Config::reservedConfig12), 13, "reservedConfig12"},
    {slot_of(&Config::registerDeviceAvailabilityHook), 14, "registerDeviceAvailabilityHook"},
    {slot_of(&Config::setConfigListener), 15, "setConfigListener"},
    {slot_of(&Config::getConfigListener), 16, "getConfigListener"},
    {slot_of(&Config::reservedConfig16), 17, "reservedConfig16"},
    {slot_of(&Config::reservedConfig17), 18, "reservedConfig17"},
};

TEST(InterfaceSlots, are_those_that_a_compiled_host_calls) {
    for (const Row& row : rows) {
        EXPECT_EQ(row.slot, row.expected) << row.name;
    }
}

/// A client's listener: what it does not use, it does not have.
class MuteListener final : public CallControlListener {
  public:
    void onMuteCall(const std::string& /*device_id*/, const std::string& cid, bool /*muted*/) override {
        muted_call = cid;
    }
    std::string muted_call;
};

TEST(CallControlListenerBase, ignores_what_a_listener_does_not_override) {
    MuteListener mute_listener;
    CallListener& listener = mute_listener;
    listener.onAnswer("d", "1");
    listener.onEndCall("d", "1");
    listener.onHoldCall("d", "1");
    listener.onResumeCall("d", "1");
    listener.onRejectCall("d", "1");
    listener.onUnmuteCall("d", "1", false);
    listener.onListenerAttached("");
    listener.onActiveDeviceNotify("d", 1, 2, "v", "n", "s");
    listener.onDeviceRemovedNotify("d", 1, 2, "v", "n", "s");
    listener.reservedListener11("");
    listener.reservedListener12("");
    listener.reservedListener13("");
    listener.onFunctionKey("d", "1");
    EXPECT_EQ(mute_listener.muted_call, "");
    listener.onMuteCall("d", "42", true);
    EXPECT_EQ(mute_listener.muted_call, "42");
}

}  // namespace
