// A plug-in library as a host loads it: by its file, with every function looked up by name.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <hidapi/hidapi.h>
#include <string>

#include "orvex/headset_plugin.h"
#include "orvex/virtual_headset.h"

namespace test_support {

/// The functions of one loaded library; unloads it in the end. A test that needs one that is missing crashes.
class PluginLibrary {
  public:
    explicit PluginLibrary(const char* path = ORVEX_VIRTUAL_LIBRARY)
        : library_(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
        EXPECT_NE(library_, nullptr) << dlerror();
    }
    ~PluginLibrary() { dlclose(library_); }
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    template <typename Function>
    Function* find(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(library_, name));
    }

    std::shared_ptr<plugin_control::IPluginCallControlCallback> create_control(
        const std::weak_ptr<plugin_control::IPluginLogger>& logger) const {
        return find<decltype(plugin_control::createPluginControl)>(
            "_ZN14plugin_control19createPluginControlERKSt8weak_ptrINS_13IPluginLoggerEE")(logger);
    }
    std::shared_ptr<plugin_control::IPluginConfigCallback> create_config(
        const std::weak_ptr<plugin_control::IPluginLogger>& logger) const {
        return find<decltype(plugin_control::createPluginConfig)>(
            "_ZN14plugin_control18createPluginConfigERKSt8weak_ptrINS_13IPluginLoggerEE")(logger);
    }
    void stop() const {
        find<decltype(plugin_control::stopPluginControl)>("_ZN14plugin_control17stopPluginControlEv")();
    }

    /// The headset that the tests of this program use.
    int plug() const {
        return find<decltype(orvex_virtual_plug)>("orvex_virtual_plug")("jabra-link-380c", nullptr);
    }
    void unplug_all() const { find<decltype(orvex_virtual_reset)>("orvex_virtual_reset")(); }
    int unplug(int headset) const {
        return find<decltype(orvex_virtual_unplug)>("orvex_virtual_unplug")(headset);
    }
    int replug(int headset) const {
        return find<decltype(orvex_virtual_replug)>("orvex_virtual_replug")(headset);
    }
    int press(int headset, std::uint16_t telephony_key) const {
        constexpr std::uint16_t telephony_page = 0x0B;
        return find<decltype(orvex_virtual_press)>("orvex_virtual_press")(headset, telephony_page,
                                                                          telephony_key);
    }
    /// Waits for the total of output reports that reached the headset.
    int wait_outputs(int headset, int count, int timeout_ms) const {
        return find<decltype(orvex_virtual_wait_outputs)>("orvex_virtual_wait_outputs")(headset, count,
                                                                                        timeout_ms);
    }
    int output_count(int headset) const {
        return find<decltype(orvex_virtual_output_count)>("orvex_virtual_output_count")(headset);
    }
    std::string serial(int headset) const {
        return find<decltype(orvex_virtual_serial)>("orvex_virtual_serial")(headset);
    }

  private:
    void* const library_;
};

}  // namespace test_support
