#include "tools/softphone/plugin_library.h"

#include <dlfcn.h>
#include <filesystem>
#include <system_error>

namespace softphone {
namespace {

constexpr const char* library_name = "liborvex_headset_plugin_virtual.so";

/// Sets `function` to the library's function `name`; throws LibraryError when it has none.
template <class Function>
void look_up(void* handle, const char* name, Function& function) {
    void* const symbol = dlsym(handle, name);
    if (!symbol)
        throw LibraryError(std::string("this is no headset plug-in, it lacks the function ") + name);
    function = reinterpret_cast<Function>(symbol);
}

VirtualApi look_up_virtual_api(void* handle) {
    VirtualApi api{};
    look_up(handle, "orvex_virtual_model", api.model);
    look_up(handle, "orvex_virtual_model_product", api.model_product);
    look_up(handle, "orvex_virtual_plug", api.plug);
    look_up(handle, "orvex_virtual_unplug", api.unplug);
    look_up(handle, "orvex_virtual_replug", api.replug);
    look_up(handle, "orvex_virtual_serial", api.serial);
    look_up(handle, "orvex_virtual_product", api.product);
    look_up(handle, "orvex_virtual_press", api.press);
    look_up(handle, "orvex_virtual_set_key", api.set_key);
    look_up(handle, "orvex_virtual_send_report", api.send_report);
    look_up(handle, "orvex_virtual_indicator", api.indicator);
    look_up(handle, "orvex_virtual_misbehave", api.misbehave);
    look_up(handle, "orvex_virtual_watch", api.watch);
    look_up(handle, "orvex_virtual_reset", api.reset);
    look_up(handle, "orvex_virtual_error", api.error);
    return api;
}

}  // namespace

void PluginLibrary::Closer::operator()(void* handle) const {
    dlclose(handle);
}

PluginLibrary::PluginLibrary(const std::string& path) {
    // RTLD_NOW: a library that lacks something is refused here, and not in the middle of a call. RTLD_LOCAL:
    // its functions do not take the place of this program's own.
    handle_.reset(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!handle_)
        throw LibraryError(std::string("cannot load the plug-in library: ") + dlerror());
    look_up(handle_.get(), "createPluginControlFacade", create_control);
    look_up(handle_.get(), "createPluginConfigFacade", create_config);
    look_up(handle_.get(), "stopPluginControlFacade", stop);
    if (dlsym(handle_.get(), "orvex_virtual_plug"))
        virtual_api = look_up_virtual_api(handle_.get());
}

std::string default_library_path() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    const auto beside = program.parent_path().parent_path() / "lib" / library_name;
    return !error && std::filesystem::exists(beside, error) ? beside.string() : library_name;
}

}  // namespace softphone
