#include "tests/docs/device_tables.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/headset_types.h"
#include "device/device.h"
#include "drivers/driver_factory.h"
#include "drivers/jabra_cc.h"
#include "drivers/logitech_cc.h"
#include "hid/hid_access.h"
#include "tests/docs/markdown_table.h"
#include "tests/docs/words.h"
#include "virtual_headset/models/model.h"
#include "virtual_headset/platform/virtual_platform.h"

namespace docs {
namespace {

using namespace headset_plugin;
using platform::virtual_headsets::HeadsetModel;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint16_t led_page = 0x08;
constexpr std::uint16_t telephony_page = 0x0B;
constexpr std::uint16_t last_telephony_usage = 0x15D;  // HID Usage Tables, section 14

// ---- the filter of hook keys

bool g_passed = false;

void note_key(std::uint16_t /*key*/, const std::string& /*serial*/) {
    g_passed = true;
}

bool passes(device& headset, std::int32_t key) {
    constexpr std::uint32_t key_report = 8;
    g_passed = false;
    headset.handle_key_report(key_report, static_cast<std::uint32_t>(key));
    return g_passed;
}

constexpr std::int32_t no_hook_key = -1;

/// Whether a key passes in a state, after a hook key that was let through in the state that it belongs to.
bool passes_after(std::int32_t last_hook_key, std::uint32_t state, std::int32_t key) {
    const auto headset = std::make_shared<device>(0, 0, L"", "", 0);
    if (last_hook_key != no_hook_key) {
        headset->headset_set_state(last_hook_key == HEADSET_KEY_HOOK ? HEADSET_STATE_ALERTING
                                                                     : HEADSET_STATE_INUSE);
        passes(*headset, last_hook_key);
    }
    headset->headset_set_state(state);
    if (headset->last_hook_key() != last_hook_key) {
        throw std::runtime_error("the last hook key cannot be had in this state");
    }
    return passes(*headset, key);
}

// ---- drivers

/// The dialect of logitech_cc, which is no driver, in a driver's place.
class LogitechDriver final : public call_control_generic {
  public:
    using call_control_generic::call_control_generic;
    std::int32_t set_led_event_data(std::uint32_t state, std::span<std::uint8_t> output) override {
        return dialect_.set_led_event_data(state, output);
    }
    std::int32_t process_read(std::span<const std::uint8_t> report) override {
        return dialect_.process_read(report);
    }
    std::int32_t set_mute_data(bool mute, std::span<std::uint8_t> output) override {
        return dialect_.set_mute_data(mute, output);
    }

  private:
    logitech_cc dialect_;
};

template <typename T>
Driver make(std::uint32_t product_id) {
    return std::make_shared<T>(product_id);
}

/// Products that a dormant driver treats alike, by the id of one of them.
struct Family {
    const char* driver;
    const char* products;
    std::uint32_t product_id;
    Driver (*make_driver)(std::uint32_t product_id);
};

constexpr Family families[] = {
    {"plt_cc", "02xx", 0x0200, create_plantronics_driver},
    {"plt_cc", "ABxx", 0xAB00, create_plantronics_driver},
    {"plt_cc", "ACxx", 0xAC00, create_plantronics_driver},
    {"plt_cc", "others", 0x0100, create_plantronics_driver},
    {"plt_blackwire_cc", "C0xx", 0xC000, create_plantronics_driver},
    {"plt_blackwire_7225_cc", "43xx", 0x4300, create_plantronics_driver},
    {"jabra_cc", "0041", 0x0041, make<jabra_cc>},
    {"jabra_cc", "other 00xx", 0x0000, make<jabra_cc>},
    {"jabra_cc", "245D, 245E", 0x245D, make<jabra_cc>},
    {"jabra_cc", "A346", 0xA346, make<jabra_cc>},
    {"jabra_cc", "other A3xx", 0xA300, make<jabra_cc>},
    {"jabra_cc", "others", 0x0100, make<jabra_cc>},
    {"logitech_cc", "all", 0x0000, make<LogitechDriver>},
};

using Build = std::function<std::int32_t(std::span<std::uint8_t>)>;

/// The report that a driver builds in a buffer such as its headset gives it.
Bytes built(const Build& build, std::size_t room) {
    constexpr std::size_t smallest_room = 4;
    Bytes buffer(std::max(room, smallest_room));
    const std::int32_t length = build(buffer);
    buffer.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return buffer;
}

/// A driver that is new to its headset, and the headset's open handle for one that asks its descriptor.
struct FreshDriver {
    Driver driver;
    HidHandle handle{};

    Bytes show(std::uint32_t state) {
        return built([&](auto output) { return driver->set_led_event_data(state, output); }, room());
    }
    Bytes show_mute(bool mute) {
        return built([&](auto output) { return driver->set_mute_data(mute, output); }, room());
    }
    Bytes toggle(std::uint32_t bit) {
        return built([&](auto output) { return driver->toggle_led(bit, output); }, room());
    }
    std::size_t room() const { return hid_output_report_length(handle.get()); }
};

using MakeDriver = std::function<FreshDriver()>;

// ---- reports

const Cells report_header = {"IDLE", "ALERTING", "INUSE",         "INUSE + HOLD",
                             "HOLD", "muted",    "unmuted again", "INUSE while muted"};

/// The reports for every state, and those of mute in a call, in the columns of `report_header`.
Cells reports_of(const MakeDriver& make_driver) {
    Cells cells;
    for (const std::uint32_t state : {HEADSET_STATE_IDLE, HEADSET_STATE_ALERTING, HEADSET_STATE_INUSE,
                                      HEADSET_STATE_INUSE | HEADSET_STATE_HOLD, HEADSET_STATE_HOLD}) {
        cells.push_back(report_words(make_driver().show(state)));
    }
    FreshDriver driver = make_driver();
    driver.show(HEADSET_STATE_INUSE);
    cells.push_back(report_words(driver.show_mute(true)));
    cells.push_back(report_words(driver.show_mute(false)));
    driver.show_mute(true);
    cells.push_back(report_words(driver.show(HEADSET_STATE_INUSE)));
    return cells;
}

MakeDriver maker_of(const Family& family) {
    return [&family] { return FreshDriver{family.make_driver(family.product_id)}; };
}

// ---- models

platform::virtual_platform::VirtualBus& bus() {
    return platform::virtual_platform::virtual_platform().bus();
}

/// A headset of a model, and the path of its telephony collection.
struct PluggedModel {
    const HeadsetModel& model;
    int headset;
    std::string path;

    /// A handle keeps what was lit, so that each driver gets one of its own.
    FreshDriver make_driver() const {
        FreshDriver fresh{create_driver(model.vendor_id, model.product_id), hid_open_handle(path.c_str())};
        fresh.driver->set_hid_device(fresh.handle);
        return fresh;
    }
};

int plug(const HeadsetModel& model) {
    platform::virtual_platform::Failure failure;
    const auto headset = bus().plug({.descriptor = model.descriptor,
                                     .vendor_id = model.vendor_id,
                                     .product_id = model.product_id,
                                     .manufacturer = model.manufacturer,
                                     .product = model.product,
                                     .serial = model.serial},
                                    failure);
    if (!headset) {
        throw std::runtime_error(failure);
    }
    return *headset;
}

/// Nothing for a model without a telephony collection.
std::optional<PluggedModel> plugged(const HeadsetModel& model) {
    bus().reset();
    const int headset = plug(model);
    for (const auto& interface : bus().enumerate(0, 0)) {
        if (interface.usage_page == telephony_page) {
            return PluggedModel{model, headset, interface.path};
        }
    }
    return std::nullopt;
}

template <typename Action>
void for_each_standard_model(const Action& action) {
    for (const HeadsetModel* model : platform::virtual_headsets::models()) {
        if (create_driver(model->vendor_id, model->product_id)) {
            if (const auto headset = plugged(*model)) {
                action(*headset);
            }
        }
    }
    bus().reset();
}

// ---- keys

Bytes read_report(const FreshDriver& driver) {
    Bytes report(64);
    const int length = hid_read_report(driver.handle.get(), report, std::chrono::milliseconds(0));
    report.resize(static_cast<std::size_t>(std::max(length, 0)));
    return report;
}

struct ReadKey {
    Bytes report;
    std::int32_t key;
};

/// What a driver reads while a key of the telephony page is pressed and released; nothing without such a key.
std::vector<ReadKey> keys_of_press(const PluggedModel& plugged_model, std::uint16_t usage) {
    const FreshDriver driver = plugged_model.make_driver();
    std::vector<ReadKey> keys;
    if (!bus().press(plugged_model.headset, {telephony_page, usage}).empty()) {
        return keys;
    }
    for (Bytes report = read_report(driver); !report.empty(); report = read_report(driver)) {
        keys.push_back({report, driver.driver->process_read(report)});
    }
    return keys;
}

std::string press_words(const PluggedModel& plugged_model, std::uint16_t usage) {
    Cells words;
    for (const auto& [report, key] : keys_of_press(plugged_model, usage)) {
        words.push_back(report_words(report) + " " + key_words(key));
    }
    return joined(words, ", ");
}

// ---- what is supported

/// Something that a user may ask for, and the keys that ask for it with some calls or others.
struct SupportedRequest {
    const char* words;
    std::array<std::int32_t, 2> keys;
};

constexpr SupportedRequest supported_requests[] = {
    {"Answer", {HEADSET_KEY_HOOK, HEADSET_KEY_4}},
    {"End", {HEADSET_KEY_END_CALL, HEADSET_KEY_END_CALL}},
    {"Reject", {HEADSET_KEY_LOGITECH_8, HEADSET_KEY_LOGITECH_8}},
    {"Hold", {HEADSET_KEY_4, HEADSET_KEY_4}},
    {"Mute", {HEADSET_KEY_MUTE, HEADSET_KEY_MUTE}},
};

/// An indicator of the LED page (HID Usage Tables, section 11), and what should light it.
struct SupportedIndicator {
    const char* words;
    std::uint16_t usage;
    std::uint32_t state;
    bool muted;
};

constexpr SupportedIndicator supported_indicators[] = {
    {"Call indicator", 0x17, HEADSET_STATE_INUSE, false},
    {"Mute indicator", 0x09, HEADSET_STATE_INUSE, true},
    {"Ring indicator", 0x18, HEADSET_STATE_ALERTING, false},
    {"Hold indicator", 0x20, HEADSET_STATE_HOLD, false},
};

const char* yes_or_no(bool is_so) {
    return is_so ? "**yes**" : "no";
}

/// The keys that its driver reads while every key of the headset is pressed.
std::set<std::int32_t> keys_of(const PluggedModel& headset) {
    std::set<std::int32_t> keys;
    for (std::uint16_t usage = 1; usage <= last_telephony_usage; ++usage) {
        for (const ReadKey& read : keys_of_press(headset, usage)) {
            keys.insert(read.key);
        }
    }
    return keys;
}

void send(const FreshDriver& driver, const Bytes& report) {
    if (!report.empty()) {
        hid_write_report(driver.handle.get(), report);
    }
}

bool lights(const PluggedModel& headset, const SupportedIndicator& indicator) {
    FreshDriver driver = headset.make_driver();
    send(driver, driver.show(HEADSET_STATE_IDLE));
    send(driver, driver.show(indicator.state));
    send(driver, driver.show_mute(indicator.muted));
    return bus().indicator(headset.headset, {led_page, indicator.usage}).value_or(false);
}

/// The cells of a headset, in the order of `supported_requests` and `supported_indicators`.
Cells support_of(const HeadsetModel& model) {
    const bool has_driver = create_driver(model.vendor_id, model.product_id) != nullptr;
    const auto headset = has_driver ? plugged(model) : std::nullopt;
    const std::set<std::int32_t> keys = headset ? keys_of(*headset) : std::set<std::int32_t>{};
    Cells cells;
    for (const SupportedRequest& request : supported_requests) {
        cells.emplace_back(yes_or_no(
            std::ranges::any_of(request.keys, [&](std::int32_t key) { return keys.contains(key); })));
    }
    for (const SupportedIndicator& indicator : supported_indicators) {
        cells.emplace_back(yes_or_no(headset && lights(*headset, indicator)));
    }
    return cells;
}

/// The values of byte 1 by their keys, for one report id.
using KeyValues = std::map<std::int32_t, Bytes>;

KeyValues key_values(const Family& family, std::uint8_t report_id) {
    const Driver driver = family.make_driver(family.product_id);
    KeyValues keys;
    for (unsigned value = 0; value <= 0xFF; ++value) {
        const Bytes report = {report_id, static_cast<std::uint8_t>(value)};
        const std::int32_t key = driver->process_read(report);
        if (key != HEADSET_KEY_INVALID) {
            keys[key].push_back(report[1]);
        }
    }
    return keys;
}

Cells hex_numbers(const Bytes& numbers) {
    Cells texts;
    for (const std::uint8_t number : numbers) {
        texts.push_back(report_words(Bytes{number}));
    }
    return texts;
}

/// The report ids that carry keys, and the values of each key, which are the same for all of these ids.
Cells key_cells(const Family& family) {
    Bytes ids;
    KeyValues keys;
    for (unsigned id = 0; id <= 0xFF; ++id) {
        const auto report_id = static_cast<std::uint8_t>(id);
        const KeyValues found = key_values(family, report_id);
        if (found.empty()) {
            continue;
        }
        if (!ids.empty() && found != keys) {
            throw std::runtime_error("the values of keys differ by report id");
        }
        ids.push_back(report_id);
        keys = found;
    }
    Cells cells = {joined(hex_numbers(ids), ", ")};
    for (const KeyName& key : key_names) {
        cells.push_back(joined(hex_numbers(keys[key.code]), ", "));
    }
    return cells;
}

// ---- follow-ups

/// The report that goes out before a state is shown, as the headset asks for it.
Bytes before_state(FreshDriver& driver, std::uint32_t state) {
    const std::uint32_t follow_up = driver.driver->query_state_follow_up(state);
    if ((follow_up & follow_up_toggle) != 0) {
        return driver.toggle(follow_up_toggle);
    }
    return (follow_up & follow_up_unmute) != 0 ? driver.show_mute(false) : Bytes{};
}

/// The reports that go out after an input report with this key.
std::string after_key(FreshDriver driver, std::uint32_t state, std::int32_t key) {
    driver.show(state);
    const std::uint32_t follow_up = driver.driver->handle_headset_reponse(key);
    Cells reports;
    for (const std::uint32_t bit : follow_up_order) {
        if ((follow_up & bit) != 0) {
            reports.push_back(report_words(driver.toggle(bit)));
        }
    }
    return joined(reports, ", ");
}

const Cells follow_up_header = {"before IDLE", "before INUSE, when held", "after a hook key, ringing",
                                "after a hook key, else", "after no key, in use"};

/// In the columns of `follow_up_header`.
Cells follow_ups_of(const MakeDriver& make_driver) {
    FreshDriver idle = make_driver();
    FreshDriver resumed = make_driver();
    resumed.show(HEADSET_STATE_HOLD);
    return {report_words(before_state(idle, HEADSET_STATE_IDLE)),
            report_words(before_state(resumed, HEADSET_STATE_INUSE)),
            after_key(make_driver(), HEADSET_STATE_ALERTING, HEADSET_KEY_HOOK),
            after_key(make_driver(), HEADSET_STATE_IDLE, HEADSET_KEY_HOOK),
            after_key(make_driver(), HEADSET_STATE_INUSE, HEADSET_KEY_INVALID)};
}

}  // namespace

std::map<std::int32_t, KeySource> key_sources() {
    std::map<std::int32_t, KeySource> sources;
    for_each_standard_model([&](const PluggedModel& headset) {
        for (const std::int32_t key : keys_of(headset)) {
            sources[key].is_standard = true;
        }
    });
    for (const Family& family : families) {
        for (unsigned id = 0; id <= 0xFF; ++id) {
            for (const auto& [key, values] : key_values(family, static_cast<std::uint8_t>(id))) {
                Cells& drivers = sources[key].dormant_drivers;
                if (std::ranges::find(drivers, code(family.driver)) == drivers.end()) {
                    drivers.push_back(code(family.driver));
                }
            }
        }
    }
    return sources;
}

void print_key_sources(const std::map<std::int32_t, KeySource>& sources) {
    MarkdownTable table("key-sources", {"Key", "Code", "Standard driver", "Dormant drivers"});
    for (const KeyName& key : key_names) {
        const auto found = sources.find(key.code);
        const KeySource source = found == sources.end() ? KeySource{} : found->second;
        table.add({key.words, std::to_string(key.code), source.is_standard ? code("stdhid_cc") : nothing,
                   joined(source.dormant_drivers, ", ")});
    }
    table.print();
}

void print_key_filter() {
    device::register_key_callback(note_key);
    MarkdownTable table("key-filter",
                        {"Key", "Hook key before", "while the headset shows INUSE", "while it does not"});
    for (const KeyName& key : key_names) {
        const auto fates = [&](std::int32_t last) {
            const auto fate = [&](std::uint32_t state) {
                return passes_after(last, state, key.code) ? "passed on" : "dropped";
            };
            return Cells{fate(HEADSET_STATE_INUSE), fate(HEADSET_STATE_ALERTING)};
        };
        const Cells first = fates(no_hook_key);
        const Cells after_hook = fates(HEADSET_KEY_HOOK);
        const Cells after_end = fates(HEADSET_KEY_END_CALL);
        if (first == after_hook && first == after_end) {
            table.add(with({key.words, "any"}, first));
            continue;
        }
        table.add(with({key.words, "none"}, first));
        table.add(with({key.words, "hook"}, after_hook));
        table.add(with({key.words, "end call"}, after_end));
    }
    device::register_key_callback(nullptr);
    table.print();
}

void print_standard_reports() {
    MarkdownTable table("standard-reports", with({"Headset"}, report_header));
    for_each_standard_model([&](const PluggedModel& headset) {
        table.add(with({headset.model.product}, reports_of([&] { return headset.make_driver(); })));
    });
    table.print();
}

void print_standard_keys() {
    // HID Usage Tables, section 14
    struct TelephonyKey {
        const char* name;
        std::uint16_t usage;
    };
    constexpr TelephonyKey telephony_keys[] = {
        {"Phone Mute", 0x2F}, {"Hook Switch", 0x20}, {"Flash", 0x21}, {"Redial", 0x24}};
    Cells header = {"Headset"};
    for (const TelephonyKey& key : telephony_keys) {
        header.emplace_back(key.name);
    }
    MarkdownTable table("standard-keys", header);
    for_each_standard_model([&](const PluggedModel& headset) {
        Cells row = {headset.model.product};
        for (const TelephonyKey& key : telephony_keys) {
            row.push_back(press_words(headset, key.usage));
        }
        table.add(row);
    });
    table.print();
}

void print_support() {
    Cells header = {"Headsets"};
    for (const SupportedRequest& request : supported_requests) {
        header.emplace_back(request.words);
    }
    for (const SupportedIndicator& indicator : supported_indicators) {
        header.emplace_back(indicator.words);
    }
    std::map<Cells, Cells> headsets;  // those that are supported alike, by their cells
    for (const HeadsetModel* model : platform::virtual_headsets::models()) {
        headsets[support_of(*model)].push_back(model->product);
    }
    bus().reset();
    MarkdownTable table("support", header);
    for (auto& [cells, names] : headsets) {
        std::ranges::sort(names);
        table.add(with({joined(names, ", ")}, cells));
    }
    table.print();
}

void print_dormant_reports() {
    MarkdownTable table("dormant-reports", with({"Driver", "Products"}, report_header));
    for (const Family& family : families) {
        table.add(with({code(family.driver), family.products}, reports_of(maker_of(family))));
    }
    table.print();
}

void print_standard_follow_ups() {
    MarkdownTable table("standard-follow-ups", with({"Headset"}, follow_up_header));
    for_each_standard_model([&](const PluggedModel& headset) {
        table.add(with({headset.model.product}, follow_ups_of([&] { return headset.make_driver(); })));
    });
    table.print();
}

void print_dormant_follow_ups() {
    MarkdownTable table("dormant-follow-ups", with({"Driver", "Products"}, follow_up_header));
    for (const Family& family : families) {
        table.add(with({code(family.driver), family.products}, follow_ups_of(maker_of(family))));
    }
    table.print();
}

void print_dormant_keys() {
    Cells header = {"Driver", "Products", "Report id"};
    for (const KeyName& key : key_names) {
        header.emplace_back(key.words);
    }
    MarkdownTable table("dormant-keys", header);
    for (const Family& family : families) {
        table.add(with({code(family.driver), family.products}, key_cells(family)));
    }
    table.print();
}

}  // namespace docs
