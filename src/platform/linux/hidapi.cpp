#include "platform/linux/hidapi.h"

#include <string>

namespace platform::linux_platform {

namespace {

constexpr const char* library_name = "libhidapi-hidraw.so.0";

/// Throws LibraryError for a hidapi whose enumeration has no usages and no bus type: those came with 0.13.0.
void check_version(const SharedLibrary& library) {
    decltype(&::hid_version) version = nullptr;
    library.look_up("hid_version", version);
    const hid_api_version& found = *version();
    if (found.major == 0 && found.minor < 13) {
        throw LibraryError(std::string(library_name) + " is hidapi " + std::to_string(found.major) + "." +
                           std::to_string(found.minor) + "." + std::to_string(found.patch) +
                           "; 0.13.0 or later is needed");
    }
}

/// hidapi calls its own exported functions by name: bound in the usual way, it would find the functions of
/// the same names that the plug-in exports, where a host has loaded the plug-in with RTLD_GLOBAL. Its libudev
/// has nothing of that kind.
SharedLibrary load() {
    const SharedLibrary udev("libudev.so.1");
    return SharedLibrary(library_name, SharedLibrary::Binding::own_first);
}

/// Loaded with the plug-in, before a host that does so can load hidapi the usual way; whether it is there is
/// asked when it is needed.
[[gnu::constructor]] void load_before_the_host() {
    try {
        load();
    } catch (const std::exception&) {
    }
}

}  // namespace

Hidapi load_hidapi() {
    const SharedLibrary library = load();
    check_version(library);
    Hidapi table{};
    library.look_up("hid_enumerate", table.hid_enumerate);
    library.look_up("hid_free_enumeration", table.hid_free_enumeration);
    library.look_up("hid_open_path", table.hid_open_path);
    library.look_up("hid_write", table.hid_write);
    library.look_up("hid_send_feature_report", table.hid_send_feature_report);
    library.look_up("hid_get_feature_report", table.hid_get_feature_report);
    library.look_up("hid_get_input_report", table.hid_get_input_report);
    library.look_up_if_there("hid_send_output_report", table.hid_send_output_report);
    library.look_up("hid_close", table.hid_close);
    library.look_up("hid_get_device_info", table.hid_get_device_info);
    library.look_up("hid_get_indexed_string", table.hid_get_indexed_string);
    library.look_up("hid_error", table.hid_error);
    library.look_up("hid_version", table.hid_version);
    library.look_up("hid_version_str", table.hid_version_str);
    return table;
}

}  // namespace platform::linux_platform
