// Enumeration passes and the list that they keep.
#include <atomic>
#include <stdexcept>
#include <thread>

#include "tests/devicemgr/manager_fixture.h"
#include "tests/plugin/plugin_threads.h"
#include "virtual_headset/models/headsets.h"

using namespace manager_test;
namespace {

const std::string not_found_line =
    "3rdPartyHeadsetPlugin: plugin_control::device_mgr::enumerate_hid_device, not found any headsets \n";
const std::string failed_open_line =
    manager_line("enumerate_hid_device", "failed open 3rd device telephony page, remove it and skip . ");

std::string refused_line(const std::string& path, const std::string& serial, const std::string& reason) {
    return manager_line("enumerate_hid_device",
                        "cannot open " + path + ", sn = " + serial + ": CreateFile: " + reason +
                            ". If this user has no permission, install the udev rules; \"headset doctor\" "
                            "tells how. ");
}

class Enumeration : public ManagerTest {
  protected:
    std::size_t created(const std::string& serial) {
        return logger_->lines_with("create device, vendor_id:[0x0b0e], product_id:[0x24c9], sn = " + serial)
            .size();
    }
};

TEST_F(Enumeration, a_pass_over_nothing_finds_no_headsets) {
    pass();
    EXPECT_EQ(logger_->lines(), pass_start_lines() + Lines{not_found_line});
}

TEST_F(Enumeration, two_interfaces_under_one_serial_are_one_headset_whose_telephony_interface_is_opened) {
    plug(headset("SN-1"));
    pass();
    EXPECT_EQ(log(), pass_start_lines() +
                         (Lines{plugged_in_line(telephony), supported_line("Test Headset")}) +
                         creation_lines("SN-1", "Test Headset", 1) +
                         (Lines{plugged_in_line(consumer), supported_line("Test Headset"),
                                found_line("SN-1", "Test Headset"), count_line(1), already_open_line()}));
    EXPECT_EQ(manager_->connected_count(), 1U);
    const auto listed = manager_->find_device("SN-1");
    ASSERT_NE(listed, nullptr);
    EXPECT_TRUE(listed->is_open());
    EXPECT_EQ(
        logger_->count("3rdPartyHeadsetPlugin: headset_plugin::device::set_device_handles: open hid device "
                       "(non-OrveX) 0x24c9. \n"),
        1U);
    EXPECT_EQ(logger_->lines_with(", upd 0. \n").size(), 1U);
}

TEST_F(Enumeration, a_listed_headset_holds_what_the_interface_states) {
    plug(headset("SN-1", "Jabra Evolve"));
    pass();
    const auto listed = manager_->find_device("SN-1");
    ASSERT_NE(listed, nullptr);
    EXPECT_EQ(listed->vendor_id(), jabra);
    EXPECT_EQ(listed->product_id(), product);
    EXPECT_EQ(listed->serial(), "SN-1");
    EXPECT_EQ(listed->device_name(), "Jabra Evolve");
    EXPECT_EQ(listed->path(), L"");
    EXPECT_EQ(listed->host_device_id(), "");
    EXPECT_FALSE(listed->is_selected());
}

TEST_F(Enumeration, a_second_pass_over_the_same_headset_creates_nothing) {
    plug(headset("SN-1"));
    pass();
    const auto listed = manager_->find_device("SN-1");
    logger_->clear();
    pass();
    const auto seen_again = [](std::uint16_t page) {
        return Lines{plugged_in_line(page), supported_line("Test Headset"),
                     found_line("SN-1", "Test Headset"), count_line(1), already_open_line()};
    };
    EXPECT_EQ(log(), pass_start_lines() + seen_again(telephony) + seen_again(consumer));
    EXPECT_EQ(manager_->find_device("SN-1"), listed);
    EXPECT_FALSE(listed->has_returned());
}

TEST_F(Enumeration, a_consumer_interface_that_comes_first_lists_the_headset_and_the_telephony_one_opens_it) {
    plug(headset("SN-1", "Test Headset", {consumer, telephony}));
    pass();
    EXPECT_EQ(log(),
              pass_start_lines() + (Lines{plugged_in_line(consumer), supported_line("Test Headset")}) +
                  creation_lines("SN-1", "Test Headset", 1) +
                  (Lines{already_open_line(), plugged_in_line(telephony), supported_line("Test Headset"),
                         found_line("SN-1", "Test Headset"), count_line(1)}));
    EXPECT_TRUE(manager_->find_device("SN-1")->is_open());
}

TEST_F(Enumeration, a_headset_without_a_telephony_interface_is_listed_and_not_opened) {
    plug(headset("SN-1", "Speaker", {consumer}));
    pass();
    EXPECT_EQ(log(), pass_start_lines() + (Lines{plugged_in_line(consumer), supported_line("Speaker")}) +
                         creation_lines("SN-1", "Speaker", 1) + Lines{already_open_line()});
    EXPECT_FALSE(manager_->find_device("SN-1")->is_open());
}

TEST_F(Enumeration, other_interfaces_of_a_headset_are_passed_over) {
    const auto model = platform::virtual_headsets::jabra_link_380c();
    plug({.descriptor = model.descriptor,
          .vendor_id = model.vendor_id,
          .product_id = model.product_id,
          .manufacturer = std::nullopt,
          .product = model.product,
          .serial = model.serial});
    pass();
    EXPECT_EQ(logger_->count(manager_line("enumerate_hid_device",
                                          "ignore non-accessary device vendor_id: 0x0b0e, "
                                          "product_id: 0x24c9, page: 0xffffff00. ")),
              1U);
    EXPECT_EQ(manager_->connected_count(), 1U);
}

TEST_F(Enumeration, headsets_are_numbered_as_they_are_created_and_numbers_are_not_reused) {
    plug(headset("SN-2"));
    plug(headset("SN-1"));
    pass();
    EXPECT_EQ(manager_->find_device("SN-2")->index(), 0U);
    EXPECT_EQ(manager_->find_device("SN-1")->index(), 1U);
    const auto removed = manager_->find_device("SN-1");
    removed->stop_device_thread();
    manager_->remove_device(removed);
    pass();
    EXPECT_EQ(manager_->find_device("SN-1")->index(), 2U);
}

TEST_F(Enumeration, an_interface_without_a_product_name_lists_an_unknown_headset) {
    auto nameless = headset("SN-1", "", {telephony});
    nameless.product.reset();
    plug(nameless);
    pass();
    EXPECT_EQ(manager_->find_device("SN-1")->device_name(), "unknown");
}

TEST_F(Enumeration, a_headset_that_cannot_be_opened_is_created_and_removed_again) {
    for (const Fault fault : {Fault::open_refused, Fault::unplug_in_open}) {
        const int number = plug(headset("SN-1", "Test Headset", {telephony}));
        const std::string path = bus().enumerate(jabra, product).front().path;
        ASSERT_EQ(bus().misbehave(number, fault), "");
        logger_->clear();
        pass();
        const std::string reason =
            fault == Fault::open_refused ? "Access is denied." : "The device is not connected.";
        EXPECT_EQ(log(), pass_start_lines() +
                             (Lines{plugged_in_line(telephony), supported_line("Test Headset")}) +
                             creation_lines("SN-1", "Test Headset", 1) +
                             (Lines{failed_open_line, refused_line(path, "SN-1", reason)}) +
                             manager_lines("remove_device", {"enter", "remove inactive device, sn SN-1",
                                                             "now connected orvex headset count: 0. "}) +
                             Lines{not_found_line});
        EXPECT_EQ(manager_->find_device("SN-1"), nullptr);
        bus().reset();
    }
}

TEST_F(Enumeration, the_next_pass_tries_a_headset_that_could_not_be_opened_anew) {
    const int number = plug(headset("SN-1", "Test Headset", {telephony}));
    ASSERT_EQ(bus().misbehave(number, Fault::open_refused), "");
    pass();
    ASSERT_EQ(bus().misbehave(number, Fault::none), "");
    pass();
    EXPECT_EQ(created("SN-1"), 2U);
    EXPECT_TRUE(manager_->find_device("SN-1")->is_open());
    EXPECT_EQ(manager_->connected_count(), 1U);
}

TEST_F(Enumeration, a_later_interface_lists_a_headset_again_whose_telephony_interface_could_not_be_opened) {
    const int number = plug(headset("SN-1"));
    ASSERT_EQ(bus().misbehave(number, Fault::open_refused), "");
    pass();
    EXPECT_EQ(created("SN-1"), 2U);
    EXPECT_FALSE(manager_->find_device("SN-1")->is_open());
    EXPECT_EQ(manager_->connected_count(), 1U);
}

TEST_F(Enumeration, a_pass_opens_a_listed_headset_that_has_closed) {
    plug(headset("SN-1"));
    pass();
    const auto listed = manager_->find_device("SN-1");
    listed->stop_device_thread();
    ASSERT_TRUE(logger_->wait_for(shutting_down));
    // After this line the read thread closes what a late pass has opened.
    ASSERT_TRUE(test_support::eventually([] { return test_support::count_threads("orvex-read") == 0; }));
    pass();
    EXPECT_EQ(manager_->find_device("SN-1"), listed);
    EXPECT_TRUE(listed->is_open());
}

TEST_F(Enumeration, a_pass_never_removes_a_headset_that_is_gone) {
    const int number = plug(headset("SN-1"));
    pass();
    ASSERT_EQ(bus().unplug(number), "");
    ASSERT_TRUE(logger_->wait_for(api_line("remove_headset_with_serial", "device_mgr not ready")));
    logger_->clear();
    pass();
    EXPECT_EQ(log(), pass_start_lines());
    EXPECT_NE(manager_->find_device("SN-1"), nullptr);
    EXPECT_EQ(manager_->connected_count(), 1U);
}

TEST_F(Enumeration, a_headset_that_came_back_before_it_was_closed_is_noticed) {
    Gate gate;
    hold_up_at(read_thread_exit, gate);
    const int number = plug(headset("SN-1"));
    pass();
    const auto listed = manager_->find_device("SN-1");
    ASSERT_EQ(bus().unplug(number), "");
    ASSERT_TRUE(held_up(gate));
    pass();
    EXPECT_FALSE(listed->has_returned());
    ASSERT_EQ(bus().replug(number), "");
    pass();
    EXPECT_TRUE(listed->has_returned());
    gate.open();
    EXPECT_TRUE(logger_->wait_for(api_line("remove_headset_with_serial", "device_mgr not ready")));
}

TEST_F(Enumeration, a_stop_within_a_pass_ends_it_before_the_next_entry) {
    plug(headset("SN-1", "Test Headset", {telephony}));
    plug(headset("SN-2", "Test Headset", {telephony}));
    plugin_control::set_device_availability_hook([this](int, int) {
        manager_->stop_tracking_thread();
        return true;
    });
    pass();
    EXPECT_EQ(created("SN-1"), 1U);
    EXPECT_EQ(logger_->count(plugged_in_line(telephony)), 1U);
    plugin_control::set_device_availability_hook({});
    pass();  // which takes up again what it may
    EXPECT_EQ(created("SN-2"), 1U);
}

TEST_F(Enumeration, a_hook_that_throws_ends_the_pass_and_lets_go_of_the_lock) {
    plug(headset("SN-1"));
    plugin_control::set_device_availability_hook(
        [](int, int) -> bool { throw std::runtime_error("broken hook"); });
    EXPECT_THROW(pass(), std::runtime_error);
    plugin_control::set_device_availability_hook({});
    std::thread([this] { pass(); }).join();
    EXPECT_EQ(created("SN-1"), 1U);
}

TEST_F(Enumeration, a_logger_that_throws_while_a_headset_is_opened_leaves_it_to_the_next_pass) {
    static std::atomic<int> keys;
    keys = 0;
    device::register_key_callback([](std::uint16_t, const std::string&) { ++keys; });
    const int number = plug(headset("SN-1"));
    logger_->on_line([](const std::string& line) {
        if (line == "3rdPartyHeadsetPlugin: headset_plugin::device::hid_device_open: [Enter handle_led] \n") {
            throw std::runtime_error("the host's logger failed");
        }
    });
    EXPECT_THROW(pass(), std::runtime_error);
    logger_->on_line({});
    EXPECT_FALSE(manager_->find_device("SN-1")->is_open());
    pass();
    EXPECT_TRUE(manager_->find_device("SN-1")->is_open());
    ASSERT_TRUE(select("host-SN-1"));
    const platform::virtual_platform::FullUsage mute_key{telephony, 0x2F};
    ASSERT_EQ(bus().press(number, mute_key), "");
    EXPECT_TRUE(test_support::eventually([] { return keys == 1; }));
    manager_->stop_tracking_thread();
    EXPECT_TRUE(logger_->wait_for(shutting_down));
    device::register_key_callback(nullptr);
}

TEST_F(Enumeration, a_headset_under_a_listed_serial_is_told_with_the_ids_of_the_listed_one) {
    plug(headset("SN-1", "First", {telephony}));
    auto second = headset("SN-1", "Second", {telephony}, logitech);
    second.product_id = 0x0A29;
    plug(second);
    pass();
    EXPECT_EQ(logger_->lines_with("found device"), Lines{found_line("SN-1", "First")});
}

TEST_F(Enumeration, a_match_waits_for_the_pass_that_is_under_way) {
    Gate gate;
    plug(headset("SN-1"));
    plugin_control::set_device_availability_hook([&](int, int) {
        gate.pass();
        return true;
    });
    std::thread passing([this] { pass(); });
    EXPECT_TRUE(gate.wait_for_arrival());
    bool found = false;
    std::thread matching([&] { found = select("host-SN-1"); });
    EXPECT_TRUE(logger_->wait_for(
        manager_line("setAudioDevice", "enter: device_id:[host-SN-1], device_name:[], serial:[].")));
    gate.open();
    passing.join();
    matching.join();
    EXPECT_TRUE(found);
}

// ---- the list itself

TEST_F(Enumeration, adding_nothing_changes_nothing) {
    manager_->add_device(nullptr);
    manager_->remove_device(nullptr);
    EXPECT_EQ(logger_->lines(),
              manager_lines("add_device", {"enter"}) + manager_lines("remove_device", {"enter"}));
    EXPECT_EQ(manager_->connected_count(), 0U);
}

TEST_F(Enumeration, a_serial_that_is_listed_already_keeps_its_headset_and_is_counted_again) {
    const auto first = list("SN-1", "First");
    list("SN-1", "Second");
    EXPECT_EQ(manager_->find_device("SN-1"), first);
    EXPECT_EQ(manager_->connected_count(), 2U);
    EXPECT_EQ(logger_->lines_with("add_device: add device").size(), 2U);
}

}  // namespace
