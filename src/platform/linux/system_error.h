// Failures of system calls, in the system's words.
#pragma once

#include <string>
#include <system_error>

#include "platform/text.h"

namespace platform::linux_platform {

/// The text of an errno.
inline std::wstring error_text(int error) {
    return to_wide(std::generic_category().message(error));
}

}  // namespace platform::linux_platform
