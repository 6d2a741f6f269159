#include "base/TextSearch.hpp"

#include "base/TextSearchForm.hpp"
#include "base/Unicode.hpp"
#include "base/UnicodeBuffer.hpp"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace tav {

namespace {

constexpr TextRange everything{0, std::numeric_limits<std::size_t>::max()};

constexpr TextRange clamped(TextRange range, std::size_t length) {
    const std::size_t location = std::min(range.location, length);
    return {location, std::min(range.length, length - location)};
}

constexpr bool has(unsigned options, unsigned option) { return (options & option) != 0; }

// `memmem` is linear for any text, which `find` of the standard's texts is not.
std::size_t find(std::string_view text, std::string_view pattern) {
    const void* const place = memmem(text.data(), text.size(), pattern.data(), pattern.size());
    return place == nullptr
               ? std::string_view::npos
               : static_cast<std::size_t>(static_cast<const char*>(place) - text.data());
}

std::size_t findLast(std::string_view text, std::string_view pattern) {
    const std::string reversedText(text.rbegin(), text.rend());
    const std::string reversedPattern(pattern.rbegin(), pattern.rend());
    const std::size_t place = find(reversedText, reversedPattern);
    return place == std::string_view::npos ? place : text.size() - pattern.size() - place;
}

// For ASCII, where bytes are units and every option but the case makes no difference.
std::optional<TextRange> rangeInASCII(std::string_view text, std::string_view pattern,
                                      unsigned options) {
    if (has(options, SearchOption::IgnoreCase)) {
        return rangeInASCII(caselessForm(text), caselessForm(pattern),
                            options & ~SearchOption::IgnoreCase);
    }
    if (pattern.size() > text.size()) {
        return std::nullopt;
    }
    const bool backwards = has(options, SearchOption::Backwards);
    std::size_t place = std::string_view::npos;
    if (has(options, SearchOption::Anchored)) {
        const std::size_t anchor = backwards ? text.size() - pattern.size() : 0;
        place = text.substr(anchor, pattern.size()) == pattern ? anchor : place;
    } else {
        place = backwards ? findLast(text, pattern) : find(text, pattern);
    }
    return place == std::string_view::npos ? std::nullopt
                                           : std::optional(TextRange{place, pattern.size()});
}

// Calls `report` with each place of the pattern, which is not empty, until that answers false.
// After Knuth, Morris and Pratt.
template <class Report>
void forEachPlace(std::u16string_view text, std::u16string_view pattern, Report report) {
    if (pattern.size() > text.size()) {
        return;
    }
    // For each beginning of the pattern, the length of its longest end that is a beginning too.
    std::vector<std::uint32_t> borders(pattern.size());
    const auto extended = [&](std::size_t matched, char16_t unit) {
        while (matched > 0 && pattern[matched] != unit) {
            matched = borders[matched - 1];
        }
        return pattern[matched] == unit ? matched + 1 : 0;
    };
    for (std::size_t at = 1; at < pattern.size(); ++at) {
        borders[at] = static_cast<std::uint32_t>(extended(borders[at - 1], pattern[at]));
    }
    std::size_t matched = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        matched = extended(matched, text[at]);
        if (matched == pattern.size()) {
            if (!report(at + 1 - matched)) {
                return;
            }
            matched = borders[matched - 1];
        }
    }
}

// Calls `report` with the range of each place that begins and ends where sequences do.
template <class Report>
void forEachRange(const internal::SearchForm& form, std::u16string_view pattern, Report report) {
    internal::SearchForm::Cursor start(form);
    internal::SearchForm::Cursor end(form);
    forEachPlace(form.units, pattern, [&](std::size_t place) {
        const auto from = start.lastAt(place);
        const auto to = end.firstAt(place + pattern.size());
        return !from || !to || report(TextRange{*from, *to - *from});
    });
}

std::optional<TextRange> rangeInForm(const internal::SearchForm& form, std::u16string_view pattern,
                                     unsigned options, TextRange range) {
    const bool backwards = has(options, SearchOption::Backwards);
    const bool anchored = has(options, SearchOption::Anchored);
    const std::size_t end = range.location + range.length;
    std::optional<TextRange> found;
    forEachRange(form, pattern, [&](TextRange place) {
        const bool isAnchored =
            backwards ? place.location + place.length == end : place.location == range.location;
        if (!anchored || isAnchored) {
            found = place;
        }
        return backwards || (!anchored && !found);
    });
    return found;
}

// The form of what a search looks for; empty for what is found nowhere.
std::u16string patternForm(std::string_view pattern, unsigned options) {
    const std::u16string units = utf16FromBytes(pattern);
    return internal::searchForm(units, {0, units.size()}, options).units;
}

int sign(int order) { return int{order > 0} - int{order < 0}; }

constexpr bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

// The run of digits at the front, taken off; leading zeros are left out of the answer.
std::u16string_view takeNumber(std::u16string_view& text) {
    const std::size_t length = std::min(text.find_first_not_of(u"0123456789"), text.size());
    std::u16string_view number = text.substr(0, length);
    text.remove_prefix(number.size());
    number.remove_prefix(std::min(number.find_first_not_of(u'0'), number.size()));
    return number;
}

int compareWithNumbers(std::u16string_view a, std::u16string_view b) {
    while (!a.empty() && !b.empty()) {
        if (isDigit(a.front()) && isDigit(b.front())) {
            const std::u16string_view numberA = takeNumber(a);
            const std::u16string_view numberB = takeNumber(b);
            if (numberA.size() != numberB.size()) {
                return numberA.size() < numberB.size() ? -1 : 1;
            }
            if (const int order = numberA.compare(numberB); order != 0) {
                return sign(order);
            }
        } else if (a.front() != b.front()) {
            return a.front() < b.front() ? -1 : 1;
        } else {
            a.remove_prefix(1);
            b.remove_prefix(1);
        }
    }
    return int{!a.empty()} - int{!b.empty()};
}

constexpr bool isHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool isLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

std::u16string unitsOfRange(std::string_view text, TextRange range) {
    const std::u16string units = utf16FromBytes(text);
    range = clamped(range, units.size());
    std::u16string part = units.substr(range.location, range.length);
    // The second half of a pair must not be taken for the escape of a byte.
    if (range.location > 0 && !part.empty() && isHighSurrogate(units[range.location - 1]) &&
        isLowSurrogate(part.front())) {
        part.front() = 0xDC00;
    }
    return part;
}

} // namespace

std::optional<TextRange> rangeOfString(std::string_view text, std::string_view pattern,
                                       unsigned options) {
    return rangeOfString(text, pattern, options, everything);
}

std::optional<TextRange> rangeOfString(std::string_view text, std::string_view pattern,
                                       unsigned options, TextRange range) {
    if (pattern.empty() || text.empty()) {
        return std::nullopt;
    }
    if (isASCII(pattern) && isASCII(text)) {
        range = clamped(range, text.size());
        auto found = rangeInASCII(text.substr(range.location, range.length), pattern, options);
        if (found) {
            found->location += range.location;
        }
        return found;
    }
    const std::u16string sought = patternForm(pattern, options);
    if (sought.empty()) {
        return std::nullopt;
    }
    const std::u16string units = utf16FromBytes(text);
    range = clamped(range, units.size());
    return rangeInForm(internal::searchForm(units, range, options), sought, options, range);
}

std::size_t countOfPlaces(std::string_view text, std::string_view pattern, unsigned options) {
    const std::u16string sought = patternForm(pattern, options);
    if (sought.empty()) {
        return 0;
    }
    const std::u16string units = utf16FromBytes(text);
    std::size_t count = 0;
    forEachRange(internal::searchForm(units, {0, units.size()}, options), sought, [&](TextRange) {
        ++count;
        return true;
    });
    return count;
}

int compare(std::string_view text, std::string_view other, unsigned options) {
    return compare(text, other, options, everything);
}

int compare(std::string_view text, std::string_view other, unsigned options, TextRange range) {
    // As far as a text is ASCII, bytes are units.
    const TextRange bytes = clamped(range, text.size());
    if (!has(options, SearchOption::IgnoreCase | SearchOption::Numeric) && isASCII(other) &&
        isASCII(text.substr(0, bytes.location + bytes.length))) {
        return sign(text.substr(bytes.location, bytes.length).compare(other));
    }
    const std::u16string a = internal::comparisonForm(unitsOfRange(text, range), options);
    const std::u16string b = internal::comparisonForm(utf16FromBytes(other), options);
    return has(options, SearchOption::Numeric) ? compareWithNumbers(a, b) : sign(a.compare(b));
}

} // namespace tav
