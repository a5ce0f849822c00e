#include "devicemgr/device_mgr.h"

#include <system_error>
#include <utility>

#include "base/headset_types.h"
#include "base/plugin_log.h"
#include "device/vendor_names.h"
#include "devicemgr/device_mgr_events.h"
#include "devicemgr/message_thread.h"
#include "platform/platform.h"
#include "platform/text.h"
#include "platform/thread.h"

namespace plugin_control {

using platform::MutexLock;
using platform::RecursiveMutexLock;

namespace {

constexpr std::int32_t logitech_vendor_id = 0x046D;
constexpr std::int32_t logitech_usage_page = 0xFF00;

/// The serial text of an entry that states none, and of headsets that state just this.
constexpr const char* unknown_serial = "unknown";

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// A headset belongs to an audio device when its serial occurs in the host's id or serial, or its name in the
/// host's name. An empty text occurs in every one. One that is leaving belongs to none.
bool matches(const std::string& key, const device& listed, const AudioDeviceKey& wanted,
             EmptyName empty_name) {
    if (listed.is_leaving()) {
        return false;
    }
    const std::string name = listed.device_name();
    const bool name_counts = !name.empty() || empty_name == EmptyName::matches_all;
    return contains(wanted.device_id, key) || (name_counts && contains(wanted.device_name, name)) ||
           contains(wanted.serial, listed.serial());
}

/// Does something when the scope is left, by whatever way.
template <typename Action>
class AtExit {
  public:
    explicit AtExit(Action action) : action_(std::move(action)) {}
    ~AtExit() { action_(); }
    AtExit(const AtExit&) = delete;
    AtExit& operator=(const AtExit&) = delete;

  private:
    Action action_;
};

const char* text_or_empty(const char* text) {
    return text == nullptr ? "" : text;
}

}  // namespace

device_mgr::device_mgr() : match_wait_(platform::current().clock().make_sleeper()) {}

device_mgr::~device_mgr() {
    // A pass that was under way while the manager was stopped may have opened a headset since.
    for (const auto& [serial, listed] : devices_) {
        try {
            if (listed->is_open()) {
                listed->stop_device_thread();
            }
        } catch (...) {
            continue;  // only a logger that throws leads here; the headset is let go with its device
        }
    }
    // The retry thread holds the manager, so that this is its last act, or it has ended: nothing to wait for.
    if (first_tracking_thread_.joinable()) {
        first_tracking_thread_.detach();
    }
}

// ---- lifetime

void device_mgr::device_mgr_start() {
    static constexpr const char* function = "plugin_control::device_mgr::device_mgr_start";
    plugin_log("3rdPartyHeadsetPlugin: %s: start orvex headset plugin. \n", function);
    start_message_thread();
    plugin_log("3rdPartyHeadsetPlugin: %s: hid_tracking_func is working.\n", function);
}

void device_mgr::device_mgr_stop() {
    static constexpr const char* function = "plugin_control::device_mgr::device_mgr_stop";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter \n", function);
    deselect_device();
    stop_tracking_thread();
    plugin_log("3rdPartyHeadsetPlugin: %s: completed \n", function);
}

void device_mgr::stop_tracking_thread() {
    static constexpr const char* function = "plugin_control::device_mgr::stop_tracking_thread";
    plugin_log("3rdPartyHeadsetPlugin: %s: try to stop enumerate_hid_device and first_tracking_thread_ \n",
               function);
    enumeration_enabled_ = false;
    first_match_ = true;
    match_wait_->wake();
    std::thread retry_thread;
    {
        RecursiveMutexLock lock(device_mgr_mutex_);
        for (const auto& [serial, listed] : devices_) {
            listed->stop_device_thread();
        }
        end_pass_waits();
        retry_thread = std::move(first_tracking_thread_);
    }
    end_retry_thread(std::move(retry_thread));
    plugin_log("3rdPartyHeadsetPlugin: %s: done \n", function);
}

void device_mgr::end_retry_thread(std::thread retry_thread) {
    if (!retry_thread.joinable()) {
        return;
    }
    // Inside a pass, where the host's hook may have called, the retry thread can be waiting for this thread's
    // lock; and no thread can wait for itself. It ends by itself then, keeping the manager alive until it
    // does.
    if (device_mgr_mutex_.held_by_this_thread() || retry_thread.get_id() == std::this_thread::get_id()) {
        retry_thread.detach();
        return;
    }
    retry_thread.join();
    plugin_log("3rdPartyHeadsetPlugin: %s: first_tracking_thread_ joined\n",
               "plugin_control::device_mgr::stop_tracking_thread");
}

void device_mgr::exit_hid_mgr() {
    static constexpr const char* function = "plugin_control::device_mgr::exit_hid_mgr";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter. \n", function);
    plugin_log("3rdPartyHeadsetPlugin: %s: done. \n", function);
}

// ---- the device list

std::shared_ptr<device> device_mgr::find_device(const std::string& serial) {
    RecursiveMutexLock lock(device_mgr_mutex_);
    const auto found = devices_.find(serial);
    return found == devices_.end() ? nullptr : found->second;
}

void device_mgr::enumerate_hid_device() {
    static constexpr const char* function = "plugin_control::device_mgr::enumerate_hid_device";
    enumeration_enabled_ = true;
    plugin_log("3rdPartyHeadsetPlugin: %s: lock device_mgr_mutex_ first \n", function);
    RecursiveMutexLock lock(device_mgr_mutex_);
    const AtExit pass_end([this] { end_pass_waits(); });
    plugin_log("3rdPartyHeadsetPlugin: %s: start hid_enumerate() \n", function);
    const auto list = headset_plugin::hid_list(0, 0);
    plugin_log("3rdPartyHeadsetPlugin: %s: complete hid_enumerate() \n", function);
    for (const hid_device_info* entry = list.get(); enumeration_enabled_ && entry != nullptr;
         entry = entry->next) {
        enumerate_entry(*entry);
    }
    if (connected_count_ == 0) {
        plugin_log("3rdPartyHeadsetPlugin: %s, not found any headsets \n", function);
    }
}

void device_mgr::end_pass_waits() {
    for (const auto& wait : pass_waits_) {
        if (const auto waiting = wait.lock()) {
            waiting->wake();
        }
    }
    pass_waits_.clear();
}

void device_mgr::enumerate_entry(const hid_device_info& entry) {
    static constexpr const char* function = "plugin_control::device_mgr::enumerate_hid_device";
    const auto admitted = admit(entry);
    if (!admitted) {
        return;
    }
    const auto listed_before = devices_.find(admitted->serial);
    std::shared_ptr<device> listed;
    if (listed_before == devices_.end()) {
        listed = list_device(entry, *admitted);
    } else if ((listed = listed_before->second)) {
        plugin_log(
            "3rdPartyHeadsetPlugin: %s: found device, vendor_id:[0x%04x], product_id:[0x%04x], sn = %s, product_name = %s\n",
            function, listed->vendor_id(), listed->product_id(), admitted->serial.c_str(),
            listed->device_name().c_str());
        if (admitted->serial == unknown_serial) {
            plugin_log(
                "3rdPartyHeadsetPlugin: %s: already have one 3rd device with unknow serail, ignore this one, sn = %s\n",
                function, admitted->serial.c_str());
            return;
        }
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: now connected headset count: %d. \n", function,
               static_cast<int>(connected_count_));
    if (listed) {
        open_device(entry, listed);
    }
}

std::shared_ptr<device> device_mgr::list_device(const hid_device_info& entry,
                                                const AdmittedInterface& admitted) {
    plugin_log(
        "3rdPartyHeadsetPlugin: %s: create device, vendor_id:[0x%04x], product_id:[0x%04x], sn = %s, product_name = %s\n",
        "plugin_control::device_mgr::enumerate_hid_device", entry.vendor_id, entry.product_id,
        admitted.serial.c_str(), admitted.product_name.c_str());
    auto created = std::make_shared<device>(entry.vendor_id, entry.product_id, std::wstring_view(),
                                            admitted.serial, next_device_index_++);
    created->set_device_name(admitted.product_name);
    created->set_product_name(admitted.product_name);
    add_device(created);
    return created;
}

void device_mgr::open_device(const hid_device_info& entry, const std::shared_ptr<device>& listed) {
    static constexpr const char* function = "plugin_control::device_mgr::enumerate_hid_device";
    constexpr const char* no_path = "";
    const bool is_telephony = entry.usage_page == telephony_usage_page;
    // Asked first: what its read thread has closed is leaving by then.
    const bool is_open = listed->is_open();
    const bool is_leaving = listed->is_leaving();
    if (is_telephony && is_leaving) {
        listed->note_return();
    }
    if (!is_telephony || is_open || is_leaving) {
        plugin_log("3rdPartyHeadsetPlugin: %s: non-orvex headset already open %s. \n", function, no_path);
        return;
    }
    if (auto handle = headset_plugin::hid_open_handle(entry.path)) {
        listed->set_device_handles(std::move(handle), nullptr);
        show_calls_if_active(listed);
        return;
    }
    const std::string reason = platform::to_utf8(headset_plugin::hid_last_error(nullptr));
    plugin_log("3rdPartyHeadsetPlugin: %s: failed open 3rd device telephony page, remove it and skip %s. \n",
               function, no_path);
    plugin_log(
        "3rdPartyHeadsetPlugin: %s: cannot open %s, sn = %s: %s. If this user has no permission, install the udev rules; \"headset doctor\" tells how. \n",
        function, entry.path, listed->serial().c_str(), reason.c_str());
    if (active_device_.get() == listed) {
        refused_device_.set(listed);
    }
    remove_device(listed);
}

void device_mgr::show_calls_if_active(const std::shared_ptr<device>& opened) {
    // The host was not told that its headset left the list, and counts on it.
    if (const auto refused = refused_device_.get(); refused && refused->serial() == opened->serial()) {
        select(opened, refused->host_device_id());
    }
    if (active_device_.get() == opened) {
        post_task({"plugin_control::device_mgr::enumerate_hid_device", headset_plugin::onActiveDeviceOpened});
    }
}

void device_mgr::add_device(const std::shared_ptr<device>& added) {
    static constexpr const char* function = "plugin_control::device_mgr::add_device";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter\n", function);
    if (!added) {
        return;
    }
    devices_.emplace(added->serial(), added);
    ++connected_count_;
    plugin_log(
        "3rdPartyHeadsetPlugin: %s: add device, vendor_id:[0x%04x], product_id:[0x%04x], sn = %s, device_name = %s\n",
        function, added->vendor_id(), added->product_id(), added->serial().c_str(),
        added->device_name().c_str());
}

void device_mgr::remove_device(const std::shared_ptr<device>& removed) {
    static constexpr const char* function = "plugin_control::device_mgr::remove_device";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter\n", function);
    if (!removed) {
        return;
    }
    RecursiveMutexLock lock(device_mgr_mutex_);
    // While the host heard of it, it may have been removed and listed anew: that listing stays.
    if (const auto listed = find_device(removed->serial()); listed && listed != removed) {
        return;
    }
    if (removed->is_selected()) {
        plugin_log("3rdPartyHeadsetPlugin: %s: device to be removed is active\n", function);
        devices_.erase(removed->serial());
        // Its flag stays set when it is removed, and the host may have chosen another headset since.
        if (active_device_.get() == removed) {
            active_device_.set(nullptr);
        }
    } else if (!removed->is_orvex_device()) {
        plugin_log("3rdPartyHeadsetPlugin: %s: remove inactive device, sn %s\n", function,
                   removed->serial().c_str());
        devices_.erase(removed->serial());
    }
    --connected_count_;
    plugin_log("3rdPartyHeadsetPlugin: %s: now connected orvex headset count: %d. \n", function,
               static_cast<int>(connected_count_));
}

void device_mgr::remove_device_with_serial(const std::string& serial) {
    static constexpr const char* function = "plugin_control::device_mgr::remove_device_with_serial";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter\n", function);
    post_task({function, [this, serial] { remove_closed_device(serial); }});
}

void device_mgr::remove_closed_device(const std::string& serial) {
    static constexpr const char* function =
        "plugin_control::device_mgr::remove_device_with_serial::<lambda_1>::operator ()";
    // Looked up twice: a headset that a pass lists between the two is removed as well.
    std::shared_ptr<device> removed = find_device(serial);
    if (removed) {
        plugin_log("3rdPartyHeadsetPlugin: %s: remove orvex device\n", function);
    } else if ((removed = find_device(serial))) {
        plugin_log("3rdPartyHeadsetPlugin: %s: remove non-orvex device\n", function);
    } else {
        plugin_log("3rdPartyHeadsetPlugin: %s: did not find device to remove\n", function);
        return;
    }
    removed->set_leaving();
    device_removed(removed);
    remove_device(removed);
    // Nobody would read it any more, and no pass would take it for a new one: the request came from a former
    // object under this serial.
    const bool is_open = removed->is_open();
    if (is_open) {
        removed->stop_device_thread();
    }
    if (is_open || removed->has_returned()) {
        request_enumeration();
    }
}

void device_mgr::device_removed(const std::shared_ptr<device>& removed) {
    plugin_log("3rdPartyHeadsetPlugin: %s: for device: sn [%s}: \n",
               "plugin_control::device_mgr::device_removed", removed->serial().c_str());
    headset_plugin::onDeviceRemoved(removed->host_device_id(), static_cast<int>(removed->vendor_id()),
                                    static_cast<int>(removed->product_id()), removed->vendor_name(),
                                    removed->device_name(), removed->serial());
}

void device_mgr::post_task(headset_plugin::WorkerTask task) {
    // A running task keeps the manager alive. Whoever lets go of it last joins the worker otherwise, and the
    // message thread would wait for a task in which the host stops the plug-in, which waits for that thread.
    worker_.post({task.name, [weak = weak_from_this(), run = std::move(task.fn)] {
                      if (const auto self = weak.lock()) {
                          run();
                      }
                  }});
}

bool device_mgr::is_usagepage_supported(std::int32_t vendor_id, std::int32_t /*product_id*/,
                                        std::int32_t usage_page) {
    static constexpr const char* function = "plugin_control::device_mgr::is_usagepage_supported";
    if (usage_page == telephony_usage_page || usage_page == consumer_usage_page) {
        plugin_log("3rdPartyHeadsetPlugin: %s: standard usage_page:[0x%02x] is supported\n", function,
                   static_cast<unsigned>(usage_page));
        return true;
    }
    if (vendor_id == logitech_vendor_id && usage_page == logitech_usage_page) {
        plugin_log("3rdPartyHeadsetPlugin: %s: special Logitech usage_page:[0x%04x] is supported\n", function,
                   static_cast<unsigned>(usage_page));
        return true;
    }
    return false;
}

// ---- the active headset

bool device_mgr::setAudioDevice(const char* device_id, const char* device_name, const char* serial) {
    static constexpr const char* function = "plugin_control::device_mgr::setAudioDevice";
    const AudioDeviceKey wanted{text_or_empty(device_id), text_or_empty(device_name), text_or_empty(serial)};
    plugin_log("3rdPartyHeadsetPlugin: %s: enter: device_id:[%s], device_name:[%s], serial:[%s].\n", function,
               wanted.device_id.c_str(), wanted.device_name.c_str(), wanted.serial.c_str());
    if (wanted.device_id.empty()) {
        plugin_log("3rdPartyHeadsetPlugin: %s: empty device_id.\n", function);
        return false;
    }
    const std::uint32_t request = ++requests_;
    if (open_match(wanted, EmptyName::matches_none)) {
        return choose(wanted);
    }
    // The pass may be waiting for the caller: in the availability hook, for a lock of the host's.
    post_task({function, [this, wanted, request] {
                   RecursiveMutexLock lock(device_mgr_mutex_);
                   if (request == requests_) {
                       choose(wanted);
                   }
               }});
    return true;
}

bool device_mgr::open_match(const AudioDeviceKey& wanted, EmptyName empty_name) {
    const bool is_in_pass = device_mgr_mutex_.held_by_this_thread();
    const std::shared_ptr<platform::Sleeper> wait = platform::current().clock().make_sleeper();
    {
        RecursiveMutexLock lock(device_mgr_mutex_);
        const auto matched = find_match(wanted, empty_name);
        if (!matched || matched->is_open()) {
            return true;
        }
        pass_waits_.push_back(wait);
    }
    const bool is_pass_to_come = request_enumeration();
    return is_in_pass || !is_pass_to_come || !wait->sleep(open_wait);
}

bool device_mgr::choose(const AudioDeviceKey& wanted) {
    static constexpr const char* function = "plugin_control::device_mgr::setAudioDevice";
    std::shared_ptr<device> found;
    {
        RecursiveMutexLock lock(device_mgr_mutex_);
        if (!first_match_ && answered_by_retry_thread(wanted)) {
            return false;
        }
        found = search_and_select(wanted);
        plugin_log("3rdPartyHeadsetPlugin: %s: search result: first_match_=%d, found_device=%d\n", function,
                   first_match_ ? 1 : 0, found ? 1 : 0);
        if (!first_match_) {
            if (found) {
                first_match_ = true;
            } else {
                start_retry_thread(wanted);
            }
        }
        if (!found) {
            deselect_device();
        }
    }
    if (found) {
        found->post_inventory();
    }
    return found != nullptr;
}

void device_mgr::start_retry_thread(const AudioDeviceKey& wanted) try {
    first_tracking_thread_ = platform::start_thread(
        "orvex-retry", [self = shared_from_this(), wanted] { self->setFirstAudioDevice(wanted); });
    active_device_cache_ = wanted;
} catch (const std::system_error&) {
    return;  // No thread can be had: the host's next request is the first one again.
}

bool device_mgr::answered_by_retry_thread(const AudioDeviceKey& wanted) {
    static constexpr const char* function = "plugin_control::device_mgr::setAudioDevice";
    const char* const id = wanted.device_id.c_str();
    const char* const name = wanted.device_name.c_str();
    const char* const serial = wanted.serial.c_str();
    if (active_device_cache_ == AudioDeviceKey{}) {
        plugin_log("3rdPartyHeadsetPlugin: %s: cache: device_id:[%s], device_name:[%s], serial:[%s].\n",
                   function, id, name, serial);
        return false;
    }
    if (active_device_cache_ == wanted) {
        plugin_log(
            "3rdPartyHeadsetPlugin: %s: already retried in another thread : device_id:[%s], device_name:[%s], serial:[%s].\n",
            function, id, name, serial);
        return true;
    }
    plugin_log(
        "3rdPartyHeadsetPlugin: %s: stop another thread for new : device_id:[%s], device_name:[%s], serial:[%s].\n",
        function, id, name, serial);
    first_match_ = true;
    match_wait_->wake();
    return false;
}

std::shared_ptr<device> device_mgr::find_match(const AudioDeviceKey& wanted, EmptyName empty_name) {
    for (const auto& [key, listed] : devices_) {
        if (matches(key, *listed, wanted, empty_name)) {
            return listed;
        }
    }
    return nullptr;
}

std::shared_ptr<device> device_mgr::search_and_select(const AudioDeviceKey& wanted) {
    for (const auto& [key, listed] : devices_) {
        plugin_log(
            "3rdPartyHeadsetPlugin: %s: search at setAudioDevice: \n ZRA_devID:[%s], plugin_devID:[%s] \n ZRA_devName:[%s], plugin_devName:[%s] \n DLQ_SN:[%s], plugin_SN:[%s].\n",
            "plugin_control::device_mgr::setAudioDevice", wanted.device_id.c_str(), key.c_str(),
            wanted.device_name.c_str(), listed->device_name().c_str(), wanted.serial.c_str(),
            listed->serial().c_str());
        if (matches(key, *listed, wanted, EmptyName::matches_none)) {
            select(listed, wanted.device_id);
            return listed;
        }
    }
    return nullptr;
}

void device_mgr::select(const std::shared_ptr<device>& matched, const std::string& host_device_id) {
    deselect_device();
    matched->set_host_device_id(host_device_id);
    active_device_.set(matched);
    matched->set_selected(true);
}

void device_mgr::setFirstAudioDevice(const AudioDeviceKey& wanted) try {
    static constexpr const char* function = "plugin_control::device_mgr::setFirstAudioDevice";
    const char* const id = wanted.device_id.c_str();
    const char* const name = wanted.device_name.c_str();
    const char* const serial = wanted.serial.c_str();
    plugin_log(
        "3rdPartyHeadsetPlugin: %s: enter: active_device_id_cache_:[%s], active_device_name_:[%s], active_device_serial_:[%s].\n",
        function, id, name, serial);
    for (int attempt = 0; attempt < match_attempts; ++attempt) {
        match_wait_->sleep(match_interval);
        if (first_match_) {
            plugin_log("3rdPartyHeadsetPlugin: %s: already matched, return.\n", function);
            break;
        }
        open_match(wanted, EmptyName::matches_all);
        RecursiveMutexLock lock(device_mgr_mutex_);
        // Another request may have taken over while this thread waited for the lock.
        if (!first_match_ && retry_match(wanted)) {
            first_match_ = true;
        }
        if (first_match_) {
            break;
        }
        plugin_log(
            "3rdPartyHeadsetPlugin: %s: not yet matched: active_device_id_cache_:[%s], active_device_name_:[%s], active_device_serial_:[%s].\n",
            function, id, name, serial);
    }
    plugin_log(
        "3rdPartyHeadsetPlugin: %s: exit: active_device_id_cache_:[%s], active_device_name_:[%s], active_device_serial_:[%s].\n",
        function, id, name, serial);
} catch (...) {
    // Only a logger that throws leads here; there is nobody left to tell.
    return;
}

bool device_mgr::retry_match(const AudioDeviceKey& wanted) {
    const auto matched = find_match(wanted, EmptyName::matches_all);
    if (!matched) {
        return false;
    }
    select(matched, wanted.device_id);
    plugin_log("3rdPartyHeadsetPlugin: %s: just matched, go post headsetReady and inventory.\n",
               "plugin_control::device_mgr::setFirstAudioDevice");
    matched->post_inventory();
    return true;
}

void device_mgr::deselect_device() {
    refused_device_.set(nullptr);
    const auto deselected = active_device_.get();
    if (!deselected) {
        return;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: enter\n", "plugin_control::device_mgr::deselect_device");
    MutexLock lock(active_output_mutex_);
    deselected->headset_set_state(headset_plugin::HEADSET_STATE_IDLE);
    deselected->set_selected(false);
    active_device_.set(nullptr);
}

void device_mgr::set_active_headset_state(std::uint32_t state, const std::function<bool()>& still_holds) {
    MutexLock lock(active_output_mutex_);
    if (still_holds && !still_holds()) {
        return;
    }
    if (const auto active = active_device_.get()) {
        active->headset_set_state(state);
    }
}

void device_mgr::set_headset_mute_state(bool mute, const std::function<bool()>& still_holds) {
    static constexpr const char* function = "plugin_control::device_mgr::set_headset_mute_state";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter mute=%s\n", function, true_or_false(mute));
    MutexLock lock(active_output_mutex_);
    if (still_holds && !still_holds()) {
        return;
    }
    if (const auto active = active_device_.get()) {
        active->set_mute_state(mute);
    } else {
        plugin_log("3rdPartyHeadsetPlugin: %s: no active orvex headset\n", function);
    }
}

const char* device_mgr::get_active_device_id() {
    static constexpr const char* function = "plugin_control::device_mgr::get_active_device_id";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter\n", function);
    const auto active = active_device_.get();
    if (!active) {
        plugin_log("3rdPartyHeadsetPlugin: %s: return null device id\n", function);
        return nullptr;
    }
    // The thread's own copy: the headset may be gone before the caller has read it.
    thread_local std::string device_id;
    device_id = active->host_device_id();
    return device_id.c_str();
}

std::string device_mgr::get_headset_model(const std::string& /*device_id*/) {
    static constexpr const char* function = "plugin_control::device_mgr::get_headset_model";
    plugin_log("3rdPartyHeadsetPlugin: %s: enter\n", function);
    if (const auto active = active_device_.get(); active && active->is_orvex_device()) {
        std::string model = active->device_name();
        plugin_log("3rdPartyHeadsetPlugin: %s: model = %s\n", function, model.c_str());
        return model;
    }
    plugin_log("3rdPartyHeadsetPlugin: %s: no device for deviceId\n", function);
    return {};
}

}  // namespace plugin_control
