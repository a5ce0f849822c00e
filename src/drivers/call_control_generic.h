// What a headset's report dialect looks like to the device that owns it.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>

#include "hid/hid_access.h"
#include "platform/mutex.h"

namespace headset_plugin {

// The follow-up bits that have a meaning of their own; the device asks for the report of any other by its
// number.
inline constexpr std::uint32_t follow_up_toggle = 0x1;
inline constexpr std::uint32_t follow_up_unmute = 0x4;
inline constexpr std::uint32_t follow_up_show_in_use = 0x40;

/// The order in which the device serves the bits; each gives a report of its own.
inline constexpr std::array<std::uint32_t, 7> follow_up_order = {
    follow_up_toggle, 0x2, follow_up_unmute, 0x8, 0x20, 0x10, follow_up_show_in_use};

/// The family of a product is the high byte of its 16-bit id.
inline constexpr std::uint32_t product_family_mask = 0xFF00;
constexpr std::uint32_t product_family(std::uint32_t product_id) {
    return product_id & product_family_mask;
}

/// Translates headset states and mute requests into output reports, and input reports into key codes. A
/// driver never writes to its headset; the device object does, with what the driver built.
///
/// Output reports go into the caller's buffer from byte 0, the report id. The results of the building
/// operations are the number of bytes to write; 0 or less: write nothing.
///
/// Thread: the device object builds one output at a time. process_read and handle_headset_reponse run on the
/// read thread, beside that.
class call_control_generic {
  public:
    explicit call_control_generic(std::uint32_t product_id) : product_id_(product_id) {}
    virtual ~call_control_generic() = default;
    call_control_generic(const call_control_generic&) = delete;
    call_control_generic& operator=(const call_control_generic&) = delete;

    /// The report that shows a headset state.
    virtual std::int32_t set_led_event_data(std::uint32_t state, std::span<std::uint8_t> output) = 0;

    /// The key code of an input report, HEADSET_KEY_INVALID when it carries none.
    virtual std::int32_t process_read(std::span<const std::uint8_t> report) = 0;

    /// The report that shows whether the microphone is muted.
    virtual std::int32_t set_mute_data(bool mute, std::span<std::uint8_t> output) = 0;

    /// Called after every input report with its key code, HEADSET_KEY_INVALID included: the follow-up mask,
    /// each bit of which asks for one toggle_led.
    virtual std::uint32_t handle_headset_reponse(std::int32_t key_code);

    /// The report for one follow-up bit.
    virtual std::int32_t toggle_led(std::uint32_t bit, std::span<std::uint8_t> output);

    /// Asked before a headset state is shown: bit 0x1 asks for toggle_led(0x1), otherwise bit 0x4 for
    /// unmuting.
    virtual std::uint32_t query_state_follow_up(std::uint32_t state);

    /// Lends the driver the headset's handle; an empty one takes it back.
    void set_hid_device(const HidHandle& handle) { hid_device_.set(handle); }

  protected:
    /// The handle for the length of one operation; empty while the headset is closed.
    HidHandle hid_device() const { return hid_device_.get().lock(); }

    const std::uint32_t product_id_;
    std::atomic<std::uint8_t> headset_leds_state_{0};  ///< the indicators lit, in the driver's own bits

  private:
    platform::Guarded<std::weak_ptr<::hid_device>>
        hid_device_;  // not owned: the device closes it when it is gone
};

}  // namespace headset_plugin
