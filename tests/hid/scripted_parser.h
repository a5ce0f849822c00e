// The descriptor parser with its answers changed where a test wants them: a call that fails, a capability
// that no descriptor gives.
#pragma once

#include <algorithm>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/hidp/hidp.h"

namespace platform::hid_test {

/// Answers as platform/hidp does, but for what is set here.
class ScriptedParser final : public HidParser {
  public:
    /// A function that fails, in one direction or, without one, in any.
    struct Failing {
        std::string_view function{};
        std::optional<HIDP_REPORT_TYPE> type{};
        NTSTATUS status = HIDP_STATUS_INTERNAL_ERROR;
    };
    Failing failing{};

    std::function<void(std::span<HIDP_BUTTON_CAPS>)> edit_button_caps{};
    std::function<void(std::span<HIDP_VALUE_CAPS>)> edit_value_caps{};
    std::optional<ULONG> max_usage_list_length{};
    std::optional<std::vector<USAGE>> pressed{};  ///< what HidP_GetUsages lists, as far as it fits
    std::optional<UCHAR> first_report_byte{};     ///< what HidP_SetUsages leaves in byte 0

    NTSTATUS HidP_GetCaps(PHIDP_PREPARSED_DATA data, HIDP_CAPS* caps) const override {
        return fails("HidP_GetCaps", HidP_Input) ? failing.status : real_->HidP_GetCaps(data, caps);
    }

    NTSTATUS HidP_GetButtonCaps(HIDP_REPORT_TYPE type, HIDP_BUTTON_CAPS* caps, USHORT* length,
                                PHIDP_PREPARSED_DATA data) const override {
        if (fails("HidP_GetButtonCaps", type)) {
            return failing.status;
        }
        const NTSTATUS status = real_->HidP_GetButtonCaps(type, caps, length, data);
        if (edit_button_caps) {
            edit_button_caps({caps, *length});
        }
        return status;
    }

    NTSTATUS HidP_GetValueCaps(HIDP_REPORT_TYPE type, HIDP_VALUE_CAPS* caps, USHORT* length,
                               PHIDP_PREPARSED_DATA data) const override {
        if (fails("HidP_GetValueCaps", type)) {
            return failing.status;
        }
        const NTSTATUS status = real_->HidP_GetValueCaps(type, caps, length, data);
        if (edit_value_caps) {
            edit_value_caps({caps, *length});
        }
        return status;
    }

    ULONG HidP_MaxUsageListLength(HIDP_REPORT_TYPE type, USAGE page,
                                  PHIDP_PREPARSED_DATA data) const override {
        return max_usage_list_length.value_or(real_->HidP_MaxUsageListLength(type, page, data));
    }

    NTSTATUS HidP_SetUsages(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE* usages,
                            ULONG* length, PHIDP_PREPARSED_DATA data, UCHAR* report,
                            ULONG report_length) const override {
        if (fails("HidP_SetUsages", type)) {
            return failing.status;
        }
        const NTSTATUS status =
            real_->HidP_SetUsages(type, page, link_collection, usages, length, data, report, report_length);
        report[0] = first_report_byte.value_or(report[0]);
        return status;
    }

    NTSTATUS HidP_UnsetUsages(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE* usages,
                              ULONG* length, PHIDP_PREPARSED_DATA data, UCHAR* report,
                              ULONG report_length) const override {
        return real_->HidP_UnsetUsages(type, page, link_collection, usages, length, data, report,
                                       report_length);
    }

    NTSTATUS HidP_GetUsages(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE* usages,
                            ULONG* length, PHIDP_PREPARSED_DATA data, const UCHAR* report,
                            ULONG report_length) const override {
        if (fails("HidP_GetUsages", type)) {
            return failing.status;
        }
        if (!pressed) {
            return real_->HidP_GetUsages(type, page, link_collection, usages, length, data, report,
                                         report_length);
        }
        std::copy_n(pressed->begin(), std::min<std::size_t>(*length, pressed->size()), usages);
        *length = static_cast<ULONG>(pressed->size());
        return HIDP_STATUS_SUCCESS;
    }

    NTSTATUS HidP_SetUsageValue(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE usage,
                                ULONG value, PHIDP_PREPARSED_DATA data, UCHAR* report,
                                ULONG report_length) const override {
        return fails("HidP_SetUsageValue", type)
                   ? failing.status
                   : real_->HidP_SetUsageValue(type, page, link_collection, usage, value, data, report,
                                               report_length);
    }

    NTSTATUS HidP_GetUsageValue(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE usage,
                                ULONG* value, PHIDP_PREPARSED_DATA data, const UCHAR* report,
                                ULONG report_length) const override {
        return fails("HidP_GetUsageValue", type)
                   ? failing.status
                   : real_->HidP_GetUsageValue(type, page, link_collection, usage, value, data, report,
                                               report_length);
    }

    NTSTATUS HidP_GetScaledUsageValue(HIDP_REPORT_TYPE type, USAGE page, USHORT link_collection, USAGE usage,
                                      LONG* value, PHIDP_PREPARSED_DATA data, const UCHAR* report,
                                      ULONG report_length) const override {
        return fails("HidP_GetScaledUsageValue", type)
                   ? failing.status
                   : real_->HidP_GetScaledUsageValue(type, page, link_collection, usage, value, data, report,
                                                     report_length);
    }

  private:
    bool fails(std::string_view function, HIDP_REPORT_TYPE type) const {
        return failing.function == function && failing.type.value_or(type) == type;
    }

    const HidParser* real_ = &hidp::parser();
};

}  // namespace platform::hid_test
