// The retry thread: a first request that finds nothing is repeated for a while. Time stands still unless a
// test moves it.
#include <thread>

#include "tests/devicemgr/manager_fixture.h"

using namespace manager_test;
using plugin_control::match_attempts;
using plugin_control::match_interval;
using test_support::in_order;
using test_support::patience;

namespace {

std::string retry_line(const std::string& text) {
    return manager_line("setFirstAudioDevice", text);
}

std::string cached_line(const std::string& text) {
    return retry_line(text +
                      ": active_device_id_cache_:[host-SN-1], active_device_name_:[name], "
                      "active_device_serial_:[sn].");
}

const std::string not_yet = cached_line("not yet matched");
const std::string exit_line = cached_line("exit");
const std::string already_matched = retry_line("already matched, return.");
const std::string just_matched = retry_line("just matched, go post headsetReady and inventory.");
const std::string joined = manager_line("stop_tracking_thread", "first_tracking_thread_ joined");

class Retry : public ManagerTest {
  protected:
    void SetUp() override {
        ManagerTest::SetUp();
        platform().virtual_clock().stop();
    }
    /// The first request, which finds nothing, so that the retry thread takes over.
    void request() {
        EXPECT_FALSE(select("host-SN-1", "name", "sn"));
        ASSERT_TRUE(platform().virtual_clock().wait_for_sleepers(1, patience));
    }
    void tick() { platform().virtual_clock().advance(match_interval); }
    /// Lets attempts come that find nothing.
    void attempt(int attempts = 1) {
        for (int i = 0; i < attempts; ++i) {
            const std::size_t before = logger_->count(not_yet);
            ASSERT_TRUE(platform().virtual_clock().wait_for_sleepers(1, patience));
            tick();
            ASSERT_TRUE(logger_->wait_for_count(not_yet, before + 1));
        }
    }
};

TEST_F(Retry, a_first_request_that_finds_nothing_starts_the_thread) {
    request();
    ASSERT_TRUE(logger_->wait_for(cached_line("enter")));
    EXPECT_TRUE(in_order(
        logger_->lines(),
        manager_lines("setAudioDevice", {"enter: device_id:[host-SN-1], device_name:[name], serial:[sn].",
                                         "cache: device_id:[host-SN-1], device_name:[name], serial:[sn].",
                                         "search result: first_match_=0, found_device=0"})));
}

TEST_F(Retry, attempts_come_every_100_ms) {
    request();
    platform().virtual_clock().advance(match_interval - std::chrono::milliseconds{1});
    EXPECT_EQ(logger_->count(not_yet), 0U);
    platform().virtual_clock().advance(std::chrono::milliseconds{1});
    EXPECT_TRUE(logger_->wait_for(not_yet));
}

TEST_F(Retry, after_30_attempts_the_thread_gives_up) {
    request();
    attempt(match_attempts);
    ASSERT_TRUE(logger_->wait_for(exit_line));
    EXPECT_EQ(match_attempts, 30);
    EXPECT_EQ(logger_->lines_with("setFirstAudioDevice"),
              Lines{cached_line("enter")} + Lines(30, not_yet) + Lines{exit_line});
    EXPECT_EQ(manager_->active_device(), nullptr);
}

TEST_F(Retry, a_headset_that_arrives_by_the_last_attempt_is_matched) {
    request();
    attempt(match_attempts - 1);
    const auto listed = list("SN-1", "Headset");
    ASSERT_TRUE(platform().virtual_clock().wait_for_sleepers(1, patience));
    tick();
    ASSERT_TRUE(logger_->wait_for(exit_line));
    EXPECT_TRUE(in_order(logger_->lines(), {just_matched, exit_line}));
    EXPECT_EQ(manager_->active_device(), listed);
    EXPECT_TRUE(listed->is_selected());
    EXPECT_EQ(listed->host_device_id(), "host-SN-1");
    EXPECT_EQ(logger_->count(not_yet), 29U);
    EXPECT_EQ(logger_->lines_with("search at setAudioDevice"), Lines{});
}

TEST_F(Retry, a_match_of_the_thread_settles_the_search) {
    request();
    list("SN-1", "Headset");
    tick();
    ASSERT_TRUE(logger_->wait_for(exit_line));
    logger_->clear();
    EXPECT_TRUE(select("host-SN-1", "name", "sn"));
    EXPECT_EQ(logger_->lines_with("already retried"), Lines{});
    EXPECT_EQ(logger_->lines_with("search result"),
              manager_lines("setAudioDevice", {"search result: first_match_=1, found_device=1"}));
}

TEST_F(Retry, a_headset_without_a_name_matches_any_request_here_and_none_there) {
    list("no match", "");
    request();
    tick();
    ASSERT_TRUE(logger_->wait_for(just_matched));
    ASSERT_TRUE(logger_->wait_for(exit_line));
    EXPECT_EQ(active_serial(), "no match");
}

TEST_F(Retry, the_headset_whose_serial_sorts_first_wins_here_too) {
    request();
    list("SN-2", "name");
    list("SN-1", "name");
    tick();
    ASSERT_TRUE(logger_->wait_for(exit_line));
    EXPECT_EQ(active_serial(), "SN-1");
}

TEST_F(Retry, the_same_request_again_is_left_to_the_thread) {
    request();
    logger_->clear();
    list("SN-1", "Headset");
    EXPECT_FALSE(select("host-SN-1", "name", "sn"));
    EXPECT_EQ(
        logger_->lines_with("setAudioDevice"),
        manager_lines("setAudioDevice", {"enter: device_id:[host-SN-1], device_name:[name], serial:[sn].",
                                         "already retried in another thread : device_id:[host-SN-1], "
                                         "device_name:[name], serial:[sn]."}));
    EXPECT_EQ(manager_->active_device(), nullptr);
}

TEST_F(Retry, the_same_request_is_not_searched_for_after_the_thread_gave_up) {
    request();
    attempt(match_attempts);
    ASSERT_TRUE(logger_->wait_for(exit_line));
    list("SN-1", "Headset");
    logger_->clear();
    EXPECT_FALSE(select("host-SN-1", "name", "sn"));
    EXPECT_EQ(logger_->lines_with("already retried in another thread").size(), 1U);
    EXPECT_EQ(logger_->lines_with("search"), Lines{});
    EXPECT_TRUE(select("host-SN-1", "name", "other"));  // while a different one is
}

TEST_F(Retry, a_different_request_ends_the_thread_and_is_searched_for_once) {
    struct Row {
        const char *id, *name, *serial;
    };
    for (const Row& row :
         {Row{"other", "name", "sn"}, Row{"host-SN-1", "other", "sn"}, Row{"host-SN-1", "name", "other"}}) {
        logger_->clear();
        manager_ = std::make_shared<device_mgr>();
        request();
        EXPECT_FALSE(select(row.id, row.name, row.serial));
        ASSERT_TRUE(logger_->wait_for(exit_line));
        EXPECT_TRUE(
            in_order(logger_->lines(),
                     {manager_line("setAudioDevice", "stop another thread for new : device_id:[" +
                                                         std::string(row.id) + "], device_name:[" + row.name +
                                                         "], serial:[" + row.serial + "]."),
                      manager_line("setAudioDevice", "search result: first_match_=1, found_device=0")}));
        EXPECT_EQ(logger_->lines_with("setFirstAudioDevice"),
                  (Lines{cached_line("enter"), already_matched, exit_line}));
        // The former request is an ordinary one now.
        EXPECT_FALSE(select("host-SN-1", "name", "sn"));
        EXPECT_EQ(logger_->lines_with("already retried"), Lines{});
        EXPECT_EQ(logger_->lines_with("cache: ").size(), 1U);
    }
}

TEST_F(Retry, a_different_request_may_find_its_headset) {
    request();
    list("SN-2", "Headset");
    EXPECT_TRUE(select("host-SN-2"));
    ASSERT_TRUE(logger_->wait_for(exit_line));
    EXPECT_EQ(active_serial(), "SN-2");
}

TEST_F(Retry, a_first_request_that_finds_its_headset_starts_no_thread) {
    list("SN-1", "Headset");
    EXPECT_TRUE(select("host-SN-1", "name", "sn"));
    EXPECT_FALSE(select("other"));
    manager_->stop_tracking_thread();
    EXPECT_EQ(logger_->lines_with("setFirstAudioDevice"), Lines{});
    EXPECT_EQ(logger_->count(joined), 0U);
}

TEST_F(Retry, a_stop_in_the_middle_ends_the_thread_at_once_and_joins_it) {
    request();
    attempt(3);
    ASSERT_TRUE(platform().virtual_clock().wait_for_sleepers(1, patience));
    logger_->clear();
    manager_->stop_tracking_thread();
    EXPECT_EQ(logger_->lines(),
              manager_lines("stop_tracking_thread",
                            {"try to stop enumerate_hid_device and first_tracking_thread_ "}) +
                  (Lines{already_matched, exit_line, joined}) +
                  manager_lines("stop_tracking_thread", {"done "}));
}

TEST_F(Retry, a_stop_without_a_thread_joins_none) {
    manager_->stop_tracking_thread();
    EXPECT_EQ(logger_->lines(),
              manager_lines("stop_tracking_thread",
                            {"try to stop enumerate_hid_device and first_tracking_thread_ ", "done "}));
}

TEST_F(Retry, a_second_stop_joins_nothing) {
    request();
    manager_->stop_tracking_thread();
    manager_->stop_tracking_thread();
    EXPECT_EQ(logger_->count(joined), 1U);
}

TEST_F(Retry, after_a_stop_no_thread_is_started_any_more) {
    manager_->stop_tracking_thread();
    EXPECT_FALSE(select("host-SN-1", "name", "sn"));
    EXPECT_EQ(logger_->lines_with("cache: "), Lines{});
    EXPECT_EQ(logger_->lines_with("search result"),
              manager_lines("setAudioDevice", {"search result: first_match_=1, found_device=0"}));
}

TEST_F(Retry, a_stop_while_a_pass_holds_the_lock_ends) {
    Gate gate;
    plug(headset("SN-2"));
    request();
    plugin_control::set_device_availability_hook([&](int, int) {
        gate.pass();
        return true;
    });
    std::thread passing([this] { pass(); });
    EXPECT_TRUE(gate.wait_for_arrival());
    tick();  // the thread comes to wait for the lock
    std::thread stopping([this] { manager_->stop_tracking_thread(); });
    EXPECT_TRUE(logger_->wait_for(manager_line(
        "stop_tracking_thread", "try to stop enumerate_hid_device and first_tracking_thread_ ")));
    gate.open();
    passing.join();
    stopping.join();
    EXPECT_EQ(logger_->count(joined), 1U);
    EXPECT_EQ(logger_->count(exit_line), 1U);
}

TEST_F(Retry, a_stop_wins_over_a_match_while_the_thread_waits_for_the_lock) {
    // A stop can also come before the thread's look at the flag, which is no round of this test.
    bool waited = false;
    for (int round = 0; !waited && round < 1000; ++round) {
        manager_ = std::make_shared<device_mgr>();
        logger_->clear();
        request();
        plugin_control::set_device_availability_hook([this](int, int) {
            tick();  // the thread comes to wait for the lock, which this pass holds
            manager_->stop_tracking_thread();
            return true;
        });
        plug(headset("SN-1", "Test Headset", {telephony}));
        pass();
        ASSERT_TRUE(logger_->wait_for(exit_line));
        ASSERT_NE(manager_->find_device("SN-1"), nullptr);
        waited = logger_->count(already_matched) == 0;
        EXPECT_EQ(logger_->count(just_matched), 0U);
        EXPECT_EQ(manager_->active_device(), nullptr);
        bus().reset();
    }
    EXPECT_TRUE(waited);
}

TEST_F(Retry, a_stop_inside_a_pass_does_not_wait_for_the_thread) {
    plug(headset("SN-2"));
    request();
    plugin_control::set_device_availability_hook([this](int, int) {
        manager_->stop_tracking_thread();
        return true;
    });
    pass();
    EXPECT_TRUE(logger_->wait_for(exit_line));
    EXPECT_EQ(logger_->count(joined), 0U);
}

TEST_F(Retry, a_manager_that_is_let_go_while_the_thread_runs_ends_with_it) {
    request();
    const std::weak_ptr<device_mgr> watched = manager_;
    manager_ = std::make_shared<device_mgr>();
    EXPECT_FALSE(watched.expired());
    attempt(match_attempts);
    EXPECT_TRUE(test_support::eventually([&] { return watched.expired(); }));
}

TEST_F(Retry, a_stop_stops_the_headsets_as_their_serials_sort_and_joins_the_thread_then) {
    request();
    plug(headset("SN-2", "Test Headset", {telephony}));
    pass();
    plug(headset("SN-1", "Test Headset", {telephony}));
    pass();
    const auto opened = logger_->lines_with("set_device_handles: enter for device 0x24c9, led ");
    ASSERT_EQ(opened.size(), 2U);
    const auto cancel_line = [](const std::string& opened_line) {
        const std::size_t number = opened_line.find(", led ") + std::string(", led ").size();
        return "3rdPartyHeadsetPlugin: headset_plugin::device::stop_device_thread: cancel device handler IO [" +
               opened_line.substr(number, opened_line.find(", upd") - number) + "] \n";
    };
    manager_->stop_tracking_thread();
    EXPECT_TRUE(in_order(logger_->lines(), {cancel_line(opened[1]), cancel_line(opened[0]), joined,
                                            manager_line("stop_tracking_thread", "done ")}));
}

TEST_F(Retry, a_stop_puts_every_listed_headset_to_a_stop) {
    plug(headset("SN-2"));
    plug(headset("SN-1"));
    pass();
    logger_->clear();
    manager_->stop_tracking_thread();
    EXPECT_FALSE(manager_->find_device("SN-1")->is_open());
    EXPECT_FALSE(manager_->find_device("SN-2")->is_open());
    EXPECT_EQ(logger_->lines_with("stop_device_thread: cancel device handler IO").size(), 2U);
    EXPECT_EQ(manager_->connected_count(), 2U);
}

}  // namespace
