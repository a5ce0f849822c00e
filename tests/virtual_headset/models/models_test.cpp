#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "platform/hidp/hidp.h"
#include "virtual_headset/models/model.h"

#ifndef ORVEX_REFERENCE_DATA
#define ORVEX_REFERENCE_DATA ""
#endif

namespace platform::virtual_headsets {
namespace {

constexpr USAGE telephony_page = 0x0B;  // HID Usage Tables, Telephony Device Page
constexpr std::string_view model_without_telephony = "logitech-g535";

/// The file that holds the real device's descriptor.
struct Reference {
    std::string_view key;
    const char* file;
};

constexpr Reference references[] = {
    {"anker-powerconf", "291A_3301.json"},
    {"dell-sp325", "413C_8223.json"},
    {"epos-impact-d", "1395_00A9.json"},
    {"jabra-evolve-link-ms", "0B0E_0307.json"},
    {"jabra-link-380c", "0B0E_24C9.json"},
    {"logitech-g535", "046D_0AC4.json"},
    {"logitech-mx-brio", "046D_0944_unverified_pid.json"},
    {"microsoft-game-voice", "045E_003B.json"},
    {"poly-blackwire-3220", "047F_C056.json"},
    {"poly-voyager-base", "047F_02EC.json"},
    {"razer-blackshark-v2", "1532_0565.json"},
    {"sennheiser-sc-660", "1395_0082.json"},
    {"yealink-wh66", "6993_B02B.json"},
};

std::vector<std::uint8_t> bytes_from_hex(const std::string& hex) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t at = 0; at < hex.size(); at += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(hex.substr(at, 2), nullptr, 16)));
    }
    return bytes;
}

std::size_t first_difference(const std::vector<std::uint8_t>& one, const std::vector<std::uint8_t>& other) {
    const auto [place, ignored] = std::ranges::mismatch(one, other);
    return static_cast<std::size_t>(place - one.begin());
}

/// Constructed before the models and so, if these were ever destroyed, destroyed after them.
struct ModelUserAtExit {
    bool active = false;
    ~ModelUserAtExit() {
        if (active) {
            std::fputs(find_model("jabra-link-380c")->product, stderr);
        }
    }
};

ModelUserAtExit g_model_user_at_exit;
const std::size_t models_before_main = models().size();

TEST(Models, AreSortedByKeyWithoutDuplicates) {
    const auto all = models();
    const auto not_ascending = [](const HeadsetModel* one, const HeadsetModel* next) {
        return std::string_view{one->key} >= next->key;
    };
    const auto found = std::ranges::adjacent_find(all, not_ascending);
    EXPECT_EQ(found, all.end()) << (*found)->key << " stands before " << (*(found + 1))->key;
}

TEST(Models, AreFoundByTheirKeys) {
    for (const HeadsetModel* model : models()) {
        EXPECT_EQ(find_model(model->key), model) << model->key;
    }
}

TEST(Models, AreNotFoundByOtherText) {
    EXPECT_EQ(find_model(""), nullptr);
    EXPECT_EQ(find_model("jabra"), nullptr);
    EXPECT_EQ(find_model("jabra-link-380c-2"), nullptr);
    EXPECT_EQ(find_model("Jabra-Link-380c"), nullptr);
}

TEST(Models, HaveSerialsNoneOfWhichOccursInAnother) {
    for (const HeadsetModel* model : models()) {
        for (const HeadsetModel* other : models()) {
            const bool occurs = std::string_view{other->serial}.find(model->serial) != std::string_view::npos;
            EXPECT_EQ(occurs, model == other) << model->key << " and " << other->key;
        }
    }
}

TEST(Models, ExistForStaticObjectsBeforeMain) {
    EXPECT_EQ(models_before_main, std::size(references));
}

TEST(ModelsDeathTest, ExistForStaticObjectsAtExit) {
    const auto exit_using_models = [] {
        g_model_user_at_exit.active = true;
        std::exit(EXIT_SUCCESS);
    };
    EXPECT_EXIT(exit_using_models(), testing::ExitedWithCode(EXIT_SUCCESS), "Jabra Link 380c");
}

class ModelTest : public testing::TestWithParam<const HeadsetModel*> {};

TEST_P(ModelTest, HasTextsOfPrintableAscii) {
    const HeadsetModel& model = *GetParam();
    const auto printable = [](char c) { return ' ' <= c && c <= '~'; };
    for (const std::string_view text : {model.key, model.manufacturer, model.product, model.serial}) {
        EXPECT_FALSE(text.empty());
        EXPECT_TRUE(std::ranges::all_of(text, printable)) << text;
    }
}

TEST_P(ModelTest, IsTheRealDevice) {
    const HeadsetModel& model = *GetParam();
    const auto* const reference = std::ranges::find(references, model.key, &Reference::key);
    ASSERT_NE(reference, std::end(references)) << "no reference file is named for " << model.key;

    const std::filesystem::path folder = ORVEX_REFERENCE_DATA;
    if (!std::filesystem::is_directory(folder)) {
        GTEST_SKIP() << "the descriptors of the real devices are not at hand: no folder " << folder;
    }
    std::ifstream file(folder / "real" / reference->file);
    const auto real = nlohmann::json::parse(file);

    EXPECT_EQ(model.vendor_id, real["vid"]);
    if (!real["pid"].is_null()) {
        EXPECT_EQ(model.product_id, real["pid"]);
    }
    const auto descriptor = bytes_from_hex(real["descriptor_hex"]);
    EXPECT_EQ(model.descriptor, descriptor)
        << "first difference at offset " << first_difference(model.descriptor, descriptor);
}

TEST_P(ModelTest, ParsesAndHasATelephonyCollectionUnlessKnownToHaveNone) {
    const HeadsetModel& model = *GetParam();
    const auto parsed = hidp::parse(model.descriptor);
    ASSERT_FALSE(parsed.error) << parsed.error->to_string();

    const auto is_telephony = [](const hidp::PreparsedData& collection) {
        HIDP_CAPS caps{};
        EXPECT_EQ(hidp::parser().HidP_GetCaps(collection.get(), &caps), HIDP_STATUS_SUCCESS);
        return caps.UsagePage == telephony_page;
    };
    EXPECT_EQ(std::ranges::any_of(parsed.collections, is_telephony), model.key != model_without_telephony);
}

std::string name_of(const testing::TestParamInfo<const HeadsetModel*>& model) {
    std::string name = model.param->key;
    std::ranges::replace(name, '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Headsets, ModelTest, testing::ValuesIn(models().begin(), models().end()), name_of);

}  // namespace
}  // namespace platform::virtual_headsets
