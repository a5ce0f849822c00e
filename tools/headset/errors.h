// Why a command could not be carried out. The texts are for the user.
#pragma once

#include <stdexcept>

namespace headset {

// Exit statuses.
inline constexpr int exit_ok = 0;
inline constexpr int exit_refused = 1;
inline constexpr int exit_usage = 2;
inline constexpr int exit_system_error = 71;  // EX_OSERR of BSD's sysexits.h

/// An argument that cannot be understood, or a file that cannot be read.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A descriptor or report that is understood and wrong, or that lacks what is asked of it.
class Refused : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace headset
