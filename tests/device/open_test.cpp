// What a headset object is when it is made, and the two ways to open it.
#include <stdexcept>

#include "tests/device/device_fixture.h"
#include "tests/support/upward_calls.h"

using namespace device_test;
using headset_plugin::hid_handle_number;
using test_support::upward_calls;

namespace {

class DeviceOpen : public DeviceTest {
  protected:
    std::string enter_line(const HidHandle& led, const HidHandle& upd) {
        return device_line("set_device_handles", "enter for device 0x24c9, led " +
                                                     std::to_string(hid_handle_number(led.get())) + ", upd " +
                                                     std::to_string(hid_handle_number(upd.get())) + ". ");
    }
    void throw_at(const std::string& wanted) {
        logger_->on_line([wanted](const std::string& line) {
            if (line == wanted) {
                throw std::runtime_error("the host's logger failed");
            }
        });
    }
    std::size_t threads_started() {
        return logger_->count(device_line("hid_device_open", "new a thread to read headset device "));
    }
};

const Lines info_lines =
    device_lines("get_device_info", {"open non-orvex device. ", "model name = Test Headset"});
const Lines start_lines =
    device_lines("start_headset", {"enter"}) + device_lines("set_led_event", {"enter", "exit"});
const Lines opened_lines =
    device_lines("hid_device_open", {"new a thread to read headset device ", "[Exit handle_led] "});
const Lines enter_led_lines = device_lines("hid_device_open", {"[Enter handle_led] "});
const Lines orvex_sync_lines = device_lines("hid_device_open", {"sync current call state to headset "});

TEST_F(DeviceOpen, a_new_headset_holds_what_it_was_made_with_and_nothing_else) {
    const auto made = std::make_shared<device>(jabra, product, L"path", "SN-7", 42);
    EXPECT_EQ(made->vendor_id(), jabra);
    EXPECT_EQ(made->product_id(), product);
    EXPECT_EQ(made->path(), L"path");
    EXPECT_EQ(made->serial(), "SN-7");
    EXPECT_EQ(made->index(), 42U);
    EXPECT_EQ(made->device_name(), "");
    EXPECT_EQ(made->host_device_id(), "");
    EXPECT_FALSE(made->is_selected());
    EXPECT_FALSE(made->is_open());
    EXPECT_FALSE(made->is_leaving());
    EXPECT_FALSE(made->has_returned());
    EXPECT_EQ(made->headset_state(), 0);
    EXPECT_EQ(made->last_hook_key(), -1);
    EXPECT_EQ(logger_->lines(), Lines{});
}

TEST_F(DeviceOpen, at_most_256_characters_of_the_path_are_kept) {
    for (const std::size_t length : {0U, 255U, 256U, 257U, 1000U}) {
        const std::wstring path(length, L'p');
        EXPECT_EQ(device(jabra, product, path, serial, 0).path(), path.substr(0, 256)) << length;
    }
}

TEST_F(DeviceOpen, the_factory_is_asked_for_a_driver_with_both_ids) {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> asked;
    headset_plugin::set_driver_factory([&](std::uint32_t vendor_id, std::uint32_t product_id) {
        asked.emplace_back(vendor_id, product_id);
        return nullptr;
    });
    make_device(0x1395);
    EXPECT_EQ(asked, (std::vector<std::pair<std::uint32_t, std::uint32_t>>{{0x1395, product}}));
}

TEST_F(DeviceOpen, the_five_vendors_get_the_standard_driver) {
    for (const std::uint32_t vendor_id : {0x046DU, 0x047FU, 0x0B0EU, 0x1377U, 0x1395U}) {
        const auto made = make_real_device(vendor_id);
        EXPECT_EQ(logger_->lines(), Lines{}) << vendor_id;
        made->set_mute_state(true);
        EXPECT_EQ(
            logger_->lines(),
            device_lines("set_mute_state", {"enter."}) +
                Lines{"3rdPartyHeadsetPlugin: STDHID: headset_plugin::stdhid_cc::set_mute_data: MUTE: old "
                      "headset_leds_state_=0x0, new headset_leds_state_=0x2\n"} +
                device_lines("set_mute_state", {"exit"}))
            << vendor_id;
    }
}

TEST_F(DeviceOpen, other_vendors_get_no_driver_and_say_so) {
    for (const std::uint32_t vendor_id : {0x03F0U, 0x045EU, 0x0000U, orvex, 0x1047FU}) {
        const auto made = make_real_device(vendor_id);
        EXPECT_EQ(logger_->lines(), device_lines("device", {"3rd party headset not supported yet."}))
            << vendor_id;
    }
}

TEST_F(DeviceOpen, a_known_vendor_has_its_name_and_another_is_unknown) {
    EXPECT_EQ(make_device(jabra)->vendor_name(), "Jabra");
    EXPECT_EQ(make_device(0x1377)->vendor_name(), "Sennheiser");
    EXPECT_EQ(make_device(0x1234)->vendor_name(), "Unknown");
}

TEST_F(DeviceOpen, only_the_makers_own_headset_is_an_orvex_device) {
    EXPECT_TRUE(make_device(orvex)->is_orvex_device());
    EXPECT_FALSE(make_device(jabra)->is_orvex_device());
}

TEST_F(DeviceOpen, a_handle_starts_the_headset_and_its_read_thread) {
    plug();
    const auto made = make_device();
    const HidHandle handle = open_handle();
    made->set_device_handles(handle, nullptr);
    EXPECT_EQ(log_beside_read_thread(),
              Lines{enter_line(handle, nullptr)} +
                  device_lines("set_device_handles", {"open hid device (non-OrveX) 0x24c9. "}) + info_lines +
                  enter_led_lines + start_lines + opened_lines);
    EXPECT_TRUE(logger_->wait_for(device_line("read_thread", "Enter while(true) loop ")));
    EXPECT_TRUE(made->is_open());
    EXPECT_FALSE(made->is_leaving());
    EXPECT_TRUE(driver_->has_handle());
    EXPECT_EQ(upward_calls(), Lines{});
}

TEST_F(DeviceOpen, an_orvex_headset_is_not_opened_by_one_handle_alone) {
    plug();
    const auto made = make_device(orvex);
    const HidHandle handle = open_handle();
    made->set_device_handles(handle, nullptr);
    EXPECT_EQ(log_beside_read_thread(), Lines{enter_line(handle, nullptr)});
    EXPECT_TRUE(made->is_open());
}

TEST_F(DeviceOpen, an_orvex_headset_with_both_handles_is_read_but_left_to_the_host_to_start) {
    plug();
    const auto made = make_device(orvex);
    const HidHandle handle = open_handle();
    made->set_device_handles(handle, handle);
    EXPECT_EQ(log_beside_read_thread(), Lines{enter_line(handle, handle)} +
                                            device_lines("set_device_handles", {"open hid device 0x24c9. "}) +
                                            info_lines + enter_led_lines + opened_lines + orvex_sync_lines);
    EXPECT_EQ(upward_calls(), Lines{"updateHeadsetState()"});
    EXPECT_EQ(driver_->calls(), Lines{});
    made->stop_device_thread();
}

TEST_F(DeviceOpen, both_handles_open_the_headset_once_and_then_by_the_other_branch) {
    plug();
    const auto made = make_device();
    const HidHandle handle = open_handle();
    made->set_device_handles(handle, handle);
    EXPECT_EQ(logger_->count(device_line("set_device_handles", "open hid device 0x24c9. ")), 1U);
    EXPECT_EQ(threads_started(), 1U);
    made->set_device_handles(nullptr, nullptr);
    EXPECT_EQ(logger_->count(device_line("set_device_handles", "open hid device 0x24c9. ")), 1U);
    EXPECT_EQ(logger_->count(device_line("set_device_handles", "open hid device (non-OrveX) 0x24c9. ")), 1U);
    EXPECT_EQ(threads_started(), 2U);
    made->stop_device_thread();
}

TEST_F(DeviceOpen, an_open_headset_keeps_its_handle) {
    const auto made = make_open_device();
    std::weak_ptr<::hid_device> refused;
    {
        const HidHandle second = headset_plugin::hid_open_handle(headset_plugin::hid_list(0, 0)->path);
        refused = second;
        made->set_device_handles(second, nullptr);
    }
    EXPECT_TRUE(refused.expired());
    EXPECT_TRUE(made->is_open());
    made->stop_device_thread();
}

TEST_F(DeviceOpen, without_a_handle_nothing_is_opened) {
    const auto made = make_device();
    EXPECT_EQ(made->hid_device_open(), 0U);
    made->set_device_handles(nullptr, nullptr);
    EXPECT_EQ(logger_->lines(),
              Lines{enter_line(nullptr, nullptr)} +
                  device_lines("set_device_handles", {"open hid device (non-OrveX) 0x24c9. "}));
}

TEST_F(DeviceOpen, an_orvex_headset_asks_for_the_state_even_when_it_is_not_opened) {
    const auto own = make_device(orvex);
    EXPECT_EQ(own->hid_device_open(), 0U);
    EXPECT_EQ(logger_->lines(), orvex_sync_lines);
    EXPECT_EQ(upward_calls(), Lines{"updateHeadsetState()"});
}

TEST_F(DeviceOpen, opening_gives_1_when_a_read_thread_was_started) {
    plug();
    const auto made = make_device(orvex);
    made->set_device_handles(open_handle(), nullptr);
    EXPECT_EQ(made->hid_device_open(), 1U);
    EXPECT_EQ(threads_started(), 1U);
    made->stop_device_thread();
}

TEST_F(DeviceOpen, a_logger_that_throws_half_way_leaves_the_headset_closed_and_free_to_be_opened_again) {
    for (const std::string& line : {enter_led_lines.front(), opened_lines.front()}) {
        plug();
        const auto made = make_device();
        throw_at(line);
        EXPECT_THROW(made->set_device_handles(open_handle(), nullptr), std::runtime_error);
        EXPECT_FALSE(made->is_open());
        EXPECT_FALSE(driver_->has_handle());
        EXPECT_TRUE(is_closed());
        logger_->on_line({});
        made->set_device_handles(open_handle(), nullptr);
        made->set_selected(true);
        driver_->clear_calls();
        send(hook_report);
        EXPECT_EQ(driver_->calls(), (Lines{"process_read(02 01)", "handle_headset_reponse(-1)"}));
        made->stop_device_thread();
        bus().reset();
    }
}

// ---- opening by ids

class DeviceTryOpen : public DeviceTest {
  protected:
    static std::string enter() {
        return device_line("hid_device_tryopen", "[Enter], vendor_id: 2830, product_id: 9417 ");
    }
    static std::string result(int value) {
        return device_line("hid_device_tryopen", "[Exit], result: " + std::to_string(value) + " ");
    }
    static std::string trying() { return device_line("hid_device_tryopen", "try to open headset device. "); }
};

TEST_F(DeviceTryOpen, opens_reads_and_starts_the_headset) {
    plug();
    const auto made = make_device();
    EXPECT_EQ(made->hid_device_tryopen(jabra, product, L"SN-1"), 1);
    EXPECT_EQ(log_beside_read_thread(),
              (Lines{enter(), trying()}) +
                  device_lines("hid_device_tryopen", {"new a thread to read headset device "}) + info_lines +
                  device_lines("hid_device_tryopen", {"sync current call state to headset device. "}) +
                  start_lines + Lines{result(1)});
    EXPECT_TRUE(made->is_open());
    EXPECT_TRUE(driver_->has_handle());
    made->stop_device_thread();
}

TEST_F(DeviceTryOpen, an_open_headset_is_not_opened_again) {
    const auto made = make_tried_device();
    EXPECT_EQ(made->hid_device_tryopen(jabra, product, L"SN-1"), 0);
    EXPECT_EQ(log_beside_read_thread(),
              (Lines{enter(),
                     device_line("hid_device_tryopen",
                                 "Waring [there is already a opened orvex headset, ignore this one !!!!] "),
                     result(0)}));
    made->stop_device_thread();
}

TEST_F(DeviceTryOpen, a_headset_that_is_not_there_is_not_opened) {
    plug();
    const auto made = make_device();
    struct Absent {
        std::uint16_t vendor_id, product_id;
        const wchar_t* serial;
    };
    for (const Absent& absent : {Absent{0x0B0E, 0x24C9, L"SN-2"}, Absent{0x0B0E, 0x24CA, nullptr},
                                 Absent{0x0B0F, 0x24C9, L"SN-1"}}) {
        EXPECT_EQ(made->hid_device_tryopen(absent.vendor_id, absent.product_id, absent.serial), 0);
        EXPECT_FALSE(made->is_open());
    }
    EXPECT_EQ(logger_->lines().front(), enter());
    EXPECT_EQ(logger_->count(device_line("hid_device_tryopen", "fail to open orvex headset ")), 3U);
    EXPECT_TRUE(test_support::in_order(
        logger_->lines(),
        {enter(), trying(), device_line("hid_device_tryopen", "fail to open orvex headset "), result(0)}));
}

TEST_F(DeviceTryOpen, a_headset_that_refuses_is_not_opened) {
    plug();
    ASSERT_EQ(bus().misbehave(headset_, Fault::open_refused), "");
    const auto made = make_device();
    EXPECT_EQ(made->hid_device_tryopen(jabra, product, nullptr), 0);
    EXPECT_FALSE(made->is_open());
}

TEST_F(DeviceTryOpen, without_a_serial_the_first_of_the_product_is_opened) {
    plug();
    const auto made = make_device();
    EXPECT_EQ(made->hid_device_tryopen(jabra, product, nullptr), 1);
    made->stop_device_thread();
}

TEST_F(DeviceTryOpen, an_orvex_headset_is_not_started) {
    plug();
    const auto made = make_device(orvex);
    EXPECT_EQ(made->hid_device_tryopen(jabra, product, L"SN-1"), 1);
    EXPECT_EQ(driver_->calls(), Lines{});
    EXPECT_EQ(
        logger_->count(device_line("hid_device_tryopen", "sync current call state to headset device. ")), 1U);
    EXPECT_EQ(upward_calls(), Lines{});
    made->stop_device_thread();
}

TEST_F(DeviceTryOpen, a_headset_that_went_away_can_be_opened_again) {
    const auto made = make_tried_device();
    for (int round = 0; round < 3; ++round) {
        logger_->clear();
        ASSERT_EQ(bus().unplug(headset_), "");
        ASSERT_TRUE(logger_->wait_for(device_line("tryopen_read_thread", "this device is closing down. ")));
        EXPECT_FALSE(made->is_open());
        ASSERT_EQ(bus().replug(headset_), "");
        ASSERT_EQ(made->hid_device_tryopen(jabra, product, L"SN-1"), 1);
        send(hook_report);
    }
    made->stop_device_thread();
}

TEST_F(DeviceTryOpen, a_logger_that_throws_half_way_leaves_the_headset_closed_and_free_to_be_opened_again) {
    plug();
    const auto made = make_device();
    std::weak_ptr<::hid_device> handle;
    logger_->on_line([&](const std::string& line) {
        if (line == device_line("hid_device_tryopen", "new a thread to read headset device ")) {
            handle = driver_->handle();
            EXPECT_FALSE(handle.expired());
            throw std::runtime_error("the host's logger failed");
        }
    });
    EXPECT_THROW(made->hid_device_tryopen(jabra, product, L"SN-1"), std::runtime_error);
    EXPECT_FALSE(made->is_open());
    EXPECT_TRUE(handle.expired());
    logger_->on_line({});
    ASSERT_EQ(made->hid_device_tryopen(jabra, product, L"SN-1"), 1);
    made->set_selected(true);
    driver_->clear_calls();
    send(hook_report);
    EXPECT_EQ(driver_->calls(), (Lines{"process_read(02 01)", "handle_headset_reponse(-1)"}));
    made->stop_device_thread();
}

// ---- what the headset says about itself

TEST_F(DeviceOpen, the_model_name_is_cut_to_its_buffer) {
    struct Row {
        std::string name, model;
    };
    const std::string e_acute = "\xC3\xA9";
    std::string forty_accents, thirty_two_accents;
    for (int i = 0; i < 40; ++i) {
        forty_accents += e_acute;
        thirty_two_accents += i < 32 ? e_acute : "";
    }
    for (const Row& row :
         {Row{"", ""}, Row{std::string(63, 'm'), std::string(63, 'm')},
          Row{std::string(64, 'm'), std::string(63, 'm')}, Row{std::string(300, 'm'), std::string(63, 'm')},
          Row{forty_accents, thirty_two_accents}}) {
        plug(telephony_descriptor(), row.name);
        const auto made = make_device();
        made->set_device_handles(open_handle(), nullptr);
        EXPECT_EQ(logger_->count(device_line("get_device_info", "model name = " + row.model)), 1U)
            << row.name;
        made->stop_device_thread();
        bus().reset();
    }
}

TEST_F(DeviceOpen, a_headset_without_a_product_name_has_an_empty_model_name) {
    plug(telephony_descriptor(), std::nullopt);
    const auto made = make_device();
    made->set_device_handles(open_handle(), nullptr);
    EXPECT_EQ(logger_->count(device_line("get_device_info", "model name = ")), 1U);
    made->stop_device_thread();
}

}  // namespace
