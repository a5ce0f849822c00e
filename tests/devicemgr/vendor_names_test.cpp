// The display names of vendors.
#include "device/vendor_names.h"

#include <gtest/gtest.h>

namespace {

using headset_plugin::vendor_name;

TEST(VendorNames, every_vendor_of_the_table_has_its_name) {
    struct Row {
        std::int32_t vendor_id;
        const char* name;
    };
    for (const Row& row :
         {Row{0x047F, "Plantronics"}, Row{0x1377, "Sennheiser"}, Row{0x1395, "Sennheiser"},
          Row{0x0B0E, "Jabra"}, Row{0x046D, "Logitech"}, Row{0x03F0, "HP"}, Row{0x041E, "Creative"},
          Row{0x045E, "Microsoft"}, Row{0x054C, "Sony"}, Row{0x05A7, "Bose"}, Row{0x0D8C, "C-Media"}}) {
        EXPECT_STREQ(vendor_name(row.vendor_id), row.name);
    }
}

TEST(VendorNames, every_other_vendor_is_unknown) {
    for (const std::int32_t vendor_id :
         {0x1234, 0x0000, -1, 0x10B0E, 0xF0F0, headset_plugin::ORVEX_VENDOR_ID, 0x413C, 0x1532}) {
        EXPECT_STREQ(vendor_name(vendor_id), "Unknown") << vendor_id;
    }
}

TEST(VendorNames, exactly_eleven_ids_have_a_name) {
    int named = 0;
    for (std::int32_t vendor_id = 0; vendor_id <= 0xFFFF; ++vendor_id) {
        named += vendor_name(vendor_id) == std::string_view("Unknown") ? 0 : 1;
    }
    EXPECT_EQ(named, 11);
}

}  // namespace
