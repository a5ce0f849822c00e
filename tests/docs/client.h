// A client of the whole plug-in, with one virtual headset that is ready, and what the plug-in does for it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "drivers/stdhid_cc.h"
#include "orvex/headset_plugin.h"
#include "tests/support/recording_host.h"

namespace docs {

using Calls = std::vector<plugin_control::ICallInfo>;

/// A headset state and a mute that were sent to the headset.
struct Sent {
    std::optional<std::uint32_t> state{};
    std::optional<bool> muted{};
};

/// The standard driver, with a record of what it was asked to show. The unmuting with which it answers idle
/// itself is none of it.
class RecordingStandardDriver final : public headset_plugin::call_control_generic {
  public:
    explicit RecordingStandardDriver(std::uint32_t product_id);

    std::int32_t set_led_event_data(std::uint32_t state, std::span<std::uint8_t> output) override;
    std::int32_t process_read(std::span<const std::uint8_t> report) override;
    std::int32_t set_mute_data(bool mute, std::span<std::uint8_t> output) override;
    std::uint32_t query_state_follow_up(std::uint32_t state) override;

    /// What was sent since this was asked last.
    Sent take_sent() { return std::exchange(sent_, {}); }

  private:
    headset_plugin::stdhid_cc& driver();

    headset_plugin::stdhid_cc driver_;
    Sent sent_;
    bool announces_state_ = false;
};

enum class Indicator : std::uint16_t { mute = 0x09, off_hook = 0x17 };  // HID Usage Tables, section 11

class Client {
  public:
    /// Starts the plug-in and waits until the headset is ready. Throws std::runtime_error.
    Client();
    ~Client();
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    plugin_control::IPluginCallControlCallback& control() { return *control_; }

    /// Replaces the calls that the plug-in knows.
    void set_calls(const Calls& calls);
    /// Has the headset lit or dark as a whole, whatever the calls are.
    void light(bool lit);
    bool is_lit(Indicator indicator) const;
    Sent take_sent() { return driver_->take_sent(); }

    /// What the client is asked for when a key gets through to the calls: "`onAnswer` 1".
    std::string requests_for(std::int32_t key);

  private:
    std::shared_ptr<RecordingStandardDriver> driver_;
    int headset_ = 0;
    std::shared_ptr<test_support::RecordingListener> listener_ =
        std::make_shared<test_support::RecordingListener>();
    std::shared_ptr<plugin_control::IPluginCallControlCallback> control_;
};

}  // namespace docs
