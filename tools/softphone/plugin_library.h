// The plug-in library, loaded the way a host does that finds its plug-ins at run time: nothing of it is
// linked.
#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "orvex/headset_plugin.h"
#include "orvex/virtual_headset.h"

namespace softphone {

/// The library cannot be loaded, or is no headset plug-in. The text says why.
class LibraryError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The functions of virtual_headset.h that the softphone uses, which the product library does not have.
struct VirtualApi {
    decltype(&orvex_virtual_model) model;
    decltype(&orvex_virtual_model_product) model_product;
    decltype(&orvex_virtual_plug) plug;
    decltype(&orvex_virtual_unplug) unplug;
    decltype(&orvex_virtual_replug) replug;
    decltype(&orvex_virtual_serial) serial;
    decltype(&orvex_virtual_product) product;
    decltype(&orvex_virtual_press) press;
    decltype(&orvex_virtual_set_key) set_key;
    decltype(&orvex_virtual_send_report) send_report;
    decltype(&orvex_virtual_indicator) indicator;
    decltype(&orvex_virtual_misbehave) misbehave;
    decltype(&orvex_virtual_watch) watch;
    decltype(&orvex_virtual_reset) reset;
    decltype(&orvex_virtual_error) error;
};

class PluginLibrary {
  public:
    /// Loads the library; throws LibraryError.
    explicit PluginLibrary(const std::string& path);

    decltype(&createPluginControlFacade) create_control;
    decltype(&createPluginConfigFacade) create_config;
    decltype(&stopPluginControlFacade) stop;
    std::optional<VirtualApi> virtual_api;

  private:
    struct Closer {
        void operator()(void* handle) const;
    };
    std::unique_ptr<void, Closer> handle_;
};

/// Where the library is looked for without --library: beside the program's folder, as a build and an
/// installation have it, else by its name where the system's loader looks.
std::string default_library_path();

}  // namespace softphone
