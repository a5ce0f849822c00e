// Wide text to UTF-8. Depends on no locale: the process's locale is the host's business.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

/// Converts at most as many whole characters as fit into `max_bytes` of UTF-8. Wide text is UTF-16 or UTF-32,
/// whichever wchar_t holds; what is no character becomes U+FFFD. Thread: any.
std::string to_utf8(std::wstring_view text, std::size_t max_bytes = std::string::npos);

/// The other way round, for platforms that report narrow texts. Bytes that are no UTF-8 become U+FFFD.
std::wstring to_wide(std::string_view text);

}  // namespace platform
