#include "tools/softphone/state.h"

#include <algorithm>

namespace softphone {
namespace {

constexpr std::size_t log_capacity = 10'000;
constexpr std::size_t recent_capacity = 8;

void add_recent(std::deque<std::string>& recent, std::string text) {
    recent.push_back(std::move(text));
    if (recent.size() > recent_capacity)
        recent.pop_front();
}

/// Takes an event into the state. Of most kinds nothing is kept.
struct Applier {
    State& state;

    template <class Other>
    void operator()(const Other& /*event*/) const {}

    void operator()(const LogLine& event) const {
        state.log.add(event.text);
        state.headsets.take_log_line(event.text);
    }

    void operator()(const ActionRequested& event) const {
        state.unclaimed.actions.push_back(event);
        add_recent(state.recent_actions,
                   std::string(to_string(event.action)) + (event.cid.empty() ? "" : " " + event.cid));
    }

    void operator()(const KeyWorked& event) const {
        add_recent(state.recent_keys,
                   event.movement == "pressed" ? event.key : event.key + " " + event.movement);
    }

    void operator()(const HeadsetReady& event) const {
        state.unclaimed.ready.push_back(event.notice);
        state.headsets.set_ready(&find_or_add(event.notice));
    }

    void operator()(const HeadsetRemoved& event) const {
        state.unclaimed.removed.push_back(event.notice);
        if (Headset* headset = state.headsets.find_serial(event.notice.serial)) {
            headset->ready = false;
            // Of a real headset there is no other news; a virtual one may be plugged again by now.
            if (headset->number == 0)
                headset->plugged = false;
        }
    }

    void operator()(const Plugged& event) const {
        Headset* headset = state.headsets.find_number(event.headset);
        if (!headset)
            headset = &state.headsets.add(event.headset, "headset");
        headset->product = event.product;
        headset->serial = event.serial;
        headset->indicators = event.indicators;
        headset->plugged = true;
        headset->last_report.clear();
    }

    void operator()(const Unplugged& event) const {
        if (Headset* headset = state.headsets.find_number(event.headset)) {
            headset->plugged = false;
            std::ranges::for_each(headset->indicators, [](Indicator& indicator) { indicator.lit = false; });
        }
    }

    void operator()(const ReportReceived& event) const {
        state.unclaimed.reports[event.headset].push_back(event.report);
        if (Headset* headset = state.headsets.find_number(event.headset))
            headset->last_report = to_hex(event.report);
    }

    void operator()(const IndicatorChanged& event) const {
        Headset* headset = state.headsets.find_number(event.headset);
        if (!headset)
            return;
        for (auto& indicator : headset->indicators)
            if (indicator.usage == event.indicator.usage)
                indicator.lit = event.indicator.lit;
    }

  private:
    Headset& find_or_add(const DeviceNotice& notice) const {
        if (Headset* known = state.headsets.find_serial(notice.serial)) {
            // A virtual headset's own news says whether it is plugged.
            known->plugged = known->plugged || known->number == 0;
            return *known;
        }
        return state.headsets.add_found({notice.device_name, notice.serial});
    }
};

}  // namespace

void LogBook::add(std::string line) {
    lines_.push_back(std::move(line));
    if (lines_.size() > log_capacity) {
        lines_.pop_front();
        next_ -= std::min<std::size_t>(next_, 1);
    }
}

std::deque<std::string> LogBook::tail(std::size_t count) const {
    const auto shown = static_cast<std::ptrdiff_t>(std::min(count, lines_.size()));
    return {lines_.end() - shown, lines_.end()};
}

std::optional<std::string> LogBook::find_next(std::string_view text) {
    const auto found = std::find_if(lines_.begin() + static_cast<std::ptrdiff_t>(next_), lines_.end(),
                                    [&](const std::string& line) { return line.find(text) != line.npos; });
    if (found == lines_.end())
        return std::nullopt;
    next_ = static_cast<std::size_t>(found - lines_.begin()) + 1;
    return *found;
}

void State::apply(const Event& event) {
    std::visit(Applier{*this}, event);
}

}  // namespace softphone
