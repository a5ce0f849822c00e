// One virtual headset: its collections, what its keys and indicators are at the moment, and who has it open.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "virtual_headset/virtual_bus.h"

namespace platform::virtual_platform {

/// One top-level collection.
struct Collection {
    hidp::PreparsedData data;
    HIDP_CAPS caps{};
    std::vector<HIDP_BUTTON_CAPS> input_buttons;
    std::vector<HIDP_BUTTON_CAPS> output_buttons;
    std::set<FullUsage> pressed;  ///< keys that are down

    /// The button capability of this direction that covers a usage, or null.
    const HIDP_BUTTON_CAPS* find_input(FullUsage usage) const;
    const HIDP_BUTTON_CAPS* find_output(FullUsage usage) const;
};

/// Guarded, as a whole, by its bus's mutex.
class VirtualHeadset {
  public:
    VirtualHeadset(int number, HeadsetDescription description, std::vector<Collection> collections);

    /// The path of one collection; the number of the headset stands for the port.
    std::string path(std::size_t collection) const;
    HidInterfaceInfo info(std::size_t collection) const;

    /// The collection that has a key, and the key's report id.
    struct KeyPlace {
        std::size_t collection;
        std::uint8_t report_id;
    };
    std::optional<KeyPlace> find_key(FullUsage key) const;

    /// The input report with this id as the keys are now, as long as the collection's longest; empty when
    /// they do not fit into it.
    std::vector<std::uint8_t> input_report(KeyPlace place) const;

    /// The input report with this id of one collection as its keys are now, in the report's own length; empty
    /// where there is no such report.
    std::vector<std::uint8_t> current_input_report(KeyPlace place) const;

    /// The collection that has an input report of this id and length.
    std::optional<std::size_t> find_input_report(std::uint8_t report_id, std::size_t length) const;

    /// The collection that has an output report of this id; the first where none does.
    std::size_t find_output_report(std::uint8_t report_id) const;

    /// All indicators dark, all keys up, no fault.
    void power_on();

    const int number;
    const HeadsetDescription description;
    std::vector<Collection> collections;
    bool plugged = true;
    Fault fault = Fault::none;
    std::vector<VirtualInterface*> open;  ///< those who have a collection open
    std::map<FullUsage, bool> indicators;
    std::vector<OutputRecord> outputs;
    bool expecting = false;
    std::deque<std::vector<std::uint8_t>> expected;
    Failure unexpected;  ///< the first report that was not the expected one
};

/// Parses a descriptor; without collections, `failure` says why.
std::vector<Collection> parse_collections(std::span<const std::uint8_t> descriptor, Failure& failure);

/// "02 01 00"
std::string hex(std::span<const std::uint8_t> bytes);

}  // namespace platform::virtual_platform
