// What a fuzzing engine hands in, cut into a report descriptor and the operations that follow it. Seeds are
// made in the same form by make_seeds.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace fuzz {

using Bytes = std::vector<std::uint8_t>;

/// Reads the input from its front; behind its end there are zeros.
class Input {
  public:
    explicit Input(std::span<const std::uint8_t> data) : data_(data) {}

    bool is_empty() const { return data_.empty(); }

    std::uint8_t byte() {
        if (data_.empty()) {
            return 0;
        }
        const std::uint8_t first = data_.front();
        data_ = data_.subspan(1);
        return first;
    }

    /// Little-endian.
    std::uint16_t word() {
        const unsigned low = byte();
        return static_cast<std::uint16_t>(low | unsigned{byte()} << 8);
    }

    Bytes bytes(std::size_t size) {
        Bytes result(size);
        for (std::uint8_t& value : result) {
            value = byte();
        }
        return result;
    }

    /// A block with its length before it, in a word; cut where the input ends.
    Bytes block() {
        const std::size_t size = word();
        return bytes(std::min(size, data_.size()));
    }

  private:
    std::span<const std::uint8_t> data_;
};

}  // namespace fuzz
