#include "tests/device/device_fixture.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "tests/support/layer_log.h"
#include "tests/support/upward_calls.h"
#include "virtual_headset/models/items.h"

namespace device_test {

using headset_plugin::set_driver_factory;
using test_support::eventually;

namespace {

std::mutex g_keys_mutex;
Lines g_keys;
std::function<void()> g_key_action;

void receive_key(std::uint16_t key, const std::string& from) {
    std::function<void()> action;
    {
        std::lock_guard lock(g_keys_mutex);
        g_keys.push_back(std::to_string(key) + " " + from);
        action = g_key_action;
    }
    if (action) {
        action();
    }
}

std::string hex(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        std::array<char, 4> digits;
        std::snprintf(digits.data(), digits.size(), "%02x ", byte);
        text += digits.data();
    }
    text.resize(text.empty() ? 0 : text.size() - 1);
    return text;
}

}  // namespace

Lines keys() {
    std::lock_guard lock(g_keys_mutex);
    return g_keys;
}

bool wait_for_key(const std::string& key) {
    return eventually([&] {
        const Lines received = keys();
        return std::find(received.begin(), received.end(), key) != received.end();
    });
}

void clear_keys() {
    std::lock_guard lock(g_keys_mutex);
    g_keys.clear();
}

void on_key(std::function<void()> action) {
    std::lock_guard lock(g_keys_mutex);
    g_key_action = std::move(action);
}

// ---- the driver

std::vector<std::string> ScriptedDriver::calls() const {
    std::lock_guard lock(mutex_);
    return calls_;
}

void ScriptedDriver::clear_calls() {
    std::lock_guard lock(mutex_);
    calls_.clear();
}

std::size_t ScriptedDriver::last_buffer_size() const {
    std::lock_guard lock(mutex_);
    return last_buffer_size_;
}

bool ScriptedDriver::is_last_buffer_clear() const {
    std::lock_guard lock(mutex_);
    return is_last_buffer_clear_;
}

void ScriptedDriver::record(std::string call) {
    std::lock_guard lock(mutex_);
    calls_.push_back(std::move(call));
}

std::int32_t ScriptedDriver::build(const std::string& call, const Built& built,
                                   std::span<std::uint8_t> output) {
    {
        std::lock_guard lock(mutex_);
        calls_.push_back(call);
        last_buffer_size_ = output.size();
        is_last_buffer_clear_ =
            std::all_of(output.begin(), output.end(), [](std::uint8_t byte) { return byte == 0; });
    }
    std::copy(built.bytes.begin(), built.bytes.end(), output.begin());
    if (while_building) {
        while_building();
    }
    return built.length;
}

std::int32_t ScriptedDriver::set_led_event_data(std::uint32_t state, std::span<std::uint8_t> output) {
    return build("set_led_event_data(" + std::to_string(state) + ")", led, output);
}

std::int32_t ScriptedDriver::set_mute_data(bool muted, std::span<std::uint8_t> output) {
    return build(muted ? "set_mute_data(true)" : "set_mute_data(false)", mute, output);
}

std::int32_t ScriptedDriver::toggle_led(std::uint32_t bit, std::span<std::uint8_t> output) {
    return build("toggle_led(" + std::to_string(bit) + ")", toggle, output);
}

std::int32_t ScriptedDriver::process_read(std::span<const std::uint8_t> report) {
    record("process_read(" + hex(report) + ")");
    return key;
}

std::uint32_t ScriptedDriver::handle_headset_reponse(std::int32_t key_code) {
    record("handle_headset_reponse(" + std::to_string(key_code) + ")");
    return report_follow_up;
}

std::uint32_t ScriptedDriver::query_state_follow_up(std::uint32_t state) {
    record("query_state_follow_up(" + std::to_string(state) + ")");
    return state_follow_up;
}

// ---- the headset

Bytes telephony_descriptor(std::uint32_t output_bytes) {
    using namespace platform::virtual_headsets;
    // clang-format off
    return descriptor({
        usage_page(0x0B),        // Telephony page
        usage(0x05),             // Headset
        collection(application),
            report_id(0x02),
            logical_minimum(0),
            logical_maximum(1),
            usage(0x20),         // Hook Switch
            usage(0x2F),         // Phone Mute
            report_size(1),
            report_count(2),
            input(data | variable),
            report_count(6),
            input(constant),     // padding
            usage_page(0x08),    // LED page
            usage(0x17),         // Off-Hook
            usage(0x09),         // Mute
            report_count(2),
            output(data | variable),
            report_count(output_bytes * 8 - 2),
            output(constant),    // padding
        end_collection(),
    });
    // clang-format on
}

// ---- log lines

std::string device_line(const std::string& function, const std::string& text) {
    return "3rdPartyHeadsetPlugin: headset_plugin::device::" + function + ": " + text + "\n";
}

Lines device_lines(const std::string& function, const Lines& texts) {
    Lines lines;
    for (const std::string& text : texts) {
        lines.push_back(device_line(function, text));
    }
    return lines;
}

Lines operator+(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Lines stop_lines(int handle_number) {
    return device_lines("stop_device_thread",
                        {"Enter", "cancel device handler IO [" + std::to_string(handle_number) + "] ",
                         "restore some parameters to default value. ", "Exit"});
}

// ---- the fixture

void DeviceTest::SetUp() {
    logger_ = test_support::install_layer_logger();
    test_support::clear_upward_calls();
    clear_keys();
    device::register_key_callback(receive_key);
    set_driver_factory([this](std::uint32_t, std::uint32_t product_id) {
        driver_ = std::make_shared<ScriptedDriver>(product_id);
        drivers_.emplace_back(driver_);
        return driver_;
    });
}

void DeviceTest::TearDown() {
    on_key({});
    logger_->on_line({});
    platform().virtual_clock().go();
    bus().reset();
    driver_.reset();
    // A driver goes with its device, the device with its read thread: nothing of this test runs on into the
    // next.
    for (const auto& driver : drivers_) {
        EXPECT_TRUE(eventually([&] { return driver.expired(); })) << "a device was not let go";
    }
    EXPECT_TRUE(eventually([&] { return is_closed(); })) << "a handle was not closed";
    EXPECT_TRUE(logger_->odd_levels().empty());
    set_driver_factory({});
    device::register_key_callback(nullptr);
}

void DeviceTest::plug(Bytes descriptor, std::optional<std::string> name, std::uint32_t vendor_id) {
    std::string failure;
    const auto number = bus().plug({.descriptor = std::move(descriptor),
                                    .vendor_id = static_cast<std::uint16_t>(vendor_id),
                                    .product_id = static_cast<std::uint16_t>(product),
                                    .manufacturer = std::nullopt,
                                    .product = std::move(name),
                                    .serial = serial},
                                   failure);
    ASSERT_TRUE(number) << failure;
    headset_ = *number;
}

HidHandle DeviceTest::open_handle() {
    const auto list = headset_plugin::hid_list(0, 0);
    HidHandle handle = list ? headset_plugin::hid_open_handle(list->path) : nullptr;
    EXPECT_NE(handle, nullptr);
    handle_ = handle;
    handle_number_ = headset_plugin::hid_handle_number(handle.get());
    logger_->clear();
    return handle;
}

std::shared_ptr<device> DeviceTest::make_device(std::uint32_t vendor_id) {
    return std::make_shared<device>(vendor_id, product, L"", serial, 0);
}

std::shared_ptr<device> DeviceTest::make_real_device(std::uint32_t vendor_id) {
    set_driver_factory({});
    logger_->clear();
    return make_device(vendor_id);
}

std::shared_ptr<device> DeviceTest::make_open_device(Bytes descriptor, std::uint32_t vendor_id) {
    plug(std::move(descriptor), "Test Headset", vendor_id);
    auto made = make_device(vendor_id);
    made->set_device_handles(open_handle(), nullptr);
    EXPECT_TRUE(logger_->wait_for(device_line("read_thread", "Enter while(true) loop ")));
    made->set_selected(true);
    logger_->clear();
    driver_->clear_calls();
    return made;
}

std::shared_ptr<device> DeviceTest::make_tried_device() {
    plug();
    auto made = make_device();
    EXPECT_EQ(made->hid_device_tryopen(jabra, product, L"SN-1"), 1);
    made->set_selected(true);
    logger_->clear();
    driver_->clear_calls();
    return made;
}

void DeviceTest::send(const Bytes& report) {
    const std::string exit = device_line("process_read", "exit");
    const std::size_t before = logger_->count(exit);
    ASSERT_EQ(bus().send_report(headset_, report), "");
    ASSERT_TRUE(logger_->wait_for_count(exit, before + 1));
}

Lines DeviceTest::log_beside_read_thread() const {
    Lines lines = logger_->lines_with("headset_plugin::device::");
    std::erase_if(lines,
                  [](const std::string& line) { return line.find("read_thread: ") != std::string::npos; });
    return lines;
}

Lines DeviceTest::outputs() const {
    const auto outputs = platform::virtual_platform::virtual_platform().bus().outputs(headset_);
    Lines lines;
    for (const auto& output : outputs.value()) {
        lines.push_back(hex(output.report) + " (" + std::to_string(output.written_size) + ")");
    }
    return lines;
}

}  // namespace device_test
