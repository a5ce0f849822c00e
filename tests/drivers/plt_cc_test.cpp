#include "drivers/plt_cc.h"

#include <gtest/gtest.h>
#include <typeinfo>

#include "tests/drivers/fixed_reports.h"

namespace headset_plugin::driver_test::plt {
namespace {

std::string line(const std::string& function, const std::string& text) {
    return "3rdPartyHeadsetPlugin: headset_plugin::plt_cc::" + function + ": " + text + "\n";
}

template <typename T>
Driver make(std::uint32_t product_id) {
    return std::make_shared<T>(product_id);
}

struct Model {
    const char* name;
    Driver (*make)(std::uint32_t product_id);
    std::uint32_t product_id;
    std::uint8_t ring;
    std::uint8_t off_hook;
    std::uint8_t mute;
    std::vector<unsigned> accepted;
    KeyMap keys;
};

const KeyMap plain_keys = {{0x00, HEADSET_KEY_END_CALL},
                           {0x01, HEADSET_KEY_HOOK},
                           {0x02, HEADSET_KEY_HOOK},
                           {0x03, HEADSET_KEY_MUTE}};
const KeyMap keys_7225 = {{0x00, HEADSET_KEY_END_CALL},
                          {0x01, HEADSET_KEY_HOOK},
                          {0x02, HEADSET_KEY_HOOK},
                          {0x05, HEADSET_KEY_MUTE}};

const Model models[] = {
    {"family 02", make<plt_cc>, 0x0200, 0x01, 0x04, 0x03, {0x01, 0x02}, plain_keys},
    {"family 02", make<plt_cc>, 0x02AB, 0x01, 0x04, 0x03, {0x01, 0x02}, plain_keys},
    {"family 02", make<plt_cc>, 0x02FF, 0x01, 0x04, 0x03, {0x01, 0x02}, plain_keys},
    {"family 00", make<plt_cc>, 0x00AC, 0x01, 0x04, 0x03, {0x01, 0x02}, plain_keys},
    {"family AA", make<plt_cc>, 0xAAFF, 0x01, 0x04, 0x03, {0x01, 0x02}, plain_keys},
    {"family AB", make<plt_cc>, 0xAB00, 0x18, 0x17, 0x09, {0x01, 0x02}, plain_keys},
    {"family AB", make<plt_cc>, 0xAB02, 0x18, 0x17, 0x09, {0x01, 0x02}, plain_keys},
    {"family AC", make<plt_cc>, 0xACFF, 0x18, 0x17, 0x09, {0x01, 0x02}, plain_keys},
    {"family AC of 16 bits", make<plt_cc>, 0x2AC01, 0x18, 0x17, 0x09, {0x01, 0x02}, plain_keys},
    {"family AD", make<plt_cc>, 0xAD00, 0x01, 0x04, 0x03, {0x01, 0x02}, plain_keys},
    {"family C0, plain driver", make<plt_cc>, 0xC056, 0x01, 0x04, 0x03, {0x01, 0x02}, plain_keys},
    {"Blackwire", make<plt_blackwire_cc>, 0xC056, 0x18, 0x17, 0x09, {0x08}, plain_keys},
    {"Blackwire, family 02", make<plt_blackwire_cc>, 0x0200, 0x18, 0x17, 0x09, {0x08}, plain_keys},
    {"7225", make<plt_blackwire_7225_cc>, 0x4305, 0x18, 0x17, 0x09, {0x0B}, keys_7225},
    {"7225, family 02", make<plt_blackwire_7225_cc>, 0x0200, 0x18, 0x17, 0x09, {0x0B}, keys_7225},
};

class Plantronics : public DriverFixture {
  protected:
    Built show(call_control_generic& driver, std::uint32_t state, std::size_t size = device_buffer_size) {
        log_->clear();
        return built([&](auto output) { return driver.set_led_event_data(state, output); }, size);
    }
    Built show_mute(call_control_generic& driver, bool mute, std::size_t size = device_buffer_size) {
        log_->clear();
        return built([&](auto output) { return driver.set_mute_data(mute, output); }, size);
    }
    Built toggle(call_control_generic& driver, std::uint32_t bit, std::size_t size = device_buffer_size) {
        log_->clear();
        return built([&](auto output) { return driver.toggle_led(bit, output); }, size);
    }
    std::int32_t read(call_control_generic& driver, const Bytes& report) {
        log_->clear();
        return driver.process_read(report);
    }
    std::uint8_t record(const WithRecord<plt_cc>& driver) const { return driver.headset_leds_state_; }
};
class PlantronicsMute : public Plantronics {};
class PlantronicsRead : public Plantronics {};
class PlantronicsFollowUp : public Plantronics {};
class PlantronicsChooser : public Plantronics {};

// ---- headset states

enum class Shown { unknown, ringing, in_use, never };

/// What is shown for alerting, in use and held in all combinations; idle is a matter of its own.
constexpr Shown state_rows[] = {Shown::unknown, Shown::ringing, Shown::in_use, Shown::in_use,
                                Shown::never,   Shown::never,   Shown::never,  Shown::never};

Built wanted_report(const Model& model, std::uint32_t state) {
    if (state == HEADSET_STATE_IDLE) {
        return report({model.off_hook, 0});
    }
    switch (state_rows[state % 8]) {
        case Shown::unknown:
            return report({0x01, 0});
        case Shown::ringing:
            return report({model.ring, 1});
        case Shown::in_use:
            return report({model.off_hook, 1});
        case Shown::never:
            break;
    }
    return nothing();
}

TEST_F(Plantronics, shows_every_state_on_every_model) {
    for (const Model& model : models) {
        for (const std::uint32_t state : headset_states) {
            const Driver driver = model.make(model.product_id);
            EXPECT_EQ(show(*driver, state), wanted_report(model, state))
                << model.name << ", state " << hex(state);
        }
    }
}

/// The first model of this name.
const Model& model_of(const char* name) {
    return *std::find_if(std::begin(models), std::end(models),
                         [&](const Model& model) { return std::string_view(model.name) == name; });
}

TEST_F(Plantronics, is_the_same_on_all_products_but_for_the_report_ids_of_two_families) {
    for (const std::uint32_t product_id : product_ids) {
        const std::uint32_t family = product_id / 0x100;
        const char* const plain = family == 0xAB ? "family AB" : family == 0xAC ? "family AC" : "family 02";
        for (const Model* model : {&model_of(plain), &model_of("Blackwire"), &model_of("7225")}) {
            SCOPED_TRACE(std::string(model->name) + ", " + hex(product_id));
            const Driver driver = model->make(product_id);
            for (std::uint32_t state = 0; state < std::size(state_rows); ++state) {
                EXPECT_EQ(show(*driver, state), wanted_report(*model, state)) << state;
            }
            EXPECT_EQ(show_mute(*driver, true), report({model->mute, 1}));
            EXPECT_EQ(toggle(*driver, 0x1), report({model->ring, unwritten}));
            EXPECT_EQ(driver->query_state_follow_up(HEADSET_STATE_IDLE), 1U);
            for (const unsigned id : model->accepted) {
                for (unsigned value = 0; value < 8; ++value) {
                    EXPECT_EQ(driver->process_read(input(id, value)), key_in(model->keys, value)) << value;
                }
            }
        }
    }
}

TEST_F(Plantronics, sends_off_hook_for_ringing_beside_a_call_in_use) {
    plt_cc driver(0x0200);
    EXPECT_EQ(show(driver, HEADSET_STATE_ALERTING | HEADSET_STATE_INUSE), report({0x04, 1}));
}

TEST_F(Plantronics, never_shows_hold_and_keeps_its_record_without_a_line) {
    WithRecord<plt_cc> driver(0x0200);
    for (unsigned bits = 0; bits <= 0xFF; ++bits) {
        driver.headset_leds_state_ = static_cast<std::uint8_t>(bits);
        for (const std::uint32_t state : {0x4U, 0x5U, 0x6U, 0x7U, 0xCU, 0x84U, 0x80000004U, 0xFFFFFFFFU}) {
            EXPECT_EQ(show(driver, state), nothing()) << hex(state);
            EXPECT_EQ(log_->lines(), Lines{});
            EXPECT_EQ(record(driver), bits);
        }
    }
}

TEST_F(Plantronics, records_and_logs_whether_it_rings_or_is_in_use) {
    constexpr unsigned lit_rows[] = {0, 1, 1, 1};
    for (const unsigned before : {0x00U, 0x01U, 0xFFU}) {
        for (const std::uint32_t state : headset_states) {
            if (state_rows[state % 8] == Shown::never) {
                continue;
            }
            WithRecord<plt_cc> driver(0x0200);
            driver.headset_leds_state_ = static_cast<std::uint8_t>(before);
            show(driver, state);
            const unsigned lit = lit_rows[state % 4];
            EXPECT_EQ(record(driver), lit) << hex(state);
            EXPECT_EQ(log_->lines(), (Lines{line("set_led_event_data", "state =" + hex(lit)),
                                            line("set_led_event_data", "exit")}));
        }
    }
}

TEST_F(Plantronics, writes_between_its_two_lines) {
    plt_cc driver(0x0200);
    Bytes output(2, unwritten);
    std::vector<Bytes> at_lines;
    log_->on_line([&](const std::string&) { at_lines.push_back(output); });
    driver.set_led_event_data(HEADSET_STATE_INUSE, output);
    log_->on_line({});
    EXPECT_EQ(at_lines, (std::vector<Bytes>{{unwritten, unwritten}, {0x04, 1}}));
    EXPECT_EQ(output, (Bytes{0x04, 1}));
}

TEST_F(Plantronics, logs_its_own_name_on_every_model) {
    for (const Model& model : models) {
        const Driver driver = model.make(model.product_id);
        show(*driver, HEADSET_STATE_ALERTING);
        EXPECT_EQ(log_->lines(),
                  (Lines{line("set_led_event_data", "state =0x1"), line("set_led_event_data", "exit")}));
    }
}

TEST_F(Plantronics, records_a_state_whose_report_does_not_fit) {
    for (std::size_t size = 0; size <= memory_size; ++size) {
        WithRecord<plt_cc> driver(0x0200);
        EXPECT_EQ(show(driver, HEADSET_STATE_INUSE, size), size < 2 ? nothing() : report({0x04, 1})) << size;
        EXPECT_EQ(record(driver), 1);
        EXPECT_EQ(log_->lines(),
                  (Lines{line("set_led_event_data", "state =0x1"), line("set_led_event_data", "exit")}));
    }
}

// ---- mute

TEST_F(PlantronicsMute, is_shown_on_every_model) {
    for (const Model& model : models) {
        const Driver driver = model.make(model.product_id);
        EXPECT_EQ(show_mute(*driver, true), report({model.mute, 1})) << model.name;
        EXPECT_EQ(show_mute(*driver, false), report({model.mute, 0})) << model.name;
    }
}

TEST_F(PlantronicsMute, logs_the_record_and_leaves_it_alone) {
    WithRecord<plt_cc> driver(0x0200);
    for (unsigned bits = 0; bits <= 0xFF; ++bits) {
        driver.headset_leds_state_ = static_cast<std::uint8_t>(bits);
        for (const bool mute : {true, false}) {
            show_mute(driver, mute);
            EXPECT_EQ(log_->lines(), Lines{line("set_mute_data", "mute_state =" + hex(bits))});
            EXPECT_EQ(record(driver), bits);
        }
    }
}

TEST_F(PlantronicsMute, needs_a_buffer_of_three_bytes_for_its_two) {
    plt_cc driver(0x0200);
    EXPECT_EQ(driver.set_mute_data(true, {}), -1);
    for (std::size_t size = 0; size <= memory_size; ++size) {
        EXPECT_EQ(show_mute(driver, true, size), size < 3 ? nothing() : report({0x03, 1})) << size;
        EXPECT_EQ(log_->lines().size(), size < 3 ? 0U : 1U) << size;
    }
}

TEST_F(PlantronicsMute, is_written_after_its_line) {
    plt_cc driver(0x0200);
    Bytes output(3, unwritten);
    std::vector<Bytes> at_lines;
    log_->on_line([&](const std::string&) { at_lines.push_back(output); });
    driver.set_mute_data(true, output);
    log_->on_line({});
    EXPECT_EQ(at_lines, (std::vector<Bytes>{{unwritten, unwritten, unwritten}}));
    EXPECT_EQ(output, (Bytes{0x03, 1, unwritten}));
}

// ---- input reports

TEST_F(PlantronicsRead, finds_every_key_and_logs_every_other) {
    for (const Model& model : models) {
        const Driver driver = model.make(model.product_id);
        for (const unsigned id : model.accepted) {
            for (unsigned value = 0; value <= 0xFF; ++value) {
                const std::int32_t key = key_in(model.keys, value);
                EXPECT_EQ(read(*driver, input(id, value)), key) << model.name << ", " << value;
                Lines wanted = {line("process_read", first_bytes(input(id, value)))};
                if (key == HEADSET_KEY_INVALID) {
                    wanted.push_back(line("process_read", "unsupported key value [" + hex(value) + "]"));
                }
                EXPECT_EQ(log_->lines(), wanted);
            }
        }
    }
}

TEST_F(PlantronicsRead, ignores_every_other_report_id_without_another_line) {
    for (const Model& model : models) {
        const Driver driver = model.make(model.product_id);
        for (unsigned id = 0; id <= 0xFF; ++id) {
            if (std::find(model.accepted.begin(), model.accepted.end(), id) != model.accepted.end()) {
                continue;
            }
            // 0x77, a key value that is unknown to all, would be logged.
            for (const unsigned value : {0x00U, 0x01U, 0x02U, 0x03U, 0x05U, 0x77U}) {
                EXPECT_EQ(read(*driver, input(id, value)), HEADSET_KEY_INVALID) << model.name << ", " << id;
                EXPECT_EQ(log_->lines(), Lines{line("process_read", first_bytes(input(id, value)))});
            }
        }
    }
}

TEST_F(PlantronicsRead, of_a_7225_mutes_with_5_of_report_0B_and_ignores_report_08) {
    plt_blackwire_7225_cc driver(0x4305);
    EXPECT_EQ(read(driver, {0x0B, 0x05}), HEADSET_KEY_MUTE);
    EXPECT_EQ(read(driver, {0x08, 0x05}), HEADSET_KEY_INVALID);
    EXPECT_EQ(read(driver, {0x0B, 0x03}), HEADSET_KEY_INVALID);
}

class MutesWithHookValue final : public plt_cc {
  public:
    using plt_cc::plt_cc;

  protected:
    std::uint8_t mute_key_value() const override { return 0x02; }
};

TEST_F(PlantronicsRead, takes_a_value_for_the_hook_before_it_takes_it_for_mute) {
    MutesWithHookValue driver(0x0200);
    EXPECT_EQ(read(driver, {0x01, 0x02}), HEADSET_KEY_HOOK);
    EXPECT_EQ(read(driver, {0x01, 0x03}), HEADSET_KEY_INVALID);
}

TEST_F(PlantronicsRead, logs_eight_bytes_of_a_report_of_any_length) {
    const Bytes longest = {0x01, 0x02, 0x03, 0x10, 0xAB, 0xFF, 0x07, 0x80, 0x99};
    plt_cc driver(0x0200);
    const Lines wanted[] = {
        {line("process_read", "0x0 0x0 0x0 0x0, 0x0 0x0 0x0 0x0")},
        {line("process_read", "0x1 0x0 0x0 0x0, 0x0 0x0 0x0 0x0")},
        {line("process_read", "0x1 0x2 0x0 0x0, 0x0 0x0 0x0 0x0")},
        {line("process_read", "0x1 0x2 0x3 0x0, 0x0 0x0 0x0 0x0")},
        {line("process_read", "0x1 0x2 0x3 0x10, 0x0 0x0 0x0 0x0")},
        {line("process_read", "0x1 0x2 0x3 0x10, 0xab 0x0 0x0 0x0")},
        {line("process_read", "0x1 0x2 0x3 0x10, 0xab 0xff 0x0 0x0")},
        {line("process_read", "0x1 0x2 0x3 0x10, 0xab 0xff 0x7 0x0")},
        {line("process_read", "0x1 0x2 0x3 0x10, 0xab 0xff 0x7 0x80")},
        {line("process_read", "0x1 0x2 0x3 0x10, 0xab 0xff 0x7 0x80")},
    };
    for (std::size_t length = 0; length <= longest.size(); ++length) {
        EXPECT_EQ(read(driver, shortened(longest, length)),
                  length < 2 ? HEADSET_KEY_INVALID : HEADSET_KEY_HOOK)
            << length;
        EXPECT_EQ(log_->lines(), wanted[length]);
    }
}

TEST_F(PlantronicsRead, finds_no_key_in_a_report_that_ends_before_it) {
    for (const Model& model : models) {
        const Driver driver = model.make(model.product_id);
        for (unsigned id = 0; id <= 0xFF; ++id) {
            const Bytes report = {static_cast<std::uint8_t>(id)};
            EXPECT_EQ(read(*driver, report), HEADSET_KEY_INVALID);
            EXPECT_EQ(log_->lines(), Lines{line("process_read", first_bytes(report))});
        }
    }
}

// ---- follow-ups

TEST_F(PlantronicsFollowUp, to_a_key_is_a_toggle_after_the_hook_alone) {
    for (const Model& model : models) {
        const Driver driver = model.make(model.product_id);
        for (const std::int32_t key : key_codes) {
            EXPECT_EQ(driver->handle_headset_reponse(key), key == 2 ? 1U : 0U) << key;
        }
    }
    EXPECT_EQ(log_->lines(), Lines{});
}

TEST_F(PlantronicsFollowUp, toggles_with_the_ring_report_and_the_callers_value) {
    for (const Model& model : models) {
        const Driver driver = model.make(model.product_id);
        show(*driver, HEADSET_STATE_INUSE);
        for (const std::uint8_t value : Bytes{0x00, 0x01, 0xFF}) {
            Bytes output(device_buffer_size, value);
            EXPECT_EQ(driver->toggle_led(0x1, output), 2) << model.name;
            EXPECT_EQ(output, (Bytes{model.ring, value, value, value})) << model.name;
        }
    }
}

TEST_F(PlantronicsFollowUp, toggles_for_no_other_bit) {
    for (const Model& model : models) {
        const Driver driver = model.make(model.product_id);
        for (const std::uint32_t mask : follow_up_masks) {
            EXPECT_EQ(toggle(*driver, mask), mask == 0x1 ? report({model.ring, unwritten}) : nothing(0))
                << hex(mask);
            EXPECT_EQ(log_->lines(), Lines{line("toggle_led", toggle_text(mask))});
        }
    }
}

TEST_F(PlantronicsFollowUp, logs_the_bit_and_leaves_the_record_alone) {
    WithRecord<plt_cc> driver(0x0200);
    driver.headset_leds_state_ = 0x5A;
    toggle(driver, 0x1);
    EXPECT_EQ(log_->lines(), Lines{line("toggle_led", "enter, state = 1")});
    EXPECT_EQ(record(driver), 0x5A);
}

TEST_F(PlantronicsFollowUp, needs_room_for_a_report) {
    plt_cc driver(0x0200);
    for (std::size_t size = 0; size <= memory_size; ++size) {
        Built wanted = report({0x01, unwritten});
        EXPECT_EQ(toggle(driver, 0x1, size), size < 2 ? nothing() : wanted) << size;
    }
}

TEST_F(PlantronicsFollowUp, to_idle_is_a_toggle_unless_the_record_forbids_it) {
    WithRecord<plt_cc> driver(0x0200);
    for (unsigned bits = 0; bits <= 0xFF; ++bits) {
        driver.headset_leds_state_ = static_cast<std::uint8_t>(bits);
        for (const std::uint32_t state : headset_states) {
            const bool asks = state == 0 && bits % 4 < 2;
            EXPECT_EQ(driver.query_state_follow_up(state), asks ? 1U : 0U) << bits << ", " << hex(state);
        }
    }
    EXPECT_EQ(log_->lines(), Lines{});
}

TEST_F(PlantronicsFollowUp, to_idle_is_a_toggle_whatever_was_shown) {
    for (const Model& model : models) {
        const Driver driver = model.make(model.product_id);
        for (const std::uint32_t shown : headset_states) {
            show(*driver, shown);
            show_mute(*driver, true);
            EXPECT_EQ(driver->query_state_follow_up(HEADSET_STATE_IDLE), 1U)
                << model.name << ", " << hex(shown);
        }
    }
}

TEST_F(PlantronicsFollowUp, to_a_hook_key_is_the_ring_report) {
    plt_blackwire_cc driver(0xC056);
    EXPECT_EQ(driver.handle_headset_reponse(read(driver, {0x08, 0x01})), 1U);
    EXPECT_EQ(toggle(driver, 1), report({0x18, unwritten}));
    EXPECT_EQ(driver.handle_headset_reponse(read(driver, {0x08, 0x00})), 0U);
}

// ---- who makes them

TEST_F(PlantronicsChooser, goes_by_the_high_byte_of_16_alone) {
    for (const std::uint32_t product_id : product_ids) {
        for (const std::uint32_t above : {0x0U, 0x10000U, 0xC0430000U}) {
            const Driver driver = create_plantronics_driver(above + product_id);
            ASSERT_NE(driver, nullptr);
            const auto& made = *driver;
            const std::uint32_t family = product_id / 0x100;
            const auto& wanted = family == 0xC0   ? typeid(plt_blackwire_cc)
                                 : family == 0x43 ? typeid(plt_blackwire_7225_cc)
                                                  : typeid(plt_cc);
            EXPECT_TRUE(typeid(made) == wanted) << hex(above + product_id);
        }
    }
}

TEST_F(PlantronicsChooser, tells_the_driver_its_product) {
    EXPECT_EQ(show(*create_plantronics_driver(0xAB02), HEADSET_STATE_ALERTING), report({0x18, 1}));
    EXPECT_EQ(show(*create_plantronics_driver(0x02AB), HEADSET_STATE_ALERTING), report({0x01, 1}));
}

TEST_F(PlantronicsChooser, makes_a_new_driver_each_time) {
    EXPECT_NE(create_plantronics_driver(0xC056), create_plantronics_driver(0xC056));
}

}  // namespace
}  // namespace headset_plugin::driver_test::plt
