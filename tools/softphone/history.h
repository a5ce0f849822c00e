// Where the lines that a user typed are kept between runs.
#pragma once

#include <filesystem>

namespace softphone {

/// The file, $XDG_STATE_HOME/softphone/history (the base directories of XDG). Where the variable is not
/// set or is no absolute path, it is below ~/.local/state. Empty where there is no home either.
std::filesystem::path history_file();

/// Makes the folder of a file, and those above it, for this user alone (mode 0700). False where it cannot be
/// made.
bool make_private_folder(const std::filesystem::path& file);

}  // namespace softphone
