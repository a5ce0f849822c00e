#include "drivers/call_control_generic.h"

namespace headset_plugin {

std::uint32_t call_control_generic::handle_headset_reponse(std::int32_t /*key_code*/) {
    return 0;
}

std::int32_t call_control_generic::toggle_led(std::uint32_t /*bit*/, std::span<std::uint8_t> /*output*/) {
    return 0;
}

std::uint32_t call_control_generic::query_state_follow_up(std::uint32_t /*state*/) {
    return 0;
}

}  // namespace headset_plugin
