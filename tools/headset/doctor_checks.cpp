#include "tools/headset/doctor_checks.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "tools/headset/udev_rules.h"

namespace headset {
namespace {

using platform::HidInterfaceInfo;
using plugin_control::AdmissionRule;

/// Whether the file of rules that is installed lets people open a device.
bool is_in_rules_file(std::int32_t vendor_id, bool has_sound) {
    return has_rule_for(udev_rules(), vendor_id, has_sound);
}

/// The file in which the rule for a device is looked for. One that the installed file leaves closed has a
/// file of its vendor's own.
std::string rules_file_for(std::int32_t vendor_id, bool has_sound) {
    return is_in_rules_file(vendor_id, has_sound)
               ? rules_file_name
               : "70-orvex-headset-" + tools::to_hex16(static_cast<unsigned>(vendor_id)) + ".rules";
}

std::string text_if(bool is_wrong, const char* text) {
    return is_wrong ? text : "";
}

constexpr Check<Machine> machine_rows[] = {
    {Severity::error, "hidapi",
     [](const Machine& machine) {
         return machine.hidapi_error.empty()
                    ? ""
                    : "hidapi cannot be loaded, so no headset is found: " + machine.hidapi_error;
     },
     [](const Machine&) -> std::string { return "sudo apt install libhidapi-hidraw0"; }},
    {Severity::warning, "udev",
     [](const Machine& machine) {
         return machine.udev_error.empty()
                    ? ""
                    : "libudev cannot be loaded, so headsets that are plugged in later are not noticed: " +
                          machine.udev_error;
     },
     [](const Machine&) -> std::string { return "sudo apt install libudev1"; }},
    {Severity::warning, "udev daemon",
     [](const Machine& machine) {
         return text_if(
             !machine.has_udev_daemon,
             "no udev daemon runs (there is no /run/udev/control): nothing applies udev rules, and "
             "a headset may be noticed before it can be opened");
     },
     [](const Machine&) -> std::string {
         return "start systemd-udevd; in a container, bind /run/udev of the host";
     }},
    {Severity::note, "root",
     [](const Machine& machine) {
         return text_if(machine.is_root,
                        "root may open every headset, so this says nothing about other users");
     },
     [](const Machine&) -> std::string { return "run this as the user who makes the calls"; }},
    {Severity::error, "headset",
     [](const Machine& machine) {
         return text_if(machine.hidapi_error.empty() && !machine.has_headset,
                        "there is no headset: no HID device has a collection of the Telephony page or is a "
                        "sound card, too");
     },
     [](const Machine&) -> std::string {
         return "plug in a USB headset with call control; \"headset list\" shows every HID device. In a "
                "container or virtual machine, pass the device in, with /sys";
     }},
};

bool is_refused_by(const Headset& headset, AdmissionRule rule) {
    return std::ranges::any_of(headset.node.interfaces, [&](const HidInterfaceInfo& info) {
        const auto refusal = find_refusal(info);
        return refusal && refusal->rule == rule;
    });
}

std::string permission_problem(const Headset& headset) {
    return headset.state.open_error == 0 ? ""
                                         : "this user cannot open " + headset.node.path + ": " +
                                               std::generic_category().message(headset.state.open_error);
}

std::string installation(const Headset& headset) {
    const auto vendor_id = headset.info().vendor_id;
    const bool has_sound = headset.state.has_sound;
    const auto source =
        is_in_rules_file(vendor_id, has_sound) ? "headset udev-rules" : "echo '" + udev_rule(vendor_id) + "'";
    return "install the udev rules, unplug the headset and plug it in again: " + source +
           " | sudo tee /etc/udev/rules.d/" + rules_file_for(vendor_id, has_sound) +
           " && sudo udevadm control --reload";
}

std::string rules_remedy(const Headset& headset) {
    if (!headset.has_udev_daemon)
        return "give this user access to the node without udev rules: nothing applies them here";
    if (!headset.rules)
        return installation(headset);
    if (headset.state.rules_ran && *headset.state.rules_ran < headset.rules->installed)
        return "unplug the headset and plug it in again: " + headset.rules->path + " was installed later";
    return "log in at the seat: " + headset.rules->path +
           " gives access to the person who sits there, not over ssh and not to services; for these, give the "
           "node to a group";
}

/// What an open that fails asks for.
struct OpenRemedy {
    int error;
    std::string (*remedy)(const Headset&);
};
constexpr OpenRemedy open_remedies[] = {
    {EACCES, rules_remedy},
    {EPERM,
     [](const Headset&) -> std::string {
         return "give the container or sandbox access to the device: its device cgroup denies it";
     }},
    {ENOENT,
     [](const Headset& headset) {
         return "give the container or sandbox the node: bind " + headset.node.path + ", or all of /dev";
     }},
};

std::string permission_remedy(const Headset& headset) {
    const auto* const found = std::ranges::find(open_remedies, headset.state.open_error, &OpenRemedy::error);
    return found == std::end(open_remedies) ? "unplug the headset and plug it in again"
                                            : found->remedy(headset);
}

std::string telephony_problem(const Headset& headset) {
    if (!headset.descriptor_error.empty())
        return {};
    if (!has_telephony(headset.node))
        return "it has no collection of the Telephony page, and the plug-in opens no other";
    return headset.explanation.open_error.empty()
               ? ""
               : "the plug-in cannot work with its collection of the Telephony page: " +
                     headset.explanation.open_error;
}

std::string indicators_problem(const Headset& headset) {
    std::vector<Usage> missing;
    for (const auto& indicator : headset.explanation.indicators)
        if (!indicator.works())
            missing.push_back(indicator.usage);
    return missing.empty() ? ""
                           : "the plug-in shows a call by two indicators, and cannot light: " +
                                 tools::join(missing, usage_label);
}

std::string holders_problem(const Headset& headset) {
    if (headset.state.holders.empty())
        return {};
    return "other processes have it open: " +
           tools::join(headset.state.holders,
                       [](const Process& process) {
                           return tools::printable(process.name) + " (process " + std::to_string(process.id) +
                                  ")";
                       }) +
           "; if they are not the calling client, they may switch its indicators and act on its keys";
}

std::string desktop_key_problem(const Headset& headset) {
    const auto& inputs = headset.state.mute_inputs;
    return inputs.empty() ? ""
                          : "the desktop also gets the mute key, from " +
                                tools::join(inputs, [](const auto& name) { return name; }) +
                                ": it may mute the microphone when you press the key";
}

std::string desktop_key_remedy(const Headset& headset) {
    const auto& info = headset.info();
    return "remove the mute key from the desktop's shortcuts; or hide all keys of the headset from the desktop "
           "with a udev rule: SUBSYSTEM==\"input\", KERNELS==\"0003:" +
           device_ids(info) + ".*\", ENV{LIBINPUT_IGNORE_DEVICE}=\"1\"";
}

/// LEDs that something in the kernel switches.
std::vector<SystemLed> switched_leds(const Headset& headset) {
    auto leds = headset.state.mute_leds;
    std::erase_if(leds, [](const SystemLed& led) { return led.trigger == "none"; });
    return leds;
}

std::string desktop_led_problem(const Headset& headset) {
    const auto leds = switched_leds(headset);
    return leds.empty() ? ""
                        : "the kernel also switches the mute indicator: " +
                              tools::join(leds, [](const SystemLed& led) {
                                  return led.name + " with its trigger " + led.trigger;
                              });
}

std::string desktop_led_remedy(const Headset& headset) {
    return tools::join(switched_leds(headset), [](const SystemLed& led) {
        return "echo none | sudo tee /sys/class/leds/" + led.name + "/trigger";
    });
}

constexpr Check<Headset> headset_rows[] = {
    {Severity::error, "report descriptor", [](const Headset& headset) { return headset.descriptor_error; },
     [](const Headset&) -> std::string {
         return "look for new firmware of the headset; \"headset caps\" with the file report_descriptor in "
                "/sys/class/hidraw shows more";
     }},
    {Severity::error, "own headset",
     [](const Headset& headset) {
         return text_if(is_refused_by(headset, AdmissionRule::own_headset),
                        "the plug-in does not use it: the client handles the headsets of its maker itself");
     },
     [](const Headset&) -> std::string { return "look for it in the settings of the client"; }},
    {Severity::error, "serial",
     [](const Headset& headset) {
         return text_if(is_refused_by(headset, AdmissionRule::serial),
                        "it has no serial number, so the plug-in does not use it");
     },
     [](const Headset&) -> std::string { return "look for new firmware, or use another headset"; }},
    {Severity::error, "permission", permission_problem, permission_remedy},
    {Severity::error, "telephony", telephony_problem,
     [](const Headset&) -> std::string {
         return "use a headset with call control; some have it only after you switch it on, or with their own "
                "dongle";
     }},
    {Severity::error, "driver",
     [](const Headset& headset) {
         return text_if(
             headset.explanation.is_open && !headset.explanation.has_driver,
             "the plug-in has no driver for its vendor, so nothing works: it neither lights nor reads the "
             "headset");
     },
     [](const Headset&) -> std::string {
         return "use a headset of a vendor that the plug-in has a driver for";
     }},
    {Severity::error, "indicators", indicators_problem,
     [](const Headset& headset) {
         return "use another headset; \"headset explain " + headset.node.path + "\" shows what this one has";
     }},
    {Severity::warning, "mute key",
     [](const Headset& headset) {
         return text_if(headset.explanation.is_open && headset.explanation.mute_keys.empty(),
                        "it has no mute key that the plug-in reads");
     },
     [](const Headset& headset) {
         return "mute in the client; \"headset monitor " + headset.node.path + "\" shows what the keys send";
     }},
    {Severity::warning, "other program", holders_problem,
     [](const Headset&) -> std::string { return "end them, or switch off their own support for headsets"; }},
    {Severity::warning, "desktop mute key", desktop_key_problem, desktop_key_remedy},
    {Severity::warning, "desktop mute indicator", desktop_led_problem, desktop_led_remedy},
};

}  // namespace

std::span<const Check<Machine>> machine_checks() {
    return machine_rows;
}

std::span<const Check<Headset>> headset_checks() {
    return headset_rows;
}

std::optional<RulesFile> find_rules(System& system, std::int32_t vendor_id, bool has_sound) {
    auto file = system.rules_file(rules_file_for(vendor_id, has_sound));
    return file && has_rule_for(file->content, vendor_id, has_sound) ? file : std::nullopt;
}

}  // namespace headset
