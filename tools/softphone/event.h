// Everything that happens, in one type: what the plug-in's threads report, what the headsets see, what the
// softphone itself did. Events travel through one queue, so that they are shown in the order in which they
// happened.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tools/softphone/actions.h"
#include "tools/softphone/call_list.h"
#include "tools/softphone/headset_list.h"
#include "tools/softphone/text.h"

namespace softphone {

/// An argument of a call to the plug-in; a list stands for its elements.
using Argument = std::variant<std::string, int, bool, Words>;

/// The softphone calls a function of the plug-in.
struct HostCall {
    std::string function;
    std::vector<Argument> arguments;
};

/// What a function of the plug-in returned.
struct HostResult {
    std::string function;
    bool result = false;
};

/// A call of the softphone changed.
struct CallChanged {
    Call call;
};

/// The plug-in accepted the listener.
struct ListenerAttached {};

/// The user asks for something at the headset.
struct ActionRequested {
    Action action{};
    std::string device_id;
    std::string cid;
    std::optional<bool> muted = {};  ///< of the requests to mute and unmute
};

/// The headset's configuration key was pressed.
struct ConfigKeyPressed {
    bool pressed = false;
};

/// A headset as the plug-in describes it to its host.
struct DeviceNotice {
    std::string host_device_id;
    int vendor_id = 0;
    int product_id = 0;
    std::string vendor_name;
    std::string device_name;
    std::string serial;
};

struct HeadsetReady {
    DeviceNotice notice;
};

struct HeadsetRemoved {
    DeviceNotice notice;
};

/// A virtual headset was plugged.
struct Plugged {
    int headset = 0;
    std::string product;
    std::string serial;
    std::vector<Indicator> indicators;
};

struct Unplugged {
    int headset = 0;
};

/// An output report reached a virtual headset, which shows `indicators` since.
struct ReportReceived {
    int headset = 0;
    Bytes report;
    std::vector<Indicator> indicators;
};

/// A virtual headset sent an input report.
struct ReportSent {
    int headset = 0;
    Bytes report;
};

/// An indicator of a virtual headset was lit or went dark.
struct IndicatorChanged {
    int headset = 0;
    Indicator indicator;
};

/// The user works a key of a virtual headset.
struct KeyWorked {
    int headset = 0;
    std::string key;
    std::string movement;  ///< "pressed", "down" or "up"
};

struct LogLine {
    std::string text;
};

/// A command is about to be carried out.
struct CommandGiven {
    std::string name;
    std::string line;
};

/// A line of a story.
struct Said {
    std::string text;
};

/// An expectation is over.
struct ExpectationChecked {
    bool met = false;
    std::string wanted;
    std::string found;
    std::string place;  ///< "FILE:LINE", empty at the prompt
};

/// A command could not be understood or carried out.
struct CommandFailed {
    std::string text;
    std::string place;
};

/// An entry of the list of calls.
struct CallListed {
    Call call;
};

/// An entry of the list of headsets.
struct HeadsetListed {
    Headset headset;
};

/// An entry of the list of audio devices: that of a headset.
struct DeviceListed {
    std::string headset;
    std::string id;
    std::string name;
    std::string serial;
};

/// An entry of the list of models.
struct ModelListed {
    std::string name;
    std::string product;
};

/// Text for a reader, such as help.
struct Text {
    std::string text;
};

using Event =
    std::variant<HostCall, HostResult, CallChanged, ListenerAttached, ActionRequested, ConfigKeyPressed,
                 HeadsetReady, HeadsetRemoved, Plugged, Unplugged, ReportReceived, ReportSent,
                 IndicatorChanged, KeyWorked, LogLine, CommandGiven, Said, ExpectationChecked, CommandFailed,
                 CallListed, HeadsetListed, DeviceListed, ModelListed, Text>;

}  // namespace softphone
