// Loading, starting, stopping, unloading and exiting in every order that a host can come up with.

#include <cstdlib>
#include <functional>
#include <future>
#include <mutex>
#include <thread>

#include "tests/lifetime/plugin_library.h"
#include "tests/plugin/plugin_threads.h"
#include "tests/support/recording_host.h"
#include "tests/support/recording_logger.h"

namespace {

using namespace plugin_control;
using namespace test_support;

constexpr std::uint16_t mute_key = 0x2F;

/// The reports that put the headset to rest when it is opened.
constexpr int outputs_at_opening = 2;
/// ... and those when it is ready, without a call.
constexpr int outputs_when_ready = 3;

/// A host that has loaded the library on virtual headsets.
class Lifetime : public ::testing::Test {
  protected:
    void TearDown() override {
        listener_->on_call({});
        library_.stop();
        library_.unplug_all();
        EXPECT_TRUE(wait_for_plugin_threads_to_end());
    }

    void start() {
        control_ = library_.create_control(logger_);
        control_->setCallControlListener(listener_);
    }

    /// Plugs a headset and waits until the plug-in has opened it.
    int plug() {
        const int headset = library_.plug();
        EXPECT_EQ(library_.wait_outputs(headset, outputs_at_opening, patience_ms), 1);
        return headset;
    }

    /// Plugs a headset, makes it active and connects a call.
    int plug_with_call_up() {
        const int headset = plug();
        EXPECT_TRUE(control_->setAudioDevice(library_.serial(headset), "", ""));
        EXPECT_EQ(library_.wait_outputs(headset, outputs_at_opening + outputs_when_ready, patience_ms), 1);
        control_->connectCall("", "1");
        return headset;
    }

    /// Chooses a headset that the plug-in is about to list, and waits until it is ready.
    void expect_becomes_ready(int headset) {
        const int before = library_.output_count(headset);
        EXPECT_TRUE(eventually([&] { return control_->setAudioDevice(library_.serial(headset), "", ""); }));
        EXPECT_EQ(library_.wait_outputs(headset, before + outputs_when_ready, patience_ms), 1);
    }

    /// Has the next callback of this name do something, once; the result is ready when it is done.
    std::future<void> do_inside(const std::string& callback, const std::function<void()>& action) {
        const auto done = std::make_shared<std::promise<void>>();
        const auto once = std::make_shared<std::once_flag>();
        listener_->on_call([=](const std::string& call) {
            if (call.starts_with(callback)) {
                std::call_once(*once, [&] {
                    action();
                    done->set_value();
                });
            }
        });
        return done->get_future();
    }

    PluginLibrary library_;
    std::shared_ptr<RecordingLogger> logger_ = std::make_shared<RecordingLogger>();
    std::shared_ptr<RecordingListener> listener_ = std::make_shared<RecordingListener>();
    std::shared_ptr<IPluginCallControlCallback> control_;
};

TEST(LoadAndUnload, can_be_repeated_with_a_running_plugin_in_between) {
    const auto logger = std::make_shared<RecordingLogger>();
    for (int round = 0; round < 100; ++round) {
        const PluginLibrary library;
        const int headset = library.plug();
        auto control = library.create_control(logger);
        EXPECT_EQ(library.wait_outputs(headset, outputs_at_opening, patience_ms), 1);
        control.reset();
        library.stop();
        library.unplug_all();
    }
    EXPECT_TRUE(wait_for_plugin_threads_to_end());
}

TEST(LoadAndUnload, at_once_after_stop_leaves_the_code_of_threads_on_their_way_out) {
    const auto logger = std::make_shared<RecordingLogger>();
    for (int round = 0; round < 100; ++round) {
        const PluginLibrary library;
        library.plug();
        library.create_control(logger);
        library.stop();
    }
    EXPECT_TRUE(wait_for_plugin_threads_to_end());
    PluginLibrary().unplug_all();
}

TEST(LoadAndUnload, without_a_start_starts_no_thread) {
    for (int round = 0; round < 10; ++round) {
        const PluginLibrary library;
        EXPECT_TRUE(plugin_threads_are_gone());
    }
}

TEST(LoadAndUnload, without_a_stop_keeps_the_plugin_running) {
    const auto logger = std::make_shared<RecordingLogger>();
    int headset = 0;
    {
        const PluginLibrary library;
        library.create_control(logger);
        headset = library.plug();
    }
    const PluginLibrary again;
    EXPECT_EQ(again.wait_outputs(headset, outputs_at_opening, patience_ms), 1);
    again.stop();
    again.unplug_all();
    EXPECT_TRUE(wait_for_plugin_threads_to_end());
}

TEST_F(Lifetime, every_start_in_a_tight_loop_lists_the_headset) {
    const int headset = library_.plug();
    for (int round = 1; round <= 1000; ++round) {
        control_ = library_.create_control(logger_);
        ASSERT_EQ(library_.wait_outputs(headset, round * outputs_at_opening, patience_ms), 1)
            << "start " << round << " did not open the headset";
        library_.stop();
    }
    EXPECT_EQ(library_.output_count(headset), 1000 * outputs_at_opening);
}

TEST_F(Lifetime, a_start_works_after_any_number_of_starts_that_were_stopped_at_once) {
    for (int round = 0; round < 1000; ++round) {
        control_ = library_.create_control(logger_);
        library_.stop();
    }
    start();
    plug();
}

TEST_F(Lifetime, every_start_finds_the_window_class_free) {
    for (int round = 0; round < 200; ++round) {
        control_ = library_.create_control(logger_);
        library_.stop();
    }
    EXPECT_EQ(logger_->lines_with("RegisterClassEx failed"), std::vector<std::string>());
    EXPECT_EQ(logger_->lines_with("Create message window failed"), std::vector<std::string>());
}

TEST_F(Lifetime, stop_lets_every_thread_end) {
    start();
    plug_with_call_up();
    EXPECT_FALSE(control_->setAudioDevice("a device that is not there", "", ""))
        << "starts no retry thread any more";
    library_.stop();
    EXPECT_TRUE(wait_for_plugin_threads_to_end());
}

TEST_F(Lifetime, stop_ends_the_search_for_a_headset) {
    start();
    EXPECT_FALSE(control_->setAudioDevice("a device that is not there", "", ""));
    library_.stop();
    EXPECT_TRUE(wait_for_plugin_threads_to_end());
}

TEST_F(Lifetime, stop_more_than_once_or_without_a_start_does_no_harm) {
    library_.stop();
    start();
    library_.stop();
    library_.stop();
    start();
    plug();
}

// ---- stop from inside a callback

/// What a host can be called with, and what brings it about.
struct CallbackRow {
    const char* operation;
    void (*cause)(const PluginLibrary&, IPluginCallControlCallback&, int headset);
};

class StopInside : public Lifetime, public ::testing::WithParamInterface<CallbackRow> {};

const CallbackRow callback_rows[] = {
    {"onListenerAttached", [](const PluginLibrary&, IPluginCallControlCallback& control,
                              int) { control.setCallControlListener(control.getCallControlListener()); }},
    {"onMuteCall", [](const PluginLibrary& library, IPluginCallControlCallback&,
                      int headset) { EXPECT_EQ(library.press(headset, mute_key), 0); }},
    {"onUnmuteCall",
     [](const PluginLibrary& library, IPluginCallControlCallback& control, int headset) {
         control.mute("", "1");
         EXPECT_EQ(library.press(headset, mute_key), 0);
     }},
    {"onActiveDeviceNotify",
     [](const PluginLibrary& library, IPluginCallControlCallback& control, int headset) {
         EXPECT_TRUE(control.setAudioDevice(library.serial(headset), "", ""));
     }},
    {"onDeviceRemovedNotify", [](const PluginLibrary& library, IPluginCallControlCallback&,
                                 int headset) { EXPECT_EQ(library.unplug(headset), 0); }},
};

INSTANTIATE_TEST_SUITE_P(Callbacks, StopInside, ::testing::ValuesIn(callback_rows),
                         [](const ::testing::TestParamInfo<CallbackRow>& tested) {
                             return std::string(tested.param.operation);
                         });

TEST_P(StopInside, a_listener_operation_lets_every_thread_end_and_the_next_start_work) {
    start();
    const int headset = plug_with_call_up();
    const auto stopped = do_inside(GetParam().operation, [this] { library_.stop(); });
    GetParam().cause(library_, *control_, headset);
    ASSERT_EQ(stopped.wait_for(patience), std::future_status::ready);
    EXPECT_TRUE(wait_for_plugin_threads_to_end());
    listener_->on_call({});
    start();
    library_.replug(headset);
    expect_becomes_ready(headset);
}

TEST_F(Lifetime, stop_inside_the_availability_hook_lets_every_thread_end_and_the_next_start_work) {
    start();
    const auto config = library_.create_config(logger_);
    std::promise<void> stopped;
    std::once_flag once;
    config->registerDeviceAvailabilityHook([&](int, int) {
        std::call_once(once, [&] {
            library_.stop();
            stopped.set_value();
        });
        return true;
    });
    const int headset = library_.plug();
    ASSERT_EQ(stopped.get_future().wait_for(patience), std::future_status::ready);
    EXPECT_TRUE(wait_for_plugin_threads_to_end());
    config->registerDeviceAvailabilityHook({});
    const int before = library_.output_count(headset);
    start();
    EXPECT_EQ(library_.wait_outputs(headset, before + outputs_at_opening, patience_ms), 1);
}

TEST_F(Lifetime, restart_inside_a_key_callback_goes_on_with_the_new_plugin) {
    start();
    const int headset = plug_with_call_up();
    const auto restarted = do_inside("onMuteCall", [this] {
        library_.stop();
        start();
    });
    EXPECT_EQ(library_.press(headset, mute_key), 0);
    ASSERT_EQ(restarted.wait_for(patience), std::future_status::ready);
    expect_becomes_ready(headset);
}

// ---- exit without a stop

class ExitWithoutStop : public Lifetime {
  protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

/// How far a host has come when it exits.
enum class Progress { loaded, started, headset_plugged, call_up, searching };

class ExitAt : public ExitWithoutStop, public ::testing::WithParamInterface<Progress> {
  protected:
    [[noreturn]] void get_there_and_exit() {
        if (GetParam() != Progress::loaded) {
            start();
        }
        if (GetParam() == Progress::headset_plugged) {
            plug();
        } else if (GetParam() == Progress::call_up) {
            plug_with_call_up();
        } else if (GetParam() == Progress::searching) {
            control_->setAudioDevice("a device that is not there", "", "");
        }
        std::exit(0);
    }
};

std::string progress_name(const ::testing::TestParamInfo<Progress>& tested) {
    static constexpr const char* names[] = {"loaded", "started", "headset_plugged", "call_up", "searching"};
    return names[static_cast<std::size_t>(tested.param)];
}

INSTANTIATE_TEST_SUITE_P(Points, ExitAt,
                         ::testing::Values(Progress::loaded, Progress::started, Progress::headset_plugged,
                                           Progress::call_up, Progress::searching),
                         progress_name);

TEST_P(ExitAt, any_point_without_stop_is_an_ordinary_exit) {
    EXPECT_EXIT(get_there_and_exit(), ::testing::ExitedWithCode(0), "^$");
}

TEST_F(ExitWithoutStop, in_the_middle_of_coming_and_going) {
    EXPECT_EXIT(
        {
            start();
            const int headset = plug_with_call_up();
            std::thread([this, headset] {
                while (true) {
                    library_.unplug(headset);
                    library_.replug(headset);
                }
            }).detach();
            library_.wait_outputs(headset, library_.output_count(headset) + outputs_at_opening, patience_ms);
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "^$");
}

TEST_F(ExitWithoutStop, from_inside_a_callback) {
    EXPECT_EXIT(
        {
            start();
            listener_->on_call([](const std::string& call) {
                if (call.starts_with("onMuteCall")) {
                    std::exit(0);
                }
            });
            library_.press(plug_with_call_up(), mute_key);
            std::promise<void>().get_future().wait();
        },
        ::testing::ExitedWithCode(0), "^$");
}

}  // namespace
