#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tav {

// Numbers as text and back, whatever the locale.

/// Adds the shortest text that reads back as the same real: "1.5", "100000", "1e+20", "nan",
/// "-inf".
void appendReal(std::string& text, double value);

/// A real that is the whole text: decimal with an optional sign, fraction and exponent, or "nan",
/// "inf" or "infinity" in any case with an optional sign. Too large is infinite, too small is 0.
[[nodiscard]] std::optional<double> realFromText(std::string_view text);

/// An integer by its sign and its distance from 0.
struct IntegerText {
    bool negative = false;
    std::uint64_t magnitude = 0;
};

/// An integer that is the whole text: decimal, or hexadecimal after "0x", with an optional sign,
/// within the signed and unsigned 64-bit integers.
[[nodiscard]] std::optional<IntegerText> integerFromText(std::string_view text);

/// The number that the text begins with, after white space; 0 when there is none. What does not fit
/// is the nearest that does.
[[nodiscard]] std::int64_t leadingInteger(std::string_view text);
[[nodiscard]] double leadingReal(std::string_view text);

} // namespace tav
