#include "virtual_headset/virtual_bus.h"

#include <algorithm>

#include "virtual_headset/transport.h"
#include "virtual_headset/virtual_headset.h"
#include "virtual_headset/virtual_interface.h"

namespace platform::virtual_platform {

using std::chrono::steady_clock;

namespace {

const char* const no_such_headset = "there is no such headset";
const char* const not_plugged = "the headset is not plugged in";

bool wanted(std::uint16_t id, std::uint16_t filter) {
    return filter == 0 || id == filter;
}

}  // namespace

VirtualBus::VirtualBus(std::function<void(bool)> device_changed,
                       std::function<std::unique_ptr<Sleeper>()> make_sleeper, Transport* transport)
    : device_changed_(std::move(device_changed)),
      make_sleeper_(std::move(make_sleeper)),
      transport_(transport) {}

VirtualBus::~VirtualBus() = default;

std::shared_ptr<VirtualHeadset> VirtualBus::find(int headset) const {
    const auto found = headsets_.find(headset);
    return found == headsets_.end() ? nullptr : found->second;
}

std::shared_ptr<VirtualHeadset> VirtualBus::find_plugged(int headset, Failure& failure) const {
    auto found = find(headset);
    if (!found) {
        failure = no_such_headset;
    } else if (!found->plugged) {
        failure = not_plugged;
        found = nullptr;
    }
    return found;
}

// ---- plugging

std::optional<int> VirtualBus::plug(const HeadsetDescription& description, Failure& failure) {
    auto collections = parse_collections(description.descriptor, failure);
    if (collections.empty()) {
        return std::nullopt;
    }
    std::shared_ptr<VirtualHeadset> plugged;
    {
        MutexLock lock(mutex_);
        plugged = std::make_shared<VirtualHeadset>(++last_number_, description, std::move(collections));
        headsets_.emplace(plugged->number, plugged);
        emit({.kind = EventKind::plugged, .headset = plugged->number});
    }
    failure = attach(*plugged);
    if (!failure.empty()) {
        MutexLock lock(mutex_);
        headsets_.erase(plugged->number);
        return std::nullopt;
    }
    return plugged->number;
}

Failure VirtualBus::attach(VirtualHeadset& headset) {
    Failure failure;
    if (transport_ != nullptr) {
        failure = transport_->attach(headset.number, headset.description);
    }
    if (failure.empty()) {
        announce(headset.collections.size(), true);
    } else {
        {
            MutexLock lock(mutex_);
            if (headset.plugged) {  // not unplugged by somebody else meanwhile
                pull_out(headset);
            }
        }
        tell_watcher();
    }
    return failure;
}

Failure VirtualBus::unplug(int headset) {
    std::size_t interfaces = 0;
    {
        MutexLock lock(mutex_);
        Failure failure;
        const auto unplugged = find_plugged(headset, failure);
        if (!unplugged) {
            return failure;
        }
        pull_out(*unplugged);
        interfaces = unplugged->collections.size();
    }
    announce(interfaces, false);
    return {};
}

Failure VirtualBus::replug(int headset) {
    std::shared_ptr<VirtualHeadset> replugged;
    {
        MutexLock lock(mutex_);
        replugged = find(headset);
        if (!replugged) {
            return no_such_headset;
        }
        if (replugged->plugged) {
            return "the headset is plugged in already";
        }
        replugged->power_on();
        emit({.kind = EventKind::plugged, .headset = headset});
    }
    return attach(*replugged);
}

void VirtualBus::reset() {
    std::size_t interfaces = 0;
    {
        MutexLock lock(mutex_);
        for (const auto& [number, headset] : headsets_) {
            if (headset->plugged) {
                pull_out(*headset);
                interfaces += headset->collections.size();
            }
        }
        headsets_.clear();
        changed_.notify_all();
    }
    announce(interfaces, false);
}

std::optional<HeadsetDescription> VirtualBus::description(int headset) const {
    MutexLock lock(mutex_);
    const auto found = find(headset);
    return found ? std::optional(found->description) : std::nullopt;
}

Failure VirtualBus::misbehave(int headset, Fault fault) {
    MutexLock lock(mutex_);
    const auto found = find(headset);
    if (!found) {
        return no_such_headset;
    }
    if (transport_ != nullptr && !transport_->can_show(fault)) {
        return "headsets of the kernel cannot misbehave like this";
    }
    if (fault == Fault::read_fails || fault == Fault::read_one_byte || fault == Fault::read_zero_bytes) {
        const std::vector<std::uint8_t> too_short(fault == Fault::read_one_byte ? 1 : 0);
        for (VirtualInterface* const open : found->open) {
            fault == Fault::read_fails ? open->fail_read() : open->push(too_short);
        }
        return {};
    }
    found->fault = fault;
    return {};
}

void VirtualBus::pull_out(VirtualHeadset& headset) {
    headset.plugged = false;
    if (transport_ != nullptr) {
        transport_->detach(headset.number);
    }
    for (VirtualInterface* const open : headset.open) {
        open->disconnect();
    }
    emit({.kind = EventKind::unplugged, .headset = headset.number});
    changed_.notify_all();
}

void VirtualBus::announce(std::size_t interfaces, bool arrived) {
    tell_watcher();
    for (std::size_t i = 0; i < interfaces; ++i) {
        device_changed_(arrived);
    }
}

// ---- keys

Failure VirtualBus::set_key(int headset, FullUsage key, bool pressed) {
    Failure failure;
    {
        MutexLock lock(mutex_);
        if (const auto found = find_plugged(headset, failure)) {
            failure = set_key_locked(*found, key, pressed);
        }
    }
    tell_watcher();
    return failure;
}

Failure VirtualBus::press(int headset, FullUsage key) {
    Failure failure;
    {
        MutexLock lock(mutex_);
        if (const auto found = find_plugged(headset, failure)) {
            failure = set_key_locked(*found, key, true);
            if (failure.empty()) {
                failure = set_key_locked(*found, key, false);
            }
        }
    }
    tell_watcher();
    return failure;
}

Failure VirtualBus::set_key_locked(VirtualHeadset& headset, FullUsage key, bool pressed) {
    const auto place = headset.find_key(key);
    if (!place) {
        return "the headset has no such key";
    }
    auto& down = headset.collections[place->collection].pressed;
    if (pressed) {
        down.insert(key);
    } else {
        down.erase(key);
    }
    const auto report = headset.input_report(*place);
    if (report.empty()) {
        down.erase(key);
        return "the key does not fit into its report beside the others that are down";
    }
    deliver(headset, place->collection, report);
    return {};
}

Failure VirtualBus::send_report(int headset, std::span<const std::uint8_t> report) {
    {
        MutexLock lock(mutex_);
        Failure failure;
        const auto found = find_plugged(headset, failure);
        if (!found) {
            return failure;
        }
        const auto collection = found->find_input_report(report.empty() ? 0 : report[0], report.size());
        if (!collection) {
            return "the headset has no input report of this id and length";
        }
        deliver(*found, *collection, report);
    }
    tell_watcher();
    return {};
}

void VirtualBus::deliver(VirtualHeadset& headset, std::size_t collection,
                         std::span<const std::uint8_t> report) {
    const Collection& from = headset.collections[collection];
    const std::size_t length = hidp::report_length(from.data.get(), HidP_Input, report[0]);
    const std::vector<std::uint8_t> sent(report.begin(),
                                         report.begin() + static_cast<std::ptrdiff_t>(length));
    for (VirtualInterface* const open : headset.open) {
        if (open->collection() == collection) {
            // The platform fills shorter reports up to the length of the collection's longest.
            auto delivered = sent;
            delivered.resize(from.caps.InputReportByteLength);
            open->push(std::move(delivered));
        }
    }
    if (transport_ != nullptr) {
        transport_->send(headset.number, sent);
    }
    emit({.kind = EventKind::input, .headset = headset.number, .report = sent});
}

// ---- indicators and output reports

IoResult VirtualBus::take_output(VirtualHeadset& headset, std::size_t collection,
                                 std::span<const std::uint8_t> report) {
    const std::uint8_t report_id = report[0];
    const std::size_t length =
        hidp::report_length(headset.collections[collection].data.get(), HidP_Output, report_id);
    // A report that the descriptor does not know goes to the device as it is; what that makes of it is its
    // business.
    const std::size_t arriving = length == 0 ? report.size() : std::min(length, report.size());
    const std::vector<std::uint8_t> arrived(report.begin(),
                                            report.begin() + static_cast<std::ptrdiff_t>(arriving));
    if (headset.expecting) {
        const std::string wanted_text = headset.expected.empty() ? "none" : hex(headset.expected.front());
        if (headset.expected.empty() || headset.expected.front() != arrived) {
            const Failure text = "wanted report " + wanted_text + ", found " + hex(arrived);
            if (headset.unexpected.empty()) {
                headset.unexpected = text;
            }
            emit({.kind = EventKind::unexpected, .headset = headset.number, .report = arrived, .text = text});
            changed_.notify_all();
            return {.status = IoResult::Status::failed, .error = L"The report was not expected."};
        }
        headset.expected.pop_front();
    }
    headset.outputs.push_back({arrived, report.size(), steady_clock::now()});
    emit({.kind = EventKind::output, .headset = headset.number, .report = arrived});
    update_indicators(headset, collection, arrived);
    changed_.notify_all();
    return {.status = IoResult::Status::done, .size = report.size()};
}

void VirtualBus::update_indicators(VirtualHeadset& headset, std::size_t collection,
                                   std::span<const std::uint8_t> report) {
    const Collection& to = headset.collections[collection];
    std::vector<std::uint8_t> padded(report.begin(), report.end());
    padded.resize(to.caps.OutputReportByteLength);
    for (const HIDP_BUTTON_CAPS& cap : to.output_buttons) {
        const FullUsage indicator{cap.UsagePage, cap.NotRange.Usage};
        const auto state = headset.indicators.find(indicator);
        if (cap.IsRange != 0 || cap.ReportID != report[0] || state == headset.indicators.end()) {
            continue;
        }
        std::vector<USAGE> lit(
            hidp::parser().HidP_MaxUsageListLength(HidP_Output, cap.UsagePage, to.data.get()));
        auto count = static_cast<ULONG>(lit.size());
        hidp::parser().HidP_GetUsages(HidP_Output, cap.UsagePage, 0, lit.data(), &count, to.data.get(),
                                      padded.data(), static_cast<ULONG>(padded.size()));
        const auto end = lit.begin() + std::min<std::ptrdiff_t>(count, std::ssize(lit));
        const bool on = std::find(lit.begin(), end, indicator.usage) != end;
        if (state->second != on) {
            state->second = on;
            emit({.kind = EventKind::indicator, .headset = headset.number, .indicator = indicator, .on = on});
        }
    }
}

std::optional<bool> VirtualBus::indicator(int headset, FullUsage indicator) const {
    MutexLock lock(mutex_);
    const auto found = find(headset);
    if (!found || !found->indicators.contains(indicator)) {
        return std::nullopt;
    }
    return found->indicators.at(indicator);
}

template <typename Predicate>
bool VirtualBus::wait_for(Limit limit, const Predicate& predicate) {
    const auto deadline = steady_clock::now() + limit;
    while (!predicate()) {
        if (steady_clock::now() >= deadline) {
            return false;
        }
        changed_.wait_until(mutex_, deadline);
    }
    return true;
}

std::optional<bool> VirtualBus::wait_indicator(int headset, FullUsage indicator, bool on, Limit limit) {
    MutexLock lock(mutex_);
    const auto found = find(headset);
    if (!found || !found->indicators.contains(indicator)) {
        return std::nullopt;
    }
    return wait_for(limit, [&] { return found->indicators.at(indicator) == on; });
}

std::optional<std::vector<OutputRecord>> VirtualBus::outputs(int headset) const {
    MutexLock lock(mutex_);
    const auto found = find(headset);
    return found ? std::optional(found->outputs) : std::nullopt;
}

std::optional<bool> VirtualBus::wait_outputs(int headset, std::size_t count, Limit limit) {
    MutexLock lock(mutex_);
    const auto found = find(headset);
    if (!found) {
        return std::nullopt;
    }
    return wait_for(limit, [&] { return found->outputs.size() >= count; });
}

Failure VirtualBus::expect(int headset, std::span<const std::uint8_t> report) {
    MutexLock lock(mutex_);
    const auto found = find(headset);
    if (!found) {
        return no_such_headset;
    }
    found->expecting = true;
    found->expected.emplace_back(report.begin(), report.end());
    return {};
}

Failure VirtualBus::verify(int headset, Limit limit) {
    MutexLock lock(mutex_);
    const auto found = find(headset);
    if (!found) {
        return no_such_headset;
    }
    wait_for(limit, [&] { return found->expected.empty() || !found->unexpected.empty(); });
    Failure failure = std::exchange(found->unexpected, {});
    if (failure.empty() && !found->expected.empty()) {
        failure = "wanted report " + hex(found->expected.front()) + ", found none";
    }
    found->expected.clear();
    found->expecting = false;
    return failure;
}

// ---- events

void VirtualBus::emit(Event event) {
    event.time = steady_clock::now();
    events_.push_back(std::move(event));
}

void VirtualBus::tell_watcher() {
    RecursiveMutexLock watching(watcher_mutex_);
    while (true) {
        Event event{};
        {
            MutexLock lock(mutex_);
            if (events_.empty()) {
                return;
            }
            event = std::move(events_.front());
            events_.pop_front();
        }
        if (watcher_) {
            watcher_(event);
        }
    }
}

void VirtualBus::watch(Watcher watcher) {
    RecursiveMutexLock watching(watcher_mutex_);
    watcher_ = std::move(watcher);
}

// ---- the backend's side

std::vector<HidInterfaceInfo> VirtualBus::enumerate(std::uint16_t vendor_id, std::uint16_t product_id) const {
    MutexLock lock(mutex_);
    std::vector<HidInterfaceInfo> list;
    for (const auto& [number, headset] : headsets_) {
        const HeadsetDescription& description = headset->description;
        if (!headset->plugged || !wanted(description.vendor_id, vendor_id) ||
            !wanted(description.product_id, product_id)) {
            continue;
        }
        for (std::size_t i = 0; i < headset->collections.size(); ++i) {
            list.push_back(headset->info(i));
        }
    }
    return list;
}

HidBackend::OpenResult VirtualBus::open(const std::string& path) {
    std::size_t left = 0;
    HidBackend::OpenResult result{nullptr, L"The system cannot find the device specified."};
    {
        MutexLock lock(mutex_);
        for (const auto& [number, headset] : headsets_) {
            for (std::size_t i = 0; headset->plugged && i < headset->collections.size(); ++i) {
                if (headset->path(i) != path) {
                    continue;
                }
                if (headset->fault == Fault::open_refused) {
                    result.error = L"Access is denied.";
                } else if (headset->fault == Fault::unplug_in_open) {
                    pull_out(*headset);
                    left = headset->collections.size();
                    result.error = L"The device is not connected.";
                } else {
                    result.interface = std::make_unique<VirtualInterface>(*this, headset, i);
                }
            }
        }
    }
    announce(left, false);
    return result;
}

// ---- the transport's side

std::vector<std::uint8_t> VirtualBus::input_report(int headset, std::uint8_t report_id) const {
    MutexLock lock(mutex_);
    const auto found = find(headset);
    std::vector<std::uint8_t> report;
    for (std::size_t i = 0; found && found->plugged && report.empty() && i < found->collections.size(); ++i) {
        report = found->current_input_report({i, report_id});
    }
    return report;
}

void VirtualBus::receive_output(int headset, std::span<const std::uint8_t> report) {
    std::size_t left = 0;
    {
        MutexLock lock(mutex_);
        const auto found = find(headset);
        if (!found || !found->plugged || report.empty()) {
            return;
        }
        if (found->fault == Fault::unplug_in_write) {
            pull_out(*found);
            left = found->collections.size();
        } else {
            take_output(*found, found->find_output_report(report[0]), report);
        }
    }
    announce(left, false);
}

}  // namespace platform::virtual_platform
