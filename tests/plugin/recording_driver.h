// A driver that writes nothing and knows every key: what the plug-in wants shown is kept as text, and an
// input report's first data byte is the key code.
#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "drivers/driver_factory.h"

namespace test_support {

/// Thread: any.
class RecordingDriver final : public headset_plugin::call_control_generic {
  public:
    using call_control_generic::call_control_generic;

    std::int32_t set_led_event_data(std::uint32_t state, std::span<std::uint8_t> /*output*/) override {
        return record("state " + std::to_string(state));
    }

    std::int32_t set_mute_data(bool mute, std::span<std::uint8_t> /*output*/) override {
        return record(mute ? "muted" : "unmuted");
    }

    std::int32_t process_read(std::span<const std::uint8_t> report) override { return report[1]; }

    /// "state 2", "muted", "unmuted", in order, since this was asked last.
    std::vector<std::string> take_shown() {
        std::lock_guard lock(mutex_);
        return std::exchange(shown_, {});
    }

  private:
    std::int32_t record(std::string text) {
        std::lock_guard lock(mutex_);
        shown_.push_back(std::move(text));
        return 0;
    }

    std::mutex mutex_;
    std::vector<std::string> shown_;
};

/// Gives every headset that is plugged from now on this one driver.
inline std::shared_ptr<RecordingDriver> install_recording_driver() {
    auto driver = std::make_shared<RecordingDriver>(0);
    headset_plugin::set_driver_factory([driver](std::uint32_t, std::uint32_t) { return driver; });
    return driver;
}

}  // namespace test_support
