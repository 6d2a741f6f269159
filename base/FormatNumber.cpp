#include "base/FormatNumber.hpp"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <utility>

// Nothing here depends on the locale. Without this {fmt} refers to std::locale, half a megabyte in
// a program that has the C++ runtime linked in. The only file that includes {fmt}.
#define FMT_STATIC_THOUSANDS_SEPARATOR ','
#include <fmt/format.h>

namespace tav::internal {

namespace {

constexpr std::size_t defaultPrecision = 6;
// No double has more than 767 digits from its first on, and {fmt} counts on that. What is asked for
// beyond is shown as zeros, which is exact but for the far decimals of numbers below 1e-200.
constexpr std::size_t mostFractionDigits = 766;

constexpr bool isCapital(char letter) { return letter >= 'A' && letter <= 'Z'; }

std::string signFor(const FormatLayout& layout, bool negative) {
    if (negative) {
        return "-";
    }
    if (layout.plusSign) {
        return "+";
    }
    return layout.blankSign ? " " : "";
}

std::string digitsOf(char letter, std::uint64_t value) {
    switch (letter) {
    case 'x':
        return fmt::format("{:x}", value);
    case 'X':
        return fmt::format("{:X}", value);
    case 'o':
        return fmt::format("{:o}", value);
    default:
        return fmt::format("{}", value);
    }
}

FormattedNumber formattedInteger(const FormatLayout& layout, std::string prefix,
                                 std::uint64_t magnitude) {
    FormattedNumber number;
    number.prefix = std::move(prefix);
    number.mayBeZeroPadded = !layout.precision;
    // No digits at all when none are asked for.
    if (magnitude != 0 || layout.precision != std::size_t{0}) {
        number.head = digitsOf(layout.letter, magnitude);
    }
    const std::size_t wanted = layout.precision.value_or(1);
    number.leadingZeros = wanted - std::min(wanted, number.head.size());
    if (layout.alternative && layout.letter == 'o' && number.leadingZeros == 0 &&
        !number.head.starts_with('0')) {
        number.leadingZeros = 1;
    }
    if (layout.alternative && magnitude != 0 && (layout.letter | 0x20) == 'x') {
        number.prefix += layout.letter == 'x' ? "0x" : "0X";
    }
    return number;
}

// Hexadecimal digits of the magnitude, and the binary exponent behind them.
void writeHexadecimal(const FormatLayout& layout, double magnitude, FormattedNumber& number) {
    constexpr int fractionBits = 52;
    constexpr std::size_t fractionDigits = fractionBits / 4;
    constexpr int exponentBias = 1023;

    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    const auto storedExponent = static_cast<int>(bits >> fractionBits);
    std::uint64_t digits = bits & ((std::uint64_t{1} << fractionBits) - 1);
    int exponent = 0;
    if (storedExponent != 0) {
        digits |= std::uint64_t{1} << fractionBits;
        exponent = storedExponent - exponentBias;
    } else if (digits != 0) {
        exponent = 1 - exponentBias;
    }

    std::size_t shown = fractionDigits;
    if (!layout.precision) {
        while (shown > 0 && (digits & 0xF) == 0) {
            digits >>= 4;
            --shown;
        }
    } else if (*layout.precision < fractionDigits) {
        shown = *layout.precision;
        const auto dropped = static_cast<unsigned>((fractionDigits - shown) * 4);
        const std::uint64_t half = std::uint64_t{1} << (dropped - 1);
        const std::uint64_t rest = digits & (half * 2 - 1);
        digits >>= dropped;
        // To the nearest, and from the middle to the even one.
        digits += rest > half || (rest == half && (digits & 1) != 0) ? 1 : 0;
    } else {
        number.innerZeros = *layout.precision - fractionDigits;
    }

    const bool capital = isCapital(layout.letter);
    std::string text = fmt::format("{:0{}x}", digits, shown + 1);
    if (capital) {
        std::transform(text.begin(), text.end(), text.begin(), [](char digit) {
            return digit >= 'a' ? static_cast<char>(digit - ('a' - 'A')) : digit;
        });
    }
    if (shown > 0 || number.innerZeros > 0 || layout.alternative) {
        text.insert(1, 1, '.');
    }
    number.prefix += capital ? "0X" : "0x";
    number.head = std::move(text);
    number.tail = fmt::format("{}{:+}", capital ? 'P' : 'p', exponent);
}

struct Decimal {
    std::string digits;   // with their point
    std::string exponent; // "e+05"
    std::size_t fractionDigits = 0;
};

// `form` is 'f' or 'e'.
Decimal decimalOf(double magnitude, char form, std::size_t precision) {
    const auto digits = static_cast<int>(std::min(precision, mostFractionDigits));
    Decimal decimal;
    decimal.digits = form == 'f' ? fmt::format("{:.{}f}", magnitude, digits)
                                 : fmt::format("{:.{}e}", magnitude, digits);
    if (const std::size_t exponent = decimal.digits.find('e'); exponent != std::string::npos) {
        decimal.exponent = decimal.digits.substr(exponent);
        decimal.digits.resize(exponent);
    }
    if (const std::size_t point = decimal.digits.find('.'); point != std::string::npos) {
        decimal.fractionDigits = decimal.digits.size() - point - 1;
    }
    return decimal;
}

// The form of "%g": `precision` digits in all, with an exponent only where they would not reach the
// point or begin far behind it.
Decimal generalDecimalOf(double magnitude, std::size_t& precision) {
    constexpr int leastExponent = -4;
    precision -= precision == 0 ? 0 : 1;
    Decimal decimal = decimalOf(magnitude, 'e', precision);
    int exponent = 0;
    std::from_chars(decimal.exponent.data() + (decimal.exponent[1] == '+' ? 2 : 1),
                    decimal.exponent.data() + decimal.exponent.size(), exponent);
    if (exponent >= leastExponent && exponent <= static_cast<int>(precision)) {
        precision = static_cast<std::size_t>(static_cast<int>(precision) - exponent);
        decimal = decimalOf(magnitude, 'f', precision);
    }
    return decimal;
}

void writeDecimal(const FormatLayout& layout, double magnitude, FormattedNumber& number) {
    const char form = static_cast<char>(layout.letter | 0x20);
    std::size_t precision = layout.precision.value_or(defaultPrecision);
    Decimal decimal = form == 'g' ? generalDecimalOf(magnitude, precision)
                                  : decimalOf(magnitude, form, precision);
    const bool hasPoint = decimal.fractionDigits > 0;
    if (form == 'g' && !layout.alternative && hasPoint) {
        decimal.digits.resize(decimal.digits.find_last_not_of('0') + 1);
        if (decimal.digits.ends_with('.')) {
            decimal.digits.pop_back();
        }
    } else if (form != 'g' || layout.alternative) {
        number.innerZeros = precision - decimal.fractionDigits;
    }
    if (layout.alternative && !hasPoint) {
        decimal.digits += '.';
    }
    number.head = std::move(decimal.digits);
    number.tail = std::move(decimal.exponent);
    if (isCapital(layout.letter) && !number.tail.empty()) {
        number.tail.front() = 'E';
    }
}

} // namespace

FormattedNumber formattedSigned(const FormatLayout& layout, std::int64_t value) {
    const auto bits = static_cast<std::uint64_t>(value);
    return formattedInteger(layout, signFor(layout, value < 0), value < 0 ? 0 - bits : bits);
}

FormattedNumber formattedUnsigned(const FormatLayout& layout, std::uint64_t value) {
    return formattedInteger(layout, {}, value);
}

FormattedNumber formattedReal(const FormatLayout& layout, double value) {
    FormattedNumber number;
    number.prefix = signFor(layout, std::signbit(value));
    if (!std::isfinite(value)) {
        const bool capital = isCapital(layout.letter);
        number.mayBeZeroPadded = false;
        number.head = std::isnan(value) ? (capital ? "NAN" : "nan") : (capital ? "INF" : "inf");
    } else if ((layout.letter | 0x20) == 'a') {
        writeHexadecimal(layout, std::fabs(value), number);
    } else {
        writeDecimal(layout, std::fabs(value), number);
    }
    return number;
}

} // namespace tav::internal
