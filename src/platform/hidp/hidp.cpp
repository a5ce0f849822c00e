#include "platform/hidp/hidp.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "platform/hidp/preparsed_data.h"

namespace platform::hidp {

void PreparsedDataDeleter::operator()(PHIDP_PREPARSED_DATA data) const {
    delete data;
}

std::string ParseError::to_string() const {
    std::array<char, 48> place{};
    std::snprintf(place.data(), place.size(), "offset %zu, item 0x%02X: ", offset, unsigned{item});
    return place.data() + text;
}

std::size_t report_length(PHIDP_PREPARSED_DATA data, HIDP_REPORT_TYPE type, std::uint8_t report_id) {
    if (check_direction(data, type) != HIDP_STATUS_SUCCESS) {
        return 0;
    }
    const Report wanted{type, report_id, 0};
    const auto at = std::lower_bound(data->reports.begin(), data->reports.end(), wanted, precedes);
    const bool is_known = at != data->reports.end() && !precedes(wanted, *at);
    return is_known ? at->byte_length() : 0;
}

bool has_report_ids(PHIDP_PREPARSED_DATA data) {
    return check_data(data) == HIDP_STATUS_SUCCESS && data->has_report_ids;
}

const Parser& parser() {
    // Never destroyed: threads that are still on their way out at exit may use it.
    static const Parser* const instance = new Parser;
    return *instance;
}

}  // namespace platform::hidp
