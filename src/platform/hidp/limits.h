// What one descriptor may cost. A descriptor is untrusted input: without limits four kilobytes of it could
// ask for gigabytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace platform::hidp {

/// hidapi's HID_API_MAX_REPORT_DESCRIPTOR_SIZE, which is also what Linux hands out (HID_MAX_DESCRIPTOR_SIZE).
inline constexpr std::size_t max_descriptor_size = 4096;

/// Collections in a descriptor, and so their nesting, and link collections of a top-level one, which has more
/// than collections where some have several names. Known devices have at most 60.
inline constexpr std::size_t max_collections = 1024;

/// Push items without their Pop. Known devices push once.
inline constexpr std::size_t max_push_depth = 8;

/// Usages, or ranges of them, that one main item may use up. Known devices have at most 24.
inline constexpr std::size_t max_local_items = 1024;

/// Capabilities of one type of report. Known devices have at most 200.
inline constexpr std::size_t max_capabilities = 2048;

/// The longest report that Linux passes on (HID_MAX_BUFFER_SIZE), in bits, without the id byte.
inline constexpr std::uint32_t max_report_bits = (16384 - 1) * 8;

/// Buttons that a report of one type can list at once. A caller makes a list of that length for every
/// capability, so it is held to one for each byte of the longest report.
inline constexpr std::uint32_t max_usage_list_length = 16384;

/// Controls of one type of report: data indices have 16 bits.
inline constexpr std::uint32_t max_data_indices = 65536;

}  // namespace platform::hidp
