// Which interfaces are let in, step by step.
#include "devicemgr/admission.h"

#include <utility>

#include "tests/devicemgr/manager_fixture.h"

using namespace manager_test;
using plugin_control::admit;
using plugin_control::set_device_availability_hook;

namespace {

std::string pass_line(const std::string& text) {
    return manager_line("enumerate_hid_device", text);
}

const std::string no_serial_line = pass_line("no serial info, sn = unknown, ignored");
const std::string disallowed_line = pass_line("disallowed vendor_id:[0x0b0e], product_id:[0x24c9]");

/// One entry of an enumeration.
class Entry {
  public:
    explicit Entry(std::uint16_t page = telephony, std::uint16_t vendor_id = jabra,
                   std::uint16_t product_id = product) {
        info_.vendor_id = vendor_id;
        info_.product_id = product_id;
        info_.usage_page = page;
    }
    Entry& serial(std::wstring text) { return set(serial_, info_.serial_number, std::move(text)); }
    Entry& name(std::wstring text) { return set(name_, info_.product_string, std::move(text)); }
    const hid_device_info& info() const { return info_; }

  private:
    Entry& set(std::wstring& kept, wchar_t*& field, std::wstring text) {
        kept = std::move(text);
        field = kept.data();
        return *this;
    }
    std::wstring serial_, name_;
    hid_device_info info_{};
};

class Admission : public HeadsetsTest {
  protected:
    using Ids = std::vector<std::pair<int, int>>;

    /// Has the hook answer this, and keeps what it is asked.
    void answer_hook(bool allowed) {
        set_device_availability_hook([this, allowed](int vendor_id, int product_id) {
            asked_.emplace_back(vendor_id, product_id);
            return allowed;
        });
    }
    Ids asked_;
};

TEST_F(Admission, the_makers_own_headset_is_left_to_the_host) {
    answer_hook(true);
    EXPECT_FALSE(admit(Entry(telephony, orvex).serial(L"SN-1").name(L"Own").info()));
    EXPECT_EQ(logger_->lines(),
              Lines{pass_line("orvex headset is plugged in,vendor_id: 61680, product_id: 9417, "
                              "serial: unknown. ")});
    EXPECT_EQ(asked_, Ids{});
}

TEST_F(Admission, the_makers_own_headset_is_told_before_its_usage_page_counts) {
    EXPECT_FALSE(admit(Entry(generic_desktop, orvex).info()));
    EXPECT_EQ(logger_->lines_with("orvex headset is plugged in").size(), 1U);
    EXPECT_EQ(logger_->lines().size(), 1U);
}

TEST_F(Admission, other_usage_pages_are_no_headsets) {
    struct Row {
        std::uint16_t page;
        const char* shown;
    };
    answer_hook(true);
    // The page is read as a signed number, and shown so.
    for (const Row& row :
         {Row{0x01, "0x01"}, Row{0x0A, "0x0a"}, Row{0x0D, "0x0d"}, Row{0x10B, "0x10b"}, Row{0x00, "0x00"},
          Row{0x7FFF, "0x7fff"}, Row{0xFF00, "0xffffff00"}, Row{0xFF0B, "0xffffff0b"}}) {
        logger_->clear();
        EXPECT_FALSE(admit(Entry(row.page).serial(L"SN-1").info()));
        EXPECT_EQ(logger_->lines(),
                  Lines{pass_line("ignore non-accessary device vendor_id: 0x0b0e, product_id: "
                                  "0x24c9, page: " +
                                  std::string(row.shown) + ". ")});
    }
    EXPECT_EQ(asked_, Ids{});
}

TEST_F(Admission, logitechs_own_page_is_ignored_although_the_wider_rule_has_it) {
    EXPECT_FALSE(admit(Entry(0xFF00, logitech).serial(L"SN-1").info()));
    EXPECT_EQ(logger_->lines(),
              Lines{pass_line("ignore non-accessary device vendor_id: 0x046d, product_id: 0x24c9, "
                              "page: 0xffffff00. ")});
    EXPECT_TRUE(device_mgr::is_usagepage_supported(logitech, 0, 0xFF00));
}

TEST_F(Admission, an_interface_without_a_serial_is_ignored) {
    answer_hook(true);
    EXPECT_FALSE(admit(Entry().name(L"Nameless").info()));
    EXPECT_EQ(logger_->lines(), (Lines{plugged_in_line(telephony), no_serial_line}));
    EXPECT_EQ(asked_, Ids{});
}

TEST_F(Admission, a_telephony_or_consumer_interface_is_let_in) {
    for (const std::uint16_t page : {telephony, consumer}) {
        logger_->clear();
        const auto admitted = admit(Entry(page).serial(L"SN-1").name(L"Headset").info());
        ASSERT_TRUE(admitted);
        EXPECT_EQ(admitted->serial, "SN-1");
        EXPECT_EQ(admitted->product_name, "Headset");
        EXPECT_EQ(logger_->lines(), (Lines{plugged_in_line(page), supported_line("Headset")}));
    }
}

TEST_F(Admission, a_product_without_a_name_is_called_unknown) {
    const auto admitted = admit(Entry().serial(L"SN-1").info());
    ASSERT_TRUE(admitted);
    EXPECT_EQ(admitted->product_name, "unknown");
    EXPECT_EQ(logger_->lines().back(), supported_line("unknown"));
}

TEST_F(Admission, an_empty_serial_or_name_is_one_that_is_stated) {
    const auto admitted = admit(Entry().serial(L"").name(L"").info());
    ASSERT_TRUE(admitted);
    EXPECT_EQ(admitted->serial, "");
    EXPECT_EQ(admitted->product_name, "");
}

TEST_F(Admission, texts_are_cut_to_63_bytes_on_a_whole_character) {
    struct Row {
        std::wstring text;
        std::string kept;
    };
    const std::string e_acute = "\xC3\xA9", euro = "\xE2\x82\xAC";
    const auto repeat = [](const std::string& text, int count) {
        std::string all;
        for (int i = 0; i < count; ++i) {
            all += text;
        }
        return all;
    };
    for (const Row& row : {
             Row{std::wstring(62, L's'), std::string(62, 's')},
             Row{std::wstring(63, L's'), std::string(63, 's')},
             Row{std::wstring(64, L's'), std::string(63, 's')},
             Row{std::wstring(70, L's'), std::string(63, 's')},
             Row{std::wstring(1000, L's'), std::string(63, 's')},
             Row{std::wstring(40, L'\u00E9'), repeat(e_acute, 31)},
             Row{std::wstring(21, L'\u20AC'), repeat(euro, 21)},
             Row{std::wstring(22, L'\u20AC'), repeat(euro, 21)},
             Row{std::wstring(62, L's') + L"\u00E9", std::string(62, 's')},
             Row{std::wstring(61, L's') + L"\u00E9", std::string(61, 's') + e_acute},
         }) {
        const auto admitted = admit(Entry().serial(row.text).name(row.text).info());
        ASSERT_TRUE(admitted);
        EXPECT_EQ(admitted->serial, row.kept);
        EXPECT_EQ(admitted->product_name, row.kept);
    }
}

TEST_F(Admission, the_host_is_asked_with_both_ids_and_may_let_in) {
    answer_hook(true);
    EXPECT_TRUE(admit(Entry().serial(L"SN-1").info()));
    EXPECT_EQ(asked_, (Ids{{0x0B0E, 0x24C9}}));
}

TEST_F(Admission, ids_above_the_signed_range_stay_positive) {
    answer_hook(true);
    EXPECT_TRUE(admit(Entry(telephony, 0xFFFF).serial(L"SN-1").info()));
    EXPECT_EQ(asked_, (Ids{{0xFFFF, 0x24C9}}));
}

TEST_F(Admission, a_headset_that_the_host_refuses_is_disallowed) {
    answer_hook(false);
    EXPECT_FALSE(admit(Entry().serial(L"SN-1").name(L"Headset").info()));
    EXPECT_EQ(logger_->lines(), (Lines{plugged_in_line(telephony), disallowed_line}));
}

TEST_F(Admission, an_empty_hook_lets_every_headset_in) {
    answer_hook(false);
    set_device_availability_hook({});
    EXPECT_TRUE(admit(Entry().serial(L"SN-1").info()));
}

TEST_F(Admission, a_later_hook_takes_the_place_of_the_earlier) {
    answer_hook(false);
    set_device_availability_hook([](int, int) { return true; });
    EXPECT_TRUE(admit(Entry().serial(L"SN-1").info()));
    EXPECT_EQ(asked_, Ids{});
}

TEST_F(Admission, a_product_that_is_not_supported_is_kept_out) {
    static Ids tested;
    tested.clear();
    EXPECT_FALSE(
        admit(Entry().serial(L"SN-1").name(L"Headset").info(), [](std::int32_t vendor, std::int32_t number) {
            tested.emplace_back(vendor, number);
            return false;
        }));
    EXPECT_EQ(tested, (Ids{{0x0B0E, 0x24C9}}));
    EXPECT_EQ(logger_->lines(),
              (Lines{plugged_in_line(telephony),
                     pass_line("3rd product vendor_id:[0x b0e], product_id:[0x24c9], product_name:[Headset] "
                               "unsupported!")}));
}

TEST_F(Admission, a_refusal_of_the_host_comes_before_the_product_test) {
    answer_hook(false);
    EXPECT_FALSE(admit(Entry().serial(L"SN-1").info(), [](std::int32_t, std::int32_t) {
        ADD_FAILURE() << "the product test was applied";
        return true;
    }));
}

TEST_F(Admission, a_short_product_id_is_filled_up_with_zeros_in_some_lines_and_spaces_in_others) {
    constexpr std::uint16_t short_id = 0x00C9;
    const auto told = [this](const Entry& entry, plugin_control::ProductSupportTest is_supported =
                                                     plugin_control::is_third_party_product_supported) {
        logger_->clear();
        admit(entry.info(), is_supported);
        return logger_->lines();
    };
    const std::string plugged_in =
        pass_line("3rd-party headset is plugged in, vendor_id: 0x0b0e, product_id: 0x00c9, page: 0x0b. ");
    const std::string product_text =
        "3rd product vendor_id:[0x b0e], product_id:[0x  c9], product_name:[Headset] ";
    const auto entry = [](std::uint16_t page) { return Entry(page, jabra, short_id); };
    EXPECT_EQ(told(entry(generic_desktop)),
              Lines{pass_line("ignore non-accessary device vendor_id: 0x0b0e, product_id: 0x00c9, page: "
                              "0x01. ")});
    EXPECT_EQ(told(entry(telephony).serial(L"SN-1").name(L"Headset")),
              (Lines{plugged_in, pass_line(product_text + "supported!")}));
    EXPECT_EQ(told(entry(telephony).serial(L"SN-1").name(L"Headset"),
                   [](std::int32_t, std::int32_t) { return false; }),
              (Lines{plugged_in, pass_line(product_text + "unsupported!")}));
    answer_hook(false);
    EXPECT_EQ(told(entry(telephony).serial(L"SN-1")),
              (Lines{plugged_in, pass_line("disallowed vendor_id:[0x0b0e], product_id:[0x00c9]")}));
}

TEST_F(Admission, the_rule_that_refuses_is_told_without_a_log) {
    using plugin_control::AdmissionRule;
    struct Row {
        std::uint16_t page, vendor_id;
        bool has_serial, is_allowed, is_supported;
        std::optional<AdmissionRule> rule;
    };
    const Row rows[] = {
        {generic_desktop, orvex, false, false, false, AdmissionRule::own_headset},
        {generic_desktop, jabra, false, false, false, AdmissionRule::usage_page},
        {telephony, jabra, false, false, false, AdmissionRule::serial},
        {telephony, jabra, true, false, false, AdmissionRule::host},
        {telephony, jabra, true, true, false, AdmissionRule::product},
        {consumer, jabra, true, true, true, std::nullopt},
    };
    for (const Row& row : rows) {
        answer_hook(row.is_allowed);
        Entry entry(row.page, row.vendor_id);
        if (row.has_serial) {
            entry.serial(L"SN-1");
        }
        auto candidate = plugin_control::make_candidate(entry.info());
        if (!row.is_supported) {
            candidate.is_supported = [](std::int32_t, std::int32_t) { return false; };
        }
        const auto refusal = find_refusal(candidate);
        EXPECT_EQ(refusal ? std::optional(refusal->rule) : std::nullopt, row.rule);
        EXPECT_TRUE(!refusal || (*refusal->name != '\0' && *refusal->reason != '\0'));
    }
    EXPECT_EQ(logger_->lines(), Lines{});
}

TEST_F(Admission, a_hook_keeps_what_it_remembers_from_one_question_to_the_next) {
    set_device_availability_hook([asked = 0](int, int) mutable { return asked++ == 0; });
    EXPECT_TRUE(admit(Entry().serial(L"SN-1").info()));
    EXPECT_FALSE(admit(Entry().serial(L"SN-1").info()));
}

TEST_F(Admission, every_product_is_supported) {
    for (const int id : {0, 1, 0xFFFF, -1}) {
        EXPECT_TRUE(plugin_control::is_third_party_product_supported(id, id));
    }
}

TEST_F(Admission, the_wider_rule_knows_the_standard_pages_and_logitechs) {
    const auto standard = [](const std::string& page) {
        return manager_lines("is_usagepage_supported", {"standard usage_page:[" + page + "] is supported"});
    };
    const Lines special =
        manager_lines("is_usagepage_supported", {"special Logitech usage_page:[0xff00] is supported"});
    struct Row {
        int vendor_id, page;
        Lines lines;  ///< none for a page that is not supported
    };
    for (const Row& row : {Row{jabra, 0x0B, standard("0x0b")}, Row{jabra, 0x0C, standard("0x0c")},
                           Row{logitech, 0x0B, standard("0x0b")}, Row{orvex, 0x0C, standard("0x0c")},
                           Row{logitech, 0xFF00, special}, Row{jabra, 0xFF00, {}}, Row{logitech, 0xFF43, {}},
                           Row{logitech, -256, {}}, Row{jabra, 0x01, {}}, Row{jabra, 0x10B, {}}}) {
        logger_->clear();
        EXPECT_EQ(device_mgr::is_usagepage_supported(row.vendor_id, product, row.page), !row.lines.empty());
        EXPECT_EQ(logger_->lines(), row.lines) << row.vendor_id << " " << row.page;
    }
}

// ---- within a pass

class AdmissionInPass : public ManagerTest {};

TEST_F(AdmissionInPass, the_makers_own_headset_never_reaches_the_list) {
    plug(headset("SN-1", "Own", {telephony}, orvex));
    pass();
    EXPECT_EQ(
        log(),
        pass_start_lines() +
            Lines{pass_line("orvex headset is plugged in,vendor_id: 61680, product_id: "
                            "9417, serial: unknown. ")} +
            Lines{"3rdPartyHeadsetPlugin: plugin_control::device_mgr::enumerate_hid_device, not found any "
                  "headsets \n"});
    EXPECT_EQ(manager_->find_device("SN-1"), nullptr);
    EXPECT_EQ(manager_->connected_count(), 0U);
}

TEST_F(AdmissionInPass, a_refused_headset_is_disallowed_once_per_interface_and_pass_and_never_listed) {
    set_device_availability_hook([](int vendor_id, int product_id) {
        return std::pair(vendor_id, product_id) != std::pair(0x0B0E, 0x24C9);
    });
    plug(headset("SN-1"));
    pass();
    EXPECT_EQ(logger_->count(disallowed_line), 2U);
    pass();
    EXPECT_EQ(logger_->count(disallowed_line), 4U);
    EXPECT_EQ(manager_->find_device("SN-1"), nullptr);
    set_device_availability_hook({});
    pass();
    EXPECT_NE(manager_->find_device("SN-1"), nullptr);
}

TEST_F(AdmissionInPass, a_headset_without_a_serial_is_not_listed) {
    auto nameless = headset("");
    nameless.serial.reset();
    plug(nameless);
    pass();
    EXPECT_EQ(logger_->count(no_serial_line), 2U);
    EXPECT_EQ(manager_->connected_count(), 0U);
}

TEST_F(AdmissionInPass, headsets_whose_long_serials_are_cut_alike_are_one) {
    plug(headset(std::string(63, 's') + "1"));
    plug(headset(std::string(63, 's') + "2"));
    pass();
    EXPECT_EQ(manager_->connected_count(), 1U);
    EXPECT_NE(manager_->find_device(std::string(63, 's')), nullptr);
}

TEST_F(AdmissionInPass, a_short_product_id_is_filled_up_with_zeros) {
    auto short_id = headset("SN-1");
    short_id.product_id = 0x00C9;
    plug(short_id);
    pass();
    const std::string ids = "device, vendor_id:[0x0b0e], product_id:[0x00c9], sn = SN-1, ";
    EXPECT_TRUE(test_support::in_order(
        logger_->lines(), {pass_line("create " + ids + "product_name = Test Headset"),
                           manager_line("add_device", "add " + ids + "device_name = Test Headset"),
                           pass_line("found " + ids + "product_name = Test Headset")}));
}

TEST_F(AdmissionInPass, of_two_headsets_with_the_serial_unknown_the_first_is_kept) {
    plug(headset("unknown", "First", {telephony}));
    plug(headset("unknown", "Second", {telephony}));
    pass();
    EXPECT_EQ(log(),
              pass_start_lines() + (Lines{plugged_in_line(telephony), supported_line("First")}) +
                  creation_lines("unknown", "First", 1) +
                  (Lines{plugged_in_line(telephony), supported_line("Second"), found_line("unknown", "First"),
                         pass_line("already have one 3rd device with unknow serail, ignore this one, sn = "
                                   "unknown")}));
    EXPECT_EQ(manager_->connected_count(), 1U);
    EXPECT_TRUE(manager_->find_device("unknown")->is_open());
}

}  // namespace
