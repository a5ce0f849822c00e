// Which headset belongs to the host's audio device, and what is done with the active one.
#include <thread>

#include "tests/devicemgr/manager_fixture.h"

using namespace manager_test;

namespace {

std::string request_line(const std::string& text, const std::string& id, const std::string& name,
                         const std::string& serial) {
    return manager_line("setAudioDevice", text + "device_id:[" + id + "], device_name:[" + name +
                                              "], serial:[" + serial + "].");
}

std::string result_line(int first_match, int found) {
    return manager_line("setAudioDevice", "search result: first_match_=" + std::to_string(first_match) +
                                              ", found_device=" + std::to_string(found));
}

class Matching : public ManagerTest {};

TEST_F(Matching, a_headset_matches_by_its_serial_in_id_or_serial_or_its_name_in_the_name) {
    struct Row {
        const char *serial, *name;                            // of the headset
        const char *wanted_id, *wanted_name, *wanted_serial;  // of the audio device
        bool matches;
    };
    const std::vector<Row> rows = {
        {"ABC123", "Jabra Evolve", "usb#vid_0b0e#ABC123", "Speakers", "", true},
        {"ABC123", "Jabra Evolve", "ABC123", "", "", true},
        {"ABC123", "Jabra Evolve", "usb#abc123", "", "", false},
        {"ABC123", "Jabra Evolve", "ABC12", "", "", false},
        {"ABC123", "Jabra Evolve", "id", "Headset Jabra Evolve", "", true},
        {"ABC123", "Jabra Evolve", "id", "headset jabra evolve", "", false},
        {"ABC123", "Jabra Evolve", "id", "Jabra  Evolve", "", false},
        {"ABC123", "Jabra Evolve", "id", "Jabra", "", false},
        {"ABC123", "Jabra Evolve", "id", "", "xABC123x", true},
        {"ABC123", "Jabra Evolve", "id", "", "ABC124", false},
        {"ABC123", "Jabra Evolve", "Jabra Evolve", "ABC123", "Jabra Evolve", false},
        {"ABC123", "", "id", "any name", "", false},
        {"ABC123", "", "id", "", "", false},
        {"", "Jabra Evolve", "id", "", "", true},
        {"", "", "id", "", "", true},
        {"\xC3\xA9", "Jabra", "caf\xC3\xA9", "", "", true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.serial) + "/" + row.name + " for " + row.wanted_id + "/" +
                     row.wanted_name + "/" + row.wanted_serial);
        const auto listed = list(row.serial, row.name);
        EXPECT_EQ(select(row.wanted_id, row.wanted_name, row.wanted_serial), row.matches);
        EXPECT_EQ(listed->is_selected(), row.matches);
        EXPECT_EQ(listed->host_device_id(), row.matches ? row.wanted_id : "");
        EXPECT_EQ(manager_->active_device(), row.matches ? listed : nullptr);
        manager_->remove_device(listed);
        select("no headset");  // so that the next row is searched for, too
    }
}

TEST_F(Matching, of_two_that_match_the_one_whose_serial_sorts_first_wins) {
    list("b", "Headset");
    list("a", "Headset");
    list("B", "Headset");
    EXPECT_TRUE(select("id", "Headset"));
    EXPECT_EQ(active_serial(), "B");
}

TEST_F(Matching, the_search_tells_every_headset_that_it_looks_at_and_stops_at_the_match) {
    list("SN-1", "First");
    list("SN-2", "Second");
    list("SN-3", "Third");
    logger_->clear();
    EXPECT_TRUE(select("host-SN-2", "name", "sn"));
    const auto search_line = [](const std::string& serial, const std::string& name) {
        return manager_line("setAudioDevice",
                            "search at setAudioDevice: \n ZRA_devID:[host-SN-2], plugin_devID:[" + serial +
                                "] \n ZRA_devName:[name], plugin_devName:[" + name +
                                "] \n DLQ_SN:[sn], plugin_SN:[" + serial + "].");
    };
    EXPECT_EQ(logger_->lines(),
              (Lines{request_line("enter: ", "host-SN-2", "name", "sn"),
                     request_line("cache: ", "host-SN-2", "name", "sn"), search_line("SN-1", "First"),
                     search_line("SN-2", "Second"), result_line(0, 1)}));
}

TEST_F(Matching, an_empty_id_is_refused_and_keeps_the_active_headset) {
    list("SN-1", "Headset");
    ASSERT_TRUE(select("host-SN-1"));
    logger_->clear();
    EXPECT_FALSE(select("", "Headset", "SN-1"));
    EXPECT_EQ(logger_->lines(), (Lines{request_line("enter: ", "", "Headset", "SN-1"),
                                       manager_line("setAudioDevice", "empty device_id.")}));
    EXPECT_EQ(active_serial(), "SN-1");
}

TEST_F(Matching, texts_that_are_absent_count_as_empty) {
    EXPECT_FALSE(manager_->setAudioDevice(nullptr, nullptr, nullptr));
    EXPECT_EQ(logger_->lines().front(), request_line("enter: ", "", "", ""));
    list("SN-1", "Headset");
    EXPECT_TRUE(manager_->setAudioDevice("host-SN-1", nullptr, nullptr));
}

TEST_F(Matching, a_match_puts_the_former_headset_to_rest_first) {
    const auto first = list("SN-1", "First");
    const auto second = list("SN-2", "Second");
    ASSERT_TRUE(select("host-SN-1"));
    manager_->set_active_headset_state(2);
    logger_->clear();
    EXPECT_TRUE(select("host-SN-2"));
    EXPECT_FALSE(first->is_selected());
    EXPECT_TRUE(second->is_selected());
    EXPECT_EQ(first->headset_state(), 0);
    EXPECT_EQ(first->host_device_id(), "host-SN-1");
    EXPECT_EQ(second->host_device_id(), "host-SN-2");
    EXPECT_TRUE(test_support::in_order(
        logger_->lines(), {request_line("enter: ", "host-SN-2", "", ""),
                           manager_line("deselect_device", "enter"), state_line(0), result_line(1, 1)}));
}

TEST_F(Matching, matching_the_active_headset_again_puts_it_to_rest_and_takes_the_new_id) {
    const auto listed = list("SN-1", "First");
    ASSERT_TRUE(select("host-SN-1"));
    manager_->set_active_headset_state(2);
    EXPECT_TRUE(select("other-SN-1"));
    EXPECT_TRUE(listed->is_selected());
    EXPECT_EQ(listed->headset_state(), 0);
    EXPECT_EQ(listed->host_device_id(), "other-SN-1");
}

TEST_F(Matching, a_request_that_matches_nothing_leaves_no_headset_active) {
    const auto listed = list("SN-1", "First");
    ASSERT_TRUE(select("host-SN-1"));
    logger_->clear();
    EXPECT_FALSE(select("host-SN-2"));
    EXPECT_EQ(manager_->active_device(), nullptr);
    EXPECT_FALSE(listed->is_selected());
    EXPECT_TRUE(test_support::in_order(
        logger_->lines(), {result_line(1, 0), manager_line("deselect_device", "enter"), state_line(0)}));
}

TEST_F(Matching, texts_of_any_length_are_matched_although_their_log_lines_are_too_long) {
    list(std::string(5000, 's'), std::string(5000, 'n'));
    EXPECT_TRUE(select("id", std::string(10000, 'n'), ""));
    manager_->deselect_device();
    EXPECT_TRUE(select(std::string(100000, 's')));
    EXPECT_EQ(manager_->active_device()->host_device_id(), std::string(100000, 's'));
}

// ---- the active headset

TEST_F(Matching, without_an_active_headset_nothing_is_deselected) {
    manager_->deselect_device();
    EXPECT_EQ(logger_->lines(), Lines{});
}

TEST_F(Matching, a_headset_is_put_to_rest_while_it_is_the_active_one_still) {
    const auto listed = list("SN-1", "Headset");
    ASSERT_TRUE(select("host-SN-1"));
    int rests = 0;
    logger_->on_line([&](const std::string& line) {
        if (line == state_line(0)) {
            ++rests;
            EXPECT_TRUE(listed->is_selected());
            EXPECT_EQ(manager_->active_device(), listed);
        }
    });
    manager_->deselect_device();
    EXPECT_EQ(rests, 1);
    EXPECT_FALSE(listed->is_selected());
    EXPECT_EQ(manager_->active_device(), nullptr);
}

TEST_F(Matching, what_is_being_shown_as_a_headset_is_deselected_does_not_follow_its_rest) {
    const int number = plug(headset("SN-1"));
    pass();
    constexpr int rounds = 20;
    for (int round = 0; round < rounds; ++round) {
        ASSERT_TRUE(select("host-SN-1"));
        logger_->clear();
        Gate gate;
        hold_up_at("3rdPartyHeadsetPlugin: headset_plugin::device::set_mute_state: enter.\n", gate);
        std::thread muting([this] { manager_->set_headset_mute_state(true); });
        EXPECT_TRUE(held_up(gate));
        std::thread deselecting([this] { manager_->deselect_device(); });
        EXPECT_TRUE(logger_->wait_for(manager_line("deselect_device", "enter")));
        std::thread([&] { gate.open(); }).join();
        muting.join();
        deselecting.join();
        ASSERT_EQ(bus().indicator(number, mute_indicator), false) << round;
    }
    manager_->stop_tracking_thread();
    EXPECT_TRUE(logger_->wait_for(shutting_down));
}

TEST_F(Matching, states_reach_the_active_headset_only) {
    const auto first = list("SN-1", "First");
    const auto second = list("SN-2", "Second");
    logger_->clear();
    manager_->set_active_headset_state(2);
    EXPECT_EQ(logger_->lines(), Lines{});
    ASSERT_TRUE(select("host-SN-2"));
    manager_->set_active_headset_state(4);
    EXPECT_EQ(first->headset_state(), 0);
    EXPECT_EQ(second->headset_state(), 4);
}

TEST_F(Matching, mute_reaches_the_active_headset_or_is_told_that_there_is_none) {
    manager_->set_headset_mute_state(true);
    manager_->set_headset_mute_state(false);
    EXPECT_EQ(logger_->lines(),
              manager_lines("set_headset_mute_state", {"enter mute=true", "no active orvex headset",
                                                       "enter mute=false", "no active orvex headset"}));
    list("SN-1", "Headset");
    ASSERT_TRUE(select("host-SN-1"));
    logger_->clear();
    manager_->set_headset_mute_state(true);
    EXPECT_EQ(logger_->lines().front(), manager_line("set_headset_mute_state", "enter mute=true"));
    EXPECT_EQ(
        logger_->count("3rdPartyHeadsetPlugin: STDHID: headset_plugin::stdhid_cc::set_mute_data: MUTE: old "
                       "headset_leds_state_=0x0, new headset_leds_state_=0x2\n"),
        1U);
    EXPECT_EQ(logger_->lines_with("no active"), Lines{});
}

TEST_F(Matching, the_active_id_is_the_hosts_own) {
    EXPECT_EQ(manager_->get_active_device_id(), nullptr);
    EXPECT_EQ(logger_->lines(), manager_lines("get_active_device_id", {"enter", "return null device id"}));
    const auto listed = list("SN-1", "Headset");
    ASSERT_TRUE(select("host-SN-1"));
    logger_->clear();
    const char* const id = manager_->get_active_device_id();
    EXPECT_EQ(logger_->lines(), manager_lines("get_active_device_id", {"enter"}));
    manager_->remove_device(listed);
    EXPECT_STREQ(id, "host-SN-1");  // though its headset is gone
}

TEST_F(Matching, each_thread_keeps_the_id_that_it_got) {
    list("SN-1", "First");
    list("SN-2", "Second");
    ASSERT_TRUE(select("host-SN-1"));
    const char* const id = manager_->get_active_device_id();
    std::thread([this] {
        ASSERT_TRUE(select("host-SN-2"));
        EXPECT_STREQ(manager_->get_active_device_id(), "host-SN-2");
    }).join();
    EXPECT_STREQ(id, "host-SN-1");
}

TEST_F(Matching, a_third_party_headset_has_no_model) {
    EXPECT_EQ(manager_->get_headset_model("any"), "");
    list("SN-1", "Headset");
    ASSERT_TRUE(select("host-SN-1"));
    logger_->clear();
    EXPECT_EQ(manager_->get_headset_model("host-SN-1"), "");
    EXPECT_EQ(logger_->lines(), manager_lines("get_headset_model", {"enter", "no device for deviceId"}));
}

TEST_F(Matching, a_headset_of_the_makers_own_has_its_name_for_a_model) {
    list("SN-1", "Own Headset", orvex);
    ASSERT_TRUE(select("host-SN-1"));
    logger_->clear();
    EXPECT_EQ(manager_->get_headset_model("not looked at"), "Own Headset");
    EXPECT_EQ(logger_->lines(), manager_lines("get_headset_model", {"enter", "model = Own Headset"}));
}

}  // namespace
