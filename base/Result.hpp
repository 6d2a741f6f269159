#pragma once

#include "base/Status.hpp"

#include <cerrno>
#include <optional>
#include <utility>

namespace tav {

/// What a call to the host answers when it fails: its error number (`ENOENT`, ...), or none.
class [[nodiscard]] SystemError {
  public:
    constexpr SystemError() = default;
    constexpr explicit SystemError(int number) : number_(number) {}

    /// Whether the call succeeded.
    [[nodiscard]] constexpr bool isNone() const { return number_ == 0; }
    /// The host's error number, 0 for none.
    [[nodiscard]] constexpr int number() const { return number_; }
    /// The error number as a negative status.
    [[nodiscard]] constexpr Status status() const { return statusFromErrorNumber(number_); }

    friend constexpr bool operator==(SystemError, SystemError) = default;

  private:
    int number_ = 0;
};

/// Either a value or the reason why there is none. The value may be asked for only when `ok()`.
template <class T>
class [[nodiscard]] Result {
  public:
    Result(T value) : value_(std::move(value)) {}
    Result(SystemError error) : error_(error.isNone() ? SystemError(EIO) : error) {}

    [[nodiscard]] bool ok() const { return value_.has_value(); }
    [[nodiscard]] const T& value() const& { return *value_; }
    [[nodiscard]] T& value() & { return *value_; }
    [[nodiscard]] T&& value() && { return std::move(*value_); }
    /// None when `ok()`.
    [[nodiscard]] SystemError error() const { return error_; }

  private:
    std::optional<T> value_;
    SystemError error_;
};

} // namespace tav
