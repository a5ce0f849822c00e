// What the tests of one headset share: a headset on the virtual bus, a driver that a test scripts, and the
// log.
#pragma once

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "base/headset_types.h"
#include "device/device.h"
#include "tests/support/recording_logger.h"
#include "virtual_headset/platform/virtual_platform.h"

namespace device_test {

using headset_plugin::device;
using headset_plugin::HidHandle;
using platform::virtual_platform::Fault;
using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;

inline constexpr std::uint32_t jabra = 0x0B0E;
inline constexpr std::uint32_t plantronics = 0x047F;
inline constexpr std::uint32_t orvex = static_cast<std::uint32_t>(ORVEX_CONFIGURED_VENDOR_ID);
inline constexpr std::uint32_t product = 0x24C9;
inline constexpr const char* serial = "SN-1";

// The input reports of the test's headset: report id, keys.
inline const Bytes hook_report = {0x02, 0x01};
inline const Bytes mute_report = {0x02, 0x02};

/// What a driver puts at the start of the buffer, and the length that it claims.
struct Built {
    Bytes bytes{};
    std::int32_t length = 0;
};

/// Answers every slot as the test says and keeps the calls: "process_read(02 01)",
/// "handle_headset_reponse(-1)", "set_led_event_data(2)", "set_mute_data(true)", "toggle_led(64)",
/// "query_state_follow_up(0)".
class ScriptedDriver final : public headset_plugin::call_control_generic {
  public:
    explicit ScriptedDriver(std::uint32_t product_id) : call_control_generic(product_id) {}

    // Set while nothing runs, or before the report that needs it is sent.
    Built led, mute, toggle;
    std::int32_t key = headset_plugin::HEADSET_KEY_INVALID;
    std::uint32_t report_follow_up = 0;
    std::uint32_t state_follow_up = 0;
    std::function<void()> while_building;  ///< runs in the three building slots

    std::vector<std::string> calls() const;
    void clear_calls();
    std::size_t last_buffer_size() const;
    bool is_last_buffer_clear() const;  ///< it came zero-filled
    bool has_handle() const { return hid_device() != nullptr; }
    std::weak_ptr<::hid_device> handle() const { return hid_device(); }

    std::int32_t set_led_event_data(std::uint32_t state, std::span<std::uint8_t> output) override;
    std::int32_t process_read(std::span<const std::uint8_t> report) override;
    std::int32_t set_mute_data(bool muted, std::span<std::uint8_t> output) override;
    std::uint32_t handle_headset_reponse(std::int32_t key_code) override;
    std::int32_t toggle_led(std::uint32_t bit, std::span<std::uint8_t> output) override;
    std::uint32_t query_state_follow_up(std::uint32_t state) override;

  private:
    void record(std::string call);
    std::int32_t build(const std::string& call, const Built& built, std::span<std::uint8_t> output);

    mutable std::mutex mutex_;
    std::vector<std::string> calls_;
    std::size_t last_buffer_size_ = 0;
    bool is_last_buffer_clear_ = false;
};

/// The report descriptor of a telephony collection: report 2 with a hook and a mute key, and an output report
/// 2 with two indicators, `output_bytes` long without its id.
Bytes telephony_descriptor(std::uint32_t output_bytes = 3);

/// "3rdPartyHeadsetPlugin: headset_plugin::device::<function>: <text>\n"
std::string device_line(const std::string& function, const std::string& text);

/// A line for each text, all of one function.
Lines device_lines(const std::string& function, const Lines& texts);

Lines operator+(Lines first, const Lines& second);

/// What stop_device_thread logs for an open headset.
Lines stop_lines(int handle_number);

class DeviceTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    platform::virtual_platform::VirtualPlatform& platform() {
        return platform::virtual_platform::virtual_platform();
    }
    platform::virtual_platform::VirtualBus& bus() { return platform().bus(); }

    /// Plugs the test's headset.
    void plug(Bytes descriptor = telephony_descriptor(), std::optional<std::string> name = "Test Headset",
              std::uint32_t vendor_id = jabra);
    HidHandle open_handle();

    /// A headset object with a scripted driver.
    std::shared_ptr<device> make_device(std::uint32_t vendor_id = jabra);
    /// One with the driver that the product has for it; the log begins with it.
    std::shared_ptr<device> make_real_device(std::uint32_t vendor_id);
    /// Plugged, made, opened by handle, read by the thread of hid_device_open and active.
    std::shared_ptr<device> make_open_device(Bytes descriptor = telephony_descriptor(),
                                             std::uint32_t vendor_id = jabra);
    /// The same by hid_device_tryopen.
    std::shared_ptr<device> make_tried_device();

    /// Sends an input report and waits until the read thread is through with it.
    void send(const Bytes& report);
    /// The device's lines but for those of its read thread, which come in between.
    Lines log_beside_read_thread() const;
    Lines outputs() const;  ///< "02 01 00 (4)": what arrived, and how long the write was
    bool is_closed() const { return handle_.expired(); }

    std::shared_ptr<test_support::RecordingLogger> logger_;
    std::shared_ptr<ScriptedDriver> driver_;  ///< of the device made last
    int headset_ = 0;
    int handle_number_ = 0;

  private:
    std::weak_ptr<::hid_device> handle_;
    std::vector<std::weak_ptr<headset_plugin::call_control_generic>> drivers_;
};

/// The keys that came through, as "key serial", in order.
Lines keys();
void clear_keys();
bool wait_for_key(const std::string& key);
/// Called with every key; it may throw.
void on_key(std::function<void()> action);

}  // namespace device_test
