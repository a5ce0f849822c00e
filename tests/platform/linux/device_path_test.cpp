#include "platform/linux/device_path.h"

#include <gtest/gtest.h>

namespace {

using platform::linux_platform::DevicePath;

void expect_path(const std::string& text, const std::string& node, std::optional<std::size_t> collection) {
    const DevicePath path = DevicePath::parse(text);
    EXPECT_EQ(path.node, node);
    EXPECT_EQ(path.collection, collection);
}

TEST(DevicePath, names_node_and_collection) {
    expect_path("/dev/hidraw3:2", "/dev/hidraw3", 1);
    expect_path("/dev/hidraw12:1", "/dev/hidraw12", 0);
}

TEST(DevicePath, of_a_node_alone_leaves_the_collection_open) {
    expect_path("/dev/hidraw3", "/dev/hidraw3", std::nullopt);
    expect_path("", "", std::nullopt);
}

TEST(DevicePath, takes_what_is_no_collection_number_for_part_of_the_node) {
    for (const char* const text : {"/dev/hidraw3:", "/dev/hidraw3:0", "/dev/hidraw3:x", "/dev/hidraw3:1x",
                                   "/dev/a:-1", "/dev/a:99999999999999999999999"}) {
        expect_path(text, text, std::nullopt);
    }
}

TEST(DevicePath, reads_what_it_writes) {
    EXPECT_EQ((DevicePath{"/dev/hidraw0", 4}.to_string()), "/dev/hidraw0:5");
    EXPECT_EQ((DevicePath{"/dev/hidraw0"}.to_string()), "/dev/hidraw0");
    const std::string text = DevicePath{"/dev/with:1:colons", 9}.to_string();
    expect_path(text, "/dev/with:1:colons", 9);
}

}  // namespace
