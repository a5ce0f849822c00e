// A client that is linked with the plug-in on virtual headsets.
#include "call.h"

int main() {
    const auto log = std::make_shared<Log>();
    const bool passed = run_call(
        *plugin_control::createPluginControl(log),
        {orvex_virtual_plug, orvex_virtual_serial, orvex_virtual_press, orvex_virtual_wait_indicator});
    plugin_control::stopPluginControl();
    return passed ? 0 : 1;
}
