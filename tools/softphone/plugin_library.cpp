#include "tools/softphone/plugin_library.h"

#include <dlfcn.h>
#include <filesystem>
#include <system_error>

#include "platform/text.h"

namespace softphone {
namespace {

constexpr unsigned short telephony_usage_page = 0x0B;  // HID Usage Tables, section 3.1

/// Sets `function` to the library's function `name`; throws LibraryError when it has none.
template <class Function>
void look_up(void* handle, const char* name, Function& function) {
    void* const symbol = dlsym(handle, name);
    if (!symbol)
        throw LibraryError(std::string("this library lacks the function ") + name);
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

std::string library_path(const char* name) {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    for (const char* folder : {SOFTPHONE_BUILT_LIBRARIES, SOFTPHONE_INSTALLED_LIBRARIES}) {
        const auto path = (program.parent_path() / folder / name).lexically_normal();
        if (!error && std::filesystem::exists(path, error))
            return path.string();
    }
    return name;
}

}  // namespace

void PluginLibrary::Closer::operator()(void* handle) const {
    dlclose(handle);
}

PluginLibrary::Handle PluginLibrary::load(const std::string& path) {
    // RTLD_NOW: a library that lacks something is refused here, and not in the middle of a call. RTLD_LOCAL:
    // its functions do not take the place of this program's own.
    Handle handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!handle)
        throw LibraryError(std::string("cannot load the library: ") + dlerror());
    return handle;
}

PluginLibrary::PluginLibrary(const std::string& path, const std::string& headsets) : handle_(load(path)) {
    look_up(handle_.get(), "createPluginControlFacade", create_control);
    look_up(handle_.get(), "createPluginConfigFacade", create_config);
    look_up(handle_.get(), "stopPluginControlFacade", stop);
    look_up(handle_.get(), "hid_enumerate", hid_enumerate_);
    look_up(handle_.get(), "hid_free_enumeration", hid_free_enumeration_);
    look_up(handle_.get(), "hid_error", hid_error_);
    if (!headsets.empty())
        headsets_ = load(headsets);
    void* const virtual_headsets = headsets_ ? headsets_.get() : handle_.get();
    if (headsets_ || dlsym(virtual_headsets, "orvex_virtual_plug"))
        virtual_api = look_up_virtual_api(virtual_headsets);
}

std::vector<FoundHeadset> PluginLibrary::find_headsets() const {
    const Enumeration list = enumerate();
    std::vector<FoundHeadset> found;
    for (const hid_device_info* entry = list.get(); entry != nullptr; entry = entry->next) {
        if (entry->usage_page != telephony_usage_page || !entry->serial_number || !*entry->serial_number)
            continue;
        found.push_back({entry->product_string ? platform::to_utf8(entry->product_string) : "",
                         platform::to_utf8(entry->serial_number)});
    }
    return found;
}

std::string PluginLibrary::why_no_headset() const {
    return enumerate() ? "no HID device has both telephony and a serial number"
                       : platform::to_utf8(hid_error_(nullptr));
}

std::string given_library_path(const std::string& name) {
    std::error_code error;
    const bool is_here =
        !name.empty() && name.find('/') == std::string::npos && std::filesystem::exists(name, error);
    return is_here ? "./" + name : name;
}

std::string virtual_library_path() {
    return library_path(SOFTPHONE_VIRTUAL_LIBRARY);
}

std::string product_library_path() {
    return library_path(SOFTPHONE_PRODUCT_LIBRARY);
}

}  // namespace softphone
