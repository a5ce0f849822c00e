// Fields of a report: bits counted from the least significant bit of byte 0 (HID 1.11, 8.4).
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace platform::hidp {

/// A field's part in one byte of the report.
struct BitPart {
    std::size_t byte;
    std::uint32_t shift;
    std::uint32_t count;

    std::uint32_t mask() const { return (1U << count) - 1; }
};

inline BitPart bit_part(std::uint32_t position, std::uint32_t bits_left) {
    const std::uint32_t shift = position % 8;
    return {position / 8, shift, std::min(8 - shift, bits_left)};
}

inline bool read_bit(std::span<const std::uint8_t> report, std::uint32_t position) {
    return (report[position / 8] >> position % 8 & 1) != 0;
}

inline void set_bit(std::span<std::uint8_t> report, std::uint32_t position) {
    report[position / 8] = static_cast<std::uint8_t>(report[position / 8] | 1U << position % 8);
}

/// Reads `size` bits, at most 32, zero-extended.
inline std::uint32_t read_bits(std::span<const std::uint8_t> report, std::uint32_t position,
                               std::uint32_t size) {
    const std::size_t begin = position / 8;
    std::uint64_t bytes = 0;  // 32 bits that begin within a byte reach into five
    for (std::size_t end = (position + size + 7) / 8; end > begin; --end) {
        bytes = bytes << 8 | report[end - 1];
    }
    const std::uint64_t mask = (std::uint64_t{1} << size) - 1;
    return static_cast<std::uint32_t>(bytes >> position % 8 & mask);
}

/// Writes the lowest `size` bits of `value`, at most 32.
inline void write_bits(std::span<std::uint8_t> report, std::uint32_t position, std::uint32_t size,
                       std::uint32_t value) {
    for (std::uint32_t done = 0; done < size;) {
        const BitPart part = bit_part(position + done, size - done);
        const std::uint32_t kept = report[part.byte] & ~(part.mask() << part.shift);
        report[part.byte] = static_cast<std::uint8_t>(kept | (value >> done & part.mask()) << part.shift);
        done += part.count;
    }
}

}  // namespace platform::hidp
