#include "platform/linux/shared_library.h"

#include <dlfcn.h>

namespace platform::linux_platform {

namespace {

/// True where the process allocates with the C library's functions. With an allocator of the host's own (or a
/// sanitizer's), a library that is bound to its own libraries first would free with the one what the other
/// allocated.
bool allocates_with_libc() {
    void* const libc = dlopen("libc.so.6", RTLD_NOW | RTLD_NOLOAD);
    const auto is_libcs = [libc](const char* name) { return dlsym(RTLD_DEFAULT, name) == dlsym(libc, name); };
    return libc != nullptr && is_libcs("malloc") && is_libcs("free");
}

/// RTLD_LOCAL keeps the library out of the host's way, RTLD_DEEPBIND the host out of the library's.
int load_mode(SharedLibrary::Binding binding) {
    const bool own_first = binding == SharedLibrary::Binding::own_first && allocates_with_libc();
    return RTLD_NOW | RTLD_LOCAL | (own_first ? RTLD_DEEPBIND : 0);
}

}  // namespace

SharedLibrary::SharedLibrary(const char* name, Binding binding)
    : name_(name), handle_(dlopen(name, load_mode(binding))) {
    if (handle_ == nullptr) {
        const char* const reason = dlerror();
        throw LibraryError(reason == nullptr ? name_ + " cannot be loaded" : reason);
    }
}

void* SharedLibrary::find(const char* name) const {
    return dlsym(handle_, name);
}

void* SharedLibrary::symbol(const char* name) const {
    void* const found = find(name);
    if (found == nullptr) {
        throw LibraryError(name_ + " has no function " + name);
    }
    return found;
}

}  // namespace platform::linux_platform
