// The factories, the facades, stop, and which manager an interface belongs to.

#include <stdexcept>

#include "base/plugin_log.h"
#include "devicemgr/device_mgr_api.h"
#include "devicemgr/message_thread.h"
#include "plugin/plugin_manager.h"
#include "tests/plugin/plugin_host.h"

namespace {

using namespace plugin_control;
using namespace test_support;

using EntryPoints = PluginHost;

const std::string control_line = bare_line("plugin_control::createPluginControl");
const std::string config_line = bare_line("plugin_control::createPluginConfig");
const std::string stop_line = bare_line("plugin_control::PluginManager::stopPluginManager");
const std::string construction_line = bare_line("plugin_control::PluginManager::PluginManager");

void* complete_object(const std::shared_ptr<IPluginCallControlCallback>& control) {
    return dynamic_cast<void*>(control.get());
}

void* complete_object(const std::shared_ptr<IPluginConfigCallback>& config) {
    return dynamic_cast<void*>(config.get());
}

TEST_F(EntryPoints, both_factories_give_the_same_object) {
    const auto control = createPluginControl(logger_);
    const auto config = createPluginConfig(logger_);
    EXPECT_EQ(complete_object(control), complete_object(config));
    EXPECT_EQ(complete_object(control), static_cast<void*>(plugin_manager().get()));
}

TEST_F(EntryPoints, the_configuration_factory_starts_the_plugin_as_well) {
    const auto config = createPluginConfig(logger_);
    const auto control = createPluginControl(logger_);
    EXPECT_EQ(complete_object(control), complete_object(config));
    EXPECT_EQ(logger_->count(config_line), 0U);
    EXPECT_EQ(logger_->count(control_line), 1U);
}

TEST_F(EntryPoints, both_interfaces_share_one_owner_count_with_the_plugin) {
    const auto control = createPluginControl(logger_);
    const auto config = createPluginConfig(logger_);
    EXPECT_FALSE(control.owner_before(config));
    EXPECT_FALSE(config.owner_before(control));
    EXPECT_TRUE(eventually([&] { return config.use_count() == 3; }));
}

TEST_F(EntryPoints, call_control_is_the_first_base_of_the_object) {
    const auto control = createPluginControl(logger_);
    EXPECT_EQ(static_cast<void*>(control.get()), complete_object(control));
}

TEST_F(EntryPoints, a_later_factory_call_gives_the_same_object_and_ignores_its_logger) {
    const auto first = createPluginControl(logger_);
    const auto other_logger = std::make_shared<RecordingLogger>();
    EXPECT_EQ(createPluginControl(other_logger), first);
    createPluginConfig(other_logger);
    EXPECT_EQ(getPluginLogger(), logger_);
    EXPECT_TRUE(in_order(logger_->lines(), {control_line, config_line}));
    EXPECT_EQ(other_logger->lines(), Lines());
}

TEST_F(EntryPoints, the_first_factory_line_is_lost_and_the_second_delivered) {
    createPluginControl(logger_);
    EXPECT_EQ(logger_->count(control_line), 0U);
    createPluginControl(logger_);
    EXPECT_EQ(logger_->count(control_line), 1U);
}

TEST_F(EntryPoints, lines_of_the_construction_are_lost) {
    createPluginControl(logger_);
    EXPECT_EQ(logger_->count(construction_line), 0U);
    EXPECT_EQ(logger_->lines_with("start_device_mgr").size(), 0U);
}

TEST_F(EntryPoints, the_construction_line_goes_to_the_logger_of_a_manager_that_is_there_already) {
    start();
    logger_->clear();
    const PluginManager second(logger_);
    EXPECT_TRUE(in_order(logger_->lines(), {construction_line, bare_line("start_device_mgr")}));
    EXPECT_EQ(logger_->count(bare_line("start_device_mgr") + "creating"), 0U);
}

TEST_F(EntryPoints, the_plugin_lives_on_when_the_host_lets_go) {
    const std::weak_ptr<IPluginCallControlCallback> watched = createPluginControl(logger_);
    EXPECT_TRUE(eventually([&] { return watched.use_count() == 1; }));
    EXPECT_EQ(createPluginControl(logger_), watched.lock());
}

TEST_F(EntryPoints, an_expired_logger_means_silence) {
    std::weak_ptr<IPluginLogger> expired = std::make_shared<RecordingLogger>();
    const auto control = createPluginControl(expired);
    ASSERT_NE(control, nullptr);
    EXPECT_EQ(getPluginLogger(), nullptr);
    control->setCallControlListener(listener_);
    EXPECT_EQ(listener_->calls(), Lines{"onListenerAttached()"});
}

TEST_F(EntryPoints, a_logger_that_goes_away_is_called_no_more_and_nothing_else_changes) {
    start_with_listeners();
    std::weak_ptr<RecordingLogger> gone = std::exchange(logger_, std::make_shared<RecordingLogger>());
    EXPECT_TRUE(eventually([&] { return gone.expired(); })) << "the plug-in owns the host's logger";
    control_->connectCall("", "1");
    EXPECT_EQ(plugin_log("%s\n", "nobody hears this"), 0);
    EXPECT_EQ(listener_->calls(), Lines{"onListenerAttached()"});
}

// ---- facades

TEST_F(EntryPoints, the_facades_give_the_two_sides_of_the_same_object) {
    std::weak_ptr<IPluginLogger> logger = logger_;
    IPluginCallControlCallback* const control = createPluginControlFacade(&logger);
    IPluginConfigCallback* const config = createPluginConfigFacade(&logger);
    ASSERT_NE(control, nullptr);
    EXPECT_EQ(control, createPluginControl(logger_).get());
    EXPECT_EQ(config, createPluginConfig(logger_).get());
    const std::weak_ptr<PluginManager> watched = plugin_manager();
    EXPECT_TRUE(eventually([&] { return watched.use_count() == 1; }))
        << "a facade keeps a share of the object";
}

TEST_F(EntryPoints, the_configuration_facade_can_come_first) {
    std::weak_ptr<IPluginLogger> logger = logger_;
    IPluginConfigCallback* const config = createPluginConfigFacade(&logger);
    ASSERT_NE(config, nullptr);
    EXPECT_EQ(config, createPluginConfig(logger_).get());
    EXPECT_FALSE(config->reservedConfig2());
}

TEST_F(EntryPoints, a_facade_call_logs_what_the_factory_logs) {
    std::weak_ptr<IPluginLogger> logger = logger_;
    createPluginControlFacade(&logger);
    createPluginControlFacade(&logger);
    createPluginConfigFacade(&logger);
    stopPluginControlFacade();
    EXPECT_TRUE(in_order(logger_->lines(), {control_line, config_line, stop_line}));
    EXPECT_EQ(logger_->count(control_line), 1U);
    EXPECT_TRUE(is_plugin_stopped());
}

TEST_F(EntryPoints, a_facade_without_a_living_logger_gives_null_and_starts_nothing) {
    std::weak_ptr<IPluginLogger> empty;
    std::weak_ptr<IPluginLogger> expired = std::make_shared<RecordingLogger>();
    for (std::weak_ptr<IPluginLogger>* const logger :
         {static_cast<std::weak_ptr<IPluginLogger>*>(nullptr), &empty, &expired}) {
        EXPECT_EQ(createPluginControlFacade(logger), nullptr);
        EXPECT_EQ(createPluginConfigFacade(logger), nullptr);
        EXPECT_EQ(plugin_manager(), nullptr);
    }
}

TEST_F(EntryPoints, a_facade_refuses_an_expired_logger_even_while_the_plugin_runs) {
    start();
    logger_->clear();
    std::weak_ptr<IPluginLogger> expired = std::make_shared<RecordingLogger>();
    EXPECT_EQ(createPluginControlFacade(&expired), nullptr);
    EXPECT_EQ(createPluginConfigFacade(&expired), nullptr);
    EXPECT_EQ(logger_->lines_with("createPlugin"), Lines()) << "a factory was called";
}

// ---- stop

TEST_F(EntryPoints, stop_logs_its_steps_until_the_manager_is_let_go) {
    start();
    ASSERT_TRUE(eventually([] { return message_window() != nullptr; }));
    logger_->clear();
    stopPluginControl();
    EXPECT_TRUE(in_order(logger_->lines(), {
                                               stop_line,
                                               line("stop_device_mgr", "enter"),
                                               line("stop_device_mgr", "completed"),
                                               line("stop_device_mgr", "try to end message thread "),
                                           }));
    logger_->clear();
    plugin_log("%s\n", "after the stop");
    EXPECT_EQ(logger_->count("after the stop\n"), 0U);
    EXPECT_EQ(plugin_manager(), nullptr);
    EXPECT_EQ(message_window(), nullptr);
}

TEST_F(EntryPoints, the_stop_flag_is_set_before_the_device_manager_stops) {
    start();
    bool stopped_before = true;
    bool stopped_then = false;
    bool manager_there = false;
    logger_->on_line([&](const std::string& logged) {
        if (logged == stop_line) {
            stopped_before = is_plugin_stopped();
        } else if (logged == line("stop_device_mgr", "enter")) {
            stopped_then = is_plugin_stopped();
            manager_there = plugin_manager() != nullptr;
        }
    });
    stopPluginControl();
    logger_->on_line({});
    EXPECT_FALSE(stopped_before);
    EXPECT_TRUE(stopped_then);
    EXPECT_TRUE(manager_there);
}

/// A host whose logger throws while the plug-in stops.
class FailingStop : public EntryPoints {
  protected:
    void SetUp() override {
        EntryPoints::SetUp();
        start();
        logger_->on_line([](const std::string& logged) {
            if (logged == line("stop_device_mgr", "enter")) {
                throw std::runtime_error("the log is full");
            }
        });
    }

    void expect_a_start_to_give_a_working_plugin() {
        logger_->on_line({});
        EXPECT_TRUE(is_plugin_stopped());
        EXPECT_EQ(plugin_manager(), nullptr);
        const auto old_control = control_;
        start_with_listeners();
        EXPECT_NE(control_, old_control);
        EXPECT_FALSE(is_plugin_stopped());
        control_->createCall("", "41", 1);
        EXPECT_EQ(logger_->count(manager_line("createCall", "cid=41, call direction=1")), 1U);
        plug_active();
        EXPECT_EQ(listener_->calls().size(), 2U) << "attached and ready";
    }
};

TEST_F(FailingStop, lets_the_exception_out_and_the_next_start_work) {
    EXPECT_THROW(stopPluginControl(), std::runtime_error);
    expect_a_start_to_give_a_working_plugin();
}

TEST_F(FailingStop, of_a_facade_lets_nothing_out_and_the_next_start_work) {
    EXPECT_NO_THROW(stopPluginControlFacade());
    expect_a_start_to_give_a_working_plugin();
}

TEST_F(EntryPoints, stop_without_a_start_sets_the_stop_flag_all_the_same) {
    start();
    EXPECT_FALSE(is_plugin_stopped());
    stopPluginControl();
    EXPECT_TRUE(is_plugin_stopped());
    stopPluginControl();
    EXPECT_TRUE(is_plugin_stopped());
    EXPECT_EQ(plugin_manager(), nullptr);
}

TEST_F(EntryPoints, stop_without_a_manager_still_stops_the_device_manager) {
    start_device_mgr(1);
    ASSERT_TRUE(eventually([] { return message_window() != nullptr; }));
    stopPluginControl();
    EXPECT_EQ(message_window(), nullptr);
    EXPECT_EQ(get_active_device_id(), nullptr);
    EXPECT_TRUE(is_plugin_stopped());
}

TEST_F(EntryPoints, the_manager_dies_at_stop_when_the_host_holds_no_copy) {
    const std::weak_ptr<IPluginCallControlCallback> watched = createPluginControl(logger_);
    stopPluginControl();
    EXPECT_TRUE(eventually([&] { return watched.expired(); }));
}

TEST_F(EntryPoints, the_manager_dies_with_the_last_copy_that_the_host_kept_over_stop) {
    start();
    const std::weak_ptr<IPluginCallControlCallback> watched = control_;
    stopPluginControl();
    control_.reset();
    EXPECT_FALSE(watched.expired()) << "the configuration side holds the object, too";
    config_.reset();
    EXPECT_TRUE(eventually([&] { return watched.expired(); }));
}

TEST_F(EntryPoints, dropping_an_old_manager_leaves_the_new_one_alone) {
    start();
    auto old_control = control_;
    const std::weak_ptr<IPluginCallControlCallback> watched = old_control;
    stopPluginControl();
    start_with_listeners();
    EXPECT_NE(control_, old_control);
    old_control.reset();
    EXPECT_TRUE(eventually([&] { return watched.expired(); }));
    const int headset = plug_active();
    EXPECT_EQ(listener_->calls().size(), 2U) << "attached and ready";
    control_->connectCall("", "41");
    EXPECT_EQ(orvex_virtual_press(headset, 0x0B, 0x2F), 0) << orvex_virtual_error();
    EXPECT_TRUE(listener_->wait_for("onMuteCall(" + host_id(headset) + ", 41, true)"));
}

TEST_F(EntryPoints, a_start_after_stop_makes_a_new_running_manager_with_its_own_logger) {
    start();
    const auto old_control = control_;
    stopPluginControl();
    EXPECT_FALSE(old_control->setAudioDevice("any", "", ""));
    const auto other_logger = std::make_shared<RecordingLogger>();
    control_ = createPluginControl(other_logger);
    EXPECT_NE(control_, old_control);
    EXPECT_FALSE(is_plugin_stopped());
    EXPECT_EQ(getPluginLogger(), other_logger);
}

TEST_F(EntryPoints, an_interface_kept_from_before_stop_answers_again_after_the_next_start) {
    start();
    const auto old_control = control_;
    const auto old_config = config_;
    stopPluginControl();
    start();
    logger_->clear();
    old_control->createCall("", "7", 1);
    old_config->setDoNotDisturb("", 3);
    EXPECT_TRUE(in_order(logger_->lines(), {manager_line("createCall", "cid=7, call direction=1"),
                                            manager_line("setDoNotDisturb", "ENTER, value 3")}));
    const int headset = plug();
    EXPECT_TRUE(old_control->setAudioDevice(host_id(headset), "", ""));
}

TEST_F(EntryPoints, stop_keeps_listeners_and_hook) {
    start_with_listeners();
    const auto old_control = control_;
    config_->registerDeviceAvailabilityHook([](int, int) { return false; });
    stopPluginControl();
    EXPECT_EQ(old_control->getCallControlListener(), listener_);
    EXPECT_EQ(config_->getConfigListener(), listener_);
    start();
    ASSERT_GT(orvex_virtual_plug("jabra-link-380c", nullptr), 0);
    EXPECT_TRUE(logger_->wait_for(line("plugin_control::device_mgr::enumerate_hid_device",
                                       "disallowed vendor_id:[0x0b0e], product_id:[0x24c9]")));
    EXPECT_EQ(control_->getCallControlListener(), nullptr) << "a new manager starts without listeners";
}

}  // namespace
