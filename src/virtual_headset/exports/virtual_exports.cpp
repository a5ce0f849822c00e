// The C functions of virtual_headset.h: thin wrappers of the virtual bus.

#include <algorithm>
#include <array>
#include <span>
#include <string>

#include "orvex/virtual_headset.h"
#include "virtual_headset/models/model.h"
#include "virtual_headset/virtual_bus.h"

namespace {

using platform::virtual_headsets::HeadsetModel;
using platform::virtual_platform::Event;
using platform::virtual_platform::EventKind;
using platform::virtual_platform::Failure;
using platform::virtual_platform::Fault;
using platform::virtual_platform::headset_bus;
using platform::virtual_platform::HeadsetDescription;
using platform::virtual_platform::VirtualBus;

std::string& last_error() {
    thread_local std::string text;
    return text;
}

int fail(const Failure& failure) {
    last_error() = failure;
    return -1;
}

/// 0 for success, which an empty text stands for.
int status(const Failure& failure) {
    return failure.empty() ? 0 : fail(failure);
}

/// 1 or 0, or the failure where there is no answer.
int answer(const std::optional<bool>& value, const char* without) {
    return value ? int{*value} : fail(without);
}

constexpr const char* no_such_headset = "there is no such headset";
constexpr const char* no_such_indicator = "there is no such headset, or it has no such indicator";

/// Runs the body of a C function, which must not throw.
template <typename Result, typename Body>
Result guarded(Result failure, const Body& body) noexcept {
    try {
        return body();
    } catch (const std::exception& error) {
        try {
            last_error() = error.what();
        } catch (...) {
            return failure;  // not even memory for the text
        }
        return failure;
    }
}

std::optional<std::string> optional_text(const char* text) {
    return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

int plug(const HeadsetDescription& description) {
    Failure failure;
    const auto headset = headset_bus().plug(description, failure);
    return headset ? *headset : fail(failure);
}

/// A text of a headset's description, kept for the calling thread.
const char* description_text(int headset, std::optional<std::string> HeadsetDescription::*member,
                             std::string& kept) {
    const auto description = headset_bus().description(headset);
    if (!description) {
        fail(no_such_headset);
        return nullptr;
    }
    kept = ((*description).*member).value_or("");
    return kept.c_str();
}

std::uint64_t microseconds(std::chrono::steady_clock::time_point time) {
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(time.time_since_epoch()).count());
}

constexpr std::array event_kinds = {
    std::pair{EventKind::plugged, ORVEX_VIRTUAL_PLUGGED},
    std::pair{EventKind::unplugged, ORVEX_VIRTUAL_UNPLUGGED},
    std::pair{EventKind::output, ORVEX_VIRTUAL_OUTPUT},
    std::pair{EventKind::input, ORVEX_VIRTUAL_INPUT},
    std::pair{EventKind::indicator, ORVEX_VIRTUAL_INDICATOR},
    std::pair{EventKind::unexpected, ORVEX_VIRTUAL_UNEXPECTED},
};

constexpr std::array faults = {
    std::pair{ORVEX_VIRTUAL_FAULT_NONE, Fault::none},
    std::pair{ORVEX_VIRTUAL_FAULT_OPEN_REFUSED, Fault::open_refused},
    std::pair{ORVEX_VIRTUAL_FAULT_WRITE_HANGS, Fault::write_hangs},
    std::pair{ORVEX_VIRTUAL_FAULT_WRITE_FAILS, Fault::write_fails},
    std::pair{ORVEX_VIRTUAL_FAULT_READ_FAILS, Fault::read_fails},
    std::pair{ORVEX_VIRTUAL_FAULT_READ_ONE_BYTE, Fault::read_one_byte},
    std::pair{ORVEX_VIRTUAL_FAULT_UNPLUG_IN_OPEN, Fault::unplug_in_open},
    std::pair{ORVEX_VIRTUAL_FAULT_UNPLUG_IN_WRITE, Fault::unplug_in_write},
};

orvex_virtual_event to_c(const Event& event) {
    const auto kind = std::find_if(event_kinds.begin(), event_kinds.end(),
                                   [&](const auto& row) { return row.first == event.kind; });
    return {.kind = kind->second,
            .headset = event.headset,
            .time_us = microseconds(event.time),
            .report = event.report.empty() ? nullptr : event.report.data(),
            .report_length = event.report.size(),
            .usage_page = event.indicator.page,
            .usage = event.indicator.usage,
            .on = event.on ? 1 : 0,
            .text = event.text.empty() ? nullptr : event.text.c_str()};
}

}  // namespace

extern "C" {

const char* orvex_virtual_model(size_t index) {
    const auto models = platform::virtual_headsets::models();
    return index < models.size() ? models[index]->key : nullptr;
}

const char* orvex_virtual_model_product(const char* model) {
    const HeadsetModel* const found =
        model == nullptr ? nullptr : platform::virtual_headsets::find_model(model);
    return found == nullptr ? nullptr : found->product;
}

int orvex_virtual_plug(const char* model, const char* serial) {
    return guarded(-1, [&] {
        const HeadsetModel* const found =
            model == nullptr ? nullptr : platform::virtual_headsets::find_model(model);
        if (found == nullptr) {
            return fail("there is no model of this name");
        }
        return plug({found->descriptor, found->vendor_id, found->product_id, found->manufacturer,
                     found->product, serial == nullptr ? found->serial : serial});
    });
}

int orvex_virtual_plug_device(const struct orvex_virtual_device* device) {
    return guarded(-1, [&] {
        if (device == nullptr || device->descriptor == nullptr) {
            return fail("there is no descriptor");
        }
        return plug({{device->descriptor, device->descriptor + device->descriptor_length},
                     device->vendor_id,
                     device->product_id,
                     optional_text(device->manufacturer),
                     optional_text(device->product),
                     optional_text(device->serial)});
    });
}

int orvex_virtual_unplug(int headset) {
    return guarded(-1, [&] { return status(headset_bus().unplug(headset)); });
}

int orvex_virtual_replug(int headset) {
    return guarded(-1, [&] { return status(headset_bus().replug(headset)); });
}

const char* orvex_virtual_serial(int headset) {
    thread_local std::string kept;
    return guarded(static_cast<const char*>(nullptr),
                   [&] { return description_text(headset, &HeadsetDescription::serial, kept); });
}

const char* orvex_virtual_product(int headset) {
    thread_local std::string kept;
    return guarded(static_cast<const char*>(nullptr),
                   [&] { return description_text(headset, &HeadsetDescription::product, kept); });
}

int orvex_virtual_press(int headset, uint16_t usage_page, uint16_t usage) {
    return guarded(-1, [&] { return status(headset_bus().press(headset, {usage_page, usage})); });
}

int orvex_virtual_set_key(int headset, uint16_t usage_page, uint16_t usage, int pressed) {
    return guarded(-1, [&] {
        return status(headset_bus().set_key(headset, {usage_page, usage}, pressed != 0));
    });
}

int orvex_virtual_send_report(int headset, const uint8_t* report, size_t length) {
    return guarded(-1, [&] {
        return status(headset_bus().send_report(headset, std::span(report, report == nullptr ? 0 : length)));
    });
}

int orvex_virtual_indicator(int headset, uint16_t usage_page, uint16_t usage) {
    return guarded(-1, [&] {
        return answer(headset_bus().indicator(headset, {usage_page, usage}), no_such_indicator);
    });
}

int orvex_virtual_wait_indicator(int headset, uint16_t usage_page, uint16_t usage, int on, int timeout_ms) {
    return guarded(-1, [&] {
        return answer(headset_bus().wait_indicator(headset, {usage_page, usage}, on != 0,
                                                   VirtualBus::Limit(timeout_ms)),
                      no_such_indicator);
    });
}

int orvex_virtual_output_count(int headset) {
    return guarded(-1, [&] {
        const auto outputs = headset_bus().outputs(headset);
        return outputs ? static_cast<int>(outputs->size()) : fail(no_such_headset);
    });
}

int orvex_virtual_output(int headset, int index, uint8_t* report, size_t length, uint64_t* time_us) {
    return guarded(-1, [&] {
        const auto outputs = headset_bus().outputs(headset);
        if (!outputs || index < 0 || static_cast<std::size_t>(index) >= outputs->size() ||
            (report == nullptr && length > 0)) {
            return fail("there is no such report, or no room for it");
        }
        const auto& record = (*outputs)[static_cast<std::size_t>(index)];
        std::copy_n(record.report.begin(), std::min(length, record.report.size()), report);
        if (time_us != nullptr) {
            *time_us = microseconds(record.time);
        }
        return static_cast<int>(record.report.size());
    });
}

int orvex_virtual_wait_outputs(int headset, int count, int timeout_ms) {
    return guarded(-1, [&] {
        return answer(headset_bus().wait_outputs(headset, static_cast<std::size_t>(std::max(count, 0)),
                                                 VirtualBus::Limit(timeout_ms)),
                      no_such_headset);
    });
}

int orvex_virtual_expect(int headset, const uint8_t* report, size_t length) {
    return guarded(-1, [&] {
        return status(headset_bus().expect(headset, std::span(report, report == nullptr ? 0 : length)));
    });
}

int orvex_virtual_verify(int headset, int timeout_ms) {
    return guarded(-1, [&] { return status(headset_bus().verify(headset, VirtualBus::Limit(timeout_ms))); });
}

int orvex_virtual_misbehave(int headset, enum orvex_virtual_fault fault) {
    return guarded(-1, [&] {
        const auto known =
            std::find_if(faults.begin(), faults.end(), [&](const auto& row) { return row.first == fault; });
        return known == faults.end() ? fail("there is no such fault")
                                     : status(headset_bus().misbehave(headset, known->second));
    });
}

void orvex_virtual_watch(orvex_virtual_watcher watcher, void* user) {
    guarded(-1, [&] {
        if (watcher == nullptr) {
            headset_bus().watch(nullptr);
        } else {
            headset_bus().watch([watcher, user](const Event& event) {
                const orvex_virtual_event told = to_c(event);
                watcher(&told, user);
            });
        }
        return 0;
    });
}

void orvex_virtual_reset(void) {
    guarded(-1, [] {
        headset_bus().reset();
        return 0;
    });
}

const char* orvex_virtual_error(void) {
    return last_error().c_str();
}

}  // extern "C"
