// The picture of `headset doctor` in the README is what it prints. tests/docs/pictures.py draws it.
#include <fstream>
#include <iterator>
#include <regex>
#include <utility>

#include "tests/kernel/headset_tool.h"

namespace {

using namespace test_support;

void replace_all(std::string& text, const std::string& old, const std::string& by) {
    for (auto at = text.find(old); at != std::string::npos; at = text.find(old, at + by.size())) {
        text.replace(at, old.size(), by);
    }
}

/// The terminal cuts long lines anywhere, so that spaces and line ends do not count.
std::string without_spaces(std::string text) {
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
    return text;
}

/// The characters of an SVG picture, row by row.
std::string text_of_picture(const std::string& path) {
    std::ifstream file(path);
    EXPECT_TRUE(file) << path;
    const std::string picture{std::istreambuf_iterator<char>(file), {}};
    const std::regex element("<text [^>]*>([^<]*)</text>");
    std::string text;
    for (std::sregex_iterator at(picture.begin(), picture.end(), element), end; at != end; ++at) {
        text += (*at)[1];
    }
    for (const auto& [entity, character] : {std::pair{"&lt;", "<"}, {"&gt;", ">"}, {"&amp;", "&"}}) {
        replace_all(text, entity, character);
    }
    return text;
}

class HeadsetDoctorPicture : public HeadsetTool {};

TEST_F(HeadsetDoctorPicture, is_what_a_user_without_permission_sees) {
    const std::string node = settled_node_of(plug_headset());
    std::string seen = "$ headset doctor\n" + run_headset_as_user("doctor").output;
    replace_all(seen, node, "/dev/hidraw0");
    EXPECT_EQ(without_spaces(text_of_picture(ORVEX_DOCTOR_PICTURE)), without_spaces(seen))
        << "Draw the picture again: cmake --build --preset dev --target draw_pictures";
}

}  // namespace
