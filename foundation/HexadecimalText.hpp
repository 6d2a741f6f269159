#pragma once

#include "base/Value.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace tav {

/// The number that a text begins with in hexadecimal, blank space (of any script, line ends
/// included) and one "0x" or "0X" before it passed over; 0 without digits. The value has 32 bits:
/// from "80000000" on it is negative, and what does not fit is "FFFFFFFF".
[[nodiscard]] std::int32_t numberFromHexString(std::string_view text);

/// The low 32 bits in lower-case digits, with or without "0x" in front and never padded.
[[nodiscard]] std::string hexStringFromNumber(const Value& number);
[[nodiscard]] std::string hexStringFromNumberNoLeading0x(const Value& number);

} // namespace tav
