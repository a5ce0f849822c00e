#include "device/vendor_names.h"

#include <algorithm>
#include <array>

namespace headset_plugin {

namespace {

/// Vendor ids as assigned by the USB-IF.
constexpr std::array table = {
    VendorName{0x047F, "Plantronics"}, VendorName{0x1377, "Sennheiser"}, VendorName{0x1395, "Sennheiser"},
    VendorName{0x0B0E, "Jabra"},       VendorName{0x046D, "Logitech"},   VendorName{0x03F0, "HP"},
    VendorName{0x041E, "Creative"},    VendorName{0x045E, "Microsoft"},  VendorName{0x054C, "Sony"},
    VendorName{0x05A7, "Bose"},        VendorName{0x0D8C, "C-Media"},
};

static_assert(std::none_of(table.begin(), table.end(),
                           [](const VendorName& vendor) { return vendor.vendor_id == ORVEX_VENDOR_ID; }),
              "the maker's own vendor id is one of the third-party vendors");

}  // namespace

std::span<const VendorName> vendor_names() {
    return table;
}

const char* vendor_name(std::int32_t vendor_id) {
    const auto found = std::find_if(table.begin(), table.end(),
                                    [&](const VendorName& vendor) { return vendor.vendor_id == vendor_id; });
    return found == table.end() ? "Unknown" : found->name;
}

}  // namespace headset_plugin
