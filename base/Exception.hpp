#pragma once

#include <exception>
#include <string>
#include <string_view>

namespace tav {

/// A failure that ends an operation: which one it was (the name), and why (the reason).
///
/// The name is the component or operation that raised it ("RelaunchAfterInstall"); the reason is a
/// sentence for people. `what()` answers the reason.
class Exception : public std::exception {
  public:
    Exception(std::string_view name, std::string_view reason) : name_(name), reason_(reason) {}

    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    [[nodiscard]] const std::string& reason() const noexcept { return reason_; }
    [[nodiscard]] const char* what() const noexcept override { return reason_.c_str(); }

  private:
    std::string name_;
    std::string reason_;
};

} // namespace tav
