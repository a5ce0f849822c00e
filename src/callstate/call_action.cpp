#include "callstate/call_action.h"

#include <array>

namespace headset_plugin {

const char* to_string(CallAction action) {
    static constexpr std::array words = {"Ignore",     "Answer",     "EndCall",  "HoldCall",
                                         "ResumeCall", "RejectCall", "muteCall", "unmuteCall",
                                         "NewCall",    "Redial",     "Dial",     "JoinCall"};
    const auto index = static_cast<std::size_t>(action);
    return index < words.size() ? words[index] : words[0];
}

}  // namespace headset_plugin
