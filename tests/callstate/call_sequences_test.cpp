// Every sequence of call events up to a length, held against a model of its own that says what the headset
// gets to see.

#include <algorithm>
#include <array>
#include <compare>
#include <deque>
#include <gtest/gtest.h>
#include <optional>
#include <set>

#include "tests/callstate/calls.h"

namespace callstate_test {
namespace {

enum class EventKind { ring, go_silent, connect, hold, resume, end, mute, unmute };
constexpr std::array event_names = {"ring",   "go silent", "connect", "hold",
                                    "resume", "end",       "mute",    "unmute"};
constexpr std::array call_ids = {"1", "2", "3"};

struct CallEvent {
    EventKind kind;
    std::size_t call;
};

/// What a headset is sent for one event.
struct Sent {
    std::optional<int> state;
    std::optional<int> mute;
    bool operator==(const Sent&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Sent& sent) {
    const auto text = [](const std::optional<int>& value) { return value ? std::to_string(*value) : "none"; };
    return out << "state " << text(sent.state) << ", mute " << text(sent.mute);
}

/// The calls as the plug-in boundary drives them.
class Boundary {
  public:
    Sent handle(CallEvent event) {
        sent_ = {};
        const std::string cid = call_ids[event.call];
        switch (event.kind) {
            case EventKind::ring:
                update(CALL_STATE_ALERTING, cid, true);
                state_(1);
                break;
            case EventKind::go_silent:
                update(CALL_STATE_ALERTING, cid, false);
                break;
            case EventKind::connect:
            case EventKind::resume:
                update(CALL_STATE_CONNECTED, cid, false);
                state_(2);
                break;
            case EventKind::hold:
                update(CALL_STATE_HOLD, cid, false);
                ccm_.arbitrateHeadsetHOLD(cid, state_, mute_);
                break;
            case EventKind::end:
                update(CALL_STATE_IDLE, cid, false);
                ccm_.arbitrateHeadsetIDLE(cid, state_, mute_);
                break;
            case EventKind::mute:
                ccm_.onMuteStateUpdate(true, cid);
                ccm_.arbitrateHeadsetMUTE(cid, mute_);
                break;
            case EventKind::unmute:
                ccm_.onMuteStateUpdate(false, cid);
                ccm_.arbitrateHeadsetUNMUTE(cid, mute_);
                break;
        }
        return sent_;
    }

    /// What a headset that becomes ready now is sent.
    Sent greet() {
        sent_ = {};
        ccm_.arbitrateHeadsetINIT(state_, mute_);
        return sent_;
    }

  private:
    void update(std::uint32_t state, const std::string& cid, bool ringing) {
        ccm_.onCallStateUpdate(state, cid, ringing);
        ccm_.getHeadsetLedState();
    }

    headset_ccm ccm_;
    Sent sent_;
    const headset_ccm::Channel state_ = [this](int state) { sent_.state = state; };
    const headset_ccm::Channel mute_ = [this](int muted) { sent_.mute = muted; };
};

enum class Doing { nothing, ringing, talking, waiting };

struct KnownCall {
    std::size_t call;
    Doing doing;
    bool muted = false;
    auto operator<=>(const KnownCall&) const = default;
};

/// What the headset has to be told, from what each known call is doing. Where several talk, the one that was
/// known first speaks for all.
class Model {
  public:
    auto operator<=>(const Model&) const = default;

    Sent handle(CallEvent event) {
        switch (event.kind) {
            case EventKind::ring:
                know(event.call).doing = Doing::ringing;
                return {.state = 1, .mute = {}};
            case EventKind::go_silent:
                if (KnownCall* const call = find(event.call)) {
                    call->doing = Doing::nothing;
                }
                return {};
            case EventKind::connect:
            case EventKind::resume:
                know(event.call).doing = Doing::talking;
                return {.state = 2, .mute = {}};
            case EventKind::hold:
                know(event.call).doing = Doing::waiting;
                return {.state = first(Doing::talking) ? 6 : 4, .mute = {}};
            case EventKind::end:
                std::erase_if(known_, [&](const KnownCall& call) { return call.call == event.call; });
                return known_.empty() ? Sent{.state = 0, .mute = 0} : shown(std::nullopt);
            case EventKind::mute:
            case EventKind::unmute:
                return set_mute(find(event.call), event.kind == EventKind::mute);
        }
        return {};
    }

    Sent greet() const { return shown(0); }

  private:
    KnownCall* find(std::size_t wanted) {
        const auto found = std::ranges::find(known_, wanted, &KnownCall::call);
        return found == known_.end() ? nullptr : &*found;
    }

    KnownCall& know(std::size_t call) {
        KnownCall* const found = find(call);
        return found != nullptr ? *found : known_.emplace_back(KnownCall{call, Doing::nothing});
    }

    const KnownCall* first(Doing doing) const {
        const auto found = std::ranges::find(known_, doing, &KnownCall::doing);
        return found == known_.end() ? nullptr : &*found;
    }

    static Sent set_mute(KnownCall* call, bool muted) {
        if (call == nullptr) {
            return {};
        }
        call->muted = muted;
        return call->doing == Doing::talking ? Sent{.state = {}, .mute = muted ? 1 : 0} : Sent{};
    }

    Sent shown(std::optional<int> mute_without_calls) const {
        const bool waiting = first(Doing::waiting) != nullptr;
        if (first(Doing::ringing) != nullptr) {
            return {.state = 1, .mute = {}};
        }
        if (const KnownCall* const talking = first(Doing::talking)) {
            return {.state = waiting ? 6 : 2, .mute = talking->muted ? 1 : 0};
        }
        return waiting ? Sent{.state = 4, .mute = {}} : Sent{.state = 0, .mute = mute_without_calls};
    }

    std::vector<KnownCall> known_;
};

using Events = std::vector<CallEvent>;

Events all_events() {
    Events events;
    for (std::size_t call = 0; call < call_ids.size(); ++call) {
        for (std::size_t kind = 0; kind < event_names.size(); ++kind) {
            events.push_back({static_cast<EventKind>(kind), call});
        }
    }
    return events;
}

std::string to_string(const Events& events) {
    std::string text;
    for (const CallEvent& event : events) {
        text += std::string(text.empty() ? "" : ", ") + event_names[static_cast<std::size_t>(event.kind)] +
                " " + call_ids[event.call];
    }
    return text;
}

/// Drives fresh calls through events and holds what is sent for the last one, and at init after it, against
/// the model. Returns where the model is then.
Model check_last_of(const Events& events) {
    Boundary boundary;
    Model model;
    Sent found;
    Sent wanted;
    for (const CallEvent& event : events) {
        found = boundary.handle(event);
        wanted = model.handle(event);
    }
    EXPECT_EQ(found, wanted) << "for the last of: " << to_string(events);
    EXPECT_EQ(boundary.greet(), model.greet()) << "at init after: " << to_string(events);
    return model;
}

/// Checks every sequence that starts with `events`. Calls differ in nothing but their ids: a sequence in
/// which a call is heard of before the one of the id before it adds nothing, and is left out.
std::size_t check_extensions_of(Events& events, std::size_t length, std::size_t calls_used) {
    std::size_t checked = 0;
    for (const CallEvent& event : all_events()) {
        if (event.call > calls_used || testing::Test::HasFailure()) {
            continue;
        }
        events.push_back(event);
        check_last_of(events);
        ++checked;
        if (events.size() < length) {
            checked += check_extensions_of(events, length, std::max(calls_used, event.call + 1));
        }
        events.pop_back();
    }
    return checked;
}

TEST(CallSequences, of_up_to_four_events_send_what_the_model_says) {
    Events events;
    const std::size_t checked = check_extensions_of(events, 4, 0);
    // Sequences of one to four events are spread over calls in 1, 2, 5 and 14 ways.
    const std::size_t kinds = event_names.size();
    EXPECT_EQ(checked, kinds * (1 + kinds * (2 + kinds * (5 + kinds * 14))));
}

TEST(CallSequences, send_what_the_model_says_for_every_event_in_every_situation_that_they_can_lead_to) {
    std::set<Model> seen = {Model()};
    std::deque<Events> ways = {Events()};  // the shortest to each situation that is still to be tried
    while (!ways.empty() && !HasFailure()) {
        Events events = std::move(ways.front());
        ways.pop_front();
        for (const CallEvent& event : all_events()) {
            events.push_back(event);
            if (seen.insert(check_last_of(events)).second) {
                ways.push_back(events);
            }
            events.pop_back();
        }
    }
    // A known call is in one of four states, muted or not; up to three are known, in any order.
    EXPECT_EQ(seen.size(), 1U + 3 * 8 + 6 * 8 * 8 + 6 * 8 * 8 * 8);
}

}  // namespace
}  // namespace callstate_test
