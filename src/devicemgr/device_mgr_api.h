// The device manager as the rest of the plug-in reaches it: plain functions that own the one manager and
// forward to it. Without a manager each logs "device_mgr not ready" and answers with nothing. Thread: any,
// unless said otherwise.
//
// remove_headset_with_serial and post_device_mgr_task, which a headset calls, are declared in
// device/device_events.h.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

/// Creates the manager, if there is none, and starts it. The argument is not used.
void start_device_mgr(std::uint32_t unused);

/// Stops the manager and lets go of it, and ends the message thread. When it returns the next start works.
void stop_device_mgr();

/// Makes the headset of an audio device the active one; true when there is one.
bool set_audio_device(const char* device_id, const char* device_name, const char* serial);

/// The host's id of the active headset's audio device, null without one. Valid until the calling thread asks
/// again.
const char* get_active_device_id();

/// The model name of the active headset; empty for third-party headsets.
std::string get_headset_model(const std::string& device_id);

/// Shows a headset state, a bit set of HEADSET_STATE_..., on the active headset.
void update_headset_state(std::uint32_t headset_state);

/// Shows muted, for 1 and more, or not muted on the active headset.
void hid_headset_set_mute(int muted);

/// The same two for what was decided a while ago: each is given up when `still_holds` says no, which is asked
/// when nobody else can show anything before this.
void update_headset_state_if(std::uint32_t headset_state, const std::function<bool()>& still_holds);
void hid_headset_set_mute_if(int muted, const std::function<bool()>& still_holds);

/// Runs one enumeration pass. [message thread]
void EnumerationOrvexHidDevice();
