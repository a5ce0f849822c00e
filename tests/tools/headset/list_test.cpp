#include "tools/headset/list.h"

#include <cerrno>
#include <gtest/gtest.h>

#include "tests/tools/headset/described_system.h"

namespace headset::list_test {
namespace {

constexpr std::uint16_t own_vendor = ORVEX_CONFIGURED_VENDOR_ID;
const Bytes malformed = {0x05, 0x0B};

class List : public testing::Test {
  protected:
    std::string text() { return to_text(list(system_)); }
    Json json(std::size_t line) { return to_json(list(system_)).at(line); }

    DescribedSystem system_;
};

TEST_F(List, nothing_is_said) {
    EXPECT_EQ(text(), "There is no HID device.\n");
    EXPECT_TRUE(to_json(list(system_)).empty());
}

TEST_F(List, the_whole_text) {
    system_.plug({});
    system_.plug({.node = "/dev/hidraw12",
                  .descriptor = headset_without_ids(),
                  .vendor_id = 0x1532,
                  .product_id = 0x0565,
                  .manufacturer = {},
                  .product = {},
                  .serial = {},
                  .state = {.open_error = EACCES}});
    EXPECT_EQ(
        text(),
        "Jabra Link 380c, GN Netcom A/S, 0B0E:24C9, serial number SN-1\n"
        "  /dev/hidraw0 can be opened by this user\n"
        "  /dev/hidraw0:1  Headset (0B:05)           Input 3, Output 3, Feature none     accepted\n"
        "  /dev/hidraw0:2  FF00:01                   Input 63, Output 63, Feature 2      ignored: usage "
        "page: only the Telephony and the Consumer page count\n"
        "  /dev/hidraw0:3  Consumer Control (0C:01)  Input 3, Output none, Feature none  accepted\n"
        "\n"
        "unnamed device, 1532:0565, no serial number\n"
        "  /dev/hidraw12 cannot be opened by this user: Permission denied\n"
        "  /dev/hidraw12:1  Headset (0B:05)  Input 2, Output none, Feature none  ignored: serial: the "
        "device states no serial number\n");
}

TEST_F(List, json_has_an_object_per_interface) {
    system_.plug({});
    EXPECT_EQ(to_json(list(system_)).size(), 3U);
    EXPECT_EQ(to_line(json(0)),
              "{\"path\":\"/dev/hidraw0:1\",\"vendor_id\":2830,\"product_id\":9417,"
              "\"manufacturer\":\"GN Netcom A/S\",\"product\":\"Jabra Link 380c\",\"serial\":\"SN-1\","
              "\"UsagePage\":11,\"Usage\":5,\"name\":\"Headset\",\"InputReportByteLength\":3,"
              "\"OutputReportByteLength\":3,\"FeatureReportByteLength\":0,\"can_open\":true,"
              "\"open_error\":null,\"admitted\":true,\"rule\":null,\"reason\":null}\n");
    EXPECT_EQ(json(1)["admitted"], false);
    EXPECT_EQ(json(1)["rule"], "usage page");
}

TEST_F(List, what_a_device_does_not_state_is_null_in_json) {
    system_.plug({.manufacturer = {}, .product = {}, .serial = {}, .state = {.open_error = EPERM}});
    for (const char* name : {"manufacturer", "product", "serial"})
        EXPECT_TRUE(json(0)[name].is_null()) << name;
    EXPECT_EQ(json(0)["can_open"], false);
    EXPECT_EQ(json(0)["open_error"], "Operation not permitted");
    EXPECT_EQ(json(0)["rule"], "serial");
}

TEST_F(List, an_empty_name_is_none) {
    system_.plug({.manufacturer = L"", .product = L""});
    EXPECT_TRUE(json(0)["manufacturer"].is_null());
    EXPECT_TRUE(json(0)["product"].is_null());
    EXPECT_EQ(to_text(list(system_)).rfind("unnamed device, 0B0E:24C9, serial number SN-1\n", 0), 0U);
}

TEST_F(List, the_makers_own_headset_is_left_to_the_client) {
    system_.plug({.vendor_id = own_vendor});
    EXPECT_EQ(json(0)["rule"], "own headset");
}

TEST_F(List, a_refused_descriptor_leaves_the_node) {
    system_.plug({.descriptor = malformed});
    EXPECT_NE(text().find("  /dev/hidraw0  00:00  report descriptor refused  ignored: usage page"),
              std::string::npos)
        << text();
    EXPECT_EQ(json(0)["path"], "/dev/hidraw0");
    EXPECT_TRUE(json(0)["InputReportByteLength"].is_null());
}

TEST_F(List, a_name_does_not_steer_the_terminal) {
    system_.plug({.manufacturer = L"\x9B"
                                  L"2J",
                  .product = L"\x1B[2J\u00E9\n",
                  .serial = L"\x7F"});
    EXPECT_EQ(text().rfind("?[2J\xC3\xA9?, ?2J, 0B0E:24C9, serial number ?\n", 0), 0U) << text();
    EXPECT_EQ(json(0)["product"], "\x1B[2J\xC3\xA9\n");
}

TEST_F(List, without_hidapi_there_is_none) {
    system_.hidapi_failure = "libhidapi-hidraw.so.0: not there";
    try {
        list(system_);
        FAIL() << "it was listed";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "hidapi cannot be loaded: libhidapi-hidraw.so.0: not there");
    }
}

}  // namespace
}  // namespace headset::list_test
