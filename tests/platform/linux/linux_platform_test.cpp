// What the platform of Linux does on a machine without any HID device; what it does with devices is tested in
// a kernel of its own.

#include <clocale>
#include <cstdlib>
#include <gtest/gtest.h>
#include <hidapi/hidapi.h>

#include "platform/linux/shared_library.h"
#include "platform/linux/utf8_locale.h"
#include "platform/platform.h"

namespace {

using namespace platform;
using platform::linux_platform::LibraryError;
using platform::linux_platform::SharedLibrary;
using platform::linux_platform::Utf8Locale;

class LinuxHid : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(hid_.init(), L""); }

    HidBackend& hid_ = current().hid();
};

TEST_F(LinuxHid, gets_ready_as_often_as_it_is_asked) {
    EXPECT_EQ(hid_.init(), L"");
    hid_.exit();
    EXPECT_EQ(hid_.init(), L"");
}

TEST_F(LinuxHid, lists_nothing_of_a_vendor_that_does_not_exist) {
    EXPECT_TRUE(hid_.enumerate(0xFFFF, 0xFFFF).empty());
}

TEST_F(LinuxHid, tells_why_a_path_cannot_be_opened) {
    const auto error_of = [&](const char* path) { return hid_.open(path).error; };
    EXPECT_EQ(error_of("/dev/hidraw-none:1"), L"/dev/hidraw-none: No such file or directory");
    EXPECT_EQ(error_of(""), L": No such file or directory");
    EXPECT_EQ(error_of("/dev/null"), L"/dev/null: this is no HID device");
    EXPECT_EQ(error_of("/"), L"/: Is a directory");
}

TEST_F(LinuxHid, has_the_version_of_the_hidapi_that_is_loaded) {
    const SharedLibrary hidapi("libhidapi-hidraw.so.0");
    decltype(&::hid_version_str) version_str = nullptr;
    hidapi.look_up("hid_version_str", version_str);
    const HidapiVersion version = hid_.hidapi_version();
    EXPECT_EQ(version.text, version_str());
    EXPECT_EQ(version.text.find(std::to_string(version.major) + "." + std::to_string(version.minor) + "." +
                                std::to_string(version.patch)),
              0U);
}

TEST(LinuxSharedLibrary, leaves_a_function_null_that_it_need_not_have) {
    const SharedLibrary library("libudev.so.1");
    void (*function)() = [] {};
    library.look_up_if_there("udev_none", function);
    EXPECT_EQ(function, nullptr);
    library.look_up_if_there("udev_new", function);
    EXPECT_NE(function, nullptr);
}

TEST(LinuxSharedLibrary, names_the_library_that_is_missing) {
    try {
        const SharedLibrary library("liborvex-none.so.0");
        FAIL() << "it was loaded";
    } catch (const LibraryError& error) {
        EXPECT_NE(std::string(error.what()).find("liborvex-none.so.0"), std::string::npos) << error.what();
    }
}

TEST(LinuxSharedLibrary, names_the_function_that_is_missing) {
    const SharedLibrary library("libudev.so.1");
    void (*function)() = nullptr;
    try {
        library.look_up("udev_none", function);
        FAIL() << "it was found";
    } catch (const LibraryError& error) {
        EXPECT_STREQ(error.what(), "libudev.so.1 has no function udev_none");
    }
}

TEST(LinuxUtf8Locale, converts_utf8_within_its_scope_and_leaves_the_process_alone) {
    ASSERT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    const char* const text = "caf\xC3\xA9";
    {
        const Utf8Locale utf8;
        EXPECT_EQ(std::mbstowcs(nullptr, text, 0), 4U);
        EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    }
    EXPECT_EQ(std::mbstowcs(nullptr, text, 0), static_cast<std::size_t>(-1));
}

}  // namespace
