#include "devicemgr/admission.h"

#include "device/vendor_names.h"
#include "platform/mutex.h"
#include "platform/text.h"
#include "plugin/base/plugin_log.h"

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

bool allowed_by_host(std::int32_t vendor_id, std::int32_t product_id) {
    const auto hook = device_availability_hook().get();
    return !hook || (*hook)(vendor_id, product_id);
}

}  // namespace

void set_device_availability_hook(const DeviceAvailabilityHook& hook) {
    device_availability_hook().set(hook ? std::make_shared<const DeviceAvailabilityHook>(hook) : nullptr);
}

bool is_third_party_product_supported(std::int32_t /*vendor_id*/, std::int32_t /*product_id*/) {
    return true;
}

std::optional<AdmittedInterface> admit(const hid_device_info& entry, ProductSupportTest is_supported) {
    static constexpr const char* function = "plugin_control::device_mgr::enumerate_hid_device";
    const std::int32_t vendor_id = entry.vendor_id;
    const std::int32_t product_id = entry.product_id;
    const auto usage_page = static_cast<std::int16_t>(entry.usage_page);
    // %x takes unsigned; the ids are 16-bit and positive.
    const auto vendor_hex = static_cast<unsigned>(vendor_id);
    const auto product_hex = static_cast<unsigned>(product_id);
    const auto page_hex = static_cast<unsigned>(usage_page);
    AdmittedInterface admitted{unknown_text, unknown_text};

    if (vendor_id == ORVEX_VENDOR_ID) {
        plugin_log(
            "3rdPartyHeadsetPlugin: %s: orvex headset is plugged in,vendor_id: %d, product_id: %d, serial: %s. \n",
            function, vendor_id, product_id, admitted.serial.c_str());
        return std::nullopt;
    }
    if (usage_page != telephony_usage_page && usage_page != consumer_usage_page) {
        plugin_log(
            "3rdPartyHeadsetPlugin: %s: ignore non-accessary device vendor_id: 0x%04x, product_id: 0x%04x, page: 0x%02x. \n",
            function, vendor_hex, product_hex, page_hex);
        return std::nullopt;
    }
    plugin_log(
        "3rdPartyHeadsetPlugin: %s: 3rd-party headset is plugged in, vendor_id: 0x%04x, product_id: 0x%04x, page: 0x%02x. \n",
        function, vendor_hex, product_hex, page_hex);
    if (entry.serial_number == nullptr) {
        plugin_log("3rdPartyHeadsetPlugin: %s: no serial info, sn = %s, ignored\n", function,
                   admitted.serial.c_str());
        return std::nullopt;
    }
    admitted.serial = platform::to_utf8(entry.serial_number, longest_text);
    if (entry.product_string != nullptr) {
        admitted.product_name = platform::to_utf8(entry.product_string, longest_text);
    }
    if (!allowed_by_host(vendor_id, product_id)) {
        plugin_log("3rdPartyHeadsetPlugin: %s: disallowed vendor_id:[0x%04x], product_id:[0x%04x]\n",
                   function, vendor_hex, product_hex);
        return std::nullopt;
    }
    if (!is_supported(vendor_id, product_id)) {
        plugin_log(
            "3rdPartyHeadsetPlugin: %s: 3rd product vendor_id:[0x%4x], product_id:[0x%4x], product_name:[%s] unsupported!\n",
            function, vendor_hex, product_hex, admitted.product_name.c_str());
        return std::nullopt;
    }
    plugin_log(
        "3rdPartyHeadsetPlugin: %s: 3rd product vendor_id:[0x%4x], product_id:[0x%4x], product_name:[%s] supported!\n",
        function, vendor_hex, product_hex, admitted.product_name.c_str());
    return admitted;
}

}  // namespace plugin_control
