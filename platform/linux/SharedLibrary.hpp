#pragma once

#include <type_traits>

#include <dlfcn.h>

namespace tav::internal {

/// A library of the host that is loaded when it is first needed, and stays loaded: some
/// keep state of their own for every thread.
class SharedLibrary {
  public:
    /// By its file name ("libpng16.so.16"), looked for as the host's loader does.
    explicit SharedLibrary(const char* name) : handle_(::dlopen(name, RTLD_NOW | RTLD_LOCAL)) {}

    /// Whether it is there, with all functions that were asked for so far.
    [[nodiscard]] bool isComplete() const { return handle_ != nullptr && !lacksFunction_; }

    /// Takes a function's address; null where the library has none of that name.
    template <class Function>
    void find(Function*& function, const char* name) {
        function =
            handle_ == nullptr ? nullptr : reinterpret_cast<Function*>(::dlsym(handle_, name));
        lacksFunction_ = lacksFunction_ || function == nullptr;
    }

  private:
    void* handle_;
    bool lacksFunction_ = false;
};

} // namespace tav::internal
