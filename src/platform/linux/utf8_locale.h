// hidapi converts texts by the calling thread's locale.
#pragma once

#include <clocale>
#include <locale.h>

namespace platform::linux_platform {

/// Has the calling thread convert texts as UTF-8 for a scope, whatever locale the process has; that of the
/// process, which is the host's, and of other threads stays as it is. Without effect where the system has no
/// C.UTF-8.
class Utf8Locale {
  public:
    Utf8Locale() : former_(utf8() == nullptr ? nullptr : uselocale(utf8())) {}
    ~Utf8Locale() {
        if (former_ != nullptr) {
            uselocale(former_);
        }
    }
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;

  private:
    static locale_t utf8() {
        static const locale_t made = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);  // outlives every thread
        return made;
    }

    const locale_t former_;
};

}  // namespace platform::linux_platform
