#pragma once

#include "base/Format.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace tav::internal {

// What an argument is under the conversions of a form, whether it fits them or not.

inline constexpr std::string_view nilText = "(null)";

/// The 64 bits under an integer conversion: reals are cut towards 0 and kept within 64 bits, what
/// is no number is 0.
[[nodiscard]] std::int64_t integerOf(const FormatArgument& argument);

/// The number under a conversion of reals; what is no number is 0.
[[nodiscard]] double realOf(const FormatArgument& argument);

/// The address under "%p"; of a number the number itself.
[[nodiscard]] std::uintptr_t addressOf(const FormatArgument& argument);
[[nodiscard]] std::string pointerText(std::uintptr_t address);

/// The argument as "%@" shows it. Texts are not copied; `storage` holds what had to be made.
[[nodiscard]] std::string_view objectText(const FormatArgument& argument, std::string& storage);

} // namespace tav::internal
