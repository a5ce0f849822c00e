// The exported functions: thin wrappers. Nothing inside the plug-in calls them, so that a host that links
// hidapi itself keeps its own and the plug-in keeps to its own.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <hidapi/hidapi.h>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/plugin_log.h"
#include "hid/hid_access.h"
#include "hid/hid_device.h"
#include "hid/usage_input.h"
#include "hid/usage_output.h"
#include "orvex/headset_hid.h"
#include "orvex/headset_plugin.h"
#include "orvex/headset_version.h"
#include "platform/mutex.h"
#include "plugin/exports/later_hidapi.h"
#include "plugin/plugin_manager.h"

using headset_plugin::HidHandle;

namespace plugin_control {

std::shared_ptr<IPluginCallControlCallback> createPluginControl(const std::weak_ptr<IPluginLogger>& logger) {
    plugin_log("3rdPartyHeadsetPlugin: %s:\n", "plugin_control::createPluginControl");
    return getOrCreatePluginManager(logger);
}

std::shared_ptr<IPluginConfigCallback> createPluginConfig(const std::weak_ptr<IPluginLogger>& logger) {
    plugin_log("3rdPartyHeadsetPlugin: %s:\n", "plugin_control::createPluginConfig");
    return getOrCreatePluginManager(logger);
}

void stopPluginControl() {
    PluginManager::stopPluginManager();
}

}  // namespace plugin_control

namespace {

/// The handles that hid_open and hid_open_path have handed out. A function works on a share of its handle, so
/// that one that is closed meanwhile stays whole until it is through; a pointer that is no open handle is no
/// handle.
class OpenHandles {
  public:
    hid_device* add(HidHandle handle) {
        hid_device* const key = handle.get();
        if (key != nullptr) {
            platform::MutexLock lock(mutex_);
            handles_.emplace(key, std::move(handle));
        }
        return key;
    }

    HidHandle find(hid_device* key) const {
        platform::MutexLock lock(mutex_);
        const auto found = handles_.find(key);
        return found == handles_.end() ? nullptr : found->second;
    }

    HidHandle remove(hid_device* key) {
        platform::MutexLock lock(mutex_);
        auto node = handles_.extract(key);
        return node.empty() ? nullptr : std::move(node.mapped());
    }

  private:
    mutable platform::Mutex mutex_;
    std::map<hid_device*, HidHandle> handles_ GUARDED_BY(mutex_);
};

OpenHandles& open_handles() {
    static auto* const handles = new OpenHandles;  // outlives every thread
    return *handles;
}

constexpr const wchar_t* out_of_memory = L"out of memory";

/// Runs the body of a C function, which must not throw: memory that runs out gives the function's failure.
template <typename Result, typename Body>
Result guarded(Result failure, const Body& body) noexcept {
    try {
        return body();
    } catch (...) {
        return failure;
    }
}

/// The same with the handle behind a pointer; failure for one that is not open. The handle's error is that of
/// the body.
template <typename Result, typename Body>
Result with_handle(hid_device* device, Result failure, const Body& body) noexcept {
    return guarded(failure, [&] {
        const HidHandle handle = open_handles().find(device);
        if (!handle) {
            return failure;
        }
        headset_plugin::hid_set_error(handle.get(), L"");
        return body(handle.get());
    });
}

template <typename Body>
int with_handle(hid_device* device, const Body& body) noexcept {
    return with_handle(device, -1, body);
}

/// The failure of the last exported function without a handle, of whatever thread. The plug-in's own passes
/// do not touch it: theirs stay with their threads.
platform::Guarded<std::wstring>& process_error() {
    static auto* const error = new platform::Guarded<std::wstring>;  // outlives every thread
    return *error;
}

/// Runs the body of a function without a handle, whose error is then the process's.
template <typename Result, typename Body>
Result without_handle(Result failure, const Body& body) noexcept {
    return guarded(failure, [&] {
        headset_plugin::hid_set_error(nullptr, L"");
        const Result result = body();
        process_error().set(headset_plugin::hid_last_error(nullptr));
        return result;
    });
}

/// A text for a caller who does not free it: the calling thread's copy, until that thread asks again.
const wchar_t* thread_copy(std::wstring text) {
    thread_local std::wstring copy;
    copy = std::move(text);
    return copy.empty() ? L"Success" : copy.c_str();
}

/// What `last_error` says of an open handle.
const wchar_t* handle_error(hid_device* device, std::wstring (*last_error)(const hid_device*)) {
    const HidHandle handle = open_handles().find(device);
    return thread_copy(handle ? last_error(handle.get()) : L"no such device");
}

template <typename Byte>
std::span<Byte> bytes(Byte* data, std::size_t length) {
    return {data, data == nullptr ? 0 : length};
}

/// hidapi's version, as its two functions hand it out.
struct StatedVersion {
    explicit StatedVersion(platform::HidapiVersion version)
        : numbers{version.major, version.minor, version.patch}, text(std::move(version.text)) {}

    const hid_api_version numbers;
    const std::string text;
};

const StatedVersion& stated_version() {
    static const auto* const version = new StatedVersion(headset_plugin::hid_access_version());
    return *version;
}

/// Reads as hidapi does: reports of a device without report ids come without an id byte.
int read_as_hidapi(hid_device* device, std::span<unsigned char> data, std::chrono::milliseconds timeout) {
    if (data.empty() || headset_plugin::numbers_reports(*device)) {
        return headset_plugin::hid_read_report(device, data, timeout);
    }
    std::vector<unsigned char> with_id(data.size() + 1);
    const int length = headset_plugin::hid_read_report(device, with_id, timeout);
    if (length < 1) {
        return length;
    }
    std::copy_n(with_id.begin() + 1, length - 1, data.begin());
    return length - 1;
}

/// Decodes what hid_read gave, or a report that has its id already.
int process_read_as_hidapi(hid_device* device, std::span<const std::uint8_t> report) {
    if (headset_plugin::numbers_reports(*device) || report.size() + 1 != device->input_report_length) {
        return headset_plugin::process_read_for_mute(device, report);
    }
    std::vector<std::uint8_t> with_id{0};
    with_id.insert(with_id.end(), report.begin(), report.end());
    return headset_plugin::process_read_for_mute(device, with_id);
}

int copy_string(hid_device* device, platform::HidString which, wchar_t* string, std::size_t maxlen) {
    return with_handle(device, [&](hid_device* open) {
        return string == nullptr ? -1 : headset_plugin::hid_copy_string(open, which, {string, maxlen});
    });
}

/// hidapi gives an empty serial number to a device that states none, and its callers read it without a
/// question.
void state_serial_numbers(hid_device_info* list) {
    for (hid_device_info* entry = list; entry != nullptr; entry = entry->next) {
        if (entry->serial_number == nullptr) {
            entry->serial_number = static_cast<wchar_t*>(std::calloc(1, sizeof(wchar_t)));
        }
    }
}

/// A facade's interface pointer: the plug-in keeps the object alive.
template <typename Interface, typename Factory>
Interface* facade(std::weak_ptr<plugin_control::IPluginLogger>* logger, const Factory& create) noexcept {
    return guarded(static_cast<Interface*>(nullptr), [&]() -> Interface* {
        const auto locked = logger == nullptr ? nullptr : logger->lock();
        return locked ? create(std::weak_ptr<plugin_control::IPluginLogger>(locked)).get() : nullptr;
    });
}

}  // namespace

// hidapi's header gives its functions no visibility of their own here.
#pragma GCC visibility push(default)

extern "C" {

plugin_control::IPluginCallControlCallback* createPluginControlFacade(
    std::weak_ptr<plugin_control::IPluginLogger>* logger) {
    return facade<plugin_control::IPluginCallControlCallback>(logger, plugin_control::createPluginControl);
}

plugin_control::IPluginConfigCallback* createPluginConfigFacade(
    std::weak_ptr<plugin_control::IPluginLogger>* logger) {
    return facade<plugin_control::IPluginConfigCallback>(logger, plugin_control::createPluginConfig);
}

void stopPluginControlFacade(void) {
    guarded(0, [] {
        plugin_control::stopPluginControl();
        return 0;
    });
}

int hid_init(void) {
    return without_handle(-1, [] { return headset_plugin::hid_access_init() ? 0 : -1; });
}

int hid_exit(void) {
    return without_handle(-1, [] {
        headset_plugin::hid_access_exit();
        return 0;
    });
}

struct hid_device_info* hid_enumerate(unsigned short vendor_id, unsigned short product_id) {
    return without_handle(static_cast<hid_device_info*>(nullptr), [&] {
        auto list = headset_plugin::hid_list(vendor_id, product_id);
        state_serial_numbers(list.get());
        return list.release();
    });
}

void hid_free_enumeration(struct hid_device_info* devs) {
    headset_plugin::HidEnumerationRelease{}(devs);
}

hid_device* hid_open(unsigned short vendor_id, unsigned short product_id, const wchar_t* serial_number) {
    return without_handle(static_cast<hid_device*>(nullptr), [&] {
        return open_handles().add(headset_plugin::hid_open_handle(
            vendor_id, product_id,
            serial_number == nullptr ? std::nullopt : std::optional<std::wstring_view>(serial_number)));
    });
}

hid_device* hid_open_path(const char* path) {
    return without_handle(static_cast<hid_device*>(nullptr), [&] {
        return open_handles().add(headset_plugin::hid_open_handle(path == nullptr ? "" : path));
    });
}

int hid_write(hid_device* dev, const unsigned char* data, size_t length) {
    return with_handle(dev, [&](hid_device* device) {
        return headset_plugin::hid_write_report(device, bytes(data, length));
    });
}

int hid_read_timeout(hid_device* dev, unsigned char* data, size_t length, int milliseconds) {
    return with_handle(dev, [&](hid_device* device) {
        return read_as_hidapi(
            device, bytes(data, length),
            milliseconds < 0 ? platform::no_timeout : std::chrono::milliseconds(milliseconds));
    });
}

int hid_read(hid_device* dev, unsigned char* data, size_t length) {
    return with_handle(dev, [&](hid_device* device) {
        return read_as_hidapi(device, bytes(data, length), headset_plugin::hid_read_mode_timeout(device));
    });
}

int hid_set_nonblocking(hid_device* dev, int nonblock) {
    return with_handle(dev, [&](hid_device* device) {
        device->blocking = nonblock == 0;
        return 0;
    });
}

int hid_send_feature_report(hid_device* dev, const unsigned char* data, size_t length) {
    return with_handle(dev, [&](hid_device* device) {
        return headset_plugin::hid_send_feature(device, bytes(data, length));
    });
}

int hid_get_feature_report(hid_device* dev, unsigned char* data, size_t length) {
    return with_handle(dev, [&](hid_device* device) {
        return headset_plugin::hid_get_feature(device, bytes(data, length));
    });
}

int hid_get_input_report(hid_device* dev, unsigned char* data, size_t length) {
    return with_handle(
        dev, [&](hid_device* device) { return headset_plugin::hid_get_input(device, bytes(data, length)); });
}

int hid_send_output_report(hid_device* dev, const unsigned char* data, size_t length) {
    return with_handle(dev, [&](hid_device* device) {
        return headset_plugin::hid_send_output(device, bytes(data, length));
    });
}

int hid_get_report_descriptor(hid_device* dev, unsigned char* buf, size_t buf_size) {
    return with_handle(dev, [&](hid_device* device) {
        return headset_plugin::hid_copy_report_descriptor(device, bytes(buf, buf_size));
    });
}

struct hid_device_info* hid_get_device_info(hid_device* dev) {
    return with_handle(dev, static_cast<hid_device_info*>(nullptr), headset_plugin::hid_info);
}

void hid_close(hid_device* dev) {
    guarded(0, [&] {
        // A read that waits in another thread has a share of the handle: released, it lets go.
        const HidHandle closed = open_handles().remove(dev);
        headset_plugin::hid_end_reading(closed.get());
        return 0;
    });
}

int hid_get_manufacturer_string(hid_device* dev, wchar_t* string, size_t maxlen) {
    return copy_string(dev, platform::HidString::manufacturer, string, maxlen);
}

int hid_get_product_string(hid_device* dev, wchar_t* string, size_t maxlen) {
    return copy_string(dev, platform::HidString::product, string, maxlen);
}

int hid_get_serial_number_string(hid_device* dev, wchar_t* string, size_t maxlen) {
    return copy_string(dev, platform::HidString::serial_number, string, maxlen);
}

int hid_get_indexed_string(hid_device* dev, int string_index, wchar_t* string, size_t maxlen) {
    return with_handle(dev, [&](hid_device* device) {
        return string == nullptr
                   ? -1
                   : headset_plugin::hid_copy_indexed_string(device, string_index, {string, maxlen});
    });
}

const wchar_t* hid_error(hid_device* dev) {
    return guarded(out_of_memory, [&] {
        return dev == nullptr ? thread_copy(process_error().get())
                              : handle_error(dev, headset_plugin::hid_last_error);
    });
}

const wchar_t* hid_read_error(hid_device* dev) {
    return guarded(out_of_memory, [&] { return handle_error(dev, headset_plugin::hid_last_read_error); });
}

const struct hid_api_version* hid_version(void) {
    static constexpr hid_api_version header{HID_API_VERSION_MAJOR, HID_API_VERSION_MINOR,
                                            HID_API_VERSION_PATCH};
    return guarded(&header, [] { return &stated_version().numbers; });
}

const char* hid_version_str(void) {
    return guarded(HID_API_VERSION_STR, [] { return stated_version().text.c_str(); });
}

int hid_gen_led_event(hid_device* device, std::uint16_t usage_page, std::uint16_t usage, std::uint32_t value,
                      std::uint8_t* buffer, std::uint32_t* out_length) {
    return with_handle(device, [&](hid_device* open) {
        return headset_plugin::gen_led_event_for_usage(open, usage_page, usage, value, buffer, out_length);
    });
}

int hid_gen_led_events(hid_device* device, std::uint16_t usage_page, const std::uint16_t* usages,
                       const std::uint32_t* values, std::int32_t count, std::uint8_t* buffer,
                       std::uint32_t* out_length) {
    return with_handle(device, [&](hid_device* open) {
        return headset_plugin::gen_led_events_for_usages(open, usage_page, usages, values, count, buffer,
                                                         out_length);
    });
}

int hid_process_read(hid_device* device, const std::uint8_t* report, std::int32_t length) {
    return with_handle(device, [&](hid_device* open) {
        return report == nullptr || length < 0
                   ? -1
                   : process_read_as_hidapi(open, {report, static_cast<std::size_t>(length)});
    });
}

int hid_check_report_id(hid_device* device, std::uint32_t report_id, std::uint32_t directions) {
    return std::max(0, with_handle(device, [&](hid_device* open) {
                        return headset_plugin::check_report_id(open, report_id, directions);
                    }));
}

void hid_cancel_io(hid_device* device) {
    guarded(0, [&] {
        headset_plugin::hid_cancel(open_handles().find(device).get());
        return 0;
    });
}

int orvex_headset_plugin_version(void) {
    return ORVEX_HEADSET_PLUGIN_VERSION;
}

}  // extern "C"

#pragma GCC visibility pop
