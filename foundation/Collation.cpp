#include "foundation/Collation.hpp"

#include "base/CombiningMarks.hpp"
#include "base/TextSearch.hpp"
#include "base/Unicode.hpp"
#include "base/UnicodeBuffer.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>

#include <unicode/ucol.h>

namespace tav {

namespace {

struct CloseCollator {
    void operator()(UCollator* collator) const { ucol_close(collator); }
};

using CollatorPtr = std::unique_ptr<UCollator, CloseCollator>;

CollatorPtr rootCollatorOfLetters() {
    UErrorCode error = U_ZERO_ERROR;
    CollatorPtr collator(ucol_open("", &error));
    if (U_FAILURE(error)) {
        return nullptr;
    }
    ucol_setAttribute(collator.get(), UCOL_STRENGTH, UCOL_PRIMARY, &error);
    ucol_setAttribute(collator.get(), UCOL_NORMALIZATION_MODE, UCOL_ON, &error);
    return U_FAILURE(error) ? nullptr : std::move(collator);
}

int order(UCollationResult result) {
    return result == UCOL_LESS ? -1 : int{result == UCOL_GREATER};
}

// Where each ASCII character stands in the order, from 1 on; 0 for one that does not count. In the
// root collation no ASCII character joins with another, so that these order texts of ASCII alone.
using ASCIIPlaces = std::array<std::uint8_t, 128>;

ASCIIPlaces asciiPlaces(const UCollator* collator) {
    std::array<char, std::tuple_size_v<ASCIIPlaces>> characters{};
    std::iota(characters.begin(), characters.end(), '\0');
    const auto isBefore = [&](const char& a, const char& b) {
        return internal::compareByCollator(collator, {&a, 1}, {&b, 1}) < 0;
    };
    std::sort(characters.begin(), characters.end(), isBefore);
    ASCIIPlaces places{};
    std::uint8_t place = 0;
    const char* previous = nullptr;
    for (const char& character : characters) {
        const bool counts = internal::compareByCollator(collator, {&character, 1}, "") != 0;
        if (counts && (place == 0 || isBefore(*previous, character))) {
            ++place;
        }
        places[static_cast<unsigned char>(character)] = place;
        previous = &character;
    }
    return places;
}

int compareASCII(const ASCIIPlaces& places, std::string_view a, std::string_view b) {
    const auto placeOf = [&](char character) {
        return places[static_cast<unsigned char>(character)];
    };
    const auto takePlace = [&](std::string_view& text) {
        std::uint8_t place = 0;
        while (place == 0 && !text.empty()) {
            place = placeOf(text.front());
            text.remove_prefix(1);
        }
        return place;
    };
    const std::size_t shorter = std::min(a.size(), b.size());
    std::size_t common = 0;
    while (common < shorter && placeOf(a[common]) == placeOf(b[common])) {
        ++common;
    }
    a.remove_prefix(common);
    b.remove_prefix(common);
    for (;;) {
        const std::uint8_t placeOfA = takePlace(a);
        const std::uint8_t placeOfB = takePlace(b);
        if (placeOfA != placeOfB) {
            return placeOfA < placeOfB ? -1 : 1;
        }
        if (placeOfA == 0) {
            return 0;
        }
    }
}

} // namespace

int internal::compareByCollator(const UCollator* collator, std::string_view text,
                                std::string_view other) {
    if (collator == nullptr) {
        return 0;
    }
    try {
        // ICU would take quadratic time for long runs of marks that are out of order.
        const std::u16string a = withMarksInOrder(utf16FromBytes(text));
        const std::u16string b = withMarksInOrder(utf16FromBytes(other));
        return order(
            ucol_strcoll(collator, a.data(), icuLength(a.size()), b.data(), icuLength(b.size())));
    } catch (const std::length_error&) {
        return 0;
    }
}

int compareStringsIgnoringDiacritical(std::string_view text, std::string_view other) {
    // Constant once it is made, which is what threads may share.
    static const CollatorPtr collator = rootCollatorOfLetters();
    static const ASCIIPlaces places = asciiPlaces(collator.get());
    if (collator != nullptr && isASCII(text) && isASCII(other)) {
        return compareASCII(places, text, other);
    }
    return internal::compareByCollator(collator.get(), text, other);
}

bool equalStringsIgnoringDiacritical(std::string_view text, std::string_view other) {
    try {
        return compare(text, other, SearchOption::IgnoreCase | SearchOption::IgnoreDiacritics) == 0;
    } catch (const std::length_error&) {
        return false;
    } catch (const std::runtime_error&) {
        return false;
    }
}

} // namespace tav
