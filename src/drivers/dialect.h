// What the drivers' report dialects have in common.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "base/headset_types.h"

namespace headset_plugin {

// ---- indicators

// The bits of headset_leds_state_ where a dialect has no others.
inline constexpr std::uint8_t led_off_hook = 0x01;
inline constexpr std::uint8_t led_mute = 0x02;
inline constexpr std::uint8_t led_ringing = 0x04;
inline constexpr std::uint8_t led_hold = 0x08;

constexpr std::uint8_t with_bit(std::uint8_t bits, std::uint8_t bit, bool set) {
    return static_cast<std::uint8_t>(set ? bits | bit : bits & ~bit);
}

/// The bits for a headset state, mute aside. In use clears led_hold last, even where a dialect rings with
/// that bit.
std::uint8_t state_bits(std::uint32_t state, std::uint8_t ringing = led_ringing,
                        std::uint8_t off_hook = led_off_hook);

// ---- output reports

/// What a building operation returns when it left the buffer alone.
inline constexpr std::int32_t nothing_to_write = -1;

/// Dialects of fixed reports refuse to show mute in a buffer shorter than this, even where their report is.
inline constexpr std::size_t shortest_mute_buffer = 3;

/// Puts the report in front of the buffer and returns its length; nothing_to_write where it does not fit.
std::int32_t put_report(std::span<std::uint8_t> output, std::initializer_list<std::uint8_t> report);

// ---- input reports: byte 0 the report id, byte 1 the key

inline constexpr std::size_t report_id_at = 0;
inline constexpr std::size_t key_at = 1;
inline constexpr std::size_t shortest_key_report = 2;

struct KeyRow {
    std::uint8_t value;
    std::int32_t key;
};

/// The key of the first row with this value, HEADSET_KEY_INVALID where none has it.
std::int32_t find_key(std::span<const KeyRow> rows, std::uint8_t value);

/// Logs a report's first eight bytes, those that it lacks as 0. `format` takes the function and the bytes.
void log_first_bytes(const char* format, const char* function, std::span<const std::uint8_t> report);

}  // namespace headset_plugin
