// A client that loads the plug-in on virtual headsets by name. Usage: loaded LIBRARY
#include <dlfcn.h>

#include "call.h"

namespace {

template <class Function>
Function look_up(void* library, const char* name) {
    return reinterpret_cast<Function>(dlsym(library, name));
}

}  // namespace

int main(int argc, char** argv) {
    void* const library = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
    if (!library) {
        std::cerr << (argc == 2 ? dlerror() : "usage: loaded LIBRARY") << '\n';
        return 2;
    }
    const auto create = look_up<decltype(&createPluginControlFacade)>(library, "createPluginControlFacade");
    const auto stop = look_up<decltype(&stopPluginControlFacade)>(library, "stopPluginControlFacade");
    const auto log = std::make_shared<Log>();
    std::weak_ptr<plugin_control::IPluginLogger> logger = log;
    plugin_control::IPluginCallControlCallback* const control = create(&logger);
    const bool passed =
        run_call(*control,
                 {look_up<decltype(&orvex_virtual_plug)>(library, "orvex_virtual_plug"),
                  look_up<decltype(&orvex_virtual_serial)>(library, "orvex_virtual_serial"),
                  look_up<decltype(&orvex_virtual_press)>(library, "orvex_virtual_press"),
                  look_up<decltype(&orvex_virtual_wait_indicator)>(library, "orvex_virtual_wait_indicator")});
    stop();
    dlclose(library);
    return passed ? 0 : 1;
}
