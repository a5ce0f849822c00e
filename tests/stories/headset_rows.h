// What headsets of the models show: the output reports, in hexadecimal, that make up every story.
#pragma once

#include <algorithm>
#include <array>
#include <cstdio>
#include <initializer_list>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "tests/plugin/plugin_host.h"

namespace test_support {

/// One model with its reports; an empty text where it has no such indicator.
struct HeadsetRow {
    const char* model;
    const char* vendor;        ///< as the host is told
    const char* first;         ///< what goes out at opening instead of the idle reports, or empty
    const char* in_use;        ///< state in use, microphone open
    const char* in_use_muted;  ///< state in use, muted
    const char* idle;          ///< state idle
    const char* muted;         ///< mute alone, in a call; also ringing or held while muted
    const char* unmuted;       ///< unmute alone, in a call
    const char* rest;          ///< unmute alone, no call; also ringing
};

/// The models that have a driver and something to show. Most keep both indicators in one report, Poly
/// headsets have one report for each, the camera has a mute indicator alone.
inline constexpr HeadsetRow showing_headsets[] = {
    {"epos-impact-d", "Sennheiser", "", "03 02", "03 12", "03 00", "03 12", "03 02", "03 00"},
    {"jabra-evolve-link-ms", "Jabra", "", "02 01 00", "02 03 00", "02 00 00", "02 03 00", "02 01 00",
     "02 00 00"},
    {"jabra-link-380c", "Jabra", "", "02 01 00", "02 05 00", "02 00 00", "02 05 00", "02 01 00", "02 00 00"},
    {"logitech-mx-brio", "Logitech", "", "", "", "", "05 01", "05 00", "05 00"},
    {"poly-blackwire-3220", "Plantronics", "16 02 00", "17 01", "17 01", "17 00", "09 01", "09 00", "09 00"},
    {"poly-voyager-base", "Plantronics", "16 02 00", "04 01", "04 01", "04 00", "03 01", "03 00", "03 00"},
    {"sennheiser-sc-660", "Sennheiser", "", "09 02", "09 03", "09 00", "09 03", "09 02", "09 00"},
};

/// A model that the plug-in lists and never writes to.
struct DarkHeadset {
    const char* model;
    const char* vendor;
    bool has_keys;
};

/// No driver for the maker, or (the last) no telephony collection that could be opened.
inline constexpr DarkHeadset dark_headsets[] = {
    {"anker-powerconf", "Unknown", true},
    {"dell-sp325", "Unknown", true},
    {"microsoft-game-voice", "Microsoft", false},
    {"razer-blackshark-v2", "Unknown", true},
    {"yealink-wh66", "Unknown", true},
    {"logitech-g535", "Logitech", false},
};

inline void PrintTo(const HeadsetRow& row, std::ostream* out) {
    *out << row.model;
}

inline void PrintTo(const DarkHeadset& row, std::ostream* out) {
    *out << row.model;
}

/// A test's name for a row: the model, with underscores.
template <typename Row>
std::string row_name(const ::testing::TestParamInfo<Row>& tested) {
    std::string name = tested.param.model;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

inline std::string hex_text(const Report& report) {
    std::string text;
    for (const std::uint8_t byte : report) {
        std::array<char, 4> digits;
        std::snprintf(digits.data(), digits.size(), text.empty() ? "%02x" : " %02x", byte);
        text += digits.data();
    }
    return text;
}

/// The reports that are one; empty ones are not sent.
inline Lines reports(std::initializer_list<const char*> texts) {
    Lines list(texts.begin(), texts.end());
    std::erase(list, std::string());
    return list;
}

/// A host, and what its headsets show.
class StoryHost : public PluginHost {
  protected:
    void SetUp() override {
        PluginHost::SetUp();
        start_with_listeners();
    }

    /// The output reports of a headset since this was asked last.
    Lines take_shown(int headset) {
        const auto all = outputs(headset);
        Lines shown;
        for (std::size_t& next = taken_[headset]; next < all.size(); ++next) {
            shown.push_back(hex_text(all[next]));
        }
        return shown;
    }

    /// Presses a key that the headset has and waits until the plug-in is through with press and release.
    void press(int headset, std::uint16_t usage) {
        constexpr std::uint16_t telephony_page = 0x0B;
        const std::string done = line("headset_plugin::device::process_read", "exit");
        const std::size_t before = logger_->count(done);
        EXPECT_EQ(orvex_virtual_press(headset, telephony_page, usage), 0) << orvex_virtual_error();
        EXPECT_TRUE(logger_->wait_for_count(done, before + 2));
    }

    /// "onActiveDeviceNotify(...)" or "onDeviceRemovedNotify(...)" for a headset that was active.
    static std::string notification(const char* name, int headset, const char* vendor) {
        const auto of_headset = platform::virtual_platform::virtual_platform().bus().description(headset);
        std::array<char, 16> ids{};
        std::snprintf(ids.data(), ids.size(), "%04x, %04x", static_cast<unsigned>(of_headset->vendor_id),
                      static_cast<unsigned>(of_headset->product_id));
        return std::string(name) + "(" + host_id(headset) + ", " + ids.data() + ", " + vendor + ", " +
               orvex_virtual_product(headset) + ", " + serial(headset) + ")";
    }

  private:
    std::map<int, std::size_t> taken_;
};

inline constexpr std::uint16_t hook_switch_key = 0x20;
inline constexpr std::uint16_t phone_mute_key = 0x2F;

}  // namespace test_support
