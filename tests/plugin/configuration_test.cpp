// The configuration side: the model question, do-not-disturb, the availability hook, the listener, and fixed
// answers.

#include <array>
#include <atomic>
#include <pthread.h>
#include <set>
#include <stdexcept>

#include "devicemgr/device_mgr_api.h"
#include "plugin/plugin_manager.h"
#include "tests/plugin/plugin_host.h"
#include "tests/plugin/recording_driver.h"

namespace {

using namespace plugin_control;
using namespace test_support;

class Configuration : public PluginHost {
  protected:
    void SetUp() override {
        PluginHost::SetUp();
        start_with_listeners();
    }

    /// Has the plug-in look for headsets again: another device comes.
    void run_pass() {
        ASSERT_GT(orvex_virtual_plug("logitech-g535", nullptr), 0);
        drain_passes();
    }
};

std::string disallowed_line(const char* ids) {
    return line("plugin_control::device_mgr::enumerate_hid_device", std::string("disallowed ") + ids);
}

// ---- the model

TEST_F(Configuration, the_model_of_an_active_headset_is_logged_and_unknown_for_third_party_headsets) {
    const int headset = plug_active();
    logger_->clear();
    std::string model = "before";
    EXPECT_FALSE(config_->getHeadsetModel("longer " + host_id(headset) + " text", model, 1));
    EXPECT_EQ(model, "");
    EXPECT_TRUE(in_order(logger_->lines(),
                         {line("get_active_device_id", "enter:"), line("get_headset_model", "enter"),
                          manager_line("getHeadsetModel", "model ")}));
    EXPECT_EQ(logger_->lines_with("is_active_device"), Lines());
}

TEST_F(Configuration, the_model_question_accepts_the_id_itself_and_any_text_around_it) {
    const int headset = plug_active();
    const std::string id = host_id(headset);
    for (const std::string& asked : {id, "{0.0.1}" + id, id + "&suffix"}) {
        std::string model = "before";
        config_->getHeadsetModel(asked, model, 0);
        EXPECT_EQ(model, "") << asked;
    }
}

TEST_F(Configuration, the_model_question_for_another_device_is_logged_and_leaves_the_text_alone) {
    const int headset = plug_active();
    std::string upper_case = host_id(headset);
    upper_case.replace(0, 3, "USB");
    for (const std::string& asked : {std::string("unrelated"), std::string(), serial(headset), upper_case}) {
        logger_->clear();
        std::string model = "before";
        EXPECT_FALSE(config_->getHeadsetModel(asked, model, 0));
        EXPECT_EQ(model, "before");
        EXPECT_EQ(logger_->lines_with("PluginManager::"),
                  Lines{manager_line("is_active_device", "device_id=" + asked + ", active device")});
    }
}

TEST_F(Configuration, the_model_question_without_an_active_headset_is_answered_with_no_line) {
    plug();
    logger_->clear();
    std::string model = "before";
    EXPECT_FALSE(config_->getHeadsetModel("any", model, 0));
    EXPECT_EQ(model, "before");
    EXPECT_EQ(logger_->lines_with("PluginManager::"), Lines());
}

TEST_F(Configuration, the_model_question_without_a_device_manager_is_answered_with_no_line) {
    const int headset = plug_active();
    stop_device_mgr();
    logger_->clear();
    std::string model = "before";
    EXPECT_FALSE(config_->getHeadsetModel(host_id(headset), model, 0));
    EXPECT_EQ(model, "before");
    EXPECT_EQ(logger_->lines_with("PluginManager::"), Lines());
    EXPECT_EQ(get_headset_model(host_id(headset)), "");
}

TEST_F(Configuration, the_model_question_after_stop_gives_false) {
    const int headset = plug_active();
    stopPluginControl();
    std::string model = "before";
    EXPECT_FALSE(config_->getHeadsetModel(host_id(headset), model, 0));
    EXPECT_EQ(model, "before");
}

// ---- do-not-disturb and the fixed answers

TEST_F(Configuration, do_not_disturb_changes_nothing_but_the_log) {
    const auto driver = install_recording_driver();
    plug_active();
    driver->take_shown();
    listener_->clear();
    logger_->clear();
    config_->setDoNotDisturb("any", 1);
    config_->setDoNotDisturb("", -5);
    EXPECT_EQ(logger_->lines(), (Lines{manager_line("setDoNotDisturb", "ENTER, value 1"),
                                       manager_line("setDoNotDisturb", "ENTER, value -5")}));
    EXPECT_EQ(driver->take_shown(), Lines());
    EXPECT_EQ(listener_->calls(), Lines());
}

TEST_F(Configuration, the_reserved_operations_have_fixed_answers_and_log_nothing) {
    plug_active();
    for (const bool stopped : {false, true}) {
        if (stopped) {
            stopPluginControl();
        }
        logger_->clear();
        config_->reservedConfig1(true);
        EXPECT_FALSE(config_->reservedConfig2());
        EXPECT_EQ(config_->reservedConfig3("a", 7), 0);
        EXPECT_FALSE(config_->reservedConfig4());
        EXPECT_EQ(config_->reservedConfig6("a", "b"), 0);
        EXPECT_FALSE(config_->reservedConfig7());
        EXPECT_FALSE(config_->reservedConfig9("a"));
        EXPECT_FALSE(config_->reservedConfig10("a"));
        EXPECT_EQ(config_->reservedConfig11("a", "b"), 0);
        config_->reservedConfig12("a");
        config_->reservedConfig16(false);
        config_->reservedConfig17();
        EXPECT_EQ(logger_->lines_with("PluginManager"), Lines());
    }
}

// ---- the availability hook

TEST_F(Configuration, a_hook_that_refuses_keeps_the_headset_out) {
    std::atomic<int> vendor_id{0};
    std::atomic<int> product_id{0};
    logger_->clear();
    config_->registerDeviceAvailabilityHook([&](int vendor, int product) {
        vendor_id = vendor;
        product_id = product;
        return false;
    });
    EXPECT_EQ(logger_->lines_with("PluginManager::"),
              Lines{manager_line("registerDeviceAvailabilityHook", "ENTER")});
    const int headset = orvex_virtual_plug("jabra-link-380c", nullptr);
    ASSERT_TRUE(logger_->wait_for(disallowed_line("vendor_id:[0x0b0e], product_id:[0x24c9]")));
    EXPECT_EQ(vendor_id, 0x0B0E);
    EXPECT_EQ(product_id, 0x24C9);
    EXPECT_EQ(logger_->lines_with("create device"), Lines());
    EXPECT_FALSE(choose(headset));
    stopPluginControl();  // the hook refers to this test
}

TEST_F(Configuration, a_hook_is_asked_on_the_message_thread) {
    Recording threads;
    config_->registerDeviceAvailabilityHook([&](int, int) {
        std::array<char, 16> name{};
        pthread_getname_np(pthread_self(), name.data(), name.size());
        threads.add(name.data());
        return true;
    });
    plug();
    const Lines names = threads.texts();
    EXPECT_EQ(std::set(names.begin(), names.end()), std::set<std::string>{"orvex-message"});
    stopPluginControl();  // the hook refers to this test
}

TEST_F(Configuration, a_hook_lets_in_what_it_allows) {
    config_->registerDeviceAvailabilityHook([](int vendor, int) { return vendor == 0x0B0E; });
    const int refused = orvex_virtual_plug("sennheiser-sc-660", nullptr);
    ASSERT_TRUE(logger_->wait_for(disallowed_line("vendor_id:[0x1395], product_id:[0x0082]")));
    const int allowed = plug("jabra-link-380c");
    EXPECT_TRUE(choose(allowed));
    EXPECT_FALSE(choose(refused));
}

TEST_F(Configuration, an_empty_hook_lets_every_headset_in_again) {
    config_->registerDeviceAvailabilityHook([](int, int) { return false; });
    const int headset = orvex_virtual_plug("jabra-link-380c", nullptr);
    ASSERT_TRUE(logger_->wait_for(disallowed_line("vendor_id:[0x0b0e], product_id:[0x24c9]")));
    config_->registerDeviceAvailabilityHook({});
    EXPECT_EQ(logger_->count(manager_line("registerDeviceAvailabilityHook", "ENTER")), 2U);
    run_pass();
    EXPECT_TRUE(logger_->wait_for(created_line(headset)));
    activate(headset);
}

TEST_F(Configuration, a_later_hook_takes_the_place_of_the_one_before) {
    std::atomic<int> asked{0};
    config_->registerDeviceAvailabilityHook([&](int, int) { return ++asked > 0; });
    config_->registerDeviceAvailabilityHook([](int, int) { return true; });
    plug();
    EXPECT_EQ(asked, 0);
}

TEST_F(Configuration, a_hook_works_on_after_stop_and_can_be_set_while_stopped) {
    stopPluginControl();
    config_->registerDeviceAvailabilityHook([](int, int) { return false; });
    ASSERT_GT(orvex_virtual_plug("jabra-link-380c", nullptr), 0);
    start();
    run_pass();
    EXPECT_TRUE(logger_->wait_for(disallowed_line("vendor_id:[0x0b0e], product_id:[0x24c9]")));
    EXPECT_EQ(logger_->lines_with("create device"), Lines());
}

/// A hook whose copying fails when it is told to.
struct HookThatCannotBeCopied {
    HookThatCannotBeCopied() = default;
    HookThatCannotBeCopied(const HookThatCannotBeCopied& other) : fails(other.fails) {
        if (*fails) {
            throw std::runtime_error("no copy");
        }
    }
    HookThatCannotBeCopied& operator=(const HookThatCannotBeCopied&) = delete;
    bool operator()(int, int) const { return false; }

    std::shared_ptr<bool> fails = std::make_shared<bool>(false);
};

TEST_F(Configuration, a_hook_whose_copying_throws_leaves_the_old_one_in_place) {
    std::atomic<int> asked{0};
    config_->registerDeviceAvailabilityHook([&](int, int) { return ++asked > 0; });
    const HookThatCannotBeCopied bad;
    const std::function<bool(int, int)> hook = bad;
    *bad.fails = true;
    EXPECT_THROW(config_->registerDeviceAvailabilityHook(hook), std::runtime_error);
    plug();
    EXPECT_GT(asked, 0);
    stopPluginControl();
}

TEST_F(Configuration, a_hook_that_throws_fails_its_pass_alone) {
    config_->registerDeviceAvailabilityHook([](int, int) -> bool { throw std::runtime_error("no idea"); });
    const int headset = orvex_virtual_plug("jabra-link-380c", nullptr);
    ASSERT_TRUE(logger_->wait_for("HeadsetPlugin: WndMessageHandler: exception caught: no idea \n"));
    config_->registerDeviceAvailabilityHook({});
    run_pass();
    EXPECT_TRUE(logger_->wait_for(created_line(headset)));
}

// ---- the listener

TEST_F(Configuration, a_config_listener_is_stored_and_called_with_nothing) {
    listener_->clear();
    logger_->clear();
    const auto second = std::make_shared<RecordingListener>();
    config_->setConfigListener(second);
    EXPECT_EQ(config_->getConfigListener(), second);
    EXPECT_EQ(second->calls(), Lines());
    EXPECT_EQ(listener_->calls(), Lines());
    EXPECT_EQ(logger_->lines_with("PluginManager"), Lines());
}

TEST_F(Configuration, a_config_listener_that_the_host_drops_is_gone) {
    EXPECT_EQ(config_->getConfigListener(), listener_);
    listener_ = std::make_shared<RecordingListener>();
    EXPECT_EQ(config_->getConfigListener(), nullptr);
}

TEST_F(Configuration, an_empty_config_listener_unregisters) {
    config_->setConfigListener(nullptr);
    EXPECT_EQ(config_->getConfigListener(), nullptr);
}

TEST_F(Configuration, the_two_listeners_are_independent) {
    control_->setCallControlListener(nullptr);
    EXPECT_EQ(config_->getConfigListener(), listener_);
    EXPECT_EQ(control_->getCallControlListener(), nullptr);
}

}  // namespace
