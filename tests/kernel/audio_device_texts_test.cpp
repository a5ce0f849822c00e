// The texts of docs/audio-devices.md that come from the kernel and from udev: a sound card of this kernel has
// them.

#include <fstream>
#include <functional>
#include <optional>

#include "tests/kernel/headset_tool.h"
#include "tests/kernel/usb_headset.h"

namespace {

using namespace test_support;
namespace fs = std::filesystem;

std::string first_line(const fs::path& path) {
    std::string line;
    std::getline(std::ifstream(path), line);
    return line;
}

/// A sound card by its folder in /sys/class/sound.
struct SoundCard {
    fs::path folder;

    std::string name() const { return folder.filename(); }

    std::string process_file(const std::string& file) const {
        return first_line(fs::path("/proc/asound") / name() / file);
    }

    /// A text that the USB device states.
    std::string usb_attribute(const std::string& attribute) const {
        return first_line(fs::canonical(folder / "device").parent_path() / attribute);
    }

    /// " 1 [Seri           ]: USB-Audio - Plantronics Blackwire 3220 Seri"
    std::string short_name() const {
        std::ifstream cards("/proc/asound/cards");
        const std::string number = name().substr(std::string("card").size());
        for (std::string line; std::getline(cards, line);) {
            const auto dash = line.find(" - ");
            if (dash != line.npos && line.find(number + " [") < 2) {
                return line.substr(dash + 3);
            }
        }
        return {};
    }

    std::string udev_property(const std::string& property) const {
        const std::string text =
            '\n' + run_shell("udevadm test-builtin usb_id " + folder.string() + " 2>/dev/null").output;
        const auto begin = text.find('\n' + property + '=');
        return begin == text.npos ? ""
                                  : text.substr(begin + property.size() + 2,
                                                text.find('\n', begin + 1) - begin - property.size() - 2);
    }
};

struct Reader {
    const char* what;  ///< in the table
    std::function<std::string(const SoundCard&)> read;
};

const Reader readers[] = {
    {"`/proc/asound/cardN/id`", [](const SoundCard& card) { return card.process_file("id"); }},
    {"`/proc/asound/cardN/usbid`", [](const SoundCard& card) { return card.process_file("usbid"); }},
    {"card: name", [](const SoundCard& card) { return card.short_name(); }},
    {"sysfs: `serial`", [](const SoundCard& card) { return card.usb_attribute("serial"); }},
    {"sysfs: `product`", [](const SoundCard& card) { return card.usb_attribute("product"); }},
    {"udev: `ID_SERIAL`", [](const SoundCard& card) { return card.udev_property("ID_SERIAL"); }},
    {"udev: `ID_SERIAL_SHORT`", [](const SoundCard& card) { return card.udev_property("ID_SERIAL_SHORT"); }},
    {"udev: `ID_MODEL`", [](const SoundCard& card) { return card.udev_property("ID_MODEL"); }},
};

/// The sound card of a USB device; it appears a moment after the device.
std::optional<SoundCard> wait_for_card(const std::string& serial) {
    std::optional<SoundCard> found;
    EXPECT_TRUE(eventually([&] {
        if (!fs::exists("/sys/class/sound")) {
            return false;
        }
        for (const fs::path& folder : fs::directory_iterator("/sys/class/sound")) {
            const SoundCard card{folder};
            if (card.name().starts_with("card") && card.usb_attribute("serial") == serial) {
                found = card;
            }
        }
        return found && !found->short_name().empty();
    })) << serial;
    return found;
}

/// The rows of the table for a headset.
std::vector<Json> rows_of(const Json& texts, const std::string& serial) {
    std::vector<Json> rows;
    for (const auto& table : texts["groups"][0]["tables"]) {
        for (const auto& row : table["texts"]) {
            if (table["name"] == "alsa" && row["serial"] == serial) {
                rows.push_back(row);
            }
        }
    }
    return rows;
}

TEST(AudioDeviceTexts, are_those_of_this_kernel_and_udev) {
    std::ifstream file(ORVEX_AUDIO_DEVICES);
    const Json texts = Json::parse(file);
    int compared = 0;
    for (const auto& headset : texts["headsets"]) {
        const auto& model = *platform::virtual_headsets::find_model(headset["model"].get<std::string>());
        const std::string serial = headset["serial"];
        const UsbGadget gadget({.vendor_id = model.vendor_id,
                                .product_id = model.product_id,
                                .manufacturer = model.manufacturer,
                                .product = model.product,
                                .serial = serial,
                                .interfaces = {model.descriptor},
                                .has_sound = true});
        const auto card = wait_for_card(serial);
        ASSERT_TRUE(card);
        for (const auto& row : rows_of(texts, serial)) {
            const auto* const reader =
                std::ranges::find(readers, row["what"].get<std::string>(), &Reader::what);
            if (reader != std::end(readers)) {
                EXPECT_EQ(reader->read(*card), row["text"]) << row["what"];
                ++compared;
            }
        }
    }
    EXPECT_GE(compared, 11);
}

}  // namespace
