#include "drivers/jabra_cc.h"

#include <gtest/gtest.h>

#include "tests/drivers/fixed_reports.h"

namespace headset_plugin::driver_test::jabra {
namespace {

std::string line(const std::string& function, const std::string& text) {
    return "HeadsetPlugin: headset_plugin::jabra_cc::" + function + ": " + text + "\n";
}

class OpenJabra final : public jabra_cc {
  public:
    using jabra_cc::headset_leds_state_;
    using jabra_cc::Indicator;
    using jabra_cc::indicator_bit;
    using jabra_cc::jabra_cc;
};

const KeyMap keys_00 = {{0x00, HEADSET_KEY_END_CALL}, {0x20, HEADSET_KEY_HOOK}, {0x30, HEADSET_KEY_MUTE}};
const KeyMap keys_245 = {{0x06, HEADSET_KEY_END_CALL},
                         {0x01, HEADSET_KEY_HOOK},
                         {0x05, HEADSET_KEY_HOOK},
                         {0x0F, HEADSET_KEY_MUTE}};
const KeyMap keys_a3 = {{0x0A, HEADSET_KEY_END_CALL}, {0x01, HEADSET_KEY_HOOK}, {0x1B, HEADSET_KEY_MUTE}};
const KeyMap keys_other = {{0x02, HEADSET_KEY_END_CALL}, {0x01, HEADSET_KEY_HOOK}, {0x07, HEADSET_KEY_MUTE}};

/// The keys of all products, and a value that is none.
constexpr unsigned key_values[] = {0x00, 0x01, 0x02, 0x05, 0x06, 0x07, 0x0A, 0x0F, 0x1B, 0x20, 0x30, 0x77};

/// What products have in common.
struct Class {
    std::uint8_t ring;
    std::uint8_t off_hook;
    std::uint8_t mute;
    const KeyMap& keys;
    std::uint8_t toggled;  ///< what a toggle lights beside the record
    bool two_follow_ups;
    bool in_use_toggles;
    /// What is lit for alerting, in use and held in all combinations.
    std::array<std::uint8_t, 8> shown;
};

const Class product_0041 = {0x04, 0x02,  0x01,  keys_00,
                            0x00, false, false, {0x00, 0x04, 0x02, 0x06, 0x08, 0x0C, 0x02, 0x06}};
const Class family_00 = {0x04, 0x01,  0x01,  keys_00,
                         0x00, false, false, {0x00, 0x04, 0x01, 0x05, 0x08, 0x0C, 0x01, 0x05}};
const Class products_245 = {0x04, 0x01, 0x02,  keys_245,
                            0x01, true, false, {0x00, 0x04, 0x01, 0x05, 0x08, 0x0C, 0x01, 0x05}};
const Class product_A346 = {0x08, 0x01,  0x04, keys_a3,
                            0x01, false, true, {0x00, 0x08, 0x01, 0x01, 0x08, 0x08, 0x01, 0x01}};
const Class family_A3 = {0x04, 0x01,  0x04, keys_a3,
                         0x00, false, true, {0x00, 0x04, 0x01, 0x05, 0x08, 0x0C, 0x01, 0x05}};
const Class others = {0x04, 0x01,  0x02,  keys_other,
                      0x00, false, false, {0x00, 0x04, 0x01, 0x05, 0x08, 0x0C, 0x01, 0x05}};

struct Product : Class {
    Product(std::uint32_t product_id, const Class& own) : Class(own), id(product_id) {}
    std::uint32_t id;
};

/// The products that are named, those beside them, and those of more than 16 bits.
const Product products[] = {
    {0x0000, family_00}, {0x0040, family_00},  {0x0041, product_0041}, {0x0042, family_00},
    {0x00FF, family_00}, {0x10041, family_00}, {0x0141, others},       {0x24C9, others},
    {0x235D, others},    {0x245C, others},     {0x245D, products_245}, {0x245E, products_245},
    {0x245F, others},    {0x255E, others},     {0x1245D, others},      {0x1245E, others},
    {0xA246, others},    {0xA300, family_A3},  {0xA345, family_A3},    {0xA346, product_A346},
    {0xA347, family_A3}, {0xA3FF, family_A3},  {0x1A346, family_A3},   {0xA446, others},
};

const Class& class_of(std::uint32_t product_id) {
    static const std::map<std::uint32_t, const Class&> named = {
        {0x0041, product_0041}, {0x245D, products_245}, {0x245E, products_245}, {0xA346, product_A346}};
    static const std::map<std::uint32_t, const Class&> families = {{0x00, family_00}, {0xA3, family_A3}};
    if (const auto found = named.find(product_id); found != named.end()) {
        return found->second;
    }
    const auto found = families.find(product_id / 0x100);
    return found != families.end() ? found->second : others;
}

class Jabra : public DriverFixture {
  protected:
    Built show(jabra_cc& driver, std::uint32_t state, std::size_t size = device_buffer_size) {
        log_->clear();
        return built([&](auto output) { return driver.set_led_event_data(state, output); }, size);
    }
    Built show_mute(jabra_cc& driver, bool mute, std::size_t size = device_buffer_size) {
        log_->clear();
        return built([&](auto output) { return driver.set_mute_data(mute, output); }, size);
    }
    Built toggle(jabra_cc& driver, std::uint32_t bit, std::size_t size = device_buffer_size) {
        log_->clear();
        return built([&](auto output) { return driver.toggle_led(bit, output); }, size);
    }
    std::int32_t read(jabra_cc& driver, const Bytes& report) {
        log_->clear();
        return driver.process_read(report);
    }
};
class JabraMute : public Jabra {};
class JabraRead : public Jabra {};
class JabraFollowUp : public Jabra {};

// ---- headset states

TEST_F(Jabra, has_a_bit_for_each_kind_of_indicator) {
    for (const Product& product : products) {
        const OpenJabra driver(product.id);
        EXPECT_EQ(driver.indicator_bit(OpenJabra::Indicator::none), 0x00) << hex(product.id);
        EXPECT_EQ(driver.indicator_bit(OpenJabra::Indicator::ring), product.ring) << hex(product.id);
        EXPECT_EQ(driver.indicator_bit(OpenJabra::Indicator::off_hook), product.off_hook) << hex(product.id);
        for (unsigned kind = 3; kind <= 0xFF; ++kind) {
            EXPECT_EQ(driver.indicator_bit(static_cast<OpenJabra::Indicator>(kind)), 0xFF) << hex(product.id);
        }
    }
}

TEST_F(Jabra, shows_every_state_on_every_product) {
    for (const Product& product : products) {
        for (const std::uint32_t state : headset_states) {
            OpenJabra driver(product.id);
            const std::uint8_t bits = product.shown[state % 8];
            EXPECT_EQ(show(driver, state), report({0x02, bits, 0x01}))
                << hex(product.id) << ", " << hex(state);
            EXPECT_EQ(driver.headset_leds_state_, bits) << hex(product.id) << ", " << hex(state);
            EXPECT_EQ(log_->lines(), Lines{line("set_led_event_data", "state =" + hex(bits))});
        }
    }
}

TEST_F(Jabra, is_the_same_on_all_products_but_for_two_families_and_four_products) {
    for (const std::uint32_t product_id : product_ids) {
        SCOPED_TRACE(hex(product_id));
        const Class& own = class_of(product_id);
        OpenJabra driver(product_id);
        for (std::uint32_t state = 0; state < own.shown.size(); ++state) {
            EXPECT_EQ(show(driver, state), report({0x02, own.shown[state], 0x01})) << state;
        }
        show(driver, HEADSET_STATE_IDLE);
        EXPECT_EQ(toggle(driver, 0x1), report({0x02, own.toggled, 0x00}));
        EXPECT_EQ(show_mute(driver, true), report({0x02, own.mute, 0x01}));
        for (const unsigned value : key_values) {
            EXPECT_EQ(driver.process_read(input(0x02, value)), key_in(own.keys, value)) << hex(value);
        }
        driver.headset_leds_state_ = 0x0C;
        EXPECT_EQ(driver.handle_headset_reponse(HEADSET_KEY_HOOK), own.two_follow_ups ? 0x11U : 0x1U);
        EXPECT_EQ(driver.query_state_follow_up(HEADSET_STATE_INUSE), own.in_use_toggles ? 1U : 0U);
        driver.headset_leds_state_ = 0xFB;
        EXPECT_EQ(driver.handle_headset_reponse(HEADSET_KEY_HOOK), own.two_follow_ups ? 0x21U : 0x1U);
    }
}

TEST_F(Jabra, of_product_A346_stops_ringing_beside_a_call_in_use) {
    jabra_cc driver(0xA346);
    EXPECT_EQ(show(driver, HEADSET_STATE_ALERTING), report({0x02, 0x08, 0x01}));
    EXPECT_EQ(show(driver, HEADSET_STATE_ALERTING | HEADSET_STATE_INUSE), report({0x02, 0x01, 0x01}));
}

TEST_F(Jabra, forgets_with_every_state_what_was_shown) {
    for (const Product& product : products) {
        for (const std::uint32_t state : headset_states) {
            OpenJabra driver(product.id);
            driver.headset_leds_state_ = 0xFF;
            const std::uint8_t bits = product.shown[state % 8];
            EXPECT_EQ(show(driver, state), report({0x02, bits, 0x01}));
            EXPECT_EQ(driver.headset_leds_state_, bits);
        }
    }
}

TEST_F(Jabra, writes_after_its_line) {
    jabra_cc driver(0x24C9);
    Bytes output(3, unwritten);
    std::vector<Bytes> at_lines;
    log_->on_line([&](const std::string&) { at_lines.push_back(output); });
    driver.set_led_event_data(HEADSET_STATE_INUSE, output);
    driver.set_mute_data(true, output);
    log_->on_line({});
    EXPECT_EQ(at_lines, (std::vector<Bytes>{{unwritten, unwritten, unwritten}, {0x02, 0x01, 0x01}}));
    EXPECT_EQ(output, (Bytes{0x02, 0x03, 0x01}));
}

TEST_F(Jabra, records_a_state_whose_report_does_not_fit) {
    for (std::size_t size = 0; size <= memory_size; ++size) {
        OpenJabra driver(0x24C9);
        EXPECT_EQ(show(driver, HEADSET_STATE_INUSE, size), size < 3 ? nothing() : report({0x02, 0x01, 0x01}));
        EXPECT_EQ(driver.headset_leds_state_, 0x01);
        EXPECT_EQ(log_->lines(), Lines{line("set_led_event_data", "state =0x1")});
    }
}

// ---- mute

TEST_F(JabraMute, is_one_bit_of_the_record_on_every_product) {
    for (const Product& product : products) {
        for (unsigned before = 0; before <= 0xFF; ++before) {
            for (const bool mute : {true, false}) {
                OpenJabra driver(product.id);
                driver.headset_leds_state_ = static_cast<std::uint8_t>(before);
                const unsigned unmuted = before & ~unsigned{product.mute};
                const auto bits = static_cast<std::uint8_t>(mute ? unmuted + product.mute : unmuted);
                EXPECT_EQ(show_mute(driver, mute), report({0x02, bits, 0x01})) << hex(product.id);
                EXPECT_EQ(driver.headset_leds_state_, bits) << hex(product.id);
                EXPECT_EQ(log_->lines(), Lines{line("set_mute_data", "state =" + hex(bits))});
            }
        }
    }
}

TEST_F(JabraMute, needs_a_buffer_of_three_bytes) {
    EXPECT_EQ(jabra_cc(0x24C9).set_mute_data(true, {}), -1);
    for (std::size_t size = 0; size <= memory_size; ++size) {
        OpenJabra driver(0x24C9);
        EXPECT_EQ(show_mute(driver, true, size), size < 3 ? nothing() : report({0x02, 0x02, 0x01})) << size;
        EXPECT_EQ(driver.headset_leds_state_, size < 3 ? 0 : 0x02) << size;
        EXPECT_EQ(log_->lines().size(), size < 3 ? 0U : 1U) << size;
    }
}

// ---- input reports

TEST_F(JabraRead, finds_every_key_and_logs_every_other) {
    for (const Product& product : products) {
        jabra_cc driver(product.id);
        for (unsigned value = 0; value <= 0xFF; ++value) {
            const std::int32_t key = key_in(product.keys, value);
            EXPECT_EQ(read(driver, input(0x02, value)), key) << hex(product.id) << ", " << hex(value);
            Lines wanted = {line("process_read", first_bytes(input(0x02, value)))};
            if (key == HEADSET_KEY_INVALID) {
                wanted.push_back(line("process_read", "unsupported usage"));
            }
            EXPECT_EQ(log_->lines(), wanted);
        }
    }
}

TEST_F(JabraRead, logs_every_other_report_id_except_04) {
    for (const Product& product : products) {
        jabra_cc driver(product.id);
        for (unsigned id = 0; id <= 0xFF; ++id) {
            if (id == 0x02) {
                continue;
            }
            for (const unsigned value : key_values) {
                EXPECT_EQ(read(driver, input(id, value)), HEADSET_KEY_INVALID)
                    << hex(product.id) << ", " << id;
                Lines wanted = {line("process_read", first_bytes(input(id, value)))};
                if (id != 0x04) {
                    wanted.push_back(line("process_read", "unsupported report id"));
                }
                EXPECT_EQ(log_->lines(), wanted);
            }
        }
    }
}

TEST_F(JabraRead, logs_eight_bytes_of_a_report_of_any_length) {
    const Bytes longest = {0x02, 0x01, 0x03, 0x10, 0xAB, 0xFF, 0x07, 0x80, 0x99};
    jabra_cc driver(0x24C9);
    const Lines wanted[] = {
        {line("process_read", "0x0 0x0 0x0 0x0, 0x0 0x0 0x0 0x0")},
        {line("process_read", "0x2 0x0 0x0 0x0, 0x0 0x0 0x0 0x0")},
        {line("process_read", "0x2 0x1 0x0 0x0, 0x0 0x0 0x0 0x0")},
        {line("process_read", "0x2 0x1 0x3 0x0, 0x0 0x0 0x0 0x0")},
        {line("process_read", "0x2 0x1 0x3 0x10, 0x0 0x0 0x0 0x0")},
        {line("process_read", "0x2 0x1 0x3 0x10, 0xab 0x0 0x0 0x0")},
        {line("process_read", "0x2 0x1 0x3 0x10, 0xab 0xff 0x0 0x0")},
        {line("process_read", "0x2 0x1 0x3 0x10, 0xab 0xff 0x7 0x0")},
        {line("process_read", "0x2 0x1 0x3 0x10, 0xab 0xff 0x7 0x80")},
        {line("process_read", "0x2 0x1 0x3 0x10, 0xab 0xff 0x7 0x80")},
    };
    for (std::size_t length = 0; length <= longest.size(); ++length) {
        EXPECT_EQ(read(driver, shortened(longest, length)),
                  length < 2 ? HEADSET_KEY_INVALID : HEADSET_KEY_HOOK)
            << length;
        EXPECT_EQ(log_->lines(), wanted[length]);
    }
}

TEST_F(JabraRead, asks_for_two_bytes_before_it_looks_at_the_report_id) {
    jabra_cc driver(0x0041);  // whose key of value 0 ends a call
    for (unsigned id = 0; id <= 0xFF; ++id) {
        const Bytes report = {static_cast<std::uint8_t>(id)};
        EXPECT_EQ(read(driver, report), HEADSET_KEY_INVALID);
        EXPECT_EQ(log_->lines(), Lines{line("process_read", first_bytes(report))});
    }
}

// ---- follow-ups

TEST_F(JabraFollowUp, to_a_key_is_one_or_two_toggles_after_the_hook_alone) {
    for (const Product& product : products) {
        OpenJabra driver(product.id);
        for (unsigned bits = 0; bits <= 0xFF; ++bits) {
            driver.headset_leds_state_ = static_cast<std::uint8_t>(bits);
            const std::uint32_t two = bits % 8 >= 4 ? 0x11 : 0x21;
            for (const std::int32_t key : key_codes) {
                const std::uint32_t wanted = key != HEADSET_KEY_HOOK ? 0 : product.two_follow_ups ? two : 1;
                EXPECT_EQ(driver.handle_headset_reponse(key), wanted) << hex(product.id) << ", " << key;
            }
        }
    }
    EXPECT_EQ(log_->lines(), Lines{});
}

TEST_F(JabraFollowUp, toggles_with_the_record_and_off_hook_where_the_product_wants_it) {
    for (const Product& product : products) {
        OpenJabra driver(product.id);
        for (unsigned bits = 0; bits <= 0xFF; ++bits) {
            driver.headset_leds_state_ = static_cast<std::uint8_t>(bits);
            const auto shown = static_cast<std::uint8_t>(bits | product.toggled);
            EXPECT_EQ(toggle(driver, 0x1), report({0x02, shown, 0x00})) << hex(product.id) << ", " << bits;
            EXPECT_EQ(log_->lines(), Lines{line("toggle_led", "enter, state = 1")});
            EXPECT_EQ(driver.headset_leds_state_, bits);
        }
    }
}

TEST_F(JabraFollowUp, toggles_off_hook_alone_on_every_product) {
    for (const Product& product : products) {
        OpenJabra driver(product.id);
        driver.headset_leds_state_ = 0xFF;
        EXPECT_EQ(toggle(driver, 0x10), report({0x02, 0x01, 0x01})) << hex(product.id);
        EXPECT_EQ(log_->lines(), Lines{line("toggle_led", "enter, state = 16")});
        EXPECT_EQ(toggle(driver, 0x20), report({0x02, 0x01, 0x00})) << hex(product.id);
        EXPECT_EQ(log_->lines(), Lines{line("toggle_led", "enter, state = 32")});
        EXPECT_EQ(driver.headset_leds_state_, 0xFF);
    }
}

TEST_F(JabraFollowUp, toggles_for_no_other_bit) {
    const std::map<std::uint32_t, Built> reports = {{0x01, report({0x02, 0x01, 0x00})},
                                                    {0x10, report({0x02, 0x01, 0x01})},
                                                    {0x20, report({0x02, 0x01, 0x00})}};
    jabra_cc driver(0x245E);
    for (const std::uint32_t mask : follow_up_masks) {
        const auto found = reports.find(mask);
        EXPECT_EQ(toggle(driver, mask), found != reports.end() ? found->second : nothing(0)) << hex(mask);
        EXPECT_EQ(log_->lines(), Lines{line("toggle_led", toggle_text(mask))});
    }
}

TEST_F(JabraFollowUp, needs_room_for_a_report) {
    jabra_cc driver(0x245E);
    for (std::size_t size = 0; size <= memory_size; ++size) {
        EXPECT_EQ(toggle(driver, 0x01, size), size < 3 ? nothing() : report({0x02, 0x01, 0x00})) << size;
        EXPECT_EQ(toggle(driver, 0x10, size), size < 3 ? nothing() : report({0x02, 0x01, 0x01})) << size;
        EXPECT_EQ(toggle(driver, 0x20, size), size < 3 ? nothing() : report({0x02, 0x01, 0x00})) << size;
    }
}

TEST_F(JabraFollowUp, to_in_use_alone_is_a_toggle_where_the_record_has_hold) {
    for (const Product& product : products) {
        OpenJabra driver(product.id);
        for (unsigned bits = 0; bits <= 0xFF; ++bits) {
            driver.headset_leds_state_ = static_cast<std::uint8_t>(bits);
            for (const std::uint32_t state : headset_states) {
                const bool asks = product.in_use_toggles && bits % 16 >= 8 && state == 2;
                EXPECT_EQ(driver.query_state_follow_up(state), asks ? 1U : 0U)
                    << hex(product.id) << ", " << bits << ", " << hex(state);
            }
        }
    }
    EXPECT_EQ(log_->lines(), Lines{});
}

TEST_F(JabraFollowUp, to_the_hook_of_a_ringing_245E_is_the_record_and_then_an_update_of_off_hook) {
    jabra_cc driver(0x245E);
    show(driver, HEADSET_STATE_ALERTING);
    ASSERT_EQ(driver.handle_headset_reponse(read(driver, {0x02, 0x05})), 0x11U);
    EXPECT_EQ(toggle(driver, 0x01), report({0x02, 0x05, 0x00}));
    EXPECT_EQ(toggle(driver, 0x10), report({0x02, 0x01, 0x01}));
}

}  // namespace
}  // namespace headset_plugin::driver_test::jabra
