// The plug-in's own picture of the host's calls: what the headset has to show for them, and what a key press
// means.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "callstate/call_action.h"
#include "callstate/headset_cc.h"
#include "orvex/headset_plugin.h"
#include "platform/mutex.h"

namespace headset_plugin {

using plugin_control::ICallInfo;

/// The call list and the decisions made from it. Every operation on the list takes the mutex; the channels
/// that the arbitrations are given are called after it is released. Thread: host threads, and the read
/// threads for keys.
class headset_ccm {
  public:
    /// Where an arbitration sends its headset state, or 1 and 0 for muted and not.
    using Channel = std::function<void(int)>;

    headset_ccm();

    // The calls, as the host reports them.

    /// Replaces the call list. The entries passed count; `num_calls` is only logged.
    void populateCallState(const std::string& device_id, const std::vector<ICallInfo>& calls,
                           std::uint32_t num_calls);

    /// Brings one call up to date and leaves in the headset state the bit of this event alone: the
    /// arbitrations look at the list.
    void onCallStateUpdate(std::uint32_t state, const std::string& cid, bool ringing);

    /// Sets a call's mute flag, whatever its state. Returns the LED state, or all bits set when no call has
    /// this id.
    std::uint32_t onMuteStateUpdate(bool muted, const std::string& cid);

    // What the headset has to show for all calls together. The first that exists decides:
    //
    //     alerting call         -> ALERTING          no mute
    //     connected call        -> INUSE             that call's mute
    //     ... and a held call   -> INUSE | HOLD      the connected call's mute
    //     held call             -> HOLD              no mute
    //     none of these         -> IDLE              INIT: unmuted, IDLE: no mute

    /// A headset became ready, or all calls were replaced.
    void arbitrateHeadsetINIT(const Channel& send_state, const Channel& send_mute);
    /// The call ended. Without any call left, sends IDLE and unmuted.
    void arbitrateHeadsetIDLE(const std::string& cid, const Channel& send_state, const Channel& send_mute);
    /// A call was held: sends HOLD, with INUSE while another call is connected, and never a mute. A ringing
    /// call does not matter here.
    void arbitrateHeadsetHOLD(const std::string& cid, const Channel& send_state, const Channel& send_mute);
    /// The call was muted: sends 1 if it is connected.
    void arbitrateHeadsetMUTE(const std::string& cid, const Channel& send_mute);
    /// The call was unmuted: sends 0 if it is connected.
    void arbitrateHeadsetUNMUTE(const std::string& cid, const Channel& send_mute);

    // What a key press means.

    /// The action for a key report value and, in `cid_out`, the call that it concerns; `cid_out` stays as it
    /// is when there is none. A mute key flips the call's mute flag at once.
    CallAction mapKeyToCallAction(std::string& cid_out, std::int16_t value);

    /// What a key that is no call action is: 2 the function key, 1 the configuration key, 0 neither. Looks at
    /// no call.
    static std::uint32_t mapKeyToSecondaryEvent(std::string& cid_out, std::int16_t value);

    // Questions.

    /// How often an update of a call or of all calls has come: a decision that was made before the last one
    /// may be out of date.
    std::uint32_t list_changes() const { return list_changes_; }
    std::int32_t getHeadsetLedState();
    bool isCallMuted(const std::string& cid);
    /// Copies the id of the first call in `state` into `cid_out`, or empties it. Returns `cid_out`.
    std::string& getCidByState(std::string& cid_out, std::uint32_t state);
    /// Works the headset state and the mute state out from the whole list.
    void refreshHeadsetState();

  private:
    using CallRecord = std::shared_ptr<ICallInfo>;

    struct Decision {
        std::uint32_t state = HEADSET_STATE_IDLE;
        bool muted = false;
        bool send_mute = false;
    };

    /// What an arbitration of the mute state logs.
    struct MuteLines {
        const char* function;
        const char* no_call;
        const char* not_connected;
        const char* connected;
    };

    CallRecord findCallById(const std::string& cid) const REQUIRES(mutex_);
    CallRecord findCallByState(std::uint32_t state) const REQUIRES(mutex_);
    Decision decide(const char* function, const Decision& without_calls) const REQUIRES(mutex_);
    Decision decide_after_end(const char* function, const std::string& cid) const REQUIRES(mutex_);
    bool shows_mute(const MuteLines& lines, const std::string& cid) EXCLUDES(mutex_);
    static void send(const char* function, const Decision& decision, const Channel& send_state,
                     const Channel& send_mute);

    std::atomic<std::uint32_t> list_changes_{0};  // written with the mutex held
    platform::Mutex mutex_;
    std::vector<CallRecord> call_list_ GUARDED_BY(mutex_);
    std::unique_ptr<headset_cc> headset_cc_ GUARDED_BY(mutex_);
};

}  // namespace headset_plugin
