#include "devicemgr/admission.h"

#include <algorithm>
#include <iterator>

#include "base/plugin_log.h"
#include "device/vendor_names.h"
#include "platform/mutex.h"
#include "platform/text.h"

namespace plugin_control {

using headset_plugin::ORVEX_VENDOR_ID;

namespace {

/// What a text of at most 63 characters and its end take.
constexpr std::size_t longest_text = 63;

constexpr const char* unknown_text = "unknown";

/// Shared, so that the host's own function is called and never a copy of what it keeps.
using SharedHook = platform::Guarded<std::shared_ptr<const DeviceAvailabilityHook>>;

SharedHook& device_availability_hook() {
    static auto* const hook = new SharedHook;  // outlives every thread
    return *hook;
}

constexpr const char* function = "plugin_control::device_mgr::enumerate_hid_device";

// %x takes unsigned; the ids are 16-bit and positive.
unsigned hex(std::int32_t number) {
    return static_cast<unsigned>(number);
}

std::string text_of(const wchar_t* text) {
    return platform::to_utf8(text, longest_text);
}

const char* name_of(const Candidate& candidate) {
    return candidate.product_name ? candidate.product_name->c_str() : unknown_text;
}

// ---- the rules

bool is_own_headset(const Candidate& candidate) {
    return candidate.vendor_id == ORVEX_VENDOR_ID;
}

void log_own_headset(const Candidate& candidate) {
    plugin_log(
        "3rdPartyHeadsetPlugin: %s: orvex headset is plugged in,vendor_id: %d, product_id: %d, serial: %s. \n",
        function, candidate.vendor_id, candidate.product_id, unknown_text);
}

bool is_on_other_page(const Candidate& candidate) {
    return candidate.usage_page != telephony_usage_page && candidate.usage_page != consumer_usage_page;
}

void log_other_page(const Candidate& candidate) {
    plugin_log(
        "3rdPartyHeadsetPlugin: %s: ignore non-accessary device vendor_id: 0x%04x, product_id: 0x%04x, page: 0x%02x. \n",
        function, hex(candidate.vendor_id), hex(candidate.product_id), hex(candidate.usage_page));
}

void log_plugged_in(const Candidate& candidate) {
    plugin_log(
        "3rdPartyHeadsetPlugin: %s: 3rd-party headset is plugged in, vendor_id: 0x%04x, product_id: 0x%04x, page: 0x%02x. \n",
        function, hex(candidate.vendor_id), hex(candidate.product_id), hex(candidate.usage_page));
}

bool lacks_serial(const Candidate& candidate) {
    return !candidate.serial;
}

void log_no_serial(const Candidate& /*candidate*/) {
    plugin_log("3rdPartyHeadsetPlugin: %s: no serial info, sn = %s, ignored\n", function, unknown_text);
}

bool is_disallowed(const Candidate& candidate) {
    const auto hook = device_availability_hook().get();
    return hook && !(*hook)(candidate.vendor_id, candidate.product_id);
}

void log_disallowed(const Candidate& candidate) {
    plugin_log("3rdPartyHeadsetPlugin: %s: disallowed vendor_id:[0x%04x], product_id:[0x%04x]\n", function,
               hex(candidate.vendor_id), hex(candidate.product_id));
}

bool is_unsupported(const Candidate& candidate) {
    return !candidate.is_supported(candidate.vendor_id, candidate.product_id);
}

void log_unsupported(const Candidate& candidate) {
    plugin_log(
        "3rdPartyHeadsetPlugin: %s: 3rd product vendor_id:[0x%4x], product_id:[0x%4x], product_name:[%s] unsupported!\n",
        function, hex(candidate.vendor_id), hex(candidate.product_id), name_of(candidate));
}

void log_supported(const Candidate& candidate) {
    plugin_log(
        "3rdPartyHeadsetPlugin: %s: 3rd product vendor_id:[0x%4x], product_id:[0x%4x], product_name:[%s] supported!\n",
        function, hex(candidate.vendor_id), hex(candidate.product_id), name_of(candidate));
}

void log_nothing(const Candidate& /*candidate*/) {}

struct Rule {
    Refusal refusal;
    bool (*refuses)(const Candidate&);
    void (*log_refused)(const Candidate&);
    void (*log_passed)(const Candidate&);
};

/// In the order in which they are applied: the host is not asked about what is no headset.
constexpr Rule rules[] = {
    {{AdmissionRule::own_headset, "own headset", "the client serves the headsets of its own maker itself"},
     is_own_headset,
     log_own_headset,
     log_nothing},
    {{AdmissionRule::usage_page, "usage page", "only the Telephony and the Consumer page count"},
     is_on_other_page,
     log_other_page,
     log_plugged_in},
    {{AdmissionRule::serial, "serial", "the device states no serial number"},
     lacks_serial,
     log_no_serial,
     log_nothing},
    {{AdmissionRule::host, "client", "the client does not want this product"},
     is_disallowed,
     log_disallowed,
     log_nothing},
    {{AdmissionRule::product, "product", "the product is not supported"},
     is_unsupported,
     log_unsupported,
     log_supported},
};

}  // namespace

void set_device_availability_hook(const DeviceAvailabilityHook& hook) {
    device_availability_hook().set(hook ? std::make_shared<const DeviceAvailabilityHook>(hook) : nullptr);
}

bool is_third_party_product_supported(std::int32_t /*vendor_id*/, std::int32_t /*product_id*/) {
    return true;
}

Candidate make_candidate(const hid_device_info& entry, ProductSupportTest is_supported) {
    Candidate candidate{entry.vendor_id, entry.product_id, static_cast<std::int16_t>(entry.usage_page)};
    if (entry.serial_number != nullptr) {
        candidate.serial = text_of(entry.serial_number);
    }
    if (entry.product_string != nullptr) {
        candidate.product_name = text_of(entry.product_string);
    }
    candidate.is_supported = is_supported;
    return candidate;
}

std::optional<Refusal> find_refusal(const Candidate& candidate) {
    const auto* const refusing = std::find_if(std::begin(rules), std::end(rules),
                                              [&](const Rule& rule) { return rule.refuses(candidate); });
    return refusing == std::end(rules) ? std::nullopt : std::optional(refusing->refusal);
}

std::optional<AdmittedInterface> admit(const hid_device_info& entry, ProductSupportTest is_supported) {
    const Candidate candidate = make_candidate(entry, is_supported);
    for (const Rule& rule : rules) {
        if (rule.refuses(candidate)) {
            rule.log_refused(candidate);
            return std::nullopt;
        }
        rule.log_passed(candidate);
    }
    return AdmittedInterface{*candidate.serial, name_of(candidate)};
}

}  // namespace plugin_control
