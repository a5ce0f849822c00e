// The seam to the system's HID devices: what hidapi's functions and hid.dll's HidD_ functions do, per
// top-level collection. The layer above keeps hidapi's rules on top of it (padding, blocking mode, error
// texts).
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/hid_types.h"

namespace platform {

/// One entry of an enumeration: one top-level collection of one HID interface.
struct HidInterfaceInfo {
    std::string path{};           ///< opens this collection, and nothing else, through HidBackend::open
    std::string hid_interface{};  ///< the same for all collections of one HID interface, and for no others
    std::uint16_t vendor_id = 0;
    std::uint16_t product_id = 0;
    std::optional<std::wstring> serial_number{};  ///< absent where the device states none
    std::uint16_t release_number = 0;             ///< binary-coded decimal, as in the USB device descriptor
    std::optional<std::wstring> manufacturer_string{};
    std::optional<std::wstring> product_string{};
    std::uint16_t usage_page = 0;
    std::uint16_t usage = 0;
    int interface_number = -1;  ///< USB interface, -1 where there is none
    int bus_type = 0;           ///< a hid_bus_type of hidapi
};

/// The outcome of an operation that can fail: a count of bytes, or an error text in the system's words.
struct IoResult {
    enum class Status { done, timed_out, cancelled, failed };
    Status status = Status::failed;
    std::size_t size = 0;  ///< bytes read or written when `done`
    std::wstring error{};  ///< set when `failed`
};

enum class HidString { manufacturer, product, serial_number };

/// A version of hidapi.
struct HidapiVersion {
    int major = 0;
    int minor = 0;
    int patch = 0;
    std::string text{};  ///< "0.13.1"
};

/// Waits without a limit.
inline constexpr std::chrono::milliseconds no_timeout{-1};

/// One opened top-level collection. The destructor closes it; it runs when no other call is in progress.
///
/// Thread: any, and several at once: one may read while another writes, cancels or ends the reading.
class HidInterface {
  public:
    virtual ~HidInterface() = default;

    /// Asks the system to buffer `count` input reports. False where it cannot.
    virtual bool HidD_SetNumInputBuffers(ULONG count) = 0;

    /// Hands out the parsed report descriptor of this collection; null on failure. The caller gives it back
    /// with HidD_FreePreparsedData, before or after this object is gone.
    virtual PHIDP_PREPARSED_DATA HidD_GetPreparsedData() = 0;

    /// Waits for one input report of this collection and copies as much of it as fits. Byte 0 is the report
    /// id, 0 for a device without report ids; a report is as long as the collection's input reports.
    /// `timeout` of zero polls. Returns `timed_out` with size 0 when nothing came, `cancelled` after cancel
    /// or end_reading, `failed` once the device is gone. Blocks without using the processor.
    virtual IoResult read(std::span<std::uint8_t> report, std::chrono::milliseconds timeout) = 0;

    /// Sends one output report, byte 0 the report id (0 for none), and waits at most `timeout` for the device
    /// to take it. A buffer longer than the report is cut; the size returned is the one handed in.
    virtual IoResult write(std::span<const std::uint8_t> report, std::chrono::milliseconds timeout) = 0;

    /// Releases every read and write that waits now, with `cancelled`. Later ones are not affected.
    virtual void cancel() = 0;

    /// Releases every read that waits now and refuses every later one, so that a reader that was just about
    /// to wait is not missed.
    virtual void end_reading() = 0;

    /// False once the device is gone, even if no read or write has failed yet. Does not block.
    virtual bool is_connected() = 0;

    /// Feature reports; byte 0 is the report id (0 for none), sizes count it.
    virtual IoResult HidD_SetFeature(std::span<const std::uint8_t> report) = 0;
    virtual IoResult HidD_GetFeature(std::span<std::uint8_t> report) = 0;

    /// Asks the device for an input report and sends it an output report, each outside of the stream of
    /// reports that read and write carry; byte 0 is the report id (0 for none), sizes count it.
    virtual IoResult HidD_GetInputReport(std::span<std::uint8_t> report) = 0;
    virtual IoResult HidD_SetOutputReport(std::span<const std::uint8_t> report) = 0;

    virtual std::optional<std::wstring> string(HidString which) = 0;
    virtual std::optional<std::wstring> HidD_GetIndexedString(ULONG index) = 0;

    /// What HidBackend::enumerate lists of this collection; nothing where the device does not answer.
    virtual std::optional<HidInterfaceInfo> info() = 0;

    /// The report descriptor (HID 1.11, 6.2.2) that hidapi gives for the device: on Linux that of the whole
    /// HID interface.
    virtual std::vector<std::uint8_t> report_descriptor() = 0;
};

/// The system's HID devices as a whole.
///
/// Thread: any, and several at once.
class HidBackend {
  public:
    struct OpenResult {
        std::unique_ptr<HidInterface> interface;  ///< null on failure
        std::wstring error{};                     ///< why, in the system's words
    };

    virtual ~HidBackend() = default;

    /// Gets the backend ready (loads hidapi, say). May be called again; an empty text is success.
    virtual std::wstring init() = 0;
    virtual void exit() = 0;

    // What follows needs a successful init.

    /// The version of hidapi whose meaning the functions have.
    virtual HidapiVersion hidapi_version() = 0;

    /// Lists the collections of every device with these ids; 0 stands for any.
    virtual std::vector<HidInterfaceInfo> enumerate(std::uint16_t vendor_id, std::uint16_t product_id) = 0;

    /// Opens a path that enumerate handed out. May block for as long as the system is held up by another
    /// device.
    virtual OpenResult open(const std::string& path) = 0;

    virtual void HidD_FreePreparsedData(PHIDP_PREPARSED_DATA data) = 0;
};

}  // namespace platform
