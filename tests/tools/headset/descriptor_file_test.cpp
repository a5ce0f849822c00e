#include "tools/headset/descriptor_file.h"

#include <gtest/gtest.h>
#include <sstream>

#include "tests/support/temporary_file.h"
#include "tests/tools/headset/small_headset.h"
#include "tools/common/text.h"
#include "tools/headset/errors.h"

namespace headset {
namespace {

using test_support::TemporaryFile;

std::string raw(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

/// A recording as hid-recorder writes it.
std::string recording(const std::string& r_line) {
    return "# Jabra Link 380c\nD: 0\n" + r_line +
           "\nN: Caf\xC3\xA9 Link\nP: usb-0000:00:14.0-1/input3\nI: 3 0b0e 24c9\n"
           "E: 000000.000000 3 02 08 00\n";
}

template <class Error, class Action>
std::string text_of(Action action) {
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    return "nothing thrown";
}

std::string refusal(const std::string& content) {
    return text_of<Refused>([&] { read_descriptor(content); });
}

TEST(DescriptorFile, hexadecimal_text) {
    const Bytes bytes = small_headset();
    EXPECT_EQ(read_descriptor(tools::to_hex(bytes) + "\n").bytes, bytes);
    EXPECT_EQ(read_descriptor("05 0B # Usage Page (T\xC3\xA9l\xC3\xA9phonie)\n").bytes, (Bytes{0x05, 0x0B}));
    EXPECT_EQ(read_descriptor("").bytes, Bytes{});
}

TEST(DescriptorFile, binary) {
    for (const auto* model : platform::virtual_headsets::models())
        EXPECT_EQ(read_descriptor(raw(model->descriptor)).bytes, model->descriptor) << model->key;
    EXPECT_EQ(read_descriptor("\xA0\xC0").bytes, (Bytes{0xA0, 0xC0}));
}

TEST(DescriptorFile, a_recording_tells_name_and_ids) {
    const auto descriptor = read_descriptor(recording("R: 4 05 0b 09 05"));
    EXPECT_EQ(descriptor.bytes, (Bytes{0x05, 0x0B, 0x09, 0x05}));
    EXPECT_EQ(descriptor.name, "Caf\xC3\xA9 Link");
    ASSERT_TRUE(descriptor.ids);
    EXPECT_EQ(descriptor.ids->vendor, 0x0B0E);
    EXPECT_EQ(descriptor.ids->product, 0x24C9);
}

TEST(DescriptorFile, a_recording_may_have_line_ends_of_windows) {
    const auto descriptor = read_descriptor("R: 2 05 0b\r\nN: Link\r\nI: 3 0b0e 24c9\r\n");
    EXPECT_EQ(descriptor.bytes, (Bytes{0x05, 0x0B}));
    EXPECT_EQ(descriptor.name, "Link");
    EXPECT_TRUE(descriptor.ids);
}

TEST(DescriptorFile, of_several_devices_it_is_the_first) {
    const auto descriptor = read_descriptor("D: 0\nR: 2 05 0b\nN: one\nD: 1\nR: 2 05 0c\nN: two\n");
    EXPECT_EQ(descriptor.bytes, (Bytes{0x05, 0x0B}));
    EXPECT_EQ(descriptor.name, "one");
}

TEST(DescriptorFile, a_recording_without_ids_is_of_no_vendor) {
    EXPECT_FALSE(read_descriptor("R: 2 05 0b\n").ids);
    EXPECT_FALSE(read_descriptor("R: 2 05 0b\nI: 3 zzzz 24c9\n").ids);
}

TEST(DescriptorFile, a_recording_that_is_cut_off_is_refused) {
    EXPECT_EQ(refusal(recording("R: 5 05 0b 09 05")), "the line \"R:\" announces 5 bytes and has 4");
    EXPECT_EQ(refusal(recording("R: x 05")),
              "the line \"R:\" begins with \"x\", not with the descriptor's length");
    EXPECT_EQ(refusal(recording("R: 2 05 0")), "\"0\" has an odd number of hexadecimal digits");
}

TEST(DescriptorFile, a_dump_begins_after_its_header) {
    const std::string dump =
        "001:004:003:DESCRIPTOR         1490000000.123456\n"
        " 05 0B 09 05 A1 01 85 02 05 0B 15 00 25 01 09 20\n"
        " 09 97\n\n";
    EXPECT_EQ(read_descriptor(dump).bytes, (Bytes{0x05, 0x0B, 0x09, 0x05, 0xA1, 0x01, 0x85, 0x02, 0x05, 0x0B,
                                                  0x15, 0x00, 0x25, 0x01, 0x09, 0x20, 0x09, 0x97}));
}

TEST(DescriptorFile, of_a_dump_of_several_interfaces_it_is_the_first_descriptor) {
    const std::string dump =
        "001:004:003:STREAM 1490000000.000001\n 02 08 00\n"
        "001:004:003:DESCRIPTOR 1490000000.123456\r\n 05 0B\r\n"
        "001:004:000:DESCRIPTOR 1490000000.223456\r\n 05 0C\r\n";
    EXPECT_EQ(read_descriptor(dump).bytes, (Bytes{0x05, 0x0B}));
}

TEST(DescriptorFile, a_dump_with_other_words_in_it_is_refused) {
    EXPECT_EQ(refusal("001:004:003:DESCRIPTOR 1490000000.123456\n 05 0B\nInterrupted\n"),
              "\"Interrupted\" is not hexadecimal");
}

TEST(DescriptorFile, other_text_is_refused) {
    EXPECT_EQ(refusal("hello"), "\"hello\" is not hexadecimal");
}

TEST(DescriptorFile, reports_may_follow_the_descriptor_without_end) {
    auto long_recording = recording("R: 2 05 0b");
    auto long_dump = std::string("001:004:003:DESCRIPTOR 1490000000.123456\n 05 0B\n\n");
    while (long_recording.size() <= most_text) {
        long_recording += "E: 000000.000000 3 02 08 00\n";
        long_dump += "001:004:003:STREAM 1490000000.223456\n 02 08 00\n\n";
    }
    EXPECT_EQ(read_descriptor(long_recording).bytes, (Bytes{0x05, 0x0B}));
    EXPECT_EQ(read_descriptor(long_dump).bytes, (Bytes{0x05, 0x0B}));
    EXPECT_EQ(refusal(std::string(most_text + 1, '\0')),
              "it is too long: a report descriptor has at most 4096 bytes");
}

TEST(LoadDescriptor, a_file_comes_before_hexadecimal_text) {
    const TemporaryFile file("05 0B 09 05");
    std::istringstream nothing;
    EXPECT_EQ(load_descriptor(file.path(), nothing).bytes, (Bytes{0x05, 0x0B, 0x09, 0x05}));
    EXPECT_EQ(load_descriptor("05 0B", nothing).bytes, (Bytes{0x05, 0x0B}));
}

TEST(LoadDescriptor, a_hyphen_is_standard_input_in_any_form) {
    std::istringstream input(raw(small_headset()));
    EXPECT_EQ(load_descriptor("-", input).bytes, small_headset());
}

TEST(LoadDescriptor, says_what_is_wrong_and_where) {
    std::istringstream nothing;
    const TemporaryFile file("05 0B zz");
    EXPECT_EQ(text_of<Refused>([&] { load_descriptor(file.path(), nothing); }),
              file.path() + ": \"zz\" is not hexadecimal");
    EXPECT_EQ(text_of<UsageError>([&] { load_descriptor("no_such.hid", nothing); }),
              "there is no file of this name, and \"no_such.hid\" is not hexadecimal");
    EXPECT_EQ(text_of<UsageError>([&] { load_descriptor("/dev/no_such_node", nothing); }),
              "there is no file or device \"/dev/no_such_node\"");
    EXPECT_EQ(text_of<UsageError>([&] { load_descriptor("/", nothing); }), "/: is a directory");
    std::istringstream words("some words");
    EXPECT_EQ(text_of<Refused>([&] { load_descriptor("-", words); }),
              "standard input: \"some\" is not hexadecimal");
}

}  // namespace
}  // namespace headset
