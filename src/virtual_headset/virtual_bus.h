// A bus that virtual headsets are plugged into. It behaves as the platform does: every top-level collection
// of a headset is an interface of its own, an input report reaches everybody who has its collection open, an
// output report arrives in the length that the descriptor gives it.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "platform/hid_backend.h"
#include "platform/hidp/hidp.h"
#include "platform/mutex.h"

namespace platform::virtual_platform {

/// What a virtual headset is made from.
struct HeadsetDescription {
    std::vector<std::uint8_t> descriptor;
    std::uint16_t vendor_id = 0;
    std::uint16_t product_id = 0;
    std::optional<std::string> manufacturer;
    std::optional<std::string> product;
    std::optional<std::string> serial;
};

/// How a headset can misbehave. The read faults strike once, the reads that wait.
enum class Fault {
    none,
    open_refused,
    write_hangs,
    write_fails,
    read_fails,
    read_one_byte,
    read_zero_bytes,
    unplug_in_open,
    unplug_in_write,
};

/// A usage with its page.
struct FullUsage {
    USAGE page = 0;
    USAGE usage = 0;
    auto operator<=>(const FullUsage&) const = default;  // NOLINT(modernize-use-nullptr): clang 14 errs
};

enum class EventKind { plugged, unplugged, output, input, indicator, unexpected };

struct Event {
    EventKind kind;
    int headset = 0;
    std::chrono::steady_clock::time_point time{};
    std::vector<std::uint8_t> report{};
    FullUsage indicator{};
    bool on = false;
    std::string text{};
};
using Watcher = std::function<void(const Event&)>;

/// An output report that reached a headset.
struct OutputRecord {
    std::vector<std::uint8_t> report;
    std::size_t written_size = 0;  ///< bytes in the write that carried it
    std::chrono::steady_clock::time_point time;
};

/// Why an operation could not be done; empty when it was.
using Failure = std::string;

class Transport;
class VirtualInterface;
class VirtualHeadset;

/// Thread: any. Reads and writes of the plug-in come in here, too.
class VirtualBus {
  public:
    using Limit = std::chrono::milliseconds;

    /// \param device_changed  told of every interface that arrived (true) or left (false), with no lock held
    /// \param make_sleeper    for writes that hang
    /// \param transport       carries the headsets out of the process, or null; outlives the bus
    VirtualBus(std::function<void(bool arrived)> device_changed,
               std::function<std::unique_ptr<Sleeper>()> make_sleeper, Transport* transport = nullptr);
    ~VirtualBus();

    // Plugging. A headset is a positive number, which stays valid until reset.

    /// Plugs a headset; without one, `failure` says why.
    std::optional<int> plug(const HeadsetDescription& description, Failure& failure);
    Failure unplug(int headset);
    /// Plugs an unplugged headset again, on the same path and with its indicators dark.
    Failure replug(int headset);
    void reset();
    std::optional<HeadsetDescription> description(int headset) const;
    Failure misbehave(int headset, Fault fault);

    // Keys.

    /// Sets a key and leaves it so; sends the report that holds it.
    Failure set_key(int headset, FullUsage key, bool pressed);
    /// Sets a key and clears it again.
    Failure press(int headset, FullUsage key);
    /// Sends an input report as it stands, byte 0 its id.
    Failure send_report(int headset, std::span<const std::uint8_t> report);

    // Indicators and output reports.

    /// Whether an indicator is lit; nothing for one that the headset does not have.
    std::optional<bool> indicator(int headset, FullUsage indicator) const;
    /// Waits until it is; false when the time is over.
    std::optional<bool> wait_indicator(int headset, FullUsage indicator, bool on, Limit limit);
    std::optional<std::vector<OutputRecord>> outputs(int headset) const;
    std::optional<bool> wait_outputs(int headset, std::size_t count, Limit limit);
    /// Has the next report, after those expected earlier, fail unless it is this one.
    Failure expect(int headset, std::span<const std::uint8_t> report);
    /// Waits for all expected reports and ends expecting; says what was wrong.
    Failure verify(int headset, Limit limit);

    /// Sets the receiver of events, in place of an earlier one, which is not running when this returns.
    void watch(Watcher watcher);

    // What the platform's backend needs.

    std::vector<HidInterfaceInfo> enumerate(std::uint16_t vendor_id, std::uint16_t product_id) const;
    HidBackend::OpenResult open(const std::string& path);

    // What the transport needs.

    /// An output report was written to the headset, byte 0 its id (0 for none).
    void receive_output(int headset, std::span<const std::uint8_t> report);
    /// The input report with this id as the headset's keys are now, byte 0 its id (0 for none); empty for no
    /// such report, and for a headset that is not plugged.
    std::vector<std::uint8_t> input_report(int headset, std::uint8_t report_id) const;

  private:
    friend class VirtualInterface;

    std::shared_ptr<VirtualHeadset> find(int headset) const REQUIRES(mutex_);
    std::shared_ptr<VirtualHeadset> find_plugged(int headset, Failure& failure) const REQUIRES(mutex_);
    Failure set_key_locked(VirtualHeadset& headset, FullUsage key, bool pressed) REQUIRES(mutex_);
    void deliver(VirtualHeadset& headset, std::size_t collection, std::span<const std::uint8_t> report)
        REQUIRES(mutex_);
    Failure attach(VirtualHeadset& headset) EXCLUDES(mutex_);
    void pull_out(VirtualHeadset& headset) REQUIRES(mutex_);
    void emit(Event event) REQUIRES(mutex_);
    void update_indicators(VirtualHeadset& headset, std::size_t collection,
                           std::span<const std::uint8_t> report) REQUIRES(mutex_);
    IoResult take_output(VirtualHeadset& headset, std::size_t collection,
                         std::span<const std::uint8_t> report) REQUIRES(mutex_);
    void announce(std::size_t interfaces, bool arrived) EXCLUDES(mutex_);
    void tell_watcher() EXCLUDES(mutex_);
    template <typename Predicate>
    bool wait_for(Limit limit, const Predicate& predicate) REQUIRES(mutex_);

    const std::function<void(bool)> device_changed_;
    const std::function<std::unique_ptr<Sleeper>()> make_sleeper_;
    Transport* const transport_;

    mutable Mutex mutex_;
    Condition changed_;
    int last_number_ GUARDED_BY(mutex_) = 0;
    std::map<int, std::shared_ptr<VirtualHeadset>> headsets_ GUARDED_BY(mutex_);
    std::deque<Event> events_ GUARDED_BY(mutex_);  ///< not told yet

    // Held while the watcher runs, so that events come one at a time and in order; the watcher may cause
    // more.
    RecursiveMutex watcher_mutex_;
    Watcher watcher_ GUARDED_BY(watcher_mutex_);
};

/// The bus that the functions of virtual_headset.h plug into. What a library with these functions is linked
/// with defines it. Lives as long as the process.
VirtualBus& headset_bus();

}  // namespace platform::virtual_platform
