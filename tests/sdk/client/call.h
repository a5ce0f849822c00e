// A call on a virtual headset, as a client's own test would have it: the plug-in lights the headset, the
// headset's key asks to mute, and the client agrees.
#pragma once

#include <chrono>
#include <future>
#include <iostream>
#include <memory>
#include <orvex/headset_plugin.h>
#include <orvex/virtual_headset.h>
#include <string>

struct Log final : plugin_control::IPluginLogger {
    void log(const std::string& line, int) override { std::clog << line; }
};

/// Hears one thing: that the call is to be muted.
struct Listener final : plugin_control::CallControlListener {
    std::promise<std::string> muted_call;

    void onMuteCall(const std::string&, const std::string& cid, bool) override { muted_call.set_value(cid); }
};

/// The functions of virtual_headset.h, linked or looked up.
struct VirtualHeadset {
    decltype(&orvex_virtual_plug) plug;
    decltype(&orvex_virtual_serial) serial;
    decltype(&orvex_virtual_press) press;
    decltype(&orvex_virtual_wait_indicator) wait_indicator;
};

inline bool says(const char* what, bool true_of_it) {
    std::cout << what << (true_of_it ? "" : ": no") << '\n';
    return true_of_it;
}

inline bool run_call(plugin_control::IPluginCallControlCallback& control,
                     const VirtualHeadset& virtual_headset) {
    constexpr int patience_ms = 5000;
    constexpr std::uint16_t led_page = 0x08, off_hook = 0x17, mute = 0x09;
    constexpr std::uint16_t telephony_page = 0x0B, phone_mute = 0x2F;

    const auto listener = std::make_shared<Listener>();
    control.setCallControlListener(listener);
    const int headset = virtual_headset.plug("jabra-link-380c", nullptr);
    const std::string serial = virtual_headset.serial(headset);
    control.setAudioDevice("usb-" + serial, "", serial);

    control.connectCall("", "42");
    if (!says("off-hook is lit",
              virtual_headset.wait_indicator(headset, led_page, off_hook, 1, patience_ms) == 1))
        return false;
    virtual_headset.press(headset, telephony_page, phone_mute);
    std::future<std::string> asked = listener->muted_call.get_future();
    if (!says("the client is asked to mute call 42",
              asked.wait_for(std::chrono::milliseconds(patience_ms)) == std::future_status::ready &&
                  asked.get() == "42"))
        return false;
    control.mute("", "42");
    return says("mute is lit", virtual_headset.wait_indicator(headset, led_page, mute, 1, patience_ms) == 1);
}
