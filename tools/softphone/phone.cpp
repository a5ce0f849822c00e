#include "tools/softphone/phone.h"

#include <array>
#include <utility>

namespace softphone {
namespace {

struct CallStepRow {
    CallStep step;
    void (*change)(Call& call);
    bool needs_call = true;  ///< the others begin a call that is not known
};

// One row per step, in the order of the enumeration.
constexpr std::array call_steps{
    CallStepRow{CallStep::ringback, [](Call& call) { call.phase = CallPhase::ringback; }, false},
    CallStepRow{CallStep::connect, [](Call& call) { call.phase = CallPhase::connected; }, false},
    CallStepRow{CallStep::hold, [](Call& call) { call.phase = CallPhase::held; }},
    CallStepRow{CallStep::resume, [](Call& call) { call.phase = CallPhase::connected; }},
    CallStepRow{CallStep::end, [](Call& call) { call.phase = CallPhase::ended; }},
    CallStepRow{CallStep::mute, [](Call& call) { call.muted = true; }},
    CallStepRow{CallStep::unmute, [](Call& call) { call.muted = false; }},
};

}  // namespace

Phone::Phone(CallList& calls, Host& host, std::shared_ptr<EventQueue> events)
    : calls_(calls), host_(host), events_(std::move(events)) {}

void Phone::create(const std::string& cid, int direction) {
    change(cid, [&](Call& call) { call.direction = direction; });
    host_.create_call(cid, direction);
}

void Phone::incoming(const std::string& cid, bool ringing) {
    change(cid, [&](Call& call) { call.phase = ringing ? CallPhase::ringing : CallPhase::silent; });
    host_.incoming_call(cid, ringing);
}

void Phone::perform(CallStep step, const std::string& cid) {
    const CallStepRow& row = call_steps.at(static_cast<std::size_t>(step));
    if (row.needs_call && !calls_.find(cid))
        throw CommandError("there is no call " + tools::quoted(cid) + "; see calls");
    change(cid, row.change);
    host_.report(step, cid);
}

void Phone::choose(const AudioDevice& device) {
    device_ = device;
    host_.set_audio_device(device);
}

void Phone::sync() {
    host_.sync(device_.id, calls_.to_call_infos());
}

void Phone::answer(const ActionRequested& request) {
    const auto step = answer_to(request.action);
    // A request to hold names no call: it means the one that is up.
    const Call* call = request.cid.empty() ? calls_.first(CallPhase::connected) : calls_.find(request.cid);
    if (step && call)
        perform(*step, std::string(call->cid));
}

void Phone::change(const std::string& cid, const std::function<void(Call&)>& change) {
    events_->post(CallChanged{calls_.update(cid, change)});
}

}  // namespace softphone
