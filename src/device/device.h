// One attached headset: its identity, its open handle, its driver, and the thread that reads its reports.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "drivers/driver_factory.h"
#include "hid/hid_access.h"
#include "platform/clock.h"
#include "platform/mutex.h"

namespace headset_plugin {

/// A headset reports itself ready this long after it became active, so that its first reports are through.
inline constexpr std::chrono::milliseconds inventory_delay{100};

/// Gets a key that passed the filter: its code and the headset's serial. [read thread]
using KeyCallback = void (*)(std::uint16_t key, const std::string& serial);

/// A headset that the device manager lists. Held by shared pointers: its read thread keeps it alive.
///
/// The handle is shared with the read thread and is closed when the last of them lets go. It is read without
/// a lock; the write mutex keeps output reports apart from each other and from opening and closing.
///
/// Thread: any, unless an operation says otherwise.
class device : public std::enable_shared_from_this<device> {
  public:
    /// \param path   kept, at most 256 characters of it
    /// \param index  a running number that tells two headsets apart
    device(std::uint32_t vendor_id, std::uint32_t product_id, std::wstring_view path, std::string serial,
           std::uint32_t index);
    ~device();
    device(const device&) = delete;
    device& operator=(const device&) = delete;

    /// Sets the process-wide receiver of keys, in place of any earlier one.
    static void register_key_callback(KeyCallback callback);

    // Identity.

    std::uint32_t vendor_id() const { return vendor_id_; }
    std::uint32_t product_id() const { return product_id_; }
    const std::string& serial() const { return serial_; }
    const std::wstring& path() const { return path_; }
    std::uint32_t index() const { return index_; }
    std::string device_name() const { return device_name_.get(); }
    void set_device_name(std::string name) { device_name_.set(std::move(name)); }
    void set_product_name(std::string name) { product_name_.set(std::move(name)); }
    /// The headset's own vendor name when it has one, else the vendor table's.
    std::string vendor_name() const;
    /// True for a headset of the maker's own.
    bool is_orvex_device() const;

    // What the device manager makes of it.

    /// True while this is the headset that shows calls and whose keys count.
    bool is_selected() const { return active_; }
    void set_selected(bool selected) { active_ = selected; }
    /// The host's id of the audio device that this headset was matched to.
    std::string host_device_id() const { return host_device_id_.get(); }
    void set_host_device_id(std::string id) { host_device_id_.set(std::move(id)); }
    /// True from the moment that the headset is gone, or that its read thread has ended, until it is taken
    /// off the device list: no request may choose it and no pass may open it.
    bool is_leaving() const;
    void set_leaving() { leaving_ = true; }
    /// Whether a pass met the headset, plugged in again, while it was leaving.
    bool has_returned() const { return has_returned_; }
    void note_return() { has_returned_ = true; }

    // Opening and closing.

    /// Takes over open handles and starts reading. Called once per device, unless it closed in between.
    void set_device_handles(HidHandle led, HidHandle upd);
    /// Starts the read thread if there is a handle: 1, else 0.
    std::uint32_t hid_device_open();
    /// Opens the headset by its ids and starts reading: 1, or 0 when that fails or it is open already.
    std::int32_t hid_device_tryopen(std::uint16_t vendor_id, std::uint16_t product_id, const wchar_t* serial);
    bool is_open() const { return led_handle_.get() != nullptr; }
    /// Lets go of the handle and has the read thread end, without waiting for it.
    void stop_device_thread();
    /// Lets go of the handle of a headset that went away and asks for its removal from the device list. Until
    /// then it is leaving.
    void hid_device_close();
    /// Reads the model name and fills in the serial that keys are reported with.
    void get_device_info();
    /// Reports the headset ready, on the worker, after `inventory_delay`; a headset that is stopped meanwhile
    /// is not reported.
    void post_inventory();

    // Output. Without a driver nothing is written.

    /// Stores a headset state and shows it.
    void headset_set_state(std::uint32_t state);
    void set_led_event();
    void set_mute_state(bool muted);
    /// Writes the report that the driver has for one follow-up bit.
    void toggle_led_status(std::uint32_t bit);
    /// Brings a headset that was just opened into step.
    void start_headset();
    /// Plantronics headsets only: the report that puts them to rest.
    void set_idle();

    // Input. [read thread]

    /// Drops the report of a headset that is not the active one.
    void handle_readback(std::span<const std::uint8_t> report);
    void process_read(std::span<const std::uint8_t> report);
    /// Drops hook keys that repeat or that contradict the headset state, and passes the others on:
    ///
    ///     key           in use                      not in use
    ///     0 end call    unless the last one was 0   dropped
    ///     2 hook        dropped                     unless the last one was 2
    ///     others        passed                      passed
    void handle_key_report(std::uint32_t report_type, std::uint32_t key);

    /// The last hook key that was let through, -1 for none.
    std::int32_t last_hook_key() const { return LAST_HOOK_KEY; }
    std::uint8_t headset_state() const { return headset_state_; }

  private:
    /// The most of an input report that is looked at: what full-speed USB moves at once (USB 2.0, 5.7.3).
    /// Reports without ids have as many bytes beside the id 0 that they are given.
    static constexpr std::size_t report_size = 64;

    /// One read of the headset.
    struct ReadResult {
        bool closed = false;  ///< there was no handle to read from
        int length = 0;       ///< as hid_read_report gives it
        std::array<std::uint8_t, report_size + 1> buffer{};

        std::span<const std::uint8_t> report() const {
            return std::span(buffer).first(static_cast<std::size_t>(length));
        }
    };

    void take_led_handle(HidHandle handle);
    void let_go_of_thread();
    void start_tried_headset();
    /// Has a read that waits return, and lets go of the handle.
    void end_reading();
    /// The same where nobody will ask for the headset's removal: the next pass may open it anew.
    void end_reading_unnoticed();
    void restore_hook_key(std::int32_t dropped, std::int32_t former);
    /// The thread of hid_device_open: a report of less than two bytes, or an exception, is the end.
    void read_thread();
    /// The thread of hid_device_tryopen: only a read error, or an exception, is the end.
    void tryopen_read_thread();
    ReadResult read_report();
    void report_ready();
    bool has_driver(const char* function) const;
    std::vector<std::uint8_t> make_output_buffer() const;
    void write_report(std::span<const std::uint8_t> buffer, std::int32_t length);

    const std::uint32_t index_;
    std::atomic<bool> active_{false};
    std::atomic<bool> running_{true};
    platform::Guarded<HidHandle> led_handle_;
    platform::Guarded<HidHandle> upd_handle_;
    std::atomic<bool> opened_{false};
    std::atomic<bool> leaving_{false};
    std::atomic<bool> has_returned_{false};
    std::atomic<std::uint8_t> headset_state_{0};
    const std::string serial_;
    platform::Guarded<std::string> device_name_;
    platform::Guarded<std::string> product_name_;
    platform::Guarded<std::string> model_name_;
    platform::Guarded<std::string> reported_serial_;
    platform::Guarded<std::string> host_device_id_;
    platform::Guarded<std::string> vendor_name_;
    const std::wstring path_;
    const std::uint32_t vendor_id_;
    const std::uint32_t product_id_;
    platform::Mutex
        output_mutex_;  // held from building a report until it is written, so that the last one counts
    platform::Mutex write_mutex_;
    std::atomic<std::int32_t> LAST_HOOK_KEY{-1};
    const Driver driver_;
    const std::unique_ptr<platform::Sleeper> inventory_wait_;
    std::thread device_thread_;
};

}  // namespace headset_plugin
