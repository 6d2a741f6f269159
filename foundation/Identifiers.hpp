#pragma once

#include <optional>
#include <span>
#include <string>

namespace tav {

/// A new random identifier (UUID version 4 of RFC 4122) in its text form: 36 characters, upper-case
/// hexadecimal in groups of 8-4-4-4-12. Raises `tav::Exception` when the kernel has no random
/// numbers, since an identifier that another may have is none. Any thread.
[[nodiscard]] std::string stringWithNewUUID();

/// The same, but nothing when the kernel has no random numbers.
[[nodiscard]] std::optional<std::string> uuidAsString();

namespace internal {
/// Fills the bytes with random numbers; false when it cannot.
using FillRandom = bool (*)(std::span<unsigned char> bytes);
/// `uuidAsString` with random numbers from elsewhere.
[[nodiscard]] std::optional<std::string> uuidFrom(FillRandom fillRandom);
} // namespace internal

} // namespace tav
