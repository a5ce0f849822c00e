#include "tools/softphone/virtual_headsets.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace softphone {
namespace {

struct FaultRow {
    const char* name;
    orvex_virtual_fault fault;
};

constexpr std::array fault_rows{
    FaultRow{"none", ORVEX_VIRTUAL_FAULT_NONE},
    FaultRow{"open-refused", ORVEX_VIRTUAL_FAULT_OPEN_REFUSED},
    FaultRow{"write-hangs", ORVEX_VIRTUAL_FAULT_WRITE_HANGS},
    FaultRow{"write-fails", ORVEX_VIRTUAL_FAULT_WRITE_FAILS},
    FaultRow{"read-fails", ORVEX_VIRTUAL_FAULT_READ_FAILS},
    FaultRow{"read-one-byte", ORVEX_VIRTUAL_FAULT_READ_ONE_BYTE},
    FaultRow{"unplug-in-open", ORVEX_VIRTUAL_FAULT_UNPLUG_IN_OPEN},
    FaultRow{"unplug-in-write", ORVEX_VIRTUAL_FAULT_UNPLUG_IN_WRITE},
};

std::string text_or_empty(const char* text) {
    return text ? text : "";
}

}  // namespace

VirtualHeadsets::VirtualHeadsets(const std::optional<VirtualApi>& api, EventQueue& events)
    : api_(api), events_(events) {
    if (api_)
        api_->watch(&VirtualHeadsets::watch, this);
}

VirtualHeadsets::~VirtualHeadsets() {
    if (!api_)
        return;
    api_->watch(nullptr, nullptr);
    api_->reset();
}

int VirtualHeadsets::plug(const std::string& model, const std::optional<std::string>& serial) {
    Words names;
    std::ranges::transform(models(), std::back_inserter(names), &ModelListed::name);
    if (std::ranges::count(names, model) == 0)
        throw CommandError("there is no model " + tools::quoted(model) + "; there are " + join(names));
    const int headset = api().plug(model.c_str(), serial ? serial->c_str() : nullptr);
    check(headset);
    return headset;
}

void VirtualHeadsets::unplug(int headset) {
    check(api().unplug(headset));
}

void VirtualHeadsets::replug(int headset) {
    check(api().replug(headset));
}

void VirtualHeadsets::press(int headset, Usage key) {
    check(api().press(headset, key.page, key.id));
}

void VirtualHeadsets::set_key(int headset, Usage key, bool down) {
    check(api().set_key(headset, key.page, key.id, down ? 1 : 0));
}

void VirtualHeadsets::send_report(int headset, std::span<const std::uint8_t> report) {
    check(api().send_report(headset, report.data(), report.size()));
}

void VirtualHeadsets::misbehave(int headset, const std::string& fault) {
    const auto row = std::ranges::find(fault_rows, fault, &FaultRow::name);
    if (row == fault_rows.end())
        throw CommandError(tools::quoted(fault) + " is no fault; there are " + join(faults()));
    check(api().misbehave(headset, row->fault));
}

std::vector<ModelListed> VirtualHeadsets::models() const {
    std::vector<ModelListed> models;
    for (std::size_t index = 0; const char* name = api().model(index); ++index)
        models.push_back({name, text_or_empty(api().model_product(name))});
    return models;
}

Words VirtualHeadsets::faults() {
    Words names;
    for (const auto& row : fault_rows)
        names.emplace_back(row.name);
    return names;
}

const VirtualApi& VirtualHeadsets::api() const {
    if (!api_)
        throw CommandError("this library has no virtual headsets");
    return *api_;
}

void VirtualHeadsets::check(int result) const {
    if (result < 0)
        throw CommandError(text_or_empty(api().error()));
}

/// Runs on the thread that caused the event, often one of the plug-in's; posts and returns, like a listener.
void VirtualHeadsets::watch(const orvex_virtual_event* event, void* self) {
    auto& headsets = *static_cast<VirtualHeadsets*>(self);
    const int headset = event->headset;
    const Usage usage{event->usage_page, event->usage};
    const auto report = [&] { return Bytes(event->report, event->report + event->report_length); };
    switch (event->kind) {
        case ORVEX_VIRTUAL_PLUGGED:
            headsets.events_.post(Plugged{headset, text_or_empty(headsets.api_->product(headset)),
                                          text_or_empty(headsets.api_->serial(headset)),
                                          headsets.indicators(headset)});
            break;
        case ORVEX_VIRTUAL_UNPLUGGED:
            headsets.events_.post(Unplugged{headset});
            break;
        case ORVEX_VIRTUAL_OUTPUT:
            headsets.events_.post(ReportReceived{headset, report(), headsets.indicators(headset)});
            break;
        case ORVEX_VIRTUAL_INPUT:
            headsets.events_.post(ReportSent{headset, report()});
            break;
        case ORVEX_VIRTUAL_INDICATOR:
            headsets.events_.post(IndicatorChanged{headset, {usage, event->on != 0}});
            break;
        case ORVEX_VIRTUAL_UNEXPECTED:
            // Comes only where reports were announced to the library; expectations are kept on this side.
            break;
    }
}

std::vector<Indicator> VirtualHeadsets::indicators(int headset) const {
    std::vector<Indicator> present;
    for (const auto& [name, usage] : indicator_names())
        if (const int lit = api_->indicator(headset, usage.page, usage.id); lit >= 0)
            present.push_back({usage, lit == 1});
    return present;
}

}  // namespace softphone
