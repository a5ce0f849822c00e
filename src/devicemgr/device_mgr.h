// The list of the headsets that are plugged in, and the one that is active.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/worker.h"
#include "device/device.h"
#include "devicemgr/admission.h"
#include "platform/clock.h"
#include "platform/mutex.h"

namespace plugin_control {

using headset_plugin::device;

/// The first request for an audio device that finds no headset is repeated this often, this far apart: the
/// audio device of a headset that was just plugged in shows up before its HID interface does.
inline constexpr int match_attempts = 30;
inline constexpr std::chrono::milliseconds match_interval{100};

/// A request for a headset that is not open waits so long, at most, for the pass that may open it: as long as
/// one report to a headset that does not take it.
inline constexpr std::chrono::milliseconds open_wait = headset_plugin::hid_write_timeout;

/// What the host says about the audio device that it uses.
struct AudioDeviceKey {
    std::string device_id;
    std::string device_name;
    std::string serial;
    bool operator==(const AudioDeviceKey&) const = default;
};

/// Whether a headset without a name matches by name.
enum class EmptyName { matches_none, matches_all };

/// There is one per process; the functions of device_mgr_api.h own it.
///
/// One re-entrant mutex guards the list and the matching; it is held for the length of an enumeration pass.
/// The active device is also read without it, as a copy that may be stale. No thread is joined while the
/// mutex is held.
class device_mgr : public std::enable_shared_from_this<device_mgr> {
  public:
    device_mgr();
    ~device_mgr();
    device_mgr(const device_mgr&) = delete;
    device_mgr& operator=(const device_mgr&) = delete;

    // Lifetime.

    /// Starts the message thread, which runs the first pass.
    void device_mgr_start();
    /// Puts the active headset to rest and stops what runs.
    void device_mgr_stop();
    /// Ends passes, the search for an audio device's headset and the reading of every headset. Thread: any.
    void stop_tracking_thread();
    /// Where a shutdown step would go. Nothing calls it.
    void exit_hid_mgr();

    // The device list.

    /// Looks at every HID interface: lists the headsets that are new and opens those that are not open.
    /// Headsets that are gone stay listed until they report it themselves. [message thread]
    void enumerate_hid_device();
    /// Lists a headset. The caller holds the mutex.
    void add_device(const std::shared_ptr<device>& added);
    void remove_device(const std::shared_ptr<device>& removed);
    /// Has the worker take a headset off the list and tell the host.
    void remove_device_with_serial(const std::string& serial);
    /// Tells the host that a headset is gone.
    void device_removed(const std::shared_ptr<device>& removed);
    /// Queues a task for the worker; dropped when the manager is gone before its turn.
    void post_task(headset_plugin::WorkerTask task);
    /// The wider rule on usage pages: the standard ones, and Logitech's own. Passes apply the narrower one of
    /// admit().
    static bool is_usagepage_supported(std::int32_t vendor_id, std::int32_t product_id,
                                       std::int32_t usage_page);

    // The active headset.

    /// Makes the headset of this audio device the active one. True when there is one now. For a headset that
    /// is not open a pass tries to open it first; when that takes longer than `open_wait`, the headset
    /// becomes the active one after the pass. [host thread]
    bool setAudioDevice(const char* device_id, const char* device_name, const char* serial);
    /// Repeats the search for a first request that found nothing. [retry thread]
    void setFirstAudioDevice(const AudioDeviceKey& wanted);
    void deselect_device();
    /// The host's id of the active headset's audio device, null without one. Valid until the calling thread
    /// asks again.
    const char* get_active_device_id();
    /// The model name of an active headset of the maker's own, else an empty text.
    std::string get_headset_model(const std::string& device_id);
    /// Show a mute or a headset state on the active headset, unless `still_holds` is given and says no. It is
    /// asked when nobody else can show anything before this.
    void set_headset_mute_state(bool mute, const std::function<bool()>& still_holds = {});
    void set_active_headset_state(std::uint32_t state, const std::function<bool()>& still_holds = {});

    std::uint32_t connected_count() const { return connected_count_; }
    std::shared_ptr<device> active_device() const { return active_device_.get(); }
    std::shared_ptr<device> find_device(const std::string& serial);

  private:
    void enumerate_entry(const hid_device_info& entry);
    std::shared_ptr<device> list_device(const hid_device_info& entry, const AdmittedInterface& admitted);
    void open_device(const hid_device_info& entry, const std::shared_ptr<device>& listed);
    /// An opened headset takes the place that it had as the active one before it was refused.
    void show_calls_if_active(const std::shared_ptr<device>& opened);
    void end_pass_waits();
    void remove_closed_device(const std::string& serial);

    void start_retry_thread(const AudioDeviceKey& wanted);
    bool answered_by_retry_thread(const AudioDeviceKey& wanted);
    /// Has a pass try the headset that matches, if it is not open. False when that pass did not end in time.
    bool open_match(const AudioDeviceKey& wanted, EmptyName empty_name);
    bool choose(const AudioDeviceKey& wanted);
    std::shared_ptr<device> find_match(const AudioDeviceKey& wanted, EmptyName empty_name);
    std::shared_ptr<device> search_and_select(const AudioDeviceKey& wanted);
    void select(const std::shared_ptr<device>& matched, const std::string& host_device_id);
    bool retry_match(const AudioDeviceKey& wanted);
    void end_retry_thread(std::thread retry_thread);

    std::atomic<std::uint32_t> connected_count_{0};
    std::uint32_t next_device_index_ = 0;
    std::map<std::string, std::shared_ptr<device>> devices_;
    platform::Guarded<std::shared_ptr<device>> active_device_;
    /// The active headset that a pass took off the list because it could not be opened, until another one is
    /// chosen.
    platform::Guarded<std::shared_ptr<device>> refused_device_;
    std::atomic<bool> enumeration_enabled_{false};
    platform::RecursiveMutex device_mgr_mutex_;
    platform::Mutex active_output_mutex_;  // so that nothing is shown on a headset after it was deselected
    headset_plugin::Worker worker_;
    const std::unique_ptr<platform::Sleeper> match_wait_;
    std::vector<std::weak_ptr<platform::Sleeper>> pass_waits_;  // ended by the end of the next pass
    std::atomic<std::uint32_t> requests_{0};                    // of setAudioDevice so far
    std::atomic<bool> first_match_{false};
    AudioDeviceKey active_device_cache_;
    std::thread first_tracking_thread_;
};

}  // namespace plugin_control
