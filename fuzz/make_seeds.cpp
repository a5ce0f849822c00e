// Writes the seeds that fuzzing starts from: the descriptors of the project's own headset models, for some
// targets with operations behind them. Usage: make_seeds FOLDER, which gets a folder for every target.
#include <filesystem>
#include <fstream>
#include <iostream>

#include "fuzz/input.h"
#include "virtual_headset/models/model.h"

namespace {

using fuzz::Bytes;

void write(const std::filesystem::path& file, const Bytes& bytes) {
    std::ofstream out(file, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out.flush()) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

/// The descriptor as Input::block takes it, and operations of every kind.
Bytes with_operations(const Bytes& descriptor) {
    constexpr int operations = 64;
    Bytes bytes{static_cast<std::uint8_t>(descriptor.size() & 0xFF),
                static_cast<std::uint8_t>(descriptor.size() >> 8)};
    bytes.insert(bytes.end(), descriptor.begin(), descriptor.end());
    for (int i = 0; i < operations; ++i) {
        bytes.insert(bytes.end(), {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(7 * i), 1, 0});
    }
    return bytes;
}

void write_seeds(const std::filesystem::path& folder) {
    for (const char* target : {"parse", "reports", "usages"}) {
        std::filesystem::create_directories(folder / target);
    }
    for (const auto* model : platform::virtual_headsets::models()) {
        write(folder / "parse" / model->key, model->descriptor);
        write(folder / "reports" / model->key, with_operations(model->descriptor));
        write(folder / "usages" / model->key, with_operations(model->descriptor));
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: make_seeds FOLDER\n";
        return 2;
    }
    try {
        write_seeds(argv[1]);
    } catch (const std::exception& error) {
        std::cerr << "make_seeds: " << error.what() << '\n';
        return 1;
    }
}
