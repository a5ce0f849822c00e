// The drivers for Plantronics headsets of fixed reports.
#pragma once

#include "drivers/call_control_generic.h"

namespace headset_plugin {

/// Output reports, two bytes: the id of the indicator, and whether it is lit.
/// Input reports: the id, and the key.
///
/// Dormant: only create_plantronics_driver makes these drivers, and no device asks it for one.
class plt_cc : public call_control_generic {
  public:
    using call_control_generic::call_control_generic;

    /// Shows ringing, in use and idle; a state with hold is never shown.
    std::int32_t set_led_event_data(std::uint32_t state, std::span<std::uint8_t> output) override;
    std::int32_t process_read(std::span<const std::uint8_t> report) override;
    std::int32_t set_mute_data(bool mute, std::span<std::uint8_t> output) override;

    /// Every hook key is followed by a ring report, with the value that the caller left in the buffer.
    std::uint32_t handle_headset_reponse(std::int32_t key_code) override;
    std::int32_t toggle_led(std::uint32_t bit, std::span<std::uint8_t> output) override;
    std::uint32_t query_state_follow_up(std::uint32_t state) override;

  protected:
    // Where the models differ.
    virtual std::uint8_t ring_report_id() const;
    virtual std::uint8_t off_hook_report_id() const;
    virtual bool accepts_report_id(std::uint8_t id) const;
    virtual std::uint8_t mute_report_id() const;
    virtual std::uint8_t mute_key_value() const;
};

class plt_blackwire_cc : public plt_cc {
  public:
    using plt_cc::plt_cc;

  protected:
    std::uint8_t ring_report_id() const override;
    std::uint8_t off_hook_report_id() const override;
    bool accepts_report_id(std::uint8_t id) const override;
    std::uint8_t mute_report_id() const override;
};

class plt_blackwire_7225_cc : public plt_blackwire_cc {
  public:
    using plt_blackwire_cc::plt_blackwire_cc;

  protected:
    bool accepts_report_id(std::uint8_t id) const override;
    std::uint8_t mute_key_value() const override;
};

}  // namespace headset_plugin
