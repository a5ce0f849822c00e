// What the plug-in can do with a headset, found out by doing it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "devicemgr/admission.h"
#include "tools/headset/descriptor_file.h"
#include "tools/headset/usage_names.h"

namespace headset {

/// What becomes of a top-level collection.
enum class CollectionFate {
    left_alone,  ///< ignored
    let_in,      ///< counts as one of the headset's, and is not opened
    not_opened,  ///< was to be opened, and could not
    opened,
};

struct ExplainedCollection {
    Usage usage;
    CollectionFate fate = CollectionFate::left_alone;
    std::optional<plugin_control::Refusal> refusal{};  ///< why it was left alone
};

struct ExplainedIndicator {
    Usage usage;
    std::optional<Bytes> on{};  ///< the report, nothing where the plug-in builds none
    std::optional<Bytes> off{};
    bool is_lit = false;   ///< by `on`
    bool is_dark = false;  ///< by `off`

    bool works() const { return is_lit && is_dark; }
};

/// A report that the plug-in sends for something that happens to a call, and which of its indicators it
/// leaves lit.
struct ShownState {
    const char* state;
    std::optional<Bytes> report{};
    std::vector<Usage> lit{};
};

/// A key that the plug-in reads as the mute key.
struct MuteKey {
    Usage usage;
    Bytes pressed{};  ///< the report
    Bytes released{};
    bool also_released = false;  ///< whether its release reads as the mute key, too
};

/// How far a part of working a call goes with the headset.
enum class Support {
    works,
    not_used,   ///< the headset has a control for it, which the plug-in does not use
    not_there,  ///< the headset has no control for it
};

/// "works"
const char* to_string(Support support);

/// A part of working a call, such as muting by a key.
struct CallFunction {
    const char* name;               ///< "mute key"
    std::vector<Usage> controls{};  ///< those of the headset
    Support support = Support::not_there;
    bool is_in_range = false;  ///< a control is one of a range of usages in the descriptor
};

/// A control, or a range of them, that the plug-in makes no use of.
struct UnusedControl {
    const char* kind;
    Usage first;
    std::uint16_t last = 0;
};

struct Explanation {
    std::string name{};
    std::optional<DeviceIds> ids{};
    bool has_driver = false;
    std::vector<ExplainedCollection> collections{};
    std::string open_error{};  ///< why a collection could not be opened
    bool is_open = false;

    std::vector<CallFunction> functions{};

    // Of the collection that is open.
    std::vector<ExplainedIndicator> indicators{};
    std::vector<ShownState> states{};
    std::vector<MuteKey> mute_keys{};
    std::vector<Usage> keys{};  ///< those of which the driver makes something

    /// Those of the telephony and the LED page in all collections, and all in the open one.
    std::vector<UnusedControl> unused{};
};

/// Throws Refused for a descriptor that is malformed.
Explanation explain(const Descriptor& descriptor);

std::string to_text(const Explanation& explanation);

}  // namespace headset
