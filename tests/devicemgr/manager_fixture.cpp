#include "tests/devicemgr/manager_fixture.h"

#include <algorithm>

#include "drivers/stdhid_cc.h"
#include "virtual_headset/models/items.h"

namespace manager_test {

using headset_plugin::set_driver_factory;
using test_support::eventually;
using test_support::patience;

namespace {

using namespace platform::virtual_headsets;

/// A collection with one key, and for a telephony collection two indicators.
std::vector<std::uint8_t> one_collection(std::uint16_t page, std::uint8_t id) {
    // clang-format off
    auto bytes = descriptor({
        usage_page(page),
        usage(0x01),
        collection(application),
            report_id(id),
            logical_minimum(0),
            logical_maximum(1),
            usage(0x2F),         // on the Telephony page Phone Mute
            report_size(1),
            report_count(1),
            input(data | variable),
            report_count(7),
            input(constant),     // padding
    });
    const auto indicators = descriptor({
            usage_page(0x08),    // LED page
            usage(0x17),         // Off-Hook
            usage(0x09),         // Mute
            report_count(2),
            output(data | variable),
            report_count(6),
            output(constant),    // padding
    });
    // clang-format on
    if (page == telephony) {
        bytes.insert(bytes.end(), indicators.begin(), indicators.end());
    }
    const auto end = descriptor({end_collection()});
    bytes.insert(bytes.end(), end.begin(), end.end());
    return bytes;
}

std::string pass_line(const std::string& text) {
    return manager_line("enumerate_hid_device", text);
}

}  // namespace

HeadsetDescription headset(const std::string& serial, const std::string& name,
                           const std::vector<std::uint16_t>& pages, std::uint16_t vendor_id) {
    std::vector<std::uint8_t> bytes;
    std::uint8_t id = 0;
    for (const std::uint16_t page : pages) {
        const auto next = one_collection(page, ++id);
        bytes.insert(bytes.end(), next.begin(), next.end());
    }
    return {.descriptor = bytes,
            .vendor_id = vendor_id,
            .product_id = product,
            .manufacturer = std::nullopt,
            .product = name,
            .serial = serial};
}

std::string manager_line(const std::string& function, const std::string& text) {
    return api_line("plugin_control::device_mgr::" + function, text);
}

std::string api_line(const std::string& function, const std::string& text) {
    return "3rdPartyHeadsetPlugin: " + function + ": " + text + "\n";
}

std::string window_line(const std::string& function, const std::string& text) {
    return "HeadsetPlugin: " + function + ": " + text + "\n";
}

Lines manager_lines(const std::string& function, const Lines& texts) {
    Lines lines;
    for (const std::string& text : texts) {
        lines.push_back(manager_line(function, text));
    }
    return lines;
}

Lines operator+(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::string plugged_in_line(std::uint16_t page) {
    return pass_line("3rd-party headset is plugged in, vendor_id: 0x0b0e, product_id: 0x24c9, page: 0x0" +
                     std::string(page == telephony ? "b" : "c") + ". ");
}

std::string supported_line(const std::string& name) {
    return pass_line("3rd product vendor_id:[0x b0e], product_id:[0x24c9], product_name:[" + name +
                     "] supported!");
}

std::string found_line(const std::string& serial, const std::string& name) {
    return pass_line("found device, vendor_id:[0x0b0e], product_id:[0x24c9], sn = " + serial +
                     ", product_name = " + name);
}

std::string already_open_line() {
    return pass_line("non-orvex headset already open . ");
}

std::string count_line(int count) {
    return pass_line("now connected headset count: " + std::to_string(count) + ". ");
}

Lines creation_lines(const std::string& serial, const std::string& name, int count) {
    return {pass_line("create device, vendor_id:[0x0b0e], product_id:[0x24c9], sn = " + serial +
                      ", product_name = " + name),
            manager_line("add_device", "enter"),
            manager_line("add_device", "add device, vendor_id:[0x0b0e], product_id:[0x24c9], sn = " + serial +
                                           ", device_name = " + name),
            count_line(count)};
}

Lines pass_start_lines() {
    return manager_lines("enumerate_hid_device", {"lock device_mgr_mutex_ first ", "start hid_enumerate() ",
                                                  "complete hid_enumerate() "});
}

std::string left_line(int count) {
    return manager_line("remove_device",
                        "now connected orvex headset count: " + std::to_string(count) + ". ");
}

std::string state_line(int state) {
    return "3rdPartyHeadsetPlugin: headset_plugin::device::headset_set_state: 3rd call state =" +
           std::to_string(state) + " \n";
}

std::string loaded_line() {
    return window_line("WndMessageHandler", "Do enumeration when this plugin is loaded ");
}

// ---- a thread held up

void Gate::pass() {
    std::unique_lock lock(mutex_);
    arrived_ = true;
    changed_.notify_all();
    changed_.wait_for(lock, patience, [&] { return open_; });
}

bool Gate::wait_for_arrival() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, patience, [&] { return arrived_; });
}

void Gate::open() {
    std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
}

// ---- headsets

void HeadsetsTest::SetUp() {
    logger_ = test_support::install_layer_logger();
    test_support::clear_glue_calls();
    set_driver_factory([this](std::uint32_t, std::uint32_t product_id) {
        auto driver = std::make_shared<headset_plugin::stdhid_cc>(product_id);
        std::lock_guard lock(drivers_mutex_);
        drivers_.emplace_back(driver);
        return driver;
    });
}

void HeadsetsTest::TearDown() {
    bus().reset();
    // A driver goes with its device, the device with its read thread: nothing of this test runs on into the
    // next.
    std::lock_guard lock(drivers_mutex_);
    for (const auto& driver : drivers_) {
        EXPECT_TRUE(eventually([&] { return driver.expired(); })) << "a headset was not let go";
    }
    EXPECT_TRUE(logger_->odd_levels().empty());
    test_support::on_glue_call({});
    plugin_control::set_device_availability_hook({});
    set_driver_factory({});
    logger_->on_line({});
}

int HeadsetsTest::plug(const HeadsetDescription& description) {
    std::string failure;
    const auto number = bus().plug(description, failure);
    EXPECT_EQ(failure, "");
    return number.value_or(0);
}

void HeadsetsTest::hold_up_at(const std::string& line, Gate& gate) {
    logger_->on_line([line, &gate](const std::string& logged) {
        if (logged == line) {
            gate.pass();
        }
    });
}

bool HeadsetsTest::held_up(Gate& gate) {
    const bool arrived = gate.wait_for_arrival();
    logger_->on_line({});
    return arrived;
}

// ---- the test's own manager

void ManagerTest::SetUp() {
    HeadsetsTest::SetUp();
    manager_ = std::make_shared<device_mgr>();
}

void ManagerTest::TearDown() {
    platform().virtual_clock().go();
    manager_->stop_tracking_thread();
    const std::weak_ptr<device_mgr> manager = manager_;
    manager_.reset();
    EXPECT_TRUE(eventually([&] { return manager.expired(); })) << "the manager was not let go";
    HeadsetsTest::TearDown();
}

std::shared_ptr<device> ManagerTest::list(const std::string& serial, const std::string& name,
                                          std::uint16_t vendor_id) {
    auto listed = std::make_shared<device>(vendor_id, product, L"", serial, 0);
    listed->set_device_name(name);
    manager_->add_device(listed);
    return listed;
}

std::string ManagerTest::active_serial() const {
    const auto active = manager_->active_device();
    return active ? active->serial() : "none";
}

// ---- the process's manager

void RunningManagerTest::TearDown() {
    platform().virtual_clock().go();
    stop_device_mgr();
    EXPECT_TRUE(wait_for_message_threads());
    HeadsetsTest::TearDown();
}

void RunningManagerTest::start() {
    const std::string running = window_line("MessageThread", "Message Thread is running ");
    const std::size_t before = logger_->count(running);
    start_device_mgr(0);
    ASSERT_TRUE(logger_->wait_for_count(running, before + 1));
}

void RunningManagerTest::clear_log() {
    started_before_ = threads_started();
    ended_before_ = threads_ended();
    logger_->clear();
}

std::size_t RunningManagerTest::threads_started() const {
    return started_before_ +
           logger_->count(manager_line("device_mgr_start", "hid_tracking_func is working."));
}

std::size_t RunningManagerTest::threads_ended() const {
    return ended_before_ + logger_->count(window_line("MessageThread", "Message Thread is closed ")) +
           logger_->lines_with(" failed with error code ").size();
}

bool RunningManagerTest::wait_for_message_threads() const {
    return eventually([&] { return threads_ended() >= threads_started(); });
}

void RunningManagerTest::settle() {
    constexpr std::uint32_t no_message = 0;  // WM_NULL, winuser.h (Windows SDK)
    platform().windows().SendMessageW(plugin_control::message_window(), no_message, 0, 0);
}

void RunningManagerTest::wait_for_arrivals(std::size_t count) {
    ASSERT_TRUE(logger_->wait_for_count(
        window_line("WndMessageHandler", "New HID device is plugged in, enumerate for headset "), count));
    settle();
}

int RunningManagerTest::plug_and_wait(const HeadsetDescription& description) {
    const std::size_t before = logger_->lines_with("New HID device is plugged in").size();
    const int number = plug(description);
    wait_for_arrivals(before + bus().enumerate(description.vendor_id, description.product_id).size());
    return number;
}

void RunningManagerTest::unplug_and_wait(int headset_number, std::size_t interfaces) {
    EXPECT_EQ(bus().unplug(headset_number), "");
    EXPECT_TRUE(
        logger_->wait_for_count(window_line("WndMessageHandler", "HID device is plugged out "), interfaces));
    settle();
}

}  // namespace manager_test
