#include "tools/softphone/history.h"

#include <cstdlib>
#include <sys/stat.h>
#include <system_error>

namespace softphone {
namespace {

namespace fs = std::filesystem;

/// The absolute path in a variable; empty where it has none.
fs::path folder_in(const char* variable) {
    const char* const value = std::getenv(variable);
    const fs::path folder = value ? value : "";
    return folder.is_absolute() ? folder : fs::path();
}

fs::path state_folder() {
    if (const auto folder = folder_in("XDG_STATE_HOME"); !folder.empty())
        return folder;
    const auto home = folder_in("HOME");
    return home.empty() ? home : home / ".local/state";
}

}  // namespace

fs::path history_file() {
    const auto folder = state_folder();
    return folder.empty() ? folder : folder / "softphone/history";
}

bool make_private_folder(const fs::path& file) {
    std::error_code error;
    fs::path folder;
    for (const auto& part : file.parent_path()) {
        folder /= part;
        // Another process may make it at the same time.
        if (!fs::is_directory(folder, error) && mkdir(folder.c_str(), S_IRWXU) != 0 &&
            !fs::is_directory(folder, error))
            return false;
    }
    return !folder.empty();
}

}  // namespace softphone
