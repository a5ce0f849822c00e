// A virtual bus of a test's own, with headsets of the built-in models.
#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_headset/platform/virtual_clock.h"
#include "virtual_headset/virtual_bus.h"

namespace bus_test {

using platform::HidInterface;
using platform::HidInterfaceInfo;
using platform::IoResult;
using platform::USAGE;
using platform::virtual_platform::Event;
using platform::virtual_platform::EventKind;
using platform::virtual_platform::Failure;
using platform::virtual_platform::Fault;
using platform::virtual_platform::FullUsage;
using platform::virtual_platform::HeadsetDescription;

using Bytes = std::vector<std::uint8_t>;

// Usage pages (HID Usage Tables).
inline constexpr USAGE led_page = 0x08;
inline constexpr USAGE button_page = 0x09;
inline constexpr USAGE telephony_page = 0x0B;
inline constexpr USAGE consumer_page = 0x0C;

// Keys and indicators.
inline constexpr FullUsage hook_switch{telephony_page, 0x20};
inline constexpr FullUsage flash{telephony_page, 0x21};
inline constexpr FullUsage phone_mute{telephony_page, 0x2F};
inline constexpr FullUsage phone_key_1{telephony_page, 0xB1};
inline constexpr FullUsage phone_key_2{telephony_page, 0xB2};
inline constexpr FullUsage volume_up{consumer_page, 0xE9};
inline constexpr FullUsage mute_led{led_page, 0x09};
inline constexpr FullUsage off_hook_led{led_page, 0x17};
inline constexpr FullUsage ring_led{led_page, 0x18};
inline constexpr FullUsage ringer{telephony_page, 0x9E};

// What the bus says.
inline constexpr const char* no_such_headset = "there is no such headset";
inline constexpr const char* not_plugged = "the headset is not plugged in";
inline constexpr const wchar_t* not_connected = L"The device is not connected.";
inline constexpr const wchar_t* io_error =
    L"The request could not be performed because of an I/O device error.";

/// A number that no headset has.
inline constexpr int no_headset = 1000;

// Has all keys in one input report and all indicators in one output report, both with id 2 and of 3 bytes; a
// vendor collection with input reports of two lengths; a consumer collection.
inline constexpr const char* jabra = "jabra-link-380c";
// Has an output report of its own for every indicator, with the indicator's usage as id.
inline constexpr const char* poly = "poly-blackwire-3220";
// Has no report ids; its keys are a range of usages.
inline constexpr const char* game_voice = "microsoft-game-voice";

HeadsetDescription describe(std::string_view model);

class BusTest : public testing::Test {
  protected:
    int plug(std::string_view model);
    int plug(const HeadsetDescription& description);

    /// Opens the first collection of a usage page among all headsets.
    std::unique_ptr<HidInterface> open(USAGE page = telephony_page);
    std::string path(USAGE page) const;

    /// The arrivals (true) and removals (false) of interfaces that the bus told of so far.
    std::vector<bool> take_changes();

    platform::virtual_platform::VirtualClock clock_;
    std::mutex changes_mutex_;
    std::vector<bool> changes_;
    platform::virtual_platform::VirtualBus bus_{[this](bool arrived) {
                                                    std::lock_guard lock(changes_mutex_);
                                                    changes_.push_back(arrived);
                                                },
                                                [this] { return clock_.make_sleeper(); }};
};

/// A read and what came of it, cut to the size that the read gave.
struct Read {
    IoResult result;
    Bytes report;
};
Read read(HidInterface& interface, std::chrono::milliseconds timeout = std::chrono::milliseconds{0},
          std::size_t room = 64);

/// Every report that has arrived.
std::vector<Bytes> read_all(HidInterface& interface);

IoResult write(HidInterface& interface, const Bytes& report);

testing::AssertionResult failed_with(const IoResult& result, const std::wstring& error);

}  // namespace bus_test
