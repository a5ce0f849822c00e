#include "device/device.h"

#include <algorithm>
#include <array>

#include "base/headset_types.h"
#include "base/plugin_log.h"
#include "device/device_events.h"
#include "device/vendor_names.h"
#include "hid/usage_input.h"
#include "platform/platform.h"
#include "platform/text.h"
#include "platform/thread.h"

namespace headset_plugin {

using platform::MutexLock;

namespace {

constexpr std::size_t longest_path = 256;
constexpr std::size_t output_buffer_size = 4;
constexpr std::uint32_t plantronics_vendor_id = 0x047F;

/// What stands in for texts that a device does not state.
constexpr const char* unknown_vendor = "Unknown";

/// The only kind of report that carries a key.
constexpr std::uint32_t key_report = 8;

constexpr int no_hook_key = -1;

std::atomic<KeyCallback> g_key_callback{nullptr};

}  // namespace

void device::register_key_callback(KeyCallback callback) {
    g_key_callback = callback;
}

device::device(std::uint32_t vendor_id, std::uint32_t product_id, std::wstring_view path, std::string serial,
               std::uint32_t index)
    : index_(index),
      serial_(std::move(serial)),
      vendor_name_(unknown_vendor),
      path_(path.substr(0, longest_path)),
      vendor_id_(vendor_id),
      product_id_(product_id),
      driver_(create_driver(vendor_id, product_id)),
      inventory_wait_(platform::current().clock().make_sleeper()) {
    if (!driver_) {
        plugin_log("3rdPartyHeadsetPlugin: %s: 3rd party headset not supported yet.\n",
                   "headset_plugin::device::device");
    }
}

device::~device() {
    static constexpr const char* function = "headset_plugin::device::~device";
    try {
        plugin_log("3rdPartyHeadsetPlugin: %s: enter. \n", function);
        stop_device_thread();
        plugin_log("3rdPartyHeadsetPlugin: %s: exit. \n", function);
    } catch (...) {
        // A logger that throws must not keep the headset from being let go.
        hid_end_reading(led_handle_.exchange(nullptr).get());
    }
    let_go_of_thread();
}

void device::let_go_of_thread() {
    // The read thread holds the headset and ends by itself: nothing to wait for.
    if (device_thread_.joinable()) {
        device_thread_.detach();
    }
}

std::string device::vendor_name() const {
    const std::string own_name = vendor_name_.get();
    if (own_name.empty() || own_name == unknown_vendor) {
        return headset_plugin::vendor_name(static_cast<std::int32_t>(vendor_id_));
    }
    return own_name;
}

bool device::is_orvex_device() const {
    return static_cast<std::int32_t>(vendor_id_) == ORVEX_VENDOR_ID;
}

// ---- opening and closing

bool device::is_leaving() const {
    // The handle first: the read thread says that the headset leaves before it closes the handle.
    const HidHandle handle = led_handle_.get();
    return (handle && !hid_is_connected(handle.get())) || leaving_;
}

void device::take_led_handle(HidHandle handle) {
    if (handle) {
        leaving_ = false;
    }
    if (driver_) {
        driver_->set_hid_device(handle);
    }
    led_handle_.set(std::move(handle));
}

void device::set_device_handles(HidHandle led, HidHandle upd) {
    static constexpr const char* function = "headset_plugin::device::set_device_handles";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter for device 0x%x, led %d, upd %d. \n", function, product_id_,
               hid_handle_number(led.get()), hid_handle_number(upd.get()));
    if (!is_open()) {
        take_led_handle(std::move(led));
    }
    if (!upd_handle_.get()) {
        upd_handle_.set(std::move(upd));
    }
    try {
        if (is_open() && upd_handle_.get() && !opened_) {
            plugin_log("3rdPartyHeadsetPlugin: %s: open hid device 0x%x. \n", function, product_id_);
            opened_ = hid_device_open() != 0;
        } else if (!is_orvex_device()) {
            plugin_log("3rdPartyHeadsetPlugin: %s: open hid device (non-OrveX) 0x%x. \n", function,
                       product_id_);
            opened_ = hid_device_open() != 0;
        }
    } catch (...) {
        end_reading();  // or it would count as open without anybody who reads it
        throw;
    }
}

std::uint32_t device::hid_device_open() {
    static constexpr const char* function = "headset_plugin::device::hid_device_open";
    std::uint32_t result = 0;
    if (is_open()) {
        get_device_info();
        plugin_log("3rdPartyHeadsetPlugin: %s: [Enter handle_led] \n", function);
        if (!is_orvex_device()) {
            start_headset();
        }
        plugin_log("3rdPartyHeadsetPlugin: %s: new a thread to read headset device \n", function);
        platform::start_detached_thread("orvex-read", [self = shared_from_this()] { self->read_thread(); });
        plugin_log("3rdPartyHeadsetPlugin: %s: [Exit handle_led] \n", function);
        result = 1;
    }
    if (is_orvex_device()) {
        plugin_log("3rdPartyHeadsetPlugin: %s: sync current call state to headset \n", function);
        updateHeadsetState();
    }
    return result;
}

std::int32_t device::hid_device_tryopen(std::uint16_t vendor_id, std::uint16_t product_id,
                                        const wchar_t* serial) {
    static constexpr const char* function = "headset_plugin::device::hid_device_tryopen";
    plugin_log("3rdPartyHeadsetPlugin: %s: [Enter], vendor_id: %d, product_id: %d \n", function, vendor_id,
               product_id);
    std::int32_t result = 0;
    if (is_open()) {
        plugin_log(
            "3rdPartyHeadsetPlugin: %s: Waring [there is already a opened orvex headset, ignore this one !!!!] \n",
            function);
    } else {
        {
            MutexLock lock(write_mutex_);
            plugin_log("3rdPartyHeadsetPlugin: %s: try to open headset device. \n", function);
            take_led_handle(
                hid_open_handle(vendor_id, product_id,
                                serial == nullptr ? std::nullopt : std::optional<std::wstring_view>(serial)));
        }
        if (is_open()) {
            start_tried_headset();
            result = 1;
        } else {
            plugin_log("3rdPartyHeadsetPlugin: %s: fail to open orvex headset \n", function);
        }
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: [Exit], result: %d \n", function, result);
    return result;
}

void device::start_tried_headset() try {
    static constexpr const char* function = "headset_plugin::device::hid_device_tryopen";
    plugin_log("3rdPartyHeadsetPlugin: %s: new a thread to read headset device \n", function);
    let_go_of_thread();
    device_thread_ =
        platform::start_thread("orvex-read", [self = shared_from_this()] { self->tryopen_read_thread(); });
    get_device_info();
    plugin_log("3rdPartyHeadsetPlugin: %s: sync current call state to headset device. \n", function);
    if (!is_orvex_device()) {
        start_headset();
    }
} catch (...) {
    end_reading();
    throw;
}

void device::end_reading() {
    hid_end_reading(led_handle_.get().get());
    take_led_handle(nullptr);
}

void device::end_reading_unnoticed() {
    end_reading();
    leaving_ = false;
}

void device::stop_device_thread() {
    static constexpr const char* function = "headset_plugin::device::stop_device_thread";
    plugin_log("3rdPartyHeadsetPlugin: %s: Enter\n", function);
    running_ = false;
    inventory_wait_->wake();
    {
        MutexLock lock(write_mutex_);
        if (const HidHandle handle = led_handle_.get()) {
            plugin_log("3rdPartyHeadsetPlugin: %s: cancel device handler IO [%d] \n", function,
                       hid_handle_number(handle.get()));
            end_reading();
            plugin_log("3rdPartyHeadsetPlugin: %s: restore some parameters to default value. \n", function);
        }
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: Exit\n", function);
}

void device::hid_device_close() {
    static constexpr const char* function = "headset_plugin::device::hid_device_close";
    plugin_log("3rdPartyHeadsetPlugin: %s: try to close device\n", function);
    bool closed = false;
    {
        MutexLock lock(write_mutex_);
        if (const HidHandle handle = led_handle_.get()) {
            plugin_log("3rdPartyHeadsetPlugin: %s: release device handler [%d] \n", function,
                       hid_handle_number(handle.get()));
            leaving_ = true;
            end_reading();
            closed = true;
            plugin_log("3rdPartyHeadsetPlugin: %s: restore some parameters to default value. \n", function);
        }
    }
    if (closed) {
        remove_headset_with_serial(serial_);
    } else {
        leaving_ = false;  // stopped meanwhile: nobody takes it off the list
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: device_thread_ is closed. \n", function);
}

void device::get_device_info() {
    static constexpr const char* function = "headset_plugin::device::get_device_info";
    plugin_log("3rdPartyHeadsetPlugin: %s: open non-orvex device. \n", function);
    std::array<wchar_t, 64> product{};
    hid_copy_string(led_handle_.get().get(), platform::HidString::product, product);
    const std::string model_name = platform::to_utf8(product.data(), product.size());
    plugin_log("3rdPartyHeadsetPlugin: %s: model name = %s\n", function, model_name.c_str());
    model_name_.set(model_name);
    reported_serial_.set(serial_);
}

void device::post_inventory() {
    post_device_mgr_task({"headset_plugin::device::post_inventory", [weak = weak_from_this()] {
                              if (const auto self = weak.lock()) {
                                  self->report_ready();
                              }
                          }});
}

void device::report_ready() {
    if (!inventory_wait_->sleep(inventory_delay)) {
        return;
    }
    plugin_control::on_headset_ready(host_device_id(), static_cast<int>(vendor_id_),
                                     static_cast<int>(product_id_), vendor_name(), device_name(), serial_);
}

// ---- read threads

device::ReadResult device::read_report() {
    const HidHandle handle = led_handle_.get();
    if (!handle) {
        return {.closed = true};
    }
    ReadResult result;
    const auto buffer =
        std::span(result.buffer).first(numbers_reports(*handle) ? report_size : report_size + 1);
    result.length = hid_read_report(handle.get(), buffer, platform::no_timeout);
    return result;
}

void device::read_thread() try {
    static constexpr const char* function = "headset_plugin::device::read_thread";
    plugin_log("3rdPartyHeadsetPlugin: %s: Enter while(true) loop \n", function);
    while (true) {
        try {
            const ReadResult read = read_report();
            if (read.closed) {
                break;
            }
            // A report is its id and at least one byte of data.
            if (read.length < 2) {
                plugin_log("3rdPartyHeadsetPlugin: %s: read error, length %d\n", function, read.length);
                break;
            }
            handle_readback(read.report());
        } catch (...) {
            plugin_log("3rdPartyHeadsetPlugin: %s: unexpected device read exception \n", function);
            break;
        }
    }
    leaving_ = running_.load();
    plugin_log("3rdPartyHeadsetPlugin: %s: Exit device_thread_ \n", function);
    if (!running_) {
        plugin_log("3rdPartyHeadsetPlugin: %s: read failed, shuting down \n", function);
        end_reading();  // a pass that came late may have opened the headset anew meanwhile
        return;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: read failed, headset should be unplugged, close device \n",
               function);
    hid_device_close();
} catch (...) {
    end_reading_unnoticed();  // only a logger that throws leads here; there is nobody left to tell
}

void device::tryopen_read_thread() try {
    static constexpr const char* function = "headset_plugin::device::tryopen_read_thread";
    while (true) {
        const ReadResult read = read_report();
        if (read.closed) {
            break;
        }
        if (read.length < 0) {
            plugin_log("3rdPartyHeadsetPlugin: %s: Error[read error and break out] \n", function);
            break;
        }
        try {
            handle_readback(read.report());
        } catch (...) {
            break;  // a listener or a logger threw: as a read error
        }
    }
    if (running_) {
        hid_device_close();
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: this device is closing down. \n", function);
} catch (...) {
    end_reading_unnoticed();  // only a logger that throws leads here; there is nobody left to tell
}

// ---- output

bool device::has_driver(const char* function) const {
    if (!driver_) {
        plugin_log("3rdPartyHeadsetPlugin: %s: unsupported\n", function);
    }
    return driver_ != nullptr;
}

std::vector<std::uint8_t> device::make_output_buffer() const {
    return std::vector<std::uint8_t>(
        std::max(output_buffer_size, hid_output_report_length(led_handle_.get().get())));
}

void device::write_report(std::span<const std::uint8_t> buffer, std::int32_t length) {
    if (length <= 0) {
        return;
    }
    MutexLock lock(write_mutex_);
    if (const HidHandle handle = led_handle_.get()) {
        hid_write_report(handle.get(),
                         buffer.first(std::min(buffer.size(), static_cast<std::size_t>(length))));
    }
}

void device::headset_set_state(std::uint32_t state) {
    const auto stored = static_cast<std::uint8_t>(state);
    headset_state_ = stored;
    if (stored == HEADSET_STATE_IDLE) {
        LAST_HOOK_KEY = no_hook_key;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: 3rd call state =%d \n",
               "headset_plugin::device::headset_set_state", static_cast<int>(state));
    set_led_event();
}

void device::set_led_event() {
    static constexpr const char* function = "headset_plugin::device::set_led_event";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter\n", function);
    if (!has_driver(function)) {
        return;
    }
    const std::uint32_t follow_up = driver_->query_state_follow_up(headset_state_);
    if ((follow_up & follow_up_toggle) != 0) {
        toggle_led_status(follow_up_toggle);
    } else if ((follow_up & follow_up_unmute) != 0) {
        set_mute_state(false);
    }
    {
        MutexLock lock(output_mutex_);
        auto buffer = make_output_buffer();
        write_report(buffer, driver_->set_led_event_data(headset_state_, buffer));
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: exit\n", function);
}

void device::set_mute_state(bool muted) {
    static constexpr const char* function = "headset_plugin::device::set_mute_state";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter.\n", function);
    if (!has_driver(function)) {
        return;
    }
    {
        MutexLock lock(output_mutex_);
        auto buffer = make_output_buffer();
        if (driver_->set_mute_data(muted, buffer) > 0) {
            // The whole buffer, whatever the driver's length: mute reports have always gone out so.
            write_report(buffer, static_cast<std::int32_t>(buffer.size()));
        }
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: exit\n", function);
}

void device::toggle_led_status(std::uint32_t bit) {
    static constexpr const char* function = "headset_plugin::device::toggle_led_status";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter\n", function);
    if (!has_driver(function)) {
        return;
    }
    {
        MutexLock lock(output_mutex_);
        auto buffer = make_output_buffer();
        write_report(buffer, driver_->toggle_led(bit, buffer));
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: exit\n", function);
}

void device::start_headset() {
    static constexpr const char* function = "headset_plugin::device::start_headset";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter\n", function);
    if (!has_driver(function)) {
        return;
    }
    if (vendor_id_ == plantronics_vendor_id) {
        set_idle();
    } else {
        set_led_event();
    }
}

void device::set_idle() {
    // Report id 0x16 of the Plantronics dialect: no indicator at all.
    static constexpr std::array<std::uint8_t, 3> idle_report = {0x16, 0x02, 0x00};
    plugin_log("3rdPartyHeadsetPlugin: %s: enter\n", "headset_plugin::device::set_idle");
    const HidHandle handle = led_handle_.get();
    if (vendor_id_ == plantronics_vendor_id && handle) {
        hid_write_report(handle.get(), idle_report);
    }
}

// ---- input

void device::handle_readback(std::span<const std::uint8_t> report) {
    if (!active_) {
        plugin_log("3rdPartyHeadsetPlugin: %s: ignore none active headset button action\n",
                   "headset_plugin::device::handle_readback");
        return;
    }
    process_read(report);
}

void device::process_read(std::span<const std::uint8_t> report) {
    static constexpr const char* function = "headset_plugin::device::process_read";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter\n", function);
    if (!has_driver(function)) {
        return;
    }
    const std::int32_t key = driver_->process_read(report);
    if (key >= 0) {
        handle_key_report(key_report, static_cast<std::uint32_t>(key));
    }
    const std::uint32_t follow_up = driver_->handle_headset_reponse(key);
    for (const std::uint32_t bit : follow_up_order) {
        if ((follow_up & bit) != 0) {
            toggle_led_status(bit);
        }
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: exit\n", function);
}

void device::restore_hook_key(std::int32_t dropped, std::int32_t former) {
    // The end of the call may have reset it meanwhile; that stays.
    LAST_HOOK_KEY.compare_exchange_strong(dropped, former);
}

void device::handle_key_report(std::uint32_t report_type, std::uint32_t key) {
    static constexpr const char* function = "headset_plugin::device::handle_key_report";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter, keycode = %d\n", function, static_cast<int>(key));
    const KeyCallback callback = g_key_callback;
    if (callback == nullptr || report_type != key_report) {
        return;
    }
    const auto code = static_cast<std::int32_t>(key);
    const std::int32_t old = LAST_HOOK_KEY;
    if (code == HEADSET_KEY_HOOK || code == HEADSET_KEY_END_CALL) {
        plugin_log("3rdPartyHeadsetPlugin: %s: keyReportValue: %d, LAST_HOOK_KEY: %d \n", function, code,
                   old);
        if (code == old) {
            plugin_log("3rdPartyHeadsetPlugin: %s: Drop invalid HOOK/END_CALL. \n", function);
            return;
        }
        LAST_HOOK_KEY = code;
        plugin_log("3rdPartyHeadsetPlugin: %s: new LAST_HOOK_KEY: %d \n", function, code);
    }
    const bool in_use = (headset_state_ & HEADSET_STATE_INUSE) != 0;
    if (in_use && code == HEADSET_KEY_HOOK) {
        plugin_log("3rdPartyHeadsetPlugin: %s: Drop invalid HOOK. \n", function);
        restore_hook_key(code, old);
        return;
    }
    if (!in_use && code == HEADSET_KEY_END_CALL) {
        plugin_log("3rdPartyHeadsetPlugin: %s: Drop invalid END_CALL. \n", function);
        restore_hook_key(code, old);
        return;
    }
    callback(static_cast<std::uint16_t>(key), reported_serial_.get());
}

}  // namespace headset_plugin
