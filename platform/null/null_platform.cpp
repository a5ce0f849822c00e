// The platform of a system that is not supported yet: every operation says so. It is also the list of what a
// port has to give.

#include "platform/platform.h"

namespace platform {

namespace {

constexpr const wchar_t* not_supported = L"not supported on this platform";

class NullHidBackend final : public HidBackend {
  public:
    std::wstring init() override { return not_supported; }
    void exit() override {}
    std::vector<HidInterfaceInfo> enumerate(std::uint16_t, std::uint16_t) override { return {}; }
    OpenResult open(const std::string&) override { return {nullptr, not_supported}; }
    void HidD_FreePreparsedData(PHIDP_PREPARSED_DATA) override {}
};

class NullHidParser final : public HidParser {
  public:
    NTSTATUS HidP_GetCaps(PHIDP_PREPARSED_DATA, HIDP_CAPS*) const override {
        return HIDP_STATUS_NOT_IMPLEMENTED;
    }
    NTSTATUS HidP_GetButtonCaps(HIDP_REPORT_TYPE, HIDP_BUTTON_CAPS*, USHORT*,
                                PHIDP_PREPARSED_DATA) const override {
        return HIDP_STATUS_NOT_IMPLEMENTED;
    }
    NTSTATUS HidP_GetValueCaps(HIDP_REPORT_TYPE, HIDP_VALUE_CAPS*, USHORT*,
                               PHIDP_PREPARSED_DATA) const override {
        return HIDP_STATUS_NOT_IMPLEMENTED;
    }
    ULONG HidP_MaxUsageListLength(HIDP_REPORT_TYPE, USAGE, PHIDP_PREPARSED_DATA) const override { return 0; }
    NTSTATUS HidP_SetUsages(HIDP_REPORT_TYPE, USAGE, USHORT, USAGE*, ULONG*, PHIDP_PREPARSED_DATA, UCHAR*,
                            ULONG) const override {
        return HIDP_STATUS_NOT_IMPLEMENTED;
    }
    NTSTATUS HidP_UnsetUsages(HIDP_REPORT_TYPE, USAGE, USHORT, USAGE*, ULONG*, PHIDP_PREPARSED_DATA, UCHAR*,
                              ULONG) const override {
        return HIDP_STATUS_NOT_IMPLEMENTED;
    }
    NTSTATUS HidP_GetUsages(HIDP_REPORT_TYPE, USAGE, USHORT, USAGE*, ULONG*, PHIDP_PREPARSED_DATA,
                            const UCHAR*, ULONG) const override {
        return HIDP_STATUS_NOT_IMPLEMENTED;
    }
    NTSTATUS HidP_SetUsageValue(HIDP_REPORT_TYPE, USAGE, USHORT, USAGE, ULONG, PHIDP_PREPARSED_DATA, UCHAR*,
                                ULONG) const override {
        return HIDP_STATUS_NOT_IMPLEMENTED;
    }
    NTSTATUS HidP_GetUsageValue(HIDP_REPORT_TYPE, USAGE, USHORT, USAGE, ULONG*, PHIDP_PREPARSED_DATA,
                                const UCHAR*, ULONG) const override {
        return HIDP_STATUS_NOT_IMPLEMENTED;
    }
    NTSTATUS HidP_GetScaledUsageValue(HIDP_REPORT_TYPE, USAGE, USHORT, USAGE, LONG*, PHIDP_PREPARSED_DATA,
                                      const UCHAR*, ULONG) const override {
        return HIDP_STATUS_NOT_IMPLEMENTED;
    }
};

class NullMessageWindows final : public MessageWindows {
  public:
    bool RegisterClassExW(const WindowClass&) override { return false; }
    bool UnregisterClassW(const wchar_t*, void*) override { return false; }
    WindowHandle CreateWindowExW(const WindowCreation&) override { return nullptr; }
    bool GetMessageW(WindowMessage*, WindowHandle) override { return false; }
    void TranslateMessage(const WindowMessage&) override {}
    LParam DispatchMessageW(const WindowMessage&) override { return 0; }
    LParam DefWindowProcW(WindowHandle, std::uint32_t, WParam, LParam) override { return 0; }
    void PostQuitMessage(int) override {}
    LParam SendMessageW(WindowHandle, std::uint32_t, WParam, LParam) override { return 0; }
    bool PostMessageW(WindowHandle, std::uint32_t, WParam, LParam) override { return false; }
    NotificationHandle RegisterDeviceNotificationW(WindowHandle, const DeviceInterfaceBroadcast&,
                                                   std::uint32_t) override {
        return nullptr;
    }
    void UnregisterDeviceNotification(NotificationHandle) override {}
    std::uint32_t GetLastError() override { return error_not_supported; }
};

/// There is nothing to wait for: every wait counts as ended early.
class NullSleeper final : public Sleeper {
  public:
    bool sleep(std::chrono::milliseconds) override { return false; }
    void wake() override {}
};

class NullClock final : public Clock {
  public:
    std::unique_ptr<Sleeper> make_sleeper() override { return std::make_unique<NullSleeper>(); }
};

class NullPlatform final : public Platform {
  public:
    HidBackend& hid() override { return hid_; }
    const HidParser& parser() override { return parser_; }
    MessageWindows& windows() override { return windows_; }
    Clock& clock() override { return clock_; }

  private:
    NullHidBackend hid_;
    NullHidParser parser_;
    NullMessageWindows windows_;
    NullClock clock_;
};

}  // namespace

Platform& current() {
    static auto* const platform = new NullPlatform;  // outlives every thread
    return *platform;
}

}  // namespace platform
