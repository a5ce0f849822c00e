// The read threads of the two ways of opening, and how a headset is stopped, closed and let go.
#include <stdexcept>
#include <thread>

#include "tests/device/device_fixture.h"
#include "tests/support/upward_calls.h"

using namespace device_test;
using test_support::eventually;
using test_support::in_order;
using test_support::upward_calls;
using test_support::wait_for_upward_call;

namespace {

const std::string removal = "remove_headset_with_serial(SN-1)";
const std::string enter_loop = device_line("read_thread", "Enter while(true) loop ");
const std::string exit_loop = device_line("read_thread", "Exit device_thread_ ");
const std::string shutting_down = device_line("read_thread", "read failed, shuting down ");
const std::string unplugged =
    device_line("read_thread", "read failed, headset should be unplugged, close device ");
const std::string exception = device_line("read_thread", "unexpected device read exception ");
const std::string closed = device_line("hid_device_close", "device_thread_ is closed. ");
const std::string closing_down = device_line("tryopen_read_thread", "this device is closing down. ");

std::string read_error(int length) {
    return device_line("read_thread", "read error, length " + std::to_string(length));
}

Lines close_lines(int handle_number) {
    return device_lines(
               "hid_device_close",
               {"try to close device", "release device handler [" + std::to_string(handle_number) + "] ",
                "restore some parameters to default value. "}) +
           Lines{closed};
}

class DeviceReading : public DeviceTest {
  protected:
    /// Ends the reading of a device by what `end` does to the headset, and expects a headset that closed
    /// itself.
    void expect_closed_by(const Lines& lines) {
        ASSERT_TRUE(wait_for_upward_call(removal));
        ASSERT_TRUE(logger_->wait_for(closed));
        EXPECT_EQ(logger_->lines_with("headset_plugin::device::"),
                  lines + (Lines{exit_loop, unplugged}) + close_lines(handle_number_));
        EXPECT_EQ(upward_calls(), Lines{removal});
    }
};

// ---- opened by handle

TEST_F(DeviceReading, a_read_thread_tells_of_its_loop_before_anything_else) {
    plug();
    const auto made = make_device();
    made->set_selected(true);
    constexpr int level = 2;  // of every line
    const auto of_read_thread = std::make_shared<test_support::RecordingLogger>();
    logger_->on_line([of_read_thread, opener = std::this_thread::get_id()](const std::string& line) {
        if (std::this_thread::get_id() != opener) {
            of_read_thread->log(line, level);
        }
    });
    made->set_device_handles(open_handle(), nullptr);
    send(hook_report);
    made->stop_device_thread();
    EXPECT_EQ(of_read_thread->lines().front(), enter_loop);
}

TEST_F(DeviceReading, an_unplugged_headset_closes_itself_and_asks_for_its_removal) {
    const auto made = make_open_device();
    ASSERT_EQ(bus().unplug(headset_), "");
    expect_closed_by({read_error(-1)});
    EXPECT_FALSE(made->is_open());
    EXPECT_FALSE(driver_->has_handle());
    EXPECT_TRUE(eventually([&] { return is_closed(); }));
}

TEST_F(DeviceReading, a_read_error_counts_as_an_unplug) {
    const auto made = make_open_device();
    ASSERT_EQ(bus().misbehave(headset_, Fault::read_fails), "");
    expect_closed_by({read_error(-1)});
}

TEST_F(DeviceReading, a_report_of_one_byte_ends_the_reading) {
    const auto made = make_open_device();
    ASSERT_EQ(bus().misbehave(headset_, Fault::read_one_byte), "");
    expect_closed_by({read_error(1)});
    EXPECT_EQ(driver_->calls(), Lines{});
}

TEST_F(DeviceReading, a_read_of_nothing_ends_the_reading) {
    const auto made = make_open_device();
    ASSERT_EQ(bus().misbehave(headset_, Fault::read_zero_bytes), "");
    expect_closed_by({read_error(0)});
    EXPECT_EQ(driver_->calls(), Lines{});
}

TEST_F(DeviceReading, a_report_of_two_bytes_is_handled) {
    const auto made = make_open_device();
    send(hook_report);
    EXPECT_EQ(driver_->calls(), (Lines{"process_read(02 01)", "handle_headset_reponse(-1)"}));
    made->stop_device_thread();
}

TEST_F(DeviceReading, an_exception_out_of_the_key_callback_ends_the_reading) {
    const auto made = make_open_device();
    driver_->key = headset_plugin::HEADSET_KEY_MUTE;
    on_key([] { throw std::runtime_error("the host's listener failed"); });
    ASSERT_EQ(bus().send_report(headset_, mute_report), "");
    expect_closed_by(device_lines("process_read", {"enter"}) +
                     device_lines("handle_key_report", {"enter, keycode = 1"}) + Lines{exception});
    EXPECT_FALSE(made->is_open());
}

TEST_F(DeviceReading, something_else_than_an_exception_may_be_thrown_too) {
    const auto made = make_open_device();
    driver_->key = headset_plugin::HEADSET_KEY_MUTE;
    on_key([] { throw 42; });
    ASSERT_EQ(bus().send_report(headset_, mute_report), "");
    EXPECT_TRUE(wait_for_upward_call(removal));
    EXPECT_EQ(logger_->count(exception), 1U);
}

TEST_F(DeviceReading, a_stopped_headset_shuts_down_and_is_not_removed) {
    auto made = make_open_device();
    made->stop_device_thread();
    EXPECT_FALSE(made->is_open());
    EXPECT_FALSE(driver_->has_handle());
    ASSERT_TRUE(logger_->wait_for(shutting_down));
    EXPECT_EQ(log_beside_read_thread(), stop_lines(handle_number_));
    EXPECT_TRUE(in_order(logger_->lines(), {exit_loop, shutting_down}));
    EXPECT_TRUE(eventually([&] { return is_closed(); }));
    const std::weak_ptr<device> watched = made;
    made.reset();
    ASSERT_TRUE(eventually([&] { return watched.expired(); }));  // and the read thread is through
    EXPECT_EQ(logger_->count(unplugged), 0U);
    EXPECT_EQ(logger_->lines_with("hid_device_close"), Lines{});
    EXPECT_EQ(upward_calls(), Lines{});
}

TEST_F(DeviceReading, a_stop_before_the_first_read_is_not_missed) {
    plug();
    for (int round = 0; round < 100; ++round) {
        const auto made = make_device();
        made->set_device_handles(open_handle(), nullptr);
        made->stop_device_thread();
        ASSERT_TRUE(logger_->wait_for(shutting_down));
    }
}

TEST_F(DeviceReading, stopping_twice_cancels_once) {
    const auto made = make_open_device();
    made->stop_device_thread();
    made->stop_device_thread();
    EXPECT_EQ(log_beside_read_thread(),
              stop_lines(handle_number_) + device_lines("stop_device_thread", {"Enter", "Exit"}));
}

TEST_F(DeviceReading, a_stop_inside_the_key_callback_ends_the_reading) {
    const auto made = make_open_device();
    driver_->key = headset_plugin::HEADSET_KEY_MUTE;
    on_key([&] { made->stop_device_thread(); });
    ASSERT_EQ(bus().send_report(headset_, mute_report), "");
    ASSERT_TRUE(logger_->wait_for(shutting_down));
    EXPECT_TRUE(in_order(logger_->lines(), {device_line("process_read", "exit"), exit_loop, shutting_down}));
    EXPECT_EQ(logger_->lines_with("read error"), Lines{});  // there is no handle left to read from
    EXPECT_EQ(upward_calls(), Lines{});
}

TEST_F(DeviceReading, the_read_thread_keeps_its_headset_alive) {
    auto made = make_open_device();
    const std::weak_ptr<device> watched = made;
    made.reset();
    send(hook_report);
    ASSERT_FALSE(watched.expired());
    ASSERT_EQ(bus().unplug(headset_), "");
    ASSERT_TRUE(eventually([&] { return watched.expired(); }));
    EXPECT_TRUE(logger_->wait_for(device_line("~device", "exit. ")));
}

TEST_F(DeviceReading, a_headset_that_went_away_can_be_opened_again) {
    const auto made = make_open_device();
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(bus().unplug(headset_), "");
        ASSERT_TRUE(logger_->wait_for(closed));
        EXPECT_TRUE(made->is_leaving());
        ASSERT_EQ(bus().replug(headset_), "");
        made->set_device_handles(open_handle(), nullptr);
        EXPECT_FALSE(made->is_leaving());
        send(hook_report);
    }
    made->stop_device_thread();
}

TEST_F(DeviceReading, a_headset_that_was_pulled_out_is_leaving_though_it_is_open) {
    plug();
    const auto made = make_device(orvex);  // which nobody reads
    made->set_device_handles(open_handle(), nullptr);
    EXPECT_FALSE(made->is_leaving());
    ASSERT_EQ(bus().unplug(headset_), "");
    EXPECT_TRUE(made->is_open());
    EXPECT_TRUE(made->is_leaving());
}

TEST_F(DeviceReading, a_headset_whose_reading_ended_is_leaving_before_its_handle_is_closed) {
    const auto made = make_open_device();
    std::vector<bool> open, leaving;
    logger_->on_line([&](const std::string& line) {
        if (line == exit_loop || line == device_line("hid_device_close", "try to close device") ||
            line == device_line("hid_device_close", "restore some parameters to default value. ")) {
            open.push_back(made->is_open());
            leaving.push_back(made->is_leaving());
        }
    });
    ASSERT_EQ(bus().misbehave(headset_, Fault::read_fails), "");
    ASSERT_TRUE(wait_for_upward_call(removal));
    EXPECT_EQ(open, (std::vector{true, true, false}));
    EXPECT_EQ(leaving, (std::vector{true, true, true}));
    EXPECT_TRUE(made->is_leaving());
}

TEST_F(DeviceReading, a_headset_that_was_stopped_is_not_leaving) {
    const auto made = make_open_device();
    made->stop_device_thread();
    ASSERT_TRUE(logger_->wait_for(shutting_down));
    EXPECT_FALSE(made->is_leaving());
}

TEST_F(DeviceReading, a_logger_that_throws_on_the_read_thread_leaves_the_headset_closed) {
    const auto made = make_open_device();
    logger_->on_line([](const std::string& line) {
        if (line == exit_loop) {
            throw std::runtime_error("the host's logger failed");
        }
    });
    ASSERT_EQ(bus().unplug(headset_), "");
    EXPECT_TRUE(eventually([&] { return is_closed() && !made->is_open() && !made->is_leaving(); }));
    EXPECT_EQ(upward_calls(), Lines{});
}

// ---- opened by ids

class DeviceReadingTried : public DeviceTest {};

TEST_F(DeviceReadingTried, an_unplugged_headset_closes_itself_and_asks_for_its_removal) {
    const auto made = make_tried_device();
    ASSERT_EQ(bus().unplug(headset_), "");
    ASSERT_TRUE(logger_->wait_for(closing_down));
    EXPECT_TRUE(in_order(logger_->lines(),
                         {device_line("tryopen_read_thread", "Error[read error and break out] "),
                          device_line("hid_device_close", "try to close device"), closed, closing_down}));
    EXPECT_EQ(upward_calls(), Lines{removal});
    EXPECT_FALSE(made->is_open());
}

TEST_F(DeviceReadingTried, a_report_of_one_byte_is_passed_on) {
    const auto made = make_tried_device();
    ASSERT_EQ(bus().misbehave(headset_, Fault::read_one_byte), "");
    ASSERT_TRUE(logger_->wait_for(device_line("process_read", "exit")));
    EXPECT_EQ(driver_->calls(), (Lines{"process_read(00)", "handle_headset_reponse(-1)"}));
    send(hook_report);
    EXPECT_TRUE(made->is_open());
    made->stop_device_thread();
}

TEST_F(DeviceReadingTried, a_read_of_nothing_is_passed_on) {
    const auto made = make_tried_device();
    ASSERT_EQ(bus().misbehave(headset_, Fault::read_zero_bytes), "");
    ASSERT_TRUE(logger_->wait_for(device_line("process_read", "exit")));
    EXPECT_EQ(driver_->calls(), (Lines{"process_read()", "handle_headset_reponse(-1)"}));
    send(hook_report);
    EXPECT_TRUE(made->is_open());
    made->stop_device_thread();
}

TEST_F(DeviceReadingTried, a_stopped_headset_closes_down_and_is_not_removed) {
    const auto made = make_tried_device();
    made->stop_device_thread();
    ASSERT_TRUE(logger_->wait_for(closing_down));
    EXPECT_EQ(upward_calls(), Lines{});
    EXPECT_EQ(logger_->lines_with("hid_device_close"), Lines{});
}

TEST_F(DeviceReadingTried, a_headset_that_nobody_holds_any_more_ends_with_its_read_thread) {
    auto made = make_tried_device();
    const std::weak_ptr<device> watched = made;
    made.reset();
    ASSERT_EQ(bus().unplug(headset_), "");
    EXPECT_TRUE(eventually([&] { return watched.expired(); }));
}

TEST_F(DeviceReadingTried, an_exception_out_of_the_key_callback_closes_the_headset_and_asks_for_its_removal) {
    const auto made = make_tried_device();
    driver_->key = headset_plugin::HEADSET_KEY_MUTE;
    on_key([] { throw std::runtime_error("the host's listener failed"); });
    ASSERT_EQ(bus().send_report(headset_, mute_report), "");
    ASSERT_TRUE(logger_->wait_for(closing_down));
    EXPECT_TRUE(in_order(logger_->lines(),
                         {device_line("handle_key_report", "enter, keycode = 1"),
                          device_line("hid_device_close", "try to close device"),
                          device_line("hid_device_close", "restore some parameters to default value. "),
                          closed, closing_down}));
    EXPECT_EQ(logger_->lines_with("Error[read error"), Lines{});
    EXPECT_EQ(upward_calls(), Lines{removal});
    EXPECT_FALSE(made->is_open());
    EXPECT_FALSE(driver_->has_handle());
}

// ---- closing and letting go

TEST_F(DeviceReading, closing_a_closed_headset_asks_for_no_removal) {
    const auto made = make_device();
    made->hid_device_close();
    EXPECT_EQ(logger_->lines(), device_lines("hid_device_close", {"try to close device"}) + Lines{closed});
    EXPECT_EQ(upward_calls(), Lines{});
}

TEST_F(DeviceReading, closing_an_open_headset_closes_its_handle_and_asks_for_its_removal) {
    plug();
    const auto made = make_device(orvex);  // which nobody reads
    made->set_device_handles(open_handle(), nullptr);
    logger_->clear();
    made->hid_device_close();
    EXPECT_EQ(logger_->lines(), close_lines(handle_number_));
    EXPECT_TRUE(is_closed());
    EXPECT_FALSE(driver_->has_handle());
    made->hid_device_close();
    EXPECT_EQ(upward_calls(), Lines{removal});
}

TEST_F(DeviceReading, closing_releases_another_thread_that_reads_the_same_handle) {
    const auto made = make_open_device();
    made->set_device_handles(nullptr, nullptr);  // which has the handle read a second time
    ASSERT_TRUE(logger_->wait_for(enter_loop));
    ASSERT_EQ(bus().misbehave(headset_, Fault::read_one_byte), "");
    EXPECT_TRUE(eventually([&] { return is_closed(); }));
    ASSERT_TRUE(logger_->wait_for_count(closed, 2));
    EXPECT_EQ(upward_calls(), Lines{removal});
    EXPECT_FALSE(made->is_open());
}

TEST_F(DeviceReading, a_headset_that_is_let_go_stops_and_closes_its_handle) {
    plug();
    auto made = make_device(orvex);  // which nobody reads
    made->set_device_handles(open_handle(), nullptr);
    logger_->clear();
    made.reset();
    EXPECT_EQ(logger_->lines(), device_lines("~device", {"enter. "}) + stop_lines(handle_number_) +
                                    device_lines("~device", {"exit. "}));
    EXPECT_TRUE(is_closed());
    EXPECT_EQ(upward_calls(), Lines{});
}

TEST_F(DeviceReading, a_logger_that_throws_does_not_keep_the_handle_open) {
    plug();
    auto made = make_device(orvex);  // which nobody reads
    made->set_device_handles(open_handle(), nullptr);
    logger_->on_line([](const std::string&) { throw std::runtime_error("the host's logger failed"); });
    made.reset();
    EXPECT_TRUE(is_closed());
}

// ---- readiness

class DeviceInventory : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        platform().virtual_clock().stop();
    }
    /// The task that a device posts, run on a thread of its own as the worker would.
    static std::thread run(std::deque<headset_plugin::WorkerTask>& tasks) {
        return std::thread(std::move(tasks.front().fn));
    }
};

TEST_F(DeviceInventory, a_headset_is_reported_ready_100_ms_later) {
    const auto made = make_device();
    made->set_device_name("Jabra Evolve");
    made->set_product_name("another name");
    made->set_host_device_id("host-1");
    made->post_inventory();
    auto tasks = test_support::take_posted_tasks();
    ASSERT_EQ(tasks.size(), 1U);
    EXPECT_EQ(tasks.front().name, "headset_plugin::device::post_inventory");
    std::thread worker = run(tasks);
    ASSERT_TRUE(platform().virtual_clock().wait_for_sleepers(1, test_support::patience));
    platform().virtual_clock().advance(std::chrono::milliseconds{99});
    EXPECT_EQ(upward_calls(), Lines{});
    platform().virtual_clock().advance(std::chrono::milliseconds{1});
    worker.join();
    EXPECT_EQ(upward_calls(), Lines{"on_headset_ready(host-1, 2830, 9417, Jabra, Jabra Evolve, SN-1)"});
}

TEST_F(DeviceInventory, a_headset_of_a_vendor_without_a_name_is_reported_as_unknown) {
    platform().virtual_clock().go();
    const auto made = make_device(0x1234);
    made->post_inventory();
    auto tasks = test_support::take_posted_tasks();
    run(tasks).join();
    EXPECT_EQ(upward_calls(), Lines{"on_headset_ready(, 4660, 9417, Unknown, , SN-1)"});
}

TEST_F(DeviceInventory, a_headset_that_is_stopped_meanwhile_is_not_reported) {
    const auto made = make_device();
    made->post_inventory();
    auto tasks = test_support::take_posted_tasks();
    std::thread worker = run(tasks);
    ASSERT_TRUE(platform().virtual_clock().wait_for_sleepers(1, test_support::patience));
    made->stop_device_thread();
    worker.join();
    EXPECT_EQ(upward_calls(), Lines{});
}

TEST_F(DeviceInventory, a_waiting_report_does_not_keep_its_headset_alive) {
    auto made = make_device();
    made->post_inventory();
    auto tasks = test_support::take_posted_tasks();
    const std::weak_ptr<device> watched = made;
    made.reset();
    EXPECT_TRUE(watched.expired());
    run(tasks).join();
    EXPECT_EQ(upward_calls(), Lines{});
}

}  // namespace
