// How headsets leave the list.
#include <thread>

#include "tests/devicemgr/manager_fixture.h"

using namespace manager_test;
using test_support::glue_calls;
using test_support::wait_for_glue_call;

namespace {

const std::string task = "remove_device_with_serial::<lambda_1>::operator ()";

Lines inactive_removal_lines(const std::string& serial, int count) {
    return manager_lines("remove_device", {"enter", "remove inactive device, sn " + serial}) +
           Lines{left_line(count)};
}

class Removal : public ManagerTest {};

TEST_F(Removal, an_inactive_headset_leaves_the_list_and_the_count) {
    const auto listed = list("SN-1", "Headset");
    logger_->clear();
    manager_->remove_device(listed);
    EXPECT_EQ(logger_->lines(), inactive_removal_lines("SN-1", 0));
    EXPECT_EQ(manager_->find_device("SN-1"), nullptr);
    EXPECT_EQ(manager_->connected_count(), 0U);
}

TEST_F(Removal, the_active_headset_leaves_without_being_put_to_rest) {
    const int number = plug(headset("SN-1"));
    pass();
    ASSERT_TRUE(select("host-SN-1"));
    manager_->set_active_headset_state(2);
    const auto listed = manager_->find_device("SN-1");
    const auto outputs = bus().outputs(number)->size();
    logger_->clear();
    manager_->remove_device(listed);
    EXPECT_EQ(log(), manager_lines("remove_device", {"enter", "device to be removed is active"}) +
                         Lines{left_line(0)});
    EXPECT_EQ(manager_->active_device(), nullptr);
    EXPECT_EQ(manager_->find_device("SN-1"), nullptr);
    EXPECT_EQ(listed->headset_state(), 2);
    EXPECT_TRUE(listed->is_selected());
    EXPECT_EQ(logger_->lines_with("headset_set_state"), Lines{});
    EXPECT_EQ(bus().outputs(number)->size(), outputs);
    listed->stop_device_thread();
}

TEST_F(Removal, an_inactive_orvex_headset_stays_listed_but_is_not_counted) {
    const auto own = list("SN-1", "Own", orvex);
    logger_->clear();
    manager_->remove_device(own);
    EXPECT_EQ(logger_->lines(), manager_lines("remove_device", {"enter"}) + Lines{left_line(0)});
    EXPECT_EQ(manager_->find_device("SN-1"), own);
}

TEST_F(Removal, an_active_orvex_headset_leaves_the_list) {
    const auto own = list("SN-1", "Own", orvex);
    ASSERT_TRUE(select("host-SN-1"));
    manager_->remove_device(own);
    EXPECT_EQ(manager_->find_device("SN-1"), nullptr);
    EXPECT_EQ(manager_->active_device(), nullptr);
}

TEST_F(Removal, a_removal_that_takes_nothing_off_the_list_still_counts) {
    const auto listed = list("SN-1", "Headset");
    manager_->remove_device(listed);
    logger_->clear();
    manager_->remove_device(listed);
    EXPECT_EQ(logger_->lines(), inactive_removal_lines("SN-1", -1));
}

TEST_F(Removal, removing_one_headset_leaves_the_others) {
    const auto first = list("SN-1", "First");
    const auto second = list("SN-2", "Second");
    ASSERT_TRUE(select("host-SN-2"));
    manager_->remove_device(first);
    EXPECT_EQ(manager_->find_device("SN-2"), second);
    EXPECT_EQ(active_serial(), "SN-2");
    EXPECT_EQ(manager_->connected_count(), 1U);
}

TEST_F(Removal, a_headset_that_was_active_and_is_removed_again_leaves_the_one_that_is_active_now) {
    const auto first = list("SN-1", "First");
    const auto second = list("SN-2", "Second");
    ASSERT_TRUE(select("host-SN-1"));
    manager_->remove_device(first);
    ASSERT_TRUE(select("host-SN-2"));
    manager_->remove_device(first);
    EXPECT_EQ(manager_->active_device(), second);
    EXPECT_EQ(manager_->find_device("SN-2"), second);
}

TEST_F(Removal, a_headset_that_was_listed_anew_stays_when_its_former_object_is_removed) {
    const auto former = list("SN-1", "Headset");
    manager_->remove_device(former);
    const auto listed = list("SN-1", "Headset");
    logger_->clear();
    manager_->remove_device(former);
    EXPECT_EQ(logger_->lines(), manager_lines("remove_device", {"enter"}));
    EXPECT_EQ(manager_->find_device("SN-1"), listed);
    EXPECT_EQ(manager_->connected_count(), 1U);
}

// ---- on the worker

TEST_F(Removal, a_removal_by_serial_is_told_to_the_host_and_then_done) {
    const auto listed = list("SN-1", "Jabra Evolve");  // and held, so that the log does not tell of its end
    logger_->clear();
    manager_->remove_device_with_serial("SN-1");
    ASSERT_TRUE(logger_->wait_for(left_line(0)));
    EXPECT_EQ(logger_->lines(), manager_lines("remove_device_with_serial", {"enter"}) +
                                    manager_lines(task, {"remove orvex device"}) +
                                    manager_lines("device_removed", {"for device: sn [SN-1}: "}) +
                                    inactive_removal_lines("SN-1", 0));
    EXPECT_EQ(glue_calls(), Lines{"onDeviceRemoved(, 2830, 9417, Jabra, Jabra Evolve, SN-1)"});
    EXPECT_EQ(manager_->find_device("SN-1"), nullptr);
}

TEST_F(Removal, a_matched_headset_is_reported_with_the_hosts_id) {
    list("SN-1", "Jabra Evolve");
    ASSERT_TRUE(select("host-SN-1"));
    manager_->remove_device_with_serial("SN-1");
    EXPECT_TRUE(wait_for_glue_call("onDeviceRemoved(host-SN-1, 2830, 9417, Jabra, Jabra Evolve, SN-1)"));
}

TEST_F(Removal, a_headset_of_an_unlisted_vendor_is_reported_as_unknown) {
    manager_->device_removed(list("SN-1", "", 0x1234));
    EXPECT_EQ(glue_calls(), Lines{"onDeviceRemoved(, 4660, 9417, Unknown, , SN-1)"});
}

TEST_F(Removal, a_serial_that_is_not_listed_changes_nothing) {
    list("SN-1", "Headset");
    logger_->clear();
    manager_->remove_device_with_serial("SN-2");
    ASSERT_TRUE(logger_->wait_for(manager_line(task, "did not find device to remove")));
    EXPECT_EQ(logger_->lines(), manager_lines("remove_device_with_serial", {"enter"}) +
                                    manager_lines(task, {"did not find device to remove"}));
    EXPECT_EQ(glue_calls(), Lines{});
    EXPECT_NE(manager_->find_device("SN-1"), nullptr);
    EXPECT_EQ(manager_->connected_count(), 1U);
}

TEST_F(Removal, removals_wait_for_their_turn_and_do_not_hold_their_manager) {
    const auto gate =
        std::make_shared<Gate>();  // shared: that the manager is gone orders nothing in the worker
    list("SN-1", "Headset");
    manager_->post_task({"held up", [gate] { gate->pass(); }});
    ASSERT_TRUE(gate->wait_for_arrival());
    manager_->remove_device_with_serial("SN-1");
    EXPECT_NE(manager_->find_device("SN-1"), nullptr);
    const std::weak_ptr<device_mgr> watched = manager_;
    manager_ = std::make_shared<device_mgr>();
    gate->open();
    EXPECT_TRUE(test_support::eventually([&] { return watched.expired(); }));
}

TEST_F(Removal, the_host_is_told_without_the_lock_held) {
    list("SN-1", "Headset");
    // Another thread gets at the list while the host is being told.
    test_support::on_glue_call([this](const std::string&) {
        std::thread([this] { EXPECT_NE(manager_->find_device("SN-1"), nullptr); }).join();
    });
    manager_->remove_device_with_serial("SN-1");
    EXPECT_TRUE(logger_->wait_for(left_line(0)));
}

}  // namespace
