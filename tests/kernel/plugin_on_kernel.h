// A host of the product library, with headsets on a real kernel.
#pragma once

#include <algorithm>
#include <dlfcn.h>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "orvex/headset_plugin.h"
#include "tests/kernel/kernel_headsets.h"
#include "tests/plugin/plugin_threads.h"
#include "tests/support/recording_host.h"
#include "tests/support/recording_logger.h"

namespace test_support {

/// The product library, loaded as a host loads it.
class ProductLibrary {
  public:
    ProductLibrary() : library_(dlopen(ORVEX_PRODUCT_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {
        EXPECT_NE(library_, nullptr) << dlerror();
    }
    ~ProductLibrary() { dlclose(library_); }
    ProductLibrary(const ProductLibrary&) = delete;
    ProductLibrary& operator=(const ProductLibrary&) = delete;

    template <typename Function>
    Function* find(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(library_, name));
    }

  private:
    void* const library_;
};

/// How the plug-in names a headset.
struct Model {
    const char* vendor_id;
    const char* product_id;
    const char* vendor;
    const char* product;
};
inline constexpr Model jabra{"0b0e", "24c9", "Jabra", "Jabra Link 380c"};
inline constexpr Model poly{"047f", "c056", "Plantronics", "Plantronics Blackwire 3220 Series"};

// Output reports of the Jabra headset: report 2 holds all indicators.
inline const Report at_rest{0x02, 0x00, 0x00};
inline const Report in_use{0x02, 0x01, 0x00};
inline const Report in_use_muted{0x02, 0x05, 0x00};

class PluginOnKernel : public KernelHeadsets {
  protected:
    void TearDown() override {
        listener_->on_call({});
        stop();
        EXPECT_TRUE(wait_for_plugin_threads_to_end());
    }

    /// Starts the plug-in, which looks for headsets on a thread of its own.
    void start() {
        std::weak_ptr<plugin_control::IPluginLogger> logger = logger_;
        control_ = library_.find<decltype(createPluginControlFacade)>("createPluginControlFacade")(&logger);
        ASSERT_NE(control_, nullptr);
        control_->setCallControlListener(listener_);
    }

    void stop() const { library_.find<decltype(stopPluginControlFacade)>("stopPluginControlFacade")(); }

    /// The host's id of the audio device of a headset.
    static std::string host_id(const std::string& serial) { return "usb-" + serial + "-00"; }

    /// "onActiveDeviceNotify(...)", or "onDeviceRemovedNotify(...)" for a headset that was active.
    static std::string notification(const std::string& name, const std::string& serial,
                                    const Model& model = jabra) {
        return name + "(" + host_id(serial) + ", " + model.vendor_id + ", " + model.product_id + ", " +
               model.vendor + ", " + model.product + ", " + serial + ")";
    }

    /// Waits until the plug-in has listed a headset that often since the log was cleared.
    void wait_until_listed(const std::string& serial, std::size_t times = 1,
                           const Model& model = jabra) const {
        EXPECT_TRUE(logger_->wait_for_count(
            std::string(
                "3rdPartyHeadsetPlugin: plugin_control::device_mgr::enumerate_hid_device: create device, ") +
                "vendor_id:[0x" + model.vendor_id + "], product_id:[0x" + model.product_id +
                "], sn = " + serial + ", product_name = " + model.product + "\n",
            times))
            << "the headset is not listed";
    }

    /// Waits until the plug-in has opened headsets that often since the log was cleared. A headset on the USB
    /// is listed by its first node, which may not be the one that has the telephony.
    void wait_until_open(std::size_t times = 1) const {
        EXPECT_TRUE(logger_->wait_for_count(
            "3rdPartyHeadsetPlugin: headset_plugin::device::read_thread: Enter while(true) loop \n", times))
            << "the headset is not opened";
    }

    /// Chooses a headset that is listed, and waits until the host is told that it is the active one.
    void activate(const std::string& serial, const Model& model = jabra) {
        const std::string active = notification("onActiveDeviceNotify", serial, model);
        const std::size_t before = count_notifications(active);
        EXPECT_TRUE(control_->setAudioDevice(host_id(serial), "", ""));
        EXPECT_TRUE(listener_->wait_for_count(active, before + 1));
    }

    /// Plugs a Jabra headset, makes it the active one and waits until it is at rest.
    int plug_active(const char* serial = "SERIAL") {
        const int headset = plug_headset("jabra-link-380c", serial);
        wait_until_listed(serial);
        activate(serial);
        EXPECT_EQ(take_shown(headset, reports_until_ready),
                  Reports(std::size_t{reports_until_ready}, at_rest));
        return headset;
    }

    /// Plugs a Plantronics headset, makes it the active one and waits until it is at rest.
    int plug_active_poly() {
        const int headset = plug_headset("poly-blackwire-3220", "POLY");
        wait_until_listed("POLY", 1, poly);
        activate("POLY", poly);
        const Reports until_ready{{0x16, 0x02, 0x00}, {0x09, 0x00}, {0x17, 0x00}, {0x09, 0x00}};
        EXPECT_EQ(take_shown(headset, static_cast<int>(until_ready.size())), until_ready);
        return headset;
    }

    /// Brings an unplugged headset back and makes it the active one.
    void replug_active(int headset, const std::string& serial = "SERIAL") {
        logger_->clear();
        EXPECT_EQ(orvex_virtual_replug(headset), 0) << orvex_virtual_error();
        wait_until_listed(serial);
        activate(serial);
    }

    /// Waits for that many further output reports of a headset and gives all that there are.
    Reports take_shown(int headset, int count) {
        int& taken = taken_[headset];
        EXPECT_EQ(orvex_virtual_wait_outputs(headset, taken + count, patience_ms), 1);
        auto shown = outputs(headset);
        shown.erase(shown.begin(), shown.begin() + taken);
        taken += static_cast<int>(shown.size());
        return shown;
    }

    std::size_t count_notifications(const std::string& call) const {
        const auto calls = listener_->calls();
        return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), call));
    }

    /// Two when a headset is opened and three when it is ready, all of them saying that it is at rest.
    static constexpr int reports_until_ready = 5;

    const ProductLibrary library_;
    const std::shared_ptr<RecordingLogger> logger_ = std::make_shared<RecordingLogger>();
    const std::shared_ptr<RecordingListener> listener_ = std::make_shared<RecordingListener>();
    plugin_control::IPluginCallControlCallback* control_ = nullptr;
    std::map<int, int> taken_;  ///< how many output reports of each headset were taken
};

}  // namespace test_support
