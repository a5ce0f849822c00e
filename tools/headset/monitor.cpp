#include "tools/headset/monitor.h"

#include <algorithm>
#include <cstdio>
#include <thread>

#include "hid/hid_access.h"
#include "platform/text.h"
#include "platform/thread.h"
#include "tools/common/text.h"
#include "tools/headset/errors.h"

namespace headset {
namespace {

using platform::IoResult;

std::optional<std::vector<EncodedReport>> try_encode(const Collections& collection,
                                                     std::span<const Assignment> assignments) {
    try {
        return encode(collection, platform::HidP_Output, assignments);
    } catch (const Refused&) {
        return std::nullopt;
    }
}

std::string value_text(const DecodedValue& value) {
    return usage_label(value.usage) + " = " +
           (value.scaled ? std::to_string(*value.scaled) : "raw " + std::to_string(value.value));
}

std::string controls_text(const DecodedReport& report) {
    const std::string buttons = tools::join(report.buttons, usage_label);
    const std::string values = tools::join(report.values, value_text);
    if (buttons.empty() && values.empty())
        return "nothing is set";
    return buttons + (buttons.empty() || values.empty() ? "" : ", ") + values;
}

}  // namespace

Monitor::Monitor(System& system, const std::vector<Node>& nodes, Handler handler)
    : handler_(std::move(handler)) {
    for (const auto& node : nodes)
        for (const auto& info : node.interfaces)
            open(system, info.path);
}

void Monitor::open(System& system, const std::string& path) {
    auto opened = system.open(path);
    if (!opened.interface)
        throw Refused(platform::to_utf8(opened.error) + "; \"headset doctor\" tells what to do");
    Watched watched{path, std::move(opened.interface), {}};
    watched.collection.emplace_back(watched.interface->HidD_GetPreparsedData());
    watched_.push_back(std::move(watched));
}

Monitor::Setting Monitor::setting(std::span<const Assignment> assignments) const {
    for (const auto& watched : watched_)
        if (auto reports = try_encode(watched.collection, assignments))
            return {watched, std::move(*reports)};
    throw Refused("no interface of the headset has these usages in its output reports");
}

void Monitor::set(std::span<const Assignment> assignments) {
    const auto [watched, reports] = setting(assignments);
    for (const auto& report : reports)
        send(watched, report.bytes);
}

void Monitor::reset(std::span<const Assignment> assignments) {
    std::vector<Assignment> zeros(assignments.begin(), assignments.end());
    for (auto& zero : zeros)
        zero.value = 0;
    try {
        const auto [watched, reports] = setting(zeros);
        for (const auto& report : reports)
            watched.interface->write(report.bytes, headset_plugin::hid_write_timeout);
    } catch (const Refused&) {
        // Then nothing was set.
    }
}

void Monitor::send(const Watched& watched, const Bytes& report) {
    const auto sent = watched.interface->write(report, headset_plugin::hid_write_timeout);
    if (sent.status != IoResult::Status::done)
        throw Refused(watched.path + " does not take the report " + tools::to_hex(report) +
                      (sent.error.empty() ? "" : ": " + platform::to_utf8(sent.error)));
    tell(watched, platform::HidP_Output, report);
}

std::string Monitor::run() {
    std::vector<std::thread> readers;
    try {
        for (const auto& watched : watched_)
            readers.push_back(platform::start_thread("headset-monitor", [&] { read_until_end(watched); }));
    } catch (...) {
        end_with_failure();  // the threads that were started are to be joined yet
    }
    for (auto& reader : readers)
        reader.join();
    platform::MutexLock lock(mutex_);
    if (failure_)
        std::rethrow_exception(failure_);
    return loss_;
}

void Monitor::end() {
    for (const auto& watched : watched_)
        watched.interface->end_reading();
}

void Monitor::read_until_end(const Watched& watched) {
    try {
        read(watched);
        end();
    } catch (...) {
        end_with_failure();
    }
}

void Monitor::end_with_failure() {
    {
        platform::MutexLock lock(mutex_);
        failure_ = std::current_exception();
    }
    end();
}

void Monitor::read(const Watched& watched) {
    // A read wants room, also for a collection that has no input reports: it then waits for the end.
    const auto length = longest_report(watched.collection.front().get(), platform::HidP_Input);
    Bytes buffer(std::max<std::size_t>(length, 1));
    while (true) {
        const auto result = watched.interface->read(buffer, platform::no_timeout);
        if (result.status == IoResult::Status::failed) {
            platform::MutexLock lock(mutex_);
            loss_ = platform::to_utf8(result.error);
        }
        if (result.status != IoResult::Status::done)
            return;
        tell(watched, platform::HidP_Input,
             Bytes(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(result.size)));
    }
}

void Monitor::tell(const Watched& watched, HIDP_REPORT_TYPE direction, Bytes report) {
    const auto time = std::chrono::steady_clock::now() - start_;
    SeenReport seen{std::chrono::duration_cast<std::chrono::milliseconds>(time), watched.path, direction,
                    std::move(report)};
    try {
        seen.decoded = decode(watched.collection, direction, seen.bytes);
    } catch (const Refused& error) {
        seen.refusal = error.what();
    }
    platform::MutexLock lock(mutex_);
    handler_(seen);
}

std::string to_text(const SeenReport& report) {
    char time[32];
    std::snprintf(time, sizeof time, "%9.3f", std::chrono::duration<double>(report.time).count());
    std::string text = std::string(time) +
                       (report.direction == platform::HidP_Input ? "  in   " : "  out  ") +
                       tools::to_hex(report.bytes) + "  ";
    return text +
           (report.decoded ? usage_label(report.decoded->collection) + ": " + controls_text(*report.decoded)
                           : "not decoded: " + report.refusal) +
           '\n';
}

Json to_json(const SeenReport& report) {
    Json json{{"time_ms", report.time.count()},
              {"path", report.path},
              {"direction", to_string(report.direction)},
              {"bytes", tools::to_hex(report.bytes)}};
    if (report.decoded)
        json.update(to_json(*report.decoded));
    else
        json["error"] = report.refusal;
    return json;
}

}  // namespace headset
