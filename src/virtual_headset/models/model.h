// Models of real headsets, from which virtual ones are created. Each model has its own file.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace platform::virtual_headsets {

struct HeadsetModel {
    const char* key;  ///< what people type, such as "jabra-link-380c"
    std::uint16_t vendor_id;
    std::uint16_t product_id;
    const char* manufacturer;
    const char* product;
    const char* serial;  ///< made up
    std::vector<std::uint8_t> descriptor;
};

/// Every model, sorted by key.
std::span<const HeadsetModel* const> models();

/// The model of this name, or null.
const HeadsetModel* find_model(std::string_view key);

}  // namespace platform::virtual_headsets
