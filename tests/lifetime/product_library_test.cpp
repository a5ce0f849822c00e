// The product library, and libraries beside a host's own hidapi.

#include <cwchar>
#include <dlfcn.h>
#include <stdexcept>

#include "tests/lifetime/plugin_library.h"
#include "tests/plugin/plugin_threads.h"
#include "tests/support/recording_logger.h"

namespace {

using namespace plugin_control;
using namespace test_support;

using Enumerate = decltype(hid_enumerate);
using FreeEnumeration = decltype(hid_free_enumeration);

TEST(ProductLibrary, loads_starts_stops_and_unloads) {
    const auto logger = std::make_shared<RecordingLogger>();
    for (int round = 0; round < 20; ++round) {
        const PluginLibrary library(ORVEX_PRODUCT_LIBRARY);
        const auto control = library.create_control(logger);
        ASSERT_NE(control, nullptr);
        EXPECT_FALSE(control->setAudioDevice("none", "", ""));
        library.stop();
    }
    EXPECT_TRUE(wait_for_plugin_threads_to_end());
}

TEST(ProductLibrary, says_why_a_device_cannot_be_opened) {
    const PluginLibrary library(ORVEX_PRODUCT_LIBRARY);
    EXPECT_EQ(library.find<decltype(hid_open_path)>("hid_open_path")("/dev/hidraw-none:1"), nullptr);
    EXPECT_STREQ(library.find<decltype(hid_error)>("hid_error")(nullptr),
                 L"CreateFile: /dev/hidraw-none: No such file or directory");
}

TEST(ProductLibrary, has_its_message_window_and_looks_for_headsets) {
    const PluginLibrary library(ORVEX_PRODUCT_LIBRARY);
    const auto logger = std::make_shared<RecordingLogger>();
    // The line is lost when the message thread writes it before the plug-in is made: the next start has it.
    EXPECT_TRUE(eventually([&] {
        library.create_control(logger);
        library.stop();
        return logger->count("HeadsetPlugin: MessageThread: Message Thread is running \n") > 0;
    }));
    EXPECT_TRUE(wait_for_plugin_threads_to_end());
}

TEST(ProductLibrary, has_no_virtual_headsets) {
    const PluginLibrary library(ORVEX_PRODUCT_LIBRARY);
    EXPECT_EQ(library.find<void()>("orvex_virtual_plug"), nullptr);
}

// ---- beside the system's hidapi

class SystemHidapi {
  public:
    SystemHidapi() : library_(dlopen("libhidapi-hidraw.so.0", RTLD_NOW | RTLD_GLOBAL)) {
        if (library_ == nullptr) {
            throw std::runtime_error(dlerror());
        }
    }
    ~SystemHidapi() { dlclose(library_); }
    SystemHidapi(const SystemHidapi&) = delete;
    SystemHidapi& operator=(const SystemHidapi&) = delete;

    template <typename Function>
    Function* find(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(library_, name));
    }

    /// What the host's own hidapi sees, as often as it is asked.
    int count_devices() const {
        return count(find<Enumerate>("hid_enumerate"), find<FreeEnumeration>("hid_free_enumeration"));
    }

    static int count(Enumerate* enumerate, FreeEnumeration* free_enumeration) {
        hid_device_info* const list = enumerate(0, 0);
        int devices = 0;
        for (const hid_device_info* info = list; info != nullptr; info = info->next) {
            ++devices;
        }
        free_enumeration(list);
        return devices;
    }

  private:
    void* const library_;
};

int count_plugin_devices(const PluginLibrary& library) {
    return SystemHidapi::count(library.find<Enumerate>("hid_enumerate"),
                               library.find<FreeEnumeration>("hid_free_enumeration"));
}

/// The headset's three collections are seen through the plug-in, none of them through the host's own hidapi.
void expect_two_worlds(const PluginLibrary& library, const SystemHidapi& system) {
    const int host_devices = system.count_devices();
    const int headset = library.plug();
    EXPECT_EQ(count_plugin_devices(library), 3);
    EXPECT_EQ(system.count_devices(), host_devices);

    const auto logger = std::make_shared<RecordingLogger>();
    const auto control = library.create_control(logger);
    EXPECT_EQ(library.wait_outputs(headset, 2, patience_ms), 1) << "the plug-in did not open the headset";
    library.stop();
    library.unplug_all();
    EXPECT_EQ(count_plugin_devices(library), 0);
    EXPECT_EQ(system.find<decltype(hid_exit)>("hid_exit")(), 0);
}

TEST(BesideTheSystemsHidapi, a_host_that_loads_it_before_the_plugin_is_not_disturbed) {
    const SystemHidapi system;
    expect_two_worlds(PluginLibrary(), system);
}

TEST(BesideTheSystemsHidapi, a_host_that_loads_it_after_the_plugin_is_not_disturbed) {
    const PluginLibrary library;
    const SystemHidapi system;
    EXPECT_NE(system.find<Enumerate>("hid_enumerate"), library.find<Enumerate>("hid_enumerate"));
    expect_two_worlds(library, system);
}

TEST(BesideTheSystemsHidapi, the_functions_of_both_stay_apart_when_the_plugin_is_loaded_globally) {
    void* const global = dlopen(ORVEX_VIRTUAL_LIBRARY, RTLD_NOW | RTLD_GLOBAL);
    ASSERT_NE(global, nullptr) << dlerror();
    const SystemHidapi system;
    expect_two_worlds(PluginLibrary(), system);
    dlclose(global);
}

}  // namespace
