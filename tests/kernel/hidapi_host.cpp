// A host with a hidapi of its own: does it stay its own while the plug-in, which exports functions of the
// same names, works with the same headset? Linked twice: with hidapi, and without, to load it at run time.
//
// Usage: hidapi_host SERIAL [global]      "global": load the plug-in with RTLD_GLOBAL

#include <cstring>
#include <dlfcn.h>
#include <hidapi/hidapi.h>
#include <iostream>
#include <stdexcept>
#include <string>

#include "orvex/headset_plugin.h"
#include "tests/support/recording_logger.h"

namespace {

using namespace test_support;

void require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

/// hidapi's functions as they are linked, or else from hidapi, loaded now.
class OwnHidapi {
  public:
    OwnHidapi()
        : handle_(ORVEX_LINKED_HIDAPI ? RTLD_DEFAULT
                                      : dlopen("libhidapi-hidraw.so.0", RTLD_LAZY | RTLD_LOCAL)) {}

    template <typename Function>
    Function* find(const char* name) const {
        auto* const found = reinterpret_cast<Function*>(dlsym(handle_, name));
        require(found != nullptr, name);
        return found;
    }

  private:
    void* const handle_;
};

/// The path of the headset, as one of the two sees it.
std::string path_of(const std::wstring& serial, decltype(hid_enumerate)* enumerate,
                    decltype(hid_free_enumeration)* free_enumeration) {
    std::string path;
    hid_device_info* const list = enumerate(0, 0);
    for (const hid_device_info* entry = list; entry != nullptr && path.empty(); entry = entry->next) {
        if (entry->serial_number != nullptr && serial == entry->serial_number) {
            path = entry->path;
        }
    }
    free_enumeration(list);
    return path;
}

/// The plug-in's paths name a collection; hidapi's are the node's.
bool names_collection(const std::string& path) {
    return path.find(':') != std::string::npos;
}

void use_own_hidapi(const OwnHidapi& own, const std::wstring& serial) {
    const std::string path = path_of(serial, own.find<decltype(hid_enumerate)>("hid_enumerate"),
                                     own.find<decltype(hid_free_enumeration)>("hid_free_enumeration"));
    require(!path.empty() && !names_collection(path), "the host's list is not hidapi's");
    hid_device* const device = own.find<decltype(hid_open)>("hid_open")(0x047F, 0xC056, serial.c_str());
    require(device != nullptr, "the host cannot open the headset");
    const unsigned char report[] = {0x09, 0x01};
    require(own.find<decltype(hid_write)>("hid_write")(device, report, sizeof report) == sizeof report,
            "the host cannot write");
    own.find<decltype(hid_close)>("hid_close")(device);
}

void use_plugin(void* library, const std::wstring& serial) {
    const auto find = [&](const char* name) { return dlsym(library, name); };
    const auto logger = std::make_shared<RecordingLogger>();
    std::weak_ptr<plugin_control::IPluginLogger> weak = logger;
    auto* const create =
        reinterpret_cast<decltype(&createPluginControlFacade)>(find("createPluginControlFacade"));
    require(create(&weak) != nullptr, "the plug-in does not start");
    require(eventually([&] { return !logger->lines_with("read_thread: Enter").empty(); }),
            "the plug-in did not open the headset");
    const std::string path =
        path_of(serial, reinterpret_cast<decltype(hid_enumerate)*>(find("hid_enumerate")),
                reinterpret_cast<decltype(hid_free_enumeration)*>(find("hid_free_enumeration")));
    require(names_collection(path), "the plug-in's list is not its own");
}

void run(const std::wstring& serial, bool global) {
    void* const library = dlopen(ORVEX_PRODUCT_LIBRARY, RTLD_NOW | (global ? RTLD_GLOBAL : RTLD_LOCAL));
    require(library != nullptr, "the plug-in cannot be loaded");
    const OwnHidapi own;
    use_own_hidapi(own, serial);
    use_plugin(library, serial);
    use_own_hidapi(own, serial);
    reinterpret_cast<decltype(&stopPluginControlFacade)>(dlsym(library, "stopPluginControlFacade"))();
    use_own_hidapi(own, serial);
    require(own.find<decltype(hid_exit)>("hid_exit")() == 0, "hid_exit");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        return 2;
    }
    const std::string serial = argv[1];
    try {
        run({serial.begin(), serial.end()}, argc > 2 && std::strcmp(argv[2], "global") == 0);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
