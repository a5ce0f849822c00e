// The plug-in library, loaded the way a host does that finds its plug-ins at run time: nothing of it is
// linked.
#pragma once

#include <hidapi/hidapi.h>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvex/headset_plugin.h"
#include "orvex/virtual_headset.h"
#include "tools/softphone/headset_list.h"

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
    /// \param headsets  a library of virtual headsets to use beside it, empty for those that it has itself
    explicit PluginLibrary(const std::string& path, const std::string& headsets = {});

    /// The headsets that the plug-in sees: what has a telephony collection and a serial number.
    std::vector<FoundHeadset> find_headsets() const;
    /// Why that finds none.
    std::string why_no_headset() const;

    decltype(&createPluginControlFacade) create_control;
    decltype(&createPluginConfigFacade) create_config;
    decltype(&stopPluginControlFacade) stop;
    std::optional<VirtualApi> virtual_api;

  private:
    struct Closer {
        void operator()(void* handle) const;
    };
    using Handle = std::unique_ptr<void, Closer>;
    using Enumeration = std::unique_ptr<hid_device_info, decltype(&hid_free_enumeration)>;
    static Handle load(const std::string& path);
    Enumeration enumerate() const { return {hid_enumerate_(0, 0), hid_free_enumeration_}; }

    Handle handle_;
    Handle headsets_;
    decltype(&hid_enumerate) hid_enumerate_;
    decltype(&hid_free_enumeration) hid_free_enumeration_;
    decltype(&hid_error) hid_error_;
};

/// The library that a user names: a file of the current folder, where it has one of that name. The system's
/// loader looks there only for names with a slash.
std::string given_library_path(const std::string& name);

/// Where a plug-in library is looked for without a path: in the library folder that belongs to the program's,
/// as a build and an installation have it, else by its name where the system's loader looks.
std::string virtual_library_path();
std::string product_library_path();

}  // namespace softphone
