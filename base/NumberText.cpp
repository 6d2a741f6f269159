#include "base/NumberText.hpp"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>

namespace tav {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Takes the sign away and answers whether it was a minus.
bool takeSign(std::string_view& text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    return negative;
}

bool equalsLowercase(std::string_view text, std::string_view lowercase) {
    if (text.size() != lowercase.size()) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((text[i] | 0x20) != lowercase[i]) {
            return false;
        }
    }
    return true;
}

/// Where an unsigned decimal real ends; 0 when there is none.
std::size_t endOfReal(std::string_view text) {
    std::size_t at = 0;
    const auto digits = [&] {
        const std::size_t from = at;
        while (at < text.size() && isDigit(text[at])) {
            ++at;
        }
        return at - from;
    };
    std::size_t count = digits();
    if (at < text.size() && text[at] == '.') {
        ++at;
        count += digits();
    }
    if (count == 0) {
        return 0;
    }
    const std::size_t endOfMantissa = at;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        ++at;
        if (at < text.size() && (text[at] == '+' || text[at] == '-')) {
            ++at;
        }
        if (digits() == 0) {
            return endOfMantissa;
        }
    }
    return at;
}

/// Whether a number that no double holds is too large rather than too small.
bool isTooLarge(std::string_view number) {
    const std::size_t exponentMark = number.find_first_of("eE");
    const std::string_view mantissa = number.substr(0, exponentMark);
    if (exponentMark != std::string_view::npos) {
        std::string_view exponentText = number.substr(exponentMark + 1);
        const bool negative = takeSign(exponentText);
        int exponent = 0;
        const auto result = std::from_chars(exponentText.data(),
                                            exponentText.data() + exponentText.size(), exponent);
        // A mantissa that outweighs such an exponent would have to be longer than it is.
        if (result.ec != std::errc() || std::size_t(exponent) > mantissa.size() + 400) {
            return !negative;
        }
    }
    const std::size_t point = mantissa.find('.');
    const std::size_t first = mantissa.find_first_of("123456789");
    double power = 0;
    if (first != std::string_view::npos) {
        power = double(point == std::string_view::npos ? mantissa.size() : point) - double(first);
    }
    if (exponentMark != std::string_view::npos) {
        power += leadingReal(number.substr(exponentMark + 1));
    }
    return power > 0;
}

/// The value of what `endOfReal` delimited.
double unsignedReal(std::string_view number) {
    double value = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        return isTooLarge(number) ? infinity : 0;
    }
    return value;
}

} // namespace

void appendReal(std::string& text, double value) {
    if (std::isnan(value)) {
        text += "nan";
        return;
    }
    char buffer[64];
    const double size = std::fabs(value);
    const auto form = size == 0 || (size >= 1e-5 && size < 1e16) || std::isinf(value)
                          ? std::chars_format::fixed
                          : std::chars_format::scientific;
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, value, form);
    text.append(buffer, end.ptr);
}

std::optional<double> realFromText(std::string_view text) {
    const bool negative = takeSign(text);
    std::optional<double> value;
    if (!text.empty() && endOfReal(text) == text.size()) {
        value = unsignedReal(text);
    } else if (equalsLowercase(text, "inf") || equalsLowercase(text, "infinity")) {
        value = infinity;
    } else if (equalsLowercase(text, "nan")) {
        value = std::numeric_limits<double>::quiet_NaN();
    }
    if (value && negative) {
        value = -*value;
    }
    return value;
}

std::optional<IntegerText> integerFromText(std::string_view text) {
    IntegerText integer;
    integer.negative = takeSign(text);
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    }
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, integer.magnitude, base);
    if (text.empty() || result.ec != std::errc() || result.ptr != end) {
        return std::nullopt;
    }
    constexpr std::uint64_t mostNegative = std::uint64_t{1} << 63;
    if (integer.negative && integer.magnitude > mostNegative) {
        return std::nullopt;
    }
    return integer;
}

std::int64_t leadingInteger(std::string_view text) {
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    const bool negative = takeSign(text);
    constexpr std::uint64_t limit = std::uint64_t{1} << 63;
    std::uint64_t magnitude = 0;
    for (const char c : text) {
        if (!isDigit(c)) {
            break;
        }
        const auto digit = std::uint64_t(c - '0');
        if (magnitude > (limit - digit) / 10) {
            magnitude = limit;
            break;
        }
        magnitude = magnitude * 10 + digit;
    }
    if (negative) {
        return static_cast<std::int64_t>(0 - magnitude);
    }
    return static_cast<std::int64_t>(magnitude == limit ? limit - 1 : magnitude);
}

double leadingReal(std::string_view text) {
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    const bool negative = takeSign(text);
    const double value = unsignedReal(text.substr(0, endOfReal(text)));
    return negative ? -value : value;
}

} // namespace tav
