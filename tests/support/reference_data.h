// Report descriptors of real devices, and what real systems make of them. They lie beside the project and are
// no part of it; tests that need them are skipped where they are absent.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace reference {

struct Record {
    std::string name;  ///< "winpp/047F_C056_0005_000B"
    nlohmann::json data;
};

/// The records of one folder, sorted by name; none where the data is absent.
std::vector<Record> load(const std::string& folder);

/// One of them. Throws std::runtime_error where there is no such file.
nlohmann::json load_one(const std::string& name);

std::vector<std::uint8_t> bytes(std::string_view hex);

/// The descriptor of a record of real/, other/, bad/ or wine/.
std::vector<std::uint8_t> descriptor(const nlohmann::json& data);

/// False for the few records that tell of a device without its descriptor.
bool has_descriptor(const nlohmann::json& data);

/// Why tests on this data are to be skipped; empty where it is present.
std::string absence();

}  // namespace reference

/// Ends the test, as skipped, where the reference data is absent.
#define SKIP_WITHOUT_REFERENCE_DATA()                     \
    if (const auto why = reference::absence(); why != "") \
    GTEST_SKIP() << why
