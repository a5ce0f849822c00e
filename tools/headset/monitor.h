// The reports of a headset as they come.
#pragma once

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/mutex.h"
#include "tools/headset/decode.h"
#include "tools/headset/encode.h"
#include "tools/headset/interfaces.h"

namespace headset {

/// A report that came from a headset, or was sent to it by the monitor.
struct SeenReport {
    std::chrono::milliseconds time{};  ///< since the monitor opened the headset
    std::string path{};                ///< of the interface
    HIDP_REPORT_TYPE direction = platform::HidP_Input;
    Bytes bytes{};  ///< byte 0 is the id, 0 where there are none
    std::optional<DecodedReport> decoded{};
    std::string refusal{};  ///< why it could not be decoded
};

class Monitor {
  public:
    /// Gets one report at a time, on any thread.
    using Handler = std::function<void(const SeenReport&)>;

    /// Opens every interface of the nodes. Throws Refused.
    Monitor(System& system, const std::vector<Node>& nodes, Handler handler);

    /// Sends the output reports that set usages, made of empty ones; they go to the handler, too. The usages
    /// are of one interface. Throws Refused.
    void set(std::span<const Assignment> assignments);

    /// Sets usages to 0, as far as the headset takes it, and tells nobody: for the end after a failure.
    void reset(std::span<const Assignment> assignments);

    /// Waits for input reports and hands them on, until end() is called or the headset is gone. Why it is
    /// gone; empty after end(). What the handler throws ends it, too, and is thrown.
    std::string run();

    /// Thread: any. May come before run().
    void end();

  private:
    struct Watched {
        std::string path{};
        std::unique_ptr<platform::HidInterface> interface {};
        Collections collection{};  ///< this one alone
    };

    /// Output reports, and the interface that they are for.
    struct Setting {
        const Watched& watched;
        std::vector<EncodedReport> reports;
    };

    void open(System& system, const std::string& path);
    Setting setting(std::span<const Assignment> assignments) const;
    void read(const Watched& watched);
    void read_until_end(const Watched& watched);
    void tell(const Watched& watched, HIDP_REPORT_TYPE direction, Bytes report);
    void send(const Watched& watched, const Bytes& report);
    void end_with_failure();

    const Handler handler_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::vector<Watched> watched_;

    platform::Mutex mutex_;  ///< held while the handler runs
    std::string loss_ GUARDED_BY(mutex_);
    std::exception_ptr failure_ GUARDED_BY(mutex_);
};

std::string to_text(const SeenReport& report);
Json to_json(const SeenReport& report);

}  // namespace headset
