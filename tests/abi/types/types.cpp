// Names every type that crosses the boundary between plug-in and client. The plug-in has most of them behind
// smart pointers, which a description of its functions does not look into.
#include "orvex/headset_plugin.h"
#include "orvex/virtual_headset.h"

using namespace plugin_control;

extern "C" {

ORVEX_API void orvex_abi_types(IPluginLogger&, IPluginCallControlListener&, IPluginConfigListener&,
                               IPluginCallControlCallback&, IPluginConfigCallback&, ICallInfo&, CallState,
                               orvex_virtual_device&, orvex_virtual_event&, orvex_virtual_fault) {}

}  // extern "C"
