#pragma once

#include "base/FormatForm.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace tav::internal {

/// Flags, width and precision of a conversion, with the arguments they came from read.
struct FormatLayout {
    bool leftAligned = false;
    bool plusSign = false;
    bool blankSign = false;
    bool alternative = false;
    bool zeroPadded = false;
    std::size_t width = 0;
    std::optional<std::size_t> precision;
    char letter = 0;
};

/// The parts of a number. Written out: blanks, prefix, zeros, head, inner zeros, tail.
struct FormattedNumber {
    std::string prefix; ///< Sign and "0x".
    std::string head;
    std::size_t innerZeros = 0; ///< Digits asked for behind all that the number has.
    std::string tail;           ///< The exponent.
    std::size_t leadingZeros = 0;
    bool mayBeZeroPadded = true;
};

/// "%d", "%i": a signed integer.
[[nodiscard]] FormattedNumber formattedSigned(const FormatLayout& layout, std::int64_t value);
/// "%u", "%x", "%X", "%o".
[[nodiscard]] FormattedNumber formattedUnsigned(const FormatLayout& layout, std::uint64_t value);
/// "%f", "%e", "%g", "%a" and their capitals, as C's printf writes them in its own locale.
[[nodiscard]] FormattedNumber formattedReal(const FormatLayout& layout, double value);

} // namespace tav::internal
