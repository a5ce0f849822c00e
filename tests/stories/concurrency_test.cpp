// Everything at once: what the plug-in is told and asked for by several threads while headsets and the
// plug-in itself come and go. Nothing is expected while it lasts but that it goes well; afterwards all works
// as ever.

#include <array>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <mutex>
#include <random>
#include <thread>

#include "tests/stories/headset_rows.h"

namespace {

using namespace plugin_control;
using namespace test_support;

constexpr std::chrono::milliseconds duration{1500};

/// Set it to the seed that a failed test printed, to have the same choices made again.
constexpr const char* seed_variable = "ORVEX_TEST_SEED";

unsigned choose_seed() {
    const char* const wanted = std::getenv(seed_variable);
    const unsigned seed =
        wanted == nullptr ? std::random_device()() : static_cast<unsigned>(std::strtoul(wanted, nullptr, 10));
    std::cout << seed_variable << "=" << seed << std::endl;
    return seed;
}

/// Keeps nothing, so that a long test needs no memory for it.
class CountingLogger final : public IPluginLogger {
  public:
    void log(const std::string& /*message*/, int level) override { odd_levels_ += level == 2 ? 0 : 1; }
    int odd_levels() const { return odd_levels_; }

  private:
    std::atomic<int> odd_levels_{0};
};

class Concurrency : public StoryHost {
  protected:
    using Random = std::mt19937;
    using Actor = std::function<void(Random&)>;

    void SetUp() override {
        // Real time: the plug-in's own threads set the pace.
        restart();
        for (const char* const model : {"jabra-link-380c", "poly-blackwire-3220", "sennheiser-sc-660"}) {
            headsets_.push_back(orvex_virtual_plug(model, nullptr));
        }
    }

    void restart() {
        stopPluginControl();
        const auto control = createPluginControl(counting_logger_);
        control->setCallControlListener(listener_);
        std::lock_guard lock(mutex_);
        current_ = control;
    }

    std::shared_ptr<IPluginCallControlCallback> current() {
        std::lock_guard lock(mutex_);
        return current_;
    }

    static int pick(Random& random, int count) { return std::uniform_int_distribution(0, count - 1)(random); }
    int pick_headset(Random& random) {
        return headsets_[static_cast<std::size_t>(pick(random, static_cast<int>(headsets_.size())))];
    }

    /// One event of the host's calls, or another audio device.
    void send_event(Random& random) {
        const auto control = current();
        const std::string cid = std::to_string(pick(random, 3));
        switch (pick(random, 11)) {
            case 0:
                return control->incomingCall("", cid, true);
            case 1:
                return control->incomingCall("", cid, false);
            case 2:
                return control->ringbackCall("", cid);
            case 3:
                return control->connectCall("", cid);
            case 4:
                return control->holdCall("", cid);
            case 5:
                return control->resumeCall("", cid);
            case 6:
                return control->endCall("", cid);
            case 7:
                return control->mute("", cid);
            case 8:
                return control->unmute("", cid);
            case 9:
                return control->callStateSync("", {{cid, CALL_STATE_CONNECTED, 0, true}}, 1);
            default:
                control->setAudioDevice(host_id(pick_headset(random)), "", "");
        }
    }

    void press_key(Random& random) {
        constexpr std::array<std::uint16_t, 3> keys = {hook_switch_key, 0x21, phone_mute_key};
        orvex_virtual_press(pick_headset(random), 0x0B,
                            keys[static_cast<std::size_t>(pick(random, static_cast<int>(keys.size())))]);
    }

    void move_headset(Random& random) {
        const int headset = pick_headset(random);
        if (orvex_virtual_unplug(headset) != 0) {
            orvex_virtual_replug(headset);
        }
    }

    /// Each actor acts again and again on a thread of its own until the time is over.
    void act(const std::vector<Actor>& actors) {
        const unsigned seed = choose_seed();
        const auto end = std::chrono::steady_clock::now() + duration;
        std::vector<std::thread> threads;
        for (const Actor& actor : actors) {
            threads.emplace_back(
                [&actor, end, random = Random(seed + static_cast<unsigned>(threads.size()))]() mutable {
                    while (std::chrono::steady_clock::now() < end) {
                        actor(random);
                    }
                });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    /// A fresh start finds every headset, and each shows a call.
    void expect_all_works() {
        listener_->on_call({});
        for (const int headset : headsets_) {
            orvex_virtual_replug(headset);
        }
        restart();
        for (const int headset : headsets_) {
            listener_->clear();
            EXPECT_TRUE(eventually([&] { return current()->setAudioDevice(host_id(headset), "", ""); }));
            current()->connectCall("", "last");
            EXPECT_EQ(orvex_virtual_wait_indicator(headset, 0x08, 0x17, 1, patience_ms), 1);
        }
        stopPluginControl();
        EXPECT_TRUE(wait_for_plugin_threads_to_end());
        EXPECT_EQ(counting_logger_->odd_levels(), 0);
    }

    const Actor events_ = [this](Random& random) { send_event(random); };
    const Actor keys_ = [this](Random& random) { press_key(random); };
    const Actor plugging_ = [this](Random& random) { move_headset(random); };
    const Actor restarts_ = [this](Random&) { restart(); };

    std::vector<int> headsets_;
    std::shared_ptr<CountingLogger> counting_logger_ = std::make_shared<CountingLogger>();

  private:
    std::mutex mutex_;
    std::shared_ptr<IPluginCallControlCallback> current_;
};

TEST_F(Concurrency, events_keys_headsets_and_restarts_at_once) {
    listener_->on_call([this](const std::string& call) {
        if (call.starts_with("onMuteCall")) {
            current()->mute("", "0");
        } else if (call.starts_with("onEndCall")) {
            current()->endCall("", "0");
        }
    });
    act({events_, events_, keys_, plugging_, restarts_});
    expect_all_works();
}

TEST_F(Concurrency, events_and_keys_at_once_on_headsets_that_stay) {
    act({events_, events_, events_, keys_, keys_});
    expect_all_works();
}

TEST_F(Concurrency, listeners_loggers_and_hooks_are_exchanged_while_they_are_in_use) {
    const Actor exchange = [this](Random& random) {
        const auto listener = std::make_shared<RecordingListener>();
        current()->setCallControlListener(listener);
        const auto config = createPluginConfig(counting_logger_);
        config->setConfigListener(listener);
        const int refused = pick(random, 2);
        config->registerDeviceAvailabilityHook([refused](int vendor, int) { return vendor % 2 != refused; });
    };
    act({events_, keys_, plugging_, exchange});
    set_device_availability_hook({});
    expect_all_works();
}

TEST_F(Concurrency, stop_from_several_threads_at_once) {
    for (int round = 0; round < 20; ++round) {
        restart();
        std::vector<std::thread> stops;
        for (int i = 0; i < 4; ++i) {
            stops.emplace_back([] { stopPluginControl(); });
        }
        for (std::thread& stopping : stops) {
            stopping.join();
        }
    }
    expect_all_works();
}

}  // namespace
