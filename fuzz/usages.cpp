// A headset of any descriptor, opened as the plug-in opens it: indicators lit and reports decoded, in any
// sequence.
#include <array>
#include <memory>

#include "base/plugin_log.h"
#include "fuzz/check.h"
#include "fuzz/input.h"
#include "hid/hid_access.h"
#include "hid/usage_input.h"
#include "hid/usage_output.h"
#include "orvex/headset_plugin.h"
#include "virtual_headset/platform/virtual_platform.h"

using namespace headset_plugin;
using fuzz::Bytes;
using fuzz::check;
using fuzz::Input;

namespace {

constexpr int most_operations = 32;

/// Has every log line written, and drops it.
class Sink final : public plugin_control::IPluginLogger {
  public:
    void log(const std::string& /*line*/, int /*level*/) override {}
};

std::shared_ptr<plugin_control::IPluginLogger> sink() {
    static const auto instance = std::make_shared<Sink>();
    return instance;
}

std::uint16_t a_usage(Input& input) {
    constexpr std::array<std::uint16_t, 4> known = {0x17, 0x09, 0x18, 0x20};
    const std::uint8_t choice = input.byte();
    return choice < 0xC0 ? known[choice % known.size()] : input.word();
}

std::uint16_t a_page(Input& input) {
    constexpr std::uint16_t led_page = 0x08;
    return input.byte() < 0xC0 ? led_page : input.word();
}

void light_one(hid_device& device, Input& input) {
    Bytes buffer(device.output_report_length, 0xA5);
    const Bytes untouched = buffer;
    constexpr std::uint32_t unset = 0xFFFFFFFF;
    std::uint32_t length = unset;
    const int result = gen_led_event_for_usage(&device, a_page(input), a_usage(input), input.byte() % 2,
                                               buffer.data(), &length);
    check(result == 0 || result == -1, "the results are two");
    check(result == 0 ? length == buffer.size() : length == unset && buffer == untouched,
          "a report is built whole or not at all");
}

void light_several(hid_device& device, Input& input) {
    const std::array usages{a_usage(input), a_usage(input), a_usage(input)};
    const std::array<std::uint32_t, 3> values{input.byte() % 2U, input.byte() % 2U, input.byte() % 2U};
    const auto count = static_cast<std::int32_t>(input.byte() % 4);
    Bytes buffer(device.output_report_length);
    std::uint32_t length = 0;
    gen_led_events_for_usages(&device, a_page(input), usages.data(), values.data(), count, buffer.data(),
                              &length);
    check(length == 0 || length == buffer.size(), "a length is the report's");
}

void decode(hid_device& device, Input& input) {
    const Bytes report = input.bytes(input.byte() % (device.input_report_length + 2U));
    const int result = process_read_for_mute(&device, report);
    check(result == 1 || result == -1, "a report shows a mute key, or not");
}

void look_for_id(hid_device& device, Input& input) {
    const int result = check_report_id(&device, input.byte(), input.byte() % 5U);
    check(result == 0 || result == 1, "an id is there, or not");
}

constexpr std::array operations = {light_one, light_several, decode, look_for_id};

void use(hid_device& device, Input input) {
    for (int i = 0; i < most_operations && !input.is_empty(); ++i) {
        operations[input.byte() % operations.size()](device, input);
    }
}

}  // namespace

std::shared_ptr<plugin_control::IPluginLogger> getPluginLogger() {
    return sink();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input({data, size});
    auto& bus = platform::virtual_platform::virtual_platform().bus();
    platform::virtual_platform::Failure failure;
    if (!bus.plug({.descriptor = input.block(), .vendor_id = 0x0B0E, .product_id = 1, .serial = "SN"},
                  failure)) {
        return 0;
    }
    for (const auto& interface : bus.enumerate(0, 0)) {
        if (const HidHandle handle = hid_open_handle(interface.path.c_str())) {
            use(*handle, input);
        }
    }
    bus.reset();
    return 0;
}
