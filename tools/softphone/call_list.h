// The calls of the client, which a host keeps itself: the plug-in is told of them and shows them, no more.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "orvex/headset_plugin.h"

namespace softphone {

enum class CallPhase {
    created,    ///< known, nothing heard yet
    ringing,    ///< an incoming call rings
    silent,     ///< an incoming call that is not to be heard
    ringback,   ///< the far end of an outgoing call rings
    connected,  ///< up
    held,       ///< held
    ended       ///< over; a call of the list never is
};

std::string_view to_string(CallPhase phase);

struct Call {
    std::string cid;
    CallPhase phase = CallPhase::created;
    int direction = 0;
    bool muted = false;
};

/// "42 connected, muted"
std::string to_string(const Call& call);

class CallList {
  public:
    /// Changes the call `cid`, which is added when it is new and leaves the list when it has ended. Returns
    /// it as it is now.
    Call update(const std::string& cid, const std::function<void(Call&)>& change);

    /// The call, or null. Valid until the next change.
    const Call* find(std::string_view cid) const;
    /// The oldest call in this phase, or null.
    const Call* first(CallPhase phase) const;

    std::span<const Call> all() const { return calls_; }

    /// The list as callStateSync() takes it.
    std::vector<plugin_control::ICallInfo> to_call_infos() const;

  private:
    std::vector<Call> calls_;
};

}  // namespace softphone
