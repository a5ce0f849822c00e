#include "tests/support/reference_data.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace reference {
namespace {

const std::filesystem::path root = ORVEX_REFERENCE_DATA;

nlohmann::json read(const std::filesystem::path& path) {
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error("cannot open " + path.string());
    }
    return nlohmann::json::parse(file);
}

}  // namespace

std::vector<Record> load(const std::string& folder) {
    std::vector<Record> records;
    if (!std::filesystem::is_directory(root / folder)) {
        return records;
    }
    for (const auto& entry : std::filesystem::directory_iterator(root / folder)) {
        if (entry.path().extension() == ".json") {
            records.push_back({folder + "/" + entry.path().stem().string(), read(entry.path())});
        }
    }
    std::sort(records.begin(), records.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return records;
}

nlohmann::json load_one(const std::string& name) {
    return read(root / (name + ".json"));
}

std::vector<std::uint8_t> bytes(std::string_view hex) {
    std::vector<std::uint8_t> result;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        result.push_back(static_cast<std::uint8_t>(std::stoul(std::string(hex.substr(i, 2)), nullptr, 16)));
    }
    return result;
}

std::vector<std::uint8_t> descriptor(const nlohmann::json& data) {
    return bytes(data.at("descriptor_hex").get<std::string>());
}

bool has_descriptor(const nlohmann::json& data) {
    return data.at("descriptor_hex") != "";
}

std::string absence() {
    return std::filesystem::is_directory(root) ? "" : "no reference data in " + root.string();
}

}  // namespace reference
