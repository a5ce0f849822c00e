// Libraries of the system that are loaded by name: the plug-in itself loads where they are missing, and says
// so.
#pragma once

#include <stdexcept>
#include <string>

namespace platform::linux_platform {

/// A library that cannot be loaded, or lacks a function; the text names both.
class LibraryError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A library that stays loaded for as long as the process lives: the host may use it, too, and threads that
/// are still on their way out may be inside it.
class SharedLibrary {
  public:
    /// Whose functions the library finds where the process has several of one name: those that come first in
    /// the process, as ever, or its own.
    enum class Binding { usual, own_first };

    /// Loads the library. Throws LibraryError.
    explicit SharedLibrary(const char* name, Binding binding = Binding::usual);

    /// Sets `function` to the library's own function of this name. Throws LibraryError.
    template <typename Function>
    void look_up(const char* name, Function& function) const {
        function = reinterpret_cast<Function>(symbol(name));
    }

    /// The same for a function that the library need not have: null where it has none.
    template <typename Function>
    void look_up_if_there(const char* name, Function& function) const {
        function = reinterpret_cast<Function>(find(name));
    }

  private:
    void* find(const char* name) const;
    void* symbol(const char* name) const;

    std::string name_;
    void* handle_;
};

}  // namespace platform::linux_platform
