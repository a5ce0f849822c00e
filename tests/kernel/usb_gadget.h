// A USB device made of software: the kernel's device side, plugged into the kernel's own host side. To every
// program it is a headset on a cable, with all that a uhid device lacks: interfaces, strings, endpoints that
// block.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/common/file_descriptor.h"

namespace test_support {

struct UsbGadgetDescription {
    std::uint16_t vendor_id = 0;
    std::uint16_t product_id = 0;
    std::string manufacturer;
    std::string product;
    std::string serial;
    /// The report descriptor of each HID interface.
    std::vector<std::vector<std::uint8_t>> interfaces;
    /// Makes it a sound card as well, if only for MIDI, since the controller made of software carries no
    /// isochronous data. Needs the modules usb_f_midi and snd-usb-audio.
    bool has_sound = false;
};

/// Plugged in as long as it lives. Needs root and the modules dummy_hcd, libcomposite and usb_f_hid. Throws
/// std::runtime_error where the kernel refuses something.
class UsbGadget {
  public:
    explicit UsbGadget(const UsbGadgetDescription& description);
    ~UsbGadget();
    UsbGadget(const UsbGadget&) = delete;
    UsbGadget& operator=(const UsbGadget&) = delete;

    void plug();
    void unplug();

    /// Sends an input report of an interface, as it goes over the cable.
    void send(int interface, const std::vector<std::uint8_t>& report);
    /// The next output report that reached an interface; empty when `patience` is over. The kernel takes four
    /// that nobody has received, and makes the host wait with further ones.
    std::vector<std::uint8_t> receive(int interface);

  private:
    /// Adds a function of the device, to be linked when it is described. \return its folder
    std::filesystem::path add_function(const std::string& kind);
    void link(const std::filesystem::path& function);
    void add_interface(const std::vector<std::uint8_t>& descriptor);
    void open_interfaces(std::size_t count);
    int device(int interface) const { return devices_[static_cast<std::size_t>(interface)].get(); }
    void remove();

    const std::filesystem::path folder_;  ///< in configfs
    bool is_plugged_ = false;
    std::vector<std::filesystem::path> functions_;  ///< the HID interfaces, then others
    std::vector<platform::common::FileDescriptor> devices_;
};

}  // namespace test_support
