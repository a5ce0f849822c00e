// The parser against descriptors of real devices, and against malformed and hostile ones.
#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <string>

#include "tests/platform/hidp/collection.h"
#include "tests/support/reference_data.h"

using namespace platform;
using hidp_test::Bytes;
using hidp_test::Collection;
using hidp_test::Usages;
using nlohmann::json;

namespace {

class DeviceReference : public testing::Test {
  protected:
    void SetUp() override { SKIP_WITHOUT_REFERENCE_DATA(); }
};

/// Descriptors of other/ that are in truth malformed, and what is wrong with them.
const std::map<std::string, std::string> malformed_files = {
    // A dump cut off inside its third collection and filled up with zeros.
    {"other/gamepad_zeroplusxboxwireless", "offset 164, item 0xA1: the collection is not closed"},
    // Made by hand.
    {"other/sample_HANDCRAFTED_4", "offset 16, item 0x81: a field outside every collection"},
};

TEST_F(DeviceReference, EveryRealDescriptorParses) {
    for (const std::string folder : {"real", "other"}) {
        for (const auto& [name, device] : reference::load(folder)) {
            if (!reference::has_descriptor(device)) {
                continue;
            }
            const auto parsed = hidp::parse(reference::descriptor(device));
            const auto malformed = malformed_files.find(name);
            const std::string expected = malformed == malformed_files.end() ? "" : malformed->second;
            EXPECT_EQ(parsed.error ? parsed.error->to_string() : "", expected) << name;
        }
    }
}

/// Calls `visit` with every top-level collection of every device in real/.
template <typename Visit>
void for_each_headset_collection(Visit visit) {
    for (const auto& [name, headset] : reference::load("real")) {
        if (!reference::has_descriptor(headset)) {
            continue;
        }
        const auto descriptor = reference::descriptor(headset);
        const std::size_t count = hidp::parse(descriptor).collections.size();
        ASSERT_NE(count, 0U) << name;
        for (std::size_t index = 0; index < count; ++index) {
            SCOPED_TRACE(name + ", collection " + std::to_string(index));
            visit(Collection(descriptor, index));
        }
    }
}

bool contains(const Usages& usages, USAGE usage) {
    return std::find(usages.begin(), usages.end(), usage) != usages.end();
}

/// Several capabilities may stand for one usage; a list of usages then reaches the first of them.
void set_read_and_clear(const Collection& headset, HIDP_REPORT_TYPE type, USAGE page, USAGE usage,
                        UCHAR report_id) {
    Bytes report = headset.empty_report(type);
    report[0] = report_id;
    const Bytes cleared = report;
    ASSERT_EQ(headset.set(type, page, {usage}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_NE(report, cleared);
    EXPECT_EQ(report[0], report_id);
    EXPECT_TRUE(contains(headset.pressed(type, page, report).result, usage));
    ASSERT_EQ(headset.unset(type, page, {usage}, report).status, HIDP_STATUS_SUCCESS);
    EXPECT_EQ(report, cleared);
}

TEST_F(DeviceReference, EveryOutputButtonOfEveryHeadsetIsSetReadAndCleared) {
    std::size_t buttons = 0;
    for_each_headset_collection([&](const Collection& headset) {
        for (const auto& cap : headset.direction(HidP_Output).capabilities) {
            if (!cap.is_button) {
                continue;
            }
            for (ULONG usage = cap.usage_min; usage <= cap.usage_max; ++usage) {
                if (usage == 0 || !cap.holds(static_cast<USAGE>(usage))) {
                    continue;
                }
                SCOPED_TRACE(testing::Message() << std::hex << "usage " << cap.usage_page << ":" << usage);
                set_read_and_clear(headset, HidP_Output, cap.usage_page, static_cast<USAGE>(usage),
                                   cap.report_id);
                ++buttons;
            }
        }
    });
    EXPECT_GT(buttons, 300U);
}

TEST_F(DeviceReference, EveryOutputValueOfEveryHeadsetIsSetReadAndCleared) {
    std::size_t values = 0;
    for_each_headset_collection([&](const Collection& headset) {
        for (const auto& cap : headset.direction(HidP_Output).capabilities) {
            if (cap.is_button) {
                continue;
            }
            for (ULONG usage = cap.usage_min; usage <= cap.usage_max; ++usage) {
                SCOPED_TRACE(testing::Message() << std::hex << "usage " << cap.usage_page << ":" << usage);
                Bytes report = headset.empty_report(HidP_Output);
                report[0] = cap.report_id;
                const Bytes cleared = report;
                const auto id = static_cast<USAGE>(usage);
                ASSERT_EQ(headset.set_value(HidP_Output, cap.usage_page, id, 0xFFFFFFFF, report),
                          HIDP_STATUS_SUCCESS);
                EXPECT_NE(report, cleared);
                EXPECT_EQ(headset.value(HidP_Output, cap.usage_page, id, report).result,
                          0xFFFFFFFF >> (32 - cap.field_bits()));
                ASSERT_EQ(headset.set_value(HidP_Output, cap.usage_page, id, 0, report), HIDP_STATUS_SUCCESS);
                EXPECT_EQ(report, cleared);
                ++values;
            }
        }
    });
    EXPECT_GT(values, 30U);
}

/// Calls every function with everything that the collection names.
void use_everything(const Collection& collection) {
    collection.caps();
    for (const auto type : {HidP_Input, HidP_Output, HidP_Feature}) {
        collection.buttons(type);
        collection.values(type);
        for (const auto& cap : collection.direction(type).capabilities) {
            Bytes report = collection.empty_report(type);
            for (const USAGE usage : {cap.usage_min, cap.usage_max}) {
                collection.set(type, cap.usage_page, {usage}, report);
                collection.pressed(type, cap.usage_page, report);
                collection.unset(type, cap.usage_page, {usage}, report);
                collection.set_value(type, cap.usage_page, usage, 0xFFFFFFFF, report);
                collection.value(type, cap.usage_page, usage, report);
                collection.scaled(type, cap.usage_page, usage, report);
            }
        }
    }
}

TEST_F(DeviceReference, AHostileDescriptorIsRefusedOrItsCollectionsCanBeUsed) {
    for (const auto& [name, record] : reference::load("bad")) {
        SCOPED_TRACE(name);
        const auto descriptor = reference::descriptor(record);
        const auto parsed = hidp::parse(descriptor);
        EXPECT_EQ(parsed.collections.empty(), parsed.error.has_value());
        for (std::size_t index = 0; index < parsed.collections.size(); ++index) {
            use_everything(Collection(descriptor, index));
        }
    }
}

TEST_F(DeviceReference, AMalformedDescriptorIsRefusedWithItsPlace) {
    for (const auto& [name, record] : reference::load("bad")) {
        const json& is_well_formed = record.value("is_well_formed", json());
        if (is_well_formed != false) {
            continue;
        }
        SCOPED_TRACE(name);
        const auto descriptor = reference::descriptor(record);
        const auto error = hidp::parse(descriptor).error;
        ASSERT_TRUE(error.has_value());
        EXPECT_NE(error->text, "");
        if (!descriptor.empty()) {
            EXPECT_EQ(descriptor.at(error->offset), error->item);
        }
    }
}

TEST_F(DeviceReference, AWellFormedOddDescriptorParses) {
    for (const std::string name :
         {"collection_only", "delimiter_ok", "deskhop_count_2048", "hidtools_collection_overflow",
          "hidtools_test_hid_0", "hidtools_test_hid_1", "hidtools_test_hid_2", "hidtools_test_hid_3",
          "hidtools_usb_crash_0", "collections_balanced_300", "ids_push_pop_long_all_kinds",
          "logical_min_above_max", "mvsilicon_type_ff", "nut_64_usages", "nut_400_usages",
          "report_id_without_fields", "two_logical_minima", "unit_exponent_wide", "usage_range_64k"}) {
        const auto parsed = hidp::parse(reference::descriptor(reference::load_one("bad/" + name)));
        EXPECT_EQ(parsed.error ? parsed.error->to_string() : "", "") << name;
    }
}

}  // namespace
