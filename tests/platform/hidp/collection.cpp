#include "tests/platform/hidp/collection.h"

#include <stdexcept>

namespace hidp_test {

using namespace platform;

Collection::Collection(std::span<const std::uint8_t> descriptor, std::size_t index) {
    auto parsed = hidp::parse(descriptor);
    if (parsed.error) {
        throw std::runtime_error(parsed.error->to_string());
    }
    data_ = std::move(parsed.collections.at(index));
}

HIDP_CAPS Collection::caps() const {
    HIDP_CAPS caps{};
    if (hidp::parser().HidP_GetCaps(data(), &caps) != HIDP_STATUS_SUCCESS) {
        throw std::runtime_error("HidP_GetCaps failed");
    }
    return caps;
}

const hidp::Direction& Collection::direction(HIDP_REPORT_TYPE type) const {
    return data()->directions[type];
}

std::vector<HIDP_BUTTON_CAPS> Collection::buttons(HIDP_REPORT_TYPE type) const {
    auto length = static_cast<USHORT>(direction(type).capabilities.size());
    std::vector<HIDP_BUTTON_CAPS> caps(length);
    hidp::parser().HidP_GetButtonCaps(type, caps.data(), &length, data());
    caps.resize(length);
    return caps;
}

std::vector<HIDP_VALUE_CAPS> Collection::values(HIDP_REPORT_TYPE type) const {
    auto length = static_cast<USHORT>(direction(type).capabilities.size());
    std::vector<HIDP_VALUE_CAPS> caps(length);
    hidp::parser().HidP_GetValueCaps(type, caps.data(), &length, data());
    caps.resize(length);
    return caps;
}

Bytes Collection::empty_report(HIDP_REPORT_TYPE type) const {
    return Bytes(direction(type).report_byte_length);
}

Outcome<ULONG> Collection::set(HIDP_REPORT_TYPE type, USAGE page, Usages usages, Bytes& report) const {
    auto length = static_cast<ULONG>(usages.size());
    const auto status = hidp::parser().HidP_SetUsages(type, page, 0, usages.data(), &length, data(),
                                                      report.data(), static_cast<ULONG>(report.size()));
    return {status, length};
}

Outcome<ULONG> Collection::unset(HIDP_REPORT_TYPE type, USAGE page, Usages usages, Bytes& report) const {
    auto length = static_cast<ULONG>(usages.size());
    const auto status = hidp::parser().HidP_UnsetUsages(type, page, 0, usages.data(), &length, data(),
                                                        report.data(), static_cast<ULONG>(report.size()));
    return {status, length};
}

Outcome<Usages> Collection::pressed(HIDP_REPORT_TYPE type, USAGE page, const Bytes& report) const {
    ULONG length = hidp::parser().HidP_MaxUsageListLength(type, page, data());
    Usages usages(length);
    const auto status = hidp::parser().HidP_GetUsages(type, page, 0, usages.data(), &length, data(),
                                                      report.data(), static_cast<ULONG>(report.size()));
    usages.resize(status == HIDP_STATUS_SUCCESS ? length : 0);
    return {status, usages};
}

NTSTATUS Collection::set_value(HIDP_REPORT_TYPE type, USAGE page, USAGE usage, ULONG value,
                               Bytes& report) const {
    return hidp::parser().HidP_SetUsageValue(type, page, 0, usage, value, data(), report.data(),
                                             static_cast<ULONG>(report.size()));
}

Outcome<ULONG> Collection::value(HIDP_REPORT_TYPE type, USAGE page, USAGE usage, const Bytes& report) const {
    ULONG result = 0;
    const auto status = hidp::parser().HidP_GetUsageValue(type, page, 0, usage, &result, data(),
                                                          report.data(), static_cast<ULONG>(report.size()));
    return {status, result};
}

Outcome<LONG> Collection::scaled(HIDP_REPORT_TYPE type, USAGE page, USAGE usage, const Bytes& report) const {
    LONG result = 0;
    const auto status = hidp::parser().HidP_GetScaledUsageValue(
        type, page, 0, usage, &result, data(), report.data(), static_cast<ULONG>(report.size()));
    return {status, result};
}

}  // namespace hidp_test
