#include "virtual_headset/virtual_headset.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <hidapi/hidapi.h>

#include "platform/text.h"

namespace platform::virtual_platform {

namespace {

const HIDP_BUTTON_CAPS* find_cap(const std::vector<HIDP_BUTTON_CAPS>& caps, FullUsage usage) {
    // A single usage reads as a range of one.
    const auto found = std::find_if(caps.begin(), caps.end(), [&](const HIDP_BUTTON_CAPS& cap) {
        return cap.UsagePage == usage.page && cap.Range.UsageMin <= usage.usage &&
               usage.usage <= cap.Range.UsageMax;
    });
    return found == caps.end() ? nullptr : &*found;
}

std::vector<HIDP_BUTTON_CAPS> button_caps(HIDP_REPORT_TYPE type, USHORT count, PHIDP_PREPARSED_DATA data) {
    std::vector<HIDP_BUTTON_CAPS> caps(count);
    hidp::parser().HidP_GetButtonCaps(type, caps.data(), &count, data);
    caps.resize(count);
    return caps;
}

std::optional<std::wstring> wide(const std::optional<std::string>& text) {
    return text ? std::optional(to_wide(*text)) : std::nullopt;
}

}  // namespace

const HIDP_BUTTON_CAPS* Collection::find_input(FullUsage usage) const {
    return find_cap(input_buttons, usage);
}

const HIDP_BUTTON_CAPS* Collection::find_output(FullUsage usage) const {
    return find_cap(output_buttons, usage);
}

std::vector<Collection> parse_collections(std::span<const std::uint8_t> descriptor, Failure& failure) {
    auto parsed = hidp::parse(descriptor);
    if (parsed.error) {
        failure = parsed.error->to_string();
        return {};
    }
    std::vector<Collection> collections;
    for (auto& data : parsed.collections) {
        Collection collection;
        hidp::parser().HidP_GetCaps(data.get(), &collection.caps);
        collection.input_buttons = button_caps(HidP_Input, collection.caps.NumberInputButtonCaps, data.get());
        collection.output_buttons =
            button_caps(HidP_Output, collection.caps.NumberOutputButtonCaps, data.get());
        collection.data = std::move(data);
        collections.push_back(std::move(collection));
    }
    return collections;
}

std::string hex(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        std::array<char, 4> digits;
        std::snprintf(digits.data(), digits.size(), text.empty() ? "%02x" : " %02x", byte);
        text += digits.data();
    }
    return text;
}

VirtualHeadset::VirtualHeadset(int headset_number, HeadsetDescription headset_description,
                               std::vector<Collection> headset_collections)
    : number(headset_number),
      description(std::move(headset_description)),
      collections(std::move(headset_collections)) {
    power_on();
}

void VirtualHeadset::power_on() {
    plugged = true;
    fault = Fault::none;
    indicators.clear();
    for (Collection& collection : collections) {
        collection.pressed.clear();
        for (const HIDP_BUTTON_CAPS& cap : collection.output_buttons) {
            if (cap.IsRange == 0) {
                indicators[{cap.UsagePage, cap.NotRange.Usage}] = false;
            }
        }
    }
}

std::string VirtualHeadset::path(std::size_t collection) const {
    std::array<char, 48> text;
    std::snprintf(text.data(), text.size(), "virtual-%d#col%02d", number, static_cast<int>(collection) + 1);
    return text.data();
}

HidInterfaceInfo VirtualHeadset::info(std::size_t collection) const {
    constexpr std::uint16_t release_1_0 = 0x0100;
    return {.path = path(collection),
            .hid_interface = std::to_string(number),
            .vendor_id = description.vendor_id,
            .product_id = description.product_id,
            .serial_number = wide(description.serial),
            .release_number = release_1_0,
            .manufacturer_string = wide(description.manufacturer),
            .product_string = wide(description.product),
            .usage_page = collections[collection].caps.UsagePage,
            .usage = collections[collection].caps.Usage,
            .interface_number = 0,
            .bus_type = HID_API_BUS_USB};
}

std::optional<VirtualHeadset::KeyPlace> VirtualHeadset::find_key(FullUsage key) const {
    for (std::size_t i = 0; i < collections.size(); ++i) {
        if (const HIDP_BUTTON_CAPS* const cap = collections[i].find_input(key)) {
            return KeyPlace{i, cap->ReportID};
        }
    }
    return std::nullopt;
}

std::vector<std::uint8_t> VirtualHeadset::input_report(KeyPlace place) const {
    const Collection& collection = collections[place.collection];
    std::vector<std::uint8_t> report(collection.caps.InputReportByteLength);
    report[0] = place.report_id;
    for (const FullUsage key : collection.pressed) {
        const HIDP_BUTTON_CAPS* const cap = collection.find_input(key);
        if (cap == nullptr || cap->ReportID != place.report_id) {
            continue;
        }
        USAGE usage = key.usage;
        ULONG count = 1;
        if (hidp::parser().HidP_SetUsages(HidP_Input, key.page, 0, &usage, &count, collection.data.get(),
                                          report.data(),
                                          static_cast<ULONG>(report.size())) != HIDP_STATUS_SUCCESS) {
            return {};
        }
    }
    return report;
}

std::vector<std::uint8_t> VirtualHeadset::current_input_report(KeyPlace place) const {
    const std::size_t length =
        hidp::report_length(collections[place.collection].data.get(), HidP_Input, place.report_id);
    if (length == 0) {
        return {};
    }
    auto report = input_report(place);
    report.resize(length);
    return report;
}

std::optional<std::size_t> VirtualHeadset::find_input_report(std::uint8_t report_id,
                                                             std::size_t length) const {
    for (std::size_t i = 0; i < collections.size(); ++i) {
        if (length > 0 && hidp::report_length(collections[i].data.get(), HidP_Input, report_id) == length) {
            return i;
        }
    }
    return std::nullopt;
}

std::size_t VirtualHeadset::find_output_report(std::uint8_t report_id) const {
    const auto found =
        std::find_if(collections.begin(), collections.end(), [&](const Collection& collection) {
            return hidp::report_length(collection.data.get(), HidP_Output, report_id) > 0;
        });
    return found == collections.end() ? 0 : static_cast<std::size_t>(found - collections.begin());
}

}  // namespace platform::virtual_platform
