#pragma once

#include <cstdint>

namespace tav {

/// How an operation ended: 0 is success, everything negative a failure.
///
/// Never a truth value: compare with a named constant. Values that have no name here (an errno of
/// the host, negated) are carried as they are.
enum class [[nodiscard]] Status : std::int32_t{
    Success = 0,
    Failure = -1,         ///< Any other failure, also of what a kind of item does not offer at all.
    BadParameter = -50,   ///< A parameter that cannot be right, an empty path for one.
    NotSupported = -220,  ///< This kind of item cannot do it.
    NoSuchProcess = -600, ///< Nobody owns the name that a request is addressed to.
};

/// The status that carries one of the host's error numbers (`errno`, a positive number).
[[nodiscard]] constexpr Status statusFromErrorNumber(int errorNumber) {
    return errorNumber == 0 ? Status::Success : static_cast<Status>(-errorNumber);
}

} // namespace tav
