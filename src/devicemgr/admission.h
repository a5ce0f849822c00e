// Which HID interfaces are let in.
#pragma once

#include <cstdint>
#include <functional>
#include <hidapi/hidapi.h>
#include <optional>
#include <string>

namespace plugin_control {

/// HID Usage Tables, section 3.1.
inline constexpr std::int32_t telephony_usage_page = 0x0B;
inline constexpr std::int32_t consumer_usage_page = 0x0C;

/// Decides whether the host wants a headset, by vendor and product id. Set by the host.
using DeviceAvailabilityHook = std::function<bool(int vendor_id, int product_id)>;

/// Replaces the hook; an empty one lets every headset in. Thread: any.
void set_device_availability_hook(const DeviceAvailabilityHook& hook);

/// The place for a list of supported products: true for every one.
bool is_third_party_product_supported(std::int32_t vendor_id, std::int32_t product_id);
using ProductSupportTest = bool (*)(std::int32_t vendor_id, std::int32_t product_id);

/// What the rules look at. Texts are in UTF-8 of at most 63 bytes each, and absent where the device states
/// none.
struct Candidate {
    std::int32_t vendor_id = 0;
    std::int32_t product_id = 0;
    std::int32_t usage_page = 0;  ///< read as a signed 16-bit number
    std::optional<std::string> serial{};
    std::optional<std::string> product_name{};
    ProductSupportTest is_supported = is_third_party_product_supported;
};
Candidate make_candidate(const hid_device_info& entry,
                         ProductSupportTest is_supported = is_third_party_product_supported);

/// The rules, each of which can keep an interface out, in the order in which they are applied.
enum class AdmissionRule { own_headset, usage_page, serial, host, product };

/// The rule that keeps an interface out, and why, for people.
struct Refusal {
    AdmissionRule rule;
    const char* name;
    const char* reason;
};

/// The first rule that keeps a candidate out; empty when it is let in. Logs nothing.
std::optional<Refusal> find_refusal(const Candidate& candidate);

/// What is kept of an admitted interface's texts.
struct AdmittedInterface {
    std::string serial;
    std::string product_name;  ///< "unknown" where the device states none
};

/// Puts one enumerated interface to the rules, logging each step. Empty when it is not for the plug-in.
std::optional<AdmittedInterface> admit(const hid_device_info& entry,
                                       ProductSupportTest is_supported = is_third_party_product_supported);

}  // namespace plugin_control
