// A parsed descriptor for tests, with the HidP_ functions' results as values.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/hidp/hidp.h"
#include "platform/hidp/preparsed_data.h"

namespace hidp_test {

using Bytes = std::vector<std::uint8_t>;
using Usages = std::vector<platform::USAGE>;

/// None of the types of reports.
inline constexpr auto no_type = static_cast<platform::HIDP_REPORT_TYPE>(platform::HidP_Feature + 1);

/// What a function gave, beside its status.
template <typename Result>
struct Outcome {
    platform::NTSTATUS status;
    Result result;
};

/// One top-level collection. Link collection 0, which stands for any, is left out of the calls.
class Collection {
  public:
    /// Parses a descriptor and takes its top-level collection with this index. Throws std::runtime_error,
    /// with the parser's text, for a refused descriptor.
    explicit Collection(std::span<const std::uint8_t> descriptor, std::size_t index = 0);

    platform::PHIDP_PREPARSED_DATA data() const { return data_.get(); }

    platform::HIDP_CAPS caps() const;
    std::vector<platform::HIDP_BUTTON_CAPS> buttons(platform::HIDP_REPORT_TYPE type) const;
    std::vector<platform::HIDP_VALUE_CAPS> values(platform::HIDP_REPORT_TYPE type) const;
    const platform::hidp::Direction& direction(platform::HIDP_REPORT_TYPE type) const;

    /// A report of the direction's length, all 0.
    Bytes empty_report(platform::HIDP_REPORT_TYPE type) const;

    /// The result is the length that the function leaves: on failure, the index of the offending usage.
    Outcome<platform::ULONG> set(platform::HIDP_REPORT_TYPE type, platform::USAGE page, Usages usages,
                                 Bytes& report) const;
    Outcome<platform::ULONG> unset(platform::HIDP_REPORT_TYPE type, platform::USAGE page, Usages usages,
                                   Bytes& report) const;
    Outcome<Usages> pressed(platform::HIDP_REPORT_TYPE type, platform::USAGE page, const Bytes& report) const;

    platform::NTSTATUS set_value(platform::HIDP_REPORT_TYPE type, platform::USAGE page, platform::USAGE usage,
                                 platform::ULONG value, Bytes& report) const;
    Outcome<platform::ULONG> value(platform::HIDP_REPORT_TYPE type, platform::USAGE page,
                                   platform::USAGE usage, const Bytes& report) const;
    Outcome<platform::LONG> scaled(platform::HIDP_REPORT_TYPE type, platform::USAGE page,
                                   platform::USAGE usage, const Bytes& report) const;

  private:
    platform::hidp::PreparsedData data_;
};

}  // namespace hidp_test
