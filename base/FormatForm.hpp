#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace tav::internal {

/// A width or a precision as the form states it.
struct FormatCount {
    enum class Kind { None, Number, NextArgument, Argument };

    Kind kind = Kind::None;
    std::size_t number = 0; ///< The number itself, or the position of the argument, from 1.
};

/// One conversion of a printf form: `%[position$][flags][width][.precision][length]letter`.
struct FormatConversion {
    std::size_t position = 0; ///< Which argument, from 1; 0 for the next one.
    bool leftAligned = false;
    bool plusSign = false;
    bool blankSign = false;
    bool alternative = false;
    bool zeroPadded = false;
    FormatCount width;
    FormatCount precision;
    int bits = 32; ///< Of an integer: 8, 16, 32 or 64.
    char letter = 0;
    std::size_t length = 0; ///< Bytes of the form that the conversion takes, its "%" included.
};

/// Numbers in a form are read up to here; what is larger is this.
inline constexpr std::size_t largestFormatNumber = 65536;

/// The conversion at the front of a form that begins with "%"; nothing where the form ends in it.
/// The letter may be any byte.
[[nodiscard]] std::optional<FormatConversion> readFormatConversion(std::string_view form);

} // namespace tav::internal
