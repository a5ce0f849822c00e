// A client that is linked with the product: it starts the plug-in, looks for a headset that nobody has, and
// stops.
#include <iostream>
#include <orvex/headset_plugin.h>
#include <string>

struct Log final : plugin_control::IPluginLogger {
    void log(const std::string&, int) override {}
};

int main() {
    const auto log = std::make_shared<Log>();
    const bool found =
        plugin_control::createPluginControl(log)->setAudioDevice("nobody's", "nobody's", "nobody's");
    plugin_control::stopPluginControl();
    std::cout << (found ? "found nobody's headset\n" : "started and stopped\n");
    return found ? 1 : 0;
}
