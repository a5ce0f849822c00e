#include "platform/linux/shared_library.h"

#include <dlfcn.h>

#if !defined(__has_feature)
#define __has_feature(feature) 0
#endif

namespace platform::linux_platform {

namespace {

// RTLD_LOCAL keeps the library out of the host's way. RTLD_DEEPBIND keeps the host out of the library's:
// hidapi calls its own exported functions by name, which would otherwise find the functions of the same names
// that the plug-in exports, where a host has loaded the plug-in with RTLD_GLOBAL. The sanitizers' runtimes
// refuse the flag.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || __has_feature(address_sanitizer) || \
    __has_feature(thread_sanitizer)
constexpr int load_mode = RTLD_NOW | RTLD_LOCAL;
#else
constexpr int load_mode = RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND;
#endif

}  // namespace

SharedLibrary::SharedLibrary(const char* name) : name_(name), handle_(dlopen(name, load_mode)) {
    if (handle_ == nullptr) {
        const char* const reason = dlerror();
        throw LibraryError(reason == nullptr ? name_ + " cannot be loaded" : reason);
    }
}

void* SharedLibrary::symbol(const char* name) const {
    void* const found = dlsym(handle_, name);
    if (found == nullptr) {
        throw LibraryError(name_ + " has no function " + name);
    }
    return found;
}

}  // namespace platform::linux_platform
