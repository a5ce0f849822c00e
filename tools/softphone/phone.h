// The calling client proper: keeps the list of calls and has the plug-in told of every change.
#pragma once

#include <memory>
#include <string>

#include "tools/softphone/call_list.h"
#include "tools/softphone/host.h"

namespace softphone {

class Phone {
  public:
    Phone(CallList& calls, Host& host, std::shared_ptr<EventQueue> events);

    void create(const std::string& cid, int direction);
    void incoming(const std::string& cid, bool ringing);
    /// Throws CommandError if the step needs the call and there is no such call.
    void perform(CallStep step, const std::string& cid);
    void choose(const AudioDevice& device);
    void sync();

    /// Does what the user asks for at the headset. A request for a call that is over by now is dropped: it
    /// was on its way when the call ended.
    void answer(const ActionRequested& request);

  private:
    void change(const std::string& cid, const std::function<void(Call&)>& change);

    CallList& calls_;
    Host& host_;
    std::shared_ptr<EventQueue> events_;
    AudioDevice device_;
};

}  // namespace softphone
